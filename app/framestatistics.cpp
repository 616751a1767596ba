#include "app/framestatistics.h"

#include "frames/modelitem.h"

#include <QLabel>

FrameStatistics::Counter FrameStatistics::counterOf(unsigned channel, unsigned direction)
{
    if (direction == Transmitted)
        return channel == 0 ? Channel1Transmitted : Channel2Transmitted;
    return channel == 0 ? Channel1Received : Channel2Received;
}

void FrameStatistics::attach(Counter counter, QLabel *total, QLabel *rate)
{
    lines_[counter].total = total;
    lines_[counter].rate = rate;
}

void FrameStatistics::add(Counter counter, quint32 frames)
{
    if (frames == 0)
        return;
    Line &line = lines_[counter];
    line.thisSecond += frames;
    line.total->setText(QString::number(line.total->text().toULongLong() + frames));
}

void FrameStatistics::add(const Counts &frames)
{
    for (int counter = 0; counter < CounterCount; ++counter)
        add(static_cast<Counter>(counter), frames[counter]);
}

void FrameStatistics::showRates()
{
    for (const Counter counter : {Channel1Received, Channel1Transmitted, Channel2Received, Channel2Transmitted}) {
        Line &line = lines_[counter];
        line.rate->setText(QStringLiteral("%1/s;").arg(line.thisSecond));
        line.thisSecond = 0;
    }
}

void FrameStatistics::resetTotals()
{
    for (const Line &line : lines_)
        line.total->setText(QStringLiteral("0"));
}
