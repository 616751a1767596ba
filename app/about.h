// The About box: its texts and the company's name.
#pragma once

#include <QString>

class QWidget;

// The name for the current language from /config/company.txt, or "公司名称缺失".
QString companyName();
// The box's text: the short form unless "LAST2/Sel" of /language/config.ini is set.
QString aboutText();
void showAbout(QWidget *parent);
