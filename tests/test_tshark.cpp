// Our pcapng and BLF as tshark reads them, frame by frame.
#include "tracecontract.h"

#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

Q_DECLARE_METATYPE(TraceFormat)

namespace
{

constexpr std::int64_t kStart = 1700000000123456789;
constexpr std::int64_t kSecond = 1'000'000'000;
constexpr int kTimeout = 60'000;

QString timeText(std::int64_t time)
{
    return QStringLiteral("%1.%2").arg(time / kSecond).arg(time % kSecond, 9, 10, QLatin1Char('0'));
}

// A frame as the fields that tshark prints of it; what its BLF reader does not tell is left out there.
QString expectedLine(const RawFrame &frame, TraceFormat format)
{
    const bool byCode = format == TraceFormat::Blf && frame.fd; // whose bytes it tells as they are
    const unsigned length = byCode ? lengthOfDlc(dlcOfLength(frame.length), true) : frame.length;
    QStringList fields{timeText(kStart + frame.time), QString::number(length)};
    const QString data = QString::fromLatin1(
        QByteArray(reinterpret_cast<const char *>(frame.data), frame.remote ? 0 : frame.length).toHex());
    if (frame.error)
        fields[1] = QStringLiteral("8");
    fields << (frame.error ? QString() : QString::number(frame.id)) << (frame.error ? QString() : data);
    if (format == TraceFormat::Blf)
        return fields.join(QLatin1Char('\t'));
    const bool fd = frame.fd && !frame.error; // error frames are classic ones
    const auto flag = [](bool value) { return QString::number(value ? 1 : 0); };
    fields << QStringLiteral("can%1").arg(frame.channel - 1)
           << QString(frame.direction == Direction::Sent ? "0x00000002" : "0x00000001")
           << (frame.error ? QString() : flag(frame.extended))
           << (frame.fd || frame.error ? QString() : flag(frame.remote)) << (fd ? flag(frame.bitRateSwitch) : QString())
           << (fd ? flag(frame.errorStateIndicator) : QString());
    return fields.join(QLatin1Char('\t'));
}

} // namespace

class TestTshark : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        if (QStandardPaths::findExecutable(QStringLiteral("tshark")).isEmpty())
            QSKIP("tshark is not installed");
    }

    void frames_data()
    {
        QTest::addColumn<TraceFormat>("format");
        QTest::newRow("pcapng") << TraceFormat::Pcapng;
        QTest::newRow("blf") << TraceFormat::Blf;
    }
    void frames()
    {
        QFETCH(TraceFormat, format);
        std::vector<RawFrame> frames;
        for (const RawFrame &frame : everyKindOfFrame()) {
            // Remote frames of FD do not exist in pcapng; error frames of BLF are none to tshark.
            if (!(frame.fd && frame.remote) && !(frame.error && format == TraceFormat::Blf))
                frames.push_back(frame);
        }
        TraceWriterOptions options;
        options.startUtc = kStart;
        QTemporaryDir folder;
        QFile file(folder.filePath(QStringLiteral("frames")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(writeTrace(format, frames, options).bytes);
        file.close();

        // A guess by content that some of the data satisfy.
        QStringList arguments{"--disable-protocol", "autosar-nm", "-r", file.fileName(), "-T", "fields"};
        QStringList fields{"frame.time_epoch", "can.len", "can.id", "data.data"};
        if (format == TraceFormat::Pcapng)
            fields << QStringList{"frame.interface_name", "frame.packet_flags_direction",
                                  "can.flags.xtd",        "can.flags.rtr",
                                  "canfd.flags.brs",      "canfd.flags.esi"};
        for (const QString &field : fields)
            arguments << QStringLiteral("-e") << field;
        QProcess tshark;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("TZ"), QStringLiteral("UTC"));
        tshark.setProcessEnvironment(environment);
        tshark.start(QStringLiteral("tshark"), arguments);
        QVERIFY(tshark.waitForFinished(kTimeout));
        const QStringList lines =
            QString::fromLatin1(tshark.readAllStandardOutput()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
        QCOMPARE(lines.size(), static_cast<int>(frames.size()));
        for (int index = 0; index < lines.size(); ++index)
            QCOMPARE(lines[index], expectedLine(frames[static_cast<std::size_t>(index)], format));
    }
};

QTEST_GUILESS_MAIN(TestTshark)
#include "test_tshark.moc"
