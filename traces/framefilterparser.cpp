#include "traces/framefilterparser.h"

#include "device/driver/identifiers.h"
#include "device/driver/numbertext.h"
#include "device/driver/timeunits.h"
#include "device/language.h"

#include <QLocale>

#include <array>
#include <cmath>
#include <limits>
#include <utility>

namespace
{
constexpr std::int64_t kMaxChannel = 65535;
constexpr int kDecimal = 10;
constexpr int kBitsPerDigit = 4;
constexpr double kMaxSeconds = 9e9; // what 64 bits of nanoseconds hold
constexpr std::size_t kMaxNodes = 5000;
constexpr int kMaxDepth = 200; // parentheses and negations within each other

const std::array<QString, 10> &flagWords()
{
    static const std::array<QString, 10> words{
        QStringLiteral("rx"),      QStringLiteral("tx"),   QStringLiteral("std"), QStringLiteral("ext"),
        QStringLiteral("classic"), QStringLiteral("fd"),   QStringLiteral("brs"), QStringLiteral("esi"),
        QStringLiteral("remote"),  QStringLiteral("error")};
    return words;
}

bool isWordCharacter(const QString &text, int at)
{
    const QChar c = text[at];
    // A dot belongs to a number or a name, two dots are a range.
    if (c == QLatin1Char('.')) {
        const bool twice = (at + 1 < text.size() && text[at + 1] == c) || (at > 0 && text[at - 1] == c);
        return !twice;
    }
    return c.isLetterOrNumber() || c == QLatin1Char('_') || c == QLatin1Char('?') || c == QLatin1Char('-') ||
           c == QLatin1Char('+');
}

bool isComparison(const QString &text)
{
    static const QStringList comparisons{QStringLiteral("<"),  QStringLiteral("<="), QStringLiteral("="),
                                         QStringLiteral("=="), QStringLiteral("!="), QStringLiteral(">="),
                                         QStringLiteral(">")};
    return comparisons.contains(text);
}

int hexDigit(QChar c)
{
    bool good = false;
    const int value = QString(c).toInt(&good, kHexBase);
    return good ? value : -1;
}

bool isPattern(const QString &text)
{
    if (text.isEmpty() || text.size() % 2 != 0)
        return false;
    for (const QChar c : text) {
        if (c != QLatin1Char('?') && hexDigit(c) < 0)
            return false;
    }
    return true;
}

} // namespace

FrameFilterParser::FrameFilterParser(const QString &text, std::shared_ptr<const SignalSource> signalSource)
    : textLength_(text.size()), signals_(std::move(signalSource))
{
    filter_.signals_ = signals_;
    tokenize(text);
}

void FrameFilterParser::tokenize(const QString &text)
{
    for (int at = 0; at < text.size();) {
        if (text[at].isSpace()) {
            ++at;
            continue;
        }
        const int begin = at++;
        if (isWordCharacter(text, begin)) {
            while (at < text.size() && isWordCharacter(text, at))
                ++at;
        } else if (at < text.size() &&
                   (text.mid(begin, 2) == QLatin1String("..") || isComparison(text.mid(begin, 2)))) {
            ++at;
        }
        tokens_.append({begin, text.mid(begin, at - begin)});
    }
}

QString FrameFilterParser::peek(int ahead) const
{
    return next_ + ahead < tokens_.size() ? tokens_[next_ + ahead].text : QString();
}

bool FrameFilterParser::take(const QString &word)
{
    if (atEnd()) {
        expected_.append(word);
        return false;
    }
    if (peek().compare(word, Qt::CaseInsensitive) != 0)
        return false;
    ++next_;
    return true;
}

int FrameFilterParser::fail(const QString &message)
{
    if (!error_) {
        error_ = atEnd() ? FilterError{textLength_, 0, message}
                         : FilterError{tokens_[next_].position, tokens_[next_].text.size(), message};
    }
    return -1;
}

int FrameFilterParser::failWord()
{
    if (atEnd())
        return fail(text3("此处应为一个条件", "此處應為一個條件", "a condition is expected here"));
    return fail(text3("无法理解的词：%1", "無法理解的詞：%1", "not understood: %1").arg(peek()));
}

std::optional<FrameFilter> FrameFilterParser::parse(FilterError *error)
{
    if (tokens_.isEmpty())
        return FrameFilter();
    filter_.root_ = parseOr();
    if (!error_ && !atEnd())
        fail(text3("此处应为 and 或 or", "此處應為 and 或 or", "\"and\" or \"or\" is expected here"));
    if (error_) {
        *error = *error_;
        return std::nullopt;
    }
    return filter_;
}

QStringList FrameFilterParser::expected()
{
    parseOr();
    if (error_ && error_->position < textLength_)
        return {};
    expected_.removeDuplicates();
    return expected_;
}

