// The pieces of quorvex-cli that need no device: the command line, the
// choice of devices to collect, and how progress and hostile names are shown.

#include "CollectCommand.h"
#include "CommandLine.h"
#include "Console.h"
#include "DeviceCommands.h"
#include "ProgressView.h"

#include <QtTest>

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

class CliUnitsTest final : public QObject
{
    Q_OBJECT

private slots:
    void commandLine_accepts_data();
    void commandLine_accepts();
    void commandLine_refuses_data();
    void commandLine_refuses();
    void selection_takesListedCodeReadersOnceInOrder();
    void progressLine_fillsTheBarByPercentAndClamps();
    void hostileNames_cannotDriveTheTerminal();
    void deviceTable_alignsColumnsAndShowsKindOnlyWhenAsked();
};

void CliUnitsTest::commandLine_accepts_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("command");
    QTest::addColumn<bool>("json");
    QTest::addColumn<bool>("all");
    QTest::addColumn<bool>("help");
    QTest::addColumn<QStringList>("operands");
    QTest::newRow("json anywhere") << QStringList{"devices", "--all", "--json"} << int(Command::Devices) << true
                                   << true << false << QStringList{};
    QTest::newRow("collect serials") << QStringList{"collect", "QD1", "QD2"} << int(Command::Collect) << false
                                     << false << false << QStringList{"QD1", "QD2"};
    QTest::newRow("collect all") << QStringList{"--json", "collect", "-a"} << int(Command::Collect) << true << true
                                 << false << QStringList{};
    // After "--" a serial may start with a dash and "--json" is an operand.
    QTest::newRow("double dash") << QStringList{"collect", "--", "-QD1", "--json"} << int(Command::Collect) << false
                                 << false << false << QStringList{"-QD1", "--json"};
    // Help wins over missing operands.
    QTest::newRow("command help") << QStringList{"collect", "--help"} << int(Command::Collect) << false << false
                                  << true << QStringList{};
    QTest::newRow("delete") << QStringList{"delete", "Vir12345678"} << int(Command::Delete) << false << false
                            << false << QStringList{"Vir12345678"};
    QTest::newRow("help topic") << QStringList{"help", "collect"} << int(Command::Help) << false << false << false
                                << QStringList{"collect"};
    QTest::newRow("version option") << QStringList{"--version"} << int(Command::Version) << false << false << false
                                    << QStringList{};
}

void CliUnitsTest::commandLine_accepts()
{
    QFETCH(QStringList, arguments);
    QFETCH(int, command);
    QFETCH(bool, json);
    QFETCH(bool, all);
    QFETCH(bool, help);
    QFETCH(QStringList, operands);
    const Request request = parseCommandLine(arguments);
    QVERIFY2(request.error.isEmpty(), qPrintable(request.error));
    QCOMPARE(int(request.command), command);
    QCOMPARE(request.json, json);
    QCOMPARE(request.all, all);
    QCOMPARE(request.help, help);
    QCOMPARE(request.operands, operands);
}

void CliUnitsTest::commandLine_refuses_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("named");
    QTest::newRow("nothing") << QStringList{} << "no command";
    QTest::newRow("unknown command") << QStringList{"frobnicate"} << "frobnicate";
    QTest::newRow("unknown option") << QStringList{"devices", "--fast"} << "--fast";
    QTest::newRow("collect nothing") << QStringList{"collect"} << "serial numbers or --all";
    QTest::newRow("collect both") << QStringList{"collect", "--all", "QD1"} << "not both";
    QTest::newRow("add two") << QStringList{"add", "A", "B"} << "exactly one";
    QTest::newRow("devices operand") << QStringList{"devices", "QD1"} << "QD1";
    QTest::newRow("all on cameras") << QStringList{"cameras", "--all"} << "--all";
    QTest::newRow("help two") << QStringList{"help", "add", "delete"} << "at most one";
}

void CliUnitsTest::commandLine_refuses()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, named);
    const Request request = parseCommandLine(arguments);
    QVERIFY2(request.error.contains(named), qPrintable(request.error));
}

void CliUnitsTest::selection_takesListedCodeReadersOnceInOrder()
{
    const QVector<XQ_CODEREADER_DEVICE_INFO> found{Record("QD1", "QVX-ID2040M"), Record("Vir12345678", "QVX-ID2040M"),
                                                   Record("FK1", "Fake camera"), Record("QD2", "QVX-ID3160C"),
                                                   Record("QD1", "QVX-ID2040M")};
    const DeviceSelection all = selectDevices(found, {}, true);
    QCOMPARE(SerialsOf(all.records), (QStringList{"QD1", "QD2"}));
    QVERIFY(all.unknownSerials.isEmpty());
    // By serial: the order asked, once each; a virtual camera is never
    // collected, so it is as unknown as a typo.
    const DeviceSelection bySerial = selectDevices(found, {"QD2", "QD9", "QD1", "QD2", "Vir12345678"}, false);
    QCOMPARE(SerialsOf(bySerial.records), (QStringList{"QD2", "QD1"}));
    QCOMPARE(bySerial.unknownSerials, (QStringList{"QD9", "Vir12345678"}));
}

void CliUnitsTest::progressLine_fillsTheBarByPercentAndClamps()
{
    JobState job;
    job.serial = "QD1";
    job.model = "QVX-ID2040M";
    job.percent = 45;
    QCOMPARE(progressLine(job, 5, 12, 20), QString("QD1    QVX-ID2040M   [#########...........]  45%"));
    job.percent = 250;
    QVERIFY(progressLine(job, 3, 11, 10).contains("[##########]"));
    job.percent = -5;
    QVERIFY(progressLine(job, 3, 11, 10).contains("[..........]"));
}

void CliUnitsTest::hostileNames_cannotDriveTheTerminal()
{
    QCOMPARE(printable(QString("ID\x1b[2J\r\nfake")), QString("ID\\x1b[2J\\x0d\\x0afake"));
    QCOMPARE(printable(QString::fromUtf8("QVX-ID\u0085\u00e9")), QString::fromUtf8("QVX-ID\\x85\u00e9"));
    JobState job;
    job.serial = "QD\n1";
    job.model = "ID\x1b[1A";
    QVERIFY(!plainProgressLine(job).contains(QLatin1Char('\n')));
    QVERIFY(!plainProgressLine(job).contains(QLatin1Char('\x1b')));
}

void CliUnitsTest::deviceTable_alignsColumnsAndShowsKindOnlyWhenAsked()
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
    QCOMPARE(lines.size(), 3);
    QVERIFY(lines[0].startsWith("SERIAL"));
    QVERIFY(!lines[0].contains("KIND"));
    // Every column starts where its header does.
    const int modelColumn = lines[0].indexOf("MODEL");
    const int addressColumn = lines[0].indexOf("ADDRESS");
    QCOMPARE(lines[1].indexOf("QVX-ID2040M"), modelColumn);
    QCOMPARE(lines[2].indexOf("Evil\\x09ID"), modelColumn);
    QCOMPARE(lines[2].indexOf("127.0.0.2"), addressColumn);
    QVERIFY(lines[2].contains("no (held by another client)"));
    QVERIFY(deviceTable({reader}, true).contains("code reader"));
}

QTEST_GUILESS_MAIN(CliUnitsTest)
#include "tst_cli_units.moc"
