#include "widgets/dialogscaler.h"

#include <QGuiApplication>
#include <QHeaderView>
#include <QLayout>
#include <QScreen>
#include <QWidget>

namespace
{
constexpr QSize kFrameRoom(16, 40); // what a window's frame may take at 96 DPI
} // namespace

DialogScaler::DialogScaler(QWidget *dialog) : QObject(dialog), dialog_(dialog), designSize_(dialog->size())
{
    const auto children = dialog->findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly);
    for (QWidget *child : children)
        if (!child->isWindow())
            designGeometry_.insert(child, child->geometry());
    followScreen();
}

void DialogScaler::followScreen()
{
    const QScreen *screen = QGuiApplication::primaryScreen();
    if (!screen)
        return;
    connect(screen, &QScreen::logicalDotsPerInchChanged, this, &DialogScaler::scaleTo);
    scaleTo(screen->logicalDotsPerInch());
}

void DialogScaler::scaleTo(qreal logicalDpi)
{
    const qreal factor = logicalDpi / kDesignDpi;
    QFont font = dialog_->font();
    font.setPixelSize(qMax(1, qRound(kDesignFontPixels * factor)));
    dialog_->setFont(font);
    // Headers of tables keep the application's font when only a grandparent's changes.
    for (QHeaderView *header : dialog_->findChildren<QHeaderView *>())
        header->setFont(font);
    if (!dialog_->layout()) {
        for (auto child = designGeometry_.cbegin(); child != designGeometry_.cend(); ++child) {
            const QRect &design = child.value();
            child.key()->setGeometry(qRound(design.x() * factor), qRound(design.y() * factor),
                                     qRound(design.width() * factor), qRound(design.height() * factor));
        }
    }
    resizeBy(factor);
    factor_ = factor;
    emit scaled();
}

// First to the designed size, later the size that the user has given it, by as much as the factor has changed.
void DialogScaler::resizeBy(qreal factor)
{
    if (dialog_->windowState() & (Qt::WindowMaximized | Qt::WindowFullScreen))
        return;
    QSize size = factor_ == 0 ? designSize_ * factor : dialog_->size() * (factor / factor_);
    if (const QScreen *screen = QGuiApplication::primaryScreen())
        size = size.boundedTo(screen->availableSize() - kFrameRoom * factor);
    if (const QLayout *layout = dialog_->layout())
        size = size.expandedTo(layout->totalMinimumSize());
    dialog_->resize(size);
}
