// The whole loop, in a private network namespace: a demo reader served by
// the simulator is collected by the engine, a virtual camera is made from
// the collection in a private store, a second simulator serves the store,
// and the virtual camera is then found, read and grabbed from like the
// tool and its SDKs would. Holding and deleting a served camera are the
// store's and the simulator's tests.
//
// What "the collection's first walk" read: the collection throws its values
// away, so right after it this test opens the demo reader with the camera
// SDK, restores the reader's factory state with its DeviceReset command
// (every setting, selectors outside the user sets included; the transport
// registers the image capture set stay as they were), repeats the
// collection's set-up before its first walk (GVCP time-out, default user
// set, pixel format, frame-rate switch) and walks the tree the same way.
// That walk sees the device as the first walk did, except for what runs by
// itself: the reader's clock (DeviceUptime) and its traffic counters
// (StatRegisterReads, StatRegisterWrites, StatRefusedAccesses,
// StatFramesTriggered), which count every request since power-up.

#include "QtPrinters.h"
#include "AravisDescription.h"
#include "DeviceListing.h"
#include "CodeReaders.h"
#include "FeatureWalk.h"
#include "FrameCodes.h"
#include "IgnoreList.h"
#include "JobRecorder.h"
#include "QCollectInfoThread.h"
#include "StorePaths.h"
#include "SupportedModels.h"
#include "SuiteLayout.h"
#include "TestFiles.h"
#include "VirtualCameraActions.h"
#include "VirtualCameraConfig.h"
#include "VirtualCameraCreation.h"

#include "XQCameraControl.h"
#include "XqCodeReaderCtrl.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QSettings>
#include <QtCore>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <memory>

namespace {

constexpr int kDiscoveryTimeoutMs = 30000;
constexpr unsigned long kJobTimeoutMs = 300000;
constexpr unsigned int kGvcpTimeoutMs = 5000;
constexpr int kCornerTolerance = 4;
// JPEG twice over (the collection's, then the SDK's of the replayed frame).
constexpr double kMaxMeanPixelDifference = 3.0;

// Identity and addressing features: the virtual camera has its own.
const QSet<QString> kIdentityFeatures{
    QStringLiteral("DeviceSerialNumber"),       QStringLiteral("DeviceUserID"),
    QStringLiteral("GevMACAddress"),            QStringLiteral("GevCurrentIPAddress"),
    QStringLiteral("GevCurrentSubnetMask"),     QStringLiteral("GevCurrentDefaultGateway"),
    QStringLiteral("GevPersistentIPAddress"),   QStringLiteral("GevPersistentSubnetMask"),
    QStringLiteral("GevPersistentDefaultGateway"), QStringLiteral("GevSCSP"),
    QStringLiteral("GevSCDA"), // where the stream goes: the client's address
};
// Move on by themselves between any two walks of the real device.
const QString kDeviceClock = QStringLiteral("DeviceUptime");
const QSet<QString> kRunningValues{kDeviceClock, QStringLiteral("StatRegisterReads"),
                                   QStringLiteral("StatRegisterWrites"), QStringLiteral("StatRefusedAccesses"),
                                   QStringLiteral("StatFramesTriggered")};

double MeanDifference(const GreyImage& a, const GreyImage& b)
{
    double sum = 0;
    for (int i = 0; i < a.pixels.size(); ++i)
        sum += std::abs(static_cast<unsigned char>(a.pixels[i]) - static_cast<unsigned char>(b.pixels[i]));
    return sum / std::max(1, a.pixels.size());
}

// The data rows of ImportInformation.csv by frame number.
QMap<int, CsvRow> ReadCsvRows(const QString& path)
{
    QMap<int, CsvRow> rows;
    const QList<QByteArray> lines = ReadAll(path).split('\n');
    for (int i = 1; i < lines.size(); ++i) {
        QByteArray line = lines[i];
        if (line.endsWith('\r'))
            line.chop(1);
        CsvRow row;
        if (!line.isEmpty() && ParseCsvRow(QString::fromUtf8(line), &row))
            rows.insert(row.frameNumber.toInt(), row);
    }
    return rows;
}

struct GrabbedFrame final {
    unsigned int frameNumber = 0;
    QByteArray jpeg;
    QVector<FrameCode> codes;
};

} // namespace

class TestLoop : public ::testing::Test {
public: // the steps are walked through member pointers
    void SetUp() override;
    void Collect();
    void WalkCollectedDevice();
    void createVirtualCamera();
    void DiscoverVirtualCamera();
    void CompareFeatureValues();
    void GrabFramesAndCodes();
    QSet<QString> m_ignorePatterns;
    std::unique_ptr<DeviceProcess> m_demo;
    XQ_CODEREADER_DEVICE_INFO m_demoRecord{};
    QString m_model;
    QString m_demoSerial;
    FeatureWalk m_firstWalk;
    std::optional<VirtualStore::VirtualCameraPlan> m_plan;
    DeviceProcess m_storeSimulator; // serving the store, started as a user would
    XQ_CODEREADER_DEVICE_INFO m_virtualRecord{};
};

