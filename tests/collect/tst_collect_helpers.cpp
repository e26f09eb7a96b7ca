// The collection engine's pieces that need no device: progress arithmetic,
// CSV bytes, symbology names, paths and the model-name check, moving files,
// the ignore list, and a job that refuses a hostile model name.

#include "CaptureCsv.h"
#include "CollectPaths.h"
#include "CollectProgress.h"
#include "IgnoreList.h"
#include "QCollectInfoThread.h"
#include "SuiteLayout.h"
#include "TestLog.h"

#include <QCoreApplication>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <climits>
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

QByteArray ReadAll(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<missing>");
}

bool WriteFile(const QString& path, const QByteArray& bytes)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(bytes) == bytes.size();
}

QStringList FilesBelow(const QString& folder)
{
    QStringList files;
    QDirIterator it(folder, QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot | QDir::Hidden, QDirIterator::Subdirectories);
    while (it.hasNext())
        files.append(it.next());
    files.sort();
    return files;
}

XQ_CODEREADER_DEVICE_INFO RecordOf(const QByteArray& model, const QByteArray& serial)
{
    XQ_CODEREADER_DEVICE_INFO record{};
    record.nTLayerType = XQ_TLAYER_GIGE;
    std::memcpy(record.stGigE.chModelName, model.constData(), std::min<size_t>(model.size(), 63));
    std::memcpy(record.stGigE.chSerialNumber, serial.constData(), std::min<size_t>(serial.size(), 63));
    return record;
}

} // namespace

class TestCollectHelpers final : public QObject
{
    Q_OBJECT

private slots:
    void progress_followsFloatDivisionThenDouble();
    void progress_staysBetweenTenAndNinetyNine();

    void csvHeader_isExactWithBareLineFeed();
    void csvRow_withoutCodes_hasThreeColumnsAndCrLf();
    void csvRow_withOneCode_joinsCoordinatesWithDots();
    void csvRow_withSixCodes_hasAllSix();
    void csvRow_withNineCodes_keepsFirstSixAndCutsCount();
    void csvRow_negativeCoordinates_keepMinusSign();
    void csvRow_codeText_isUtf8AndUnquoted();
    void csvRow_codeWithoutNul_staysInsideItsBuffer();

    void symbologyNames_data();
    void symbologyNames();

    void paths_followModelName();
    void modelNameCheck_data();
    void modelNameCheck();

    void moveFile_samePath_doesNothing();
    void moveFile_missingSource_fails();
    void moveFile_overwrite_replacesDestination();
    void moveFile_withoutOverwrite_keepsBoth();
    void moveFile_backslashes_countAsSlashes();
    void moveFile_failedCopy_keepsSource();

    void ignoreList_data();
    void ignoreList();
    void ignoreMatch_isCaseSensitiveSubstring();

    void job_readsIgnoreListFromCurrentFolder();
    void job_missingOrBrokenIgnoreList_isLoggedOnly();
    void job_hostileModelName_isRefusedAndWritesNothing_data();
    void job_hostileModelName_isRefusedAndWritesNothing();
};

// ---- Progress ---------------------------------------------------------------

void TestCollectHelpers::progress_followsFloatDivisionThenDouble()
{
    // 3 booleans, 2 enumerations: 10, 28, 46 then 64, 82.
    QCOMPARE(collect::BoolPassProgress(0, 3, 2), 10);
    QCOMPARE(collect::BoolPassProgress(1, 3, 2), 28);
    QCOMPARE(collect::BoolPassProgress(2, 3, 2), 46);
    QCOMPARE(collect::EnumPassProgress(0, 3, 2), 64);
    QCOMPARE(collect::EnumPassProgress(1, 3, 2), 82);
    // 7/10 and 9/10 in float land just below the exact value: 72 and 90,
    // where all-double arithmetic would give 73 and 91.
    QCOMPARE(collect::BoolPassProgress(7, 10, 0), 72);
    QCOMPARE(collect::EnumPassProgress(2, 7, 3), 90);
    QCOMPARE(collect::BoolPassProgress(1, 1, 2), 40);
    // A single feature of either kind reports 10.
    QCOMPARE(collect::BoolPassProgress(0, 1, 0), 10);
    QCOMPARE(collect::EnumPassProgress(0, 0, 1), 10);
}

