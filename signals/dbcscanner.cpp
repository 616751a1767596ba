#include "signals/dbcscanner.h"

#include "signals/bytetext.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace
{

using namespace std::string_view_literals;

constexpr std::string_view kMark = "\xEF\xBB\xBF";
constexpr std::string_view kSeparators = ":;,|@()[]\"";
// Sorted.
constexpr std::string_view kStatements[] = {"BA_"sv,          "BA_DEF_"sv,
                                            "BA_DEF_DEF_"sv,  "BA_DEF_DEF_REL_"sv,
                                            "BA_DEF_REL_"sv,  "BA_DEF_SGTYPE_"sv,
                                            "BA_REL_"sv,      "BA_SGTYPE_"sv,
                                            "BO_"sv,          "BO_TX_BU_"sv,
                                            "BS_"sv,          "BU_"sv,
                                            "CAT_"sv,         "CAT_DEF_"sv,
                                            "CM_"sv,          "ENVVAR_DATA_"sv,
                                            "EV_"sv,          "EV_DATA_"sv,
                                            "FILTER"sv,       "NS_"sv,
                                            "NS_DESC_"sv,     "SGTYPE_"sv,
                                            "SGTYPE_VAL_"sv,  "SG_"sv,
                                            "SG_MUL_VAL_"sv,  "SIGTYPE_VALTYPE_"sv,
                                            "SIG_GROUP_"sv,   "SIG_TYPE_REF_"sv,
                                            "SIG_VALTYPE_"sv, "VAL_"sv,
                                            "VAL_TABLE_"sv,   "VERSION"sv};

bool blank(char c)
{
    return static_cast<unsigned char>(c) <= ' ';
}

bool digit(char c)
{
    return c >= '0' && c <= '9';
}

bool wordPart(char c)
{
    return !blank(c) && kSeparators.find(c) == std::string_view::npos;
}

std::string_view between(const char *begin, const char *end)
{
    return {begin, static_cast<std::size_t>(end - begin)};
}

} // namespace

bool isDbcStatement(std::string_view word)
{
    return std::binary_search(std::begin(kStatements), std::end(kStatements), word);
}

DbcScanner::DbcScanner(const QByteArray &content)
    : content_(content),
      end_(content_.constData() + content_.size()),
      at_(content_.constData()),
      utf8_(isUtf8(content_)),
      countedTo_(at_)
{
    if (between(at_, end_).substr(0, kMark.size()) == kMark)
        at_ += kMark.size();
    countedTo_ = at_;
}

bool DbcScanner::more()
{
    while (at_ != end_) {
        if (blank(*at_))
            ++at_;
        else if (between(at_, end_).substr(0, 2) == "//")
            at_ = std::find(at_, end_, '\n');
        else
            return true;
    }
    return false;
}

bool DbcScanner::moreOnLine()
{
    while (at_ != end_ && blank(*at_) && *at_ != '\n' && *at_ != '\r')
        ++at_;
    return at_ != end_ && *at_ != '\n' && *at_ != '\r' && between(at_, end_).substr(0, 2) != "//";
}

bool DbcScanner::next(char wanted)
{
    if (!more() || *at_ != wanted)
        return false;
    ++at_;
    return true;
}

void DbcScanner::expect(char wanted)
{
    if (!next(wanted))
        throw DbcError{DbcFault::Expected, at_, QStringLiteral("\"%1\"").arg(QLatin1Char(wanted))};
}

bool DbcScanner::startsText()
{
    return more() && *at_ == '"';
}

bool DbcScanner::startsNumber()
{
    return more() && (digit(*at_) || *at_ == '-' || *at_ == '+' || *at_ == '.');
}

std::string_view DbcScanner::peekWord()
{
    more();
    return between(at_, std::find_if_not(at_, end_, wordPart));
}

std::string_view DbcScanner::word()
{
    const std::string_view found = peekWord();
    if (found.empty())
        throw DbcError{DbcFault::Expected, at_, QStringLiteral("NAME")};
    at_ += found.size();
    return found;
}

// A backslash before the quotation mark that ends the statement on its line is a path's, not an escape.
bool DbcScanner::escapedQuote(const char *backslash) const
{
    const char *behind = backslash + 1;
    if (behind == end_ || *behind != '"')
        return false;
    ++behind;
    const auto onLine = [](char c) { return c == ' ' || c == '\t'; };
    behind = std::find_if_not(behind, end_, onLine);
    if (behind == end_)
        return false;
    if (*behind != ';')
        return true;
    behind = std::find_if_not(behind + 1, end_, onLine);
    return behind != end_ && *behind != '\r' && *behind != '\n';
}

std::string_view DbcScanner::quoted()
{
    if (!startsText())
        throw DbcError{DbcFault::Expected, at_, QStringLiteral("\"TEXT\"")};
    const char *begin = at_ + 1;
    const char *close = begin;
    while (close != end_ && *close != '"')
        close += *close == '\\' && escapedQuote(close) ? 2 : 1;
    if (close == end_)
        throw DbcError{DbcFault::UnterminatedText, at_, {}};
    at_ = close + 1;
    return between(begin, close);
}

