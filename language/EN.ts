<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en" sourcelanguage="zh_CN">
<context>
    <name>DataDlg</name>
    <message>
        <source>数据编辑</source>
        <translation>Data editor</translation>
    </message>
    <message>
        <source>长度(字节)：</source>
        <translation>Length (bytes):</translation>
    </message>
    <message>
        <source>十六进制</source>
        <translation>Hex</translation>
    </message>
    <message>
        <source>十进制</source>
        <translation>Decimal</translation>
    </message>
    <message>
        <source>确定</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>取消</source>
        <translation>Cancel</translation>
    </message>
</context>
<context>
    <name>FilterDialog</name>
    <message>
        <source>帧类型：</source>
        <translation>Frame kind:</translation>
    </message>
    <message>
        <source>标准帧组ID</source>
        <translation>Standard frame, ID group</translation>
    </message>
    <message>
        <source>标准帧明确ID</source>
        <translation>Standard frame, single ID</translation>
    </message>
    <message>
        <source>扩展帧组ID</source>
        <translation>Extended frame, ID group</translation>
    </message>
    <message>
        <source>扩展帧明确ID</source>
        <translation>Extended frame, single ID</translation>
    </message>
    <message>
        <source>添加</source>
        <translation>Add</translation>
    </message>
    <message>
        <source>起始ID(0x):</source>
        <translation>Start ID (0x):</translation>
    </message>
    <message>
        <source>删除</source>
        <translation>Delete</translation>
    </message>
    <message>
        <source>结束ID(0x):</source>
        <translation>End ID (0x):</translation>
    </message>
    <message>
        <source>帧类型</source>
        <translation>Frame kind</translation>
    </message>
    <message>
        <source>起始ID(0x)</source>
        <translation>Start ID (0x)</translation>
    </message>
    <message>
        <source>结束ID(0x)</source>
        <translation>End ID (0x)</translation>
    </message>
    <message>
        <source>确定</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>取消</source>
        <translation>Cancel</translation>
    </message>
    <message>
        <source>十六进制，标准帧：0~7FF，扩展帧：0~1FFFFFFF</source>
        <translation>Hexadecimal, standard: 0~7FF, extended: 0~1FFFFFFF</translation>
    </message>
</context>
<context>
    <name>INfDialog</name>
    <message>
        <source>设备信息</source>
        <translation>Device Info</translation>
    </message>
    <message>
        <source>硬件版本号：</source>
        <translation>Hardware version:</translation>
    </message>
    <message>
        <source>固件版本号：</source>
        <translation>Firmware version:</translation>
    </message>
    <message>
        <source>驱动程序版本号：</source>
        <translation>Driver version:</translation>
    </message>
    <message>
        <source>接口库版本号：</source>
        <translation>Interface library version:</translation>
    </message>
    <message>
        <source>板卡中断号：</source>
        <translation>Board interrupt number:</translation>
    </message>
    <message>
        <source>通道数量：</source>
        <translation>Channel count:</translation>
    </message>
    <message>
        <source>板卡序列号：</source>
        <translation>Board serial number:</translation>
    </message>
    <message>
        <source>硬件类型：</source>
        <translation>Hardware type:</translation>
    </message>
    <message>
        <source>确定</source>
        <translation>OK</translation>
    </message>
</context>
<context>
    <name>MainMenu</name>
    <message>
        <source>接收扫描时间(%1ms)(&amp;S)</source>
        <translation>Receive scan time(%1ms)(&amp;S)</translation>
    </message>
    <message>
        <source>每次接收帧数(%1)(&amp;F)</source>
        <translation>Frames per receive(%1)(&amp;F)</translation>
    </message>
</context>
<context>
    <name>MainWindow</name>
    <message>
        <source>通道1打开成功！</source>
        <translation>Channel 1 opened successfully!</translation>
    </message>
    <message>
        <source>通道2打开成功！</source>
        <translation>Channel 2 opened successfully!</translation>
    </message>
    <message>
        <source>设备已关闭！</source>
        <translation>The device is closed!</translation>
    </message>
</context>
<context>
    <name>OpenDlg</name>
    <message>
        <source>设备操作</source>
        <translation>Device Operations</translation>
    </message>
    <message>
        <source>设备：</source>
        <translation>Device:</translation>
    </message>
    <message>
        <source>打开设备</source>
        <translation>Open Device</translation>
    </message>
    <message>
        <source>关闭设备</source>
        <translation>Close Device</translation>
    </message>
    <message>
        <source>打开全部通道</source>
        <translation>Open All Channels</translation>
    </message>
    <message>
        <source>复位全部通道</source>
        <translation>Reset All Channels</translation>
    </message>
    <message>
        <source>打开通道1</source>
        <translation>Open Channel 1</translation>
    </message>
    <message>
        <source>复位通道1</source>
        <translation>Reset Channel 1</translation>
    </message>
    <message>
        <source>打开通道2</source>
        <translation>Open Channel 2</translation>
    </message>
    <message>
        <source>复位通道2</source>
        <translation>Reset Channel 2</translation>
    </message>
    <message>
        <source>关闭此对话框后开始接收</source>
        <translation>Receiving starts when this dialog is closed</translation>
    </message>
    <message>
        <source>关闭</source>
        <translation>Close</translation>
    </message>
