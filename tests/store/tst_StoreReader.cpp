// The Qt-free reader that replaying programs use: it must read what the
// tool's settings object writes, list the cameras a store can serve and
// say clearly why it leaves any other camera out.

#include "TableTests.h"
#include "QtPrinters.h"
#include "TestFiles.h"
#include "FileOperations.h"
#include "SupportedModels.h"
#include "VirtualCameraConfig.h"
#include "ini_file.h"
#include "store_reader.h"

#include <QSettings>
#include <QTemporaryDir>
#include <QtCore>

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <memory>

using namespace quorvex::store;

namespace {

std::string Utf8(const QString& text)
{
    return text.toStdString();
}

const IniEntry* FindEntry(const IniDocument& document, const QString& strGroup, const QString& strKey)
{
    const IniSection* section = document.find(Utf8(strGroup));
    return section ? section->find(Utf8(strKey)) : nullptr;
}

bool HasProblem(const StoreListing& listing, const std::string& group, const std::string& fragment)
{
    for (const StoreProblem& problem : listing.problems)
        if (problem.group == group && problem.message.find(fragment) != std::string::npos)
            return true;
    return false;
}

} // namespace

class StoreReaderTest : public ::testing::Test {
protected:
    void SetUp() override;
    std::unique_ptr<QTemporaryDir> m_pDir;
    QString Path(const QString& strRelative) const { return m_pDir->path() + "/" + strRelative; }
    QString StoreDir() const { return Path("VirtualCamera"); }
    // A camera as "Add" makes it: a group written by the tool's own writer
    // and a copy of a collection folder.
    void AddCamera(QSettings& settings, const QString& strGroup, const QString& strModel, int nImages = 3)
    {
        VirtualStore::SupportedModelTable models;
        VirtualStore::writeVirtualCameraGroup(settings, strGroup, strModel, models);
        MakeCollectionFolder(Path("collected/" + strModel), strModel, nImages);
        ASSERT_TRUE(QDir().mkpath(StoreDir() + "/Cameras/" + strGroup));
        ASSERT_TRUE(VirtualStore::CopyDirectory(Path("collected/" + strModel), StoreDir() + "/Cameras/" + strGroup, true));
    }
};

void StoreReaderTest::SetUp()
{
    m_pDir = std::make_unique<QTemporaryDir>();
    ASSERT_TRUE(m_pDir->isValid());
}

TEST_F(StoreReaderTest, valuesAndNamesWrittenByTheSettingsClass_readBackUnchanged)
{
    struct Row {
        std::string rowName;
        QString group, key, value;
    };
    forEachRow(std::vector<Row>{
                   {"plain", "Vir73440012", "chModelName", "QV-ID310-12M"},
                   {"inner space", "Vir1", "chDeviceVersion", "V3.2.1.R 240315"},
                   {"empty", "Vir1", "chUserDefinedName", ""},
                   {"outer spaces", "Vir1", "name", "  padded  "},
                   {"separators", "Vir1", "name", "a;b,c=d"},
                   {"quotes and backslash", "Vir1", "name", "say \"hi\" \\ C:\\dir\\"},
                   {"controls", "Vir1", "name", QString("tab\there\nline\r\x01" "b\x7f")},
                   {"nul", "Vir1", "name", QString("a") + QChar(0) + "1b"},
                   {"at sign", "Vir1", "name", "@home"},
                   {"typed look-alike", "Vir1", "name", "@Invalid()"},
                   // Characters beyond 16 bits survive in names only: the settings
                   // class drops them from values when it writes.
                   {"unicode", QString::fromUtf8("Kamera Grüße \xF0\x9F\x93\xB7"), "名前 key", QString::fromUtf8("Gerät 相机 ✓")},
                   {"escaped names", "a%b[c]=d", "k;e#y=1", "v"},
                   {"General group", "General", "x", "1"},
               },
               [&](const Row& row) {
        SetUp(); // a fresh fixture for every row
        {
            QSettings settings(Path("t.ini"), QSettings::IniFormat);
            settings.setIniCodec("utf-8");
            settings.setValue("Global/VirtualMode", 1);
            settings.setValue(row.group + "/" + row.key, row.value);
        }
        const IniDocument document = parseIni(ReadAll(Path("t.ini")).toStdString());
        ASSERT_TRUE(document.problems.empty());
        const IniEntry* entry = FindEntry(document, row.group, row.key);
        ASSERT_TRUE(entry) << ReadAll(Path("t.ini")).constData();
        ASSERT_TRUE(entry->value.isText());
        ASSERT_EQ(QString::fromStdString(entry->value.text()), row.value);
    });
}

