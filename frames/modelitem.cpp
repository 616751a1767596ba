#include "frames/modelitem.h"

#include <utility>

namespace
{

constexpr QString ModelItem::*kTexts[FrameColumnCount] = {
    &ModelItem::indexText, &ModelItem::systemTime,   &ModelItem::timeStamp,  &ModelItem::channelText,
    &ModelItem::dirText,   &ModelItem::idText,       &ModelItem::formatText, &ModelItem::typeText,
    &ModelItem::dlcText,   &ModelItem::protocolText, &ModelItem::dataText,
};

} // namespace

FrameRow toFrameRow(const ModelItem &item)
{
    FrameRow row;
    for (int column = 0; column < FrameColumnCount; ++column)
        row[column] = item.*kTexts[column];
    return row;
}

FrameRow toFrameRow(ModelItem &&item)
{
    FrameRow row;
    for (int column = 0; column < FrameColumnCount; ++column)
        row[column] = std::move(item.*kTexts[column]);
    return row;
}

const QString &columnText(const ModelItem &item, FrameColumn column)
{
    return item.*kTexts[column];
}

void registerFrameTypes()
{
    static const int type = qRegisterMetaType<QList<ModelItem>>("QList<ModelItem>");
    Q_UNUSED(type)
}
