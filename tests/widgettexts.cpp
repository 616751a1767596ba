#include "widgettexts.h"

#include <QAbstractButton>
#include <QAbstractScrollArea>
#include <QAbstractSpinBox>
#include <QAction>
#include <QComboBox>
#include <QGroupBox>
#include <QHeaderView>
#include <QKeySequence>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenu>
#include <QScrollArea>
#include <QSplitter>
#include <QStyle>
#include <QStyleOptionComboBox>
#include <QTableView>

namespace
{
QString nameOf(const QObject &object)
{
    return QString("%1 %2").arg(object.metaObject()->className(), object.objectName());
}

// Widgets whose children are the toolkit's own business.
bool isClosedInside(const QWidget &widget)
{
    return qobject_cast<const QAbstractScrollArea *>(&widget) || qobject_cast<const QComboBox *>(&widget) ||
           qobject_cast<const QAbstractSpinBox *>(&widget) || qobject_cast<const QLineEdit *>(&widget) ||
           qobject_cast<const QMainWindow *>(&widget) || qobject_cast<const QSplitter *>(&widget) ||
           qobject_cast<const QMenu *>(&widget);
}

QString describe(const QSize &needed, const QSize &given)
{
    return QString("needs %1x%2, has %3x%4")
        .arg(needed.width())
        .arg(needed.height())
        .arg(given.width())
        .arg(given.height());
}

// Hints are rounded up: a pixel less cuts nothing.
bool fits(const QSize &needed, const QSize &given)
{
    return needed.width() <= given.width() + 1 && needed.height() <= given.height() + 1;
}

QSize neededBy(const QWidget &widget)
{
    const auto *label = qobject_cast<const QLabel *>(&widget);
    if (label && label->wordWrap())
        return {0, label->heightForWidth(label->width())};
    if (const auto *combo = qobject_cast<const QComboBox *>(&widget)) {
        int width = 0;
        for (int item = 0; item < combo->count(); ++item)
            width = qMax(width, combo->fontMetrics().horizontalAdvance(combo->itemText(item)));
        return {width, combo->fontMetrics().height()};
    }
    const bool hasText = !widget.property("text").toString().isEmpty() && !qobject_cast<const QLineEdit *>(&widget);
    return hasText || qobject_cast<const QGroupBox *>(&widget) ? widget.minimumSizeHint() : QSize();
}

QSize givenByCombo(const QComboBox &combo)
{
    QStyleOptionComboBox option;
    option.initFrom(&combo);
    option.editable = combo.isEditable();
    option.frame = combo.hasFrame();
    return combo.style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, &combo).size();
}

void checkHeader(const QHeaderView &header, QStringList &found)
{
    for (int section = 0; section < header.count(); ++section) {
        const QString title = header.model()->headerData(section, header.orientation()).toString();
        const int needed = header.fontMetrics().horizontalAdvance(title);
        const int given = header.orientation() == Qt::Horizontal ? header.sectionSize(section) : header.width();
        const int margins = 2 * header.style()->pixelMetric(QStyle::PM_HeaderMargin);
        if (needed + margins > given && !header.isSectionHidden(section))
            found << QString("title \"%1\": needs %2, has %3").arg(title).arg(needed + margins).arg(given);
    }
}
} // namespace

QVector<ShownText> shownTexts(const QWidget &window)
{
    QVector<ShownText> texts;
    const auto add = [&texts](const QObject &object, const char *what, const QString &text) {
        if (!text.isEmpty())
            texts.append({nameOf(object) + QLatin1Char(' ') + QLatin1String(what), text});
    };
    QList<const QObject *> objects{&window};
    for (const QObject *child : window.findChildren<QObject *>())
        objects.append(child);
    for (const QObject *object : objects) {
        if (!object->isWidgetType() && !qobject_cast<const QAction *>(object))
            continue;
        for (const char *property : {"windowTitle", "text", "title", "toolTip", "placeholderText"})
            add(*object, property, object->property(property).toString());
        if (const auto *combo = qobject_cast<const QComboBox *>(object))
            for (int item = 0; item < combo->count(); ++item)
                add(*combo, "item", combo->itemText(item));
        if (const auto *table = qobject_cast<const QTableView *>(object))
            for (int column = 0; column < table->model()->columnCount(); ++column) {
                add(*table, "column", table->model()->headerData(column, Qt::Horizontal).toString());
                for (int row = 0; row < table->model()->rowCount(); ++row)
                    add(*table, "cell", table->model()->index(row, column).data().toString());
            }
    }
    return texts;
}

QStringList cutTexts(const QWidget &window)
{
    QStringList found;
    for (const QWidget *widget : window.findChildren<QWidget *>()) {
        if (!widget->isVisibleTo(&window) || widget->window() != &window)
            continue;
        const auto *combo = qobject_cast<const QComboBox *>(widget);
        const QSize needed = neededBy(*widget);
        const QSize given = combo ? givenByCombo(*combo) : widget->size();
        if (!fits(needed, given))
            found << nameOf(*widget) + ": " + describe(needed, given);
        if (const auto *header = qobject_cast<const QHeaderView *>(widget))
            checkHeader(*header, found);
    }
    return found;
}

QStringList overlaps(const QWidget &window)
{
    QStringList found;
    QList<const QWidget *> parents{&window};
    while (!parents.isEmpty()) {
        const QWidget *parent = parents.takeFirst();
        QList<const QWidget *> placed;
        for (const QWidget *child : parent->findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly)) {
            if (child->isWindow() || !child->isVisibleTo(&window))
                continue;
            parents.append(child);
            if (isClosedInside(*parent))
                continue;
            const bool scrolls = qobject_cast<const QScrollArea *>(parent->parentWidget());
            if (!scrolls && !parent->rect().contains(child->geometry()))
                found << nameOf(*child) + " lies partly outside of " + nameOf(*parent);
            for (const QWidget *other : placed)
                if (other->geometry().intersects(child->geometry()))
                    found << nameOf(*child) + " lies on " + nameOf(*other);
            placed.append(child);
        }
    }
    return found;
}

QStringList sharedKeys(const QWidget &window)
{
    QMap<QString, QStringList> texts;
    for (const QWidget *widget : window.findChildren<QWidget *>()) {
        const auto *label = qobject_cast<const QLabel *>(widget);
        const bool hasKey =
            label ? label->buddy() != nullptr : qobject_cast<const QAbstractButton *>(widget) != nullptr;
        const QString text = widget->property("text").toString();
        if (hasKey && widget->isVisibleTo(&window) && !QKeySequence::mnemonic(text).isEmpty())
            texts[QKeySequence::mnemonic(text).toString()] << text;
    }
    QStringList found;
    for (auto key = texts.cbegin(); key != texts.cend(); ++key)
        if (key->size() > 1)
            found << key.key() + " belongs to " + key->join(", ");
    return found;
}