TEST_F(StoreReaderTest, listsTypedValuesAndSubgroups_keepTheirMeaning)
{
    {
        QSettings settings(Path("t.ini"), QSettings::IniFormat);
        settings.setIniCodec("utf-8");
        settings.setValue("G/list", QStringList{"x", "y z", "a,b"});
        settings.setValue("G/invalid", QVariant());
        settings.setValue("G/bytes", QByteArray("a\x01\xff", 3));
        settings.setValue("G/sub/deep", 3);
        settings.setValue("top", 2);
    }
    const IniDocument document = parseIni(ReadAll(Path("t.ini")).toStdString());
    const IniEntry* list = FindEntry(document, "G", "list");
    ASSERT_TRUE(list);
    ASSERT_TRUE(list->value.kind == IniValue::Kind::List);
    ASSERT_EQ(list->value.items, (std::vector<std::string>{"x", "y z", "a,b"}));
    ASSERT_TRUE(FindEntry(document, "G", "invalid")->value.kind == IniValue::Kind::Invalid);
    const IniEntry* bytes = FindEntry(document, "G", "bytes");
    ASSERT_TRUE(bytes->value.kind == IniValue::Kind::Typed);
    ASSERT_EQ(bytes->value.text(), std::string("a\x01\xff", 3));
    ASSERT_EQ(FindEntry(document, "G", "sub/deep")->value.text(), std::string("3"));
    ASSERT_EQ(FindEntry(document, "", "top")->value.text(), std::string("2"));
}

TEST_F(StoreReaderTest, handEditedFiles_readLikeTheSettingsClassReadsThem)
{
    const IniDocument document = parseIni("\xEF\xBB\xBF; comment\r\n"
                                          "# another\r\n"
                                          "  [ Vir1 ]  \r\n"
                                          " k1 = v1 ; trailing comment\r\n"
                                          "k2=\\x41\\102\\q\r\n"
                                          "k3=first \\\r\n"
                                          "  second\r\n"
                                          "k4=old\r\n"
                                          "k4=new\r\n"
                                          "[Vir2]\n"
                                          "k=2\n"
                                          "[Vir1]\n"
                                          "k5=merged\n");
    ASSERT_TRUE(document.problems.empty());
    ASSERT_EQ(FindEntry(document, "Vir1", "k1")->value.text(), std::string("v1"));
    ASSERT_EQ(FindEntry(document, "Vir1", "k2")->value.text(), std::string("AB"));
    ASSERT_EQ(FindEntry(document, "Vir1", "k3")->value.text(), std::string("first   second"));
    ASSERT_EQ(FindEntry(document, "Vir1", "k4")->value.text(), std::string("new"));
    ASSERT_EQ(FindEntry(document, "Vir1", "k5")->value.text(), std::string("merged"));
    ASSERT_EQ(document.sections.size(), std::size_t(3));
}

TEST_F(StoreReaderTest, malformedLines_areReportedWithTheirLineAndTheRestIsRead)
{
    const IniDocument document = parseIni("[Vir1]\n"
                                          "good=1\n"
                                          "no equals sign\n"
                                          "open=\"never closed\n"
                                          "=no key\n"
                                          "[Vir2\n"
                                          "lost=1\n"
                                          "[Vir3]\n"
                                          "kept=1\n");
    ASSERT_EQ(document.problems.size(), std::size_t(4));
    for (std::size_t n = 0; n < 4; ++n)
        ASSERT_EQ(document.problems[n].line, n + 3);
    ASSERT_TRUE(FindEntry(document, "Vir1", "good"));
    ASSERT_TRUE(!FindEntry(document, "Vir1", "lost"));
    ASSERT_TRUE(FindEntry(document, "Vir3", "kept"));
}

TEST_F(StoreReaderTest, store_listsEachServableCameraWithIdentityAndFiles)
{
    {
        QSettings settings(StoreDir() + "/VirtualCameraConfig.ini", QSettings::IniFormat);
        settings.setIniCodec("utf-8");
        AddCamera(settings, "Vir20000002", "QV-ID700-50M", 12);
        AddCamera(settings, "Vir10000001", "QVX-ID2040M");
    }
    const StoreListing listing = readStore(Utf8(StoreDir()));
    ASSERT_TRUE(listing.configFileFound);
    ASSERT_TRUE(listing.problems.empty()) << (listing.problems.empty() ? "" : listing.problems[0].describe().c_str());
    ASSERT_EQ(listing.cameras.size(), std::size_t(2));

    const StoreCamera& first = listing.cameras[0];
    ASSERT_EQ(first.group, std::string("Vir10000001"));
    ASSERT_EQ(first.modelName, std::string("QVX-ID2040M"));
    ASSERT_EQ(first.deviceVersion, std::string("V3.2.1.R 240315"));
    ASSERT_EQ(first.configuredGateway, 0x0A4034FEu);
    ASSERT_EQ(first.mac[0], std::uint8_t(first.macHigh >> 8));
    ASSERT_EQ(first.mac[5], std::uint8_t(first.macLow));
    const std::string folder = Utf8(StoreDir()) + "/Cameras/Vir10000001";
    ASSERT_EQ(first.folder, folder);
    ASSERT_EQ(first.registerFile, folder + "/QVX-ID2040M_regfile.dat");
    ASSERT_EQ(first.images, (std::vector<std::string>{folder + "/Jpg/1.jpg", folder + "/Jpg/2.jpg",
                                                    folder + "/Jpg/3.jpg"}));

    const std::vector<std::string>& frames = listing.cameras[1].images;
    ASSERT_EQ(frames.size(), std::size_t(12));
    ASSERT_TRUE(frames[9].size() > 6 && frames[9].substr(frames[9].size() - 6) == "10.jpg") << "frames play by number";
}

