// Reads a text file line by line, as UTF-8, whatever its size.
#pragma once

#include <QByteArray>
#include <QFile>

// Line ends are LF or CRLF. Without a byte-order mark every line is judged by itself: it is GB18030 when it is no valid
// UTF-8, as in a file that a spreadsheet saved and a later capture went on with.
class CsvReader
{
public:
    // A line as UTF-8 without its end; valid until the next call of the reader.
    struct Line {
        const char *text = nullptr;
        std::size_t size = 0;
    };

    // false when the path is no regular file or cannot be read.
    bool open(const QString &path);
    // Goes back to the start of the file, past the header line. false when the file cannot be read any more.
    bool rewind();
    // false at the end of the file, or when it can be read no further. A line longer than kLongestLine is answered as
    // its beginning without any comma.
    bool next(Line &line);

    // Whether reading ended before the end of the file.
    bool failed() const { return failed_; }

    static constexpr int kLongestLine = 64 * 1024;

private:
    bool nextRaw(Line &line);
    bool refill();
    void decode(Line &line);

    QFile file_;
    QByteArray buffer_;
    int begin_ = 0; // of what has not been handed out yet
    int end_ = 0;
    bool marked_ = false; // begins with a byte-order mark
    bool failed_ = false;
    QByteArray decoded_;
};
