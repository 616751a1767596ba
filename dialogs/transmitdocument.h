// The transmit list under edit: its table, its undo steps and its file.
#pragma once

#include "transmit/transmitmodel.h"

#include <QUndoStack>

class TransmitDocument : public QObject
{
    Q_OBJECT

public:
    explicit TransmitDocument(QObject *parent = nullptr);
    ~TransmitDocument() override; // unsaved changes are kept for the next start

    TransmitModel *model() { return &model_; }
    QUndoStack *undoStack() { return &undo_; }
    const TransmitList &list() const { return model_.list(); }
    const QString &path() const { return path_; } // empty: no file yet
    bool isModified() const { return recovered_ || !undo_.isClean(); }

    // A step that can be undone.
    void change(const TransmitList &list);

    // A new, empty list without a file.
    void clear();
    // Each answers what went wrong, else an empty text; then nothing has changed.
    QString open(const QString &path);
    QString save(const QString &path);
    // The list of the last time, with what was not saved of it.
    QString openLast();

signals:
    void listChanged(const TransmitList &list);
    void stateChanged(); // file, modified or not

private:
    void show(const TransmitList &list);
    void replace(const TransmitList &list, const QString &path);
    void rememberPath() const;

    TransmitModel model_;
    QUndoStack undo_;
    QString path_;
    bool recovered_ = false; // holds changes of an earlier run that no file has
};
