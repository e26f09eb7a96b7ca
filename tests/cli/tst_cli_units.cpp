// The pieces of quorvex-cli that need no device: the command line, the
// choice of devices to collect, and how progress and hostile names are shown.

#include "TableTests.h"
#include "QtPrinters.h"
#include "CollectCommand.h"
#include "CommandLine.h"
#include "Console.h"
#include "DeviceCommands.h"
#include "ProgressView.h"

#include <QtCore>

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <cstring>

using namespace cli;

namespace {

XQ_CODEREADER_DEVICE_INFO Record(const char* serial, const char* model)
{
    XQ_CODEREADER_DEVICE_INFO info{};
    std::strncpy(reinterpret_cast<char*>(info.stGigE.chSerialNumber), serial, sizeof info.stGigE.chSerialNumber - 1);
    std::strncpy(reinterpret_cast<char*>(info.stGigE.chModelName), model, sizeof info.stGigE.chModelName - 1);
    return info;
}

QStringList SerialsOf(const QVector<XQ_CODEREADER_DEVICE_INFO>& records)
{
    QStringList serials;
    for (const XQ_CODEREADER_DEVICE_INFO& record : records)
        serials << QString::fromLatin1(reinterpret_cast<const char*>(record.stGigE.chSerialNumber));
    return serials;
}

} // namespace

TEST(CliUnitsTest, commandLine_accepts)
{
    struct Row {
        std::string rowName;
        QStringList arguments;
        Command command;
        bool json, all, help;
        QStringList operands;
    };
    forEachRow(std::vector<Row>{
                   {"json anywhere", {"devices", "--all", "--json"}, Command::Devices, true, true, false, {}},
                   {"collect serials", {"collect", "QD1", "QD2"}, Command::Collect, false, false, false, {"QD1", "QD2"}},
                   {"collect all", {"--json", "collect", "-a"}, Command::Collect, true, true, false, {}},
                   // After "--" a serial may start with a dash and "--json" is an operand.
                   {"double dash", {"collect", "--", "-QD1", "--json"}, Command::Collect, false, false, false, {"-QD1", "--json"}},
                   // Help wins over missing operands.
                   {"command help", {"collect", "--help"}, Command::Collect, false, false, true, {}},
                   {"delete", {"delete", "Vir12345678"}, Command::Delete, false, false, false, {"Vir12345678"}},
                   {"help topic", {"help", "collect"}, Command::Help, false, false, false, {"collect"}},
                   {"version option", {"--version"}, Command::Version, false, false, false, {}},
               },
               [](const Row& row) {
                   const Request request = parseCommandLine(row.arguments);
                   ASSERT_TRUE(request.error.isEmpty()) << qPrintable(request.error);
                   ASSERT_EQ(int(request.command), int(row.command));
                   ASSERT_EQ(request.json, row.json);
                   ASSERT_EQ(request.all, row.all);
                   ASSERT_EQ(request.help, row.help);
                   ASSERT_EQ(request.operands, row.operands);
               });
}

TEST(CliUnitsTest, commandLine_refuses)
{
    struct Row {
        std::string rowName;
        QStringList arguments;
        QString named;
    };
    forEachRow(std::vector<Row>{
                   {"nothing", {}, "no command"},
                   {"unknown command", {"frobnicate"}, "frobnicate"},
                   {"unknown option", {"devices", "--fast"}, "--fast"},
                   {"collect nothing", {"collect"}, "serial numbers or --all"},
                   {"collect both", {"collect", "--all", "QD1"}, "not both"},
                   {"add two", {"add", "A", "B"}, "exactly one"},
                   {"devices operand", {"devices", "QD1"}, "QD1"},
                   {"all on cameras", {"cameras", "--all"}, "--all"},
                   {"help two", {"help", "add", "delete"}, "at most one"},
               },
               [](const Row& row) {
                   const Request request = parseCommandLine(row.arguments);
                   ASSERT_TRUE(request.error.contains(row.named)) << qPrintable(request.error);
               });
}

