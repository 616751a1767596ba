#include "device/language.h"
#include "signals/dbcreader.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

Q_DECLARE_METATYPE(DbcFault)

namespace
{

// A file with one message; `more` follows its signals.
DbcResult readWith(const QByteArray &more, const QByteArray &before = {})
{
    return readDbc(before +
                   "BU_: A B\nBO_ 1 M: 8 A\n SG_ s : 0|8@1+ (1,0) [0|0] \"\" B\n SG_ t : 8|8@1+ (1,0) [0|0] "
                   "\"\" B\n" +
                   more);
}

const MessageDefinition &message(const DbcResult &result)
{
    return result.database.messages.first();
}

QString ranges(const SignalDefinition &signal)
{
    QStringList texts;
    for (const SelectorRange &range : signal.selectedBy)
        texts.append(QStringLiteral("%1-%2").arg(range.first).arg(range.last));
    return texts.join(QLatin1Char(' '));
}

} // namespace

class TestDbcReader : public QObject
{
    Q_OBJECT

private slots:
    // The seed of the fuzz target has one of everything.
    void readsEverything()
    {
        const DbcResult result = readDbcFile(QStringLiteral(OSTREL_DBC_SEED));
        for (const DbcProblem &problem : result.problems)
            QFAIL(qPrintable(problemText(problem)));
        const SignalDatabase &database = result.database;
        QCOMPARE(database.version, QStringLiteral("1.0"));
        QCOMPARE(database.comment, QStringLiteral("network; all of it"));
        QCOMPARE(database.nodes.size(), 2);
        QCOMPARE(database.nodes[0].comment, QStringLiteral("the \"engine\""));
        QCOMPARE(database.nodes[1].name, QStringLiteral("Dash_with_a_short_name_that_was_cut"));
        QCOMPARE(database.messages.size(), 2);

        const MessageDefinition &speeds = database.messages[0];
        QCOMPARE(speeds.comment, QStringLiteral("two\nlines"));
        QCOMPARE(speeds.cycleTimeMs, 20u);
        QCOMPARE(speeds.senders, QStringList({QStringLiteral("Engine"), database.nodes[1].name}));
        QCOMPARE(speeds.groups.size(), 1);
        QCOMPARE(speeds.groups[0].members, QVector<int>({0, 1}));
        const SignalDefinition &speed = speeds.signalList[0];
        QCOMPARE(speed.unit, QStringLiteral("km/h"));
        QCOMPARE(speed.comment, QStringLiteral("of the wheels"));
        QCOMPARE(speed.receivers, QStringList({database.nodes[1].name, QStringLiteral("Engine")}));
        QCOMPARE(speed.factor, 0.01);
        QCOMPARE(speed.offset, -40.0);
        QCOMPARE(speed.startValue.value_or(0), 4000.5);
        QVERIFY(speed.hasLimits());
        QCOMPARE(*speed.valueText(-1), QStringLiteral("below"));
        QCOMPARE(*speed.valueText(65535), QStringLiteral("invalid"));
        QVERIFY(!speed.valueText(0));
        const SignalDefinition &revolutions = speeds.signalList[1];
        QVERIFY(revolutions.byteOrder == ByteOrder::Motorola && revolutions.type == SignalType::Signed);
        QCOMPARE(revolutions.maximum, 1000.0);
        QVERIFY(revolutions.receivers.isEmpty());
        QVERIFY(speeds.signalList[2].type == SignalType::Float);

        const MessageDefinition &group = database.messages[1];
        QVERIFY(group.extended && group.j1939 && !group.fd);
        QCOMPARE(group.id, 0x18FEF1FEu);
        QCOMPARE(*group.signalList[0].valueText(1), QStringLiteral("on"));
        QCOMPARE(ranges(group.signalList[0]), QStringLiteral("0-0 3-5"));
        QCOMPARE(group.signalList[2].multiplexedBy, 1);
        QCOMPARE(group.signalList[1].multiplexedBy, 3);

        QCOMPARE(database.attributes.value(QStringLiteral("BusType")).toString(), QStringLiteral("CAN FD"));
        QCOMPARE(group.attributes.value(QStringLiteral("VFrameFormat")).toString(), QStringLiteral("J1939PG"));
        QCOMPARE(database.relations.size(), 1);
        QCOMPARE(database.relations[0].value.toInt(), 200);
        QCOMPARE(database.relations[0].object, QStringLiteral("Speed"));
    }

