// quorvex-cli as a process in the test's private network namespace: every
// command's output and exit status, and what each leaves on disk.

#include "QtPrinters.h"
#include "CliProcess.h"
#include "CodeReaders.h"
#include "TestFiles.h"

#include "camera_hold.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>
#include <QtTest>

#include <gtest/gtest.h>

#include <csignal>
#include <unistd.h>

namespace {

constexpr int kJobTimeoutMs = 240000;
const QString kModel = QStringLiteral("QVX-ID2040M");

// Percentages one device reported in plain progress lines, in order.
QVector<int> PercentagesOf(const QByteArray& out, const QString& serial)
{
    QVector<int> values;
    const QRegularExpression line(QStringLiteral("^%1 \\S+ (\\d+)%$").arg(QRegularExpression::escape(serial)));
    for (const QByteArray& text : out.split('\n')) {
        const QRegularExpressionMatch match = line.match(QString::fromUtf8(text));
        if (match.hasMatch())
            values << match.captured(1).toInt();
    }
    return values;
}

// Reads the running program's plain progress until a device passed
// minimum percent; false when the program ended first.
bool WaitForProgress(QProcess& process, int minimum, QByteArray* seen)
{
    const QRegularExpression line(QStringLiteral(" (\\d+)%$"));
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < kJobTimeoutMs) {
        if (!process.waitForReadyRead(1000) && process.state() == QProcess::NotRunning)
            return false;
        while (process.canReadLine()) {
            const QByteArray text = process.readLine();
            *seen += text;
            const QRegularExpressionMatch match = line.match(QString::fromUtf8(text).trimmed());
            if (match.hasMatch() && match.captured(1).toInt() >= minimum)
                return true;
        }
    }
    return false;
}

} // namespace

class CliCommandsTest : public ::testing::Test {
protected:
    void SetUp() override;
    QVector<XQ_CODEREADER_DEVICE_INFO> startReaders(DeviceProcess& simulator, int count);
    CliSuite m_suite;
};

void CliCommandsTest::SetUp()
{
    QString error;
    ASSERT_TRUE(m_suite.prepare(&error)) << qPrintable(error);
    QDir(m_suite.storePath()).removeRecursively();
}

QVector<XQ_CODEREADER_DEVICE_INFO> CliCommandsTest::startReaders(DeviceProcess& simulator, int count)
{
    QString error;
    const QVector<XQ_CODEREADER_DEVICE_INFO> readers = ::startReaders(simulator, count, &error);
    if (readers.size() != count)
        QTest::qFail(qPrintable(error), __FILE__, __LINE__);
    return readers;
}

TEST_F(CliCommandsTest, help_everyCommandAnswersWithItsUsage)
{
    const CliResult overall = m_suite.run({QStringLiteral("--help")});
    ASSERT_EQ(overall.exitCode, 0);
    for (const char* command : {"devices", "collect", "add", "cameras", "delete"}) {
        ASSERT_TRUE(overall.out.contains(command)) << overall.out.constData();
        const CliResult result = m_suite.run({QString::fromLatin1(command), QStringLiteral("--help")});
        ASSERT_TRUE(result.exitCode == 0 && result.err.isEmpty()
                     && result.out.startsWith(QByteArray("usage: quorvex-cli [--json] ") + command)) << qPrintable(result.describe());
    }
    const CliResult topic = m_suite.run({QStringLiteral("help"), QStringLiteral("add")});
    ASSERT_TRUE(topic.exitCode == 0 && topic.out.startsWith("usage: quorvex-cli [--json] add")) << qPrintable(topic.describe());
}

TEST_F(CliCommandsTest, wrongLines_exitTwoWithAMessageAndNoOutput)
{
    // Which lines the parser refuses and why is tst_cli_units' to check;
    // here a refused line, one with --json, and a help topic that is none.
    const QList<QStringList> lines{{},
                                   {QStringLiteral("--json"), QStringLiteral("cameras"), QStringLiteral("--all")},
                                   {QStringLiteral("help"), QStringLiteral("frobnicate")}};
    for (const QStringList& arguments : lines) {
        const CliResult result = m_suite.run(arguments);
        ASSERT_TRUE(result.exitCode == 2 && result.out.isEmpty() && result.err.startsWith("quorvex-cli: ")
                     && result.err.contains("usage:")) << qPrintable(arguments.join(' ') + QLatin1Char('\n') + result.describe());
    }
}

