#include "app/displayfilter.h"

#include "app/frametableview.h"
#include "app/siftdialog.h"
#include "device/language.h"

#include <QHeaderView>
#include <QMenu>
#include <QSet>

DisplayFilter::DisplayFilter(MyTableModel *model, FrameTableView *table)
    : QObject(table), model_(model), table_(table), popup_(new SiftDialog(table))
{
    table->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(table, &QWidget::customContextMenuRequested, this, [this](const QPoint &point) {
        showMenu(table_->columnAt(point.x()), table_->viewport()->mapToGlobal(point));
    });
    QHeaderView *header = table->horizontalHeader();
    header->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(header, &QWidget::customContextMenuRequested, this, [this, header](const QPoint &point) {
        showMenu(header->logicalIndexAt(point), header->viewport()->mapToGlobal(point));
    });
    connect(popup_, &SiftDialog::siftedData, this, &DisplayFilter::setCondition);
}

void DisplayFilter::clearAll()
{
    for (int column = 0; column < model_->columnCount(); ++column)
        model_->setFilter(column, QStringList());
    table_->filterChanged();
    emit conditionsChanged();
}

void DisplayFilter::setCondition(const QStringList &accepted, int column)
{
    model_->setFilter(column, accepted);
    table_->filterChanged();
    emit conditionsChanged();
}

void DisplayFilter::showMenu(int column, const QPoint &globalPoint)
{
    if (column < 0)
        return;
    popup_->hide();
    const QStringList values = distinctTexts(column);
    auto *menu = new QMenu(table_);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->addAction(text3("筛选", "篩選", "sift"), this,
                    [this, values, column, globalPoint] { showPopup(values, column, globalPoint); });
    menu->addAction(text3("显示全部", "顯示全部", "show all"), this,
                    [this, column] { setCondition(QStringList(), column); });
    menu->popup(globalPoint);
}

void DisplayFilter::showPopup(const QStringList &values, int column, const QPoint &globalPoint)
{
    table_->show();
    popup_->fill(values, column);
    popup_->popupAt(globalPoint);
}

QStringList DisplayFilter::distinctTexts(int column) const
{
    QStringList texts;
    QSet<QString> seen;
    for (int row = 0; row < model_->rowCount(); ++row) {
        const QString text = model_->cellText(row, column);
        const int known = seen.size();
        seen.insert(text);
        if (seen.size() != known)
            texts.append(text);
    }
    return texts;
}
