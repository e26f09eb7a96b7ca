// The tool's folder arithmetic and the suite folders of the shared tools.

#include "AppFolders.h"
#include "QtPrinters.h"
#include "XQInterface.h"

#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

TEST(Folders, parentDirIsTheFolderAboveTheExecutablesFolder)
{
    const struct { const char* appDir; const char* parent; } cases[] = {
        {"/opt/suite/apps/Quorvex", "/opt/suite/apps"},
        {"/Quorvex", ""},
        {"/a/../b/Quorvex", "/a/../b"}, // dots are kept
    };
    for (const auto& c : cases)
        EXPECT_EQ(parentDirOf(c.appDir), QString(c.parent)) << c.appDir;
}

TEST(Folders, quorvexAboveTheExecutableIsRemovedFromBaseAndSuite)
{
    // A checkout inside a folder named Quorvex loses that piece: the tool's
    // folders are then wrong by design, which is why the run script refuses it.
    const QString parent = parentDirOf("/home/ana/Quorvex/build/suite/apps/Quorvex");
    EXPECT_EQ(parent, QString("/home/ana/Quorvex/build/suite/apps"));
    EXPECT_EQ(baseFolderOf(parent), QString("/home/ana/build/suite/apps"));
    EXPECT_EQ(suiteFolderOf(baseFolderOf(parent)), QString("/home/ana/build/suite/apps/../"));
    // Every occurrence goes, also inside longer names; lower case stays.
    EXPECT_EQ(baseFolderOf("/x/QuorvexData/Quorvex/quorvex"), QString("/xData/quorvex"));
    EXPECT_EQ(baseFolderOf("/opt/suite/apps"), QString("/opt/suite/apps"));
}

TEST(Folders, collectionRootIsBesideTheAppsFolder_orPerUserForAnInstalledSuite)
{
    EXPECT_EQ(virtualCameraRootOf("/opt/suite/apps"), QString("/opt/suite/apps/../common/VirtualCamera"));
    const struct { const char* name; const char* appsBelowTemp; const char* appsAbsolute; bool inSuite; } cases[] = {
        {"writable build tree", "build/suite/apps", "", true},
        {"root made on first use", "fresh/apps", "", true},
        {"package", "", "/usr/lib/quorvex/apps", false},
        {"cmake --install", "", "/usr/local/lib/quorvex/apps", false},
        {"a file where folders should be", "", "/dev/null/quorvex/apps", false},
    };
    const QString perUser = "/home/u/.local/share/ZELTA/VirtualCamera";
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        QTemporaryDir temp;
        QString apps = c.appsAbsolute;
        if (*c.appsBelowTemp) {
            apps = temp.path() + "/" + c.appsBelowTemp;
            ASSERT_TRUE(QDir().mkpath(apps));
        }
        EXPECT_EQ(suiteHoldsCollections(apps), c.inSuite);
        EXPECT_EQ(collectionRootOf(apps, perUser), c.inSuite ? virtualCameraRootOf(apps) : perUser);
    }
}

TEST(Folders, sharedToolsFollowEnvironmentOverrides)
{
    const struct { const char* name; QString (*path)(); } folders[] = {
        {"QUORVEX_USER_DATA", XQInterface::userDataPath}, {"QUORVEX_PROGRAM_DATA", XQInterface::programDataPath},
        {"QUORVEX_READONLY_CFG", XQInterface::readonlyCfgPath}, {"QUORVEX_SYSTEM_TEMP", XQInterface::systemTemp}};
    for (const auto& folder : folders) {
        qputenv(folder.name, "/tmp/q-override");
        EXPECT_EQ(folder.path(), QString("/tmp/q-override")) << folder.name;
        qunsetenv(folder.name);
    }
}

TEST(Folders, sharedToolsDefaultBelowXdgHomes)
{
    qputenv("XDG_DATA_HOME", "/tmp/xdg-data");
    qputenv("XDG_CONFIG_HOME", "/tmp/xdg-config");
    qputenv("XDG_CACHE_HOME", "relative/is/ignored");
    EXPECT_EQ(XQInterface::userDataPath(), QString("/tmp/xdg-data/ZELTA"));
    EXPECT_EQ(XQInterface::programDataPath(), QString("/tmp/xdg-config/ZELTA"));
    EXPECT_EQ(XQInterface::systemTemp(), QDir::homePath() + "/.cache/ZELTA");
    // The read-only configuration sits in the suite beside the apps folder.
    EXPECT_TRUE(XQInterface::readonlyCfgPath().endsWith("/common/config"));
}