</context>
<context>
    <name>OperationLog</name>
    <message>
        <source>：</source>
        <translation>：</translation>
    </message>
</context>
<context>
    <name>ParaDialog</name>
    <message>
        <source>参数配置</source>
        <translation>Parameter Configuration</translation>
    </message>
    <message>
        <source>通道1</source>
        <translation>Channel 1</translation>
    </message>
    <message>
        <source>通道2</source>
        <translation>Channel 2</translation>
    </message>
    <message>
        <source>工作模式：</source>
        <translation>Work mode:</translation>
    </message>
    <message>
        <source>正常</source>
        <translation>Normal</translation>
    </message>
    <message>
        <source>只听</source>
        <translation>Listen only</translation>
    </message>
    <message>
        <source>CANFD标准：</source>
        <translation>CAN FD standard:</translation>
    </message>
    <message>
        <source>仲裁域波特率：</source>
        <translation>Arbitration bit rate:</translation>
    </message>
    <message>
        <source>数据域波特率：</source>
        <translation>Data bit rate:</translation>
    </message>
    <message>
        <source>自定义波特率</source>
        <translation>Custom bit rate</translation>
    </message>
    <message>
        <source>自定义波特率值请使用ratesmith生成</source>
        <translation>Make custom bit-rate values with ratesmith</translation>
    </message>
    <message>
        <source>启用滤波</source>
        <translation>Enable filter</translation>
    </message>
    <message>
        <source>编辑...</source>
        <translation>Edit...</translation>
    </message>
    <message>
        <source>保存</source>
        <translation>Save</translation>
    </message>
    <message>
        <source>确定</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>取消</source>
        <translation>Cancel</translation>
    </message>
    <message>
        <source>由ratesmith生成的整个文本</source>
        <translation>The whole text as generated by ratesmith</translation>
    </message>
</context>
<context>
    <name>ReceiveView</name>
    <message>
        <source>暂停显示</source>
        <translation>Pause</translation>
    </message>
    <message>
        <source>实时保存</source>
        <translation>Save live</translation>
    </message>
    <message>
        <source>删除全部筛选条件</source>
        <translation>Clear filters</translation>
    </message>
    <message>
        <source>清空列表</source>
        <translation>Clear list</translation>
    </message>
    <message>
        <source>统计</source>
        <translation>Statistics</translation>
    </message>
    <message>
        <source>通道1：接收帧计数：</source>
        <translation>Channel 1: received:</translation>
    </message>
    <message>
        <source>帧率R：</source>
        <translation>Rate R:</translation>
    </message>
    <message>
        <source>发送帧计数:</source>
        <translation>Sent:</translation>
    </message>
    <message>
        <source>帧率T：</source>
        <translation>Rate T:</translation>
    </message>
    <message>
        <source>通道2：接收帧计数：</source>
        <translation>Channel 2: received:</translation>
    </message>
    <message>
        <source>复位计数</source>
        <translation>Reset counters</translation>
    </message>
</context>
<context>
    <name>SendPanel</name>
    <message>
        <source>帧格式：</source>
        <translation>Format:</translation>
    </message>
    <message>
        <source>标准帧</source>
        <translation>Standard</translation>
    </message>
    <message>
        <source>扩展帧</source>
        <translation>Extended</translation>
    </message>
    <message>
        <source>帧类型：</source>
        <translation>Type:</translation>
    </message>
    <message>
        <source>数据帧</source>
        <translation>Data</translation>
    </message>
    <message>
        <source>远程帧</source>
        <translation>Remote</translation>
    </message>
    <message>
        <source>协议：</source>
        <translation>Protocol:</translation>
    </message>
    <message>
        <source>CANFD加速</source>
        <translation>CANFD BRS</translation>
    </message>
    <message>
        <source>发送方式：</source>
        <translation>Mode:</translation>
    </message>
    <message>
        <source>正常发送</source>
        <translation>Normal</translation>
    </message>
    <message>
        <source>单次发送</source>
        <translation>Single</translation>
    </message>
    <message>
        <source>自发自收</source>
        <translation>Self-rx</translation>
    </message>
    <message>
        <source>单次自发自收</source>
        <translation>Single self-rx</translation>
    </message>
    <message>
        <source>ID(0x):</source>
        <translation>ID(0x):</translation>
    </message>
    <message>
        <source>长度：</source>
        <translation>Length:</translation>
    </message>
    <message>
        <source>数据(0x)：</source>
        <translation>Data(0x):</translation>
    </message>
    <message>
        <source>数据编辑</source>
        <translation>Edit the data bytes</translation>
    </message>
    <message>
        <source>编辑...</source>
        <translation>Edit...</translation>
    </message>
    <message>
        <source>发送总帧数：</source>
        <translation>Frames:</translation>
    </message>
    <message>
        <source>-1：一直发送</source>
        <translation>-1: until stopped</translation>
    </message>
    <message>
        <source>发送间隔(ms)：</source>
        <translation>Interval(ms):</translation>
    </message>
    <message>
        <source>数据递增</source>
        <translation>Data +1</translation>
    </message>
    <message>
        <source>ID递增</source>
        <translation>ID +1</translation>
    </message>
    <message>
        <source>发送</source>
        <translation>Send</translation>
    </message>
    <message>
        <source>停止发送</source>
        <translation>Stop</translation>
    </message>
    <message>
        <source>发送文件</source>
        <translation>Send file</translation>
    </message>
    <message>
        <source>通道%1发送</source>
        <translation>Channel %1 send</translation>
    </message>
    <message>
        <source>十六进制，标准帧：0~7FF，扩展帧：0~1FFFFFFF</source>
        <translation>Hexadecimal, standard: 0~7FF, extended: 0~1FFFFFFF</translation>
    </message>
    <message>
        <source>十六进制字节，以空格分隔，例如 00 1A FF</source>
        <translation>Hexadecimal bytes with blanks in between, such as 00 1A FF</translation>
    </message>
    <message>
        <source>两帧之间的毫秒数，十进制，0：尽快发送</source>
        <translation>Milliseconds between frames, decimal, 0: as fast as possible</translation>
    </message>