void TestLoop::SetUp()
{
    ASSERT_TRUE(QDir().mkpath(SuiteRoot() + QStringLiteral("/common")));
    ASSERT_TRUE(QDir::setCurrent(SuiteRoot()));
    // The tool starts from its folder and reads ./Config/Config.json.
    ASSERT_TRUE(QDir().mkpath(QStringLiteral("Config")));
    const QByteArray ignoreList = ReadAll(QStringLiteral(QUORVEX_SOURCE_DIR "/resources/config/Config.json"));
    QFile config(QStringLiteral("Config/Config.json"));
    ASSERT_TRUE(config.open(QIODevice::WriteOnly | QIODevice::Truncate));
    ASSERT_EQ(config.write(ignoreList), ignoreList.size());
    const collect::IgnoreListContent content = collect::parseIgnoreList(ignoreList);
    ASSERT_EQ(content.outcome, collect::IgnoreListContent::Outcome::Read);
    for (const QString& pattern : content.patterns)
        m_ignorePatterns.insert(pattern);
}

TEST_F(TestLoop, demoReader_collectedStoredAndReplayed)
{
    for (auto step : {&TestLoop::Collect, &TestLoop::WalkCollectedDevice, &TestLoop::createVirtualCamera,
                      &TestLoop::DiscoverVirtualCamera, &TestLoop::CompareFeatureValues,
                      &TestLoop::GrabFramesAndCodes}) {
        (this->*step)();
        if (HasFailure())
            return;
    }
}

void TestLoop::Collect()
{
    m_demo = std::make_unique<DeviceProcess>();
    QString error;
    const auto readers = startReaders(*m_demo, 1, &error);
    ASSERT_TRUE(readers.size() == 1) << qPrintable(error);
    m_demoRecord = readers.first();
    m_model = ModelOf(m_demoRecord);
    m_demoSerial = SerialOf(m_demoRecord);

    JobRecorder job(m_demoRecord);
    job.start();
    ASSERT_TRUE(job.wait(kJobTimeoutMs)) << "the collection did not end";
    ASSERT_EQ(job.statuses(), QStringList{});
    ASSERT_EQ(job.finishes(), QStringList{QStringLiteral("Collect Finished")});
}

void TestLoop::WalkCollectedDevice()
{
    // The dumps of this session stay out of the folder where jobs stage theirs.
    const QString scratch = SuiteRoot() + QStringLiteral("/../sdk-dumps");
    ASSERT_TRUE(QDir().mkpath(scratch));
    qputenv("QUORVEX_SDK_DUMP_DIR", scratch.toUtf8());
    QString error;
    const XQ_HANDLE camera = OpenCameraBySerial(m_demoSerial, &error);
    ASSERT_TRUE(camera != nullptr) << qPrintable(error);
    // The collection's set-up before its first walk, call for call.
    XQ_GIGE_SetGvcpTimeout(camera, kGvcpTimeoutMs);
    const bool setUp = XQ_CC_SetCommandValue(camera, "DeviceReset") == XQ_OK
                       && XQ_CC_SetEnumValueByString(camera, "UserSetSelector", "Default") == XQ_OK
                       && XQ_CC_SetCommandValue(camera, "UserSetLoad") == XQ_OK;
    XQ_CC_SetEnumValueByString(camera, "PixelFormat", "RGB8Packed");
    XQ_CC_SetBoolValue(camera, "AcquisitionFrameRateEnable", true);
    const bool walked = WalkFeatureTree(camera, m_ignorePatterns, &m_firstWalk, &error);
    XQ_CC_DestroyHandle(camera);
    ASSERT_TRUE(setUp);
    ASSERT_TRUE(walked) << qPrintable(error);
    ASSERT_TRUE(m_firstWalk.values.size() > 100) << "a demo reader has well over a hundred readable features";
    // Done with the real device: the store's camera takes its place.
    m_demo.reset();
}

