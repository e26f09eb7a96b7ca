// Whole collection jobs against simulated devices on loopback, inside the
// test's private network namespace: a complete job and what it leaves, the
// progress sequence, the ignore list, two devices of one model at once, a
// device that vanishes mid-walk (the previous collection survives it), and a
// camera that is no code reader.

#include "QtPrinters.h"
#include "AravisDescription.h"
#include "CaptureCsv.h"
#include "CollectProgress.h"
#include "CodeReaders.h"
#include "FrameCodes.h"
#include "JobRecorder.h"
#include "SuiteLayout.h"
#include "TestFiles.h"
#include "TestLog.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QMap>
#include <QRegularExpression>
#include <QtTest>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

namespace {

constexpr int kDiscoveryTimeoutMs = 30000;
constexpr unsigned long kJobTimeoutMs = 240000;
constexpr int kCornerTolerance = 4;

// Its bytes are pinned by the helper tests.
const QByteArray kCsvHeader = collect::kCsvHeader;

bool WriteIgnoreList(const QByteArray& json)
{
    QDir().mkpath(QStringLiteral("Config"));
    QFile file(QStringLiteral("Config/Config.json"));
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(json) == json.size();
}

bool UseShippedIgnoreList()
{
    return WriteIgnoreList(ReadAll(QStringLiteral(QUORVEX_SOURCE_DIR "/resources/config/Config.json")));
}

// B and E as the job logged them; -1 when it logged no such step.
int TotalFromLog(const TestLog& log, const QString& pattern)
{
    const QRegularExpression expression(pattern);
    for (const QString& message : log.messages()) {
        const QRegularExpressionMatch match = expression.match(message);
        if (match.hasMatch())
            return match.captured(1).toInt();
    }
    return -1;
}

} // namespace

class TestCollectJob : public ::testing::Test {
protected:
    void SetUp() override;
    // The simulator with count demo readers; empty (and the case failed)
    // when they are not found.
    QVector<XQ_CODEREADER_DEVICE_INFO> startReaders(int count);
    std::unique_ptr<DeviceProcess> m_device;
};

void TestCollectJob::SetUp()
{
    // Each case starts from an empty collection root and staging folder.
    QDir(CollectionRoot()).removeRecursively();
    for (const QString& name : Entries(ApplicationDir())) {
        if (name != QFileInfo(QCoreApplication::applicationFilePath()).fileName())
            QFile::remove(ApplicationDir() + QLatin1Char('/') + name);
    }
    // The suite ships a "common" folder; the job makes only the last level.
    ASSERT_TRUE(QDir().mkpath(SuiteRoot() + QStringLiteral("/common")));
    ASSERT_TRUE(QDir::setCurrent(SuiteRoot()));
    ASSERT_TRUE(UseShippedIgnoreList());
    m_device = std::make_unique<DeviceProcess>();
}

QVector<XQ_CODEREADER_DEVICE_INFO> TestCollectJob::startReaders(int count)
{
    QString error;
    const auto readers = ::startReaders(*m_device, count, &error);
    if (readers.isEmpty())
        QTest::qFail(qPrintable(error), __FILE__, __LINE__);
    return readers;
}

