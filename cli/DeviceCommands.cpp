#include "DeviceCommands.h"

#include "CommandLine.h"
#include "Console.h"
#include "ExitCodes.h"

#include <QJsonArray>
#include <QJsonObject>

#include <algorithm>

namespace cli {

namespace {

QString kindName(DeviceKind kind)
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

QJsonObject deviceJson(const DeviceEntry& entry)
{
    return QJsonObject{{QStringLiteral("serial"), entry.serial},
                       {QStringLiteral("model"), entry.model},
                       {QStringLiteral("address"), entry.address},
                       {QStringLiteral("version"), entry.version},
                       {QStringLiteral("userName"), entry.userName},
                       {QStringLiteral("kind"), kindName(entry.kind)},
                       {QStringLiteral("accessible"), entry.accessible}};
}

} // namespace

QVector<XQ_CODEREADER_DEVICE_INFO> enumerateDevices(int& sdkError)
{
    XQ_CODEREADER_DEVICE_INFO_LIST list;
    sdkError = collect::enumerateDevices(list);
    return sdkError == XQ_OK ? collect::recordsOf(list) : QVector<XQ_CODEREADER_DEVICE_INFO>();
}

QString deviceTable(const QVector<DeviceEntry>& entries, bool withKind)
{
    QVector<QStringList> rows;
    QStringList header{QStringLiteral("SERIAL"), QStringLiteral("MODEL"), QStringLiteral("ADDRESS"),
                       QStringLiteral("VERSION"), QStringLiteral("ACCESSIBLE")};
    if (withKind)
        header << QStringLiteral("KIND");
    rows.append(header);
    for (const DeviceEntry& entry : entries) {
        QStringList row{printable(entry.serial), printable(entry.model), entry.address, printable(entry.version),
                        entry.accessible ? QStringLiteral("yes") : QStringLiteral("no (held by another client)")};
        if (withKind)
            row << kindName(entry.kind);
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

int runDevices(const Request& request, const Console& console)
{
    int sdkError = XQ_OK;
    const QVector<XQ_CODEREADER_DEVICE_INFO> records = enumerateDevices(sdkError);
    if (sdkError != XQ_OK) {
        const QString message = QStringLiteral("device enumeration failed (SDK error 0x%1)")
                                    .arg(static_cast<unsigned int>(sdkError), 0, 16);
        console.err(QStringLiteral("quorvex-cli: %1\n").arg(message));
        if (request.json)
            console.json({{QStringLiteral("error"), message}});
        return kExitFailed;
    }

    QVector<DeviceEntry> entries;
    for (const XQ_CODEREADER_DEVICE_INFO& record : records) {
        DeviceEntry entry = collect::describeDevice(record);
        if (request.all || entry.kind == DeviceKind::CodeReader)
            entries.append(std::move(entry));
    }

    if (request.json) {
        QJsonArray devices;
        for (const DeviceEntry& entry : entries)
            devices.append(deviceJson(entry));
        console.json({{QStringLiteral("devices"), devices}});
        return kExitOk;
    }
    if (entries.isEmpty()) {
        console.err(request.all ? QStringLiteral("quorvex-cli: no devices found\n")
                                : QStringLiteral("quorvex-cli: no code readers found\n"));
        return kExitOk;
    }
    console.out(deviceTable(entries, request.all));
    return kExitOk;
}

} // namespace cli
