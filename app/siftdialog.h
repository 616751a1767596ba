// The column filter's pop-up: every distinct value of a column as a check box, with a search. Made once and reused;
// hidden between uses.
#pragma once

#include "widgets/formdialog.h"

#include <memory>

class SiftListModel;

namespace Ui
{
class SiftDialog;
}

class SiftDialog : public FormDialog
{
    Q_OBJECT

public:
    explicit SiftDialog(QWidget *parent = nullptr);
    ~SiftDialog() override;

    // Lists all the values, nothing ticked. A search text left from the last use narrows them once it is edited.
    void fill(const QStringList &values, int column);
    // Shows the pop-up with its corner at the point, moved as far as it takes to stay on the point's screen.
    void popupAt(const QPoint &globalPoint);

signals:
    // Confirmed: the ticked values (none: no condition) and the column.
    void siftedData(QStringList siftedData, int index);

protected:
    void retranslate() override;

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
