#include "analysis/databasedialog.h"

#include "device/language.h"

#include <QComboBox>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QSettings>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace
{
enum Column { File, Channels, Messages, Problems, Folder, ColumnCount };
constexpr DatabaseChannels kChoices[] = {DatabaseChannels::First, DatabaseChannels::Second, DatabaseChannels::Both};
const QString kDatabaseFolderKey = QStringLiteral("signals/folder");
constexpr int kMostToolTipLines = 20;
constexpr QSize kDesignSize(640, 300);
} // namespace

QString channelsText(DatabaseChannels channels)
{
    switch (channels) {
    case DatabaseChannels::First:
        return QStringLiteral("1");
    case DatabaseChannels::Second:
        return QStringLiteral("2");
    case DatabaseChannels::Both:
        break;
    }
    return QStringLiteral("1, 2");
}

void addDatabaseFiles(SignalDatabases *databases, QWidget *parent)
{
    QSettings kept;
    QFileDialog dialog(parent, text3("添加信号数据库", "新增訊號資料庫", "Add signal databases"),
                       kept.value(kDatabaseFolderKey).toString(), QStringLiteral("DBC (*.dbc *.DBC);;* (*)"));
    dialog.setFileMode(QFileDialog::ExistingFiles);
    if (dialog.exec() != QDialog::Accepted)
        return;
    kept.setValue(kDatabaseFolderKey, dialog.directory().absolutePath());
    for (const QString &path : dialog.selectedFiles())
        databases->add(path, DatabaseChannels::Both);
}

DatabaseDialog::DatabaseDialog(SignalDatabases *databases, QWidget *parent)
    : FormDialog(parent),
      databases_(databases),
      list_(new QTreeWidget),
      channelsLabel_(new QLabel),
      channels_(new QComboBox),
      add_(new QPushButton),
      vehicle_(new QPushButton),
      remove_(new QPushButton),
      close_(new QPushButton)
{
    list_->setObjectName(QStringLiteral("databaseList"));
    list_->setRootIsDecorated(false);
    list_->setColumnCount(ColumnCount);
    for (const Column column : {Messages, Problems})
        list_->headerItem()->setTextAlignment(column, Qt::AlignRight | Qt::AlignVCenter);
    list_->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    channels_->setObjectName(QStringLiteral("channelsBox"));
    for (const DatabaseChannels choice : kChoices)
        channels_->addItem(channelsText(choice));
    channelsLabel_->setBuddy(channels_);
    add_->setObjectName(QStringLiteral("addButton"));
    vehicle_->setObjectName(QStringLiteral("vehicleButton"));
    remove_->setObjectName(QStringLiteral("removeButton"));
    close_->setObjectName(QStringLiteral("closeButton"));
    auto *row = new QHBoxLayout;
    row->addWidget(add_);
    row->addWidget(vehicle_);
    row->addWidget(remove_);
    row->addWidget(channelsLabel_);
    row->addWidget(channels_);
    row->addStretch();
    row->addWidget(close_);
    auto *all = new QVBoxLayout(this);
    all->addWidget(list_);
    all->addLayout(row);
    resize(kDesignSize);

    connect(add_, &QPushButton::clicked, this, [this] { addDatabaseFiles(databases_, this); });
    connect(vehicle_, &QPushButton::clicked, this,
            [this] { databases_->add(databases_->unusedVehicleDatabase(), DatabaseChannels::Both); });
    connect(remove_, &QPushButton::clicked, this, [this] { databases_->remove(selectedPath()); });
    connect(close_, &QPushButton::clicked, this, &QDialog::accept);
    connect(channels_, QOverload<int>::of(&QComboBox::activated), this, &DatabaseDialog::setChannels);
    connect(list_, &QTreeWidget::currentItemChanged, this, &DatabaseDialog::showSelected);
    connect(databases_, &SignalDatabases::changed, this, &DatabaseDialog::showDatabases);
    DatabaseDialog::retranslate();
    finishForm();
    add_->setFocus();
}

void DatabaseDialog::retranslate()
{
    setWindowTitle(text3("信号数据库", "訊號資料庫", "Signal databases"));
    list_->setHeaderLabels({text3("文件", "檔案", "File"), text3("通道", "通道", "Channels"),
                            text3("报文", "訊息", "Messages"), text3("问题", "問題", "Problems"),
                            text3("文件夹", "資料夾", "Folder")});
    channelsLabel_->setText(text3("通道(&C)", "通道(&C)", "&Channels"));
    add_->setText(text3("添加(&A)…", "新增(&A)…", "&Add…"));
    vehicle_->setText(text3("内置车辆(&V)", "內建車輛(&V)", "Built-in &vehicle"));
    remove_->setText(text3("移除(&R)", "移除(&R)", "&Remove"));
    close_->setText(text3("关闭", "關閉", "Close"));
    showDatabases();
}

void DatabaseDialog::showDatabases()
{
    const QString selected = selectedPath();
    list_->clear();
    for (const DatabaseSet::Entry &entry : databases_->entries()) {
        const QFileInfo file(entry.path);
        auto *item = new QTreeWidgetItem(list_, {file.fileName(), channelsText(entry.channels),
                                                 QString::number(entry.database->content.messages.size()),
                                                 QString::number(entry.database->problems.size()),
                                                 QDir::toNativeSeparators(file.absolutePath())});
        item->setData(File, Qt::UserRole, entry.path);
        for (const Column column : {Messages, Problems})
            item->setTextAlignment(column, Qt::AlignRight | Qt::AlignVCenter);
        QStringList problems;
        for (const DbcProblem &problem : entry.database->problems.mid(0, kMostToolTipLines))
            problems.append(problemText(problem).toHtmlEscaped());
        item->setToolTip(Problems, problems.isEmpty() ? QString() : "<p>" + problems.join("<br>") + "</p>");
        if (!list_->currentItem() || entry.path == selected)
            list_->setCurrentItem(item);
    }
    vehicle_->setEnabled(!databases_->unusedVehicleDatabase().isEmpty());
    showSelected();
}

void DatabaseDialog::showSelected()
{
    const QString path = selectedPath();
    remove_->setEnabled(!path.isEmpty());
    channels_->setEnabled(!path.isEmpty());
    for (const DatabaseSet::Entry &entry : databases_->entries())
        if (entry.path == path)
            channels_->setCurrentIndex(channels_->findText(channelsText(entry.channels)));
}

void DatabaseDialog::setChannels(int choice)
{
    databases_->setChannels(selectedPath(), kChoices[choice]);
}

QString DatabaseDialog::selectedPath() const
{
    const QTreeWidgetItem *item = list_->currentItem();
    return item ? item->data(File, Qt::UserRole).toString() : QString();
}
