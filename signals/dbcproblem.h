// What is wrong with a database file, and where.
#pragma once

#include <QString>
#include <QVector>

enum class DbcFault {
    // The file as a whole; no place.
    CannotOpen,
    TooLarge,
    TooManyProblems, // the rest is not told
    // The statement is left out.
    UnknownStatement,
    Expected,
    UnterminatedText,
    BadNumber,
    BadIdentifier,
    BadSignalLayout,
    RepeatedMessage,
    RepeatedSignal,
    SignalWithoutMessage,
    UnknownMessage,
    UnknownSignal,
    UnknownNode,
    UnknownValueTable,
    // The statement is kept, with a default in place of what is wrong.
    MissingSemicolon,
    MissingExtendedFlag,
    ZeroFactor,
    BadFloatLength,
    BeyondMessage,
    NoMultiplexer,
    SeveralMultiplexers,
    MultiplexerLoop,
    UnknownEnumerationValue,
};

struct DbcProblem {
    int line = 0;   // from 1; 0: the file as a whole
    int column = 0; // characters, from 1
    DbcFault fault = DbcFault::Expected;
    QString detail; // what was expected, or the name that the fault is about
};

// "line 3, column 7: ..." in the current language.
QString problemText(const DbcProblem &problem);
