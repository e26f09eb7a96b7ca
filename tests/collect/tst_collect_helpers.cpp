// The collection engine's pieces that need no device: progress arithmetic,
// CSV bytes, symbology names, moving files, the ignore list, device listing,
// staging folders (replacing a collection whole, sweeping only ended jobs'),
// and jobs stopped by their model name before any device is touched. One
// table per function.

#include "TableTests.h"
#include "ExchangeRenameRefused.h"
#include "QtPrinters.h"
#include "CaptureCsv.h"
#include "CollectProgress.h"
#include "CollectedFiles.h"
#include "DeviceListing.h"
#include "IgnoreList.h"
#include "QCollectInfoThread.h"
#include "StagingFolder.h"
#include "SuiteLayout.h"
#include "TestFiles.h"
#include "TestLog.h"

#include <QCoreApplication>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include <climits>
#include <cerrno>
#include <cstring>
#include <memory>

namespace {

struct Code {
    const char* text;
    int symbology;
    int corners[8];
};

std::unique_ptr<XQ_CODEREADER_FRAME_INFO> FrameWith(const QVector<Code>& codes)
{
    auto frame = std::make_unique<XQ_CODEREADER_FRAME_INFO>();
    frame->nCodeNum = static_cast<unsigned int>(codes.size());
    for (int i = 0; i < codes.size(); ++i) {
        XQ_CODEREADER_CODE_INFO& info = frame->stCodeInfo[i];
        std::strncpy(info.chCode, codes[i].text, sizeof info.chCode - 1);
        info.nCodeLen = static_cast<unsigned int>(std::strlen(info.chCode));
        info.nSymbology = codes[i].symbology;
        for (int p = 0; p < 4; ++p) {
            info.stCornerPt[p].nX = codes[i].corners[2 * p];
            info.stCornerPt[p].nY = codes[i].corners[2 * p + 1];
        }
    }
    return frame;
}

XQ_CODEREADER_DEVICE_INFO RecordOf(const QByteArray& model, const QByteArray& serial)
{
    XQ_CODEREADER_DEVICE_INFO record{};
    record.nTLayerType = XQ_TLAYER_GIGE;
    std::memcpy(record.stGigE.chModelName, model.constData(), std::min<size_t>(model.size(), 63));
    std::memcpy(record.stGigE.chSerialNumber, serial.constData(), std::min<size_t>(serial.size(), 63));
    return record;
}

struct JobResult {
    QStringList statuses;
    int finishes = 0;
    int progresses = 0;
};

// Runs one job to its end from folder; a refused model name stops it before
// any device is touched.
JobResult RunJob(const XQ_CODEREADER_DEVICE_INFO& record, const QString& folder)
{
    const QString previous = QDir::currentPath();
    QDir::setCurrent(folder);
    QCollectInfoThread job;
    job.SetDeviceInfo(record);
    QSignalSpy status(&job, &QCollectInfoThread::SigDeviceCollectStatus);
    QSignalSpy finish(&job, &QCollectInfoThread::SigDeviceCollectFinish);
    QSignalSpy progress(&job, &QCollectInfoThread::SigDeviceCollectProgress);
    job.start();
    job.wait();
    QCoreApplication::processEvents();
    QDir::setCurrent(previous);
    JobResult result;
    const QString serial = QString::fromLatin1(reinterpret_cast<const char*>(record.stGigE.chSerialNumber));
    for (const QList<QVariant>& arguments : status)
        result.statuses.append((arguments.at(0).toString() == serial ? QString() : QStringLiteral("<wrong serial> "))
                               + arguments.at(1).toString());
    result.finishes = finish.count();
    result.progresses = progress.count();
    return result;
}

const QStringList kRefused{QStringLiteral("Invalid device model name!")};

} // namespace

