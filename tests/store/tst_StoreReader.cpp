// The Qt-free reader that replaying programs use: it must read what the
// tool's settings object writes, list the cameras a store can serve and
// say clearly why it leaves any other camera out.

#include "StoreTestSupport.h"
#include "FileOperations.h"
#include "SupportedModels.h"
#include "VirtualCameraConfig.h"
#include "ini_file.h"
#include "store_reader.h"

#include <QSettings>
#include <QTemporaryDir>
#include <QtTest>

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

class StoreReaderTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> m_pDir;
    QString Path(const QString& strRelative) const { return m_pDir->path() + "/" + strRelative; }

    QString StoreDir() const { return Path("VirtualCamera"); }

    // A camera as "Add" makes it: a group written by the tool's own writer
    // and a copy of a collection folder.
    void AddCamera(QSettings& settings, const QString& strGroup, const QString& strModel, int nImages = 3)
    {
        VirtualStore::SupportedModelTable models;
        VirtualStore::writeVirtualCameraGroup(settings, strGroup, strModel, models);
        StoreTest::MakeCollectionFolder(Path("collected/" + strModel), strModel, nImages);
        QVERIFY(QDir().mkpath(StoreDir() + "/Cameras/" + strGroup));
        QVERIFY(VirtualStore::CopyDirectory(Path("collected/" + strModel), StoreDir() + "/Cameras/" + strGroup, true));
    }

