// The store's configuration file: what a new camera's group looks like on
// disk, the model table behind its version text, and reading the list back.

#include "QtPrinters.h"
#include "FilePermissions.h"
#include "TestFiles.h"
#include "StorePaths.h"
#include "SupportedModels.h"
#include "VirtualCameraConfig.h"
#include "VirtualCameraCreation.h"
#include "VirtualCameraList.h"

#include <QRegularExpression>
#include <QSettings>
#include <QTemporaryDir>
#include <QtCore>

#include <gtest/gtest.h>

#include <memory>
#include <sys/stat.h>

using namespace VirtualStore;

namespace {

struct GeneratedIdentity {
    QString strMac;
    QString strIp;
};

// The MAC and address are random; take them from the file and check their
// form, so the rest can be compared byte for byte.
GeneratedIdentity TakeIdentity(const QByteArray& bytes, const QString& strGroup)
{
    const QString text = QString::fromUtf8(bytes);
    const int nStart = text.indexOf("[" + strGroup + "]");
    const QString section = text.mid(nStart, text.indexOf("\n\n", nStart) - nStart);
    const QRegularExpression mac("\nnMacAddrHigh=([0-9A-F]{8})\n");
    const QRegularExpression ip("\nnCurrentIp=(a4034[0-9a-f]{2})\n");
    return {mac.match(section).captured(1), ip.match(section).captured(1)};
}

QByteArray ExpectedGroup(const QString& strGroup, const QString& strModel, const QString& strVersion,
                         const GeneratedIdentity& identity)
{
    // The settings class writes the keys of a new group sorted by name.
    return QString("[%1]\n"
                   "bIsConnect=0\n"
                   "chDeviceVersion=%2\n"
                   "chManufacturerName=GEV\n"
                   "chManufacturerSpecificInfo=GEV\n"
                   "chModelName=%3\n"
                   "chSerialNumber=%1\n"
                   "chUserDefinedName=\n"
                   "nCurrentIp=%4\n"
                   "nCurrentSubNetMask=ffffff00\n"
                   "nDefultGateWay=a4034fe\n"
                   "nIpCfgCurrent=80000005\n"
                   "nIpCfgOption=80000007\n"
                   "nMacAddrHigh=%5\n"
                   "nMacAddrLow=%5\n"
                   "nMajorVer=2\n"
                   "nMinorVer=0\n"
                   "nNetExport=a403418\n"
                   "nTLayerType=1\n")
        .arg(strGroup, strVersion, strModel, identity.strIp, identity.strMac)
        .toUtf8();
}

const QByteArray kGlobal = "[Global]\nTriggerIntervalTime=2000\nVirtualMode=1\n";

} // namespace

class VirtualCameraConfigTest : public ::testing::Test {
protected:
    void SetUp() override;
    std::unique_ptr<QTemporaryDir> m_pDir;
    QString ConfigPath() const { return m_pDir->path() + "/VirtualCameraConfig.ini"; }
    // Global, then each group with exact texts, separated by a blank line.
};

void VirtualCameraConfigTest::SetUp()
{
    m_pDir = std::make_unique<QTemporaryDir>();
    ASSERT_TRUE(m_pDir->isValid());
}

TEST_F(VirtualCameraConfigTest, twoCamerasOfOneModel_shareModelAndVersionButNotSerial)
{
    SupportedModelTable models;
    {
        QSettings settings(ConfigPath(), QSettings::IniFormat);
        settings.setIniCodec("utf-8");
        writeVirtualCameraGroup(settings, "Vir10000001", "QVX-ID3160C", models);
        writeVirtualCameraGroup(settings, "Vir10000002", "QVX-ID3160C", models);
    }
    const QByteArray bytes = ReadAll(ConfigPath());
    const QByteArray expected = kGlobal + "\n"
        + ExpectedGroup("Vir10000001", "QVX-ID3160C", "V3.4.0.R 240902", TakeIdentity(bytes, "Vir10000001"))
        + "\n"
        + ExpectedGroup("Vir10000002", "QVX-ID3160C", "V3.4.0.R 240902", TakeIdentity(bytes, "Vir10000002"));
    ASSERT_EQ(bytes, expected);
}

TEST_F(VirtualCameraConfigTest, addingToAnEditedFile_rewritesGlobalAndKeepsOtherGroups)
{
    ASSERT_TRUE(WriteFile(ConfigPath(), "[Global]\nVirtualMode=0\nTriggerIntervalTime=5\n\n"
                                               "[Vir00000001]\nchModelName=Old\n"));
    SupportedModelTable models;
    {
        std::unique_ptr<QSettings> settings(openVirtualCameraSettings(ConfigPath(), nullptr));
        writeVirtualCameraGroup(*settings, "Vir00000002", "QVX-ID1003M", models);
    }
    QSettings reread(ConfigPath(), QSettings::IniFormat);
    ASSERT_EQ(reread.value("Global/VirtualMode").toString(), QString("1"));
    ASSERT_EQ(reread.value("Global/TriggerIntervalTime").toString(), QString("2000"));
    ASSERT_EQ(reread.value("Vir00000001/chModelName").toString(), QString("Old"));
    ASSERT_EQ(reread.value("Vir00000002/chSerialNumber").toString(), QString("Vir00000002"));
}

