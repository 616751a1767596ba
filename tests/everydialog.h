// Every window and dialog of the program, each made in a state that shows what it can show: for the checks of all texts
// and for the manual's pictures.
#pragma once

#include <QByteArray>
#include <QVector>
#include <QWidget>

#include <functional>
#include <memory>

struct WindowMaker {
    QByteArray name;
    std::function<std::unique_ptr<QWidget>()> make; // not yet shown
};

// The main window, then the dialogs. They need applicationDir(), the settings store and a driver.
const QVector<WindowMaker> &everyWindow();