TEST_F(TestCollectJob, fullJob_leavesCollectionFolderAndReportsInOrder)
{
    const auto readers = startReaders(1);
    ASSERT_TRUE(!readers.isEmpty());
    const XQ_CODEREADER_DEVICE_INFO& reader = readers.first();
    const QString model = ModelOf(reader);
    ASSERT_TRUE(!model.isEmpty());

    TestLog log;
    JobRecorder job(reader);
    job.start();
    ASSERT_TRUE(job.wait(kJobTimeoutMs)) << "the job did not end";

    ASSERT_EQ(job.statuses(), QStringList{});
    ASSERT_EQ(job.finishes(), QStringList{QStringLiteral("Collect Finished")});
    ASSERT_EQ(job.foreignReports(), 0);

    // Folder: Jpg/1.jpg .. n.jpg, the CSV, the description and both dumps.
    const QString folder = CollectionRoot() + QLatin1Char('/') + model;
    ASSERT_EQ(Entries(folder), CollectedFilesOf(model));
    const QStringList images = Entries(folder + QStringLiteral("/Jpg"));
    ASSERT_TRUE(!images.isEmpty());
    for (int n = 1; n <= images.size(); ++n)
        ASSERT_TRUE(images.contains(QStringLiteral("%1.jpg").arg(n))) << qPrintable(images.join(' '));

    // CSV: the exact header, then one CR LF row per image naming the codes
    // that are really in that image.
    const QByteArray csv = ReadAll(folder + QStringLiteral("/ImportInformation.csv"));
    ASSERT_TRUE(csv.startsWith(kCsvHeader));
    QByteArray body = csv.mid(kCsvHeader.size());
    ASSERT_TRUE(body.endsWith("\r\n"));
    body.chop(2);
    const QList<QByteArray> rows = body.split('\n');
    ASSERT_EQ(rows.size(), images.size());
    int codesSeen = 0;
    for (int n = 1; n <= rows.size(); ++n) {
        QByteArray rowBytes = rows[n - 1];
        ASSERT_TRUE(rowBytes.endsWith('\r') || n == rows.size()) << "data rows end in CR LF";
        if (rowBytes.endsWith('\r'))
            rowBytes.chop(1);
        CsvRow row;
        ASSERT_TRUE(ParseCsvRow(QString::fromUtf8(rowBytes), &row)) << rowBytes.constData();
        ASSERT_EQ(row.triggerIndex, QStringLiteral("1"));
        ASSERT_EQ(row.frameNumber, QString::number(n));
        ASSERT_EQ(row.picturePath, QStringLiteral("%1.jpg").arg(n));
        ASSERT_TRUE(row.codes.size() <= 6);

        // An independent plain decode of the stored image: the reader must
        // find at least what it finds. The reader's own decoder also reads
        // linear codes line by line, so it may find more of those.
        QVector<FrameCode> decoded;
        ASSERT_TRUE(DecodeFrameCodes(folder + QStringLiteral("/Jpg/%1.jpg").arg(n), &decoded));
        ASSERT_TRUE(row.codes.size() >= std::min(decoded.size(), 6)) << qPrintable(QStringLiteral("frame %1: %2 codes written, %3 in the image")
                                .arg(n).arg(row.codes.size()).arg(decoded.size()));
        for (const FrameCode& written : row.codes) {
            const auto match = std::find_if(decoded.cbegin(), decoded.cend(), [&](const FrameCode& code) {
                return code.text == written.text;
            });
            // Only the line-by-line reading of linear codes may find more.
            const bool linear = !QStringList{"DM", "QR", "MicroQR", "PDF417", "MAXICODE"}.contains(written.typeName);
            if (match == decoded.cend()) {
                ASSERT_TRUE(linear) << qPrintable(QStringLiteral("frame %1: %2 is not in the image").arg(n).arg(written.text));
                continue;
            }
            ASSERT_EQ(written.typeName, match->typeName);
            // A linear code's corners span the rows it was read on: across the
            // bars they agree; along them the plain decode's scan line only
            // has to lie within the written box.
            const int top = std::min({written.corners[1], written.corners[3], written.corners[5], written.corners[7]});
            const int bottom = std::max({written.corners[1], written.corners[3], written.corners[5], written.corners[7]});
            for (int i = 0; i < 8; ++i) {
                const bool inside = linear && i % 2 == 1
                    ? match->corners[i] >= top - kCornerTolerance && match->corners[i] <= bottom + kCornerTolerance
                    : std::abs(written.corners[i] - match->corners[i]) <= kCornerTolerance;
                ASSERT_TRUE(inside) << qPrintable(QStringLiteral("frame %1, %2: coordinate %3 is %4, the image has %5")
                                                .arg(n).arg(written.text).arg(i).arg(written.corners[i]).arg(match->corners[i]));
            }
        }
        codesSeen += row.codes.size();
    }
    ASSERT_TRUE(codesSeen > 0) << "the demo reader's frames show codes, so some row must name one";

    // The description byte for byte, as Aravis reads it from the device.
    const QByteArray xml = QByteArray::fromStdString(DescriptionFromAravis(AddressOf(reader).toStdString()));
    ASSERT_TRUE(!xml.isEmpty());
    ASSERT_TRUE(ReadAll(folder + QLatin1Char('/') + model + QStringLiteral(".xml")) == xml);
    ASSERT_TRUE(QFileInfo(folder + QLatin1Char('/') + model + QStringLiteral("_regfile.dat")).size() > 0);
    ASSERT_TRUE(QFileInfo(folder + QLatin1Char('/') + model + QStringLiteral("_strRegFile.dat")).exists());

    // Nothing staged is left beside the program.
    ASSERT_EQ(Entries(ApplicationDir()), QStringList{QFileInfo(QCoreApplication::applicationFilePath()).fileName()});

    // Progress: the capture counter (0), 9, 10, one value per boolean and
    // per readable enumeration, then 99 and 100.
    const int bools = TotalFromLog(log, QStringLiteral("^boolIndex\\[\\d+\\], boolTotal\\[(\\d+)\\]$"));
    const int enums = TotalFromLog(log, QStringLiteral("^enumIndex\\[\\d+\\], enumTotal\\[(\\d+)\\]"));
    ASSERT_TRUE(bools > 0 && enums > 0) << "a demo code reader has booleans and enumerations with several entries";
    const QVector<int> progress = job.progress();
    ASSERT_TRUE(progress.size() >= 5 + bools);
    ASSERT_EQ(progress.mid(0, 3), (QVector<int>{0, 9, 10}));
    for (int i = 0; i < bools; ++i)
        ASSERT_EQ(progress.at(3 + i), collect::boolPassProgress(i, bools, enums));
    const QVector<int> enumPart = progress.mid(3 + bools, progress.size() - 5 - bools);
    ASSERT_TRUE(enumPart.size() <= enums);
    int j = 0;
    for (const int value : enumPart) {
        // Enumerations whose value cannot be read report nothing.
        while (j < enums && value != collect::enumPassProgress(j, bools, enums))
            ++j;
        ASSERT_TRUE(j < enums) << "enumeration progress out of order";
        ++j;
    }
    ASSERT_EQ(progress.mid(progress.size() - 2), (QVector<int>{99, 100}));
}