void TestCollectHelpers::progress_staysBetweenTenAndNinetyNine()
{
    for (int bools = 0; bools <= 40; ++bools) {
        for (int enums = 0; enums <= 40; ++enums) {
            int previous = collect::kProgressAfterRecording;
            for (int i = 0; i < bools; ++i) {
                const int value = collect::BoolPassProgress(i, bools, enums);
                QVERIFY(value >= previous && value <= collect::kProgressAfterPasses);
                previous = value;
            }
            for (int j = 0; j < enums; ++j) {
                const int value = collect::EnumPassProgress(j, bools, enums);
                QVERIFY(value >= previous && value <= collect::kProgressAfterPasses);
                previous = value;
            }
        }
    }
}

// ---- CSV --------------------------------------------------------------------

void TestCollectHelpers::csvHeader_isExactWithBareLineFeed()
{
    QCOMPARE(QByteArray(collect::kCsvHeader),
             QByteArray("TriggerIndex,FrameNum,PicPath,Code1,CodeType1,CodeCoordinate1,Code2,CodeType2,"
                        "CodeCoordinate2,Code3,CodeType3,CodeCoordinate3,Code4,CodeType4,CodeCoordinate4,"
                        "Code5,CodeType5,CodeCoordinate5,Code6,CodeType6,CodeCoordinate6\n"));
}

void TestCollectHelpers::csvRow_withoutCodes_hasThreeColumnsAndCrLf()
{
    auto frame = FrameWith({});
    QCOMPARE(collect::CsvRowOf(7, *frame), QByteArray("1,7,7.jpg\r\n"));
    QCOMPARE(collect::CsvRowOf(4294967295u, *frame), QByteArray("1,4294967295,4294967295.jpg\r\n"));
}

void TestCollectHelpers::csvRow_withOneCode_joinsCoordinatesWithDots()
{
    auto frame = FrameWith({{"ABC-123", 2, {12, 40, 230, 41, 229, 160, 11, 158}}});
    QCOMPARE(collect::CsvRowOf(1, *frame), QByteArray("1,1,1.jpg,ABC-123,QR,12.40.230.41.229.160.11.158\r\n"));
}

void TestCollectHelpers::csvRow_withSixCodes_hasAllSix()
{
    auto frame = FrameWith({{"a", 1, {1, 2, 3, 4, 5, 6, 7, 8}},
                            {"b", 13, {0, 0, 0, 0, 0, 0, 0, 0}},
                            {"c", 128, {10, 20, 30, 40, 50, 60, 70, 80}},
                            {"d", 999, {1, 1, 1, 1, 1, 1, 1, 1}},
                            {"e", 140, {2, 2, 2, 2, 2, 2, 2, 2}},
                            {"f", 134, {3, 3, 3, 3, 3, 3, 3, 3}}});
    QCOMPARE(collect::CsvRowOf(12, *frame),
             QByteArray("1,12,12.jpg,a,DM,1.2.3.4.5.6.7.8,b,EAN13,0.0.0.0.0.0.0.0,c,CODE128,10.20.30.40.50.60.70.80,"
                        "d,NONE,1.1.1.1.1.1.1.1,e,MicroQR,2.2.2.2.2.2.2.2,f,MicroPDF417,3.3.3.3.3.3.3.3\r\n"));
    QCOMPARE(frame->nCodeNum, 6u);
}

void TestCollectHelpers::csvRow_withNineCodes_keepsFirstSixAndCutsCount()
{
    QVector<Code> codes;
    static const char* const texts[] = {"c1", "c2", "c3", "c4", "c5", "c6", "c7", "c8", "c9"};
    for (const char* text : texts)
        codes.append({text, 39, {1, 2, 3, 4, 5, 6, 7, 8}});
    auto frame = FrameWith(codes);
    const QByteArray row = collect::CsvRowOf(3, *frame);
    QCOMPARE(row.count(",CODE39,"), 6);
    QVERIFY(row.contains(",c6,CODE39,1.2.3.4.5.6.7.8\r\n"));
    QVERIFY(!row.contains("c7"));
    QCOMPARE(frame->nCodeNum, 6u);

    // A count far beyond the record's room is cut just the same.
    frame->nCodeNum = 100000;
    QCOMPARE(collect::CsvRowOf(3, *frame), row);
}