int FrameFilterParser::add(FrameFilter::Node node)
{
    if (filter_.nodes_.size() >= kMaxNodes)
        return fail(text3("条件过多", "條件過多", "too many conditions"));
    filter_.nodes_.push_back(node);
    return static_cast<int>(filter_.nodes_.size()) - 1;
}

int FrameFilterParser::joined(FrameFilter::Kind kind, int left, int right)
{
    if (left < 0 || right < 0)
        return -1;
    FrameFilter::Node node{kind};
    node.left = left;
    node.right = right;
    return add(node);
}

int FrameFilterParser::parseOr()
{
    int left = parseAnd();
    while (left >= 0 && take(QStringLiteral("or")))
        left = joined(FrameFilter::Kind::Or, left, parseAnd());
    return left;
}

int FrameFilterParser::parseAnd()
{
    int left = parseNot();
    while (left >= 0 && take(QStringLiteral("and")))
        left = joined(FrameFilter::Kind::And, left, parseNot());
    return left;
}

int FrameFilterParser::parseNot()
{
    if (depth_ >= kMaxDepth)
        return fail(text3("嵌套过深", "巢狀過深", "nested too deeply"));
    ++depth_;
    int node = -1;
    if (take(QStringLiteral("not"))) {
        const int operand = parseNot();
        node = joined(FrameFilter::Kind::Not, operand, operand);
    } else if (take(QStringLiteral("("))) {
        node = parseOr();
        if (node >= 0 && !take(QStringLiteral(")")))
            node = fail(text3("缺少右括号", "缺少右括號", "\")\" is missing"));
    } else {
        node = parseCondition();
    }
    --depth_;
    return node;
}

int FrameFilterParser::parseCondition()
{
    if (take(QStringLiteral("id")))
        return parseIds();
    if (take(QStringLiteral("data")))
        return parseData();
    if (take(QStringLiteral("channel")))
        return parseNumbers(FrameFilter::Kind::Channel, kMaxChannel);
    if (take(QStringLiteral("length")))
        return parseNumbers(FrameFilter::Kind::Length, kRawDataBytes);
    if (take(QStringLiteral("time")))
        return parseTime();
    if (take(QStringLiteral("signal")))
        return parseSignal();
    for (std::size_t flag = 0; flag < flagWords().size(); ++flag) {
        if (take(flagWords()[flag])) {
            FrameFilter::Node node{FrameFilter::Kind::Flag};
            node.flag = static_cast<FrameFilter::Flag>(flag);
            return add(node);
        }
    }
    return failWord();
}

std::optional<std::int64_t> FrameFilterParser::number(int base, std::int64_t largest)
{
    bool good = false;
    const qulonglong value = peek().toULongLong(&good, base);
    if (!good || value > static_cast<qulonglong>(largest)) {
        fail(base == kHexBase
                 ? text3("此处应为十六进制数，最大 %1", "此處應為十六進位數，最大 %1",
                         "a hexadecimal number up to %1 is expected here")
                       .arg(QString::number(largest, kHexBase).toUpper())
                 : text3("此处应为数字，最大 %1", "此處應為數字，最大 %1", "a number up to %1 is expected here")
                       .arg(largest));
        return std::nullopt;
    }
    ++next_;
    return static_cast<std::int64_t>(value);
}

std::optional<std::int64_t> FrameFilterParser::rangeEnd(std::int64_t low, int base, std::int64_t largest)
{
    if (!take(QStringLiteral("..")))
        return low;
    const std::optional<std::int64_t> high = number(base, largest);
    if (high && *high < low) {
        --next_;
        fail(text3("范围的终点小于起点", "範圍的終點小於起點", "the range ends before it begins"));
        return std::nullopt;
    }
    return high;
}

int FrameFilterParser::parseIds()
{
    int left = -1;
    do {
        const auto low = number(kHexBase, kLargestExtendedId);
        if (!low)
            return -1;
        FrameFilter::Node node{FrameFilter::Kind::Id};
        node.low = *low;
        const bool masked = take(QStringLiteral("/"));
        const auto high = masked ? number(kHexBase, kLargestExtendedId) : rangeEnd(*low, kHexBase, kLargestExtendedId);
        if (!high)
            return -1;
        node.kind = masked ? FrameFilter::Kind::IdMask : FrameFilter::Kind::Id;
        node.high = *high;
        const int right = add(node);
        left = left < 0 ? right : joined(FrameFilter::Kind::Or, left, right);
    } while (take(QStringLiteral(",")));
    return left;
}

int FrameFilterParser::parseNumbers(FrameFilter::Kind kind, std::int64_t largest)
{
    int left = -1;
    do {
        const auto low = number(kDecimal, largest);
        const auto high = low ? rangeEnd(*low, kDecimal, largest) : std::nullopt;
        if (!high)
            return -1;
        FrameFilter::Node node{kind};
        node.low = *low;
        node.high = *high;
        const int right = add(node);
        left = left < 0 ? right : joined(FrameFilter::Kind::Or, left, right);
    } while (take(QStringLiteral(",")));
    return left;
}

