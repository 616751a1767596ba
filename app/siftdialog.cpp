#include "app/siftdialog.h"

#include "app/siftlistmodel.h"
#include "ui_siftdialog.h"
#include "widgets/checkrowdelegate.h"

#include <QDebug>
#include <QGuiApplication>
#include <QScreen>

SiftDialog::SiftDialog(QWidget *parent)
    : FormDialog(parent), ui_(std::make_unique<Ui::SiftDialog>()), list_(new SiftListModel(this))
{
    ui_->setupUi(this);
    setWindowFlag(Qt::FramelessWindowHint);
    ui_->listView->setModel(list_);
    ui_->listView->setItemDelegate(new CheckRowDelegate(ui_->listView));
    connect(list_, &SiftListModel::selectionChanged, this, [this] { qDebug() << list_->selection(); });
    connect(ui_->searchEdit, &QLineEdit::textChanged, this, &SiftDialog::search);
    connect(ui_->caseBox, &QCheckBox::toggled, this, &SiftDialog::search);
    connect(ui_->wholeBox, &QCheckBox::toggled, this, &SiftDialog::search);
    finishForm();
}

SiftDialog::~SiftDialog() = default;

void SiftDialog::fill(const QStringList &values, int column)
{
    column_ = column;
    list_->fill(values); // all of them: a search text that was left only counts once it is edited
    showAllRow();
}

void SiftDialog::popupAt(const QPoint &globalPoint)
{
    const QScreen *screen = QGuiApplication::screenAt(globalPoint);
    if (!screen)
        screen = QGuiApplication::primaryScreen();
    const QRect room = screen->availableGeometry();
    const QPoint last(room.right() + 1 - width(), room.bottom() + 1 - height());
    move(qMax(room.left(), qMin(globalPoint.x(), last.x())), qMax(room.top(), qMin(globalPoint.y(), last.y())));
    show();
    raise();
    activateWindow();
    ui_->searchEdit->selectAll();
    ui_->searchEdit->setFocus(Qt::PopupFocusReason);
}

void SiftDialog::search()
{
    const QString text = ui_->searchEdit->text();
    if (!text.isEmpty() || list_->isSearching())
        list_->search(text, ui_->caseBox->isChecked() ? Qt::CaseSensitive : Qt::CaseInsensitive,
                      ui_->wholeBox->isChecked());
    showAllRow();
}

void SiftDialog::showAllRow()
{
    ui_->listView->setRowHidden(SiftListModel::kAllRow, list_->isSearching());
    const int firstShown = list_->isSearching() ? SiftListModel::kAllRow + 1 : SiftListModel::kAllRow;
    ui_->listView->setCurrentIndex(list_->index(firstShown)); // where the arrow keys begin
}

void SiftDialog::on_confirmBtn_clicked()
{
    ui_->searchEdit->clear();
    hide();
    emit siftedData(list_->selection(), column_);
}

void SiftDialog::on_cancelBtn_clicked()
{
    reject();
}

void SiftDialog::retranslate()
{
    ui_->retranslateUi(this);
    list_->retranslate();
}
