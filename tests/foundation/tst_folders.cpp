// The tool's folder arithmetic and the suite folders of the shared tools.

#include "AppFolders.h"
#include "XQInterface.h"

#include <QtTest>

class FoldersTest : public QObject
{
    Q_OBJECT

private slots:
    void parentDir_isTheFolderAboveTheExecutablesFolder_data();
    void parentDir_isTheFolderAboveTheExecutablesFolder();
    void quorvexAboveTheExecutable_isRemovedFromBaseAndSuite();
    void collectionRoot_isBesideTheAppsFolder();
    void collectionRoot_isPerUserForAnInstalledSuite_data();
    void collectionRoot_isPerUserForAnInstalledSuite();
    void folders_followEnvironmentOverrides();
    void folders_defaultBelowXdgHomes();
};

void FoldersTest::parentDir_isTheFolderAboveTheExecutablesFolder_data()
{
    QTest::addColumn<QString>("appDir");
    QTest::addColumn<QString>("parent");
    QTest::newRow("suite") << "/opt/suite/apps/Quorvex" << "/opt/suite/apps";
    QTest::newRow("root") << "/Quorvex" << "";
    QTest::newRow("trailing dots kept") << "/a/../b/Quorvex" << "/a/../b";
}

void FoldersTest::parentDir_isTheFolderAboveTheExecutablesFolder()
{
    QFETCH(QString, appDir);
    QFETCH(QString, parent);
    QCOMPARE(parentDirOf(appDir), parent);
}

void FoldersTest::quorvexAboveTheExecutable_isRemovedFromBaseAndSuite()
{
    // A checkout inside a folder named Quorvex loses that piece: the tool's
    // folders are then wrong by design, which is why the run script refuses it.
    const QString parent = parentDirOf("/home/ana/Quorvex/build/suite/apps/Quorvex");
    QCOMPARE(parent, QString("/home/ana/Quorvex/build/suite/apps"));
    QCOMPARE(baseFolderOf(parent), QString("/home/ana/build/suite/apps"));
    QCOMPARE(suiteFolderOf(baseFolderOf(parent)), QString("/home/ana/build/suite/apps/../"));
    // Every occurrence goes, also inside longer names; lower case stays.
    QCOMPARE(baseFolderOf("/x/QuorvexData/Quorvex/quorvex"), QString("/xData/quorvex"));
    QCOMPARE(baseFolderOf("/opt/suite/apps"), QString("/opt/suite/apps"));
}

void FoldersTest::collectionRoot_isBesideTheAppsFolder()
{
    QCOMPARE(virtualCameraRootOf("/opt/suite/apps"), QString("/opt/suite/apps/../common/VirtualCamera"));
}

void FoldersTest::collectionRoot_isPerUserForAnInstalledSuite_data()
{
    QTest::addColumn<QString>("appsBelowTemp");
    QTest::addColumn<QString>("appsAbsolute");
    QTest::addColumn<bool>("inSuite");
    QTest::newRow("writable build tree") << "build/suite/apps" << "" << true;
    QTest::newRow("root made on first use") << "fresh/apps" << "" << true;
    QTest::newRow("package") << "" << "/usr/lib/quorvex/apps" << false;
    QTest::newRow("cmake --install") << "" << "/usr/local/lib/quorvex/apps" << false;
    QTest::newRow("a file where folders should be") << "" << "/dev/null/quorvex/apps" << false;
}

void FoldersTest::collectionRoot_isPerUserForAnInstalledSuite()
{
    QFETCH(QString, appsBelowTemp);
    QFETCH(QString, appsAbsolute);
    QFETCH(bool, inSuite);
    QTemporaryDir temp;
    QString apps = appsAbsolute;
    if (!appsBelowTemp.isEmpty()) {
        apps = temp.path() + "/" + appsBelowTemp;
        QVERIFY(QDir().mkpath(apps));
    }
    QCOMPARE(suiteHoldsCollections(apps), inSuite);
    QCOMPARE(collectionRootOf(apps, "/home/u/.local/share/ZELTA/VirtualCamera"),
             inSuite ? virtualCameraRootOf(apps) : QString("/home/u/.local/share/ZELTA/VirtualCamera"));
}

void FoldersTest::folders_followEnvironmentOverrides()
{
    const struct { const char* name; QString (*path)(); } folders[] = {
        {"QUORVEX_USER_DATA", XQInterface::userDataPath}, {"QUORVEX_PROGRAM_DATA", XQInterface::programDataPath},
        {"QUORVEX_READONLY_CFG", XQInterface::readonlyCfgPath}, {"QUORVEX_SYSTEM_TEMP", XQInterface::systemTemp}};
    for (const auto& folder : folders) {
        qputenv(folder.name, "/tmp/q-override");
        QCOMPARE(folder.path(), QString("/tmp/q-override"));
        qunsetenv(folder.name);
    }
}

void FoldersTest::folders_defaultBelowXdgHomes()
{
    qputenv("XDG_DATA_HOME", "/tmp/xdg-data");
    qputenv("XDG_CONFIG_HOME", "/tmp/xdg-config");
    qputenv("XDG_CACHE_HOME", "relative/is/ignored");
    QCOMPARE(XQInterface::userDataPath(), QString("/tmp/xdg-data/ZELTA"));
    QCOMPARE(XQInterface::programDataPath(), QString("/tmp/xdg-config/ZELTA"));
    QCOMPARE(XQInterface::systemTemp(), QDir::homePath() + "/.cache/ZELTA");
    // The read-only configuration sits in the suite beside the apps folder.
    QVERIFY(XQInterface::readonlyCfgPath().endsWith("/common/config"));
}

QTEST_GUILESS_MAIN(FoldersTest)
#include "tst_folders.moc"
