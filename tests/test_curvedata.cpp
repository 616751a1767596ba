// A curve's pyramid and the line drawn from it, against the plain list of its points.
#include "analysis/columnpicture.h"
#include "analysis/csvexport.h"
#include "analysis/curvestroke.h"

#include <QPainter>
#include <QTemporaryDir>
#include <QtTest>

#include <cmath>
#include <random>

namespace
{
constexpr double kNothing = std::numeric_limits<double>::quiet_NaN();

struct Made {
    CurveData curve;
    std::vector<CurvePoint> points; // those that the curve still has
};

// Times sometimes stand still or go back; some values are interruptions.
void fill(Made *made, std::size_t count, std::size_t limit, unsigned seed)
{
    made->curve = CurveData(limit);
    std::mt19937 random(seed);
    std::int64_t time = 1000;
    for (std::size_t i = 0; i < count; ++i) {
        time += std::int64_t(random() % 50) - 5;
        const double value = random() % 97 == 0 ? kNothing : double(random() % 100000) - 50000;
        made->curve.append({time, value});
        const std::int64_t last = made->points.empty() ? time : made->points.back().time;
        made->points.push_back({qMax(time, last), value});
    }
    made->points.erase(made->points.begin(), made->points.end() - std::ptrdiff_t(made->curve.size()));
}

ValueRange plainRange(const std::vector<CurvePoint> &points, std::size_t begin, std::size_t end)
{
    ValueRange range;
    for (std::size_t i = begin; i < qMin(end, points.size()); ++i)
        range.add(points[i].value);
    return range;
}
} // namespace

class TestCurveData : public QObject
{
    Q_OBJECT

private slots:
    void pyramidAgreesWithThePoints_data()
    {
        QTest::addColumn<int>("count");
        QTest::addColumn<int>("limit");
        QTest::newRow("none") << 0 << 100000;
        QTest::newRow("few") << 17 << 100000;
        QTest::newRow("whole chunks") << 8192 << 100000;
        QTest::newRow("many") << 30011 << 100000;
        QTest::newRow("the oldest are gone") << 30011 << 9000;
    }
    void pyramidAgreesWithThePoints()
    {
        QFETCH(int, count);
        QFETCH(int, limit);
        Made made;
        fill(&made, std::size_t(count), std::size_t(limit), 7);
        const CurveData &curve = made.curve;
        QVERIFY(curve.size() <= std::size_t(limit) && curve.size() + 8192 > std::size_t(qMin(count, limit)));
        QCOMPARE(curve.size() + curve.dropped(), std::size_t(count));
        std::mt19937 random(11);
        for (int round = 0; round < 3000; ++round) {
            const std::size_t a = random() % (curve.size() + 20);
            const std::size_t b = round % 3 ? a + random() % 40 : random() % (curve.size() + 20);
            const ValueRange got = curve.range(a, b);
            const ValueRange expected = plainRange(made.points, a, b);
            QVERIFY(got.minimum == expected.minimum && got.maximum == expected.maximum);
            const std::int64_t time = std::int64_t(random() % 700000);
            const auto at = std::partition_point(made.points.begin(), made.points.end(),
                                                 [&](const CurvePoint &point) { return point.time < time; });
            QCOMPARE(curve.firstAt(time), std::size_t(at - made.points.begin()));
            QCOMPARE(curve.firstAt(time, a), curve.firstAt(time));
        }
        if (curve.size() > 20000)
            QVERIFY(double(curve.bytes()) / double(curve.size()) < 24);
    }

    // Every pixel column shows the least and the largest of its values, and no other.
    void lineKeepsExtremes()
    {
        Made made;
        fill(&made, 30000, 100000, 3);
        std::mt19937 random(5);
        std::vector<QPointF> stroke;
        for (int round = 0; round < 60; ++round) {
            TimeWindow window;
            window.from = std::int64_t(random() % 300000);
            window.to = window.from + 200000 + std::int64_t(random() % 300000);
            window.pixels = 50 + int(random() % 200);
            strokeOf(made.curve, window, round % 2, stroke);
            std::vector<ValueRange> columns(std::size_t(window.pixels) + 1);
            for (const QPointF &point : stroke)
                if (point.x() >= 0 && point.x() < window.pixels)
                    columns[std::size_t(point.x())].add(point.y());
            std::size_t begin = made.curve.firstAt(window.from);
            for (int column = 0; column < window.pixels; ++column) {
                const double span = double(window.to - window.from);
                const std::size_t end =
                    made.curve.firstAt(std::int64_t(double(window.from) + span * (column + 1) / window.pixels));
                const ValueRange expected = plainRange(made.points, begin, end);
                ValueRange got = columns[std::size_t(column)];
                if (round % 2 && begin > 0) // a step begins with the value before
                    got.add(expected);
                QVERIFY2(expected.isEmpty() || (got.minimum <= expected.minimum && got.maximum >= expected.maximum),
                         qPrintable(QString::number(column)));
                if (round % 2 == 0 && !expected.isEmpty())
                    QVERIFY(got.minimum == expected.minimum && got.maximum == expected.maximum);
                begin = end;
            }
            QVERIFY(stroke.size() < std::size_t(window.pixels) * 6);
        }
    }

