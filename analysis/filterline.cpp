#include "analysis/filterline.h"

#include <QAbstractItemView>
#include <QCompleter>
#include <QCoreApplication>
#include <QInputMethodEvent>
#include <QStringListModel>
#include <QTextCharFormat>

namespace
{
// Where the word begins that ends at the position.
int wordBegin(const QString &text, int position)
{
    static const QString separators = QStringLiteral(" (),");
    while (position > 0 && !separators.contains(text.at(position - 1)))
        --position;
    return position;
}
} // namespace

FilterLine::FilterLine(QWidget *parent)
    : QLineEdit(parent), words_(new QStringListModel(this)), completer_(new QCompleter(words_, this))
{
    setClearButtonEnabled(true);
    completer_->setWidget(this);
    completer_->setCompletionMode(QCompleter::UnfilteredPopupCompletion);
    connect(completer_, QOverload<const QString &>::of(&QCompleter::activated), this, &FilterLine::take);
    connect(this, &QLineEdit::textEdited, this, &FilterLine::offer);
    connect(this, &QLineEdit::textChanged, this, &FilterLine::filter);
}

std::optional<FrameFilter> FilterLine::filter()
{
    FilterError error;
    std::optional<FrameFilter> filter = FrameFilter::parse(text(), &error, signalSource());
    if (filter)
        mark(0, 0);
    else
        mark(error.position, qMax(error.length, 1));
    setToolTip(filter ? QString() : error.message);
    emit wrong(toolTip());
    return filter;
}

std::shared_ptr<const SignalSource> FilterLine::signalSource() const
{
    const bool asked = text().contains(QLatin1String("signal"), Qt::CaseInsensitive);
    return asked && signalQuery_ ? signalQuery_() : nullptr;
}

void FilterLine::offer()
{
    const int begin = wordBegin(text(), cursorPosition());
    const QStringList words = FrameFilter::completions(text(), cursorPosition(), signalSource());
    if (begin == cursorPosition() || words.isEmpty() ||
        words == QStringList(text().mid(begin, cursorPosition() - begin))) {
        completer_->popup()->hide();
        return;
    }
    words_->setStringList(words);
    completer_->complete();
}

void FilterLine::take(const QString &word)
{
    const int begin = wordBegin(text(), cursorPosition());
    QString changed = text();
    changed.replace(begin, cursorPosition() - begin, word);
    setText(changed);
    setCursorPosition(begin + word.size());
}

// A line edit has formats only for what an input method shows; an empty pre-edit text leaves everything else alone.
void FilterLine::mark(int position, int length)
{
    QList<QInputMethodEvent::Attribute> attributes;
    if (length > 0) {
        QTextCharFormat format;
        format.setUnderlineStyle(QTextCharFormat::WaveUnderline);
        format.setUnderlineColor(Qt::red);
        format.setForeground(Qt::red);
        attributes.append({QInputMethodEvent::TextFormat, position - cursorPosition(), length, format});
    }
    QInputMethodEvent event(QString(), attributes);
    QCoreApplication::sendEvent(this, &event);
}
