// A signal in a plot: its points, and how they are shown.
#pragma once

#include "analysis/curvedata.h"
#include "analysis/signalid.h"
#include "signals/database.h"

#include <QColor>

#include <memory>

class CurveFeed;
class MessageLookup;
class SignalReading;

struct PlotSignal {
    SignalId id;
    QColor colour;
    int number = 1; // from 1, shown at the curve's end
    bool shown = true;
    CurveData data;
    std::shared_ptr<SignalReading> reading; // of its points
    std::shared_ptr<CurveFeed> feed;
    ValueRange scale;       // of its axis; empty before there are points
    bool scaleKept = false; // the user chose it; else it follows what is on the screen
    // From the database, as long as one knows the signal:
    QString message; // name; else empty
    QString unit;
    bool tellsChannel = false; // another one of this name is on another channel
    ValueTexts texts;
    double factor = 1;
    double offset = 0;

    void describe(const MessageLookup &lookup);
    QString name() const;  // "Message.Signal", "CH1 Message.Signal"
    QString title() const; // and its unit
    // Whether its values are states, which have texts.
    bool isEnumeration() const { return !texts.isEmpty(); }
    // The text of a state, empty when this value has none.
    QString stateText(double physical) const;
    // The last value at or before this time; not a number when there is none.
    double valueAt(std::int64_t time) const;
};

// Colours that most colour-blind people can tell apart (Okabe and Ito, without yellow), then darker ones of them, then
// lighter ones; the numbers at the curves' ends do the rest. number: from 1.
QColor plotColour(int number);
