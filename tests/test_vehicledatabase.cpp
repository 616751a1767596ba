// The built-in vehicle's traffic, read with the database that is installed for it.
#include "device/driver/simulated/trafficsource.h"
#include "signals/databaseset.h"

#include <QtTest>

#include <algorithm>
#include <functional>
#include <map>
#include <numeric>
#include <set>

namespace
{

constexpr BusTime kNsPerMs = 1000000;
constexpr BusTime kDrive = 60000 * kNsPerMs; // after which everything has happened
constexpr BusSettings kFastBus{1000000, 8000000, 0};

RawFrame rawOf(const BusFrame &frame, BusTime time)
{
    RawFrame raw;
    raw.time = std::int64_t(time);
    raw.id = frame.identifier();
    raw.extended = frame.extended();
    raw.remote = frame.remote();
    raw.fd = frame.fd;
    raw.bitRateSwitch = frame.bitRateSwitch;
    raw.length = frame.length;
    std::copy(std::begin(frame.data), std::end(frame.data), raw.data);
    return raw;
}

struct Course {
    double least = 1e300;
    double most = -1e300;
    double step = 0; // the largest from one value to the next
    double last = 0;
    std::set<double> values;
};

} // namespace

class TestVehicleDatabase : public QObject
{
    Q_OBJECT

    DatabaseSet set_;
    std::vector<RawFrame> frames_;

private slots:
    void initTestCase()
    {
        const auto outcome = set_.add(QStringLiteral(OSTREL_VEHICLE_DATABASE), DatabaseChannels::Both);
        QVERIFY2(outcome.problems.isEmpty(), qPrintable(problemText(outcome.problems.value(0))));
        const auto vehicle = makeBuiltInVehicle();
        vehicle->restart(0, kFastBus);
        for (; vehicle->due() < kDrive; vehicle->sent(vehicle->due()))
            frames_.push_back(rawOf(vehicle->frame(), vehicle->due()));
    }

    void everyFrameIsItsMessage()
    {
        std::map<const KnownMessage *, std::int64_t> last;
        for (const RawFrame &frame : frames_) {
            const KnownMessage *message = set_.lookup()->find(frame);
            QVERIFY2(message, qPrintable(QString::number(frame.id, 16)));
            const MessageDefinition &definition = *message->definition;
            QCOMPARE(unsigned(frame.length), unsigned(definition.length));
            QCOMPARE(frame.fd, definition.fd);
            QCOMPARE(frame.bitRateSwitch, definition.bitRateSwitch);
            if (last.count(message))
                QCOMPARE(frame.time - last[message], std::int64_t(definition.cycleTimeMs) * std::int64_t(kNsPerMs));
            last[message] = frame.time;
        }
        QCOMPARE(last.size(), set_.entries().front().database->messages.size());
    }

    void everySignalLives()
    {
        std::map<QString, Course> courses;
        for (const RawFrame &frame : frames_) {
            const KnownMessage &message = *set_.lookup()->find(frame);
            std::vector<SignalValue> values(std::size_t(message.decoder.signalCount()));
            message.decoder.decode(frame, values.data());
            for (int i = 0; i < message.decoder.signalCount(); ++i) {
                const SignalDefinition &signal = message.definition->signalList[i];
                const SignalValue &value = values[i];
                if (value.state != SignalState::Valid) {
                    QVERIFY(value.state == SignalState::NotSelected);
                    continue;
                }
                const QString name = message.definition->name + QLatin1Char('.') + signal.name;
                QVERIFY2(!signal.hasLimits() || (value.physical >= signal.minimum && value.physical <= signal.maximum),
                         qPrintable(name + QLatin1Char(' ') + QString::number(value.physical)));
                QVERIFY2(signal.valueTexts.isEmpty() || signal.valueText(value.raw), qPrintable(name));
                Course &course = courses[name];
                course.step = std::max(course.step, course.values.empty() ? 0 : std::abs(value.physical - course.last));
                course.last = value.physical;
                course.least = std::min(course.least, value.physical);
                course.most = std::max(course.most, value.physical);
                if (course.values.size() < 2)
                    course.values.insert(value.physical);
                if (signal.name == QLatin1String("Checksum")) {
                    const std::uint8_t *end = frame.data + frame.length - 1;
                    QCOMPARE(int(value.raw), std::accumulate(frame.data, end, 0, std::bit_xor<int>()));
                }
            }
        }
        QCOMPARE(int(courses.size()), set_.entries().front().database->content.signalCount());
        const QStringList constant = {QStringLiteral("Engine.EngineRunning"),
                                      QStringLiteral("Climate.WantedTemperature"),
                                      QStringLiteral("Position.Satellites"), QStringLiteral("Service.EnergyTotal")};
        for (const auto &[name, course] : courses)
            QVERIFY2(course.values.size() > 1 || constant.contains(name) || name.endsWith(QLatin1String("Kind")),
                     qPrintable(name));

        const Course speed = courses[QStringLiteral("Speed.VehicleSpeed")];
        QCOMPARE(speed.least, 0.0);
        QVERIFY(speed.most > 119.9 && speed.step < 0.2);
        const Course revolutions = courses[QStringLiteral("Engine.EngineSpeed")];
        QVERIFY(revolutions.least > 700 && revolutions.most > 3300);
        QVERIFY(courses[QStringLiteral("Speed.Acceleration")].least < -2);
        QCOMPARE(courses[QStringLiteral("Transmission.Gear")].most, 5.0);
        QVERIFY(courses[QStringLiteral("WheelSpeeds.WheelSpeedRearRight")].most > 119);
        QVERIFY(courses[QStringLiteral("Motion.YawRate")].most > 5);
        QCOMPARE(courses[QStringLiteral("Radar.SensorTime")].most, double(frameTimeOf("Radar")));
    }

private:
    std::int64_t frameTimeOf(const char *name) const // of the last one
    {
        const auto found = std::find_if(frames_.rbegin(), frames_.rend(), [&](const RawFrame &frame) {
            return set_.lookup()->find(frame)->definition->name == QLatin1String(name);
        });
        return found->time;
    }
};

QTEST_GUILESS_MAIN(TestVehicleDatabase)
#include "test_vehicledatabase.moc"
