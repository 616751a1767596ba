// One entry of the transmit list.
#pragma once

#include "device/driver/wirerecords.h"
#include "traces/rawframe.h"
#include "transmit/bytechange.h"

#include <QString>
#include <QVector>

#include <memory>

enum class TransmitMode : std::uint8_t {
    OnRequest, // once, whenever its key or the button asks for it
    Periodic,  // every interval, until stopped
    Counted,   // so many times, every interval
    Response,  // after the delay, whenever the frame that it waits for has been received
};

struct TransmitEntry {
    unsigned serial = 0; // tells entries of one list apart; never 0 in a list, not stored
    bool on = true;
    unsigned channel = 0; // 0 or 1
    QString name;
    RawFrame frame; // what is sent; its time, channel and direction do not count
    TransmitType type = TransmitType::Normal;
    TransmitMode mode = TransmitMode::Periodic;
    unsigned interval = 100;   // milliseconds, 1..kLongestInterval; of a response: the delay, from 0
    std::uint64_t count = 1;   // of a counted entry, 1..kHighestCount
    std::uint32_t awaited = 0; // of a response, received on its own channel
    std::uint32_t awaitedMask = kIdMask;
    bool awaitedExtended = false;
    bool resumes = true;             // goes on when its channel is open again
    QString key;                     // one of transmitKeys(), or empty
    QString changesText;             // see transmit/bytechange.h
    std::vector<ByteChange> changes; // what the text says; see setChanges()
    QString comment;
};

constexpr std::uint64_t kHighestCount = 999'999'999'999;

// Never changed once it is in a list: threads and the steps of undoing share it.
using TransmitEntryPointer = std::shared_ptr<const TransmitEntry>;
using TransmitList = QVector<TransmitEntryPointer>;

// A serial that no other entry of this process has. Any thread.
unsigned newTransmitSerial();

// The keys that may send an entry.
const QStringList &transmitKeys();

// Sets text and list; what is wrong with the text, else an empty text.
QString setChanges(TransmitEntry &entry, const QString &text);

// "123", "120/7F0", "18FF50E5", "00000123/1FFFFFFF": identifier and mask, hexadecimal; more than three digits of the
// identifier mean an extended one. false when it is none.
bool setAwaited(TransmitEntry &entry, const QString &text);
QString awaitedText(const TransmitEntry &entry);
bool isAwaited(const TransmitEntry &entry, const RawFrame &received);

// Why the entry cannot be sent, in the current language; empty when it can.
QString transmitProblem(const TransmitEntry &entry);
