// Keeps a dialog as large as it was designed: its size, its direct children and its font follow the screen's logical
// DPI, by the factor DPI / 96, when it is built and whenever the DPI changes.
#pragma once

#include <QHash>
#include <QObject>
#include <QRect>

class QWidget;

class DialogScaler : public QObject
{
    Q_OBJECT

public:
    // Call at the end of the dialog's constructor; the dialog owns the scaler. A child inside a layout is placed by
    // the layout; the dialog never gets smaller than its layout needs, and otherwise not larger than the screen.
    explicit DialogScaler(QWidget *dialog);

    // Scales for the given logical DPI (screens tell it; tests may).
    void scaleTo(qreal logicalDpi);

signals:
    void scaled(); // the dialog's font and size are new

private:
    void followScreen();
    void resizeBy(qreal factor);

    QWidget *dialog_;
    QSize designSize_;
    qreal factor_ = 0;                       // in force; 0 before the first scaling
    QHash<QWidget *, QRect> designGeometry_; // direct children, as designed at 96 DPI
};

constexpr int kDesignDpi = 96;
// Font size in pixels at 96 DPI of everything the program shows.
constexpr int kDesignFontPixels = 13;
