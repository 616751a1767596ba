// Words, numbers and texts of a DBC file, with their places. What does not fit is thrown as a DbcError, which the
// parser catches statement by statement.
#pragma once

#include "signals/dbcproblem.h"

#include <QByteArray>

#include <cstdint>
#include <string_view>

struct DbcError {
    DbcFault fault;
    const char *place;
    QString detail;
};

class DbcScanner
{
public:
    explicit DbcScanner(const QByteArray &content); // a byte-order mark is skipped

    // Behind white space and "//" comments; false at the end.
    bool more();
    const char *place() const { return at_; }
    // The next thing begins on the line on which the previous one ended.
    bool moreOnLine();
    bool next(char wanted); // takes it when it is there
    void expect(char wanted);
    bool startsText();
    bool startsNumber();

    std::string_view peekWord();
    std::string_view word();         // a name or keyword
    std::string_view quoted();       // without its quotation marks and with its backslashes; may span lines
    std::string_view quotedOnLine(); // must end on its line
    double number();
    std::int64_t integer(); // up to 2^64 - 1, whose bits it keeps
    std::uint32_t messageWord();
    // The ";" of a statement; its absence is forgiven at the end of the file, else answered with false.
    bool statementEnd();

    // To the next line after `place` that begins with a statement.
    void skipToStatement(const char *place);
    // Behind the ";" of a statement that is not read, or to the next one.
    void skipStatement();
    void rewind(const char *place) { at_ = place; }
    // Behind the next `wanted` of the line; false, at the line's end, when there is none.
    bool skipOnLine(char wanted);
    // Behind the list of words after "NS_:".
    void skipNewSymbols();

    QString text(std::string_view bytes) const; // by the file's encoding
    QString unescaped(std::string_view bytes) const;
    void locate(const char *place, int *line, int *column);

private:
    std::string_view numberText();
    bool escapedQuote(const char *backslash) const;
    bool beginsLine() const;

    QByteArray content_;
    const char *end_;
    const char *at_;
    bool utf8_;
    const char *countedTo_; // locate()'s: places rise, so lines are counted once
    int line_ = 1;
};

bool isDbcStatement(std::string_view word);
