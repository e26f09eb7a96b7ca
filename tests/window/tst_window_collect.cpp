// The window's side of collecting, against simulated code readers on
// loopback: discovery into the table, ticking, collecting several devices at
// once (two of one model giving one whole collection), a device lost mid-job
// beside one that finishes (the lost model's earlier collection survives),
// and closing while jobs run.

#include "CodeReaders.h"
#include "SuiteLayout.h"
#include "WindowProbe.h"

#include "CustomMessageBox.h"

#include <QtTest>

namespace {

constexpr int kJobTimeoutMs = 240000;

// Answers the next modal box with the named button.
void answerNextBox(const char* buttonName)
{
    QTimer::singleShot(0, [buttonName] {
        QTRY_VERIFY_WITH_TIMEOUT(QApplication::activeModalWidget(), 5000);
        auto* button = QApplication::activeModalWidget()->findChild<QAbstractButton*>(buttonName);
        QVERIFY(button);
        button->click();
    });
}

bool exists(const QString& path)
{
    return QFileInfo::exists(path);
}

// Everything in the collection root, hidden job folders included.
QStringList rootEntries()
{
    return QDir(CollectionRoot()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name);
}

// A running job of the model has made its image folder.
bool jobFolderHasImages(const QString& model)
{
    for (const QString& name : rootEntries())
        if (name.startsWith("." + model + ".collecting-") && exists(CollectionRoot() + "/" + name + "/Jpg"))
            return true;
    return false;
}

} // namespace

class WindowCollectTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void table_listsReadersBeyondThePlaceholders_headerTicksAccessibleOnly();
    void collectTwo_showsProgressThenFinishedAndFillsSelectorOnce();
    void lostDevice_leavesTheOtherJobRunning();
    void closeWhileCollecting_asks_cancelKeepsJobs_confirmRemovesFiles();

private:
    bool startDevices(int count);
    // Waits until every named row shows a final status; records whether a
    // progress bar was seen in each meanwhile.
    QMap<int, bool> waitForStatus(WindowProbe& probe, const QList<int>& rows, int timeoutMs);

    std::unique_ptr<DeviceProcess> m_devices;
};

void WindowCollectTest::init()
{
    QDir(CollectionRoot()).removeRecursively();
    // The suite ships a "common" folder; a job makes only the last level.
    QVERIFY(QDir().mkpath(SuiteRoot() + "/common/Config"));
    // The tool reads the ignore list it ships from its working folder.
    QVERIFY(QDir::setCurrent(SuiteRoot() + "/common"));
    QFile::remove("Config/Config.json");
    QVERIFY(QFile::copy(QUORVEX_SOURCE_DIR "/resources/config/Config.json", "Config/Config.json"));
}

void WindowCollectTest::cleanup()
{
    m_devices.reset();
}

bool WindowCollectTest::startDevices(int count)
{
    // The window enumerates once: wait until the simulator answers.
    m_devices = std::make_unique<DeviceProcess>();
    QString error;
    const bool found = startReaders(*m_devices, count, &error).size() >= count;
    if (!found)
        qWarning().noquote() << error;
    return found;
}

QMap<int, bool> WindowCollectTest::waitForStatus(WindowProbe& probe, const QList<int>& rows, int timeoutMs)
{
    QMap<int, bool> sawProgress;
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < timeoutMs) {
        bool allDone = true;
        for (int row : rows) {
            if (probe.table->isProgressBarVisible(row, 4))
                sawProgress[row] = true;
            if (probe.cell(row, 4).isEmpty())
                allDone = false;
        }
        if (allDone)
            break;
        QTest::qWait(20);
    }
    return sawProgress;
}

