// The standard input or another pipe as a device: hands over what has come at once, and has nothing for a while rather
// than waiting without end.
#pragma once

#include "cli/platform.h"

#include <QIODevice>

class PipeInput : public QIODevice
{
    Q_OBJECT

public:
    // Reads from this descriptor, which stays its owner's; before open().
    void setDescriptor(int descriptor) { descriptor_ = descriptor; }

    bool isSequential() const override { return true; }
    bool ended() const { return ended_; }
    // Reading ended because of an error of the system.
    bool failed() const { return failed_; }

protected:
    qint64 readData(char *data, qint64 capacity) override;
    qint64 writeData(const char *, qint64) override { return -1; }

private:
    int descriptor_ = kStandardInput;
    bool ended_ = false;
    bool failed_ = false;
};