void TestCollectHelpers::csvRow_negativeCoordinates_keepMinusSign()
{
    auto frame = FrameWith({{"X", 8, {-3, -40, INT_MAX, 0, INT_MIN, 5, 6, -7}}});
    QCOMPARE(collect::CsvRowOf(2, *frame),
             QByteArray("1,2,2.jpg,X,EAN8,-3.-40.2147483647.0.-2147483648.5.6.-7\r\n"));
}

void TestCollectHelpers::csvRow_codeText_isUtf8AndUnquoted()
{
    auto frame = FrameWith({{"Gr\xc3\xbc\xc3\x9f" "e,2", 2, {1, 2, 3, 4, 5, 6, 7, 8}}});
    // The comma in the code spreads it over two columns: nothing is quoted.
    QCOMPARE(collect::CsvRowOf(5, *frame), QByteArray("1,5,5.jpg,Gr\xc3\xbc\xc3\x9f" "e,2,QR,1.2.3.4.5.6.7.8\r\n"));
}

void TestCollectHelpers::csvRow_codeWithoutNul_staysInsideItsBuffer()
{
    auto frame = FrameWith({{"", 2, {0, 0, 0, 0, 0, 0, 0, 0}}});
    std::memset(frame->stCodeInfo[0].chCode, 'Z', sizeof frame->stCodeInfo[0].chCode);
    const QByteArray row = collect::CsvRowOf(1, *frame);
    QCOMPARE(row.count('Z'), XQ_CODEREADER_CODE_TEXT_SIZE);
}

// ---- Symbology names --------------------------------------------------------

void TestCollectHelpers::symbologyNames_data()
{
    QTest::addColumn<int>("number");
    QTest::addColumn<QString>("name");
    const QVector<QPair<int, const char*>> listed = {
        {1, "DM"},        {2, "QR"},           {8, "EAN8"},       {9, "UPCE"},          {12, "UPCA"},
        {13, "EAN13"},    {14, "ISBN13"},      {20, "CODEBAR"},   {25, "ITF25"},        {26, "MATRIX25"},
        {27, "ITF14"},    {30, "MSI"},         {31, "CODE11"},    {32, "INDUSTRIAL25"}, {33, "CHINAPOST"},
        {39, "CODE39"},   {93, "CODE93"},      {128, "CODE128"},  {131, "PDF417"},      {133, "ECC140"},
        {134, "MicroPDF417"}, {140, "MicroQR"}, {145, "HANXIN"}, {150, "MAXICODE"}};
    for (const auto& [number, name] : listed)
        QTest::addRow("listed %d", number) << number << QString::fromLatin1(name);
    for (const int number : {0, -1, -2, INT_MIN, INT_MAX, 3, 10, 100, 129, 151, 160, 170})
        QTest::addRow("unlisted %d", number) << number << QStringLiteral("NONE");
}

void TestCollectHelpers::symbologyNames()
{
    QFETCH(int, number);
    QFETCH(QString, name);
    QString result = QStringLiteral("stale");
    QCollectInfoThread::GetCodeTypeName(number, result);
    QCOMPARE(result, name);
}

// ---- Paths ------------------------------------------------------------------

