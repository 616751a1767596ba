// The column filter's pop-up: every distinct value of a column as a check box, with a search. Made once and reused;
// hidden between uses.
#pragma once

#include <QDialog>

#include <memory>

class SiftListModel;

namespace Ui
{
class SiftDialog;
}

class SiftDialog : public QDialog
{
    Q_OBJECT

public:
    explicit SiftDialog(QWidget *parent = nullptr);
    ~SiftDialog() override;

    // Lists the values, nothing ticked. A search text left from the last use is applied to them.
    void fill(const QStringList &values, int column);
    // Shows the pop-up with its corner at the point, moved as far as it takes to stay on the point's screen.
    void popupAt(const QPoint &globalPoint);

signals:
    // Confirmed: the ticked values (none: no condition) and the column.
    void siftedData(QStringList siftedData, int index);

protected:
    void changeEvent(QEvent *event) override;

private slots:
    void on_confirmBtn_clicked();
    void on_cancelBtn_clicked();

private:
    void search();
    void showAllRow();

    std::unique_ptr<Ui::SiftDialog> ui_;
    SiftListModel *list_;
    int column_ = -1;
};
