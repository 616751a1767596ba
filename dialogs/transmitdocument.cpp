#include "dialogs/transmitdocument.h"

#include "device/apppaths.h"
#include "transmit/transmitfile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSettings>
#include <QUndoCommand>

#include <functional>

namespace
{
constexpr int kUndoSteps = 200;
const QString kPathKey = QStringLiteral("transmit/list");

QString unsavedPath()
{
    return applicationDir() + QStringLiteral("/config/transmit-unsaved.json");
}

// Where unsaved changes go that cannot be read.
QString damagedPath()
{
    return applicationDir() + QStringLiteral("/config/transmit-unsaved.damaged.json");
}

// Lists share their entries, so that a step costs a pointer an entry.
class ListStep : public QUndoCommand
{
public:
    using Show = std::function<void(const TransmitList &)>;

    ListStep(TransmitList before, TransmitList after, Show show)
        : before_(std::move(before)), after_(std::move(after)), show_(std::move(show))
    {
    }
    void undo() override { show_(before_); }
    void redo() override { show_(after_); }

private:
    const TransmitList before_;
    const TransmitList after_;
    const Show show_;
};
} // namespace

TransmitDocument::TransmitDocument(QObject *parent) : QObject(parent)
{
    undo_.setUndoLimit(kUndoSteps);
    connect(&model_, &TransmitModel::edited, this, &TransmitDocument::change);
    connect(&undo_, &QUndoStack::cleanChanged, this, &TransmitDocument::stateChanged);
}

TransmitDocument::~TransmitDocument()
{
    undo_.disconnect(this);
    if (isModified()) {
        rememberPath(); // what is not saved belongs to this file, not to one that could not be opened
        QDir().mkpath(QFileInfo(unsavedPath()).absolutePath());
        writeTransmitFile(unsavedPath(), list());
    } else {
        QFile::remove(unsavedPath());
    }
}

void TransmitDocument::change(const TransmitList &list)
{
    undo_.push(new ListStep(model_.list(), list, [this](const TransmitList &shown) { show(shown); }));
}

void TransmitDocument::show(const TransmitList &list)
{
    model_.setList(list);
    emit listChanged(list);
}

void TransmitDocument::replace(const TransmitList &list, const QString &path)
{
    recovered_ = false;
    path_ = path;
    undo_.clear();
    show(list);
    emit stateChanged();
}

void TransmitDocument::rememberPath() const
{
    QSettings().setValue(kPathKey, path_);
}

void TransmitDocument::clear()
{
    replace({}, {});
    rememberPath();
}

QString TransmitDocument::open(const QString &path)
{
    const TransmitFile file = readTransmitFile(path);
    if (!file.error.isEmpty())
        return file.error;
    replace(file.entries, path);
    rememberPath();
    return {};
}

QString TransmitDocument::save(const QString &path)
{
    QString error = writeTransmitFile(path, list());
    if (!error.isEmpty())
        return error;
    path_ = path;
    recovered_ = false;
    undo_.setClean();
    rememberPath();
    emit stateChanged();
    return {};
}

QString TransmitDocument::openLast()
{
    const QString path = QSettings().value(kPathKey).toString();
    QString problem;
    if (QFile::exists(unsavedPath())) {
        const TransmitFile unsaved = readTransmitFile(unsavedPath());
        if (unsaved.error.isEmpty()) {
            replace(unsaved.entries, path);
            recovered_ = true;
            emit stateChanged();
            return {};
        }
        problem = unsaved.error;
        QFile::remove(damagedPath());
        QFile::rename(unsavedPath(), damagedPath()); // nothing is overwritten
    }
    if (path.isEmpty())
        return problem;
    const TransmitFile file = readTransmitFile(path);
    if (file.error.isEmpty())
        replace(file.entries, path);
    return problem.isEmpty() ? file.error : problem;
}