void TestCollectHelpers::paths_followModelName()
{
    const QString root = QStringLiteral("/s/apps/../common/VirtualCamera");
    const QString folder = collect::CollectionFolderOf(root, QStringLiteral("ID2004"));
    QCOMPARE(folder, QStringLiteral("/s/apps/../common/VirtualCamera/ID2004"));
    QCOMPARE(collect::ImageFolderOf(folder), folder + QStringLiteral("/Jpg"));
    QCOMPARE(collect::ImageFileOf(folder + QStringLiteral("/Jpg"), 12), folder + QStringLiteral("/Jpg/12.jpg"));
    QCOMPARE(collect::CsvFileOf(folder), folder + QStringLiteral("/ImportInformation.csv"));
    QCOMPARE(collect::FeatureDescriptionName(QStringLiteral("ID2004")), QStringLiteral("ID2004.xml"));
    QCOMPARE(collect::RegisterDumpName(QStringLiteral("ID2004")), QStringLiteral("ID2004_regfile.dat"));
    QCOMPARE(collect::StringRegisterDumpName(QStringLiteral("ID2004")), QStringLiteral("ID2004_strRegFile.dat"));
    // An empty model puts the files into the root itself.
    QCOMPARE(collect::CollectionFolderOf(root, QString()), root + QLatin1Char('/'));
    QCOMPARE(collect::RegisterDumpName(QString()), QStringLiteral("_regfile.dat"));
}

void TestCollectHelpers::modelNameCheck_data()
{
    QTest::addColumn<QString>("model");
    QTest::addColumn<bool>("safe");
    QTest::newRow("plain") << QStringLiteral("ID2004-12M") << true;
    QTest::newRow("empty") << QString() << true;
    QTest::newRow("spaces and dots") << QStringLiteral("ID 20.04 ...") << true;
    QTest::newRow("three dots") << QStringLiteral("...") << true;
    QTest::newRow("non-ASCII") << QStringLiteral("\u8bfb\u7801ID") << true;
    QTest::newRow("dot") << QStringLiteral(".") << false;
    QTest::newRow("dot dot") << QStringLiteral("..") << false;
    QTest::newRow("slash") << QStringLiteral("a/b") << false;
    QTest::newRow("leading slash") << QStringLiteral("/etc") << false;
    QTest::newRow("parent path") << QStringLiteral("../../x") << false;
    QTest::newRow("backslash") << QStringLiteral("a\\b") << false;
    QTest::newRow("tab") << QStringLiteral("a\tb") << false;
    QTest::newRow("newline") << QStringLiteral("ID\n") << false;
    QTest::newRow("escape") << QStringLiteral("\x1b[2J") << false;
    QTest::newRow("delete") << QStringLiteral("ID\x7f") << false;
    QTest::newRow("C1 control") << QStringLiteral("ID\u0085") << false;
}

void TestCollectHelpers::modelNameCheck()
{
    QFETCH(QString, model);
    QFETCH(bool, safe);
    QCOMPARE(collect::IsSafeModelName(model), safe);
}

// ---- Moving files -----------------------------------------------------------

void TestCollectHelpers::moveFile_samePath_doesNothing()
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("a.dat"));
    QVERIFY(WriteFile(path, "abc"));
    QVERIFY(QCollectInfoThread::MoveFileToPath(path, path, true));
    QCOMPARE(ReadAll(path), QByteArray("abc"));
    // The same file named with backslashes is still the same path.
    QString backslashed = path;
    backslashed.replace(QLatin1Char('/'), QLatin1Char('\\'));
    QVERIFY(QCollectInfoThread::MoveFileToPath(path, backslashed, true));
    QCOMPARE(ReadAll(path), QByteArray("abc"));
}

void TestCollectHelpers::moveFile_missingSource_fails()
{
    QTemporaryDir dir;
    const QString target = dir.filePath(QStringLiteral("b.dat"));
    QVERIFY(WriteFile(target, "old"));
    QVERIFY(!QCollectInfoThread::MoveFileToPath(dir.filePath(QStringLiteral("none.dat")), target, true));
    QCOMPARE(ReadAll(target), QByteArray("old"));
}

void TestCollectHelpers::moveFile_overwrite_replacesDestination()
{
    QTemporaryDir dir;
    const QString source = dir.filePath(QStringLiteral("a.dat"));
    const QString target = dir.filePath(QStringLiteral("sub/a.dat"));
    QVERIFY(WriteFile(source, "new"));
    QVERIFY(WriteFile(target, "old"));
    QVERIFY(QCollectInfoThread::MoveFileToPath(source, target, true));
    QCOMPARE(ReadAll(target), QByteArray("new"));
    QVERIFY(!QFile::exists(source));
}

