// The window's side of collecting, against simulated code readers on
// loopback: discovery into the table, ticking, collecting several devices at
// once (two of one model giving one whole collection), a device lost mid-job
// beside one that finishes (the lost model's earlier collection survives),
// and closing while jobs run.

#include "QtPrinters.h"
#include "CodeReaders.h"
#include "SuiteLayout.h"
#include "TestFiles.h"
#include "WindowProbe.h"

#include "CustomMessageBox.h"

#include <QtTest>

#include <gtest/gtest.h>

namespace {

constexpr int kJobTimeoutMs = 240000;

// Answers the next modal box with the named button.
void answerNextBox(const char* buttonName)
{
    QTimer::singleShot(0, [buttonName] {
        ASSERT_TRUE(QTest::qWaitFor([&] { return bool(QApplication::activeModalWidget()); }, 5000));
        auto* button = QApplication::activeModalWidget()->findChild<QAbstractButton*>(buttonName);
        ASSERT_TRUE(button);
        button->click();
    });
}

bool exists(const QString& path)
{
    return QFileInfo::exists(path);
}

// A running job of the model has made its image folder.
bool jobFolderHasImages(const QString& model)
{
    for (const QString& name : Entries(CollectionRoot()))
        if (name.startsWith("." + model + ".collecting-") && exists(CollectionRoot() + "/" + name + "/Jpg"))
            return true;
    return false;
}

} // namespace

class WindowCollectTest : public ::testing::Test {
protected:
    void SetUp() override;
    bool startDevices(int count);
    // Waits until every named row shows a final status; records whether a
    // progress bar was seen in each meanwhile.
    QMap<int, bool> waitForStatus(WindowProbe& probe, const QList<int>& rows, int timeoutMs);
    std::unique_ptr<DeviceProcess> m_devices;
};

