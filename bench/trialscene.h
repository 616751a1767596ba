// What the long trials share: the real window on a simulated adapter, and a watch over its event loop.
#pragma once

#include "app/mainwindow.h"
#include "device/devicelayer.h"
#include "device/driver/simulated/simulateddriver.h"
#include "testfolder.h"
#include "windowdriver.h"

#include <QElapsedTimer>
#include <QTest>
#include <QTimer>

#include <algorithm>
#include <memory>

// The longest time between two turns of the event loop.
class LoopWatch : public QObject
{
public:
    LoopWatch()
    {
        timer_.setTimerType(Qt::PreciseTimer);
        connect(&timer_, &QTimer::timeout, this, [this] {
            longestUs_ = std::max(longestUs_, clock_.nsecsElapsed() / 1000);
            clock_.restart();
        });
    }
    void start()
    {
        longestUs_ = 0;
        clock_.start();
        timer_.start(0);
        timer_.setInterval(1);
    }
    double longestMs() const { return static_cast<double>(longestUs_) / 1000; }

private:
    QTimer timer_;
    QElapsedTimer clock_;
    qint64 longestUs_ = 0;
};

struct Scene {
    TestFolder folder;
    SimulatedDriver *adapter = nullptr;
    std::unique_ptr<MainWindow> window;
    std::unique_ptr<WindowDriver> user;

    explicit Scene(const SimulatorOptions &options) : Scene(std::make_unique<SimulatedDriver>(options)) {}
    explicit Scene(std::unique_ptr<SimulatedDriver> driver)
    {
        folder.copyCatalogues();
        adapter = driver.get();
        setDriver(std::move(driver));
        window = std::make_unique<MainWindow>();
        window->resize(1366, 768);
        window->show();
        user = std::make_unique<WindowDriver>(*window);
        QTest::qWait(100);
    }
    ~Scene()
    {
        user.reset();
        window.reset();
        setDriver(nullptr);
    }
};