void TestCollectHelpers::moveFile_withoutOverwrite_keepsBoth()
{
    QTemporaryDir dir;
    const QString source = dir.filePath(QStringLiteral("a.dat"));
    const QString target = dir.filePath(QStringLiteral("b.dat"));
    QVERIFY(WriteFile(source, "new"));
    QVERIFY(WriteFile(target, "old"));
    QVERIFY(!QCollectInfoThread::MoveFileToPath(source, target, false));
    QCOMPARE(ReadAll(target), QByteArray("old"));
    QCOMPARE(ReadAll(source), QByteArray("new"));
}

void TestCollectHelpers::moveFile_backslashes_countAsSlashes()
{
    QTemporaryDir dir;
    QVERIFY(QDir(dir.path()).mkdir(QStringLiteral("sub")));
    const QString source = dir.filePath(QStringLiteral("a.dat"));
    QVERIFY(WriteFile(source, "x"));
    const QString target = dir.path() + QStringLiteral("\\sub\\a.dat");
    QVERIFY(QCollectInfoThread::MoveFileToPath(source, target, true));
    QCOMPARE(ReadAll(dir.filePath(QStringLiteral("sub/a.dat"))), QByteArray("x"));
    QVERIFY(!QFile::exists(source));
}

void TestCollectHelpers::moveFile_failedCopy_keepsSource()
{
    QTemporaryDir dir;
    const QString source = dir.filePath(QStringLiteral("a.dat"));
    QVERIFY(WriteFile(source, "keep"));
    QVERIFY(!QCollectInfoThread::MoveFileToPath(source, dir.filePath(QStringLiteral("no/such/folder/a.dat")), true));
    QCOMPARE(ReadAll(source), QByteArray("keep"));
}

// ---- Ignore list ------------------------------------------------------------

void TestCollectHelpers::ignoreList_data()
{
    using Outcome = collect::IgnoreListContent::Outcome;
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<int>("outcome");
    QTest::addColumn<QStringList>("patterns");
    QTest::newRow("list") << QByteArray(R"({"IgnoreNodes": ["DeviceReset", "FileAccess", "UserSetSave"]})")
                          << int(Outcome::Read)
                          << QStringList{"DeviceReset", "FileAccess", "UserSetSave"};
    QTest::newRow("other keys ignored") << QByteArray(R"({"Other": 1, "IgnoreNodes": ["Gain"]})")
                                        << int(Outcome::Read) << QStringList{"Gain"};
    QTest::newRow("empty list") << QByteArray(R"({"IgnoreNodes": []})") << int(Outcome::Read) << QStringList{};
    QTest::newRow("duplicates kept in order") << QByteArray(R"({"IgnoreNodes": ["A", "B", "A"]})")
                                              << int(Outcome::Read) << QStringList{"A", "B", "A"};
    QTest::newRow("non-strings become empty")
        << QByteArray(R"({"IgnoreNodes": [1, null, {"a": 1}, ["x"], true, "Gain"]})") << int(Outcome::Read)
        << QStringList{"", "", "", "", "", "Gain"};
    QTest::newRow("empty string") << QByteArray(R"({"IgnoreNodes": [""]})") << int(Outcome::Read)
                                  << QStringList{""};
    QTest::newRow("UTF-8") << QByteArray("{\"IgnoreNodes\": [\"Gr\xc3\xbc\xc3\x9f" "e\"]}") << int(Outcome::Read)
                           << QStringList{QStringLiteral("Gr\u00fc\u00dfe")};
    QTest::newRow("single string") << QByteArray(R"({"IgnoreNodes": "DeviceReset"})")
                                   << int(Outcome::NoPatternArray) << QStringList{};
    QTest::newRow("missing key") << QByteArray(R"({"Ignore": ["A"]})") << int(Outcome::NoPatternArray)
                                 << QStringList{};
    QTest::newRow("array document") << QByteArray(R"([{"IgnoreNodes": ["A"]}])")
                                    << int(Outcome::NoPatternArray) << QStringList{};
    QTest::newRow("not JSON") << QByteArray("{\"IgnoreNodes\": [\"A\",") << int(Outcome::NotJson)
                              << QStringList{};
    QTest::newRow("empty file") << QByteArray() << int(Outcome::NotJson) << QStringList{};
    QTest::newRow("binary") << QByteArray("\x00\xff\xfe{", 4) << int(Outcome::NotJson) << QStringList{};
}