TEST_F(CliCommandsTest, noDevices_listsNothingAndRefusesToCollect)
{
    const CliResult text = m_suite.run({QStringLiteral("devices")});
    ASSERT_TRUE(text.exitCode == 0 && text.out.isEmpty() && text.err.contains("no code readers found")) << qPrintable(text.describe());

    const CliResult json = m_suite.run({QStringLiteral("--json"), QStringLiteral("devices"), QStringLiteral("--all")});
    ASSERT_TRUE(json.exitCode == 0 && json.json().value(QStringLiteral("devices")).isArray()) << qPrintable(json.describe());
    ASSERT_EQ(json.json().value(QStringLiteral("devices")).toArray().size(), 0);

    const CliResult collect = m_suite.run({QStringLiteral("--json"), QStringLiteral("collect"), QStringLiteral("--all")});
    ASSERT_TRUE(collect.exitCode == 3 && collect.err.contains("no code readers found")) << qPrintable(collect.describe());
    ASSERT_TRUE(!collect.json().value(QStringLiteral("error")).toString().isEmpty());
    ASSERT_TRUE(!QFileInfo::exists(m_suite.collectionRoot()));
}

TEST_F(CliCommandsTest, heldAndUnknownDevices_listedWithFields_collectSkipsOrRefuses)
{
    DeviceProcess simulator;
    const QVector<XQ_CODEREADER_DEVICE_INFO> readers = startReaders(simulator, 2);
    ASSERT_TRUE(readers.size() == 2);
    const XQ_CODEREADER_DEVICE_INFO& held = readers[0];
    const XQ_CODEREADER_DEVICE_INFO& free = readers[1];
    XQ_HANDLE handle = nullptr;
    ASSERT_EQ(XQ_CODEREADER_CreateHandle(&handle, &held), XQ_OK);
    ASSERT_EQ(XQ_CODEREADER_OpenDevice(handle), XQ_OK);

    const CliResult json = m_suite.run({QStringLiteral("devices"), QStringLiteral("--json")});
    ASSERT_TRUE(json.exitCode == 0) << qPrintable(json.describe());
    const QJsonArray devices = json.json().value(QStringLiteral("devices")).toArray();
    ASSERT_EQ(devices.size(), 2);
    for (const XQ_CODEREADER_DEVICE_INFO& reader : readers) {
        const auto match = std::find_if(devices.begin(), devices.end(), [&](const QJsonValue& value) {
            return value.toObject().value(QStringLiteral("serial")).toString() == SerialOf(reader);
        });
        ASSERT_TRUE(match != devices.end()) << qPrintable(SerialOf(reader));
        const QJsonObject device = match->toObject();
        ASSERT_EQ(device.value(QStringLiteral("model")).toString(), ModelOf(reader));
        ASSERT_EQ(device.value(QStringLiteral("address")).toString(), AddressOf(reader));
        ASSERT_EQ(device.value(QStringLiteral("kind")).toString(), QStringLiteral("code reader"));
        ASSERT_EQ(device.value(QStringLiteral("accessible")).toBool(), &reader != &held);
        // The version is read from the device, so only the free one shows it.
        if (&reader == &free) {
            ASSERT_EQ(device.value(QStringLiteral("version")).toString(), QString::fromUtf8(reinterpret_cast<const char*>(reader.stGigE.chDeviceVersion)));
        }
    }
    const CliResult text = m_suite.run({QStringLiteral("devices")});
    ASSERT_TRUE(text.exitCode == 0) << qPrintable(text.describe());
    const QStringList lines = QString::fromUtf8(text.out).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), 3);
    const QString freeRow = lines.filter(SerialOf(free)).value(0);
    ASSERT_TRUE(freeRow.contains(ModelOf(free)) && freeRow.contains(AddressOf(free)) && freeRow.endsWith(QStringLiteral("yes"))) << qPrintable(freeRow);

    // A typo stops the whole command before any job starts; the message
    // lists the serials there are.
    const CliResult unknown = m_suite.run({QStringLiteral("collect"), SerialOf(free), QStringLiteral("QD-NOT-THERE")});
    ASSERT_TRUE(unknown.exitCode == 3 && unknown.err.contains("QD-NOT-THERE") && unknown.err.contains(SerialOf(free).toUtf8())) << qPrintable(unknown.describe());
    // Without an ignore list every feature would be read: said, not refused.
    const QString ignoreList = m_suite.applicationDir() + QStringLiteral("/Config/Config.json");
    ASSERT_TRUE(QFile::remove(ignoreList));
    const CliResult alone = m_suite.run({QStringLiteral("collect"), SerialOf(held)});
    ASSERT_TRUE(alone.exitCode == 4 && alone.err.contains("held by another client")
                && alone.err.contains("note: no ./Config/Config.json in")) << qPrintable(alone.describe());
    ASSERT_EQ(Entries(m_suite.collectionRoot()), QStringList{});

    // Everything else is still collected; the status tells what was left,
    // and a pattern that is no text is named.
    ASSERT_TRUE(WriteFile(ignoreList, R"({"IgnoreNodes": ["DeviceReset", "FileAccess", "UserSetSave", 5]})"));
    const CliResult all = m_suite.run({QStringLiteral("--json"), QStringLiteral("collect"), QStringLiteral("--all")},
                                      CliSuite::systemEnvironment(), kJobTimeoutMs);
    XQ_CODEREADER_DestroyHandle(handle);
    ASSERT_TRUE(all.exitCode == 4) << qPrintable(all.describe());
    ASSERT_TRUE(all.err.contains(("quorvex-cli: warning: " + ignoreList + ": IgnoreNodes element 3: 5 is not a string; left out\n").toUtf8()))
        << qPrintable(all.describe());
    ASSERT_EQ(all.json().value(QStringLiteral("collectionRoot")).toString(), QDir::cleanPath(m_suite.collectionRoot()));
    QMap<QString, QJsonObject> outcomes;
    for (const QJsonValue& value : all.json().value(QStringLiteral("devices")).toArray())
        outcomes[value.toObject().value(QStringLiteral("serial")).toString()] = value.toObject();
    ASSERT_EQ(outcomes.value(SerialOf(held)).value(QStringLiteral("outcome")).toString(), QStringLiteral("busy"));
    ASSERT_EQ(outcomes.value(SerialOf(free)).value(QStringLiteral("outcome")).toString(), QStringLiteral("collected"));
    ASSERT_EQ(outcomes.value(SerialOf(free)).value(QStringLiteral("folder")).toString(), QDir::cleanPath(m_suite.collectionRoot() + QLatin1Char('/') + ModelOf(free)));
    ASSERT_EQ(Entries(m_suite.collectionRoot()), QStringList{ModelOf(free)});
}

