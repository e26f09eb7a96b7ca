#include "CollectCommand.h"

#include "AppFolders.h"
#include "CollectJobs.h"
#include "CommandLine.h"
#include "Console.h"
#include "DeviceCommands.h"
#include "DeviceListing.h"
#include "ExitCodes.h"
#include "IgnoreList.h"
#include "ProgressView.h"
#include "StagingFolder.h"
#include "StopSignals.h"

#include <QCoreApplication>
#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>

#include <cstdlib>

namespace cli {

namespace {

constexpr int kStopWaitMs = 500;

QString outcomeName(JobOutcome outcome)
{
    switch (outcome) {
    case JobOutcome::Waiting:
        return QStringLiteral("waiting");
    case JobOutcome::Running:
        return QStringLiteral("running");
    case JobOutcome::Collected:
        return QStringLiteral("collected");
    case JobOutcome::Failed:
        return QStringLiteral("failed");
    case JobOutcome::Stopped:
        return QStringLiteral("stopped");
    }
    return QString();
}

QJsonObject jobJson(const JobState& job)
{
    QJsonObject object{{QStringLiteral("serial"), job.serial},
                       {QStringLiteral("model"), job.model},
                       {QStringLiteral("outcome"), outcomeName(job.outcome)},
                       {QStringLiteral("message"), job.message}};
    if (job.outcome == JobOutcome::Collected)
        object.insert(QStringLiteral("folder"), job.folder);
    return object;
}

int refuse(const Request& request, const Console& console, int code, const QString& message)
{
    console.err(QStringLiteral("quorvex-cli: %1\n").arg(message));
    if (request.json)
        console.json({{QStringLiteral("error"), message}});
    return code;
}

QString serialsText(const QVector<XQ_CODEREADER_DEVICE_INFO>& records)
{
    QStringList serials;
    for (const XQ_CODEREADER_DEVICE_INFO& record : records)
        if (collect::isListedCodeReader(record))
            serials << printable(collect::deviceText(record.stGigE.chSerialNumber));
    return serials.isEmpty() ? QStringLiteral("none") : serials.join(QStringLiteral(", "));
}

// The jobs log what is wrong with the ignore list; say it here too, as
// every job then reads features it was meant to skip.
void warnAboutIgnoreList(const Console& console)
{
    QFile file(QString::fromLatin1(collect::kIgnoreListPath));
    if (!file.open(QIODevice::ReadOnly))
        return;
    const QString name = QFileInfo(file).absoluteFilePath();
    const collect::IgnoreListContent content = collect::parseIgnoreList(file.readAll());
    QStringList problems;
    for (const QString& skipped : content.skippedElements)
        problems << QStringLiteral("IgnoreNodes ") + skipped + QStringLiteral(" is not a string; left out");
    if (content.outcome == collect::IgnoreListContent::Outcome::NotJson)
        problems << QStringLiteral("not JSON (") + content.parseError + QStringLiteral("); every feature is read");
    for (const QString& problem : problems)
        console.err(QStringLiteral("quorvex-cli: warning: ") + printable(name) + QStringLiteral(": ") + printable(problem)
                    + QLatin1Char('\n'));
}

} // namespace

DeviceSelection selectDevices(const QVector<XQ_CODEREADER_DEVICE_INFO>& found, const QStringList& serials, bool all)
{
    DeviceSelection selection;
    QStringList chosen;
    const auto take = [&](const XQ_CODEREADER_DEVICE_INFO& record) {
        const QString serial = collect::deviceText(record.stGigE.chSerialNumber);
        if (chosen.contains(serial))
            return;
        chosen << serial;
        selection.records.append(record);
    };
    if (all) {
        for (const XQ_CODEREADER_DEVICE_INFO& record : found)
            if (collect::isListedCodeReader(record))
                take(record);
        return selection;
    }
    for (const QString& serial : serials) {
        bool listed = false;
        for (const XQ_CODEREADER_DEVICE_INFO& record : found) {
            if (collect::isListedCodeReader(record) && collect::deviceText(record.stGigE.chSerialNumber) == serial) {
                take(record);
                listed = true;
                break;
            }
        }
        if (!listed && !selection.unknownSerials.contains(serial))
            selection.unknownSerials << serial;
    }
    return selection;
}

int runCollect(const Request& request, const Console& console)
{
    // From the start, so that a stop while devices are being listed also
    // ends with the stop status.
    int interruptedBy = 0;
    StopSignals stopSignals;
    QObject::connect(&stopSignals, &StopSignals::requested, [&](int number) { interruptedBy = number; });

    // Folders of jobs that a killed program left; running jobs' stay.
    const QString collectionRoot = GetVirtualCameraRoot();
    for (const QString& leftover : collect::sweepAbandonedStagingFolders(collectionRoot))
        console.err(QStringLiteral("quorvex-cli: removed %1, left by an interrupted collection\n").arg(printable(leftover)));

    int sdkError = XQ_OK;
    const QVector<XQ_CODEREADER_DEVICE_INFO> found = enumerateDevices(sdkError);
    if (sdkError != XQ_OK)
        return refuse(request, console, kExitFailed,
                      QStringLiteral("device enumeration failed (SDK error 0x%1)")
                          .arg(static_cast<unsigned int>(sdkError), 0, 16));

    const DeviceSelection selection = selectDevices(found, request.operands, request.all);
    if (!selection.unknownSerials.isEmpty()) {
        QStringList shown;
        for (const QString& serial : selection.unknownSerials)
            shown << printable(serial);
        return refuse(request, console, kExitNotFound,
                      QStringLiteral("no code reader with serial number %1; listed code readers: %2")
                          .arg(shown.join(QStringLiteral(", ")), serialsText(found)));
    }
    if (selection.records.isEmpty())
        return refuse(request, console, kExitNotFound, QStringLiteral("no code readers found to collect"));

    // As in the window, a device another client holds cannot be ticked.
    QVector<XQ_CODEREADER_DEVICE_INFO> ready;
    QJsonArray busyJson;
    for (const XQ_CODEREADER_DEVICE_INFO& record : selection.records) {
        if (collect::isFreeToCollect(record)) {
            ready.append(record);
            continue;
        }
        const QString serial = collect::deviceText(record.stGigE.chSerialNumber);
        const QString model = collect::deviceText(record.stGigE.chModelName);
        console.err(QStringLiteral("quorvex-cli: %1 %2 skipped: held by another client\n")
                        .arg(printable(serial), printable(model)));
        busyJson.append(QJsonObject{{QStringLiteral("serial"), serial},
                                    {QStringLiteral("model"), model},
                                    {QStringLiteral("outcome"), QStringLiteral("busy")},
                                    {QStringLiteral("message"), QStringLiteral("held by another client")}});
    }

    if (!QFileInfo::exists(QString::fromLatin1(collect::kIgnoreListPath)))
        console.err(QStringLiteral("quorvex-cli: note: no %1 in %2, so every feature is read; run from %3 to use "
                                   "the shipped ignore list\n")
                        .arg(QString::fromLatin1(collect::kIgnoreListPath), QDir::currentPath(),
                             QCoreApplication::applicationDirPath()));
    warnAboutIgnoreList(console);

    QCoreApplication::processEvents();
    if (interruptedBy != 0)
        return refuse(request, console, kExitInterrupted, QStringLiteral("stopped before any job started"));

    // Readers of one model take turns on its collection folder; jobs of
    // different models run at once. A stop must end well within a second.
    collect::CollectJobs jobs(collect::CollectRules{collect::ModelTurns::OneAfterAnother,
                                                    collect::JobRelease::OnFirstReport, kStopWaitMs});
    const ProgressView::Mode mode = request.json           ? ProgressView::Mode::Silent
                                    : console.outIsTerminal() ? ProgressView::Mode::Terminal
                                                              : ProgressView::Mode::Plain;
    ProgressView view(console, mode);
    QEventLoop loop;
    QObject::connect(&jobs, &collect::CollectJobs::allEnded, &loop, &QEventLoop::quit, Qt::QueuedConnection);
    QObject::connect(&stopSignals, &StopSignals::requested, &jobs, [&] { jobs.stopAll(); });

    if (!ready.isEmpty()) {
        jobs.start(ready);
        view.begin(jobs.jobs());
        QObject::connect(&jobs, &collect::CollectJobs::jobChanged, &jobs,
                         [&](int index) { view.changed(jobs.jobs(), index); });
        loop.exec();
    }

    bool anyFailed = false;
    QJsonArray jobsJson;
    QString summary;
    for (const JobState& job : jobs.jobs()) {
        anyFailed = anyFailed || job.outcome != JobOutcome::Collected;
        jobsJson.append(jobJson(job));
        if (mode == ProgressView::Mode::Terminal)
            summary += plainProgressLine(job) + QLatin1Char('\n');
    }
    for (const auto& busy : busyJson)
        jobsJson.append(busy);

    if (request.json)
        console.json({{QStringLiteral("collectionRoot"), QDir::cleanPath(collectionRoot)}, {QStringLiteral("devices"), jobsJson}});
    else
        console.out(summary);

    if (interruptedBy != 0) {
        // A job that did not end in time is still using its SDK handles:
        // leave without tearing the libraries down under it.
        if (jobs.hasAbandonedJobs())
            std::_Exit(kExitInterrupted);
        return kExitInterrupted;
    }
    if (anyFailed)
        return kExitFailed;
    return busyJson.isEmpty() ? kExitOk : kExitBusy;
}

} // namespace cli
