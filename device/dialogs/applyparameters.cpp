#include "device/dialogs/applyparameters.h"

#include "device/channelparameters.h"
#include "device/devicelayer.h"
#include "device/devicetexts.h"
#include "device/dialogs/paradialog.h"
#include "device/language.h"
#include "widgets/messages.h"

void applyParameters(QWidget *parent, const std::function<void(const QString &)> &log)
{
    if (!isChannelOpen(0) && !isChannelOpen(1)) {
        showWarning(parent, tipTitle(), deviceNotOpenText());
        return;
    }
    ParaDialog dialog(true, true, ParaDialog::BothChannels, parent);
    if (dialog.exec() != QDialog::Accepted)
        return;
    for (unsigned channel = 0; channel < kChannelCount && isChannelOpen(channel); ++channel) {
        const ChannelStep failed = reconfigureChannel(channel, loadChannelParameters(channel));
        if (failed != ChannelStep::None) {
            showWarning(parent, warningTitle(), stepFailureText(failed));
            return;
        }
        log(QStringLiteral("设备参数设置成功！"));
    }
}
