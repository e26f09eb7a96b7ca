<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="zh_CN" sourcelanguage="en">
<context>
    <name>QCollectInfoThread</name>
    <message>
        <source>Create Handle fail!</source>
        <translation>创建句柄失败！</translation>
    </message>
    <message>
        <source>Open Device fail!</source>
        <translation>打开设备失败！</translation>
    </message>
    <message>
        <source>GetGenI CamXML fail</source>
        <translation>获取 GenICam XML 失败</translation>
    </message>
    <message>
        <source>Set UserSetSelector fail!</source>
        <translation>设置用户参数集选择失败！</translation>
    </message>
    <message>
        <source>Set UserSetLoad fail!</source>
        <translation>加载用户参数集失败！</translation>
    </message>
    <message>
        <source>Get RootNode fail!</source>
        <translation>获取根节点失败！</translation>
    </message>
    <message>
        <source>Collect Failed!</source>
        <translation>采集失败！</translation>
    </message>
    <message>
        <source>Create File Failed!</source>
        <translation>创建文件失败！</translation>
    </message>
    <message>
        <source>Create Handle Failed!</source>
        <translation>创建句柄失败！</translation>
    </message>
    <message>
        <source>Open Camera Fail!</source>
        <translation>打开相机失败！</translation>
    </message>
    <message>
        <source>Set Running Mode fail!</source>
        <translation>设置运行模式失败！</translation>
    </message>
    <message>
        <source>Set Trigger Mode fail!</source>
        <translation>设置触发模式失败！</translation>
    </message>
    <message>
        <source>Start Grabbing fail!</source>
        <translation>开始取流失败！</translation>
    </message>
    <message>
        <source>Open File fail!</source>
        <translation>打开文件失败！</translation>
    </message>
    <message>
        <source>Stop Grabbing fail!</source>
        <translation>停止取流失败！</translation>
    </message>
    <message>
        <source>No image was captured!</source>
        <translation>未采集到图像！</translation>
    </message>
    <message>
        <source>Invalid device model name!</source>
        <translation>设备型号名称无效！</translation>
    </message>
</context>
<context>
    <name>QVirtualCamMainWidget</name>
    <message>
        <source>Quorvex</source>
        <translation>奎沃思</translation>
    </message>
    <message>
        <source>Record</source>
        <translation>采集</translation>
    </message>
    <message>
        <source>The tool does not support discovery code readers when private protocol is enabled</source>
        <translation>本工具无法发现已启用私有协议的读码器</translation>
    </message>
    <message>
        <source>Model Name</source>
        <translation>型号名称</translation>
    </message>
    <message>
        <source>IP Address</source>
        <translation>IP 地址</translation>
    </message>
    <message>
        <source>Version</source>
        <translation>版本</translation>
    </message>
    <message>
        <source>Collect Status</source>
        <translation>采集状态</translation>
    </message>
    <message>
        <source>Add</source>
        <translation>添加</translation>
    </message>
    <message>
        <source>View Document</source>
        <translation>查看文档</translation>
    </message>
    <message>
        <source>Collect Finished</source>
        <translation>采集完成</translation>
    </message>
    <message>
        <source>Prompt</source>
        <translation>提示</translation>
    </message>
    <message>
        <source>Camera in collecting. Are you sure you want to quit?</source>
        <translation>相机正在采集，确定要退出吗？</translation>
    </message>
    <message>
        <source>The configuration file fails to be written. Start the tool as an administrator!</source>
        <translation>配置文件写入失败，请以管理员身份启动本工具！</translation>
    </message>
    <message>
        <source>The camera is connected, please disconnect and try again!</source>
        <translation>相机已被连接，请断开连接后重试！</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>删除</translation>
    </message>
    <message>
        <source>Collections are kept in %1</source>
        <translation>采集结果保存在 %1</translation>
    </message>
    <message>
        <source>Copying the collected files failed. The virtual camera was not created!</source>
        <translation>复制采集文件失败，未创建虚拟相机！</translation>
    </message>
    <message>
        <source>The camera&apos;s folder leads outside the store. Nothing was deleted!</source>
        <translation>相机文件夹指向存储区之外，未删除任何内容！</translation>
    </message>
</context>
</TS>
