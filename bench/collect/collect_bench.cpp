// Collects one demo code reader of the simulator and prints how long the
// feature capture took against what its walks must cost at least: walks x
// reads per walk x the device's single-read round trip, measured in the same
// run. Also prints the frames captured in the image window.
//
// Run inside a private network namespace:
//   tests/netns-run <build>/bin/bench_collect [path/to/quorvex-simulator]

#include "CollectProgress.h"
#include "FeatureRules.h"
#include "IgnoreList.h"
#include "QCollectInfoThread.h"
#include "SuiteLayout.h"
#include "XQCameraControl.h"
#include "XqCodeReaderCtrl.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QMutex>
#include <QProcess>
#include <QTextStream>
#include <QThread>

#include <atomic>
#include <fcntl.h>
#include <unistd.h>
#include <cstdio>
#include <memory>

namespace {

constexpr int kRoundTripReads = 2000;

std::atomic<int> g_stateWalks{0};

void CountWalks(QtMsgType, const QMessageLogContext&, const QString& message)
{
    if (message.startsWith(QLatin1String("boolIndex[")) || message.startsWith(QLatin1String("enumIndex[")))
        ++g_stateWalks;
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

bool FindReader(XQ_CODEREADER_DEVICE_INFO* reader)
{
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < 30000) {
        auto list = std::make_unique<XQ_CODEREADER_DEVICE_INFO_LIST>();
        if (XQ_CODEREADER_EnumDevices(list.get(), XQ_TLAYER_GIGE) == XQ_OK && list->nDeviceNum > 0
            && list->pDeviceInfo[0] != nullptr) {
            *reader = *list->pDeviceInfo[0];
            return true;
        }
        QThread::msleep(200);
    }
    return false;
}

struct WalkFigures {
    int reads = 0;
    // Register reads the walk caused on the wire, from the demo reader's own
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
// reading every qualifying node once, with the node list taken from the heap
// per node as the job does.
void Walk(XQ_HANDLE camera, const XQ_XML_NODE_FEATURE& node, const QSet<QString>& ignore, int depth,
          WalkFigures* figures)
{
    const QString name = QString::fromUtf8(node.chName);
    if (collect::MatchingIgnorePattern(name, ignore) == nullptr) {
        QElapsedTimer clock;
        clock.start();
        unsigned int access = XQ_AM_NI;
        XQ_XML_GetNodeAccessMode(camera, node.chName, &access);
        figures->accessModeMs += MsSince(clock);
        if (!collect::IsSkippedAccessMode(access) && collect::IsReadVisibility(node.nVisibility)
            && collect::IsValueInterfaceType(node.nInterfaceType)) {
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
    const std::unique_ptr<XQ_XML_NODES_LIST> children(new XQ_XML_NODES_LIST);
    QElapsedTimer clock;
    clock.start();
    const bool listed = XQ_XML_GetChildren(camera, &node, children.get()) == XQ_OK;
    figures->childrenMs += MsSince(clock);
    if (listed && depth < 64) {
        for (unsigned int i = 0; i < children->nNodeNum && i < XQ_MAX_XML_NODE_NUM; ++i)
            Walk(camera, children->stNodes[i], ignore, depth + 1, figures);
    }
}

// The same device through the camera SDK, after the job: one walk and the
// mean of many single reads of one integer feature.
bool MeasureDevice(const QSet<QString>& ignore, WalkFigures* walk, double* roundTripMs)
{
    auto list = std::make_unique<XQ_CC_DEVICE_INFO_LIST>();
    if (XQ_CC_EnumDevices(list.get(), XQ_TLAYER_GIGE) != XQ_OK || list->nDeviceNum == 0)
        return false;
    XQ_HANDLE camera = nullptr;
    if (XQ_CC_CreateHandle(&camera, list->pDeviceInfo[0]) != XQ_OK)
        return false;
    bool ok = XQ_CC_OpenDevice(camera, XQ_ACCESS_EXCLUSIVE, 0) == XQ_OK;
    XQ_XML_NODE_FEATURE root{};
    ok = ok && XQ_XML_GetRootNode(camera, &root) == XQ_OK;
    if (ok) {
        int64_t before = 0;
        const bool counted = XQ_CC_GetIntValue(camera, "StatRegisterReads", &before) == XQ_OK;
        QElapsedTimer clock;
        clock.start();
        Walk(camera, root, ignore, 0, walk);
        walk->walkMs = MsSince(clock);
        int64_t after = 0;
        // The counter counts its own read too.
        if (counted && XQ_CC_GetIntValue(camera, "StatRegisterReads", &after) == XQ_OK)
            walk->wireReads = after - before - 1;

        int64_t value = 0;
        ok = XQ_CC_GetIntValue(camera, "Width", &value) == XQ_OK;
        clock.restart();
        for (int i = 0; ok && i < kRoundTripReads; ++i)
            ok = XQ_CC_GetIntValue(camera, "Width", &value) == XQ_OK;
        *roundTripMs = clock.nsecsElapsed() / 1e6 / kRoundTripReads;
    }
    XQ_CC_DestroyHandle(camera);
    return ok;
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
    QFile::remove(QStringLiteral("Config/Config.json"));
    QFile::copy(QStringLiteral(QUORVEX_SOURCE_DIR "/resources/config/Config.json"), QStringLiteral("Config/Config.json"));
    QFile config(QStringLiteral("Config/Config.json"));
    config.open(QIODevice::ReadOnly);
    const QStringList patterns = collect::ParseIgnoreList(config.readAll()).patterns;
    const QSet<QString> ignore(patterns.begin(), patterns.end());

    QProcess simulator;
    simulator.start(simulatorPath, {QStringLiteral("--demo"), QStringLiteral("1")});
    if (!simulator.waitForStarted(10000)) {
        out << "bench_collect: cannot start the simulator " << simulatorPath << "\n";
        return 2;
    }
    XQ_CODEREADER_DEVICE_INFO reader{};
    if (!FindReader(&reader)) {
        out << "bench_collect: no code reader found\n";
        return 1;
    }

    // The job, with its stdout chatter out of the way of the figures.
    std::fflush(stdout);
    const int savedStdout = dup(STDOUT_FILENO);
    const int devNull = open("/dev/null", O_WRONLY);
    dup2(devNull, STDOUT_FILENO);
    close(devNull);
    qInstallMessageHandler(&CountWalks);
    QElapsedTimer clock;
    qint64 imagesEndNs = 0;
    qint64 finishNs = 0;
    QString status;
    {
        QCollectInfoThread job;
        job.SetDeviceInfo(reader);
        QObject::connect(&job, &QCollectInfoThread::SigDeviceCollectProgress, &job, [&](const QString&, int percent) {
            if (percent == collect::kProgressAfterImages && imagesEndNs == 0)
                imagesEndNs = clock.nsecsElapsed();
        }, Qt::DirectConnection);
        QObject::connect(&job, &QCollectInfoThread::SigDeviceCollectFinish, &job,
                         [&](const QString&, const QString&) { finishNs = clock.nsecsElapsed(); }, Qt::DirectConnection);
        QObject::connect(&job, &QCollectInfoThread::SigDeviceCollectStatus, &job,
                         [&](const QString&, const QString& info) { status = info; }, Qt::DirectConnection);
        clock.start();
        job.start();
        job.wait();
    }
    qInstallMessageHandler(nullptr);
    std::fflush(stdout);
    dup2(savedStdout, STDOUT_FILENO);
    close(savedStdout);

    QTextStream& report = out;
    if (finishNs == 0) {
        report << "bench_collect: the job did not finish: " << status << "\n";
        return 1;
    }
    const QString model = QString::fromUtf8(reinterpret_cast<const char*>(reader.stGigE.chModelName));
    const int frames = QDir(CollectionRoot() + QLatin1Char('/') + model + QStringLiteral("/Jpg"))
                           .entryList(QDir::Files).size();

    WalkFigures walk;
    double roundTripMs = 0;
    if (!MeasureDevice(ignore, &walk, &roundTripMs)) {
        report << "bench_collect: cannot measure the device's round trip\n";
        return 1;
    }
    const int walks = 1 + g_stateWalks.load();
    const double captureMs = (finishNs - imagesEndNs) / 1e6;
    const double floorMs = walks * walk.reads * roundTripMs;

    report << "device                       " << model << "\n";
    report << "frames in the image window   " << frames << " (" << imagesEndNs / 1e6 << " ms until capture ended)\n";
    report << "walks                        " << walks << "\n";
    report << "reads per walk               " << walk.reads << "\n";
    report << "feature capture time         " << captureMs << " ms\n";
    report << "single-read round trip       " << roundTripMs * 1000 << " us (mean of " << kRoundTripReads << ")\n";
    report << "job's mean time per walk     " << captureMs / walks << " ms\n";
    report << "one walk, measured alone     " << walk.walkMs << " ms: access modes " << walk.accessModeMs
           << ", children lists " << walk.childrenMs << ", value reads " << walk.valueReadMs << "\n";
    report << "mean value read in a walk    " << walk.valueReadMs / walk.reads * 1000 << " us\n";
    report << "walks x reads x round trip   " << floorMs << " ms\n";
    report << "ratio                        " << captureMs / floorMs << " (target <= 1.2)\n";
    // A feature read may need several registers (values, availability,
    // selectors): the wire's own floor counts those.
    if (walk.wireReads > 0) {
        const double wireFloorMs = walks * walk.wireReads * roundTripMs;
        report << "register reads per walk      " << walk.wireReads << " (on the wire)\n";
        report << "walks x register reads x round trip " << wireFloorMs << " ms\n";
        report << "ratio on register reads      " << captureMs / wireFloorMs << " (target <= 1.2)\n";
    }

    simulator.terminate();
    simulator.waitForFinished(5000);
    RemoveTemporaryHome();
    return 0;
}
