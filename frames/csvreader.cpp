#include "frames/csvreader.h"

#include <QFileInfo>
#include <QTextCodec>

#include <algorithm>
#include <cstring>

namespace
{

constexpr int kBytesAtATime = 256 * 1024;
constexpr char kMark[] = "\xEF\xBB\xBF";
constexpr int kMarkSize = 3;

// Whether the text can be UTF-8; its last character may be cut off, as at the end of a file that was not written whole.
bool isUtf8(const char *text, std::size_t size)
{
    constexpr unsigned kFirstTwoByteLead = 0xC2; // the two before it could only be overlong forms
    constexpr unsigned kFirstThreeByteLead = 0xE0;
    constexpr unsigned kFirstFourByteLead = 0xF0;
    constexpr unsigned kLastLead = 0xF4;
    const auto *byte = reinterpret_cast<const unsigned char *>(text);
    const unsigned char *const end = byte + size;
    while (byte != end) {
        const unsigned lead = *byte++;
        if (lead < 0x80)
            continue;
        if (lead < kFirstTwoByteLead || lead > kLastLead)
            return false;
        int following = lead >= kFirstFourByteLead ? 3 : lead >= kFirstThreeByteLead ? 2 : 1;
        for (; following > 0 && byte != end; --following)
            if ((*byte++ & 0xC0) != 0x80)
                return false;
    }
    return true;
}

} // namespace

bool CsvReader::open(const QString &path)
{
    file_.close();
    // A pipe or a terminal would block the caller.
    if (!QFileInfo(path).isFile())
        return false;
    file_.setFileName(path);
    if (!file_.open(QIODevice::ReadOnly))
        return false;
    buffer_.resize(kBytesAtATime);
    return rewind();
}

bool CsvReader::rewind()
{
    begin_ = end_ = 0;
    marked_ = false;
    failed_ = !file_.seek(0);
    if (failed_)
        return false;
    if (!refill())
        return !failed_; // empty
    if (end_ >= kMarkSize && std::memcmp(buffer_.constData(), kMark, kMarkSize) == 0) {
        marked_ = true;
        begin_ = kMarkSize;
    }
    Line header;
    next(header);
    return true;
}

bool CsvReader::next(Line &line)
{
    if (!nextRaw(line))
        return false;
    decode(line);
    return true;
}

bool CsvReader::nextRaw(Line &line)
{
    int searched = 0; // bytes from begin_ that hold no line end
    bool tooLong = false;
    for (;;) {
        const char *start = buffer_.constData() + begin_;
        const auto *found = static_cast<const char *>(
            std::memchr(start + searched, '\n', static_cast<std::size_t>(end_ - begin_ - searched)));
        if (found) {
            line.text = start;
            line.size = static_cast<std::size_t>(found - start);
            begin_ += static_cast<int>(line.size) + 1;
            break;
        }
        searched = end_ - begin_;
        if (searched > kLongestLine) { // nothing of it is kept
            tooLong = true;
            begin_ = end_;
            searched = 0;
        }
        if (!refill()) {
            if (begin_ == end_ && !tooLong)
                return false;
            line.text = buffer_.constData() + begin_;
            line.size = static_cast<std::size_t>(end_ - begin_);
            begin_ = end_;
            break;
        }
    }
    if (line.size > 0 && line.text[line.size - 1] == '\r')
        --line.size;
    if (tooLong || line.size > kLongestLine) {
        line.size = static_cast<std::size_t>(
            std::find(line.text, line.text + std::min<std::size_t>(line.size, kLongestLine), ',') - line.text);
    }
    return true;
}

// Moves what is left to the front and reads on behind it; false at the end of the file.
bool CsvReader::refill()
{
    const int rest = end_ - begin_;
    if (begin_ > 0) {
        std::memmove(buffer_.data(), buffer_.constData() + begin_, static_cast<std::size_t>(rest));
        begin_ = 0;
        end_ = rest;
    }
    const qint64 got = file_.read(buffer_.data() + end_, buffer_.size() - end_);
    if (got <= 0) {
        failed_ = failed_ || got < 0;
        return false;
    }
    end_ += static_cast<int>(got);
    return true;
}

void CsvReader::decode(Line &line)
{
    if (marked_ || isUtf8(line.text, line.size))
        return;
    static QTextCodec *const codec = QTextCodec::codecForName("GB18030");
    if (!codec)
        return;
    decoded_ = codec->toUnicode(line.text, static_cast<int>(line.size)).toUtf8();
    line.text = decoded_.constData();
    line.size = static_cast<std::size_t>(decoded_.size());
}
