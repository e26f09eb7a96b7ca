#include "DeviceCommands.h"

#include "CommandLine.h"
#include "Console.h"
#include "DeviceListing.h"
#include "ExitCodes.h"

#include <QJsonArray>
#include <QJsonObject>

#include <algorithm>
#include <memory>

namespace cli {

QVector<XQ_CODEREADER_DEVICE_INFO> EnumerateDevices(int& sdkError)
{
    QVector<XQ_CODEREADER_DEVICE_INFO> records;
    const auto list = std::make_unique<XQ_CODEREADER_DEVICE_INFO_LIST>();
    sdkError = XQ_CODEREADER_EnumDevices(list.get(), XQ_TLAYER_GIGE);
    if (sdkError != XQ_OK)
        return records;
    const unsigned int count = std::min<unsigned int>(list->nDeviceNum, XQ_MAX_DEVICE_NUM);
    for (unsigned int i = 0; i < count; ++i)
        if (list->pDeviceInfo[i] != nullptr)
            records.append(*list->pDeviceInfo[i]);
    return records;
}

DeviceEntry DescribeDevice(const XQ_CODEREADER_DEVICE_INFO& record)
{
    DeviceEntry entry;
    entry.serial = collect::DeviceText(record.stGigE.chSerialNumber);
    entry.model = collect::DeviceText(record.stGigE.chModelName);
    entry.address = collect::IpAddressText(record.stGigE.nCurrentIp);
    entry.version = collect::DeviceText(record.stGigE.chDeviceVersion);
    entry.userName = collect::DeviceText(record.stGigE.chUserDefinedName);
    if (collect::IsListedCodeReader(record))
        entry.kind = DeviceKind::CodeReader;
    else if (entry.serial.contains(QLatin1String("Vir")))
        entry.kind = DeviceKind::VirtualCamera;
    entry.accessible = XQ_CODEREADER_IsDeviceAccessible(&record, XQ_ACCESS_EXCLUSIVE);
    return entry;
}

QString KindName(DeviceKind kind)
{
    switch (kind) {
    case DeviceKind::CodeReader:
        return QStringLiteral("code reader");
    case DeviceKind::VirtualCamera:
        return QStringLiteral("virtual camera");
    case DeviceKind::OtherCamera:
        break;
    }
    return QStringLiteral("other camera");
}

QJsonObject DeviceJson(const DeviceEntry& entry)
{
    return QJsonObject{{QStringLiteral("serial"), entry.serial},
                       {QStringLiteral("model"), entry.model},
                       {QStringLiteral("address"), entry.address},
                       {QStringLiteral("version"), entry.version},
                       {QStringLiteral("userName"), entry.userName},
                       {QStringLiteral("kind"), KindName(entry.kind)},
                       {QStringLiteral("accessible"), entry.accessible}};
}

QString DeviceTable(const QVector<DeviceEntry>& entries, bool withKind)
{
    QVector<QStringList> rows;
    QStringList header{QStringLiteral("SERIAL"), QStringLiteral("MODEL"), QStringLiteral("ADDRESS"),
                       QStringLiteral("VERSION"), QStringLiteral("ACCESSIBLE")};
    if (withKind)
        header << QStringLiteral("KIND");
    rows.append(header);
    for (const DeviceEntry& entry : entries) {
        QStringList row{Printable(entry.serial), Printable(entry.model), entry.address, Printable(entry.version),
                        entry.accessible ? QStringLiteral("yes") : QStringLiteral("no (held by another client)")};
        if (withKind)
            row << KindName(entry.kind);
        rows.append(row);
    }
    QVector<int> widths(header.size(), 0);
    for (const QStringList& row : rows)
        for (int column = 0; column < row.size(); ++column)
            widths[column] = std::max(widths[column], static_cast<int>(row[column].size()));
    QString table;
    for (const QStringList& row : rows) {
        QString line;
        for (int column = 0; column < row.size(); ++column) {
            const bool last = column + 1 == row.size();
            line += last ? row[column] : row[column].leftJustified(widths[column] + 2);
        }
        table += line + QLatin1Char('\n');
    }
    return table;
}

int RunDevices(const Request& request, const Console& console)
{
    int sdkError = XQ_OK;
    const QVector<XQ_CODEREADER_DEVICE_INFO> records = EnumerateDevices(sdkError);
    if (sdkError != XQ_OK) {
        const QString message = QStringLiteral("device enumeration failed (SDK error 0x%1)")
                                    .arg(static_cast<unsigned int>(sdkError), 0, 16);
        console.Err(QStringLiteral("quorvex-cli: %1\n").arg(message));
        if (request.json)
            console.Json({{QStringLiteral("error"), message}});
        return kExitFailed;
    }

    QVector<DeviceEntry> entries;
    for (const XQ_CODEREADER_DEVICE_INFO& record : records) {
        DeviceEntry entry = DescribeDevice(record);
        if (request.all || entry.kind == DeviceKind::CodeReader)
            entries.append(std::move(entry));
    }

    if (request.json) {
        QJsonArray devices;
        for (const DeviceEntry& entry : entries)
            devices.append(DeviceJson(entry));
        console.Json({{QStringLiteral("devices"), devices}});
        return kExitOk;
    }
    if (entries.isEmpty()) {
        console.Err(request.all ? QStringLiteral("quorvex-cli: no devices found\n")
                                : QStringLiteral("quorvex-cli: no code readers found\n"));
        return kExitOk;
    }
    console.Out(DeviceTable(entries, request.all));
    return kExitOk;
}

} // namespace cli
