#include "app/panelarea.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QScrollBar>

PanelArea::PanelArea(QWidget *parent) : QScrollArea(parent)
{
    auto *content = new QWidget;
    panels_ = new QHBoxLayout(content);
    panels_->setContentsMargins(0, 0, 0, 0);
    setFrameShape(QFrame::NoFrame);
    setWidget(content);
    setWidgetResizable(true);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Preferred);
}

void PanelArea::addPanel(QWidget *panel)
{
    panels_->addWidget(panel);
}

QSize PanelArea::sizeHint() const
{
    return {panels_->totalMinimumSize().width(), neededHeight()};
}

QSize PanelArea::minimumSizeHint() const
{
    int widest = 0;
    for (int index = 0; index < panels_->count(); ++index)
        widest = qMax(widest, panels_->itemAt(index)->minimumSize().width());
    return {widest, neededHeight()};
}

// The bar never covers a panel's last row.
int PanelArea::neededHeight() const
{
    const QSize needed = panels_->totalMinimumSize();
    const bool scrolls = width() < needed.width();
    return needed.height() + (scrolls ? horizontalScrollBar()->sizeHint().height() : 0);
}

bool PanelArea::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::LayoutRequest)
        updateGeometry();
    return QScrollArea::eventFilter(watched, event);
}

void PanelArea::resizeEvent(QResizeEvent *event)
{
    QScrollArea::resizeEvent(event);
    updateGeometry();
}
