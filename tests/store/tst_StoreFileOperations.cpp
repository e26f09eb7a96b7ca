// Copying collection folders into the store, removing camera folders (with
// the suite's shared removal), and telling whether a serving program holds
// a camera.

#include "QtPrinters.h"
#include "TestFiles.h"
#include "CollectedFiles.h"

using collect::deleteFileOrFolderAt;
#include "FileOperations.h"
#include "StorePaths.h"
#include "VirtualCameraActions.h"
#include "VirtualCameraConfig.h"
#include "camera_hold.h"

#include <QSettings>

#include <QTemporaryDir>
#include <QtCore>

#include <gtest/gtest.h>

#include <memory>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace VirtualStore;

class StoreFileOperationsTest : public ::testing::Test {
protected:
    void SetUp() override;
    std::unique_ptr<QTemporaryDir> m_pDir;
    QString Path(const QString& strRelative) const { return m_pDir->path() + "/" + strRelative; }
    // Deleting a camera never reaches outside the store, and the file is
    // rewritten before the folder goes.
};

void StoreFileOperationsTest::SetUp()
{
    m_pDir = std::make_unique<QTemporaryDir>();
    ASSERT_TRUE(m_pDir->isValid());
}

TEST_F(StoreFileOperationsTest, copy_takesSubfoldersInFullDepthAndLeavesHiddenEntries)
{
    MakeCollectionFolder(Path("src"), "QV-ID200-13M");
    ASSERT_TRUE(WriteFile(Path("src/Jpg/deep/er/x.bin"), "deep"));
    ASSERT_TRUE(WriteFile(Path("src/.hidden"), "h"));
    ASSERT_TRUE(CopyDirectory(Path("src"), Path("dst"), true));
    ASSERT_EQ(ReadAll(Path("dst/Jpg/deep/er/x.bin")), QByteArray("deep"));
    ASSERT_EQ(ReadAll(Path("dst/Jpg/3.jpg")), ReadAll(Path("src/Jpg/3.jpg")));
    ASSERT_EQ(ReadAll(Path("dst/QV-ID200-13M_regfile.dat")), ReadAll(Path("src/QV-ID200-13M_regfile.dat")));
    ASSERT_TRUE(!QFileInfo::exists(Path("dst/.hidden")));
}

TEST_F(StoreFileOperationsTest, copy_overwritesOnlyWhenAsked_andMakesOneMissingLevel)
{
    ASSERT_TRUE(CopyDirectory(Path("missing"), Path("empty"), true));
    ASSERT_TRUE(QFileInfo(Path("empty")).isDir());
    ASSERT_TRUE(!CopyDirectory(Path("missing"), Path("no/parents"), true)) << "only one level is created";
    ASSERT_TRUE(WriteFile(Path("src/a.txt"), "new"));
    ASSERT_TRUE(WriteFile(Path("dst/a.txt"), "old"));
    ASSERT_TRUE(!CopyDirectory(Path("src"), Path("dst"), false));
    ASSERT_EQ(ReadAll(Path("dst/a.txt")), QByteArray("old"));
    ASSERT_TRUE(CopyDirectory(Path("src"), Path("dst"), true));
    ASSERT_EQ(ReadAll(Path("dst/a.txt")), QByteArray("new"));
}

TEST_F(StoreFileOperationsTest, copy_doesNotFollowAFolderLinkBackUpTheTree)
{
    ASSERT_TRUE(WriteFile(Path("src/Jpg/1.jpg"), "1"));
    ASSERT_TRUE(QFile::link(Path("src"), Path("src/Jpg/loop")));
    ASSERT_TRUE(CopyDirectory(Path("src"), Path("dst"), true));
    ASSERT_EQ(ReadAll(Path("dst/Jpg/1.jpg")), QByteArray("1"));
    ASSERT_TRUE(!QFileInfo::exists(Path("dst/Jpg/loop")));
}

TEST_F(StoreFileOperationsTest, delete_removesFilesAndWholeFolders)
{
    ASSERT_TRUE(!deleteFileOrFolderAt(QString()));
    ASSERT_TRUE(WriteFile(Path("file.txt"), "x"));
    ASSERT_TRUE(deleteFileOrFolderAt(Path("file.txt")));
    ASSERT_TRUE(!QFileInfo::exists(Path("file.txt")));
    MakeCollectionFolder(Path("cam"), "QV-ID200-13M");
    ASSERT_TRUE(deleteFileOrFolderAt(Path("cam")));
    ASSERT_TRUE(!QFileInfo::exists(Path("cam")));
    ASSERT_TRUE(deleteFileOrFolderAt(Path("missing")));

    // Hidden files keep the folder, the rest goes.
    MakeCollectionFolder(Path("kept"), "QV-ID200-13M");
    ASSERT_TRUE(WriteFile(Path("kept/.keep"), "k"));
    ASSERT_TRUE(!deleteFileOrFolderAt(Path("kept")));
    ASSERT_TRUE(QFileInfo::exists(Path("kept/.keep")));
    ASSERT_TRUE(!QFileInfo::exists(Path("kept/Jpg")));
    ASSERT_TRUE(!QFileInfo::exists(Path("kept/QV-ID200-13M.xml")));
}

TEST_F(StoreFileOperationsTest, delete_removesLinksWithoutTouchingWhatTheyPointAt)
{
    ASSERT_TRUE(WriteFile(Path("outside/precious.txt"), "keep me"));
    ASSERT_TRUE(WriteFile(Path("cam/1.jpg"), "1"));
    ASSERT_TRUE(QFile::link(Path("outside"), Path("cam/Jpg")));
    ASSERT_TRUE(deleteFileOrFolderAt(Path("cam")));
    ASSERT_TRUE(!QFileInfo::exists(Path("cam")));
    ASSERT_EQ(ReadAll(Path("outside/precious.txt")), QByteArray("keep me"));

    ASSERT_TRUE(QFile::link(Path("outside"), Path("link")));
    ASSERT_TRUE(deleteFileOrFolderAt(Path("link")));
    ASSERT_EQ(ReadAll(Path("outside/precious.txt")), QByteArray("keep me"));
}

