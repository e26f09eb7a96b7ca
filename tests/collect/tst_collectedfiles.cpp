// Removal of what a collection job leaves behind, hostile model names included.

#include "CollectedFiles.h"

using namespace collect;

#include <QtTest>

namespace {

void touch(const QString& path)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("x");
}

} // namespace

class CollectedFilesTest : public QObject
{
    Q_OBJECT

private slots:
    void deleteFolder_removesTreeButKeepsFolderWithHiddenFiles();
    void deleteFolder_removesLinksNotTheirTargets();
    void deleteCollected_removesStagingAndFolderOfThatModelOnly();
    void deleteCollected_hostileNameTouchesNothing();
};

void CollectedFilesTest::deleteFolder_removesTreeButKeepsFolderWithHiddenFiles()
{
    QTemporaryDir dir;
    const QString folder = dir.filePath("M");
    touch(folder + "/Jpg/1.jpg");
    touch(folder + "/ImportInformation.csv");
    QVERIFY(DeleteFileOrFolderAt(folder));
    QVERIFY(!QFileInfo::exists(folder));

    touch(folder + "/Jpg/1.jpg");
    touch(folder + "/.hidden");
    QVERIFY(!DeleteFileOrFolderAt(folder));  // the hidden file keeps the folder
    QVERIFY(QFileInfo::exists(folder + "/.hidden"));
    QVERIFY(!QFileInfo::exists(folder + "/Jpg"));

    QVERIFY(DeleteFileOrFolderAt(dir.filePath("missing")));
    QVERIFY(!DeleteFileOrFolderAt(QString()));
}

void CollectedFilesTest::deleteFolder_removesLinksNotTheirTargets()
{
    QTemporaryDir dir;
    touch(dir.filePath("outside/precious.txt"));
    touch(dir.filePath("M/file"));
    QVERIFY(QFile::link(dir.filePath("outside"), dir.filePath("M/link")));
    QVERIFY(DeleteFileOrFolderAt(dir.filePath("M")));
    QVERIFY(QFileInfo::exists(dir.filePath("outside/precious.txt")));
}

void CollectedFilesTest::deleteCollected_removesStagingAndFolderOfThatModelOnly()
{
    QTemporaryDir dir;
    const QString app = dir.filePath("apps/Quorvex");
    const QString root = dir.filePath("common/VirtualCamera");
    for (const QString& path : StagingFilePaths(app, "ID100"))
        touch(path);
    touch(app + "/Quorvex");
    touch(root + "/ID100/Jpg/1.jpg");
    touch(root + "/ID200/Jpg/1.jpg");
    QVERIFY(DeleteCollectedFilesOf(app, root, "ID100").isEmpty());
    QVERIFY(!QFileInfo::exists(root + "/ID100"));
    QVERIFY(!QFileInfo::exists(app + "/ID100.xml"));
    QVERIFY(QFileInfo::exists(app + "/Quorvex"));
    QVERIFY(QFileInfo::exists(root + "/ID200/Jpg/1.jpg"));
}

void CollectedFilesTest::deleteCollected_hostileNameTouchesNothing()
{
    QTemporaryDir dir;
    const QString app = dir.filePath("apps/Quorvex");
    const QString root = dir.filePath("common/VirtualCamera");
    touch(root + "/ID200/Jpg/1.jpg");
    touch(dir.filePath("common/keep.txt"));
    touch(app + "/..xml");
    for (const QString& name : {QString(".."), QString(""), QString("../.."), QString(".")}) {
        QCOMPARE(DeleteCollectedFilesOf(app, root, name).size(), 4);
        QVERIFY(QFileInfo::exists(root + "/ID200/Jpg/1.jpg"));
        QVERIFY(QFileInfo::exists(dir.filePath("common/keep.txt")));
    }
    QVERIFY(QFileInfo::exists(app + "/..xml"));
}

QTEST_GUILESS_MAIN(CollectedFilesTest)
#include "tst_collectedfiles.moc"
