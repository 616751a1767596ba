// Two recordings compared by streaming, against a plain comparison of everything in memory.
#include "tracecontract.h"

#include "statistics/recordingcomparison.h"

#include <QTemporaryDir>
#include <QtTest>

#include <map>
#include <random>

namespace
{

using Rows = std::vector<std::pair<std::uint64_t, RawFrame>>;

// 20 identifiers with counting data, of which some come in blocks far from each other, some only here.
std::vector<RawFrame> recording(unsigned seed, bool blocks)
{
    std::mt19937 random(seed);
    std::vector<RawFrame> frames;
    std::map<std::uint32_t, std::uint8_t> counters;
    for (int i = 0; i < 30000; ++i) {
        RawFrame frame;
        const std::uint32_t part = blocks ? std::uint32_t(i) / 5000 : std::uint32_t(5 - i / 5000);
        frame.id = i % 2 == 0 ? 0x100 + random() % 14 : 0x200 + part;
        frame.extended = frame.id % 3 == 0;
        frame.channel = std::uint16_t(1 + frame.id % 2);
        frame.direction = random() % 2 == 0 ? Direction::Sent : Direction::Received;
        frame.length = 3;
        frame.data[1] = counters[frame.id]++;
        frame.data[2] = std::uint8_t(frame.id == 0x103 && i > 20000 ? seed : 7);
        frame.time = std::int64_t(i) * 100000 + std::int64_t(random() % 50000);
        frames.push_back(frame);
        if (i == 777)
            frames.back().error = true;
        if (seed == 2 && i == 9)
            frames.back().id = 0x3FF;
        if (seed == 1 && frame.id == 0x10A && counters[0x10A] == 200)
            frames.back().length = 2;
    }
    return frames;
}

std::shared_ptr<RecordingIndex> indexOf(const QString &path, const std::vector<RawFrame> &frames)
{
    QFile file(path);
    file.open(QIODevice::WriteOnly);
    file.write(writeTrace(TraceFormat::Candump, frames).bytes);
    file.close();
    auto index = std::make_shared<RecordingIndex>(path);
    QString error;
    if (!index->open(&error))
        qFatal("%s", qPrintable(error));
    return index;
}

QString line(const IdentifierKey &key, bool channels)
{
    return QStringLiteral("%1 %2 %3").arg(channels ? key.channel : 0).arg(key.id, 0, 16).arg(key.extended);
}

QString line(const PeriodStatistics &period)
{
    return QStringLiteral(" %1 %2 %3").arg(period.minimum).arg(period.maximum).arg(std::llround(period.mean));
}

// The plain way.
QStringList expectedLines(const std::vector<RawFrame> (&all)[2], const std::uint64_t (&from)[2], bool channels)
{
    std::map<QString, std::array<Rows, 2>> identifiers;
    for (const std::size_t side : {0U, 1U})
        for (std::uint64_t row = from[side]; row < all[side].size(); ++row)
            if (const RawFrame &frame = all[side][row]; !frame.error)
                identifiers[line(IdentifierKey::of(frame), channels)][side].emplace_back(row, frame);
    QStringList lines;
    for (const auto &identifier : identifiers) {
        const std::array<Rows, 2> &sides = identifier.second;
        QString text = identifier.first;
        for (const Rows &rows : sides) {
            std::vector<std::int64_t> distances;
            for (std::size_t i = 1; i < rows.size(); ++i)
                distances.push_back(rows[i].second.time - rows[i - 1].second.time);
            PeriodStatistics period;
            if (!distances.empty()) {
                period.minimum = *std::min_element(distances.begin(), distances.end());
                period.maximum = *std::max_element(distances.begin(), distances.end());
                period.mean = double(rows.back().second.time - rows[0].second.time) / double(distances.size());
            }
            text += QStringLiteral(" %1").arg(rows.size()) + line(period);
        }
        for (std::size_t i = 0; i < std::min(sides[0].size(), sides[1].size()); ++i) {
            const auto bytes = [&](std::size_t side) {
                const RawFrame &frame = sides[side][i].second;
                return QByteArray(reinterpret_cast<const char *>(frame.data), frame.length);
            };
            if (bytes(0) != bytes(1)) {
                text += QStringLiteral(" %1: %2 %3").arg(i + 1).arg(sides[0][i].first).arg(sides[1][i].first);
                break;
            }
        }
        lines.append(text);
    }
    lines.sort();
    return lines;
}

QStringList lines(const std::vector<ComparedIdentifier> &compared)
{
    QStringList all;
    for (const ComparedIdentifier &identifier : compared) {
        QString text = line(identifier.key, true);
        for (const ComparedSide &side : identifier.sides)
            text += QStringLiteral(" %1").arg(side.count) + line(side.period);
        if (identifier.difference > 0)
            text += QStringLiteral(" %1: %2 %3")
                        .arg(identifier.difference)
                        .arg(identifier.sides[0].row)
                        .arg(identifier.sides[1].row);
        all.append(text);
    }
    all.sort();
    return all;
}

} // namespace

