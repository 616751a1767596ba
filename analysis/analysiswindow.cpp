#include "analysis/analysiswindow.h"

#include "widgets/dialogscaler.h"

#include <QCloseEvent>
#include <QEvent>
#include <QGuiApplication>
#include <QPushButton>
#include <QScreen>
#include <QSettings>
#include <QStyle>

namespace
{
} // namespace

AnalysisWindow::AnalysisWindow(const QString &name, QWidget *parent) : QWidget(parent, Qt::Window), name_(name)
{
    setObjectName(name);
}

AnalysisWindow::~AnalysisWindow()
{
    if (isVisible())
        keepPlace();
}

QString AnalysisWindow::key(const char *what) const
{
    return QStringLiteral("analysis/%1/%2").arg(name_, QLatin1String(what));
}

void AnalysisWindow::open()
{
    if (!isVisible()) {
        for (QPushButton *button : findChildren<QPushButton *>())
            button->setAutoDefault(true); // Enter presses it while it has the focus
        retranslate();
        const QByteArray place = QSettings().value(key("geometry")).toByteArray();
        if (!restoreGeometry(place)) {
            const int edge = 2 * style()->pixelMetric(QStyle::PM_MdiSubWindowFrameWidth);
            const int titleBar = style()->pixelMetric(QStyle::PM_TitleBarHeight);
            const QSize fits = screen()->availableSize() - QSize(edge, titleBar + edge);
            resize((designSize() * logicalDpiX() / kDesignDpi).boundedTo(fits));
        }
    }
    setWindowState(windowState() & ~Qt::WindowMinimized);
    show();
    raise();
    activateWindow();
}

void AnalysisWindow::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::LanguageChange)
        retranslate();
}

void AnalysisWindow::closeEvent(QCloseEvent *event)
{
    keepPlace();
    QWidget::closeEvent(event);
}

void AnalysisWindow::keepPlace() const
{
    QSettings().setValue(key("geometry"), saveGeometry());
}
