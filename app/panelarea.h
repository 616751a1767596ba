// The send panels, side by side: whole while the window is wide enough, scrolled sideways when it is not.
#pragma once

#include <QScrollArea>

class QHBoxLayout;

class PanelArea : public QScrollArea
{
    Q_OBJECT

public:
    explicit PanelArea(QWidget *parent = nullptr);

    // Puts a panel to the right of the others; the area owns it.
    void addPanel(QWidget *panel);

    QSize sizeHint() const override;        // all panels
    QSize minimumSizeHint() const override; // the widest one

protected:
    bool eventFilter(QObject *watched, QEvent *event) override; // panels that need more or less room
    void resizeEvent(QResizeEvent *event) override;

private:
    int neededHeight() const;

    QHBoxLayout *panels_;
};
