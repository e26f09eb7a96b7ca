// Collects one demo code reader of the simulator and prints how long the
// feature capture's walks took against what they must cost at least: walks
// x reads per walk x the device's single-read round trip, measured in the
// same run. "Reads" are counted twice: as feature reads (one per feature the
// walk reads) and as round trips on the wire (the demo reader counts every
// read command it answers; a feature may need several registers:
// availability, selectors). Also prints the frames captured in the image
// window.
//
// A shared machine's speed drifts from one moment to the next, so the round
// trip that judges the walks is sampled between them: before each walk the
// job logs a line, and on that line, in the job's own thread, the benchmark
// times a few reads of a sibling reader served by the same simulator thread.
// That time is taken out of the walks' time.
//
// Run inside a private network namespace:
//   tests/netns-run <build>/bin/bench_collect [path/to/quorvex-simulator]

#include "CollectProgress.h"
#include "FeatureRules.h"
#include "IgnoreList.h"
#include "NodeListPool.h"
#include "QCollectInfoThread.h"
#include "SuiteLayout.h"
#include "XQCameraControl.h"
#include "XqCodeReaderCtrl.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTextStream>
#include <QThread>

#include <fcntl.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <vector>

namespace {

constexpr int kRoundTripReads = 5000;
constexpr int kReadsBetweenWalks = 32;
constexpr int kMeasuredWalks = 9;
constexpr std::size_t kJobRuns = 5;

qint64 ThreadCpuNs()
{
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return qint64(now.tv_sec) * 1000000000 + now.tv_nsec;
}

// What the message handler gathers in the job's thread during one job; read
// once the job's thread has ended.
struct BetweenWalks {
    int stateWalks = 0;
    // Reads of the sibling reader, their time and CPU; all time spent
    // sampling.
    qint64 sampleReads = 0;
    qint64 sampleNs = 0;
    qint64 sampleCpuNs = 0;
    qint64 probeNs = 0;
    // CPU time of the job's thread from one sampling to the next, that is in
    // the walks and state changes; the last stretch is not counted.
    qint64 walkCpuNs = 0;
};

struct Sampler {
    BetweenWalks figures;
    qint64 lastProbeEndCpuNs = -1;
    XQ_HANDLE sibling = nullptr;

