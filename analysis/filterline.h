// A line for an expression of the frame filter: offers the words that may stand at the cursor, and marks what is wrong
// at its place.
#pragma once

#include "traces/framefilter.h"

#include <QLineEdit>

#include <functional>

class QCompleter;
class QStringListModel;

class FilterLine : public QLineEdit
{
    Q_OBJECT

public:
    explicit FilterLine(QWidget *parent = nullptr);

    // Where the databases' signals come from; asked when the text has a signal in it. May answer null.
    using SignalQuery = std::function<std::shared_ptr<const SignalSource>()>;
    void setSignals(SignalQuery query) { signalQuery_ = std::move(query); }
    // The filter of the text; nothing when it is none: the place is marked then and the tool tip says what is wrong.
    std::optional<FrameFilter> filter();

signals:
    void wrong(const QString &message); // empty when the text is a filter

private:
    void offer();
    void take(const QString &word);
    void mark(int position, int length);

    std::shared_ptr<const SignalSource> signalSource() const;

    SignalQuery signalQuery_;
    QStringListModel *words_;
    QCompleter *completer_;
};