TEST_F(CliCommandsTest, collect_twoReadersOfOneModel_takeTurnsAndBothSucceed)
{
    // A fixed fault: readers of one model raced for one folder. Demo readers
    // repeat their four models, so the fifth has the first's.
    DeviceProcess simulator;
    const QVector<XQ_CODEREADER_DEVICE_INFO> readers = startReaders(simulator, 5);
    QStringList serials;
    for (const XQ_CODEREADER_DEVICE_INFO& reader : readers)
        if (ModelOf(reader) == kModel)
            serials << SerialOf(reader);
    ASSERT_EQ(serials.size(), 2);

    const CliResult result = m_suite.run(QStringList{QStringLiteral("collect")} + serials,
                                         CliSuite::systemEnvironment(), kJobTimeoutMs);
    ASSERT_TRUE(result.exitCode == 0) << qPrintable(result.describe());
    ASSERT_TRUE(result.out.contains((serials[1] + QLatin1Char(' ') + kModel + QStringLiteral(" waiting")).toUtf8())) << result.out.constData();
    const QString folder = QDir::cleanPath(m_suite.collectionRoot() + QLatin1Char('/') + kModel);
    for (const QString& serial : serials) {
        // Plain lines, not a terminal: each change of a device's
        // percentage, rising to 100, then where its folder is.
        const QVector<int> percentages = PercentagesOf(result.out, serial);
        ASSERT_TRUE(percentages.size() > 3 && std::is_sorted(percentages.begin(), percentages.end())
                     && percentages.last() == 100) << result.out.constData();
        ASSERT_TRUE(result.out.contains((serial + QLatin1Char(' ') + kModel + QStringLiteral(" collected into ") + folder).toUtf8())) << result.out.constData();
    }
    // The second reader starts only when the first has ended.
    const int firstDone = result.out.indexOf((serials[0] + QLatin1Char(' ') + kModel + QStringLiteral(" collected")).toUtf8());
    const int secondStarts = result.out.indexOf((serials[1] + QLatin1Char(' ') + kModel + QStringLiteral(" 0%")).toUtf8());
    ASSERT_TRUE(firstDone >= 0 && secondStarts > firstDone) << result.out.constData();
    ASSERT_EQ(Entries(folder), CollectedFilesOf(kModel));
    ASSERT_TRUE(!Entries(folder + QStringLiteral("/Jpg")).isEmpty());
    // The engine's own chatter on standard output stays out of the results.
    ASSERT_TRUE(!result.out.contains("CodeNum[")) << result.out.constData();
    ASSERT_EQ(Entries(m_suite.applicationDir()), (QStringList{QStringLiteral("Config"), QStringLiteral("quorvex-cli")}));
}

