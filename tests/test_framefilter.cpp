// The filter's text: what it lets through, where it says that it is wrong, how it is completed.
#include "traces/framefilter.h"

#include "device/language.h"

#include <QTest>

namespace
{

RawFrame frame(std::uint32_t id, std::initializer_list<std::uint8_t> data = {})
{
    RawFrame made;
    made.id = id;
    made.extended = id > 0x7FF;
    made.length = static_cast<std::uint8_t>(data.size());
    std::copy(data.begin(), data.end(), made.data);
    return made;
}

// Knows one signal: the first data byte of identifier 0x10.
class FirstByte : public SignalSource
{
public:
    int signalNumber(const QString &name) const override { return name == QLatin1String("Engine.Speed") ? 7 : -1; }
    std::optional<double> signalValue(int number, const RawFrame &frame) const override
    {
        return number == 7 && frame.id == 0x10 ? std::optional<double>(frame.data[0]) : std::nullopt;
    }
    QStringList signalNames() const override { return {QStringLiteral("Engine.Speed")}; }
};

} // namespace

class TestFrameFilter : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { setLanguageCode(English); }
    void letsThrough_data();
    void letsThrough();
    void tellsWhereItIsWrong_data();
    void tellsWhereItIsWrong();
    void completes();
};

void TestFrameFilter::letsThrough_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("numbers"); // of the frames below that pass

    QTest::newRow("nothing asked") << "  "
                                   << "0123456789";
    QTest::newRow("one identifier") << "id 123"
                                    << "0";
    QTest::newRow("range, list, hexadecimal prefix") << "id 0x100..1ff, 10"
                                                     << "0124";
    QTest::newRow("mask") << "id 121/7F1"
                          << "01";
    QTest::newRow("pattern") << "data 02 ?? 7F"
                             << "0";
    QTest::newRow("pattern without blanks, half a byte") << "data 02??7?"
                                                         << "03";
    QTest::newRow("pattern further in, longer than some frames") << "data[1] ff"
                                                                 << "0";
    QTest::newRow("a pattern's byte that is a word too") << "data fd"
                                                         << "4";
    QTest::newRow("kinds") << "ext or remote or error"
                           << "3567";
    QTest::newRow("classic leaves FD out, errors are of no kind") << "not classic and not std"
                                                                  << "57";
    QTest::newRow("flags") << "brs and esi"
                           << "5";
    QTest::newRow("direction, channel") << "tx or channel 2..3"
                                        << "89";
    QTest::newRow("and binds closer") << "id 123 or id 10 and rx"
                                      << "04";
    QTest::newRow("parentheses") << "(id 123 or id 10) and tx"
                                 << "";
    QTest::newRow("not not") << "NOT not id 123"
                             << "0";
    QTest::newRow("length") << "length 0, 64"
                            << "1256789";
    QTest::newRow("time") << "time 1.5..2"
                          << "89";
    QTest::newRow("time, open end") << "time 2.."
                                    << "9";
    QTest::newRow("time, open beginning, then more") << "time ..1.999 and not id 0..7FF"
                                                     << "35";
    QTest::newRow("signal") << "signal Engine.Speed >= 253"
                            << "4";
    QTest::newRow("signal, frames without it") << "not signal Engine.Speed != 253"
                                               << "0123456789";
}

void TestFrameFilter::letsThrough()
{
    QFETCH(QString, text);
    QFETCH(QString, numbers);

    std::vector<RawFrame> frames{frame(0x123, {2, 0xFF, 0x7F}), frame(0x121), frame(0x1FF),
                                 frame(0x18FF0000, {2, 3, 0x70}), frame(0x10, {0xFD})};
    frames.resize(10);
    frames[5] = frame(0x18FF0001);
    frames[5].fd = frames[5].bitRateSwitch = frames[5].errorStateIndicator = true;
    frames[5].length = 64;
    frames[6].remote = true;
    frames[7].error = true;
    frames[8].direction = Direction::Sent;
    frames[8].time = 1500000000;
    frames[9].channel = 3;
    frames[9].time = 2000000000;
    for (const int plain : {6, 7, 8, 9})
        frames[static_cast<std::size_t>(plain)].id = 0x7FF;

    if (text == QLatin1String("not signal Engine.Speed != 253"))
        frames[4].data[0] = 253;
    const auto source = std::make_shared<const FirstByte>();
    FilterError error;
    const auto filter = FrameFilter::parse(text, &error, source);
    QVERIFY2(filter, qPrintable(error.message));
    QString passed;
    for (std::size_t i = 0; i < frames.size(); ++i) {
        if (filter->matches(frames[i]))
            passed += QString::number(i);
    }
    QCOMPARE(passed, numbers);
}

void TestFrameFilter::tellsWhereItIsWrong_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("position");
    QTest::addColumn<int>("length");

    QTest::newRow("no number") << "id xyz" << 3 << 3;
    QTest::newRow("identifier too large") << "id 20000000" << 3 << 8;
    QTest::newRow("ends before it begins") << "id 200..1FF" << 8 << 3;
    QTest::newRow("nothing behind and") << "rx and" << 6 << 0;
    QTest::newRow("two conditions side by side") << "rx tx" << 3 << 2;
    QTest::newRow("open parenthesis") << "(rx" << 3 << 0;
    QTest::newRow("half a byte") << "data 1" << 5 << 1;
    QTest::newRow("past the data") << "data[64] 00" << 5 << 2;
    QTest::newRow("channel") << "channel 65536" << 8 << 5;
    QTest::newRow("unknown word") << "rx or bogus" << 6 << 5;
    QTest::newRow("signal without a database") << "signal Engine.Speed > 1" << 7 << 12;
    QTest::newRow("time without a range") << "time 5" << 6 << 0;
    QTest::newRow("nested too deeply") << QString(100000, QLatin1Char('(')) << 200 << 1;
    QTest::newRow("too many conditions") << QStringLiteral("rx") + QStringLiteral(" or rx").repeated(100000) << 15000
                                         << 2;
}

void TestFrameFilter::tellsWhereItIsWrong()
{
    QFETCH(QString, text);
    QFETCH(int, position);
    QFETCH(int, length);

    FilterError error;
    QVERIFY(!FrameFilter::parse(text, &error));
    QCOMPARE(error.length, length);
    if (!text.startsWith(QLatin1String("rx or rx")))
        QCOMPARE(error.position, position);
    QVERIFY(!error.message.isEmpty());
}

void TestFrameFilter::completes()
{
    const auto source = std::make_shared<const FirstByte>();
    const auto words = [&source](const QString &text) { return FrameFilter::completions(text, text.size(), source); };
    QVERIFY(words(QString()).contains(QStringLiteral("id")));
    QCOMPARE(words(QStringLiteral("rx a")), QStringList{QStringLiteral("and")});
    QCOMPARE(words(QStringLiteral("not re")), QStringList{QStringLiteral("remote")});
    QCOMPARE(words(QStringLiteral("signal En")), QStringList{QStringLiteral("Engine.Speed")});
    QVERIFY(words(QStringLiteral("bogus and r")).isEmpty());
    QCOMPARE(FrameFilter::completions(QStringLiteral("ex and rx"), 2), QStringList{QStringLiteral("ext")});
}

QTEST_GUILESS_MAIN(TestFrameFilter)

#include "test_framefilter.moc"