TEST(TestCollectHelpers, progress)
{
    // 7/10 and 9/10 in float land just below the exact value: 72 and 90,
    // where all-double arithmetic gives 73 and 91. A single feature reports 10.
    const struct {
        bool enumPass;
        int index, bools, enums, percent;
    } cases[] = {{false, 1, 3, 2, 28}, {true, 1, 3, 2, 82}, {false, 7, 10, 0, 72},
                 {true, 2, 7, 3, 90},  {false, 0, 1, 0, 10}, {true, 0, 0, 1, 10}};
    for (const auto& c : cases) {
        const int percent = c.enumPass ? collect::enumPassProgress(c.index, c.bools, c.enums)
                                       : collect::boolPassProgress(c.index, c.bools, c.enums);
        ASSERT_TRUE(percent == c.percent) << qPrintable(QStringLiteral("%1 %2 of %3+%4 gave %5")
                                                      .arg(c.enumPass ? "enum" : "bool")
                                                      .arg(c.index).arg(c.bools).arg(c.enums).arg(percent));
    }
    // Never backwards, never past 99, for every mix up to 40 of each.
    for (int bools = 0; bools <= 40; ++bools) {
        for (int enums = 0; enums <= 40; ++enums) {
            int previous = collect::kProgressAfterRecording;
            for (int i = 0; i < bools + enums; ++i) {
                const int value = i < bools ? collect::boolPassProgress(i, bools, enums)
                                            : collect::enumPassProgress(i - bools, bools, enums);
                ASSERT_TRUE(value >= previous && value <= collect::kProgressAfterPasses);
                previous = value;
            }
        }
    }
}

TEST(TestCollectHelpers, csvBytes)
{
    ASSERT_EQ(QByteArray(collect::kCsvHeader), QByteArray("TriggerIndex,FrameNum,PicPath,Code1,CodeType1,CodeCoordinate1,Code2,CodeType2,"
                        "CodeCoordinate2,Code3,CodeType3,CodeCoordinate3,Code4,CodeType4,CodeCoordinate4,"
                        "Code5,CodeType5,CodeCoordinate5,Code6,CodeType6,CodeCoordinate6\n"));
    const struct {
        quint32 frame;
        QVector<Code> codes;
        QByteArray row;
    } cases[] = {
        {4294967295u, {}, "1,4294967295,4294967295.jpg\r\n"},
        {12,
         {{"a", 1, {1, 2, 3, 4, 5, 6, 7, 8}}, {"b", 13, {0, 0, 0, 0, 0, 0, 0, 0}}, {"c", 128, {10, 20, 30, 40, 50, 60, 70, 80}},
          {"d", 999, {1, 1, 1, 1, 1, 1, 1, 1}}, {"e", 140, {2, 2, 2, 2, 2, 2, 2, 2}}, {"f", 134, {3, 3, 3, 3, 3, 3, 3, 3}}},
         "1,12,12.jpg,a,DM,1.2.3.4.5.6.7.8,b,EAN13,0.0.0.0.0.0.0.0,c,CODE128,10.20.30.40.50.60.70.80,"
         "d,NONE,1.1.1.1.1.1.1.1,e,MicroQR,2.2.2.2.2.2.2.2,f,MicroPDF417,3.3.3.3.3.3.3.3\r\n"},
        {2, {{"X", 8, {-3, -40, INT_MAX, 0, INT_MIN, 5, 6, -7}}}, "1,2,2.jpg,X,EAN8,-3.-40.2147483647.0.-2147483648.5.6.-7\r\n"},
        // Code texts are text, never placeholders.
        {5, {{"%1%2", 8, {1, 2, 3, 4, 5, 6, 7, 8}}, {"%11", 8, {0, 0, 0, 0, 0, 0, 0, 0}}},
         "1,5,5.jpg,%1%2,EAN8,1.2.3.4.5.6.7.8,%11,EAN8,0.0.0.0.0.0.0.0\r\n"},
    };
    for (const auto& c : cases)
        ASSERT_EQ(collect::csvRowOf(c.frame, *FrameWith(c.codes)), c.row);

    // Nine codes: the first six are written and the count is cut in place,
    // as it is for a count far beyond the record's room.
    auto frame = FrameWith(QVector<Code>(9, {"c", 39, {1, 2, 3, 4, 5, 6, 7, 8}}));
    std::strcpy(frame->stCodeInfo[6].chCode, "c7");
    const QByteArray row = collect::csvRowOf(3, *frame);
    ASSERT_EQ(row, "1,3,3.jpg" + QByteArray(",c,CODE39,1.2.3.4.5.6.7.8").repeated(6) + "\r\n");
    ASSERT_EQ(frame->nCodeNum, 6u);
    frame->nCodeNum = 100000;
    ASSERT_EQ(collect::csvRowOf(3, *frame), row);

    // A code text without a NUL stays inside its buffer.
    std::memset(frame->stCodeInfo[0].chCode, 'Z', sizeof frame->stCodeInfo[0].chCode);
    frame->nCodeNum = 1;
    ASSERT_EQ(collect::csvRowOf(1, *frame).count('Z'), XQ_CODEREADER_CODE_TEXT_SIZE);
}

