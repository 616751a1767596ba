// Reads a text file line by line, as UTF-8, whatever its size.
#pragma once

#include <QByteArray>
#include <QFile>

// Line ends are LF or CRLF. The first line that is not plain ASCII settles the encoding: UTF-8 (a byte-order mark
// settles it too) or, when it is no valid UTF-8, GB18030.
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
    // false at the end of the file. A line longer than kLongestLine is answered as its beginning without any comma.
    bool next(Line &line);

    static constexpr int kLongestLine = 64 * 1024;

private:
    enum class Encoding { Unknown, Utf8, Gb18030 };

    bool nextRaw(Line &line);
    bool refill();
    void decode(Line &line);

    QFile file_;
    QByteArray buffer_;
    int begin_ = 0; // of what has not been handed out yet
    int end_ = 0;
    Encoding encoding_ = Encoding::Unknown;
    QByteArray decoded_;
};
