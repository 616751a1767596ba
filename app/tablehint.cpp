#include "app/tablehint.h"

#include "device/devicelayer.h"
#include "device/language.h"

TableHint tableHint(bool paused, bool filtered)
{
    if (!isDeviceOpen())
        return TableHint::DeviceClosed;
    bool channelOpen = false;
    for (unsigned channel = 0; channel < kChannelCount; ++channel)
        channelOpen = channelOpen || isChannelOpen(channel);
    if (!channelOpen)
        return TableHint::ChannelsClosed;
    if (paused)
        return TableHint::Paused;
    return filtered ? TableHint::Filtered : TableHint::Waiting;
}

QString tableHintText(TableHint hint)
{
    switch (hint) {
    case TableHint::DeviceClosed:
        return text3("尚未打开设备：在菜单“设备管理”的“设备操作”中打开设备，再打开通道",
                     "尚未打開設備：在選單「設備管理」的「設備操作」中打開設備，再打開通道",
                     "No device is open: open it, then its channels, in the menu Device Manage, Device Operations");
    case TableHint::ChannelsClosed:
        return text3("通道尚未打开：在菜单“设备管理”的“设备操作”中打开通道",
                     "通道尚未打開：在選單「設備管理」的「設備操作」中打開通道",
                     "No channel is open: open one in the menu Device Manage, Device Operations");
    case TableHint::Paused:
        return text3("显示已暂停", "顯示已暫停", "The display is paused");
    case TableHint::Filtered:
        return text3("没有符合筛选条件的帧", "沒有符合篩選條件的幀", "No frame has met the filters");
    case TableHint::Waiting:
        return text3("等待总线上的帧", "等待匯流排上的幀", "Waiting for frames on the bus");
    case TableHint::None:
        break;
    }
    return {};
}