TEST(TestCollectHelpers, symbologyNames)
{
    // Listed at both ends and inside; zero, negative, a gap and past the last.
    const QVector<QPair<int, const char*>> names = {
        {1, "DM"}, {2, "QR"}, {128, "CODE128"}, {134, "MicroPDF417"}, {150, "MAXICODE"},
        {0, "NONE"}, {-1, "NONE"}, {INT_MIN, "NONE"}, {129, "NONE"}, {151, "NONE"}};
    for (const auto& [number, name] : names) {
        QString result = QStringLiteral("stale");
        QCollectInfoThread::GetCodeTypeName(number, result);
        ASSERT_TRUE(result == QLatin1String(name)) << qPrintable(QStringLiteral("%1 named %2").arg(number).arg(result));
    }
}

TEST(TestCollectHelpers, moveFile)
{
    // Paths below a fresh folder that has an empty "sub"; "" for no file.
    const struct {
        const char* source;
        QByteArray sourceBytes;
        const char* target; // as passed: backslashes count as slashes
        QByteArray targetBefore;
        bool overwrite, moved;
        QByteArray targetAfter, sourceAfter;
    } cases[] = {
        {"/a.dat", "abc", "\\a.dat", "", true, true, "abc", "abc"},                 // same path
        {"/none.dat", "", "/b.dat", "old", true, false, "old", "<missing>"},        // no source
        {"/a.dat", "new", "\\sub\\a.dat", "old", true, true, "new", "<missing>"},  // replaced
        {"/a.dat", "new", "/b.dat", "old", false, false, "old", "new"},            // both kept
        {"/a.dat", "keep", "/no/such/folder/a.dat", "", true, false, "<missing>", "keep"}, // copy fails
    };
    for (const auto& c : cases) {
        QTemporaryDir dir;
        ASSERT_TRUE(QDir(dir.path()).mkdir(QStringLiteral("sub")));
        const QString source = dir.path() + QLatin1String(c.source);
        const QString target = dir.path() + QLatin1String(c.target);
        const QString targetOnDisk = QString(target).replace(QLatin1Char('\\'), QLatin1Char('/'));
        ASSERT_TRUE(c.sourceBytes.isEmpty() || WriteFile(source, c.sourceBytes));
        ASSERT_TRUE(c.targetBefore.isEmpty() || WriteFile(targetOnDisk, c.targetBefore));
        ASSERT_EQ(QCollectInfoThread::MoveFileToPath(source, target, c.overwrite), c.moved);
        ASSERT_EQ(ReadAll(targetOnDisk, "<missing>"), c.targetAfter);
        ASSERT_EQ(ReadAll(source, "<missing>"), c.sourceAfter);
    }
}

TEST(TestCollectHelpers, ignoreList)
{
    using Outcome = collect::IgnoreListContent::Outcome;
    const struct {
        QByteArray json;
        Outcome outcome;
        QStringList patterns;
        QStringList skipped;
    } lists[] = {
        {R"({"Other": 1, "IgnoreNodes": ["A", "B", "A"]})", Outcome::Read, {"A", "B", "A"}, {}},
        {R"({"IgnoreNodes": []})", Outcome::Read, {}, {}},
        // Elements that are not strings are left out, not made empty patterns.
        {R"({"IgnoreNodes": [1, null, {"a":1}, ["x"], true, "Gain"]})", Outcome::Read, {"Gain"},
         {"element 0: 1", "element 1: null", R"(element 2: {"a":1})", R"(element 3: ["x"])", "element 4: true"}},
        {R"({"IgnoreNodes": [""]})", Outcome::Read, {""}, {}},
        {"{\"IgnoreNodes\": [\"Gr\xc3\xbc\xc3\x9f" "e\"]}", Outcome::Read, {QStringLiteral("Gr\u00fc\u00dfe")}, {}},
        {R"({"IgnoreNodes": "DeviceReset"})", Outcome::NoPatternArray, {}, {}},
        {R"([{"IgnoreNodes": ["A"]}])", Outcome::NoPatternArray, {}, {}},
        {"{\"IgnoreNodes\": [\"A\",", Outcome::NotJson, {}, {}},
        {QByteArray(), Outcome::NotJson, {}, {}},
    };
    for (const auto& list : lists) {
        const collect::IgnoreListContent content = collect::parseIgnoreList(list.json);
        ASSERT_TRUE(content.outcome == list.outcome) << list.json.constData();
        ASSERT_EQ(content.patterns, list.patterns);
        ASSERT_EQ(content.skippedElements, list.skipped);
        ASSERT_EQ(content.parseError.isEmpty(), list.outcome != Outcome::NotJson);
    }

    // Patterns match as case-sensitive substrings; the empty pattern matches
    // every name.
    const QSet<QString> gain{QStringLiteral("Gain")}, empty{QString()}, none;
    const struct {
        const char* name;
        const QSet<QString>& patterns;
        bool matches;
    } names[] = {{"Gain", gain, true},   {"DigitalGainRaw", gain, true}, {"gainauto", gain, false},
                 {"Width", empty, true}, {"", empty, true},              {"Exposure", none, false}};
    for (const auto& n : names)
        ASSERT_TRUE((collect::matchingIgnorePattern(QString::fromLatin1(n.name), n.patterns) != nullptr) == n.matches) << n.name;
}

