// quorvex-cli as a process, inside the test's private network namespace:
// every command's output and exit status, with no devices, with simulated
// code readers, with a device another client holds, with one that vanishes,
// a job that is stopped or killed or runs out of disk (the previous
// collection survives each), and against a store that cannot be written.

#include "CliProcess.h"
#include "CodeReaders.h"

#include "camera_hold.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>
#include <QtTest>

#include <csignal>
#include <unistd.h>

namespace {

constexpr int kJobTimeoutMs = 240000;
const QString kModel = QStringLiteral("QVX-ID2040M");

QStringList Entries(const QString& folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden, QDir::Name);
}

QStringList CollectedFilesOf(const QString& model)
{
    return {QStringLiteral("ImportInformation.csv"), QStringLiteral("Jpg"), model + QStringLiteral(".xml"),
            model + QStringLiteral("_regfile.dat"), model + QStringLiteral("_strRegFile.dat")};
}

bool WriteFile(const QString& path, const QByteArray& bytes)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(bytes) == bytes.size();
}

// A collection folder as a job leaves it, made by hand: the store commands
// only copy it.
bool FakeCollection(const QString& root, const QString& model)
{
    const QString folder = root + QLatin1Char('/') + model;
    return WriteFile(folder + QLatin1Char('/') + model + QStringLiteral(".xml"), "<RegisterDescription/>")
        && WriteFile(folder + QLatin1Char('/') + model + QStringLiteral("_regfile.dat"), QByteArray(64, '\1'))
        && WriteFile(folder + QLatin1Char('/') + model + QStringLiteral("_strRegFile.dat"), "strings")
        && WriteFile(folder + QStringLiteral("/ImportInformation.csv"), "TriggerIndex\n")
        && WriteFile(folder + QStringLiteral("/Jpg/1.jpg"), "\xFF\xD8\xFF\xD9");
}

// Every file below folder with its bytes, by path relative to it; hidden
// ones (in a job's staging folder) only when asked.
QMap<QString, QByteArray> Contents(const QString& folder, bool hidden = true)
{
    QMap<QString, QByteArray> contents;
    const QDir::Filters filters = QDir::Files | (hidden ? QDir::Hidden : QDir::Filters());
    QDirIterator it(folder, filters, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        QFile file(it.next());
        file.open(QIODevice::ReadOnly);
        contents.insert(QDir(folder).relativeFilePath(file.fileName()), file.readAll());
    }
    return contents;
}

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

class CliCommandsTest final : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void help_everyCommandAnswersWithItsUsage();
    void wrongLines_exitTwoWithAMessageAndNoOutput();
    void noDevices_listsNothingAndRefusesToCollect();
    void heldAndUnknownDevices_listedWithFields_collectSkipsOrRefuses();
    void collect_twoReadersOfOneModel_takeTurnsAndBothSucceed();
    void collect_failedStoppedOrKilled_keepsThePreviousCollection();
    void collect_fullDisk_failsAndKeepsThePreviousCollection();

    void store_addListRefuseWhileHeldThenDelete();
    void add_unknownModel_namesTheCollectedOnes();
    void add_unwritableStore_failsAndLosesNothing();

private:
    QVector<XQ_CODEREADER_DEVICE_INFO> startReaders(DeviceProcess& simulator, int count);

    CliSuite m_suite;
};

