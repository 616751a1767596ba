// The bus load of the last minutes as a curve, 0 to 100 %.
#pragma once

#include <QWidget>

#include <vector>

class LoadCurve : public QWidget
{
    Q_OBJECT

public:
    using QWidget::QWidget;

    // Shares of the time, ten points a second, the oldest first; without points the curve says that nothing is known.
    void setPoints(std::vector<float> points);
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    // Points across the whole width: a minute, five or ten, as many as are needed.
    std::size_t span() const;

    std::vector<float> points_;
};