std::optional<std::int64_t> FrameFilterParser::seconds()
{
    bool good = false;
    const double value = QLocale::c().toDouble(peek(), &good);
    if (!good || !(std::abs(value) < kMaxSeconds)) {
        fail(text3("此处应为秒数", "此處應為秒數", "a number of seconds is expected here"));
        return std::nullopt;
    }
    ++next_;
    return std::llround(value * kNanosecondsPerSecond);
}

int FrameFilterParser::parseTime()
{
    FrameFilter::Node node{FrameFilter::Kind::Time};
    node.low = std::numeric_limits<std::int64_t>::min();
    node.high = std::numeric_limits<std::int64_t>::max();
    if (peek() != QLatin1String("..")) {
        const auto low = seconds();
        if (!low)
            return -1;
        node.low = *low;
    }
    if (!take(QStringLiteral("..")))
        return fail(text3("此处应为 ..", "此處應為 ..", "\"..\" is expected here"));
    bool hasEnd = false;
    QLocale::c().toDouble(peek(), &hasEnd);
    if (hasEnd) {
        const auto high = seconds();
        if (!high)
            return -1;
        node.high = *high;
    }
    return add(node);
}

int FrameFilterParser::parseData()
{
    FrameFilter::Node node{FrameFilter::Kind::Data};
    if (take(QStringLiteral("["))) {
        const auto place = number(kDecimal, kRawDataBytes - 1);
        if (!place)
            return -1;
        node.low = *place;
        if (!take(QStringLiteral("]")))
            return fail(text3("缺少 ]", "缺少 ]", "\"]\" is missing"));
    }
    node.left = static_cast<int>(filter_.bytes_.size());
    while (isPattern(peek())) {
        const QString digits = peek();
        for (int i = 0; i < digits.size(); i += 2) {
            FrameFilter::PatternByte byte{0, 0};
            for (int half = 0; half < 2; ++half) {
                const int digit = hexDigit(digits[i + half]);
                byte.value = static_cast<std::uint8_t>(byte.value << kBitsPerDigit | (digit < 0 ? 0 : digit));
                byte.mask = static_cast<std::uint8_t>(byte.mask << kBitsPerDigit | (digit < 0 ? 0 : 0xF));
            }
            filter_.bytes_.push_back(byte);
        }
        ++next_;
    }
    node.right = static_cast<int>(filter_.bytes_.size()) - node.left;
    if (node.right == 0)
        return fail(text3("此处应为字节，例如 02 ?? 7F", "此處應為位元組，例如 02 ?? 7F",
                          "bytes are expected here, such as 02 ?? 7F"));
    return add(node);
}

int FrameFilterParser::parseSignal()
{
    if (!signals_)
        return fail(text3("尚未加载信号数据库", "尚未載入訊號資料庫", "no signal database is loaded"));
    if (atEnd())
        expected_ = signals_->signalNames();
    FrameFilter::Node node{FrameFilter::Kind::Signal};
    node.high = signals_->signalNumber(peek());
    if (node.high < 0)
        return fail(text3("没有这个信号", "沒有這個訊號", "no such signal"));
    ++next_;
    static const std::pair<const char *, FrameFilter::Comparison> comparisons[] = {
        {"<", FrameFilter::Comparison::Less},      {"<=", FrameFilter::Comparison::LessEqual},
        {"=", FrameFilter::Comparison::Equal},     {"==", FrameFilter::Comparison::Equal},
        {"!=", FrameFilter::Comparison::NotEqual}, {">=", FrameFilter::Comparison::GreaterEqual},
        {">", FrameFilter::Comparison::Greater},
    };
    for (const auto &[text, comparison] : comparisons) {
        if (!take(QLatin1String(text)))
            continue;
        node.comparison = comparison;
        bool good = false;
        node.number = QLocale::c().toDouble(peek(), &good);
        if (!good)
            return fail(text3("此处应为数字", "此處應為數字", "a number is expected here"));
        ++next_;
        return add(node);
    }
    return fail(text3("此处应为 < <= = != >= >", "此處應為 < <= = != >= >", "one of < <= = != >= > is expected here"));
}

std::optional<FrameFilter> FrameFilter::parse(const QString &text, FilterError *error,
                                              std::shared_ptr<const SignalSource> signalSource)
{
    return FrameFilterParser(text, std::move(signalSource)).parse(error);
}

QStringList FrameFilter::completions(const QString &text, int position,
                                     std::shared_ptr<const SignalSource> signalSource)
{
    int begin = position;
    while (begin > 0 && isWordCharacter(text, begin - 1))
        --begin;
    const QString begun = text.mid(begin, position - begin);
    QStringList words;
    for (const QString &word : FrameFilterParser(text.left(begin), std::move(signalSource)).expected()) {
        if (word.startsWith(begun, Qt::CaseInsensitive))
            words.append(word);
    }
    return words;
}
