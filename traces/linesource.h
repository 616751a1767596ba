// The lines of a recording in text, whatever it holds: bounded memory, LF and CRLF, files and pipes.
#pragma once

#include "traces/bytesource.h"

#include <string_view>

class LineSource
{
public:
    explicit LineSource(ByteSource source);

    enum class Next : std::uint8_t {
        Line,    // text() is the next line
        Cut,     // the same, but the device ended before the line did
        TooLong, // the next line is longer than kLongestLine; nothing comes after it
        Nothing, // a pipe has no whole line now
        End,
    };
    // mayWait false: Nothing rather than a wait for a pipe.
    Next next(bool mayWait = true);

    // The line without its end (LF or CRLF); may hold any byte. Valid until the next call of next().
    std::string_view text() const { return text_; }
    // The line's number, from 1; what was met last when next() gave no line.
    std::uint64_t number() const { return number_; }
    // Where the next line begins, in bytes of the recording.
    std::uint64_t nextOffset() const { return source_.offset() + taken_; }
    // So many lines of the recording lie before the source; called before the first next().
    void setLinesBefore(std::uint64_t lines) { number_ = lines; }
    // The first line began with the mark of UTF-8, which text() leaves out.
    bool marked() const { return marked_; }
    // The device could not be read to its end.
    bool failed() const { return source_.failed(); }

    static constexpr std::size_t kLongestLine = 64 * 1024;

private:
    void show(std::size_t length);

    ByteSource source_;
    std::string_view text_;
    std::size_t taken_ = 0; // bytes of the line that text_ shows, its end included
    std::uint64_t number_ = 0;
    bool tooLong_ = false;
    bool marked_ = false;
};
