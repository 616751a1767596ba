// Shows what the adapter reports about itself.
#pragma once

#include "device/driver/wirerecords.h"
#include "widgets/formdialog.h"

#include <memory>

namespace Ui
{
class INfDialog;
}

class INfDialog : public FormDialog
{
    Q_OBJECT

public:
    explicit INfDialog(DeviceInfoRecord record, QWidget *parent = nullptr);
    ~INfDialog() override;

protected:
    void retranslate() override;

private slots:
    void on_pushButton_clicked();

private:
    void showRecord(const DeviceInfoRecord &record);

    const std::unique_ptr<Ui::INfDialog> ui_;
};