TEST_F(VirtualCameraConfigTest, unknownModel_writesEmptyVersionAndGainsAnEmptyRow)
{
    SupportedModelTable models;
    const int nRows = models.size();
    {
        QSettings settings(ConfigPath(), QSettings::IniFormat);
        writeVirtualCameraGroup(settings, "Vir12345678", "Unlisted-ID", models);
    }
    ASSERT_TRUE(ReadAll(ConfigPath()).contains("\nchDeviceVersion=\n"));
    ASSERT_EQ(models.size(), nRows + 1);
    ASSERT_TRUE(models.rows().contains("Unlisted-ID"));
    ASSERT_EQ(models.rows().value("Unlisted-ID"), QString());
}

TEST_F(VirtualCameraConfigTest, configFileWritability)
{
    ASSERT_TRUE(isConfigFileWritable(ConfigPath())) << "a missing file is created later, so it passes";
    ASSERT_TRUE(WriteFile(ConfigPath(), "[Global]\nVirtualMode=1\n"));
    ASSERT_TRUE(isConfigFileWritable(ConfigPath()));
    ASSERT_EQ(ReadAll(ConfigPath()), QByteArray("[Global]\nVirtualMode=1\n"));

    ASSERT_TRUE(QDir().mkpath(m_pDir->path() + "/folder.ini"));
    ASSERT_TRUE(!isConfigFileWritable(m_pDir->path() + "/folder.ini"));

    ASSERT_TRUE(::chmod(QFile::encodeName(ConfigPath()).constData(), 0444) == 0);
    const xqtest::FilePermissionsEnforced permissions;
    ASSERT_TRUE(permissions.isActive()) << "could not drop the capabilities that override file permissions";
    ASSERT_TRUE(!isConfigFileWritable(ConfigPath()));
    ASSERT_EQ(ReadAll(ConfigPath()), QByteArray("[Global]\nVirtualMode=1\n"));
}

TEST_F(VirtualCameraConfigTest, listReading_ordersGroupsAsTextAndSkipsWhatIsNotACamera)
{
    ASSERT_TRUE(WriteFile(ConfigPath(), "[Vir2]\nchModelName=Two\n"
                                               "[Global]\nVirtualMode=1\n"
                                               "[Vir10]\nbIsConnect=0\nchModelName=Ten\n"
                                               "[Vir3]\nbIsConnect=0\n"
                                               "[..]\nchModelName=Escape\n"
                                               "[Vir4]\nchModelName=\"A,B %1\"\n"));
    QSettings missing(m_pDir->path() + "/missing.ini", QSettings::IniFormat);
    ASSERT_TRUE(readVirtualCameraList(missing).isEmpty());
    QSettings settings(ConfigPath(), QSettings::IniFormat);
    settings.setIniCodec("utf-8");
    const QVector<VirtualCameraEntry> entries = readVirtualCameraList(settings);
    ASSERT_EQ(entries.size(), 3);
    ASSERT_EQ(entries[0].group, QString("Vir10"));
    ASSERT_EQ(entries[0].model, QString("Ten"));
    ASSERT_EQ(entries[1].group, QString("Vir2"));
    ASSERT_EQ(entries[2].model, QString("A,B %1"));
    ASSERT_EQ(virtualCameraEntryText(entries[2].model, entries[2].group), QString("A,B %1(Vir4)"));
}

TEST_F(VirtualCameraConfigTest, collectedModels_areTheVisibleSubfoldersByNameIgnoringCase)
{
    const QString root = m_pDir->path() + "/root";
    for (const char* name : {"b-ID", "A-ID", ".hidden", "c-ID"})
        ASSERT_TRUE(QDir().mkpath(root + "/" + name));
    ASSERT_TRUE(WriteFile(root + "/file.txt", "not a model"));
    bool bExists = false;
    ASSERT_EQ(listCollectedModels(root, bExists), QStringList({"A-ID", "b-ID", "c-ID"}));
    ASSERT_TRUE(bExists);
    ASSERT_TRUE(listCollectedModels(root + "/missing", bExists).isEmpty());
    ASSERT_TRUE(!bExists);
}

TEST_F(VirtualCameraConfigTest, planningACamera_cleansTheNameAndTakesTheIdFromTheClock)
{
    const auto plan = planVirtualCamera("A%B", "/root", 1731734400123);
    ASSERT_TRUE(plan.has_value());
    ASSERT_EQ(plan->model, QString("AB"));
    ASSERT_EQ(plan->sourceFolder, QString("/root/AB"));
    ASSERT_EQ(plan->id, QString("73440012"));
    ASSERT_EQ(plan->group, QString("Vir73440012"));
    ASSERT_EQ(plan->cameraFolder, storePath() + "/Cameras/Vir73440012");
    ASSERT_TRUE(!planVirtualCamera("", "/root", 1731734400123));
    ASSERT_TRUE(!planVirtualCamera("..", "/root", 1731734400123));
    ASSERT_TRUE(!planVirtualCamera("a/b", "/root", 1731734400123));
}

