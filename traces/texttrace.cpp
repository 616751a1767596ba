#include "traces/texttrace.h"

bool TextTraceWriter::write(const RawFrame *frames, int count)
{
    begin();
    if (!sink_.drain())
        return false;
    writeLines(frames, count);
    return true;
}

bool TextTraceWriter::flush()
{
    begin();
    return sink_.flush();
}

bool TextTraceWriter::finish()
{
    begin();
    if (!finished_)
        writeTail();
    finished_ = true;
    return sink_.flush();
}

void TextTraceWriter::begin()
{
    if (!begun_)
        writeHead();
    begun_ = true;
}

int TextTraceReader::read(RawFrame *frames, int capacity)
{
    int count = 0;
    while (count < capacity && !ended_) {
        switch (lines_.next(count == 0)) {
        case LineSource::Next::Line:
            count += take(&frames[count]);
            break;
        case LineSource::Next::Cut:
            if (completeWithoutEnd(lines_.text()))
                count += take(&frames[count]);
            else
                stop({"该行没有结尾，文件可能被截断", "該行沒有結尾，檔案可能被截斷",
                      "the line has no end, the file may be cut"});
            break;
        case LineSource::Next::TooLong:
            stop({"该行过长，没有结尾", "該行過長，沒有結尾", "a line without end"});
            break;
        case LineSource::Next::Nothing:
            return count;
        case LineSource::Next::End:
            if (lines_.failed())
                stop({"文件无法继续读取", "檔案無法繼續讀取", "the file cannot be read on"});
            else if (!understood_ && skipped_ > 0)
                stop({"没有该格式的行", "沒有該格式的行", "no line of this format"});
            ended_ = true;
            break;
        }
    }
    return count;
}

TraceCheckpoint TextTraceReader::checkpoint()
{
    return {lines_.nextOffset(), 0, lines_.number(), startUtc_, state()};
}

void TextTraceReader::resume(const TraceCheckpoint &checkpoint)
{
    lines_.setLinesBefore(checkpoint.number);
    startUtc_ = checkpoint.startUtc;
    understood_ = true;
    if (checkpoint.state)
        restore(*checkpoint.state);
}

int TextTraceReader::take(RawFrame *frame)
{
    *frame = RawFrame();
    switch (readLine(lines_.text(), frame)) {
    case LineKind::Frame:
        understood_ = true;
        return 1;
    case LineKind::Other:
        understood_ = true;
        break;
    case LineKind::Unknown:
        skipped_ += lines_.text().empty() ? 0 : 1;
        break;
    case LineKind::Damaged:
        stop({"不是完整的帧", "不是完整的幀", "no whole frame"});
        break;
    }
    return 0;
}

bool TextTraceReader::completeWithoutEnd(std::string_view line) const
{
    return line.find_first_not_of(" \t\r") == std::string_view::npos;
}

void TextTraceReader::stop(const Text3 &reason)
{
    error_ = TraceError{{"第 %1 行", "第 %1 行", "line %1", {QString::number(lines_.number())}}, reason};
    ended_ = true;
}