TEST_F(CliCommandsTest, collect_failedStoppedOrKilled_keepsThePreviousCollection)
{
    // {a device vanishes: exit 1, "failed: "; SIGTERM: exit 130, "stopped",
    // within a second; SIGKILL: its folder is left until the next start}
    for (const int ending : {0, SIGTERM, SIGKILL}) {
        DeviceProcess simulator;
        const QVector<XQ_CODEREADER_DEVICE_INFO> readers = startReaders(simulator, ending == 0 ? 1 : 2);
        ASSERT_TRUE(!readers.isEmpty());
        QDir(m_suite.collectionRoot()).removeRecursively();
        QStringList models;
        for (const XQ_CODEREADER_DEVICE_INFO& reader : readers) {
            models << ModelOf(reader);
            ASSERT_TRUE(MakeCollectionFolder(m_suite.collectionRoot() + QLatin1Char('/') + ModelOf(reader), ModelOf(reader)));
        }
        models.sort();
        const QMap<QString, QByteArray> before = Contents(m_suite.collectionRoot());

        QProcess cli;
        m_suite.start(cli, {QStringLiteral("collect"), QStringLiteral("--all")});
        QByteArray seen;
        // Past the images, inside the feature-tree walks.
        ASSERT_TRUE(WaitForProgress(cli, 12, &seen)) << seen.constData();
        QElapsedTimer stopping;
        stopping.start();
        if (ending == 0)
            simulator.stop(true);
        else
            ::kill(static_cast<pid_t>(cli.processId()), ending);
        ASSERT_TRUE(cli.waitForFinished(kJobTimeoutMs));
        if (ending == SIGTERM) {
            qInfo("SIGTERM to exit: %lld ms", static_cast<long long>(stopping.elapsed()));
            ASSERT_TRUE(stopping.elapsed() < 5000) << "a second is the aim; five is far beyond it";
        }
        seen += cli.readAllStandardOutput();
        if (ending == SIGKILL) {
            ASSERT_EQ(cli.exitStatus(), QProcess::CrashExit);
            ASSERT_TRUE(Entries(m_suite.collectionRoot()).size() > models.size());
        } else {
            const QByteArray said = ending == 0 ? SerialOf(readers.first()).toUtf8() + ' ' + ModelOf(readers.first()).toUtf8() + " failed: "
                                                : QByteArray("stopped");
            ASSERT_TRUE(cli.exitStatus() == QProcess::NormalExit && cli.exitCode() == (ending == 0 ? 1 : 130)
                         && seen.contains(said)) << qPrintable(seen + cli.readAllStandardError());
        }
        // Killed jobs, and stopped ones that did not end in time, leave their
        // folders, hidden and apart; the next start sweeps them, even one
        // that collects nothing.
        ASSERT_EQ(Contents(m_suite.collectionRoot(), false), before);
        if (Entries(m_suite.collectionRoot()).size() > models.size()) {
            ASSERT_TRUE(ending != 0);
            const CliResult next = m_suite.run({QStringLiteral("collect"), QStringLiteral("QD-NOT-THERE")});
            ASSERT_TRUE(next.exitCode == 3 && next.err.contains("left by an interrupted collection")) << qPrintable(next.describe());
        }
        // The earlier collections byte for byte, nothing else; nothing staged.
        ASSERT_EQ(Entries(m_suite.collectionRoot()), models);
        ASSERT_EQ(Contents(m_suite.collectionRoot()), before);
        ASSERT_EQ(Entries(m_suite.applicationDir()), (QStringList{QStringLiteral("Config"), QStringLiteral("quorvex-cli")}));
    }
}