void WindowCollectTest::table_listsReadersBeyondThePlaceholders_headerTicksAccessibleOnly()
{
    // More readers than the table's 13 placeholder rows.
    constexpr int kReaders = 15;
    QVERIFY(startDevices(kReaders));
    const QVector<XQ_CODEREADER_DEVICE_INFO> readers = WaitForCodeReaders(kReaders, 5000);
    QCOMPARE(readers.size(), kReaders);

    // Another client holds the reader at 127.0.0.4 before the window starts.
    const auto held = std::find_if(readers.begin(), readers.end(),
                                   [](const auto& reader) { return AddressOf(reader) == "127.0.0.4"; });
    QVERIFY(held != readers.end());
    XQ_HANDLE holder = nullptr;
    QCOMPARE(XQ_CODEREADER_CreateHandle(&holder, &*held), 0);
    QCOMPARE(XQ_CODEREADER_OpenDevice(holder), 0);
    {
        QVirtualCamMainWidget window;
        window.Init();
        WindowProbe probe(window);
        QCOMPARE(probe.table->rowCount(), kReaders);
        int heldRow = -1;
        for (int row = 0; row < kReaders; ++row) {
            QVERIFY2(probe.table->IsHaveCheckBox(row, 0), qPrintable(QString::number(row)));
            QVERIFY(probe.cell(row, 1).contains("ID"));
            QCOMPARE(probe.table->item(row, 1)->toolTip(), probe.cell(row, 1));
            if (probe.cell(row, 2) == "127.0.0.4")
                heldRow = row;  // a held reader's version cannot be read
            else
                QVERIFY(QRegularExpression("^V\\d+\\.\\d+\\.\\d+\\.R \\d{6}$").match(probe.cell(row, 3)).hasMatch());
        }
        QVERIFY(heldRow >= 0);
        QVERIFY(!probe.table->isCheckBoxEnabled(heldRow, 0));
        // Only the first device selects its row.
        QCOMPARE(probe.table->selectionModel()->selectedRows().size(), 1);
        QCOMPARE(probe.table->selectionModel()->selectedRows().first().row(), 0);
        QVERIFY(!probe.collect->isEnabled());

        probe.clickHeaderBox();
        for (int row = 0; row < kReaders; ++row)
            QCOMPARE(probe.table->cellCheckState(row, 0), row == heldRow ? Qt::Unchecked : Qt::Checked);
        QTRY_VERIFY(probe.collect->isEnabled());

        probe.clickHeaderBox();
        for (int row = 0; row < kReaders; ++row)
            QCOMPARE(probe.table->cellCheckState(row, 0), Qt::Unchecked);
        QTRY_VERIFY(!probe.collect->isEnabled());
    }
    XQ_CODEREADER_CloseDevice(holder);
    XQ_CODEREADER_DestroyHandle(holder);
}

void WindowCollectTest::collectTwo_showsProgressThenFinishedAndFillsSelectorOnce()
{
    // Demo readers repeat four models: the fifth has the first's.
    QVERIFY(startDevices(5));
    QVirtualCamMainWidget window;
    window.Init();
    WindowProbe probe(window);
    int twin = -1, other = -1, idle = -1;
    for (int row = 1; row < 5; ++row) {
        if (probe.cell(row, 1) == probe.cell(0, 1))
            twin = row;
        else if (other < 0)
            other = row;
        else
            idle = row;
    }
    QVERIFY(twin > 0 && other > 0 && idle > 0);

    probe.tick(0);
    probe.tick(other);
    probe.tick(twin);
    QTRY_VERIFY(probe.collect->isEnabled());
    probe.collect->click();
    QVERIFY(!probe.collect->isEnabled());
    // Ticking while collecting does not enable the button.
    probe.tick(idle);
    QTest::qWait(50);
    QVERIFY(!probe.collect->isEnabled());

    const QMap<int, bool> sawProgress = waitForStatus(probe, {0, other, twin}, kJobTimeoutMs);
    for (int row : {0, other, twin}) {
        QCOMPARE(probe.cell(row, 4), QString("Collect Finished"));
        QVERIFY(sawProgress.value(row));
    }
    QVERIFY(!probe.table->isProgressBarVisible(0, 4));
    QVERIFY(probe.cell(idle, 4).isEmpty());
    QTRY_VERIFY(probe.collect->isEnabled());

    // The two readers of one model ran together; the last to finish left its
    // whole collection: one CSV row per image, each naming its image.
    const QString twinFolder = CollectionRoot() + "/" + probe.cell(0, 1);
    QFile csv(twinFolder + "/ImportInformation.csv");
    QVERIFY(csv.open(QIODevice::ReadOnly));
    const QList<QByteArray> rows = csv.readAll().split('\n').mid(1, -1);
    const QStringList images = QDir(twinFolder + "/Jpg").entryList(QDir::Files);
    QCOMPARE(rows.size() - 1, images.size());
    for (int n = 1; n <= images.size(); ++n)
        QVERIFY2(rows[n - 1].startsWith(QString("1,%1,%1.jpg").arg(n).toUtf8()) && images.contains(QString("%1.jpg").arg(n)),
                 rows[n - 1].constData());

    // Models join the selector in the order their jobs finish.
    QStringList expected{probe.cell(0, 1), probe.cell(other, 1)};
    expected.sort();
    QStringList entries = probe.selectorEntries();
    entries.sort();
    QCOMPARE(entries, expected);
    QCOMPARE(rootEntries(), expected);
    for (const QString& model : expected) {
        QVERIFY(exists(CollectionRoot() + "/" + model + "/ImportInformation.csv"));
        QVERIFY(exists(CollectionRoot() + "/" + model + "/" + model + ".xml"));
        QVERIFY(!exists(ApplicationDir() + "/" + model + ".xml"));
    }

    // A second collection of the same model adds nothing to the selector.
    probe.tick(other, false);
    probe.tick(twin, false);
    probe.tick(idle, false);
    probe.table->item(0, 4)->setText(QString());
    probe.collect->click();
    waitForStatus(probe, {0}, kJobTimeoutMs);
    QCOMPARE(probe.cell(0, 4), QString("Collect Finished"));
    QCOMPARE(probe.selectorEntries().size(), 2);
}

