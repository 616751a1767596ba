// Text for the standard output, gathered and handed over in large pieces.
#pragma once

#include <QFile>

#include <string>

class TextOutput
{
public:
    // What is gathered; append to it.
    std::string *text() { return &text_; }
    // Hands over what has become much; false, and told once, when nobody takes it.
    bool drain() { return text_.size() < kMuch ? !failed_ : flush(); }
    // Hands over everything.
    bool flush();
    bool failed() const { return failed_; }

private:
    static constexpr std::size_t kMuch = 64 * 1024;

    QFile file_;
    std::string text_;
    bool failed_ = false;
};