TEST_F(TestCollectJob, ignoreList_skipsBySubstring_nonStringIgnored)
{
    const auto readers = startReaders(1);
    ASSERT_TRUE(!readers.isEmpty());

    // "Trigger" covers TriggerMode, TriggerSource, TriggerSoftware and the
    // reader's trigger strings: every name holding it is skipped, others not.
    // The null is logged and left out; as an empty pattern it would skip all.
    ASSERT_TRUE(WriteIgnoreList(R"({"IgnoreNodes": ["Trigger", null, "Trigger"]})"));
    TestLog log;
    JobRecorder job(readers.first());
    job.start();
    ASSERT_TRUE(job.wait(kJobTimeoutMs));
    ASSERT_EQ(job.finishes().size(), 1);
    const QStringList skipped = log.messagesStartingWith(QStringLiteral("no collect "));
    QSet<QString> names;
    for (const QString& line : skipped) {
        const QString name = line.mid(QStringLiteral("no collect ").size());
        ASSERT_TRUE(name.contains(QStringLiteral("Trigger"))) << qPrintable(name);
        names.insert(name);
    }
    ASSERT_TRUE(names.contains(QStringLiteral("TriggerMode")) && names.size() >= 2) << qPrintable(skipped.join('|'));
    ASSERT_TRUE(!log.messagesStartingWith(QStringLiteral("boolIndex[")).isEmpty());
    ASSERT_EQ(log.messagesStartingWith(QStringLiteral("IgnoreNodes element 1: null in ")).size(), 1);
}

TEST_F(TestCollectJob, twoDevicesOfOneModel_bothFinish)
{
    // A fixed fault: the second job failed on the folder the first had just made.
    const auto readers = startReaders(5);
    QMap<QString, QVector<XQ_CODEREADER_DEVICE_INFO>> byModel;
    for (const auto& reader : readers)
        byModel[ModelOf(reader)].append(reader);
    const auto pair = std::find_if(byModel.cbegin(), byModel.cend(), [](const auto& group) { return group.size() >= 2; });
    ASSERT_TRUE(pair != byModel.cend()) << "the simulator's demo readers have no two of one model";

    JobRecorder first(pair->at(0));
    JobRecorder second(pair->at(1));
    ASSERT_TRUE(first.serialNumber() != second.serialNumber());
    first.start();
    second.start();
    for (JobRecorder* job : {&first, &second}) {
        ASSERT_TRUE(job->wait(kJobTimeoutMs));
        ASSERT_EQ(job->statuses().join('|'), QString());
        ASSERT_EQ(job->finishes(), QStringList{QStringLiteral("Collect Finished")});
        ASSERT_EQ(job->foreignReports(), 0);
        ASSERT_EQ(job->progress().constLast(), 100);
    }
    // The last to finish left its whole collection: one row per image.
    const QString folder = CollectionRoot() + QLatin1Char('/') + pair.key();
    for (const QString& name : {QStringLiteral("ImportInformation.csv"), pair.key() + QStringLiteral(".xml"),
                                QStringLiteral("Jpg/1.jpg")})
        ASSERT_TRUE(QFileInfo::exists(folder + QLatin1Char('/') + name)) << qPrintable(name);
    ASSERT_EQ(ReadAll(folder + QStringLiteral("/ImportInformation.csv")).count("\r\n"), Entries(folder + QStringLiteral("/Jpg")).size());
    ASSERT_EQ(Entries(CollectionRoot()), QStringList{pair.key()});
}