TEST(TestCollectHelpers, deviceListing)
{
    // Code readers are listed; virtual cameras ("Vir" in the serial, case
    // matters) and devices without "ID" in the model are not.
    const struct {
        const char* serial;
        const char* model;
        bool listed;
    } records[] = {{"QD24A10000", "QVX-ID2040M", true}, {"AB12Vir34", "QVX-ID2040M", false},
                   {"AB12vir34", "QVX-ID2040M", true},  {"QD1", "QVX-id2040M", false},
                   {"QD1", "Fake camera", false},       {"", "", false}};
    for (const auto& r : records)
        ASSERT_TRUE(collect::isListedCodeReader(RecordOf(r.model, r.serial)) == r.listed) << r.serial;

    XQ_CODEREADER_DEVICE_INFO full{};
    std::memset(full.stGigE.chModelName, 'I', sizeof full.stGigE.chModelName);
    ASSERT_EQ(collect::deviceText(full.stGigE.chModelName).size(), 64);
    ASSERT_EQ(collect::ipAddressText(0x0A403402u), QStringLiteral("10.64.52.2"));
}

TEST(TestCollectHelpers, stagingFolder_replacesCollectionWhole_sweepsEndedJobsOnly)
{
    QTemporaryDir dir;
    const QString root = dir.path();
    QString error;
    // {a collection there before; how the job ends}: committed, the job's
    // files are the collection and nothing else is left; abandoned, or
    // committed after its folder vanished, the old one stays byte for byte
    // and the job's folder is gone.
    enum Ending { Abandoned, Committed, CommittedWithoutFolder };
    const auto replaceWhole = [&] {
        for (const bool before : {false, true}) {
            for (const Ending ending : {Abandoned, Committed, CommittedWithoutFolder}) {
                QDir(root + "/ID%1").removeRecursively();
                if (before) {
                    ASSERT_TRUE(WriteFile(root + "/ID%1/Jpg/9.jpg", "old"));
                }
                {
                    const auto job = collect::StagingFolder::create(root, QStringLiteral("ID%1"), &error);
                    ASSERT_TRUE(job) << qPrintable(error);
                    ASSERT_TRUE(collect::isStagingFolderName(QFileInfo(job->path()).fileName()));
                    ASSERT_TRUE(QFileInfo(job->path()).isHidden());
                    ASSERT_TRUE(WriteFile(job->path() + "/Jpg/1.jpg", "new"));
                    if (ending == CommittedWithoutFolder) {
                        ASSERT_TRUE(QDir(job->path()).removeRecursively());
                    }
                    if (ending != Abandoned) {
                        ASSERT_EQ(job->commit(&error), ending == Committed) << qPrintable(error);
                    }
                }
                const QStringList expected = ending == Committed ? QStringList{root + "/ID%1", root + "/ID%1/Jpg", root + "/ID%1/Jpg/1.jpg"}
                    : before ? QStringList{root + "/ID%1", root + "/ID%1/Jpg", root + "/ID%1/Jpg/9.jpg"}
                             : QStringList{};
                ASSERT_EQ(FilesBelow(root), expected) << before << ending;
                ASSERT_EQ(ReadAll(root + "/ID%1/Jpg/9.jpg", "<missing>"), before && ending != Committed ? "old" : "<missing>");
            }
        }
    };
    replaceWhole();
    // The same where the file system cannot exchange two folders in one step.
    std::thread([&] {
        ASSERT_TRUE(xqtest::refuseExchangeRenamesOnThisThread()) << "seccomp filter refused: " << std::strerror(errno);
        replaceWhole();
    }).join();

    // A running job's folder (locked) survives every sweep; an ended job's
    // is swept, by model or all at once. Collection folders are not touched.
    QDir(root + "/ID%1").removeRecursively();
    const auto running = collect::StagingFolder::create(root, QStringLiteral("ID100"), &error);
    ASSERT_TRUE(running);
    for (const QString& path : {root + "/.ID100.collecting-1-1/x", root + "/.ID200.collecting-1-1/x", root + "/ID100/x"})
        ASSERT_TRUE(WriteFile(path, "x"));
    ASSERT_EQ(collect::deleteCollectedFilesOf(root, QStringLiteral("ID100")), QStringList{root + "/.ID100.collecting-1-1"});
    ASSERT_EQ(collect::sweepAbandonedStagingFolders(root), QStringList{root + "/.ID200.collecting-1-1"});
    ASSERT_EQ(FilesBelow(root), (QStringList{running->path(), root + "/ID100", root + "/ID100/x"}));
}

