// What the signals of the bus were last: decodes live frames in the source's thread and keeps, for every message with
// traffic, the latest values, and for every curve that is fed the points since they were last taken.
#pragma once

#include "analysis/curvedata.h"
#include "analysis/signalid.h"
#include "frames/livesource.h"
#include "signals/messagelookup.h"

#include <QHash>

#include <map>
#include <memory>
#include <mutex>
#include <vector>

struct SignalRecord {
    SignalState state = SignalState::BeyondFrame; // in the last frame
    bool seen = false;                            // what follows is there
    SignalValue value;                            // the last valid one
    ValueRange range;
    std::int64_t changed = 0; // nanoseconds of the store's time
};

struct MessageRecord {
    std::uint64_t count = 0;          // frames
    unsigned length = 0;              // bytes of the last one
    std::vector<SignalRecord> values; // in the order of the message's signals
};

// Points on their way to a curve. The store's affair.
class CurveFeed
{
    friend class SignalStore;
    SignalId id_;
    std::vector<CurvePoint> waiting_;
};

enum class StoreUse : std::uint8_t {
    Values, // and curves that are taken many times a second
    Curves, // of a recording and nothing else: none of their points is lost, however late they are taken
};

// Frames come in the source's thread; everything else may be called from any.
class SignalStore : public FrameConsumer
{
public:
    explicit SignalStore(StoreUse use = StoreUse::Values) : use_(use) {}

    void consume(const RawFrame *frames, std::size_t count) override;
    void framesLost(std::uint64_t count) override;

    // What is known from now on; values begin anew, feeds go on.
    void setLookup(std::shared_ptr<const MessageLookup> lookup);
    // Values and time; for frames from a recording's beginning.
    void beginAnew();
    // Copies a message's record; false when there was no traffic. The message is of the lookup in force.
    bool read(unsigned channel, const KnownMessage *message, MessageRecord *record) const;
    // Of frames so far, on one time base that never goes back: nanoseconds of the adapter's clock, and on after it when
    // an adapter is opened again.
    std::int64_t now() const;
    std::uint64_t lost() const; // frames
    void resetRanges();

    // Every value of the signal from now on, whether a database knows it already or not.
    std::shared_ptr<CurveFeed> feed(const SignalId &id);
    void endFeed(const std::shared_ptr<CurveFeed> &feed); // null: nothing happens
    // Hands over what came since; replaces what `points` held.
    void take(CurveFeed &feed, std::vector<CurvePoint> *points);

private:
    struct Slot {
        const KnownMessage *message;
        MessageRecord record;
        std::vector<std::pair<int, CurveFeed *>> feeds; // index of the signal
    };

    void consumeOne(const RawFrame &frame);
    std::int64_t storeTime(const RawFrame &frame);
    Slot *slotOf(unsigned channel, const KnownMessage *message);
    void bindFeeds();
    void push(CurveFeed *feed, CurvePoint point) const;
    void interruptCurves(std::int64_t time);

    const StoreUse use_;
    mutable std::mutex lock_; // guards everything
    std::shared_ptr<const MessageLookup> lookup_ = std::make_shared<MessageLookup>();
    std::map<std::pair<unsigned, const KnownMessage *>, std::unique_ptr<Slot>> slots_;
    QHash<quint64, Slot *> slotsOfIds_; // by channel, kind and identifier; null: unknown
    std::vector<std::shared_ptr<CurveFeed>> feeds_;
    std::vector<SignalValue> values_; // room for a message's
    std::int64_t offset_ = 0;         // from the adapter's clock to the store's time
    std::int64_t now_ = 0;
    bool started_ = false;
    QHash<unsigned, std::int64_t> lastOf_; // the store's time of what each channel received and sent last
    std::uint64_t lost_ = 0;
};