TEST_F(StoreReaderTest, store_leavesOutBrokenCamerasAndSaysWhy)
{
    {
        QSettings settings(StoreDir() + "/VirtualCameraConfig.ini", QSettings::IniFormat);
        settings.setIniCodec("utf-8");
        AddCamera(settings, "Vir00000001", "QV-ID110-03M");
        AddCamera(settings, "Vir00000002", "QV-ID110-05M");
        AddCamera(settings, "Vir00000003", "QV-ID120-03M");
        AddCamera(settings, "Vir00000004", "QV-ID120-05M", 0);
        AddCamera(settings, "Vir00000005", "QV-ID130-03M");
        AddCamera(settings, "Vir00000006", "QV-ID130-05M");
        settings.remove("Vir00000002/chModelName");
        settings.setValue("Vir00000003/nMacAddrHigh", "not hex");
        settings.setValue("Vir00000005/chSerialNumber", "Vir99999999");
        settings.setValue("Vir00000007/chModelName", "QV-ID200-13M");
        settings.setValue("Vir00000008/chModelName", "../../escape");
    }
    ASSERT_TRUE(QFile::remove(StoreDir() + "/Cameras/Vir00000006/QV-ID130-05M_regfile.dat"));
    QFile config(StoreDir() + "/VirtualCameraConfig.ini");
    ASSERT_TRUE(config.open(QIODevice::Append));
    config.write("\n[..]\nchModelName=QV-ID110-03M\nnMacAddrHigh=1\nnMacAddrLow=1\n");
    config.close();

    const StoreListing listing = readStore(Utf8(StoreDir()));
    ASSERT_EQ(listing.cameras.size(), std::size_t(1));
    ASSERT_EQ(listing.cameras[0].group, std::string("Vir00000001"));
    ASSERT_TRUE(HasProblem(listing, "Vir00000002", "chModelName is missing"));
    ASSERT_TRUE(HasProblem(listing, "Vir00000003", "nMacAddrHigh"));
    ASSERT_TRUE(HasProblem(listing, "Vir00000004", "no .jpg image"));
    ASSERT_TRUE(HasProblem(listing, "Vir00000005", "differs from the group name"));
    ASSERT_TRUE(HasProblem(listing, "Vir00000006", "QV-ID130-05M_regfile.dat is missing"));
    ASSERT_TRUE(HasProblem(listing, "Vir00000007", "nMacAddrHigh is missing"));
    ASSERT_TRUE(HasProblem(listing, "Vir00000008", "cannot name files"));
    ASSERT_TRUE(HasProblem(listing, "..", "cannot name a camera folder"));
    for (const StoreProblem& problem : listing.problems)
        ASSERT_TRUE(problem.describe().rfind("camera " + problem.group + " skipped: ", 0) == 0);
}

TEST_F(StoreReaderTest, store_withoutConfiguration_saysSoAndListsNothing)
{
    const StoreListing listing = readStore(Utf8(Path("nowhere")));
    ASSERT_TRUE(!listing.configFileFound);
    ASSERT_TRUE(listing.cameras.empty());
    ASSERT_EQ(listing.problems.size(), std::size_t(1));
    ASSERT_TRUE(listing.problems[0].describe().find("VirtualCameraConfig.ini") != std::string::npos);
}

TEST_F(StoreReaderTest, defaultStore_followsTheSuiteOverrideThenTheCacheFolder)
{
    qputenv("QUORVEX_SYSTEM_TEMP", "/srv/suite-temp");
    ASSERT_EQ(defaultStoreDirectory(), std::string("/srv/suite-temp/VirtualCamera"));
    qunsetenv("QUORVEX_SYSTEM_TEMP");
    const QByteArray cache = qgetenv("XDG_CACHE_HOME");
    qputenv("XDG_CACHE_HOME", "/var/cache-home");
    ASSERT_EQ(defaultStoreDirectory(), std::string("/var/cache-home/ZELTA/VirtualCamera"));
    qputenv("XDG_CACHE_HOME", "relative/ignored");
    ASSERT_EQ(defaultStoreDirectory(), qgetenv("HOME").toStdString() + "/.cache/ZELTA/VirtualCamera");
    qputenv("XDG_CACHE_HOME", cache);
}

TEST_F(StoreReaderTest, hexWords_acceptOneToEightDigits)
{
    std::uint32_t value = 0;
    ASSERT_TRUE(parseHexWord("FFFFFFFF", value));
    for (const char* bad : {"", "123456789", "0x12", "-1"})
        ASSERT_TRUE(!parseHexWord(bad, value)) << bad;
}