void TestCollectHelpers::ignoreList()
{
    QFETCH(QByteArray, json);
    QFETCH(int, outcome);
    QFETCH(QStringList, patterns);
    const collect::IgnoreListContent content = collect::ParseIgnoreList(json);
    QCOMPARE(int(content.outcome), outcome);
    QCOMPARE(content.patterns, patterns);
}

void TestCollectHelpers::ignoreMatch_isCaseSensitiveSubstring()
{
    const QSet<QString> gain{QStringLiteral("Gain")};
    QVERIFY(collect::MatchingIgnorePattern(QStringLiteral("Gain"), gain) != nullptr);
    QVERIFY(collect::MatchingIgnorePattern(QStringLiteral("GainAuto"), gain) != nullptr);
    QVERIFY(collect::MatchingIgnorePattern(QStringLiteral("DigitalGainRaw"), gain) != nullptr);
    QVERIFY(collect::MatchingIgnorePattern(QStringLiteral("gainauto"), gain) == nullptr);
    QVERIFY(collect::MatchingIgnorePattern(QStringLiteral("Exposure"), gain) == nullptr);
    QVERIFY(collect::MatchingIgnorePattern(QStringLiteral("Exposure"), {}) == nullptr);
    // An empty pattern, also the one a non-string element turns into,
    // matches every name.
    const QSet<QString> empty{QString()};
    QVERIFY(collect::MatchingIgnorePattern(QStringLiteral("Width"), empty) != nullptr);
    QVERIFY(collect::MatchingIgnorePattern(QString(), empty) != nullptr);
    const QStringList parsedList = collect::ParseIgnoreList(R"({"IgnoreNodes": [7]})").patterns;
    const QSet<QString> parsed(parsedList.begin(), parsedList.end());
    QVERIFY(collect::MatchingIgnorePattern(QStringLiteral("Width"), parsed) != nullptr);
}

// ---- Jobs without a device --------------------------------------------------

namespace {

struct JobResult {
    QStringList statuses;
    int finishes = 0;
    int progresses = 0;
};

// Runs one job to its end; hostile model names stop it before any device
// is touched.
JobResult RunJob(const XQ_CODEREADER_DEVICE_INFO& record)
{
    QCollectInfoThread job;
    job.SetDeviceInfo(record);
    QSignalSpy status(&job, &QCollectInfoThread::SigDeviceCollectStatus);
    QSignalSpy finish(&job, &QCollectInfoThread::SigDeviceCollectFinish);
    QSignalSpy progress(&job, &QCollectInfoThread::SigDeviceCollectProgress);
    job.start();
    job.wait();
    QCoreApplication::processEvents();
    JobResult result;
    for (const QList<QVariant>& arguments : status) {
        if (arguments.at(0).toString() == QString::fromLatin1(reinterpret_cast<const char*>(record.stGigE.chSerialNumber)))
            result.statuses.append(arguments.at(1).toString());
        else
            result.statuses.append(QStringLiteral("<wrong serial> ") + arguments.at(1).toString());
    }
    result.finishes = finish.count();
    result.progresses = progress.count();
    return result;
}

} // namespace