void TestLoop::createVirtualCamera()
{
    m_plan = VirtualStore::planVirtualCamera(m_model, CollectionRoot(), QDateTime::currentMSecsSinceEpoch());
    ASSERT_TRUE(m_plan.has_value());
    ASSERT_TRUE(m_plan->group.startsWith(QStringLiteral("Vir")));
    const std::unique_ptr<QSettings> settings(
        VirtualStore::openVirtualCameraSettings(VirtualStore::configFilePath(), nullptr));
    const VirtualStore::CreationOutcome outcome =
        VirtualStore::createVirtualCamera(*m_plan, [&](const QString& group, const QString& model) {
            if (!VirtualStore::isConfigFileWritable(VirtualStore::configFilePath()))
                return false;
            VirtualStore::writeVirtualCameraGroup(*settings, group, model, VirtualStore::supportedModels());
            settings->sync();
            return settings->status() == QSettings::NoError;
        });
    ASSERT_EQ(outcome, VirtualStore::CreationOutcome::Created);
    ASSERT_TRUE(VirtualStore::storePath().startsWith(qEnvironmentVariable("QUORVEX_SYSTEM_TEMP")));
    ASSERT_TRUE(QFileInfo::exists(VirtualStore::registerFilePath(m_plan->group, m_model)));
}

void TestLoop::DiscoverVirtualCamera()
{
    QString error;
    // "--store" alone: the simulator finds the store as the tool does.
    std::string why;
    ASSERT_TRUE(xqtest::startSimulatorWith(m_storeSimulator, {"--store"}, why)) << why.c_str();
    const auto readers = WaitForCodeReaders(1, kDiscoveryTimeoutMs);
    ASSERT_TRUE(readers.size() == 1) << qPrintable(QStringLiteral("the virtual camera was not found; simulator said: ") + OutputOf(m_storeSimulator));
    m_virtualRecord = readers.first();
    ASSERT_EQ(SerialOf(m_virtualRecord), m_plan->group);
    ASSERT_EQ(ModelOf(m_virtualRecord), m_model);
    ASSERT_TRUE(!collect::isListedCodeReader(m_virtualRecord)) << "the window's table leaves virtual cameras out";
    ASSERT_EQ(AddressOf(m_virtualRecord), QStringLiteral("127.0.0.2"));

    const std::vector<std::string> aravisSerials = SerialNumbersFromAravis();
    ASSERT_TRUE(std::find(aravisSerials.begin(), aravisSerials.end(), m_plan->group.toStdString()) != aravisSerials.end()) << "Aravis discovers the virtual camera under its serial number";
}

void TestLoop::CompareFeatureValues()
{
    QString error;
    const XQ_HANDLE camera = OpenCameraBySerial(m_plan->group, &error);
    ASSERT_TRUE(camera != nullptr) << qPrintable(error);
    XQ_GIGE_SetGvcpTimeout(camera, kGvcpTimeoutMs);
    FeatureWalk replayed;
    const bool walked = WalkFeatureTree(camera, m_ignorePatterns, &replayed, &error);
    XQ_CC_DestroyHandle(camera);
    ASSERT_TRUE(walked) << qPrintable(error);

    const QSet<QString> skipped = kIdentityFeatures + kRunningValues;
    const QStringList differences = CompareWalks(m_firstWalk, replayed, skipped);
    ASSERT_TRUE(differences.isEmpty()) << qPrintable(QStringLiteral("%1 of %2 features differ:\n")
                                                   .arg(differences.size())
                                                   .arg(m_firstWalk.values.size())
                                               + differences.join('\n'));
    ASSERT_EQ(replayed.failedReads, m_firstWalk.failedReads);
    // The clock reads back as the collection saw it: frozen, never running.
    ASSERT_TRUE(replayed.values.contains(kDeviceClock));
}