TEST_F(StoreFileOperationsTest, deleteCamera_staysInsideTheStoreAndWritesTheFileFirst)
{
    qputenv("QUORVEX_SYSTEM_TEMP", m_pDir->path().toUtf8() + "/temp");
    const QString strStore = storePath();
    const QString strGroup = "Vir12345678";
    const QString strFolder = cameraFolder(strGroup);
    MakeCollectionFolder(Path("outside"), "M");
    const auto makeCamera = [&](QSettings& settings) {
        MakeCollectionFolder(strFolder, "M");
        settings.setValue(strGroup + "/chModelName", "M");
        ASSERT_TRUE(syncStoreSettings(settings));
    };

    // Each link on the way to the camera folder is refused and leaves
    // everything as it was, the target of the link included.
    const QStringList linked{strStore, strStore + "/Cameras", strFolder};
    for (const QString& strLink : linked) {
        ASSERT_TRUE(QDir(m_pDir->path() + "/temp").removeRecursively());
        QDir().mkpath(strStore);
        std::unique_ptr<QSettings> settings(openVirtualCameraSettings(configFilePath(), nullptr));
        makeCamera(*settings);
        ASSERT_TRUE(QDir(strLink).removeRecursively());
        ASSERT_TRUE(QFile::link(Path("outside"), strLink));
        QString strReason;
        ASSERT_EQ(deleteVirtualCamera(strGroup, "M", settings.get(), &strReason), DeletionOutcome::OutsideStore);
        ASSERT_TRUE(strReason.contains(strLink)) << qPrintable(strReason);
        ASSERT_TRUE(QFileInfo::exists(Path("outside/Jpg/1.jpg")));
        ASSERT_EQ(settings->value(strGroup + "/chModelName").toString(), QString("M"));
    }

    // A file that cannot be replaced keeps both the group and the folder.
    ASSERT_TRUE(QDir(m_pDir->path() + "/temp").removeRecursively());
    QDir().mkpath(strStore);
    std::unique_ptr<QSettings> settings(openVirtualCameraSettings(configFilePath(), nullptr));
    makeCamera(*settings);
    ASSERT_TRUE(QFile::remove(configFilePath()));
    ASSERT_TRUE(WriteFile(configFilePath() + "/blocks-the-rename", "x"));
    ASSERT_EQ(deleteVirtualCamera(strGroup, "M", settings.get()), DeletionOutcome::ConfigNotWritten);
    ASSERT_TRUE(QFileInfo::exists(strFolder + "/M_regfile.dat"));
    ASSERT_EQ(settings->value(strGroup + "/chModelName").toString(), QString("M"));

    ASSERT_TRUE(QDir(configFilePath()).removeRecursively());
    ASSERT_EQ(deleteVirtualCamera(strGroup, "M", settings.get()), DeletionOutcome::Deleted);
    ASSERT_TRUE(!QFileInfo::exists(strFolder));
    ASSERT_TRUE(!ReadAll(configFilePath()).contains(strGroup.toUtf8()));
}

TEST_F(StoreFileOperationsTest, occupancy_followsTheHolderWithinThisProcess)
{
    const QString strFile = Path("cam/M_regfile.dat");
    ASSERT_TRUE(!IsFileOccupied(strFile)) << "a missing register file is not occupied";
    ASSERT_TRUE(WriteFile(strFile, "registers"));
    ASSERT_TRUE(!IsFileOccupied(strFile));
    {
        quorvex::store::CameraHold hold;
        std::string error;
        ASSERT_TRUE(hold.acquire(strFile.toStdString(), error)) << error.c_str();
        ASSERT_TRUE(IsFileOccupied(strFile));
        quorvex::store::CameraHold second;
        ASSERT_TRUE(second.acquire(strFile.toStdString(), error)) << "holders share the lock";
        hold.release();
        ASSERT_TRUE(IsFileOccupied(strFile)) << "the second holder still holds it";
    }
    ASSERT_TRUE(!IsFileOccupied(strFile));
    ASSERT_EQ(ReadAll(strFile), QByteArray("registers"));
}

TEST_F(StoreFileOperationsTest, occupancy_seesAHolderInAnotherProcessAndItsExit)
{
    const QString strFile = Path("M_regfile.dat");
    ASSERT_TRUE(WriteFile(strFile, "registers"));
    int ready[2];
    ASSERT_TRUE(::pipe(ready) == 0);
    const pid_t child = ::fork();
    ASSERT_TRUE(child >= 0);
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
    ASSERT_EQ(::read(ready[0], &state, 1), ssize_t(1));
    ::close(ready[0]);
    ASSERT_EQ(state, 'y');
    ASSERT_TRUE(IsFileOccupied(strFile));
    ::kill(child, SIGKILL);
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_TRUE(!IsFileOccupied(strFile)) << "the lock ends with its holder, crash included";
}

TEST_F(StoreFileOperationsTest, occupancy_ofAFifo_answersWithoutWaiting)
{
    const QByteArray fifo = QFile::encodeName(Path("M_regfile.dat"));
    ASSERT_TRUE(::mkfifo(fifo.constData(), 0600) == 0);
    ASSERT_EQ(quorvex::store::probeHold(fifo.toStdString()), quorvex::store::HoldState::NotHeld);
}

