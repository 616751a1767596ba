// Asks where received frames are to be saved as CSV, and which of them. It only chooses and tests the file.
#pragma once

#include "widgets/formdialog.h"

#include <memory>

namespace Ui
{
class savefileDlg;
}

// What goes into the capture file; the order is that of the mode selector.
enum class CaptureMode { AllFrames = 0, FilteredFrames = 1 };

class savefileDlg : public FormDialog
{
    Q_OBJECT

public:
    explicit savefileDlg(QWidget *parent = nullptr);
    ~savefileDlg() override;

    // Valid once the dialog is closed; the path is empty when it was cancelled, whatever the dialog's result code.
    const QString &path() const { return path_; }
    CaptureMode mode() const { return mode_; }

protected:
    void retranslate() override;

private slots:
    void on_browseBtn_clicked();
    void on_okBtn_clicked();
    void on_cancelBtn_clicked();

private:
    QString askFileName();

    const std::unique_ptr<Ui::savefileDlg> ui_;
    QString path_;
    CaptureMode mode_ = CaptureMode::AllFrames;
};