    // What is wrong is told at its place, and the rest is read all the same.
    void tellsAndGoesOn_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<DbcFault>("fault");
        QTest::addColumn<int>("line"); // of the fault; the lines before `content` do not count
        QTest::addColumn<int>("column");
        const auto row = [](const char *name, const char *content, DbcFault fault, int line, int column) {
            QTest::newRow(name) << QByteArray(content) << fault << line << column;
        };
        row("statement", "  WHAT_ 1;\n", DbcFault::UnknownStatement, 1, 3);
        row("punctuation", "CM_ SG_ 1 s \"x\" y;\n", DbcFault::MissingSemicolon, 1, 16);
        row("text left open", "CM_ SG_ 1 s \"left open;\nVAL_ 1 s 1 \"x\" ;\n", DbcFault::MissingSemicolon, 2, 13);
        row("text open to the end", "CM_ BO_ 1 'x' ;\n", DbcFault::Expected, 1, 11);
        row("unit open", "BO_ 2 N: 8 A\n SG_ u : 0|8@1+ (1,0) [0|0] \"km\n", DbcFault::UnterminatedText, 2, 28);
        row("number", "BO_ 2 N: 8 A\n SG_ u : 0|8@1+ (1e,0) [0|0] \"\" B\n", DbcFault::BadNumber, 2, 18);
        row("no number", "BO_ x N: 8 A\n", DbcFault::Expected, 1, 5);
        row("identifier", "BO_ 4294967295 N: 8 A\n SG_ u : 0|8@1+ (1,0) [0|0] \"\" B\n", DbcFault::BadIdentifier, 1, 5);
        row("identifier, no flag", "BO_ 2048 N: 8 A\n", DbcFault::MissingExtendedFlag, 1, 5);
        row("layout", "BO_ 2 N: 8 A\n SG_ u : 0|65@1+ (1,0) [0|0] \"\" B\n", DbcFault::BadSignalLayout, 2, 10);
        row("message twice", "BO_ 1 Again: 8 A\n", DbcFault::RepeatedMessage, 1, 5);
        row("signal twice", "BO_ 2 N: 8 A\n SG_ u : 0|8@1+ (1,0) [0|0] \"\" B\n SG_ u : 8|8@1+ (1,0) [0|0] \"\" B\n",
            DbcFault::RepeatedSignal, 3, 6);
        row("unknown message", "VAL_ 7 s 1 \"x\" ;\n", DbcFault::UnknownMessage, 1, 6);
        row("unknown signal", "SIG_VALTYPE_ 1 nobody : 1;\n", DbcFault::UnknownSignal, 1, 16);
        row("unknown node", "CM_ BU_ C \"x\";\n", DbcFault::UnknownNode, 1, 9);
        row("unknown table", "VAL_ 1 t Table ;\n", DbcFault::UnknownValueTable, 1, 10);
        row("factor", "BO_ 2 N: 8 A\n SG_ u : 0|8@1+ (0,0) [0|0] \"\" B\n", DbcFault::ZeroFactor, 2, 6);
        row("limits", "BO_ 2 N: 8 A\n SG_ u : 0|8@1+ (1,0) [-1.#INF|0] \"\" B\n", DbcFault::Expected, 2, 27);
        row("short float", "SIG_VALTYPE_ 1 t : 1;\n", DbcFault::BadFloatLength, 1, 20);
        row("beyond", "BO_ 2 N: 1 A\n SG_ u : 4|8@1+ (1,0) [0|0] \"\" B\n", DbcFault::BeyondMessage, 2, 6);
        row("no multiplexer", "BO_ 2 N: 8 A\n SG_ u m1 : 0|8@1+ (1,0) [0|0] \"\" B\n", DbcFault::NoMultiplexer, 2, 6);
        row("multiplexing mark", "BO_ 2 N: 8 A\n SG_ u mx : 0|8@1+ (1,0) [0|0] \"\" B\n", DbcFault::Expected, 2, 8);
        row("multiplexer twice",
            "BO_ 2 N: 8 A\n SG_ u m1 : 0|8@1+ (1,0) [0|0] \"\" B\n SG_ v M : 8|8@1+ (1,0) [0|0] \"\" B\n SG_ w M : "
            "16|8@1+ (1,0) [0|0] \"\" B\n",
            DbcFault::SeveralMultiplexers, 2, 6);
        row("loop", "SG_MUL_VAL_ 1 s t 1-1;\nSG_MUL_VAL_ 1 t s 1-1;\n", DbcFault::MultiplexerLoop, -1, 6);
        row("enumeration", "BA_DEF_ BO_ \"E\" ENUM \"a\",\"b\";\nBA_ \"E\" BO_ 1 2;\n",
            DbcFault::UnknownEnumerationValue, 2, 15);
        row("tabs and characters", "\tCM_ \"\xC3\xA4\" x;\n", DbcFault::MissingSemicolon, 1, 9);
    }
    void tellsAndGoesOn()
    {
        QFETCH(QByteArray, content);
        QFETCH(DbcFault, fault);
        QFETCH(int, line);
        QFETCH(int, column);
        constexpr int kLinesBefore = 4;
        const DbcResult result = readWith(content + "BO_ 99 Last: 8 A\n SG_ z : 0|8@1+ (1,0) [0|0] \"\" B\n");
        QVERIFY(!result.problems.isEmpty());
        const DbcProblem &problem = result.problems.first();
        QVERIFY2(problem.fault == fault, qPrintable(problemText(problem)));
        QCOMPARE(problem.line, line + kLinesBefore);
        QCOMPARE(problem.column, column);
        for (const unsigned code : {SimplifiedChinese, TraditionalChinese, English}) {
            setLanguageCode(code);
            QVERIFY(!problemText(problem).contains(QLatin1Char('%')));
        }
        setLanguageCode(SimplifiedChinese);
        QCOMPARE(message(result).signalList.size(), 2);
        int above = 0; // the way up from a multiplexed signal ends
        for (int at = 0; at >= 0 && above < 3; at = message(result).signalList[at].multiplexedBy)
            ++above;
        QVERIFY(above < 3);
        const MessageDefinition &last = result.database.messages.last();
        QCOMPARE(last.name, QStringLiteral("Last"));
        QCOMPARE(last.signalList.size(), 1);
    }

    void readsWithoutComplaint_data()
    {
        QTest::addColumn<QByteArray>("content");
        const auto row = [](const char *name, const char *content) { QTest::newRow(name) << QByteArray(content); };
        row("last semicolon missing", "VAL_ 1 s 1 \"x\"");
        row("semicolons in comments", "CM_ SG_ 1 s \"a; b; \";\nCM_ \"c;\nd\";\n");
        row("path that ends with a backslash", "CM_ \"C:\\files\\\";\nCM_ BO_ 1 \"x\";\n");
        row("signals of no message",
            "BO_ 3221225472 VECTOR__INDEPENDENT_SIG_MSG: 0 Vector__XXX\n SG_ q : 0|8@1+ (1,0) "
            "[0|0] \"\" Vector__XXX\nCM_ SG_ 3221225472 q \"x\";\nVAL_ 3221225472 q 1 \"x\" ;\n");
        row("environment variables", "EV_ e: 0 [0|1] \"a;b\" 0 1 DUMMY_NODE_VECTOR0 A;\nEV_DATA_ e: 9;\nVAL_ e 1 \"x\" "
                                     ";\nCM_ EV_ e \"x\";\nBA_DEF_ EV_ \"d\" INT 0 1;\nBA_ \"d\" EV_ e 1;\n");
        row("empty group", "SIG_GROUP_ 1 g 1 :;\n");
        row("real attribute", "BA_DEF_ \"f\" FLOAT -1.5 1E9;\nBA_DEF_DEF_ \"f\" 2.5;\nBA_ \"f\" 1e-3;\n");
        row("relation", "BA_DEF_REL_ BU_BO_REL_ \"r\" ENUM \"a\",\"b\";\nBA_REL_ \"r\" BU_BO_REL_ A 1 \"b\";\nBA_REL_ "
                        "\"r\" BU_EV_REL_ A e 0;\n");
        row("receivers on two lines", "BO_ 2 N: 8 A\n SG_ u : 0|8@1+ (1,0) [0|0] \"\" A,\n  B\n");
    }
    void readsWithoutComplaint()
    {
        QFETCH(QByteArray, content);
        for (const QByteArray &text : {content, QByteArray(content).replace('\n', "\r\n")}) {
            const DbcResult result = readWith(text);
            QVERIFY2(result.problems.isEmpty(), qPrintable(problemText(result.problems.value(0))));
            QCOMPARE(message(result).signalList.size(), 2);
        }
    }

    void decidesTheEncodingByTheWholeFile()
    {
        for (const QByteArray &bytes : {QByteArray("\xC2\xB0\x43 \xE2\x82\xAC"), QByteArray("\xB0\x43 \x80")})
            for (const QByteArray &mark : {QByteArray(), QByteArray("\xEF\xBB\xBF")}) {
                if (!mark.isEmpty() && bytes.startsWith('\xB0'))
                    continue;
                const DbcResult result = readWith("CM_ \"" + bytes + "\";\n", mark);
                QVERIFY(result.problems.isEmpty());
                QCOMPARE(result.database.comment, QStringLiteral("°C €"));
            }
    }

    void frameFormats_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("formats"); // of the standard message and the extended one
        QTest::newRow("none") << QByteArray() << "- fd";
        QTest::newRow("names") << QByteArray("BA_DEF_ BO_ \"VFrameFormat\" ENUM "
                                             "\"StandardCAN\",\"J1939PG\",\"StandardCAN_FD\";\nBA_ "
                                             "\"VFrameFormat\" BO_ 1 2;\nBA_ \"VFrameFormat\" BO_ 2147483653 "
                                             "\"J1939PG\";\nBA_DEF_ BO_ \"CANFD_BRS\" ENUM \"0\",\"1\";\nBA_DEF_DEF_ "
                                             "\"CANFD_BRS\" \"1\";\n")
                               << "fd,brs j1939";
        QTest::newRow("numbers") << QByteArray("BA_DEF_ BO_ \"VFrameFormat\" INT 0 15;\nBA_DEF_DEF_ \"VFrameFormat\" "
                                               "3;\nBA_ \"VFrameFormat\" BO_ 1 14;\n")
                                 << "fd j1939";
        QTest::newRow("protocol") << QByteArray("BA_DEF_ \"ProtocolType\" STRING ;\nBA_ \"ProtocolType\" \"J1939\";\n")
                                  << "- j1939";
    }
    void frameFormats()
    {
        QFETCH(QByteArray, content);
        QFETCH(QString, formats);
        const DbcResult result = readWith("BO_ 2147483653 X: 16 A\n" + content);
        QVERIFY(result.problems.isEmpty());
        QStringList found;
        for (const MessageDefinition &each : result.database.messages) {
            QStringList parts;
            if (each.fd)
                parts << QStringLiteral("fd");
            if (each.bitRateSwitch)
                parts << QStringLiteral("brs");
            if (each.j1939)
                parts << QStringLiteral("j1939");
            found << (parts.isEmpty() ? QStringLiteral("-") : parts.join(QLatin1Char(',')));
        }
        QCOMPARE(found.join(QLatin1Char(' ')), formats);
    }

    void filesThatCannotBeRead()
    {
        const QTemporaryDir dir;
        const DbcResult missing = readDbcFile(dir.filePath(QStringLiteral("none.dbc")));
        QVERIFY(!missing.usable());
        QCOMPARE(missing.problems.first().fault, DbcFault::CannotOpen);
        QVERIFY(!readDbc(QByteArray(100000, '\0') + "\x7F"
                                                    "ELF\n")
                     .usable());
        QVERIFY(readDbc({}).usable());
        QByteArray many;
        for (int i = 0; i < 2 * kMostProblems; ++i)
            many += "nonsense\nVAL_ 7 x ;\n";
        const DbcResult result = readDbc(many);
        QCOMPARE(result.problems.size(), kMostProblems + 1);
        QCOMPARE(result.problems.last().fault, DbcFault::TooManyProblems);
    }
};

QTEST_GUILESS_MAIN(TestDbcReader)
#include "test_dbcreader.moc"
