#include "signals/dbcproblem.h"

#include "device/language.h"

namespace
{

QString faultText(DbcFault fault)
{
    switch (fault) {
    case DbcFault::CannotOpen:
        return text3("无法读取文件：%1", "無法讀取檔案：%1", "the file cannot be read: %1");
    case DbcFault::TooLarge:
        return text3("文件过大：%1", "檔案過大：%1", "the file is too large: %1");
    case DbcFault::TooManyProblems:
        return text3("错误过多，其余不再列出", "錯誤過多，其餘不再列出", "too many problems; the rest is not listed");
    case DbcFault::UnknownStatement:
        return text3("未知语句“%1”", "未知陳述式「%1」", "unknown statement \"%1\"");
    case DbcFault::Expected:
        return text3("此处应为 %1", "此處應為 %1", "%1 is expected here");
    case DbcFault::UnterminatedText:
        return text3("文本缺少结束引号", "文字缺少結束引號", "the text has no closing quotation mark");
    case DbcFault::BadNumber:
        return text3("“%1”不是有效数值", "「%1」不是有效數值", "\"%1\" is no valid number");
    case DbcFault::BadIdentifier:
        return text3("标识符 %1 超出范围", "識別碼 %1 超出範圍", "identifier %1 is out of range");
    case DbcFault::BadSignalLayout:
        return text3("信号“%1”的起始位或长度无效", "訊號「%1」的起始位元或長度無效",
                     "signal \"%1\" has an impossible start bit or length");
    case DbcFault::RepeatedMessage:
        return text3("报文“%1”的标识符已被使用", "訊息「%1」的識別碼已被使用",
                     "message \"%1\" repeats the identifier of another one");
    case DbcFault::RepeatedSignal:
        return text3("报文中已有信号“%1”", "訊息中已有訊號「%1」", "the message already has a signal \"%1\"");
    case DbcFault::SignalWithoutMessage:
        return text3("信号“%1”不属于任何报文", "訊號「%1」不屬於任何訊息", "signal \"%1\" belongs to no message");
    case DbcFault::UnknownMessage:
        return text3("没有标识符为 %1 的报文", "沒有識別碼為 %1 的訊息", "there is no message %1");
    case DbcFault::UnknownSignal:
        return text3("报文中没有信号“%1”", "訊息中沒有訊號「%1」", "the message has no signal \"%1\"");
    case DbcFault::UnknownNode:
        return text3("没有节点“%1”", "沒有節點「%1」", "there is no node \"%1\"");
    case DbcFault::UnknownValueTable:
        return text3("没有值表“%1”", "沒有值表「%1」", "there is no value table \"%1\"");
    case DbcFault::MissingSemicolon:
        return text3("缺少“;”", "缺少「;」", "\";\" is missing");
    case DbcFault::MissingExtendedFlag:
        return text3("标识符 %1 超过 11 位但没有扩展帧标记，按扩展帧处理",
                     "識別碼 %1 超過 11 位元但沒有擴展幀標記，按擴展幀處理",
                     "identifier %1 has more than 11 bits but no mark of an extended frame, which it is read as");
    case DbcFault::ZeroFactor:
        return text3("信号“%1”的系数为 0，按 1 处理", "訊號「%1」的係數為 0，按 1 處理",
                     "signal \"%1\" has the factor 0, which is read as 1");
    case DbcFault::BadFloatLength:
        return text3("浮点信号“%1”的长度不是 32 或 64 位，按整数处理",
                     "浮點訊號「%1」的長度不是 32 或 64 位元，按整數處理",
                     "floating-point signal \"%1\" has neither 32 nor 64 bits and is read as an integer");
    case DbcFault::BeyondMessage:
        return text3("信号“%1”超出报文长度", "訊號「%1」超出訊息長度",
                     "signal \"%1\" lies beyond the end of its message");
    case DbcFault::NoMultiplexer:
        return text3("复用信号“%1”没有复用器，视为始终存在", "多工訊號「%1」沒有多工器，視為始終存在",
                     "multiplexed signal \"%1\" has no multiplexer and counts as always there");
    case DbcFault::SeveralMultiplexers:
        return text3("复用信号“%1”有多个可能的复用器，取第一个", "多工訊號「%1」有多個可能的多工器，取第一個",
                     "multiplexed signal \"%1\" could belong to several multiplexers; the first is taken");
    case DbcFault::MultiplexerLoop:
        return text3("信号“%1”选择其自身，视为始终存在", "訊號「%1」選擇其自身，視為始終存在",
                     "signal \"%1\" selects itself and counts as always there");
    case DbcFault::UnknownEnumerationValue:
        return text3("属性“%1”的值不在其枚举中", "屬性「%1」的值不在其列舉中",
                     "the value of attribute \"%1\" is not in its enumeration");
    }
    return {};
}

} // namespace

QString problemText(const DbcProblem &problem)
{
    QString text = faultText(problem.fault);
    if (text.contains(QLatin1String("%1")))
        text = text.arg(problem.detail);
    if (problem.line == 0)
        return text;
    return text3("第 %1 行第 %2 列：", "第 %1 行第 %2 欄：", "line %1, column %2: ")
               .arg(problem.line)
               .arg(problem.column) +
           text;
}