</context>
<context>
    <name>SiftDialog</name>
    <message>
        <source>筛选</source>
        <translation>Filter</translation>
    </message>
    <message>
        <source>搜索</source>
        <translation>Search</translation>
    </message>
    <message>
        <source>大小写敏感</source>
        <translation>Case sensitive</translation>
    </message>
    <message>
        <source>全文匹配</source>
        <translation>Whole match</translation>
    </message>
    <message>
        <source>确定</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>取消</source>
        <translation>Cancel</translation>
    </message>
</context>
<context>
    <name>UpdateDlg</name>
    <message>
        <source>升级固件</source>
        <translation>Firmware Upgrade</translation>
    </message>
    <message>
        <source>是</source>
        <translation>Yes</translation>
    </message>
    <message>
        <source>否</source>
        <translation>No</translation>
    </message>
</context>
<context>
    <name>fileDlg</name>
    <message>
        <source>发送文件</source>
        <translation>Send file</translation>
    </message>
    <message>
        <source>CSV文件：</source>
        <translation>CSV file:</translation>
    </message>
    <message>
        <source>发送通道：</source>
        <translation>Channel:</translation>
    </message>
    <message>
        <source>随文件</source>
        <translation>As in file</translation>
    </message>
    <message>
        <source>发送次数：</source>
        <translation>Repeat:</translation>
    </message>
    <message>
        <source>一直发送</source>
        <translation>Until stopped</translation>
    </message>
    <message>
        <source>发送间隔：</source>
        <translation>Interval:</translation>
    </message>
    <message>
        <source>固定间隔(ms)</source>
        <translation>Fixed (ms)</translation>
    </message>
    <message>
        <source>停止发送</source>
        <translation>Stop</translation>
    </message>
    <message>
        <source>打开CSV文件</source>
        <translation>Open CSV file</translation>
    </message>
    <message>
        <source>发送整个文件的次数，-1：一直发送</source>
        <translation>Passes over the file, -1: until stopped</translation>
    </message>
    <message>
        <source>两帧之间的毫秒数，0：尽快发送</source>
        <translation>Milliseconds between frames, 0: as fast as possible</translation>
    </message>
</context>
<context>
    <name>listSendDlg</name>
    <message>
        <source>列表发送</source>
        <translation>List send</translation>
    </message>
    <message>
        <source>发送</source>
        <translation>Send</translation>
    </message>
    <message>
        <source>停止发送</source>
        <translation>Stop</translation>
    </message>
    <message>
        <source>关闭</source>
        <translation>Close</translation>
    </message>
</context>
<context>
    <name>savefileDlg</name>
    <message>
        <source>保存文件</source>
        <translation>Save File</translation>
    </message>
    <message>
        <source>文件路径：</source>
        <translation>File path:</translation>
    </message>
    <message>
        <source>提示：文件创建失败，请选择其他路径。</source>
        <translation>The file could not be created. Choose another path.</translation>
    </message>
    <message>
        <source>保存内容：</source>
        <translation>Save:</translation>
    </message>
    <message>
        <source>全部数据</source>
        <translation>All data</translation>
    </message>
    <message>
        <source>筛选后数据</source>
        <translation>Filtered data</translation>
    </message>
    <message>
        <source>确定</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>取消</source>
        <translation>Cancel</translation>
    </message>
    <message>
        <source>保存CSV文件</source>
        <translation>Save CSV File</translation>
    </message>
    <message>
        <source>输入已有的文件：追加；浏览选择的：覆盖</source>
        <translation>An existing file: appended to when typed, replaced when browsed to</translation>
    </message>
</context>
<context>
    <name>valueDialog</name>
    <message>
        <source>输入数值</source>
        <translation>Enter a Value</translation>
    </message>
    <message>
        <source>确定</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>取消</source>
        <translation>Cancel</translation>
    </message>
</context>
</TS>
