// The display filter's user interface: the table's context menu and the pop-up. The conditions live in the model.
#pragma once

#include <QObject>

class FrameTableView;
class MyTableModel;
class SiftDialog;

class DisplayFilter : public QObject
{
    Q_OBJECT

public:
    // Model and table outlive it; the pop-up becomes a child of the table.
    DisplayFilter(MyTableModel *model, FrameTableView *table);

    // Takes the condition from every column, one after the other from column 0.
    void clearAll();
    // A column shows these texts only; an empty list: all.
    void setCondition(const QStringList &accepted, int column);

signals:
    void conditionsChanged(); // some column's, perhaps

private:
    void showMenu(int column, const QPoint &globalPoint);
    void showPopup(const QStringList &values, int column, const QPoint &globalPoint);
    QStringList distinctTexts(int column) const;

    MyTableModel *model_;
    FrameTableView *table_;
    SiftDialog *popup_;
};
