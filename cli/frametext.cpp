#include "cli/frametext.h"

#include "cli/databases.h"
#include "cli/signaltext.h"
#include "cli/valuetexts.h"
#include "device/driver/identifiers.h"
#include "traces/textput.h"

#include <algorithm>

namespace
{

constexpr int kTextDecimals = 6;
constexpr int kJsonDecimals = 9;

void appendHex(std::string *out, std::uint64_t number, int digits)
{
    char buffer[16];
    put::hex(buffer, number, digits);
    out->append(buffer, static_cast<std::size_t>(digits));
}

void appendBytes(std::string *out, const RawFrame &frame, const char *before)
{
    char pair[2];
    const unsigned count = frame.remote ? 0 : std::min<unsigned>(frame.length, kRawDataBytes);
    for (unsigned i = 0; i < count; ++i) {
        put::hexByte(pair, frame.data[i]);
        out->append(before).append(pair, 2);
    }
}

void appendFlag(std::string *out, const char *name, bool value)
{
    out->append(",\"").append(name).append(value ? "\":true" : "\":false");
}

} // namespace

void FrameText::setStart(std::optional<std::int64_t> start)
{
    start_ = time_ == ShownTime::Absolute ? start.value_or(0) : 0;
    last_.reset();
}

std::int64_t FrameText::shownTime(const RawFrame &frame)
{
    if (time_ != ShownTime::Delta)
        return start_ + frame.time;
    const std::int64_t before = last_.value_or(frame.time);
    last_ = frame.time;
    return frame.time - before;
}

const KnownMessage *FrameText::decode(const RawFrame &frame)
{
    const KnownMessage *message = databases_ ? databases_->lookup().find(frame) : nullptr;
    if (message) {
        values_.resize(static_cast<std::size_t>(message->decoder.signalCount()));
        message->decoder.decode(frame, values_.data());
    }
    return message;
}

void FrameText::appendLine(std::string *out, const RawFrame &frame)
{
    out->append(" (");
    appendSeconds(out, shownTime(frame), kTextDecimals);
    out->append(")  can");
    appendDecimal(out, std::max(1u, unsigned(frame.channel)) - 1);
    out->append(frame.direction == Direction::Sent ? "  TX " : "  RX ");
    out->append(frame.bitRateSwitch ? "B " : "- ").append(frame.errorStateIndicator ? "E  " : "-  ");
    const bool wide = frame.extended || frame.error;
    if (!wide)
        out->append(kExtendedIdDigits - kStandardIdDigits, ' ');
    appendHex(out, frame.id, idDigits(wide));
    out->append(frame.fd ? "  [" : "   [");
    if (frame.fd && frame.length < 10)
        out->push_back('0');
    appendDecimal(out, frame.length);
    out->append("] ");
    if (frame.remote)
        out->append(" remote request");
    appendBytes(out, frame, " ");
    if (frame.error)
        out->append("  ERRORFRAME");
    if (const KnownMessage *message = decode(frame))
        appendSignals(out, *message);
    out->push_back('\n');
}

void FrameText::appendSignals(std::string *out, const KnownMessage &message) const
{
    out->append("  ");
    appendText(out, message.definition->name);
    const char *separator = ": ";
    for (int i = 0; i < message.definition->signalList.size(); ++i) {
        const SignalDefinition &signal = message.definition->signalList[i];
        const SignalValue &value = values_[static_cast<std::size_t>(i)];
        if (value.state != SignalState::Valid)
            continue;
        out->append(separator);
        separator = ", ";
        appendText(out, signal.name);
        out->push_back('=');
        if (const QString *text = signal.valueText(value.raw)) {
            appendText(out, *text);
            continue;
        }
        appendSignalValue(out, signal, value);
        if (!signal.unit.isEmpty()) {
            out->push_back(' ');
            appendText(out, signal.unit);
        }
    }
}

void FrameText::appendJson(std::string *out, const RawFrame &frame)
{
    out->append("{\"time\":");
    appendSeconds(out, shownTime(frame), kJsonDecimals);
    out->append(",\"channel\":");
    appendDecimal(out, frame.channel);
    out->append(frame.direction == Direction::Sent ? ",\"direction\":\"tx\",\"id\":" : ",\"direction\":\"rx\",\"id\":");
    appendDecimal(out, frame.id);
    appendFlag(out, "extended", frame.extended);
    appendFlag(out, "remote", frame.remote);
    appendFlag(out, "fd", frame.fd);
    appendFlag(out, "brs", frame.bitRateSwitch);
    appendFlag(out, "esi", frame.errorStateIndicator);
    appendFlag(out, "error", frame.error);
    out->append(",\"length\":");
    appendDecimal(out, frame.length);
    out->append(",\"data\":\"");
    appendBytes(out, frame, "");
    out->push_back('"');
    if (const KnownMessage *message = decode(frame))
        appendJsonSignals(out, *message);
    out->append("}\n");
}

void FrameText::appendJsonSignals(std::string *out, const KnownMessage &message) const
{
    out->append(",\"message\":");
    appendJsonText(out, message.definition->name);
    out->append(",\"signals\":{");
    bool first = true;
    for (int i = 0; i < message.definition->signalList.size(); ++i) {
        const SignalValue &value = values_[static_cast<std::size_t>(i)];
        if (value.state != SignalState::Valid)
            continue;
        if (!first)
            out->push_back(',');
        first = false;
        const SignalDefinition &signal = message.definition->signalList[i];
        appendJsonText(out, signal.name);
        out->push_back(':');
        appendJsonSignalValue(out, signal, value);
    }
    out->push_back('}');
}
