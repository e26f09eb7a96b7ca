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
#include "DeviceFigures.h"
#include "IgnoreList.h"
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

#include <fcntl.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <vector>

namespace {

constexpr int kReadsBetweenWalks = 32;
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