TEST_F(CliCommandsTest, collect_fullDisk_failsAndKeepsThePreviousCollection)
{
    DeviceProcess simulator;
    const QVector<XQ_CODEREADER_DEVICE_INFO> readers = startReaders(simulator, 1);
    ASSERT_TRUE(!readers.isEmpty());
    const QString seed = qEnvironmentVariable("QUORVEX_TEST_HOME") + QStringLiteral("/seed");
    const QString after = qEnvironmentVariable("QUORVEX_TEST_HOME") + QStringLiteral("/after");
    QDir(seed).removeRecursively();
    QDir(after).removeRecursively();
    ASSERT_TRUE(MakeCollectionFolder(seed + QLatin1Char('/') + ModelOf(readers.first()), ModelOf(readers.first())) && QDir().mkpath(after));
    ASSERT_TRUE(QDir().mkpath(m_suite.collectionRoot()));

    // A small tmpfs on the collection root in a mount namespace of its own,
    // holding the earlier collection and filled up but for 16 KiB; what is
    // on it is copied out when the program has ended.
    const QString script = QStringLiteral(
        "mount -t tmpfs -o size=1m tmpfs \"$1\" && cp -a \"$2/.\" \"$1/\" || exit 90\n"
        "cat /dev/zero > \"$1/.filler\" 2>/dev/null; truncate -s -16K \"$1/.filler\" || exit 91\n"
        "cd \"$4\" && ./quorvex-cli collect --all; rc=$?\n"
        "rm \"$1/.filler\"; cp -a \"$1/.\" \"$3/\"; exit $rc\n");
    QProcess cli;
    const QString unshare = ::geteuid() == 0 ? QStringLiteral("-m") : QStringLiteral("-rm");
    cli.start(QStringLiteral("unshare"), {unshare, QStringLiteral("sh"), QStringLiteral("-c"), script, QStringLiteral("sh"),
                                          m_suite.collectionRoot(), seed, after, m_suite.applicationDir()});
    ASSERT_TRUE(cli.waitForFinished(kJobTimeoutMs)) << "unshare (util-linux) with mount namespaces is needed";
    const QByteArray out = cli.readAllStandardOutput() + cli.readAllStandardError();
    ASSERT_TRUE(cli.exitCode() == 1 && out.contains("failed: Collect Failed!")) << out.constData();
    ASSERT_EQ(Contents(after), Contents(seed));
}

TEST_F(CliCommandsTest, store_addListRefuseWhileHeldThenDelete)
{
    ASSERT_TRUE(MakeCollectionFolder(m_suite.collectionRoot() + QLatin1Char('/') + kModel, kModel));

    const CliResult empty = m_suite.run({QStringLiteral("cameras")});
    ASSERT_TRUE(empty.exitCode == 0 && empty.out.isEmpty() && empty.err.contains("no virtual cameras")) << qPrintable(empty.describe());

    const CliResult added = m_suite.run({QStringLiteral("add"), kModel});
    ASSERT_TRUE(added.exitCode == 0) << qPrintable(added.describe());
    const QString group = QString::fromUtf8(added.out).trimmed();
    ASSERT_TRUE(QRegularExpression(QStringLiteral("^Vir\\d{8}$")).match(group).hasMatch()) << qPrintable(group);
    const QString cameraFolder = m_suite.storePath() + QStringLiteral("/Cameras/") + group;
    ASSERT_EQ(Entries(cameraFolder), CollectedFilesOf(kModel));

    // A second camera right away gets its own group.
    const CliResult second = m_suite.run({QStringLiteral("--json"), QStringLiteral("add"), kModel});
    ASSERT_TRUE(second.exitCode == 0) << qPrintable(second.describe());
    const QString secondGroup = second.json().value(QStringLiteral("group")).toString();
    ASSERT_TRUE(secondGroup.startsWith(QStringLiteral("Vir")) && secondGroup != group);
    ASSERT_EQ(second.json().value(QStringLiteral("folder")).toString(), QDir::cleanPath(m_suite.storePath() + QStringLiteral("/Cameras/") + secondGroup));

    const CliResult listed = m_suite.run({QStringLiteral("--json"), QStringLiteral("cameras")});
    ASSERT_TRUE(listed.exitCode == 0) << qPrintable(listed.describe());
    const QJsonArray cameras = listed.json().value(QStringLiteral("cameras")).toArray();
    ASSERT_EQ(cameras.size(), 2);
    for (const QJsonValue& value : cameras) {
        ASSERT_EQ(value.toObject().value(QStringLiteral("model")).toString(), kModel);
        ASSERT_EQ(value.toObject().value(QStringLiteral("held")).toBool(), false);
    }

    // A serving program holds the camera while a client is connected.
    quorvex::store::CameraHold hold;
    std::string holdError;
    ASSERT_TRUE(hold.acquire((cameraFolder + QLatin1Char('/') + kModel + QStringLiteral("_regfile.dat")).toStdString(), holdError)) << holdError.c_str();
    const CliResult heldText = m_suite.run({QStringLiteral("cameras")});
    ASSERT_TRUE(heldText.out.contains((group + QStringLiteral("  ") + kModel).toUtf8())) << qPrintable(heldText.describe());
    ASSERT_TRUE(QString::fromUtf8(heldText.out).split(QLatin1Char('\n')).filter(group).value(0).contains(QStringLiteral(" yes ")));
    const CliResult refused = m_suite.run({QStringLiteral("delete"), group});
    ASSERT_TRUE(refused.exitCode == 4 && refused.err.contains("connected")) << qPrintable(refused.describe());
    ASSERT_EQ(Entries(cameraFolder), CollectedFilesOf(kModel));
    hold.release();

    const CliResult deleted = m_suite.run({QStringLiteral("--json"), QStringLiteral("delete"), group});
    ASSERT_TRUE(deleted.exitCode == 0) << qPrintable(deleted.describe());
    ASSERT_EQ(deleted.json().value(QStringLiteral("deleted")).toString(), group);
    ASSERT_TRUE(!QFileInfo::exists(cameraFolder));
    const CliResult again = m_suite.run({QStringLiteral("delete"), group});
    ASSERT_TRUE(again.exitCode == 3) << qPrintable(again.describe());
    const CliResult remaining = m_suite.run({QStringLiteral("--json"), QStringLiteral("cameras")});
    ASSERT_EQ(remaining.json().value(QStringLiteral("cameras")).toArray().size(), 1);
    // The collection itself is untouched.
    ASSERT_EQ(Entries(m_suite.collectionRoot() + QLatin1Char('/') + kModel), CollectedFilesOf(kModel));
}