std::string_view DbcScanner::quotedOnLine()
{
    const char *begin = at_;
    const std::string_view found = quoted();
    if (found.find('\n') != std::string_view::npos)
        throw DbcError{DbcFault::UnterminatedText, begin, {}};
    return found;
}

std::string_view DbcScanner::numberText()
{
    if (!startsNumber())
        throw DbcError{DbcFault::Expected, at_, QStringLiteral("NUMBER")};
    const char *begin = at_;
    const auto part = [](char c) { return digit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '.'; };
    ++at_;
    while (at_ != end_ && (part(*at_) || ((*at_ == '-' || *at_ == '+') && (at_[-1] == 'e' || at_[-1] == 'E'))))
        ++at_;
    return between(begin, at_);
}

double DbcScanner::number()
{
    const char *begin = (more(), at_);
    std::string_view digits = numberText();
    if (digits.front() == '+')
        digits.remove_prefix(1);
    double value = 0;
    const auto [stop, fault] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (fault != std::errc() || stop != digits.data() + digits.size() || !std::isfinite(value))
        throw DbcError{DbcFault::BadNumber, begin, text(between(begin, at_))};
    return value;
}

std::int64_t DbcScanner::integer()
{
    const char *begin = (more(), at_);
    std::string_view digits = numberText();
    if (digits.front() == '+')
        digits.remove_prefix(1);
    const char *stop = digits.data() + digits.size();
    std::int64_t value = 0;
    if (const auto found = std::from_chars(digits.data(), stop, value); found.ec == std::errc() && found.ptr == stop)
        return value;
    std::uint64_t large = 0;
    if (const auto found = std::from_chars(digits.data(), stop, large); found.ec == std::errc() && found.ptr == stop)
        return static_cast<std::int64_t>(large);
    at_ = begin; // "1.0", "1e3"
    const double real = number();
    if (real != std::floor(real) || std::abs(real) >= 0x1p63)
        throw DbcError{DbcFault::BadNumber, begin, text(between(begin, at_))};
    return static_cast<std::int64_t>(real);
}

std::uint32_t DbcScanner::messageWord()
{
    const char *begin = (more(), at_);
    const std::int64_t value = integer();
    if (value < 0 || value > UINT32_MAX)
        throw DbcError{DbcFault::BadIdentifier, begin, text(between(begin, at_))};
    return static_cast<std::uint32_t>(value);
}

bool DbcScanner::statementEnd()
{
    return next(';') || at_ == end_;
}

void DbcScanner::skipToStatement(const char *place)
{
    at_ = place;
    do {
        at_ = std::find(at_, end_, '\n');
    } while (more() && !isDbcStatement(peekWord()));
}

bool DbcScanner::beginsLine() const
{
    const char *before = at_;
    while (before != content_.constData() && (before[-1] == ' ' || before[-1] == '\t'))
        --before;
    return before == content_.constData() || before[-1] == '\n';
}

void DbcScanner::skipStatement()
{
    while (more()) {
        if (next(';'))
            return;
        if (*at_ == '"') {
            quoted();
            continue;
        }
        const bool lineBegins = beginsLine();
        const std::string_view found = peekWord();
        if (lineBegins && isDbcStatement(found))
            return;
        at_ += std::max<std::size_t>(found.size(), 1);
    }
}

bool DbcScanner::skipOnLine(char wanted)
{
    while (at_ != end_ && *at_ != '\n')
        if (*at_++ == wanted)
            return true;
    return false;
}

void DbcScanner::skipNewSymbols()
{
    next(':');
    while (moreOnLine())
        ++at_;
    while (more()) {
        const char *begin = at_;
        at_ += peekWord().size();
        if (at_ == begin || moreOnLine()) {
            at_ = begin;
            return;
        }
    }
}

QString DbcScanner::text(std::string_view bytes) const
{
    return utf8_ ? QString::fromUtf8(bytes.data(), static_cast<int>(bytes.size())) : fromCodePage1252(bytes);
}

QString DbcScanner::unescaped(std::string_view bytes) const
{
    QString result = text(bytes);
    if (bytes.find('\\') != std::string_view::npos)
        result.replace(QLatin1String("\\\""), QLatin1String("\""));
    return result;
}

void DbcScanner::locate(const char *place, int *line, int *column)
{
    if (place < countedTo_) {
        countedTo_ = content_.constData();
        line_ = 1;
    }
    line_ += static_cast<int>(std::count(countedTo_, place, '\n'));
    countedTo_ = place;
    *line = line_;
    const char *begin = place;
    while (begin != content_.constData() && begin[-1] != '\n')
        --begin;
    *column = text(between(begin, place)).size() + 1;
}
