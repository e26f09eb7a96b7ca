// Removal of what a collection job leaves behind, hostile model names included.

#include "CollectedFiles.h"

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
    void modelNames_thatLeaveTheRootAreUnsafe_data();
    void modelNames_thatLeaveTheRootAreUnsafe();
    void deleteFolder_removesTreeButKeepsFolderWithHiddenFiles();
    void deleteFolder_removesLinksNotTheirTargets();
    void deleteCollected_removesStagingAndFolderOfThatModelOnly();
    void deleteCollected_hostileNameTouchesNothing();
};

void CollectedFilesTest::modelNames_thatLeaveTheRootAreUnsafe_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("safe");
    QTest::newRow("plain") << "QX-ID2000" << true;
    QTest::newRow("spaces and dots inside") << "ID 3.1 x" << true;
    QTest::newRow("chinese") << QString::fromUtf8("读码器ID") << true;
    QTest::newRow("empty names the root itself") << "" << false;
    QTest::newRow("dot") << "." << false;
    QTest::newRow("dotdot") << ".." << false;
    QTest::newRow("slash") << "../../etc" << false;
    QTest::newRow("backslash") << "a\\b" << false;
    QTest::newRow("newline") << "ID\n" << false;
    QTest::newRow("escape") << "ID\x1b[31m" << false;
}

void CollectedFilesTest::modelNames_thatLeaveTheRootAreUnsafe()
{
    QFETCH(QString, name);
    QFETCH(bool, safe);
    QCOMPARE(isSafeModelName(name), safe);
}

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
    for (const QString& path : stagingFilePaths(app, "ID100"))
        touch(path);
    touch(app + "/Quorvex");
    touch(root + "/ID100/Jpg/1.jpg");
    touch(root + "/ID200/Jpg/1.jpg");
    QVERIFY(deleteCollectedFilesOf(app, root, "ID100").isEmpty());
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
        QCOMPARE(deleteCollectedFilesOf(app, root, name).size(), 4);
        QVERIFY(QFileInfo::exists(root + "/ID200/Jpg/1.jpg"));
        QVERIFY(QFileInfo::exists(dir.filePath("common/keep.txt")));
    }
    QVERIFY(QFileInfo::exists(app + "/..xml"));
}

QTEST_GUILESS_MAIN(CollectedFilesTest)
#include "tst_collectedfiles.moc"