TEST(CliUnitsTest, selection_takesListedCodeReadersOnceInOrder)
{
    const QVector<XQ_CODEREADER_DEVICE_INFO> found{Record("QD1", "QVX-ID2040M"), Record("Vir12345678", "QVX-ID2040M"),
                                                   Record("FK1", "Fake camera"), Record("QD2", "QVX-ID3160C"),
                                                   Record("QD1", "QVX-ID2040M")};
    const DeviceSelection all = selectDevices(found, {}, true);
    ASSERT_EQ(SerialsOf(all.records), (QStringList{"QD1", "QD2"}));
    ASSERT_TRUE(all.unknownSerials.isEmpty());
    // By serial: the order asked, once each; a virtual camera is never
    // collected, so it is as unknown as a typo.
    const DeviceSelection bySerial = selectDevices(found, {"QD2", "QD9", "QD1", "QD2", "Vir12345678"}, false);
    ASSERT_EQ(SerialsOf(bySerial.records), (QStringList{"QD2", "QD1"}));
    ASSERT_EQ(bySerial.unknownSerials, (QStringList{"QD9", "Vir12345678"}));
}

TEST(CliUnitsTest, progressLine_fillsTheBarByPercentAndClamps)
{
    JobState job;
    job.serial = "QD1";
    job.model = "QVX-ID2040M";
    job.percent = 45;
    ASSERT_EQ(progressLine(job, 5, 12, 20), QString("QD1    QVX-ID2040M   [#########...........]  45%"));
    job.percent = 250;
    ASSERT_TRUE(progressLine(job, 3, 11, 10).contains("[##########]"));
    job.percent = -5;
    ASSERT_TRUE(progressLine(job, 3, 11, 10).contains("[..........]"));
}

TEST(CliUnitsTest, hostileNames_cannotDriveTheTerminal)
{
    ASSERT_EQ(printable(QString("ID\x1b[2J\r\nfake")), QString("ID\\x1b[2J\\x0d\\x0afake"));
    ASSERT_EQ(printable(QString::fromUtf8("QVX-ID\u0085\u00e9")), QString::fromUtf8("QVX-ID\\x85\u00e9"));
    JobState job;
    job.serial = "QD\n1";
    job.model = "ID\x1b[1A";
    ASSERT_TRUE(!plainProgressLine(job).contains(QLatin1Char('\n')));
    ASSERT_TRUE(!plainProgressLine(job).contains(QLatin1Char('\x1b')));
}

TEST(CliUnitsTest, deviceTable_alignsColumnsAndShowsKindOnlyWhenAsked)
{
    DeviceEntry reader;
    reader.serial = "QD24A10000";
    reader.model = "QVX-ID2040M";
    reader.address = "127.0.0.2";
    reader.version = "V3.2.1";
    reader.kind = DeviceKind::CodeReader;
    reader.accessible = true;
    DeviceEntry held = reader;
    held.serial = "QD2";
    held.model = "Evil\tID";
    held.accessible = false;
    const QStringList lines = deviceTable({reader, held}, false).split('\n', Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), 3);
    ASSERT_TRUE(lines[0].startsWith("SERIAL"));
    ASSERT_TRUE(!lines[0].contains("KIND"));
    // Every column starts where its header does.
    const int modelColumn = lines[0].indexOf("MODEL");
    const int addressColumn = lines[0].indexOf("ADDRESS");
    ASSERT_EQ(lines[1].indexOf("QVX-ID2040M"), modelColumn);
    ASSERT_EQ(lines[2].indexOf("Evil\\x09ID"), modelColumn);
    ASSERT_EQ(lines[2].indexOf("127.0.0.2"), addressColumn);
    ASSERT_TRUE(lines[2].contains("no (held by another client)"));
    ASSERT_TRUE(deviceTable({reader}, true).contains("code reader"));
}

