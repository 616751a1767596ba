// Reads the text of a FrameFilter by recursive descent. Used by framefilter alone.
#pragma once

#include "traces/framefilter.h"

#include <QVector>

class FrameFilterParser
{
public:
    FrameFilterParser(const QString &text, std::shared_ptr<const SignalSource> signalSource);

    std::optional<FrameFilter> parse(FilterError *error);
    // What could stand where the text ends.
    QStringList expected();

private:
    struct Token {
        int position;
        QString text;
    };

    void tokenize(const QString &text);
    bool atEnd() const { return next_ >= tokens_.size(); }
    QString peek(int ahead = 0) const;
    bool take(const QString &word);

    int parseOr();
    int parseAnd();
    int parseNot();
    int parseCondition();
    int parseIds();
    int parseNumbers(FrameFilter::Kind kind, std::int64_t largest);
    int parseTime();
    int parseData();
    int parseSignal();
    int joined(FrameFilter::Kind kind, int left, int right);
    int add(FrameFilter::Node node);

    std::optional<std::int64_t> number(int base, std::int64_t largest);
    // The end behind ".." or low itself; nothing after a fault.
    std::optional<std::int64_t> rangeEnd(std::int64_t low, int base, std::int64_t largest);
    std::optional<std::int64_t> seconds();
    // Notes the first fault, at the present token; answers -1.
    int fail(const QString &message);
    int failWord();

    const int textLength_;
    std::shared_ptr<const SignalSource> signals_;
    QVector<Token> tokens_;
    int next_ = 0;
    int depth_ = 0;
    QStringList expected_; // what was looked for at the end of the text
    std::optional<FilterError> error_;
    FrameFilter filter_;
};
