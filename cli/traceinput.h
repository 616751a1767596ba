// One recording to read, a file or the standard input.
#pragma once

#include "cli/pipeinput.h"
#include "traces/tracereader.h"

#include <QElapsedTimer>
#include <QFile>

#include <functional>

class TraceInput
{
public:
    // "-": the standard input. Without a format it is found by content. false, and told, when it cannot be read.
    bool open(const QString &path, std::optional<TraceFormat> format);
    // The same without telling: *trouble says why not.
    bool open(const QString &path, std::optional<TraceFormat> format, QString *trouble);

    TraceReader &reader() { return *reader_; }
    // Hands over what is read, batch by batch, until the end, an interrupt, or `take` or `pause` answering false; true
    // at the end. A batch may be empty. pause: more may come later, so what has been made of it so far is to be handed
    // on at once. After an interrupt a pipe is read on until its writer, who got it as well, ends or falls silent; true
    // then too.
    bool readThrough(
        const std::function<bool(RawFrame *frames, int count)> &take,
        const std::function<bool()> &pause = [] { return true; });
    // Where time 0 of the frames handed over lies on the recording's clock, nanoseconds: the first frame's time in a
    // recording that has times of day without a date, else 0. Known with the first frame.
    std::int64_t base() const { return base_.value_or(0); }
    bool atEnd() const { return reader_->atEnd(); }
    // More may come later, without an end.
    bool isLive() const { return device_->isSequential(); }
    // Bytes taken up since the last call; 0 of the standard input.
    std::uint64_t newBytes();
    // Tells damage and parts that are no frames; false when there was any. After readThrough().
    bool tellTrouble() const;
    QString name() const { return name_; }

private:
    void rebase(RawFrame *frames, int count);
    // false: an interrupt leaves nothing to wait for.
    bool goesOn();

    QString name_;
    QFile file_;
    PipeInput pipe_;
    QIODevice *device_ = nullptr;
    QElapsedTimer sinceInterrupt_;
    QElapsedTimer sinceFrames_; // from the interrupt on
    std::unique_ptr<TraceReader> reader_;
    std::optional<std::int64_t> base_;
    qint64 told_ = 0;
};
