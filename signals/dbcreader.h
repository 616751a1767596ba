// Reads a signal database in Vector's DBC format. Whatever can be read is kept; the rest is told with its place.
#pragma once

#include "signals/database.h"
#include "signals/dbcproblem.h"

struct DbcResult {
    SignalDatabase database;
    QVector<DbcProblem> problems; // in the order of reading; at most kMostProblems and one that says so

    // False when nothing could be read: no such file, or nothing but problems in it.
    bool usable() const { return problems.isEmpty() || !database.messages.isEmpty() || !database.nodes.isEmpty(); }
};

constexpr int kMostProblems = 1000;
constexpr qint64 kMostDbcBytes = 256 * 1024 * 1024;

DbcResult readDbc(const QByteArray &content);
// The content of a file; `problem` tells when it cannot be read.
bool readDbcContent(const QString &path, QByteArray *content, DbcProblem *problem);
DbcResult readDbcFile(const QString &path);
