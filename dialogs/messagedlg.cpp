#include "dialogs/messagedlg.h"

#include "device/language.h"
#include "traces/frametexts.h"
#include "transmit/signalfields.h"

#include <QFileInfo>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace
{
enum Column { Name, Id, Length, CycleTime, Senders, File, Comment, ColumnCount };
enum Role { FileIndexRole = Qt::UserRole, MessageIndexRole };
constexpr QSize kDesignSize(900, 420);
constexpr int kWidestChars = 32; // average characters of a column

} // namespace

MessageDlg::MessageDlg(DatabaseAccess databases, QWidget *parent)
    : FormDialog(parent),
      databases_(std::move(databases)),
      searchLabel_(new QLabel),
      search_(new QLineEdit),
      list_(new QTreeWidget),
      choose_(new QPushButton),
      ok_(new QPushButton),
      cancel_(new QPushButton)
{
    setObjectName(QStringLiteral("MessageDlg"));
    search_->setObjectName(QStringLiteral("searchEdit"));
    search_->setClearButtonEnabled(true);
    searchLabel_->setBuddy(search_);
    list_->setObjectName(QStringLiteral("messageList"));
    list_->setRootIsDecorated(false);
    list_->setUniformRowHeights(true);
    list_->setSelectionMode(QAbstractItemView::ExtendedSelection);
    list_->setColumnCount(ColumnCount);
    choose_->setObjectName(QStringLiteral("databasesButton"));
    ok_->setObjectName(QStringLiteral("okButton"));
    ok_->setDefault(true);
    cancel_->setObjectName(QStringLiteral("cancelButton"));
    auto *top = new QHBoxLayout;
    top->addWidget(searchLabel_);
    top->addWidget(search_);
    top->addWidget(choose_);
    auto *buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(ok_);
    buttons->addWidget(cancel_);
    auto *all = new QVBoxLayout(this);
    all->addLayout(top);
    all->addWidget(list_);
    all->addLayout(buttons);
    resize(kDesignSize);

    connect(search_, &QLineEdit::textChanged, this, &MessageDlg::filter);
    connect(list_, &QTreeWidget::itemSelectionChanged, this, &MessageDlg::showState);
    connect(list_, &QTreeWidget::itemDoubleClicked, this, &QDialog::accept);
    connect(choose_, &QPushButton::clicked, this, [this] {
        databases_.choose(this);
        fill();
    });
    connect(ok_, &QPushButton::clicked, this, &QDialog::accept);
    connect(cancel_, &QPushButton::clicked, this, &QDialog::reject);
    MessageDlg::retranslate();
    finishForm();
    fill();
    search_->setFocus();
}

void MessageDlg::retranslate()
{
    setWindowTitle(text3("数据库中的报文", "資料庫中的訊息", "Messages of the databases"));
    searchLabel_->setText(text3("查找(&F)", "尋找(&F)", "&Find"));
    list_->setHeaderLabels({text3("报文", "訊息", "Message"), QStringLiteral("ID(0x)"), text3("长度", "長度", "Length"),
                            text3("周期(ms)", "週期(ms)", "Cycle(ms)"), text3("发送节点", "發送節點", "Senders"),
                            text3("数据库", "資料庫", "Database"), text3("注释", "註解", "Comment")});
    choose_->setText(text3("数据库(&D)…", "資料庫(&D)…", "&Databases…"));
    ok_->setText(text3("添加(&A)", "新增(&A)", "&Add"));
    cancel_->setText(text3("取消", "取消", "Cancel"));
    fitColumns();
}

void MessageDlg::fill()
{
    list_->clear();
    shown_ = databases_.entries();
    QList<QTreeWidgetItem *> items;
    for (std::size_t file = 0; file < shown_.size(); ++file) {
        const QString name = QFileInfo(shown_[file].path).fileName();
        const QVector<MessageDefinition> &messages = shown_[file].database->content.messages;
        for (int number = 0; number < messages.size(); ++number) {
            const MessageDefinition &message = messages.at(number);
            if (!isOneFrame(message))
                continue;
            auto *item = new QTreeWidgetItem;
            item->setText(Name, message.name);
            item->setText(Id, identifierText(message.id, message.extended));
            item->setText(Length, QString::number(message.length));
            item->setText(CycleTime, message.cycleTimeMs == 0 ? QString() : QString::number(message.cycleTimeMs));
            item->setText(Senders, message.senders.join(QStringLiteral(", ")));
            item->setText(File, name);
            item->setText(Comment, message.comment.simplified());
            item->setToolTip(Comment, item->text(Comment));
            item->setTextAlignment(Length, Qt::AlignRight | Qt::AlignVCenter);
            item->setTextAlignment(CycleTime, Qt::AlignRight | Qt::AlignVCenter);
            item->setData(Name, FileIndexRole, int(file));
            item->setData(Name, MessageIndexRole, number);
            items << item;
        }
    }
    list_->addTopLevelItems(items);
    fitColumns();
    filter();
}

void MessageDlg::fitColumns()
{
    const int widest = kWidestChars * list_->fontMetrics().averageCharWidth();
    for (int column = 0; column < ColumnCount; ++column) {
        list_->resizeColumnToContents(column);
        list_->setColumnWidth(column, qMin(list_->columnWidth(column), widest));
    }
}

// Every word somewhere in the row.
void MessageDlg::filter()
{
    const QStringList words = search_->text().split(QLatin1Char(' '), Qt::SkipEmptyParts);
    QTreeWidgetItem *first = nullptr;
    for (int row = 0; row < list_->topLevelItemCount(); ++row) {
        QTreeWidgetItem *item = list_->topLevelItem(row);
        QString text;
        for (int column = 0; column < ColumnCount; ++column)
            text += item->text(column) + QLatin1Char('\n');
        const bool hidden = std::any_of(words.begin(), words.end(), [&text](const QString &word) {
            return !text.contains(word, Qt::CaseInsensitive);
        });
        item->setHidden(hidden);
        if (hidden)
            item->setSelected(false);
        else if (!first)
            first = item;
    }
    if (first && list_->selectedItems().isEmpty())
        list_->setCurrentItem(first);
    showState();
}

void MessageDlg::showState()
{
    ok_->setEnabled(!list_->selectedItems().isEmpty());
}

TransmitList MessageDlg::entries() const
{
    TransmitList entries;
    for (int row = 0; row < list_->topLevelItemCount(); ++row) {
        const QTreeWidgetItem *item = list_->topLevelItem(row);
        if (!item->isSelected())
            continue;
        const DatabaseSet::Entry &file = shown_[item->data(Name, FileIndexRole).toUInt()];
        const unsigned channel = file.channels == DatabaseChannels::Second ? 1 : 0;
        entries << entryOfMessage(file.database->content.messages.at(item->data(Name, MessageIndexRole).toInt()),
                                  channel);
    }
    return entries;
}
