#include "ProgressView.h"

#include "Console.h"

#include <algorithm>

namespace cli {

namespace {

constexpr int kMinimumBarWidth = 10;
constexpr int kMaximumBarWidth = 40;

QString StateText(const JobState& job)
{
    switch (job.outcome) {
    case JobOutcome::Waiting:
        return QStringLiteral("waiting for the other reader of this model");
    case JobOutcome::Running:
        return QStringLiteral("%1%").arg(job.percent, 3);
    case JobOutcome::Collected:
        return QStringLiteral("done");
    case JobOutcome::Failed:
        return QStringLiteral("failed: ") + printable(job.message);
    case JobOutcome::Stopped:
        return QStringLiteral("stopped");
    }
    return QString();
}

} // namespace

QString progressLine(const JobState& job, int serialWidth, int modelWidth, int barWidth)
{
    const int filled = std::clamp(job.percent, 0, 100) * barWidth / 100;
    const QString bar = QString(filled, QLatin1Char('#')) + QString(barWidth - filled, QLatin1Char('.'));
    return printable(job.serial).leftJustified(serialWidth) + QStringLiteral("  ")
        + printable(job.model).leftJustified(modelWidth) + QStringLiteral("  [") + bar + QStringLiteral("] ")
        + StateText(job);
}

QString plainProgressLine(const JobState& job)
{
    const QString device = printable(job.serial) + QLatin1Char(' ') + printable(job.model) + QLatin1Char(' ');
    switch (job.outcome) {
    case JobOutcome::Waiting:
        return device + QStringLiteral("waiting: a reader of the same model is being collected");
    case JobOutcome::Running:
        return device + QStringLiteral("%1%").arg(job.percent);
    case JobOutcome::Collected:
        return device + QStringLiteral("collected into ") + printable(job.folder);
    case JobOutcome::Failed:
        return device + QStringLiteral("failed: ") + printable(job.message);
    case JobOutcome::Stopped:
        return device + QStringLiteral("stopped, its files removed");
    }
    return device;
}

ProgressView::ProgressView(const Console& console, Mode mode)
    : m_console(console)
    , m_mode(mode)
{
}

void ProgressView::begin(const QVector<JobState>& jobs)
{
    m_lastPlainLines = QVector<QString>(jobs.size());
    if (m_mode == Mode::Terminal)
        redraw(jobs, false);
    else
        for (int i = 0; i < jobs.size(); ++i)
            changed(jobs, i);
}

void ProgressView::changed(const QVector<JobState>& jobs, int index)
{
    if (m_mode == Mode::Terminal) {
        redraw(jobs, true);
        return;
    }
    if (m_mode != Mode::Plain || index < 0 || index >= jobs.size() || index >= m_lastPlainLines.size())
        return;
    const QString line = plainProgressLine(jobs[index]);
    if (line == m_lastPlainLines[index])
        return;
    m_lastPlainLines[index] = line;
    m_console.out(line + QLatin1Char('\n'));
}

void ProgressView::redraw(const QVector<JobState>& jobs, bool moveUp)
{
    int serialWidth = 0;
    int modelWidth = 0;
    for (const JobState& job : jobs) {
        serialWidth = std::max(serialWidth, static_cast<int>(printable(job.serial).size()));
        modelWidth = std::max(modelWidth, static_cast<int>(printable(job.model).size()));
    }
    // Room for the columns, the brackets and "100%"; a line that wrapped
    // would break the redraw.
    const int room = m_console.columns() - serialWidth - modelWidth - 12;
    const int barWidth = std::clamp(room, kMinimumBarWidth, kMaximumBarWidth);
    const int columns = m_console.columns();
    QString text;
    if (moveUp && !jobs.isEmpty())
        text += QStringLiteral("\x1b[%1A").arg(jobs.size());
    for (const JobState& job : jobs)
        text += QStringLiteral("\r\x1b[2K") + progressLine(job, serialWidth, modelWidth, barWidth).left(columns - 1)
            + QLatin1Char('\n');
    m_console.out(text);
}

} // namespace cli
