#include "device/driver/simulated/candumplog.h"

#include "device/driver/candumpline.h"

#include <fstream>

namespace
{

// The longest line of a frame is below 200 characters; more is not collected.
constexpr std::size_t kMaxLineLength = 512;
} // namespace

LoggedLine parseLoggedLine(const std::string &line, LoggedFrame *frame)
{
    CandumpLine parsed;
    LoggedFrame read{0, BusFrame()};
    if (!parseCandumpLine(line, &parsed, read.frame.data))
        return LoggedLine::Malformed;
    if (parsed.error)
        return LoggedLine::ErrorFrame;
    read.time = parsed.time;
    read.frame.id = parsed.id | (parsed.extended ? kIdExtendedFlag : 0) | (parsed.remote ? kIdRemoteFlag : 0);
    read.frame.length = parsed.length;
    read.frame.fd = parsed.fd;
    read.frame.bitRateSwitch = (parsed.fdFlags & kCandumpBitRateSwitch) != 0;
    *frame = read;
    return LoggedLine::Frame;
}

CandumpLog readCandumpLog(std::istream &stream)
{
    CandumpLog log;
    std::string line;
    LoggedFrame frame{0, BusFrame()};
    const auto endOfLine = [&] {
        while (!line.empty() && (line.back() == '\r' || line.back() == ' '))
            line.pop_back();
        if (line.empty())
            return;
        const LoggedLine kind = line.size() > kMaxLineLength ? LoggedLine::Malformed : parseLoggedLine(line, &frame);
        if (kind == LoggedLine::Frame)
            log.frames.push_back(frame);
        else
            ++(kind == LoggedLine::ErrorFrame ? log.errorFrames : log.malformed);
        line.clear();
    };
    char block[1 << 14];
    while (!log.cut && (stream.read(block, sizeof block) || stream.gcount() > 0)) {
        for (std::streamsize i = 0; i < stream.gcount() && !log.cut; ++i) {
            if (block[i] == '\n')
                endOfLine();
            else if (line.size() <= kMaxLineLength)
                line.push_back(block[i]);
            log.cut = log.frames.size() == kMaxLoggedFrames;
        }
    }
    if (!log.cut)
        endOfLine();
    return log;
}

bool loadCandumpLog(const std::string &path, CandumpLog *log)
{
    std::ifstream file(path, std::ios::binary);
    if (!file)
        return false;
    *log = readCandumpLog(file);
    return !log->frames.empty();
}