    // A table is written beside what goes on with the curves, and a file is replaced by a whole one or not at all.
    void tableOfCurves()
    {
        constexpr int kPoints = 50000;
        const QTemporaryDir folder;
        const QString path = folder.filePath("curves.csv");
        CurveData curves[2];
        for (int i = 0; i < kPoints; ++i) {
            curves[0].append({i * 1000, i == 7 ? kNothing : i * 0.5});
            if (i % 2)
                curves[1].append({i * 1000, double(i)});
        }
        const auto content = [&path] {
            QFile file(path);
            return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
        };
        const auto write = [&](std::int64_t from, std::int64_t to) {
            return std::make_unique<CsvExport>(
                path, std::vector<CsvExport::Column>{{"a \"b\"", curves[0].snapshot()}, {"c", curves[1].snapshot()}},
                from, to);
        };
        const auto whole = write(0, kPoints * 1000);
        for (int i = 0; i < kPoints; ++i)
            curves[0].append({(kPoints + i) * 1000, 1}); // not of the table
        QTRY_VERIFY_WITH_TIMEOUT(whole->finished(), 20000);
        QCOMPARE(whole->error(), QString());
        const QList<QByteArray> lines = content().split('\n');
        QCOMPARE(lines.size(), kPoints + 2);
        QCOMPARE(lines[0], QByteArray("\xEF\xBB\xBFTime [s],\"a \"\"b\"\"\",\"c\"\r"));
        QCOMPARE(lines[7], QByteArray("0.000006000,3,\r"));
        QCOMPARE(lines[8], QByteArray("0.000007000,,7\r"));
        QCOMPARE(lines[kPoints], QByteArray("0.049999000,24999.5,49999\r"));

        const QByteArray before = content();
        const auto givenUp = write(0, kPoints * 2000);
        givenUp->cancel();
        QTRY_VERIFY_WITH_TIMEOUT(givenUp->finished(), 20000);
        QVERIFY(content() == before);
        const auto part = write(7000, 8000);
        QTRY_VERIFY_WITH_TIMEOUT(part->finished(), 20000);
        QCOMPARE(content().split('\n').size(), 4);
    }

    // The picture of a dense line shows in every column what the line's points span, joined to the column before.
    void pictureOfColumns()
    {
        ColumnPicture picture;
        picture.begin({6, 8});
        picture.add({{-3, 1}, {0, 1}, {0, 3}, {1, 6}, {3, 6}, {3, kNothing}, {4, 100}, {4, -100}, {9, 2}}, 0xFF112233);
        picture.add({{5, 7}}, 0xFFAABBCC);
        QImage canvas(7, 9, QImage::Format_RGB32);
        canvas.fill(Qt::white);
        QPainter painter(&canvas);
        picture.draw(&painter, {1, 1});
        painter.end();
        QStringList rows;
        for (int y = 0; y < canvas.height(); ++y) {
            QString row;
            for (int x = 0; x < canvas.width(); ++x)
                row += canvas.pixel(x, y) == 0xFF112233 ? '#' : canvas.pixel(x, y) == 0xFFAABBCC ? 'o' : '.';
            rows.append(row);
        }
        QCOMPARE(rows.join(' '), QString("....... .....#. .#...#. .#...#. .##..#. ..#..#. ..#..#. ..####. .....#o"));
    }

    void fewPointsAreDrawnAsTheyAre()
    {
        CurveData curve;
        for (const CurvePoint point : {CurvePoint{0, 1}, {100, 3}, {200, kNothing}, {300, 2}, {900, 5}})
            curve.append(point);
        const auto text = [&](bool stepped, std::int64_t from, std::int64_t to) {
            std::vector<QPointF> stroke;
            strokeOf(curve, {from, to, int(to - from) / 10}, stepped, stroke);
            QStringList parts;
            for (const QPointF &point : stroke)
                parts << (std::isnan(point.y()) ? QString("-") : QString("%1,%2").arg(point.x()).arg(point.y()));
            return parts.join(' ');
        };
        QCOMPARE(text(false, 0, 1000), QString("0,1 10,3 - 30,2 90,5"));
        QCOMPARE(text(true, 0, 1000), QString("0,1 10,1 10,3 20,3 - 30,2 90,2 90,5"));
        QCOMPARE(text(false, 400, 800), QString("-10,2 50,5")); // both ends beyond the window
    }
};

QTEST_GUILESS_MAIN(TestCurveData)
#include "test_curvedata.moc"