void TestCollectHelpers::job_readsIgnoreListFromCurrentFolder()
{
    QTemporaryDir work;
    QVERIFY(WriteFile(work.filePath(QStringLiteral("Config/Config.json")),
                      R"({"IgnoreNodes": ["DeviceReset", "FileAccess", "DeviceReset", 5]})"));
    const QString previous = QDir::currentPath();
    QVERIFY(QDir::setCurrent(work.path()));
    TestLog log;
    const JobResult result = RunJob(RecordOf("..", "SN-IGNORE"));
    QDir::setCurrent(previous);

    QCOMPARE(result.statuses, QStringList{QStringLiteral("Invalid device model name!")});
    QStringList nodes = log.messagesStartingWith(QStringLiteral("node = "));
    QCOMPARE(nodes, (QStringList{"node = DeviceReset", "node = FileAccess", "node = DeviceReset", "node = "}));
    for (const LogLine& line : log.lines()) {
        QVERIFY2(line.file.endsWith(QStringLiteral("QCollectInfoThread.cpp")), qPrintable(line.file));
        QVERIFY2(line.function.contains(QStringLiteral("QCollectInfoThread::")), qPrintable(line.function));
    }
}

void TestCollectHelpers::job_missingOrBrokenIgnoreList_isLoggedOnly()
{
    QTemporaryDir work;
    const QString previous = QDir::currentPath();
    QVERIFY(QDir::setCurrent(work.path()));
    {
        TestLog log;
        const JobResult result = RunJob(RecordOf("a/b", "SN-1"));
        QVERIFY(log.contains(QStringLiteral("can't open error!")));
        QCOMPARE(result.statuses, QStringList{QStringLiteral("Invalid device model name!")});
    }
    QVERIFY(WriteFile(work.filePath(QStringLiteral("Config/Config.json")), "{ not json"));
    {
        TestLog log;
        RunJob(RecordOf("a/b", "SN-1"));
        QVERIFY(log.contains(QStringLiteral("Json parse error")));
        QVERIFY(log.messagesStartingWith(QStringLiteral("node = ")).isEmpty());
    }
    QVERIFY(WriteFile(work.filePath(QStringLiteral("Config/Config.json")), R"({"IgnoreNodes": "Gain"})"));
    {
        TestLog log;
        RunJob(RecordOf("a/b", "SN-1"));
        QVERIFY(!log.contains(QStringLiteral("Json parse error")));
        QVERIFY(!log.contains(QStringLiteral("can't open error!")));
        QVERIFY(log.messagesStartingWith(QStringLiteral("node = ")).isEmpty());
    }
    QDir::setCurrent(previous);
}

void TestCollectHelpers::job_hostileModelName_isRefusedAndWritesNothing_data()
{
    QTest::addColumn<QByteArray>("model");
    QTest::newRow("dot") << QByteArray(".");
    QTest::newRow("dot dot") << QByteArray("..");
    QTest::newRow("parent path") << QByteArray("../../../../tmp/evil");
    QTest::newRow("absolute") << QByteArray("/tmp/evil");
    QTest::newRow("backslash") << QByteArray("..\\..\\evil");
    QTest::newRow("control character") << QByteArray("ID\x01");
    QTest::newRow("newline") << QByteArray("ID\nX");
}

void TestCollectHelpers::job_hostileModelName_isRefusedAndWritesNothing()
{
    QFETCH(QByteArray, model);
    const QStringList before = FilesBelow(SuiteRoot());
    QTemporaryDir work;
    const QStringList workBefore = FilesBelow(work.path());
    const QString previous = QDir::currentPath();
    QVERIFY(QDir::setCurrent(work.path()));
    const JobResult result = RunJob(RecordOf(model, "SN-HOSTILE"));
    QDir::setCurrent(previous);

    QCOMPARE(result.statuses, QStringList{QStringLiteral("Invalid device model name!")});
    QCOMPARE(result.finishes, 0);
    QCOMPARE(result.progresses, 0);
    QCOMPARE(FilesBelow(SuiteRoot()), before);
    QCOMPARE(FilesBelow(work.path()), workBefore);
    QVERIFY(!QFileInfo::exists(CollectionRoot()));
    QVERIFY(!QFileInfo::exists(QStringLiteral("/tmp/evil")));
}

int main(int argc, char** argv)
{
    RunFromOwnSuiteLayout(argv);
    QCoreApplication app(argc, argv);
    TestCollectHelpers test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_collect_helpers.moc"
