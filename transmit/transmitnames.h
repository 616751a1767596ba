// Names of an entry's choices: in files, and for the user.
#pragma once

#include "transmit/framechecks.h"
#include "transmit/transmitentry.h"

#include <QStringList>

FrameProtocol protocolOf(const RawFrame &frame);
void setProtocol(RawFrame &frame, int protocol); // a length that it does not have becomes 8

// What stands in files; the index is the choice.
const QStringList &protocolNames();
const QStringList &transmitTypeNames();
const QStringList &transmitModeNames();
// The same for the user, in the current language.
QStringList formatTexts();
QStringList frameTypeTexts();
QStringList protocolTexts();
QStringList transmitTypeTexts();
QStringList transmitModeTexts();
// Every length that a frame of the kind may have, in bytes.
QStringList lengthTexts(bool fd);