void CliCommandsTest::init()
{
    QString error;
    QVERIFY2(m_suite.prepare(&error), qPrintable(error));
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

void CliCommandsTest::help_everyCommandAnswersWithItsUsage()
{
    const CliResult overall = m_suite.run({QStringLiteral("--help")});
    QCOMPARE(overall.exitCode, 0);
    for (const char* command : {"devices", "collect", "add", "cameras", "delete"}) {
        QVERIFY2(overall.out.contains(command), overall.out.constData());
        const CliResult result = m_suite.run({QString::fromLatin1(command), QStringLiteral("--help")});
        QVERIFY2(result.exitCode == 0 && result.err.isEmpty()
                     && result.out.startsWith(QByteArray("usage: quorvex-cli [--json] ") + command),
                 qPrintable(result.describe()));
    }
    const CliResult topic = m_suite.run({QStringLiteral("help"), QStringLiteral("add")});
    QVERIFY2(topic.exitCode == 0 && topic.out.startsWith("usage: quorvex-cli [--json] add"), qPrintable(topic.describe()));
}

void CliCommandsTest::wrongLines_exitTwoWithAMessageAndNoOutput()
{
    // Which lines the parser refuses and why is tst_cli_units' to check;
    // here a refused line, one with --json, and a help topic that is none.
    const QList<QStringList> lines{{},
                                   {QStringLiteral("--json"), QStringLiteral("cameras"), QStringLiteral("--all")},
                                   {QStringLiteral("help"), QStringLiteral("frobnicate")}};
    for (const QStringList& arguments : lines) {
        const CliResult result = m_suite.run(arguments);
        QVERIFY2(result.exitCode == 2 && result.out.isEmpty() && result.err.startsWith("quorvex-cli: ")
                     && result.err.contains("usage:"),
                 qPrintable(arguments.join(' ') + QLatin1Char('\n') + result.describe()));
    }
}

void CliCommandsTest::noDevices_listsNothingAndRefusesToCollect()
{
    const CliResult text = m_suite.run({QStringLiteral("devices")});
    QVERIFY2(text.exitCode == 0 && text.out.isEmpty() && text.err.contains("no code readers found"),
             qPrintable(text.describe()));

    const CliResult json = m_suite.run({QStringLiteral("--json"), QStringLiteral("devices"), QStringLiteral("--all")});
    QVERIFY2(json.exitCode == 0 && json.json().value(QStringLiteral("devices")).isArray(), qPrintable(json.describe()));
    QCOMPARE(json.json().value(QStringLiteral("devices")).toArray().size(), 0);

    const CliResult collect = m_suite.run({QStringLiteral("--json"), QStringLiteral("collect"), QStringLiteral("--all")});
    QVERIFY2(collect.exitCode == 3 && collect.err.contains("no code readers found"), qPrintable(collect.describe()));
    QVERIFY(!collect.json().value(QStringLiteral("error")).toString().isEmpty());
    QVERIFY(!QFileInfo::exists(m_suite.collectionRoot()));
}

void CliCommandsTest::heldAndUnknownDevices_listedWithFields_collectSkipsOrRefuses()
{
    DeviceProcess simulator;
    const QVector<XQ_CODEREADER_DEVICE_INFO> readers = startReaders(simulator, 2);
    QVERIFY(readers.size() == 2);
    const XQ_CODEREADER_DEVICE_INFO& held = readers[0];
    const XQ_CODEREADER_DEVICE_INFO& free = readers[1];
    XQ_HANDLE handle = nullptr;
    QCOMPARE(XQ_CODEREADER_CreateHandle(&handle, &held), XQ_OK);
    QCOMPARE(XQ_CODEREADER_OpenDevice(handle), XQ_OK);

    const CliResult json = m_suite.run({QStringLiteral("devices"), QStringLiteral("--json")});
    QVERIFY2(json.exitCode == 0, qPrintable(json.describe()));
    const QJsonArray devices = json.json().value(QStringLiteral("devices")).toArray();
    QCOMPARE(devices.size(), 2);
    for (const XQ_CODEREADER_DEVICE_INFO& reader : readers) {
        const auto match = std::find_if(devices.begin(), devices.end(), [&](const QJsonValue& value) {
            return value.toObject().value(QStringLiteral("serial")).toString() == SerialOf(reader);
        });
        QVERIFY2(match != devices.end(), qPrintable(SerialOf(reader)));
        const QJsonObject device = match->toObject();
        QCOMPARE(device.value(QStringLiteral("model")).toString(), ModelOf(reader));
        QCOMPARE(device.value(QStringLiteral("address")).toString(), AddressOf(reader));
        QCOMPARE(device.value(QStringLiteral("kind")).toString(), QStringLiteral("code reader"));
        QCOMPARE(device.value(QStringLiteral("accessible")).toBool(), &reader != &held);
        // The version is read from the device, so only the free one shows it.
        if (&reader == &free)
            QCOMPARE(device.value(QStringLiteral("version")).toString(),
                     QString::fromUtf8(reinterpret_cast<const char*>(reader.stGigE.chDeviceVersion)));
    }
    const CliResult text = m_suite.run({QStringLiteral("devices")});
    QVERIFY2(text.exitCode == 0, qPrintable(text.describe()));
    const QStringList lines = QString::fromUtf8(text.out).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    QCOMPARE(lines.size(), 3);
    const QString freeRow = lines.filter(SerialOf(free)).value(0);
    QVERIFY2(freeRow.contains(ModelOf(free)) && freeRow.contains(AddressOf(free)) && freeRow.endsWith(QStringLiteral("yes")),
             qPrintable(freeRow));

    // A typo stops the whole command before any job starts; the message
    // lists the serials there are.
    const CliResult unknown = m_suite.run({QStringLiteral("collect"), SerialOf(free), QStringLiteral("QD-NOT-THERE")});
    QVERIFY2(unknown.exitCode == 3 && unknown.err.contains("QD-NOT-THERE") && unknown.err.contains(SerialOf(free).toUtf8()),
             qPrintable(unknown.describe()));
    const CliResult alone = m_suite.run({QStringLiteral("collect"), SerialOf(held)});
    QVERIFY2(alone.exitCode == 4 && alone.err.contains("held by another client"), qPrintable(alone.describe()));
    QCOMPARE(Entries(m_suite.collectionRoot()), QStringList{});

    // Everything else is still collected; the status tells what was left.
    const CliResult all = m_suite.run({QStringLiteral("--json"), QStringLiteral("collect"), QStringLiteral("--all")},
                                      CliSuite::systemEnvironment(), kJobTimeoutMs);
    XQ_CODEREADER_DestroyHandle(handle);
    QVERIFY2(all.exitCode == 4, qPrintable(all.describe()));
    QCOMPARE(all.json().value(QStringLiteral("collectionRoot")).toString(), QDir::cleanPath(m_suite.collectionRoot()));
    QMap<QString, QJsonObject> outcomes;
    for (const QJsonValue& value : all.json().value(QStringLiteral("devices")).toArray())
        outcomes[value.toObject().value(QStringLiteral("serial")).toString()] = value.toObject();
    QCOMPARE(outcomes.value(SerialOf(held)).value(QStringLiteral("outcome")).toString(), QStringLiteral("busy"));
    QCOMPARE(outcomes.value(SerialOf(free)).value(QStringLiteral("outcome")).toString(), QStringLiteral("collected"));
    QCOMPARE(outcomes.value(SerialOf(free)).value(QStringLiteral("folder")).toString(),
             QDir::cleanPath(m_suite.collectionRoot() + QLatin1Char('/') + ModelOf(free)));
    QCOMPARE(Entries(m_suite.collectionRoot()), QStringList{ModelOf(free)});
}

void CliCommandsTest::collect_twoReadersOfOneModel_takeTurnsAndBothSucceed()
{
    // A fixed fault: readers of one model raced for one folder. Demo readers
    // repeat their four models, so the fifth has the first's.
    DeviceProcess simulator;
    const QVector<XQ_CODEREADER_DEVICE_INFO> readers = startReaders(simulator, 5);
    QStringList serials;
    for (const XQ_CODEREADER_DEVICE_INFO& reader : readers)
        if (ModelOf(reader) == kModel)
            serials << SerialOf(reader);
    QCOMPARE(serials.size(), 2);

    const CliResult result = m_suite.run(QStringList{QStringLiteral("collect")} + serials,
                                         CliSuite::systemEnvironment(), kJobTimeoutMs);
    QVERIFY2(result.exitCode == 0, qPrintable(result.describe()));
    QVERIFY2(result.out.contains((serials[1] + QLatin1Char(' ') + kModel + QStringLiteral(" waiting")).toUtf8()),
             result.out.constData());
    const QString folder = QDir::cleanPath(m_suite.collectionRoot() + QLatin1Char('/') + kModel);
    for (const QString& serial : serials) {
        // Plain lines, not a terminal: each change of a device's
        // percentage, rising to 100, then where its folder is.
        const QVector<int> percentages = PercentagesOf(result.out, serial);
        QVERIFY2(percentages.size() > 3 && std::is_sorted(percentages.begin(), percentages.end())
                     && percentages.last() == 100,
                 result.out.constData());
        QVERIFY2(result.out.contains((serial + QLatin1Char(' ') + kModel + QStringLiteral(" collected into ") + folder).toUtf8()),
                 result.out.constData());
    }
    // The second reader starts only when the first has ended.
    const int firstDone = result.out.indexOf((serials[0] + QLatin1Char(' ') + kModel + QStringLiteral(" collected")).toUtf8());
    const int secondStarts = result.out.indexOf((serials[1] + QLatin1Char(' ') + kModel + QStringLiteral(" 0%")).toUtf8());
    QVERIFY2(firstDone >= 0 && secondStarts > firstDone, result.out.constData());
    QCOMPARE(Entries(folder), CollectedFilesOf(kModel));
    QVERIFY(!Entries(folder + QStringLiteral("/Jpg")).isEmpty());
    // The engine's own chatter on standard output stays out of the results.
    QVERIFY2(!result.out.contains("CodeNum["), result.out.constData());
    QCOMPARE(Entries(m_suite.applicationDir()), (QStringList{QStringLiteral("Config"), QStringLiteral("quorvex-cli")}));
}

void CliCommandsTest::collect_failedStoppedOrKilled_keepsThePreviousCollection()
{
    // {a device vanishes: exit 1, "failed: "; SIGTERM: exit 130, "stopped",
    // within a second; SIGKILL: its folder is left until the next start}
    for (const int ending : {0, SIGTERM, SIGKILL}) {
        DeviceProcess simulator;
        const QVector<XQ_CODEREADER_DEVICE_INFO> readers = startReaders(simulator, ending == 0 ? 1 : 2);
        QVERIFY(!readers.isEmpty());
        QDir(m_suite.collectionRoot()).removeRecursively();
        QStringList models;
        for (const XQ_CODEREADER_DEVICE_INFO& reader : readers) {
            models << ModelOf(reader);
            QVERIFY(FakeCollection(m_suite.collectionRoot(), ModelOf(reader)));
        }
        models.sort();
        const QMap<QString, QByteArray> before = Contents(m_suite.collectionRoot());

        QProcess cli;
        m_suite.start(cli, {QStringLiteral("collect"), QStringLiteral("--all")});
        QByteArray seen;
        // Past the images, inside the feature-tree walks.
        QVERIFY2(WaitForProgress(cli, 12, &seen), seen.constData());
        QElapsedTimer stopping;
        stopping.start();
        if (ending == 0)
            simulator.stop(true);
        else
            ::kill(static_cast<pid_t>(cli.processId()), ending);
        QVERIFY(cli.waitForFinished(kJobTimeoutMs));
        if (ending == SIGTERM) {
            qInfo("SIGTERM to exit: %lld ms", static_cast<long long>(stopping.elapsed()));
            QVERIFY2(stopping.elapsed() < 5000, "a second is the aim; five is far beyond it");
        }
        seen += cli.readAllStandardOutput();
        if (ending == SIGKILL) {
            QCOMPARE(cli.exitStatus(), QProcess::CrashExit);
            QVERIFY(Entries(m_suite.collectionRoot()).size() > models.size());
        } else {
            const QByteArray said = ending == 0 ? SerialOf(readers.first()).toUtf8() + ' ' + ModelOf(readers.first()).toUtf8() + " failed: "
                                                : QByteArray("stopped");
            QVERIFY2(cli.exitStatus() == QProcess::NormalExit && cli.exitCode() == (ending == 0 ? 1 : 130)
                         && seen.contains(said),
                     qPrintable(seen + cli.readAllStandardError()));
        }
        // Killed jobs, and stopped ones that did not end in time, leave their
        // folders, hidden and apart; the next start sweeps them, even one
        // that collects nothing.
        QCOMPARE(Contents(m_suite.collectionRoot(), false), before);
        if (Entries(m_suite.collectionRoot()).size() > models.size()) {
            QVERIFY(ending != 0);
            const CliResult next = m_suite.run({QStringLiteral("collect"), QStringLiteral("QD-NOT-THERE")});
            QVERIFY2(next.exitCode == 3 && next.err.contains("left by an interrupted collection"), qPrintable(next.describe()));
        }
        // The earlier collections byte for byte, nothing else; nothing staged.
        QCOMPARE(Entries(m_suite.collectionRoot()), models);
        QCOMPARE(Contents(m_suite.collectionRoot()), before);
        QCOMPARE(Entries(m_suite.applicationDir()), (QStringList{QStringLiteral("Config"), QStringLiteral("quorvex-cli")}));
    }
}

void CliCommandsTest::collect_fullDisk_failsAndKeepsThePreviousCollection()
{
    DeviceProcess simulator;
    const QVector<XQ_CODEREADER_DEVICE_INFO> readers = startReaders(simulator, 1);
    QVERIFY(!readers.isEmpty());
    const QString seed = qEnvironmentVariable("QUORVEX_TEST_HOME") + QStringLiteral("/seed");
    const QString after = qEnvironmentVariable("QUORVEX_TEST_HOME") + QStringLiteral("/after");
    QDir(seed).removeRecursively();
    QDir(after).removeRecursively();
    QVERIFY(FakeCollection(seed, ModelOf(readers.first())) && QDir().mkpath(after));
    QVERIFY(QDir().mkpath(m_suite.collectionRoot()));

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
    QVERIFY2(cli.waitForFinished(kJobTimeoutMs), "unshare (util-linux) with mount namespaces is needed");
    const QByteArray out = cli.readAllStandardOutput() + cli.readAllStandardError();
    QVERIFY2(cli.exitCode() == 1 && out.contains("failed: Collect Failed!"), out.constData());
    QCOMPARE(Contents(after), Contents(seed));
}

void CliCommandsTest::store_addListRefuseWhileHeldThenDelete()
{
    QVERIFY(FakeCollection(m_suite.collectionRoot(), kModel));

    const CliResult empty = m_suite.run({QStringLiteral("cameras")});
    QVERIFY2(empty.exitCode == 0 && empty.out.isEmpty() && empty.err.contains("no virtual cameras"),
             qPrintable(empty.describe()));

    const CliResult added = m_suite.run({QStringLiteral("add"), kModel});
    QVERIFY2(added.exitCode == 0, qPrintable(added.describe()));
    const QString group = QString::fromUtf8(added.out).trimmed();
    QVERIFY2(QRegularExpression(QStringLiteral("^Vir\\d{8}$")).match(group).hasMatch(), qPrintable(group));
    const QString cameraFolder = m_suite.storePath() + QStringLiteral("/Cameras/") + group;
    QCOMPARE(Entries(cameraFolder), CollectedFilesOf(kModel));

    // A second camera right away gets its own group.
    const CliResult second = m_suite.run({QStringLiteral("--json"), QStringLiteral("add"), kModel});
    QVERIFY2(second.exitCode == 0, qPrintable(second.describe()));
    const QString secondGroup = second.json().value(QStringLiteral("group")).toString();
    QVERIFY(secondGroup.startsWith(QStringLiteral("Vir")) && secondGroup != group);
    QCOMPARE(second.json().value(QStringLiteral("folder")).toString(),
             QDir::cleanPath(m_suite.storePath() + QStringLiteral("/Cameras/") + secondGroup));

    const CliResult listed = m_suite.run({QStringLiteral("--json"), QStringLiteral("cameras")});
    QVERIFY2(listed.exitCode == 0, qPrintable(listed.describe()));
    const QJsonArray cameras = listed.json().value(QStringLiteral("cameras")).toArray();
    QCOMPARE(cameras.size(), 2);
    for (const QJsonValue& value : cameras) {
        QCOMPARE(value.toObject().value(QStringLiteral("model")).toString(), kModel);
        QCOMPARE(value.toObject().value(QStringLiteral("held")).toBool(), false);
    }

    // A serving program holds the camera while a client is connected.
    quorvex::store::CameraHold hold;
    std::string holdError;
    QVERIFY2(hold.acquire((cameraFolder + QLatin1Char('/') + kModel + QStringLiteral("_regfile.dat")).toStdString(), holdError),
             holdError.c_str());
    const CliResult heldText = m_suite.run({QStringLiteral("cameras")});
    QVERIFY2(heldText.out.contains((group + QStringLiteral("  ") + kModel).toUtf8()), qPrintable(heldText.describe()));
    QVERIFY(QString::fromUtf8(heldText.out).split(QLatin1Char('\n')).filter(group).value(0).contains(QStringLiteral(" yes ")));
    const CliResult refused = m_suite.run({QStringLiteral("delete"), group});
    QVERIFY2(refused.exitCode == 4 && refused.err.contains("connected"), qPrintable(refused.describe()));
    QCOMPARE(Entries(cameraFolder), CollectedFilesOf(kModel));
    hold.release();

    const CliResult deleted = m_suite.run({QStringLiteral("--json"), QStringLiteral("delete"), group});
    QVERIFY2(deleted.exitCode == 0, qPrintable(deleted.describe()));
    QCOMPARE(deleted.json().value(QStringLiteral("deleted")).toString(), group);
    QVERIFY(!QFileInfo::exists(cameraFolder));
    const CliResult again = m_suite.run({QStringLiteral("delete"), group});
    QVERIFY2(again.exitCode == 3, qPrintable(again.describe()));
    const CliResult remaining = m_suite.run({QStringLiteral("--json"), QStringLiteral("cameras")});
    QCOMPARE(remaining.json().value(QStringLiteral("cameras")).toArray().size(), 1);
    // The collection itself is untouched.
    QCOMPARE(Entries(m_suite.collectionRoot() + QLatin1Char('/') + kModel), CollectedFilesOf(kModel));
}

void CliCommandsTest::add_unknownModel_namesTheCollectedOnes()
{
    QVERIFY(FakeCollection(m_suite.collectionRoot(), kModel));
    for (const QString& model : {QStringLiteral("QVX-ID9999"), QStringLiteral(".."), QStringLiteral("QVX-ID%2040M")}) {
        const CliResult result = m_suite.run({QStringLiteral("add"), model});
        QVERIFY2(result.exitCode == 3, qPrintable(model + QLatin1Char('\n') + result.describe()));
        QVERIFY2(result.err.contains(kModel.toUtf8()), qPrintable(result.describe()));
    }
    QVERIFY(!QFileInfo::exists(m_suite.storePath() + QStringLiteral("/Cameras")));
}

void CliCommandsTest::add_unwritableStore_failsAndLosesNothing()
{
    QVERIFY(FakeCollection(m_suite.collectionRoot(), kModel));

    // The configuration file's name taken by a folder: it cannot be opened
    // for writing, not even by root.
    const QString config = m_suite.storePath() + QStringLiteral("/VirtualCameraConfig.ini");
    QVERIFY(QDir().mkpath(config));
    const CliResult blocked = m_suite.run({QStringLiteral("--json"), QStringLiteral("add"), kModel});
    QVERIFY2(blocked.exitCode == 1 && blocked.err.contains("VirtualCameraConfig.ini") && blocked.err.contains("cannot be written"),
             qPrintable(blocked.describe()));
    QVERIFY(!blocked.json().value(QStringLiteral("error")).toString().isEmpty());
    QCOMPARE(Entries(m_suite.storePath() + QStringLiteral("/Cameras")), QStringList{});

    // The store below a plain file: nothing can be made there at all.
    const QString blocker = qEnvironmentVariable("QUORVEX_TEST_HOME") + QStringLiteral("/not-a-folder");
    QVERIFY(WriteFile(blocker, "file"));
    QProcessEnvironment environment = CliSuite::systemEnvironment();
    environment.insert(QStringLiteral("QUORVEX_SYSTEM_TEMP"), blocker);
    const CliResult nowhere = m_suite.run({QStringLiteral("add"), kModel}, environment);
    QVERIFY2(nowhere.exitCode == 1 && nowhere.err.contains("cannot be written"), qPrintable(nowhere.describe()));
    QVERIFY(nowhere.out.isEmpty());

    // The collection is what it was.
    QCOMPARE(Entries(m_suite.collectionRoot() + QLatin1Char('/') + kModel), CollectedFilesOf(kModel));
}

QTEST_GUILESS_MAIN(CliCommandsTest)
#include "tst_cli_commands.moc"