private slots:
    void init()
    {
        m_pDir = std::make_unique<QTemporaryDir>();
        QVERIFY(m_pDir->isValid());
    }

    void valuesAndNamesWrittenByTheSettingsClass_readBackUnchanged_data()
    {
        QTest::addColumn<QString>("group");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("value");
        QTest::newRow("plain") << "Vir73440012" << "chModelName" << "QV-ID310-12M";
        QTest::newRow("inner space") << "Vir1" << "chDeviceVersion" << "V3.2.1.R 240315";
        QTest::newRow("empty") << "Vir1" << "chUserDefinedName" << "";
        QTest::newRow("outer spaces") << "Vir1" << "name" << "  padded  ";
        QTest::newRow("separators") << "Vir1" << "name" << "a;b,c=d";
        QTest::newRow("quotes and backslash") << "Vir1" << "name" << "say \"hi\" \\ C:\\dir\\";
        QTest::newRow("controls") << "Vir1" << "name" << QString("tab\there\nline\r\x01" "b\x7f");
        QTest::newRow("nul") << "Vir1" << "name" << QString("a") + QChar(0) + "1b";
        QTest::newRow("at sign") << "Vir1" << "name" << "@home";
        QTest::newRow("typed look-alike") << "Vir1" << "name" << "@Invalid()";
        // Characters beyond 16 bits survive in names only: the settings
        // class drops them from values when it writes.
        QTest::newRow("unicode") << QString::fromUtf8("Kamera Grüße \xF0\x9F\x93\xB7") << "名前 key"
                                 << QString::fromUtf8("Gerät 相机 ✓");
        QTest::newRow("escaped names") << "a%b[c]=d" << "k;e#y=1" << "v";
        QTest::newRow("General group") << "General" << "x" << "1";
    }

    void valuesAndNamesWrittenByTheSettingsClass_readBackUnchanged()
    {
        QFETCH(QString, group);
        QFETCH(QString, key);
        QFETCH(QString, value);
        {
            QSettings settings(Path("t.ini"), QSettings::IniFormat);
            settings.setIniCodec("utf-8");
            settings.setValue("Global/VirtualMode", 1);
            settings.setValue(group + "/" + key, value);
        }
        const IniDocument document = parseIni(StoreTest::ReadFile(Path("t.ini")).toStdString());
        QVERIFY(document.problems.empty());
        const IniEntry* entry = FindEntry(document, group, key);
        QVERIFY2(entry, StoreTest::ReadFile(Path("t.ini")).constData());
        QVERIFY(entry->value.isText());
        QCOMPARE(QString::fromStdString(entry->value.text()), value);
    }

    void listsTypedValuesAndSubgroups_keepTheirMeaning()
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
        const IniDocument document = parseIni(StoreTest::ReadFile(Path("t.ini")).toStdString());
        const IniEntry* list = FindEntry(document, "G", "list");
        QVERIFY(list);
        QVERIFY(list->value.kind == IniValue::Kind::List);
        QCOMPARE(list->value.items, (std::vector<std::string>{"x", "y z", "a,b"}));
        QVERIFY(FindEntry(document, "G", "invalid")->value.kind == IniValue::Kind::Invalid);
        const IniEntry* bytes = FindEntry(document, "G", "bytes");
        QVERIFY(bytes->value.kind == IniValue::Kind::Typed);
        QCOMPARE(bytes->value.text(), std::string("a\x01\xff", 3));
        QCOMPARE(FindEntry(document, "G", "sub/deep")->value.text(), std::string("3"));
        QCOMPARE(FindEntry(document, "", "top")->value.text(), std::string("2"));
    }

    void handEditedFiles_readLikeTheSettingsClassReadsThem()
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
        QVERIFY(document.problems.empty());
        QCOMPARE(FindEntry(document, "Vir1", "k1")->value.text(), std::string("v1"));
        QCOMPARE(FindEntry(document, "Vir1", "k2")->value.text(), std::string("AB"));
        QCOMPARE(FindEntry(document, "Vir1", "k3")->value.text(), std::string("first   second"));
        QCOMPARE(FindEntry(document, "Vir1", "k4")->value.text(), std::string("new"));
        QCOMPARE(FindEntry(document, "Vir1", "k5")->value.text(), std::string("merged"));
        QCOMPARE(document.sections.size(), std::size_t(3));
    }

    void malformedLines_areReportedWithTheirLineAndTheRestIsRead()
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
        QCOMPARE(document.problems.size(), std::size_t(4));
        for (std::size_t n = 0; n < 4; ++n)
            QCOMPARE(document.problems[n].line, n + 3);
        QVERIFY(FindEntry(document, "Vir1", "good"));
        QVERIFY(!FindEntry(document, "Vir1", "lost"));
        QVERIFY(FindEntry(document, "Vir3", "kept"));
    }

    void store_listsEachServableCameraWithIdentityAndFiles()
    {
        {
            QSettings settings(StoreDir() + "/VirtualCameraConfig.ini", QSettings::IniFormat);
            settings.setIniCodec("utf-8");
            AddCamera(settings, "Vir20000002", "QV-ID700-50M", 12);
            AddCamera(settings, "Vir10000001", "QVX-ID2040M");
        }
        const StoreListing listing = readStore(Utf8(StoreDir()));
        QVERIFY(listing.configFileFound);
        QVERIFY2(listing.problems.empty(), listing.problems.empty() ? "" : listing.problems[0].describe().c_str());
        QCOMPARE(listing.cameras.size(), std::size_t(2));

        const StoreCamera& first = listing.cameras[0];
        QCOMPARE(first.group, std::string("Vir10000001"));
        QCOMPARE(first.modelName, std::string("QVX-ID2040M"));
        QCOMPARE(first.deviceVersion, std::string("V3.2.1.R 240315"));
        QCOMPARE(first.configuredGateway, 0x0A4034FEu);
        QCOMPARE(first.mac[0], std::uint8_t(first.macHigh >> 8));
        QCOMPARE(first.mac[5], std::uint8_t(first.macLow));
        const std::string folder = Utf8(StoreDir()) + "/Cameras/Vir10000001";
        QCOMPARE(first.folder, folder);
        QCOMPARE(first.registerFile, folder + "/QVX-ID2040M_regfile.dat");
        QCOMPARE(first.images, (std::vector<std::string>{folder + "/Jpg/1.jpg", folder + "/Jpg/2.jpg",
                                                        folder + "/Jpg/3.jpg"}));

        const std::vector<std::string>& frames = listing.cameras[1].images;
        QCOMPARE(frames.size(), std::size_t(12));
        QVERIFY2(frames[9].size() > 6 && frames[9].substr(frames[9].size() - 6) == "10.jpg", "frames play by number");
    }

    void store_leavesOutBrokenCamerasAndSaysWhy()
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
        QVERIFY(QFile::remove(StoreDir() + "/Cameras/Vir00000006/QV-ID130-05M_regfile.dat"));
        QFile config(StoreDir() + "/VirtualCameraConfig.ini");
        QVERIFY(config.open(QIODevice::Append));
        config.write("\n[..]\nchModelName=QV-ID110-03M\nnMacAddrHigh=1\nnMacAddrLow=1\n");
        config.close();

        const StoreListing listing = readStore(Utf8(StoreDir()));
        QCOMPARE(listing.cameras.size(), std::size_t(1));
        QCOMPARE(listing.cameras[0].group, std::string("Vir00000001"));
        QVERIFY(HasProblem(listing, "Vir00000002", "chModelName is missing"));
        QVERIFY(HasProblem(listing, "Vir00000003", "nMacAddrHigh"));
        QVERIFY(HasProblem(listing, "Vir00000004", "no .jpg image"));
        QVERIFY(HasProblem(listing, "Vir00000005", "differs from the group name"));
        QVERIFY(HasProblem(listing, "Vir00000006", "QV-ID130-05M_regfile.dat is missing"));
        QVERIFY(HasProblem(listing, "Vir00000007", "nMacAddrHigh is missing"));
        QVERIFY(HasProblem(listing, "Vir00000008", "cannot name files"));
        QVERIFY(HasProblem(listing, "..", "cannot name a camera folder"));
        for (const StoreProblem& problem : listing.problems)
            QVERIFY(problem.describe().rfind("camera " + problem.group + " skipped: ", 0) == 0);
    }

    void store_withoutConfiguration_saysSoAndListsNothing()
    {
        const StoreListing listing = readStore(Utf8(Path("nowhere")));
        QVERIFY(!listing.configFileFound);
        QVERIFY(listing.cameras.empty());
        QCOMPARE(listing.problems.size(), std::size_t(1));
        QVERIFY(listing.problems[0].describe().find("VirtualCameraConfig.ini") != std::string::npos);
    }

    void defaultStore_followsTheSuiteOverrideThenTheCacheFolder()
    {
        qputenv("QUORVEX_SYSTEM_TEMP", "/srv/suite-temp");
        QCOMPARE(defaultStoreDirectory(), std::string("/srv/suite-temp/VirtualCamera"));
        qunsetenv("QUORVEX_SYSTEM_TEMP");
        const QByteArray cache = qgetenv("XDG_CACHE_HOME");
        qputenv("XDG_CACHE_HOME", "/var/cache-home");
        QCOMPARE(defaultStoreDirectory(), std::string("/var/cache-home/ZELTA/VirtualCamera"));
        qputenv("XDG_CACHE_HOME", "relative/ignored");
        QCOMPARE(defaultStoreDirectory(), qgetenv("HOME").toStdString() + "/.cache/ZELTA/VirtualCamera");
        qputenv("XDG_CACHE_HOME", cache);
    }

    void hexWords_acceptOneToEightDigits()
    {
        std::uint32_t value = 0;
        QVERIFY(parseHexWord("FFFFFFFF", value));
        for (const char* bad : {"", "123456789", "0x12", "-1"})
            QVERIFY2(!parseHexWord(bad, value), bad);
    }
};

QTEST_GUILESS_MAIN(StoreReaderTest)
#include "tst_StoreReader.moc"
