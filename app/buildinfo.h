// What this build is.
#pragma once

#include <QString>

namespace buildinfo
{

QString version();   // "V1.17"
QString buildDate(); // "yyyy-MM-dd"
QString buildTime(); // "hh:mm:ss"

// A compiler's date ("MMM dd yyyy", the day with a leading blank or zero) as "yyyy-MM-dd"; empty when it is none.
QString isoDate(const QString &compilerDate);

} // namespace buildinfo
