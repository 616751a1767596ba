// One trigger of a recording as a line of fields: what it is, the channel, the identifiers, the data mask.
#pragma once

#include "traces/recordertrigger.h"

#include <QWidget>

class QComboBox;
class QLineEdit;
class QSettings;

class TriggerEdit : public QWidget
{
    Q_OBJECT

public:
    // name: of the fields, ASCII, before "Kind", "Channel", "Ids", "Mask".
    TriggerEdit(const QString &name, QWidget *parent);

    bool isSet() const;
    // No trigger: an empty list. Nothing, with the field that is wrong focused, when a text cannot be meant.
    std::optional<std::vector<RecorderTrigger>> triggers();
    // What is wrong, after triggers() has failed; in the current language.
    QString errorText() const { return errorText_; }

    void setTexts(const QString &nothing); // nothing: what no trigger means here
    void store(QSettings &settings, const QString &key) const;
    void restore(const QSettings &settings, const QString &key);

signals:
    void changed();

private:
    enum Kind { None, Identifiers, Data, ErrorFrame, LostFrames };

    bool readIds(RecorderTrigger &trigger);
    bool readMask(RecorderTrigger &trigger);
    bool refuse(QLineEdit *field, const QString &reason);
    void showFields();

    QComboBox *kind_;
    QComboBox *channel_; // the index is the number, 0 any
    QLineEdit *ids_;
    QLineEdit *mask_;
    QString errorText_;
};
