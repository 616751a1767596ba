// Text for the standard output or a file, gathered and handed over in large pieces.
#pragma once

#include <QFile>

#include <string>

// Whether the standard output goes into a file: neither to a terminal nor through a pipe.
bool standardOutputIsFile();

class TextOutput
{
public:
    // "-": the standard output, which is also where text goes without a call. false, and told, when it cannot be
    // opened.
    bool open(const QString &path);
    // What is gathered; append to it.
    std::string *text() { return &text_; }
    // Hands over what has become much; false, and told once, when nobody takes it.
    bool drain() { return text_.size() < kMuch ? !failed_ : flush(); }
    // Hands over everything.
    bool flush();
    bool failed() const { return failed_; }

private:
    static constexpr std::size_t kMuch = 64 * 1024;

    QString name() const;

    QFile file_;
    std::string text_;
    bool failed_ = false;
};
