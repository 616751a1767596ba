// The signal databases in use, which the windows of signals keep.
#pragma once

#include "signals/databaseset.h"

#include <functional>

class QWidget;

struct DatabaseAccess {
    std::function<std::vector<DatabaseSet::Entry>()> entries;
    std::function<std::shared_ptr<const MessageLookup>()> lookup;
    std::function<void(QWidget *parent)> choose; // lets the user add and remove databases
};