void WindowCollectTest::lostDevice_leavesTheOtherJobRunning()
{
    // Two simulators, so that one reader can vanish while the other serves.
    QVERIFY(startDevices(1));
    DeviceProcess second;
    std::string why;
    QVERIFY2(xqtest::startSimulatorWith(second, {"--demo", "1", "--first-index", "1", "--base-address", "127.0.0.3"}, why),
             why.c_str());
    QCOMPARE(WaitForCodeReaders(2, 15000).size(), 2);

    QVirtualCamMainWidget window;
    window.Init();
    WindowProbe probe(window);
    const int lostRow = probe.rowOf(probe.cell(0, 2) == "127.0.0.3" ? probe.cell(0, 1) : probe.cell(1, 1));
    const int keptRow = 1 - lostRow;
    const QString lostModel = probe.cell(lostRow, 1);
    const QString keptModel = probe.cell(keptRow, 1);
    QVERIFY(lostModel != keptModel);
    // An earlier collection of the lost model, which its failed job keeps.
    const QString earlier = CollectionRoot() + "/" + lostModel + "/Jpg/1.jpg";
    QVERIFY(QDir().mkpath(CollectionRoot() + "/" + lostModel + "/Jpg"));
    QFile earlierFile(earlier);
    QVERIFY(earlierFile.open(QIODevice::WriteOnly) && earlierFile.write("earlier") == 7);
    earlierFile.close();
    probe.tick(0);
    probe.tick(1);
    probe.collect->click();

    QTRY_VERIFY_WITH_TIMEOUT(jobFolderHasImages(lostModel), 60000);
    second.stop(true);
    waitForStatus(probe, {0, 1}, kJobTimeoutMs);
    // The lost job ends with a message and removes what it made, and only that.
    const QString lostStatus = probe.cell(lostRow, 4);
    QVERIFY2(!lostStatus.isEmpty() && lostStatus != "Collect Finished", qPrintable(lostStatus));
    QCOMPARE(probe.cell(keptRow, 4), QString("Collect Finished"));
    QCOMPARE(QDir(CollectionRoot() + "/" + lostModel + "/Jpg").entryList(QDir::Files | QDir::Hidden), QStringList{"1.jpg"});
    QVERIFY(earlierFile.open(QIODevice::ReadOnly) && earlierFile.readAll() == "earlier");
    QStringList models{lostModel, keptModel};
    models.sort();
    QCOMPARE(rootEntries(), models);
    for (const char* suffix : {"_regfile.dat", "_strRegFile.dat", ".xml"})
        QVERIFY(!exists(ApplicationDir() + "/" + lostModel + suffix));
    QVERIFY(exists(CollectionRoot() + "/" + keptModel + "/ImportInformation.csv"));
    QCOMPARE(probe.selectorEntries(), QStringList{keptModel});
    QTRY_VERIFY(probe.collect->isEnabled());
}

void WindowCollectTest::closeWhileCollecting_asks_cancelKeepsJobs_confirmRemovesFiles()
{
    QVERIFY(startDevices(2));
    QString model;
    QElapsedTimer quitting;
    {
        QVirtualCamMainWidget window;
        window.Init();
        window.show();
        WindowProbe probe(window);
        model = probe.cell(1, 1);
        probe.tick(1);
        probe.collect->click();
        QTRY_VERIFY_WITH_TIMEOUT(jobFolderHasImages(model), 60000);

        answerNextBox("CancelBtn");
        window.close();
        QVERIFY(window.isVisible());
        QVERIFY(probe.cell(1, 4).isEmpty());  // the job goes on

        answerNextBox("ConfirmBtn");
        window.close();
        QVERIFY(!window.isVisible());
        quitting.start();
    }
    // Destroying the window stopped the job and removed what it had made.
    qInfo("window gone %lld ms after the confirmed close", static_cast<long long>(quitting.elapsed()));
    QVERIFY2(quitting.elapsed() < 30000, "the wait at quit is bounded by a few seconds");
    QCOMPARE(rootEntries(), QStringList{});
    QVERIFY(!exists(ApplicationDir() + "/" + model + ".xml"));
}

int main(int argc, char** argv)
{
    RunFromOwnSuiteLayout(argv);
    QApplication app(argc, argv);
    WindowCollectTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_window_collect.moc"