TEST_F(CliCommandsTest, add_unknownModel_namesTheCollectedOnes)
{
    ASSERT_TRUE(MakeCollectionFolder(m_suite.collectionRoot() + QLatin1Char('/') + kModel, kModel));
    for (const QString& model : {QStringLiteral("QVX-ID9999"), QStringLiteral(".."), QStringLiteral("QVX-ID%2040M")}) {
        const CliResult result = m_suite.run({QStringLiteral("add"), model});
        ASSERT_TRUE(result.exitCode == 3) << qPrintable(model + QLatin1Char('\n') + result.describe());
        ASSERT_TRUE(result.err.contains(kModel.toUtf8())) << qPrintable(result.describe());
    }
    ASSERT_TRUE(!QFileInfo::exists(m_suite.storePath() + QStringLiteral("/Cameras")));
}

TEST_F(CliCommandsTest, add_unwritableStore_failsAndLosesNothing)
{
    ASSERT_TRUE(MakeCollectionFolder(m_suite.collectionRoot() + QLatin1Char('/') + kModel, kModel));

    // The configuration file's name taken by a folder: it cannot be opened
    // for writing, not even by root.
    const QString config = m_suite.storePath() + QStringLiteral("/VirtualCameraConfig.ini");
    ASSERT_TRUE(QDir().mkpath(config));
    const CliResult blocked = m_suite.run({QStringLiteral("--json"), QStringLiteral("add"), kModel});
    ASSERT_TRUE(blocked.exitCode == 1 && blocked.err.contains("VirtualCameraConfig.ini") && blocked.err.contains("cannot be written")) << qPrintable(blocked.describe());
    ASSERT_TRUE(!blocked.json().value(QStringLiteral("error")).toString().isEmpty());
    ASSERT_EQ(Entries(m_suite.storePath() + QStringLiteral("/Cameras")), QStringList{});

    // The store below a plain file: nothing can be made there at all.
    const QString blocker = qEnvironmentVariable("QUORVEX_TEST_HOME") + QStringLiteral("/not-a-folder");
    ASSERT_TRUE(WriteFile(blocker, "file"));
    QProcessEnvironment environment = CliSuite::systemEnvironment();
    environment.insert(QStringLiteral("QUORVEX_SYSTEM_TEMP"), blocker);
    const CliResult nowhere = m_suite.run({QStringLiteral("add"), kModel}, environment);
    ASSERT_TRUE(nowhere.exitCode == 1 && nowhere.err.contains("cannot be written")) << qPrintable(nowhere.describe());
    ASSERT_TRUE(nowhere.out.isEmpty());

    // The collection is what it was.
    ASSERT_EQ(Entries(m_suite.collectionRoot() + QLatin1Char('/') + kModel), CollectedFilesOf(kModel));
}

