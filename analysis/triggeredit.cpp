#include "analysis/triggeredit.h"

#include "device/driver/driver.h"
#include "device/driver/identifiers.h"
#include "device/driver/numbertext.h"
#include "device/language.h"
#include "widgets/accessibletexts.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QRegularExpression>
#include <QSettings>

namespace
{

constexpr int kMostBytes = 64;

} // namespace

TriggerEdit::TriggerEdit(const QString &name, QWidget *parent)
    : QWidget(parent),
      kind_(new QComboBox(this)),
      channel_(new QComboBox(this)),
      ids_(new QLineEdit(this)),
      mask_(new QLineEdit(this))
{
    kind_->setObjectName(name + QStringLiteral("Kind"));
    channel_->setObjectName(name + QStringLiteral("Channel"));
    ids_->setObjectName(name + QStringLiteral("Ids"));
    mask_->setObjectName(name + QStringLiteral("Mask"));
    for (int i = None; i <= LostFrames; ++i)
        kind_->addItem(QString());
    for (unsigned number = 0; number <= kChannelCount; ++number)
        channel_->addItem(QString());
    for (QComboBox *box : {kind_, channel_}) {
        box->setSizeAdjustPolicy(QComboBox::AdjustToContents);
        box->setSizePolicy(QSizePolicy::Minimum, QSizePolicy::Fixed);
    }
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(kind_);
    row->addWidget(channel_);
    row->addWidget(ids_, 2);
    row->addWidget(mask_, 3);
    setFocusProxy(kind_);
    connect(kind_, QOverload<int>::of(&QComboBox::currentIndexChanged), this, [this] {
        showFields();
        emit changed();
    });
    showFields();
}

void TriggerEdit::showFields()
{
    const int kind = kind_->currentIndex();
    channel_->setEnabled(kind != None && kind != LostFrames);
    ids_->setEnabled(kind == Identifiers || kind == Data);
    mask_->setEnabled(kind == Data);
}

void TriggerEdit::setTexts(const QString &nothing)
{
    kind_->setItemText(None, nothing);
    kind_->setItemText(Identifiers, text3("ID范围", "ID範圍", "Identifiers"));
    kind_->setItemText(Data, text3("ID和数据", "ID和數據", "Identifiers and data"));
    kind_->setItemText(ErrorFrame, text3("错误帧", "錯誤幀", "Error frame"));
    kind_->setItemText(LostFrames, text3("丢帧", "遺失幀", "Lost frames"));
    channel_->setItemText(0, text3("任一通道", "任一通道", "Any channel"));
    for (int number = 1; number < channel_->count(); ++number)
        channel_->setItemText(number, text3("通道%1", "通道%1", "Channel %1").arg(number));
    for (QComboBox *box : {kind_, channel_})
        box->setMinimumWidth(box->sizeHint().width() + box->fontMetrics().averageCharWidth());
    ids_->setPlaceholderText(QStringLiteral("100..1FF"));
    mask_->setPlaceholderText(text3("02 ?? 7F（?为任意）", "02 ?? 7F（?為任意）", "02 ?? 7F (? any digit)"));
    tellName(channel_, text3("通道", "通道", "Channel"));
    tellName(ids_, text3("ID范围", "ID範圍", "Range of identifiers"));
    tellName(mask_, text3("数据", "數據", "Data"));
}

bool TriggerEdit::refuse(QLineEdit *field, const QString &reason)
{
    const QString text = field->text().trimmed();
    errorText_ = text.isEmpty() ? reason : reason + text3("：", "：", ": ") + text;
    field->setFocus();
    field->selectAll();
    return false;
}

// "123", "100..1FF"; more than three digits, or a number above the standard ones, means extended identifiers.
bool TriggerEdit::readIds(RecorderTrigger &trigger)
{
    static const QRegularExpression pattern(
        QStringLiteral("^\\s*(?:0x)?([0-9a-f]{1,8})\\s*(?:(?:\\.\\.|-)\\s*(?:0x)?([0-9a-f]{1,8}))?\\s*$"),
        QRegularExpression::CaseInsensitiveOption);
    if (ids_->text().trimmed().isEmpty() && kind_->currentIndex() == Data)
        return true; // any
    const QRegularExpressionMatch match = pattern.match(ids_->text());
    const QString first = match.captured(1);
    const QString last = match.captured(2).isEmpty() ? first : match.captured(2);
    trigger.firstId = first.toUInt(nullptr, kHexBase);
    trigger.lastId = last.toUInt(nullptr, kHexBase);
    if (!match.hasMatch() || trigger.firstId > trigger.lastId || trigger.lastId > kLargestExtendedId)
        return refuse(ids_,
                      text3("ID范围应如100..1FF", "ID範圍應如100..1FF", "A range of identifiers looks like 100..1FF"));
    trigger.extended = last.size() > kStandardIdDigits || trigger.lastId > kLargestStandardId;
    return true;
}

// "02 ?? 7F": what each half of a byte has to be.
bool TriggerEdit::readMask(RecorderTrigger &trigger)
{
    static const QRegularExpression pattern(QStringLiteral("^(?:[0-9a-f?]{2})+$"),
                                            QRegularExpression::CaseInsensitiveOption);
    QString digits = mask_->text();
    digits.remove(QLatin1Char(' '));
    if (!pattern.match(digits).hasMatch() || digits.size() > 2 * kMostBytes)
        return refuse(mask_, text3("数据应如02 ?? 7F", "數據應如02 ?? 7F", "Data look like 02 ?? 7F"));
    QString mask = digits;
    for (QChar &digit : mask)
        digit = digit == QLatin1Char('?') ? QLatin1Char('0') : QLatin1Char('F');
    trigger.mask = QByteArray::fromHex(mask.toLatin1());
    trigger.value = QByteArray::fromHex(digits.replace(QLatin1Char('?'), QLatin1Char('0')).toLatin1());
    return true;
}

bool TriggerEdit::isSet() const
{
    return kind_->currentIndex() != None;
}

std::optional<std::vector<RecorderTrigger>> TriggerEdit::triggers()
{
    RecorderTrigger trigger;
    trigger.channel = static_cast<std::uint16_t>(channel_->currentIndex());
    switch (kind_->currentIndex()) {
    case Identifiers:
        trigger.kind = RecorderTrigger::Kind::Identifier;
        if (!readIds(trigger))
            return std::nullopt;
        break;
    case Data:
        trigger.kind = RecorderTrigger::Kind::Data;
        if (!readIds(trigger) || !readMask(trigger))
            return std::nullopt;
        break;
    case ErrorFrame:
        trigger.kind = RecorderTrigger::Kind::ErrorFrame;
        break;
    case LostFrames:
        trigger.kind = RecorderTrigger::Kind::LostFrames;
        break;
    default:
        return std::vector<RecorderTrigger>();
    }
    return std::vector<RecorderTrigger>{trigger};
}

void TriggerEdit::store(QSettings &settings, const QString &key) const
{
    settings.setValue(key, QStringList{QString::number(kind_->currentIndex()), ids_->text(), mask_->text(),
                                       QString::number(channel_->currentIndex())});
}

void TriggerEdit::restore(const QSettings &settings, const QString &key)
{
    const QStringList stored = settings.value(key).toStringList();
    if (stored.size() < 3) // one of before there was a channel has three
        return;
    kind_->setCurrentIndex(qBound<int>(None, stored[0].toInt(), LostFrames));
    ids_->setText(stored[1]);
    mask_->setText(stored[2]);
    channel_->setCurrentIndex(qBound(0, stored.value(3).toInt(), channel_->count() - 1));
}