TEST(TestCollectHelpers, job_readsIgnoreListFromCurrentFolder)
{
    // {file content, or none; the patterns it logs; the error it logs, if any}
    const struct {
        QByteArray content;
        QStringList nodes;
        QString logged;
    } files[] = {
        {R"({"IgnoreNodes": ["DeviceReset", "FileAccess", "DeviceReset", 5]})",
         {"node = DeviceReset", "node = FileAccess", "node = DeviceReset"}, QStringLiteral("IgnoreNodes element 3: 5")},
        {QByteArray(), {}, QStringLiteral("can't open error!")},
        {"{ not json", {}, QStringLiteral("Json parse error")},
        {R"({"IgnoreNodes": "Gain"})", {}, QString()},
    };
    for (const auto& file : files) {
        QTemporaryDir work;
        ASSERT_TRUE(file.content.isNull() || WriteFile(work.filePath(QStringLiteral("Config/Config.json")), file.content));
        TestLog log;
        ASSERT_EQ(RunJob(RecordOf("..", "SN-IGNORE"), work.path()).statuses, kRefused);
        ASSERT_EQ(log.messagesStartingWith(QStringLiteral("node = ")), file.nodes);
        // Each complaint names the file.
        for (const QString& line : {QStringLiteral("can't open error!"), QStringLiteral("Json parse error"),
                                    QStringLiteral("IgnoreNodes element ")}) {
            const QStringList logged = log.messagesStartingWith(line);
            ASSERT_TRUE(logged.size() == (file.logged.startsWith(line) ? 1 : 0)) << qPrintable(line);
            ASSERT_TRUE(logged.isEmpty()
                    || (logged.first().startsWith(file.logged) && logged.first().contains(work.filePath("Config/Config.json"))));
        }
        for (const LogLine& line : log.lines()) {
            ASSERT_TRUE(line.file.endsWith(QStringLiteral("QCollectInfoThread.cpp"))) << qPrintable(line.file);
            ASSERT_TRUE(line.function.contains(QStringLiteral("QCollectInfoThread::"))) << qPrintable(line.function);
        }
    }
}

TEST(TestCollectHelpers, job_hostileModelName_isRefusedAndWritesNothing)
{
    struct Row {
        std::string rowName;
        QByteArray model;
    };
    forEachRow(std::vector<Row>{{"parent path", "../../../../tmp/evil"},
                                {"absolute", "/tmp/evil"},
                                {"dot", "."},
                                {"backslash", "a\\b"},
                                {"control character", "ID\nX"},
                                {"next line", "ID\xc2\x85"}},
               [](const Row& row) {
        const QStringList before = FilesBelow(SuiteRoot());
        QTemporaryDir work;
        const JobResult result = RunJob(RecordOf(row.model, "SN-HOSTILE"), work.path());

        ASSERT_EQ(result.statuses, kRefused);
        ASSERT_EQ(result.finishes, 0);
        ASSERT_EQ(result.progresses, 0);
        ASSERT_EQ(FilesBelow(SuiteRoot()), before);
        ASSERT_EQ(FilesBelow(work.path()), QStringList{});
        ASSERT_TRUE(!QFileInfo::exists(CollectionRoot()));
        ASSERT_TRUE(!QFileInfo::exists(QStringLiteral("/tmp/evil")));
    });
}

int main(int argc, char** argv)
{
    RunFromOwnSuiteLayout(argv);
    ::testing::InitGoogleTest(&argc, argv);
    QCoreApplication app(argc, argv);
    return RUN_ALL_TESTS();
}