void TestLoop::GrabFramesAndCodes()
{
    const QString cameraFolder = VirtualStore::cameraFolder(m_plan->group);
    // That the collection wrote a row per image is the job test's to check.
    const int imageCount = QDir(cameraFolder + QStringLiteral("/Jpg")).entryList({QStringLiteral("*.jpg")}, QDir::Files).size();
    ASSERT_TRUE(imageCount > 0);
    const QMap<int, CsvRow> rows = ReadCsvRows(cameraFolder + QStringLiteral("/ImportInformation.csv"));

    XQ_HANDLE reader = nullptr;
    ASSERT_EQ(XQ_CODEREADER_CreateHandle(&reader, &m_virtualRecord), XQ_OK);
    ASSERT_EQ(XQ_CODEREADER_OpenDevice(reader), XQ_OK);
    XQ_CODEREADER_GIGE_SetGvcpTimeout(reader, kGvcpTimeoutMs);
    const bool triggerSet = XQ_CODEREADER_SetEnumValue(reader, "TriggerMode", 1) == XQ_OK
                            && XQ_CODEREADER_SetEnumValue(reader, "TriggerSource", 7) == XQ_OK;
    const bool started = triggerSet && XQ_CODEREADER_StartGrabbing(reader) == XQ_OK;

    // One more round than there are images shows the frames loop.
    QVector<GrabbedFrame> frames;
    auto info = std::make_unique<XQ_CODEREADER_FRAME_INFO>();
    for (int i = 0; started && i < imageCount + 2; ++i) {
        XQ_CODEREADER_SetCommandValue(reader, "TriggerSoftware");
        unsigned char* data = nullptr;
        if (XQ_CODEREADER_GetOneFrameTimeout(reader, &data, info.get(), 3000) != XQ_OK)
            continue;
        GrabbedFrame frame;
        frame.frameNumber = info->nFrameNum;
        frame.jpeg = QByteArray(reinterpret_cast<const char*>(data), static_cast<int>(info->nFrameLen));
        for (unsigned int c = 0; c < info->nCodeNum && c < XQ_CODEREADER_MAX_CODE_NUM; ++c) {
            const XQ_CODEREADER_CODE_INFO& code = info->stCodeInfo[c];
            FrameCode decoded;
            decoded.text = QString::fromUtf8(code.chCode, static_cast<int>(code.nCodeLen));
            QCollectInfoThread::GetCodeTypeName(code.nSymbology, decoded.typeName);
            for (int p = 0; p < 4; ++p) {
                decoded.corners[2 * p] = code.stCornerPt[p].nX;
                decoded.corners[2 * p + 1] = code.stCornerPt[p].nY;
            }
            frame.codes << decoded;
        }
        frames << frame;
    }

    if (started)
        XQ_CODEREADER_StopGrabbing(reader);
    XQ_CODEREADER_DestroyHandle(reader);

    ASSERT_TRUE(triggerSet && started) << "software trigger and grabbing on the virtual camera";
    ASSERT_TRUE(frames.size() >= imageCount + 1) << qPrintable(QStringLiteral("%1 frames for %2 triggers").arg(frames.size()).arg(imageCount + 2));
    bool looped = false;
    for (const GrabbedFrame& frame : frames) {
        ASSERT_TRUE(frame.frameNumber > 0);
        const int image = static_cast<int>((frame.frameNumber - 1) % static_cast<unsigned int>(imageCount)) + 1;
        looped = looped || frame.frameNumber > static_cast<unsigned int>(imageCount);
        const QString context = QStringLiteral("frame %1 (image %2)").arg(frame.frameNumber).arg(image);

        GreyImage grabbed;
        GreyImage collected;
        ASSERT_TRUE(DecodeGreyJpeg(frame.jpeg, &grabbed)) << qPrintable(context);
        ASSERT_TRUE(DecodeGreyJpeg(ReadAll(cameraFolder + QStringLiteral("/Jpg/%1.jpg").arg(image)), &collected));
        ASSERT_EQ(grabbed.width, collected.width);
        ASSERT_EQ(grabbed.height, collected.height);
        const double difference = MeanDifference(grabbed, collected);
        ASSERT_TRUE(difference <= kMaxMeanPixelDifference) << qPrintable(context + QStringLiteral(": mean difference %1").arg(difference));

        // The same codes as the collection wrote for that image.
        const CsvRow& row = rows[image];
        ASSERT_EQ(std::min(frame.codes.size(), 6), row.codes.size());
        // A code can be found twice (a linear code cut by another), so each
        // written code takes the nearest unused one of the same text.
        QVector<bool> used(frame.codes.size(), false);
        for (const FrameCode& written : row.codes) {
            int best = -1;
            int bestDistance = 0;
            for (int c = 0; c < frame.codes.size(); ++c) {
                if (used[c] || frame.codes[c].text != written.text)
                    continue;
                int distance = 0;
                for (int i = 0; i < 8; ++i)
                    distance = std::max(distance, std::abs(frame.codes[c].corners[i] - written.corners[i]));
                if (best < 0 || distance < bestDistance) {
                    best = c;
                    bestDistance = distance;
                }
            }
            ASSERT_TRUE(best >= 0) << qPrintable(context + QStringLiteral(": no ") + written.text);
            used[best] = true;
            ASSERT_EQ(frame.codes[best].typeName, written.typeName);
            ASSERT_TRUE(bestDistance <= kCornerTolerance) << qPrintable(context + QStringLiteral(", %1: corners %2 pixels away").arg(written.text).arg(bestDistance));
        }
    }
    ASSERT_TRUE(looped) << "after the last image the frames start again with the first";
}

int main(int argc, char** argv)
{
    RunFromOwnSuiteLayout(argv);
    // The store lives in the test's own home, never in the user's cache.
    const QString systemTemp = SuiteRoot() + QStringLiteral("/../SystemTemp");
    QDir().mkpath(systemTemp);
    qputenv("QUORVEX_SYSTEM_TEMP", QDir(systemTemp).absolutePath().toUtf8());
    ::testing::InitGoogleTest(&argc, argv);
    QCoreApplication app(argc, argv);
    return RUN_ALL_TESTS();
}

