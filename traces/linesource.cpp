#include "traces/linesource.h"

#include <cstring>
#include <utility>

LineSource::LineSource(ByteSource source) : source_(std::move(source)) {}

void LineSource::show(std::size_t length)
{
    constexpr std::string_view mark = "\xEF\xBB\xBF";
    text_ = std::string_view(source_.data(), length);
    if (number_ == 1 && text_.substr(0, mark.size()) == mark) {
        text_.remove_prefix(mark.size());
        marked_ = true;
    }
}

LineSource::Next LineSource::next(bool mayWait)
{
    source_.consume(taken_);
    taken_ = 0;
    text_ = {};
    std::size_t searched = 0;
    for (;;) {
        if (tooLong_)
            return Next::TooLong;
        const char *const begin = source_.data();
        const std::size_t size = source_.size();
        const auto *end = static_cast<const char *>(std::memchr(begin + searched, '\n', size - searched));
        if (end) {
            std::size_t length = static_cast<std::size_t>(end - begin);
            taken_ = length + 1;
            ++number_;
            if (length > 0 && begin[length - 1] == '\r')
                --length;
            tooLong_ = length > kLongestLine;
            if (tooLong_)
                continue;
            show(length);
            return Next::Line;
        }
        searched = size;
        if (size > kLongestLine) {
            ++number_;
            tooLong_ = true;
            continue;
        }
        if (!mayWait && source_.sequential())
            return Next::Nothing;
        if (source_.fill(size + 1))
            continue;
        if (!source_.ended())
            return Next::Nothing;
        if (size == 0)
            return Next::End;
        taken_ = size;
        ++number_;
        show(size);
        return Next::Cut;
    }
}