void WindowCollectTest::SetUp()
{
    QDir(CollectionRoot()).removeRecursively();
    // The suite ships a "common" folder; a job makes only the last level.
    ASSERT_TRUE(QDir().mkpath(SuiteRoot() + "/common/Config"));
    // The tool reads the ignore list it ships from its working folder.
    ASSERT_TRUE(QDir::setCurrent(SuiteRoot() + "/common"));
    QFile::remove("Config/Config.json");
    ASSERT_TRUE(QFile::copy(QUORVEX_SOURCE_DIR "/resources/config/Config.json", "Config/Config.json"));
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

TEST_F(WindowCollectTest, table_listsReadersBeyondThePlaceholders_headerTicksAccessibleOnly)
{
    // More readers than the table's 13 placeholder rows.
    constexpr int kReaders = 15;
    ASSERT_TRUE(startDevices(kReaders));
    const QVector<XQ_CODEREADER_DEVICE_INFO> readers = WaitForCodeReaders(kReaders, 5000);
    ASSERT_EQ(readers.size(), kReaders);

    // Another client holds the reader at 127.0.0.4 before the window starts.
    const auto held = std::find_if(readers.begin(), readers.end(),
                                   [](const auto& reader) { return AddressOf(reader) == "127.0.0.4"; });
    ASSERT_TRUE(held != readers.end());
    XQ_HANDLE holder = nullptr;
    ASSERT_EQ(XQ_CODEREADER_CreateHandle(&holder, &*held), 0);
    ASSERT_EQ(XQ_CODEREADER_OpenDevice(holder), 0);
    {
        QVirtualCamMainWidget window;
        window.Init();
        WindowProbe probe(window);
        ASSERT_EQ(probe.table->rowCount(), kReaders);
        int heldRow = -1;
        for (int row = 0; row < kReaders; ++row) {
            ASSERT_TRUE(probe.table->IsHaveCheckBox(row, 0)) << qPrintable(QString::number(row));
            ASSERT_TRUE(probe.cell(row, 1).contains("ID"));
            ASSERT_EQ(probe.table->item(row, 1)->toolTip(), probe.cell(row, 1));
            if (probe.cell(row, 2) == "127.0.0.4")
                heldRow = row;  // a held reader's version cannot be read
            else
                ASSERT_TRUE(QRegularExpression("^V\\d+\\.\\d+\\.\\d+\\.R \\d{6}$").match(probe.cell(row, 3)).hasMatch());
        }
        ASSERT_TRUE(heldRow >= 0);
        ASSERT_TRUE(!probe.table->isCheckBoxEnabled(heldRow, 0));
        // Only the first device selects its row.
        ASSERT_EQ(probe.table->selectionModel()->selectedRows().size(), 1);
        ASSERT_EQ(probe.table->selectionModel()->selectedRows().first().row(), 0);
        ASSERT_TRUE(!probe.collect->isEnabled());

        probe.clickHeaderBox();
        for (int row = 0; row < kReaders; ++row)
            ASSERT_EQ(probe.table->cellCheckState(row, 0), row == heldRow ? Qt::Unchecked : Qt::Checked);
        ASSERT_TRUE(QTest::qWaitFor([&] { return bool(probe.collect->isEnabled()); }));

        probe.clickHeaderBox();
        for (int row = 0; row < kReaders; ++row)
            ASSERT_EQ(probe.table->cellCheckState(row, 0), Qt::Unchecked);
        ASSERT_TRUE(QTest::qWaitFor([&] { return bool(!probe.collect->isEnabled()); }));
    }
    XQ_CODEREADER_CloseDevice(holder);
    XQ_CODEREADER_DestroyHandle(holder);
}

TEST_F(WindowCollectTest, collectTwo_showsProgressThenFinishedAndFillsSelectorOnce)
{
    // Demo readers repeat four models: the fifth has the first's.
    ASSERT_TRUE(startDevices(5));
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
    ASSERT_TRUE(twin > 0 && other > 0 && idle > 0);

    probe.tick(0);
    probe.tick(other);
    probe.tick(twin);
    ASSERT_TRUE(QTest::qWaitFor([&] { return bool(probe.collect->isEnabled()); }));
    probe.collect->click();
    ASSERT_TRUE(!probe.collect->isEnabled());
    // Ticking while collecting does not enable the button.
    probe.tick(idle);
    QTest::qWait(50);
    ASSERT_TRUE(!probe.collect->isEnabled());

    const QMap<int, bool> sawProgress = waitForStatus(probe, {0, other, twin}, kJobTimeoutMs);
    for (int row : {0, other, twin}) {
        ASSERT_EQ(probe.cell(row, 4), QString("Collect Finished"));
        ASSERT_TRUE(sawProgress.value(row));
    }
    ASSERT_TRUE(!probe.table->isProgressBarVisible(0, 4));
    ASSERT_TRUE(probe.cell(idle, 4).isEmpty());
    ASSERT_TRUE(QTest::qWaitFor([&] { return bool(probe.collect->isEnabled()); }));

    // The two readers of one model ran together; the last to finish left its
    // whole collection: one CSV row per image, each naming its image.
    const QString twinFolder = CollectionRoot() + "/" + probe.cell(0, 1);
    QFile csv(twinFolder + "/ImportInformation.csv");
    ASSERT_TRUE(csv.open(QIODevice::ReadOnly));
    const QList<QByteArray> rows = csv.readAll().split('\n').mid(1, -1);
    const QStringList images = QDir(twinFolder + "/Jpg").entryList(QDir::Files);
    ASSERT_EQ(rows.size() - 1, images.size());
    for (int n = 1; n <= images.size(); ++n)
        ASSERT_TRUE(rows[n - 1].startsWith(QString("1,%1,%1.jpg").arg(n).toUtf8()) && images.contains(QString("%1.jpg").arg(n))) << rows[n - 1].constData();

    // Models join the selector in the order their jobs finish.
    QStringList expected{probe.cell(0, 1), probe.cell(other, 1)};
    expected.sort();
    QStringList entries = probe.selectorEntries();
    entries.sort();
    ASSERT_EQ(entries, expected);
    ASSERT_EQ(Entries(CollectionRoot()), expected);
    for (const QString& model : expected) {
        ASSERT_TRUE(exists(CollectionRoot() + "/" + model + "/ImportInformation.csv"));
        ASSERT_TRUE(exists(CollectionRoot() + "/" + model + "/" + model + ".xml"));
        ASSERT_TRUE(!exists(ApplicationDir() + "/" + model + ".xml"));
    }

    // A second collection of the same model adds nothing to the selector.
    probe.tick(other, false);
    probe.tick(twin, false);
    probe.tick(idle, false);
    probe.table->item(0, 4)->setText(QString());
    probe.collect->click();
    waitForStatus(probe, {0}, kJobTimeoutMs);
    ASSERT_EQ(probe.cell(0, 4), QString("Collect Finished"));
    ASSERT_EQ(probe.selectorEntries().size(), 2);
}

TEST_F(WindowCollectTest, lostDevice_leavesTheOtherJobRunning)
{
    // Two simulators, so that one reader can vanish while the other serves.
    ASSERT_TRUE(startDevices(1));
    DeviceProcess second;
    std::string why;
    ASSERT_TRUE(xqtest::startSimulatorWith(second, {"--demo", "1", "--first-index", "1", "--base-address", "127.0.0.3"}, why)) << why.c_str();
    ASSERT_EQ(WaitForCodeReaders(2, 15000).size(), 2);

    QVirtualCamMainWidget window;
    window.Init();
    WindowProbe probe(window);
    const int lostRow = probe.rowOf(probe.cell(0, 2) == "127.0.0.3" ? probe.cell(0, 1) : probe.cell(1, 1));
    const int keptRow = 1 - lostRow;
    const QString lostModel = probe.cell(lostRow, 1);
    const QString keptModel = probe.cell(keptRow, 1);
    ASSERT_TRUE(lostModel != keptModel);
    // An earlier collection of the lost model, which its failed job keeps.
    const QString earlier = CollectionRoot() + "/" + lostModel + "/Jpg/1.jpg";
    ASSERT_TRUE(QDir().mkpath(CollectionRoot() + "/" + lostModel + "/Jpg"));
    QFile earlierFile(earlier);
    ASSERT_TRUE(earlierFile.open(QIODevice::WriteOnly) && earlierFile.write("earlier") == 7);
    earlierFile.close();
    probe.tick(0);
    probe.tick(1);
    probe.collect->click();

    ASSERT_TRUE(QTest::qWaitFor([&] { return bool(jobFolderHasImages(lostModel)); }, 60000));
    second.stop(true);
    waitForStatus(probe, {0, 1}, kJobTimeoutMs);
    // The lost job ends with a message and removes what it made, and only that.
    const QString lostStatus = probe.cell(lostRow, 4);
    ASSERT_TRUE(!lostStatus.isEmpty() && lostStatus != "Collect Finished") << qPrintable(lostStatus);
    ASSERT_EQ(probe.cell(keptRow, 4), QString("Collect Finished"));
    ASSERT_EQ(QDir(CollectionRoot() + "/" + lostModel + "/Jpg").entryList(QDir::Files | QDir::Hidden), QStringList{"1.jpg"});
    ASSERT_TRUE(earlierFile.open(QIODevice::ReadOnly) && earlierFile.readAll() == "earlier");
    QStringList models{lostModel, keptModel};
    models.sort();
    ASSERT_EQ(Entries(CollectionRoot()), models);
    for (const char* suffix : {"_regfile.dat", "_strRegFile.dat", ".xml"})
        ASSERT_TRUE(!exists(ApplicationDir() + "/" + lostModel + suffix));
    ASSERT_TRUE(exists(CollectionRoot() + "/" + keptModel + "/ImportInformation.csv"));
    ASSERT_EQ(probe.selectorEntries(), QStringList{keptModel});
    ASSERT_TRUE(QTest::qWaitFor([&] { return bool(probe.collect->isEnabled()); }));
}

TEST_F(WindowCollectTest, closeWhileCollecting_asks_cancelKeepsJobs_confirmRemovesFiles)
{
    ASSERT_TRUE(startDevices(2));
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
        ASSERT_TRUE(QTest::qWaitFor([&] { return bool(jobFolderHasImages(model)); }, 60000));

        answerNextBox("CancelBtn");
        window.close();
        ASSERT_TRUE(window.isVisible());
        ASSERT_TRUE(probe.cell(1, 4).isEmpty());  // the job goes on

        answerNextBox("ConfirmBtn");
        window.close();
        ASSERT_TRUE(!window.isVisible());
        quitting.start();
    }
    // Destroying the window stopped the job and removed what it had made.
    qInfo("window gone %lld ms after the confirmed close", static_cast<long long>(quitting.elapsed()));
    ASSERT_TRUE(quitting.elapsed() < 30000) << "the wait at quit is bounded by a few seconds";
    ASSERT_EQ(Entries(CollectionRoot()), QStringList{});
    ASSERT_TRUE(!exists(ApplicationDir() + "/" + model + ".xml"));
}

int main(int argc, char** argv)
{
    RunFromOwnSuiteLayout(argv);
    ::testing::InitGoogleTest(&argc, argv);
    QApplication app(argc, argv);
    return RUN_ALL_TESTS();
}