    void reset()
    {
        figures = {};
        lastProbeEndCpuNs = -1;
    }
};
Sampler g_sampler;

void SampleBetweenWalks(QtMsgType, const QMessageLogContext&, const QString& message)
{
    if (!message.startsWith(QLatin1String("boolIndex[")) && !message.startsWith(QLatin1String("enumIndex[")))
        return;
    QElapsedTimer probe;
    probe.start();
    const qint64 cpuNs = ThreadCpuNs();
    BetweenWalks& figures = g_sampler.figures;
    if (g_sampler.lastProbeEndCpuNs >= 0)
        figures.walkCpuNs += cpuNs - g_sampler.lastProbeEndCpuNs;
    ++figures.stateWalks;
    if (g_sampler.sibling) {
        int64_t value = 0;
        QElapsedTimer reads;
        reads.start();
        int done = 0;
        while (done < kReadsBetweenWalks && XQ_CC_GetIntValue(g_sampler.sibling, "Width", &value) == XQ_OK)
            ++done;
        figures.sampleNs += reads.nsecsElapsed();
        figures.sampleCpuNs += ThreadCpuNs() - cpuNs;
        figures.sampleReads += done;
    }
    figures.probeNs += probe.nsecsElapsed();
    g_sampler.lastProbeEndCpuNs = ThreadCpuNs();
}

// Only loopback may be up: devices are served and found on 127.0.0.0/8.
bool InPrivateNamespace()
{
    QFile devices(QStringLiteral("/proc/net/dev"));
    if (!devices.open(QIODevice::ReadOnly | QIODevice::Text))
        return false;
    const QStringList lines = QString::fromLatin1(devices.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    for (const QString& line : lines.mid(2)) {
        if (line.section(QLatin1Char(':'), 0, 0).trimmed() != QLatin1String("lo"))
            return false;
    }
    return true;
}

// The reader to collect and its sibling, the first two listed.
bool FindReaders(XQ_CODEREADER_DEVICE_INFO* reader, XQ_CODEREADER_DEVICE_INFO* sibling)
{
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < 30000) {
        auto list = std::make_unique<XQ_CODEREADER_DEVICE_INFO_LIST>();
        if (XQ_CODEREADER_EnumDevices(list.get(), XQ_TLAYER_GIGE) == XQ_OK && list->nDeviceNum > 1
            && list->pDeviceInfo[0] != nullptr && list->pDeviceInfo[1] != nullptr) {
            *reader = *list->pDeviceInfo[0];
            *sibling = *list->pDeviceInfo[1];
            return true;
        }
        QThread::msleep(200);
    }
    return false;
}

struct WalkFigures {
    int reads = 0;
    // Read commands the walk put on the wire, from the demo reader's own
    // counter; -1 when the device has none.
    qint64 wireReads = -1;
    double walkMs = 0;
    // Where one walk spends its time.
    double accessModeMs = 0;
    double childrenMs = 0;
    double valueReadMs = 0;
};

double MsSince(const QElapsedTimer& clock)
{
    return clock.nsecsElapsed() / 1e6;
}

// One walk by the job's rules (ignore list, access mode, visibility, type),
// reading every qualifying node once, with a node list per node as the job
// takes it.
void Walk(XQ_HANDLE camera, const XQ_XML_NODE_FEATURE& node, const QSet<QString>& ignore, int depth,
          collect::NodeListPool& lists, WalkFigures* figures)
{
    const QString name = QString::fromUtf8(node.chName);
    if (collect::matchingIgnorePattern(name, ignore) == nullptr) {
        QElapsedTimer clock;
        clock.start();
        unsigned int access = XQ_AM_NI;
        XQ_XML_GetNodeAccessMode(camera, node.chName, &access);
        figures->accessModeMs += MsSince(clock);
        if (!collect::isSkippedAccessMode(access) && collect::isReadVisibility(node.nVisibility)
            && collect::isValueInterfaceType(node.nInterfaceType)) {
            ++figures->reads;
            clock.restart();
            switch (node.nInterfaceType) {
            case XQ_IFT_IINTEGER: { int64_t v = 0; XQ_CC_GetIntValue(camera, node.chName, &v); break; }
            case XQ_IFT_IBOOLEAN: { bool v = false; XQ_CC_GetBoolValue(camera, node.chName, &v); break; }
            case XQ_IFT_IFLOAT: { double v = 0; XQ_CC_GetFloatValue(camera, node.chName, &v); break; }
            case XQ_IFT_ISTRING: { XQ_CC_STRINGVALUE v{}; XQ_CC_GetStringValue(camera, node.chName, &v); break; }
            default: { XQ_ENUMVALUE v{}; XQ_CC_GetEnumValue(camera, node.chName, &v); break; }
            }
            figures->valueReadMs += MsSince(clock);
        }
    }
    const collect::NodeListPool::Lease children = lists.take();
    QElapsedTimer clock;
    clock.start();
    const bool listed = XQ_XML_GetChildren(camera, &node, children.get()) == XQ_OK;
    figures->childrenMs += MsSince(clock);
    if (listed && depth < 64) {
        for (unsigned int i = 0; i < children->nNodeNum && i < XQ_MAX_XML_NODE_NUM; ++i)
            Walk(camera, children->stNodes[i], ignore, depth + 1, lists, figures);
    }
}

// One walk with its wire reads counted; the counter counts its own reads too.
void CountedWalk(XQ_HANDLE camera, const XQ_XML_NODE_FEATURE& root, const QSet<QString>& ignore, WalkFigures* walk)
{
    int64_t before = 0;
    const bool counted = XQ_CC_GetIntValue(camera, "StatRegisterReads", &before) == XQ_OK;
    QElapsedTimer clock;
    clock.start();
    collect::NodeListPool lists;
    Walk(camera, root, ignore, 0, lists, walk);
    walk->walkMs = MsSince(clock);
    int64_t after = 0;
    if (counted && XQ_CC_GetIntValue(camera, "StatRegisterReads", &after) == XQ_OK)
        walk->wireReads = after - before - 1;
}

QByteArray SerialOf(const XQ_CODEREADER_DEVICE_INFO& reader)
{
    const auto* serial = reinterpret_cast<const char*>(reader.stGigE.chSerialNumber);
    return QByteArray(serial, int(strnlen(serial, sizeof reader.stGigE.chSerialNumber)));
}

// A handle on the camera with this serial number, opened exclusively, or
// nullptr. Destroying the handle closes it.
XQ_HANDLE OpenCamera(const QByteArray& serial)
{
    auto list = std::make_unique<XQ_CC_DEVICE_INFO_LIST>();
    if (XQ_CC_EnumDevices(list.get(), XQ_TLAYER_GIGE) != XQ_OK)
        return nullptr;
    for (unsigned int i = 0; i < list->nDeviceNum && i < XQ_MAX_DEVICE_NUM; ++i) {
        const XQ_CC_DEVICE_INFO* device = list->pDeviceInfo[i];
        const auto* listed = reinterpret_cast<const char*>(device->stGigE.chSerialNumber);
        if (serial != QByteArray(listed, int(strnlen(listed, sizeof device->stGigE.chSerialNumber))))
            continue;
        XQ_HANDLE camera = nullptr;
        if (XQ_CC_CreateHandle(&camera, device) != XQ_OK)
            return nullptr;
        if (XQ_CC_OpenDevice(camera, XQ_ACCESS_EXCLUSIVE, 0) != XQ_OK) {
            XQ_CC_DestroyHandle(camera);
            return nullptr;
        }
        return camera;
    }
    return nullptr;
}

// The same device through the camera SDK, after the job: walks in the state
// the job left (every boolean flipped, the last entries chosen) and one in
// the default state.
bool MeasureDevice(const QByteArray& serial, const QSet<QString>& ignore, WalkFigures* lastState,
                   WalkFigures* defaultState)
{
    XQ_HANDLE camera = OpenCamera(serial);
    if (!camera)
        return false;
    XQ_XML_NODE_FEATURE root{};
    const bool ok = XQ_XML_GetRootNode(camera, &root) == XQ_OK;
    if (ok) {
        // The first walk of a session also learns the description's shapes:
        // keep the median of several.
        std::vector<WalkFigures> walks(kMeasuredWalks);
        for (WalkFigures& walk : walks)
            CountedWalk(camera, root, ignore, &walk);
        std::sort(walks.begin(), walks.end(),
                  [](const WalkFigures& a, const WalkFigures& b) { return a.walkMs < b.walkMs; });
        *lastState = walks[walks.size() / 2];
        XQ_CC_SetEnumValueByString(camera, "UserSetSelector", "Default");
        XQ_CC_SetCommandValue(camera, "UserSetLoad");
        CountedWalk(camera, root, ignore, defaultState);
    }
    XQ_CC_DestroyHandle(camera);
    return ok;
}

struct DeviceSample {
    // The demo reader's count of read commands answered so far.
    qint64 readCommands = -1;
    // Mean time of one read of an integer feature that is one plain
    // register, taken right after the count.
    double roundTripMs = -1;
    bool valid() const { return readCommands >= 0 && roundTripMs > 0; }
};

// Samples the device through a session of its own, then restores its
// factory settings. Every sample costs the same read commands, so they
// cancel between two samples' counts.
DeviceSample SampleDevice(const QByteArray& serial)
{
    DeviceSample sample;
    XQ_HANDLE camera = OpenCamera(serial);
    if (!camera)
        return sample;
    int64_t count = -1;
    int64_t value = 0;
    bool ok = XQ_CC_GetIntValue(camera, "StatRegisterReads", &count) == XQ_OK
        && XQ_CC_GetIntValue(camera, "Width", &value) == XQ_OK;
    QElapsedTimer clock;
    clock.start();
    for (int i = 0; ok && i < kRoundTripReads; ++i)
        ok = XQ_CC_GetIntValue(camera, "Width", &value) == XQ_OK;
    if (ok) {
        sample.roundTripMs = clock.nsecsElapsed() / 1e6 / kRoundTripReads;
        sample.readCommands = count;
    }
    // A job leaves every boolean flipped and the last entry of every
    // enumeration chosen, acquisition mode included: the next job would see
    // its images stop after one frame. Start each from the factory settings.
    XQ_CC_SetEnumValueByString(camera, "UserSetSelector", "Default");
    XQ_CC_SetCommandValue(camera, "UserSetLoad");
    XQ_CC_DestroyHandle(camera);
    return sample;
}

struct JobRun {
    qint64 imagesEndNs = 0;
    qint64 firstWalkEndNs = 0;
    qint64 walksEndNs = 0;
    qint64 finishNs = 0;
    BetweenWalks between;
    QString status;