TEST_F(TestCollectJob, disconnectionMidWalk_endsWithCollectFailed)
{
    const auto readers = startReaders(1);
    ASSERT_TRUE(!readers.isEmpty());
    // A good collection from before: the failed job must leave it as it is.
    const QString model = ModelOf(readers.first());
    const QString previous = CollectionRoot() + QLatin1Char('/') + model;
    ASSERT_TRUE(QDir().mkpath(previous + QStringLiteral("/Jpg")));
    const QByteArray image(4096, '\x5a');
    for (const QString& name : {QStringLiteral("/Jpg/1.jpg"), QStringLiteral("/Jpg/77.jpg"), QStringLiteral("/ImportInformation.csv")}) {
        QFile file(previous + name);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(image) == image.size());
    }

    TestLog log;
    JobRecorder job(readers.first());
    job.start();
    // Pull the plug once the boolean pass has begun.
    ASSERT_TRUE(QTest::qWaitFor([&] { return !log.messagesStartingWith(QStringLiteral("boolIndex[")).isEmpty() || job.wait(0); },
                             static_cast<int>(kJobTimeoutMs))) << "the boolean pass never began";
    ASSERT_TRUE(!job.wait(0)) << "the job ended before the device could be pulled";
    m_device->stop(true);

    ASSERT_TRUE(job.wait(kJobTimeoutMs)) << "the job hangs after the device vanished";
    ASSERT_EQ(job.finishes(), QStringList{});
    ASSERT_TRUE(!job.statuses().isEmpty() && job.statuses().constLast() == QStringLiteral("Collect Failed!")) << qPrintable(job.statuses().join('|'));
    ASSERT_TRUE(!job.progress().contains(99));
    ASSERT_EQ(Entries(CollectionRoot()), QStringList{model});
    ASSERT_EQ(Entries(previous + QStringLiteral("/Jpg")), (QStringList{QStringLiteral("1.jpg"), QStringLiteral("77.jpg")}));
    for (const QString& name : {QStringLiteral("/Jpg/1.jpg"), QStringLiteral("/Jpg/77.jpg"), QStringLiteral("/ImportInformation.csv")})
        ASSERT_TRUE(ReadAll(previous + name) == image);
}

TEST_F(TestCollectJob, cameraWithoutRunningMode_failsImageCapture)
{
    std::string why;
    ASSERT_TRUE(xqtest::startFakeCamera(*m_device, "127.0.0.1", "GV01", why)) << why.c_str();
    const auto readers = WaitForCodeReaders(1, kDiscoveryTimeoutMs);
    ASSERT_TRUE(!readers.isEmpty()) << qPrintable(QStringLiteral("the fake camera was not found: ") + OutputOf(*m_device));

    JobRecorder job(readers.first());
    job.start();
    ASSERT_TRUE(job.wait(kJobTimeoutMs));
    ASSERT_EQ(job.statuses(), QStringList{QStringLiteral("Set Running Mode fail!")});
    ASSERT_EQ(job.finishes(), QStringList{});
    ASSERT_EQ(job.progress(), QVector<int>{});
    // No feature capture: nothing staged, no description in the folder.
    const QString model = ModelOf(readers.first());
    ASSERT_EQ(Entries(ApplicationDir()), QStringList{QFileInfo(QCoreApplication::applicationFilePath()).fileName()});
    ASSERT_TRUE(!QFileInfo::exists(CollectionRoot() + QLatin1Char('/') + model + QLatin1Char('/') + model + QStringLiteral(".xml")));
}

int main(int argc, char** argv)
{
    RunFromOwnSuiteLayout(argv);
    ::testing::InitGoogleTest(&argc, argv);
    QCoreApplication app(argc, argv);
    return RUN_ALL_TESTS();
}

