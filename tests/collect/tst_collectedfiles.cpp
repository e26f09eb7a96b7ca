// Removal of what a collection job leaves behind, hostile model names
// included. The folder removal itself is tested with the store, its other user.

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
    void deleteCollected_removesStagingAndFolderOfThatModelOnly();
    void deleteCollected_hostileNameTouchesNothing();
};

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