    // The walks in boolean and enumeration states (progress 10 to 99),
    // without the sampling between them.
    double walksMs() const { return (walksEndNs - firstWalkEndNs - between.probeNs) / 1e6; }
    double sampledRoundTripMs() const
    {
        return between.sampleReads > 0 ? between.sampleNs / 1e6 / between.sampleReads : -1;
    }
};

// One collection job with the given ignore list, its stdout chatter out of
// the way of the figures.
JobRun RunJob(const XQ_CODEREADER_DEVICE_INFO& reader, const QByteArray& config)
{
    QFile file(QStringLiteral("Config/Config.json"));
    if (file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        file.write(config);
    file.close();
    std::fflush(stdout);
    const int savedStdout = dup(STDOUT_FILENO);
    const int devNull = open("/dev/null", O_WRONLY);
    dup2(devNull, STDOUT_FILENO);
    close(devNull);
    g_sampler.reset();
    qInstallMessageHandler(&SampleBetweenWalks);
    QElapsedTimer clock;
    JobRun run;
    {
        QCollectInfoThread job;
        job.SetDeviceInfo(reader);
        QObject::connect(&job, &QCollectInfoThread::SigDeviceCollectProgress, &job, [&](const QString&, int percent) {
            if (percent == collect::kProgressAfterImages && run.imagesEndNs == 0)
                run.imagesEndNs = clock.nsecsElapsed();
            if (percent == collect::kProgressAfterRecording && run.firstWalkEndNs == 0)
                run.firstWalkEndNs = clock.nsecsElapsed();
            if (percent == collect::kProgressAfterPasses && run.walksEndNs == 0)
                run.walksEndNs = clock.nsecsElapsed();
        }, Qt::DirectConnection);
        QObject::connect(&job, &QCollectInfoThread::SigDeviceCollectFinish, &job,
                         [&](const QString&, const QString&) { run.finishNs = clock.nsecsElapsed(); },
                         Qt::DirectConnection);
        QObject::connect(&job, &QCollectInfoThread::SigDeviceCollectStatus, &job,
                         [&](const QString&, const QString& info) { run.status = info; }, Qt::DirectConnection);
        clock.start();
        job.start();
        job.wait();
    }
    qInstallMessageHandler(nullptr);
    std::fflush(stdout);
    dup2(savedStdout, STDOUT_FILENO);
    close(savedStdout);
    run.between = g_sampler.figures;
    return run;
}

} // namespace

int main(int argc, char** argv)
{
    RunFromOwnSuiteLayout(argv);
    QCoreApplication app(argc, argv);
    QTextStream out(stdout);

    if (!InPrivateNamespace()) {
        out << "bench_collect: run it inside a private network namespace, e.g. tests/netns-run " << argv[0] << "\n";
        return 2;
    }
    QString simulatorPath = argc > 1 ? QString::fromLocal8Bit(argv[1]) : qEnvironmentVariable("QUORVEX_SIMULATOR");
    if (simulatorPath.isEmpty())
        simulatorPath = QStringLiteral(QUORVEX_DEFAULT_SIMULATOR);

    QDir().mkpath(SuiteRoot() + QStringLiteral("/common"));
    QDir::setCurrent(SuiteRoot());
    QDir().mkpath(QStringLiteral("Config"));
    QFile config(QStringLiteral(QUORVEX_SOURCE_DIR "/resources/config/Config.json"));
    config.open(QIODevice::ReadOnly);
    const QByteArray shippedConfig = config.readAll();
    const QStringList patterns = collect::parseIgnoreList(shippedConfig).patterns;
    const QSet<QString> ignore(patterns.begin(), patterns.end());

    QProcess simulator;
    simulator.start(simulatorPath, {QStringLiteral("--demo"), QStringLiteral("2")});
    if (!simulator.waitForStarted(10000)) {
        out << "bench_collect: cannot start the simulator " << simulatorPath << "\n";
        return 2;
    }
    XQ_CODEREADER_DEVICE_INFO reader{};
    XQ_CODEREADER_DEVICE_INFO siblingReader{};
    if (!FindReaders(&reader, &siblingReader)) {
        out << "bench_collect: the simulator's two code readers were not found\n";
        return 1;
    }
    const QByteArray serial = SerialOf(reader);
    g_sampler.sibling = OpenCamera(SerialOf(siblingReader));
    if (!g_sampler.sibling) {
        out << "bench_collect: cannot open the sibling reader\n";
        return 1;
    }

    // The job once ignoring every node (an empty pattern matches all), which
    // leaves the set-up alone, then as shipped, several times; the median
    // run is reported. The difference in read commands the device answered
    // between a full job and the set-up alone is what the walks and the state
    // changes between them cost on the wire.
    const QString model = QString::fromUtf8(reinterpret_cast<const char*>(reader.stGigE.chModelName));
    const DeviceSample beforeSetUpOnly = SampleDevice(serial);
    const JobRun setUpOnly = RunJob(reader, R"({"IgnoreNodes": [""]})");
    std::vector<DeviceSample> samples{SampleDevice(serial)};
    std::vector<JobRun> runs;
    for (std::size_t i = 0; i < kJobRuns; ++i) {
        QDir(CollectionRoot() + QLatin1Char('/') + model).removeRecursively();
        runs.push_back(RunJob(reader, shippedConfig));
        samples.push_back(SampleDevice(serial));
        if (runs.back().finishNs == 0 || !samples.back().valid())
            break;
    }
    const bool allFinished = setUpOnly.finishNs != 0 && runs.size() == kJobRuns
        && std::all_of(runs.begin(), runs.end(), [](const JobRun& run) { return run.finishNs != 0; });
    if (!allFinished) {
        out << "bench_collect: the job did not finish: " << setUpOnly.status << runs.back().status << "\n";
        return 1;
    }
    QTextStream& report = out;
    WalkFigures walk;
    WalkFigures defaultWalk;
    if (!beforeSetUpOnly.valid() || !samples.front().valid() || !samples.back().valid()
        || !MeasureDevice(serial, ignore, &walk, &defaultWalk) || defaultWalk.wireReads <= 0) {
        report << "bench_collect: cannot measure the device\n";
        return 1;
    }
    const int frames = QDir(CollectionRoot() + QLatin1Char('/') + model + QStringLiteral("/Jpg"))
                           .entryList(QDir::Files).size();

    // Read commands of the first full job beyond the set-up-only job's, less
    // the recording walk (counted as one walk in the default state), were
    // answered within the timed walks; every run asks the same.
    const qint64 setUpCommands = samples[0].readCommands - beforeSetUpOnly.readCommands;
    const qint64 walkCommands = (samples[1].readCommands - samples[0].readCommands) - setUpCommands
        - defaultWalk.wireReads;

    struct RunFigures {
        double captureMs;
        double roundTripMs;       // sampled between the walks
        double ratio;             // on round trips
        double asideRoundTripMs;  // the collected reader's, right before and after the run
    };
    std::vector<RunFigures> figures;
    for (std::size_t i = 0; i < runs.size(); ++i) {
        const double captureMs = runs[i].walksMs();
        const double roundTripMs = runs[i].sampledRoundTripMs();
        const double asideRoundTripMs = (samples[i].roundTripMs + samples[i + 1].roundTripMs) / 2;
        figures.push_back({captureMs, roundTripMs, captureMs / (walkCommands * roundTripMs), asideRoundTripMs});
    }
    std::vector<RunFigures> byRatio = figures;
    std::sort(byRatio.begin(), byRatio.end(), [](const RunFigures& a, const RunFigures& b) { return a.ratio < b.ratio; });
    const RunFigures& median = byRatio[byRatio.size() / 2];
    const JobRun& first = runs.front();
    const int walks = first.between.stateWalks;
    const double roundTripsPerWalk = double(walkCommands) / walks;
    const double floorMs = walks * walk.reads * median.roundTripMs;
    const double wireFloorMs = walkCommands * median.roundTripMs;

    report << "device                       " << model << "\n";
    report << "frames in the image window   " << frames << " (" << runs.back().imagesEndNs / 1e6
           << " ms until capture ended)\n";
    report << "whole feature phase          " << (first.finishNs - first.imagesEndNs) / 1e6
           << " ms (device list, opening, description, recording walk: "
           << (first.firstWalkEndNs - first.imagesEndNs) / 1e6 << " ms)\n";
    report << "walks                        " << walks << " (in boolean and enumeration states, after the recording walk)\n";
    report << "reads per walk               " << walk.reads << "\n";
    report << "runs                         " << kJobRuns << ", ratio on round trips of each:";
    for (const RunFigures& run : figures)
        report << " " << run.ratio;
    report << "\n";
    report << "feature capture time         " << median.captureMs << " ms (the median run, without "
           << first.between.probeNs / 1e6 << " ms of sampling between its walks)\n";
    report << "single-read round trip       " << median.roundTripMs * 1000 << " us (" << kReadsBetweenWalks
           << " reads of a sibling reader of the same simulator before each walk; the collected reader's, "
           << kRoundTripReads << " reads before and after that run: " << median.asideRoundTripMs * 1000 << " us)\n";
    report << "job's mean time per walk     " << median.captureMs / walks << " ms\n";
    const double cpuPerWalkMs = first.between.walkCpuNs / 1e6 / (walks - 1);
    report << "job thread's CPU per walk    " << cpuPerWalkMs << " ms (" << cpuPerWalkMs * 1000 / roundTripsPerWalk
           << " us per round trip, state changes included; "
           << first.between.sampleCpuNs / 1e3 / first.between.sampleReads << " us per single read of the sibling)\n";
    report << "one walk, measured alone     " << walk.walkMs << " ms (median of " << kMeasuredWalks
           << " in the job's last state): access modes " << walk.accessModeMs << ", children lists "
           << walk.childrenMs << ", value reads " << walk.valueReadMs << "\n";
    report << "walks x reads x round trip   " << floorMs << " ms\n";
    report << "ratio                        " << median.captureMs / floorMs << "\n";
    // A feature read may need several registers (values, availability,
    // selectors), each a round trip: the wire's own floor counts those.
    report << "round trips per walk         " << roundTripsPerWalk << " (read commands on the wire, state changes included; "
           << walk.wireReads << " in a walk in the job's last state, " << defaultWalk.wireReads
           << " in the default state)\n";
    report << "walks x round trips x round trip " << wireFloorMs << " ms\n";
    report << "ratio on round trips         " << median.captureMs / wireFloorMs << " (target <= 1.2)\n";

    XQ_CC_DestroyHandle(g_sampler.sibling);
    simulator.terminate();
    simulator.waitForFinished(5000);
    RemoveTemporaryHome();
    return 0;
}
