// Copying collection folders into the store, removing camera folders (with
// the suite's shared removal), and telling whether a serving program holds
// a camera.

#include "StoreTestSupport.h"
#include "CollectedFiles.h"

using collect::deleteFileOrFolderAt;
#include "FileOperations.h"
#include "StorePaths.h"
#include "VirtualCameraActions.h"
#include "VirtualCameraConfig.h"
#include "camera_hold.h"

#include <QSettings>

#include <QTemporaryDir>
#include <QtTest>

#include <memory>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace VirtualStore;

class StoreFileOperationsTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> m_pDir;
    QString Path(const QString& strRelative) const { return m_pDir->path() + "/" + strRelative; }

private slots:
    void init()
    {
        m_pDir = std::make_unique<QTemporaryDir>();
        QVERIFY(m_pDir->isValid());
    }

    void copy_takesSubfoldersInFullDepthAndLeavesHiddenEntries()
    {
        StoreTest::MakeCollectionFolder(Path("src"), "QV-ID200-13M");
        QVERIFY(StoreTest::WriteFile(Path("src/Jpg/deep/er/x.bin"), "deep"));
        QVERIFY(StoreTest::WriteFile(Path("src/.hidden"), "h"));
        QVERIFY(CopyDirectory(Path("src"), Path("dst"), true));
        QCOMPARE(StoreTest::ReadFile(Path("dst/Jpg/deep/er/x.bin")), QByteArray("deep"));
        QCOMPARE(StoreTest::ReadFile(Path("dst/Jpg/3.jpg")), StoreTest::ReadFile(Path("src/Jpg/3.jpg")));
        QCOMPARE(StoreTest::ReadFile(Path("dst/QV-ID200-13M_regfile.dat")),
                 StoreTest::ReadFile(Path("src/QV-ID200-13M_regfile.dat")));
        QVERIFY(!QFileInfo::exists(Path("dst/.hidden")));
    }

    void copy_overwritesOnlyWhenAsked_andMakesOneMissingLevel()
    {
        QVERIFY(CopyDirectory(Path("missing"), Path("empty"), true));
        QVERIFY(QFileInfo(Path("empty")).isDir());
        QVERIFY2(!CopyDirectory(Path("missing"), Path("no/parents"), true), "only one level is created");
        QVERIFY(StoreTest::WriteFile(Path("src/a.txt"), "new"));
        QVERIFY(StoreTest::WriteFile(Path("dst/a.txt"), "old"));
        QVERIFY(!CopyDirectory(Path("src"), Path("dst"), false));
        QCOMPARE(StoreTest::ReadFile(Path("dst/a.txt")), QByteArray("old"));
        QVERIFY(CopyDirectory(Path("src"), Path("dst"), true));
        QCOMPARE(StoreTest::ReadFile(Path("dst/a.txt")), QByteArray("new"));
    }

    void copy_doesNotFollowAFolderLinkBackUpTheTree()
    {
        QVERIFY(StoreTest::WriteFile(Path("src/Jpg/1.jpg"), "1"));
        QVERIFY(QFile::link(Path("src"), Path("src/Jpg/loop")));
        QVERIFY(CopyDirectory(Path("src"), Path("dst"), true));
        QCOMPARE(StoreTest::ReadFile(Path("dst/Jpg/1.jpg")), QByteArray("1"));
        QVERIFY(!QFileInfo::exists(Path("dst/Jpg/loop")));
    }

    void delete_removesFilesAndWholeFolders()
    {
        QVERIFY(!deleteFileOrFolderAt(QString()));
        QVERIFY(StoreTest::WriteFile(Path("file.txt"), "x"));
        QVERIFY(deleteFileOrFolderAt(Path("file.txt")));
        QVERIFY(!QFileInfo::exists(Path("file.txt")));
        StoreTest::MakeCollectionFolder(Path("cam"), "QV-ID200-13M");
        QVERIFY(deleteFileOrFolderAt(Path("cam")));
        QVERIFY(!QFileInfo::exists(Path("cam")));
        QVERIFY(deleteFileOrFolderAt(Path("missing")));

        // Hidden files keep the folder, the rest goes.
        StoreTest::MakeCollectionFolder(Path("kept"), "QV-ID200-13M");
        QVERIFY(StoreTest::WriteFile(Path("kept/.keep"), "k"));
        QVERIFY(!deleteFileOrFolderAt(Path("kept")));
        QVERIFY(QFileInfo::exists(Path("kept/.keep")));
        QVERIFY(!QFileInfo::exists(Path("kept/Jpg")));
        QVERIFY(!QFileInfo::exists(Path("kept/QV-ID200-13M.xml")));
    }

    void delete_removesLinksWithoutTouchingWhatTheyPointAt()
    {
        QVERIFY(StoreTest::WriteFile(Path("outside/precious.txt"), "keep me"));
        QVERIFY(StoreTest::WriteFile(Path("cam/1.jpg"), "1"));
        QVERIFY(QFile::link(Path("outside"), Path("cam/Jpg")));
        QVERIFY(deleteFileOrFolderAt(Path("cam")));
        QVERIFY(!QFileInfo::exists(Path("cam")));
        QCOMPARE(StoreTest::ReadFile(Path("outside/precious.txt")), QByteArray("keep me"));

        QVERIFY(QFile::link(Path("outside"), Path("link")));
        QVERIFY(deleteFileOrFolderAt(Path("link")));
        QCOMPARE(StoreTest::ReadFile(Path("outside/precious.txt")), QByteArray("keep me"));
    }

    // Deleting a camera never reaches outside the store, and the file is
    // rewritten before the folder goes.
    void deleteCamera_staysInsideTheStoreAndWritesTheFileFirst()
    {
        qputenv("QUORVEX_SYSTEM_TEMP", m_pDir->path().toUtf8() + "/temp");
        const QString strStore = storePath();
        const QString strGroup = "Vir12345678";
        const QString strFolder = cameraFolder(strGroup);
        StoreTest::MakeCollectionFolder(Path("outside"), "M");
        const auto makeCamera = [&](QSettings& settings) {
            StoreTest::MakeCollectionFolder(strFolder, "M");
            settings.setValue(strGroup + "/chModelName", "M");
            QVERIFY(syncStoreSettings(settings));
        };

        // Each link on the way to the camera folder is refused and leaves
        // everything as it was, the target of the link included.
        const QStringList linked{strStore, strStore + "/Cameras", strFolder};
        for (const QString& strLink : linked) {
            QVERIFY(QDir(m_pDir->path() + "/temp").removeRecursively());
            QDir().mkpath(strStore);
            std::unique_ptr<QSettings> settings(openVirtualCameraSettings(configFilePath(), nullptr));
            makeCamera(*settings);
            QVERIFY(QDir(strLink).removeRecursively());
            QVERIFY(QFile::link(Path("outside"), strLink));
            QString strReason;
            QCOMPARE(deleteVirtualCamera(strGroup, "M", settings.get(), &strReason), DeletionOutcome::OutsideStore);
            QVERIFY2(strReason.contains(strLink), qPrintable(strReason));
            QVERIFY(QFileInfo::exists(Path("outside/Jpg/1.jpg")));
            QCOMPARE(settings->value(strGroup + "/chModelName").toString(), QString("M"));
        }

        // A file that cannot be replaced keeps both the group and the folder.
        QVERIFY(QDir(m_pDir->path() + "/temp").removeRecursively());
        QDir().mkpath(strStore);
        std::unique_ptr<QSettings> settings(openVirtualCameraSettings(configFilePath(), nullptr));
        makeCamera(*settings);
        QVERIFY(QFile::remove(configFilePath()));
        QVERIFY(StoreTest::WriteFile(configFilePath() + "/blocks-the-rename", "x"));
        QCOMPARE(deleteVirtualCamera(strGroup, "M", settings.get()), DeletionOutcome::ConfigNotWritten);
        QVERIFY(QFileInfo::exists(strFolder + "/M_regfile.dat"));
        QCOMPARE(settings->value(strGroup + "/chModelName").toString(), QString("M"));

        QVERIFY(QDir(configFilePath()).removeRecursively());
        QCOMPARE(deleteVirtualCamera(strGroup, "M", settings.get()), DeletionOutcome::Deleted);
        QVERIFY(!QFileInfo::exists(strFolder));
        QVERIFY(!StoreTest::ReadFile(configFilePath()).contains(strGroup.toUtf8()));
    }

    void occupancy_followsTheHolderWithinThisProcess()
    {
        const QString strFile = Path("cam/M_regfile.dat");
        QVERIFY2(!IsFileOccupied(strFile), "a missing register file is not occupied");
        QVERIFY(StoreTest::WriteFile(strFile, "registers"));
        QVERIFY(!IsFileOccupied(strFile));
        {
            quorvex::store::CameraHold hold;
            std::string error;
            QVERIFY2(hold.acquire(strFile.toStdString(), error), error.c_str());
            QVERIFY(IsFileOccupied(strFile));
            quorvex::store::CameraHold second;
            QVERIFY2(second.acquire(strFile.toStdString(), error), "holders share the lock");
            hold.release();
            QVERIFY2(IsFileOccupied(strFile), "the second holder still holds it");
        }
        QVERIFY(!IsFileOccupied(strFile));
        QCOMPARE(StoreTest::ReadFile(strFile), QByteArray("registers"));
    }

    void occupancy_seesAHolderInAnotherProcessAndItsExit()
    {
        const QString strFile = Path("M_regfile.dat");
        QVERIFY(StoreTest::WriteFile(strFile, "registers"));
        int ready[2];
        QVERIFY(::pipe(ready) == 0);
        const pid_t child = ::fork();
        QVERIFY(child >= 0);
        if (child == 0) {
            quorvex::store::CameraHold hold;
            std::string error;
            const char state = hold.acquire(strFile.toStdString(), error) ? 'y' : 'n';
            (void)!::write(ready[1], &state, 1);
            ::pause();
            ::_exit(0);
        }
        ::close(ready[1]);
        char state = 0;
        QCOMPARE(::read(ready[0], &state, 1), ssize_t(1));
        ::close(ready[0]);
        QCOMPARE(state, 'y');
        QVERIFY(IsFileOccupied(strFile));
        ::kill(child, SIGKILL);
        int status = 0;
        QCOMPARE(::waitpid(child, &status, 0), child);
        QVERIFY2(!IsFileOccupied(strFile), "the lock ends with its holder, crash included");
    }

    void occupancy_ofAFifo_answersWithoutWaiting()
    {
        const QByteArray fifo = QFile::encodeName(Path("M_regfile.dat"));
        QVERIFY(::mkfifo(fifo.constData(), 0600) == 0);
        QCOMPARE(quorvex::store::probeHold(fifo.toStdString()), quorvex::store::HoldState::NotHeld);
    }
};

QTEST_GUILESS_MAIN(StoreFileOperationsTest)
#include "tst_StoreFileOperations.moc"
