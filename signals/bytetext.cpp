#include "signals/bytetext.h"

#include <QTextCodec>

namespace
{

constexpr unsigned char kFirstSpecial = 0x80;
constexpr unsigned char kLastSpecial = 0x9F;
// Code page 1252 from 0x80 to 0x9F, as Unicode's own table of it has them; everything else is Latin-1.
constexpr char16_t kSpecial[] = {0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
                                 0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
                                 0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

} // namespace

bool isUtf8(const QByteArray &content)
{
    QTextCodec::ConverterState state;
    QTextCodec::codecForName("UTF-8")->toUnicode(content.constData(), content.size(), &state);
    return state.invalidChars == 0 && state.remainingChars == 0;
}

QString fromCodePage1252(std::string_view bytes)
{
    QString text(static_cast<int>(bytes.size()), Qt::Uninitialized);
    QChar *out = text.data();
    for (const char byte : bytes) {
        const auto code = static_cast<unsigned char>(byte);
        const bool special = code >= kFirstSpecial && code <= kLastSpecial;
        *out++ = QChar(special ? kSpecial[code - kFirstSpecial] : char16_t(code));
    }
    return text;
}