class TestRecordingComparison : public QObject
{
    Q_OBJECT

private slots:
    void equalsPlainComparison_data()
    {
        QTest::addColumn<bool>("blocks"); // identifiers come in another order
        QTest::addColumn<bool>("channels");
        QTest::addColumn<int>("left");
        QTest::addColumn<int>("right");
        QTest::newRow("from the beginning") << true << true << 0 << 0;
        QTest::newRow("other order") << false << true << 0 << 0; // more wait than there is room for
        QTest::newRow("from the middle") << true << false << 100 << 12345;
        QTest::newRow("from the end") << false << false << 30000 << 0;
    }
    void equalsPlainComparison()
    {
        QFETCH(bool, blocks);
        QFETCH(bool, channels);
        QFETCH(int, left);
        QFETCH(int, right);
        const std::vector<RawFrame> written[2] = {recording(1, true), recording(2, blocks)};
        const std::shared_ptr<RecordingIndex> indexes[2] = {indexOf(dir_.filePath("left.log"), written[0]),
                                                            indexOf(dir_.filePath("right.log"), written[1])};
        QTRY_VERIFY(indexes[0]->settled() && indexes[1]->settled());
        const std::vector<RawFrame> frames[2] = {readTrace(writeTrace(TraceFormat::Candump, written[0]).bytes).frames,
                                                 readTrace(writeTrace(TraceFormat::Candump, written[1]).bytes).frames};
        const std::uint64_t from[2] = {std::uint64_t(left), std::uint64_t(right)};
        RecordingComparison comparison({indexes[0], from[0]}, {indexes[1], from[1]}, channels, 2000);
        QTRY_VERIFY(comparison.state().finished);
        QVERIFY(!comparison.state().unreadable);
        QCOMPARE(comparison.state().done, comparison.state().total);
        const QStringList expected = expectedLines(frames, from, channels);
        QVERIFY(expected.size() > 15);
        QCOMPARE(lines(comparison.result()), expected);
    }
    void survivesAFileThatWasCut()
    {
        const auto whole = indexOf(dir_.filePath("whole.log"), recording(1, true));
        const auto cut = indexOf(dir_.filePath("cut.log"), recording(2, true));
        QTRY_VERIFY(whole->settled() && cut->settled());
        QVERIFY(QFile::resize(dir_.filePath("cut.log"), 5000));
        RecordingComparison comparison({whole, 0}, {cut, 0}, true);
        QTRY_VERIFY(comparison.state().finished);
        QVERIFY(comparison.state().unreadable);
        RecordingComparison cancelled({whole, 0}, {whole, 0}, true);
        cancelled.cancel(); // and its end
    }

private:
    QTemporaryDir dir_;
};

QTEST_GUILESS_MAIN(TestRecordingComparison)
#include "test_recordingcomparison.moc"
