#pragma once
// How a collection shows its progress: on a terminal one live bar per
// device, redrawn in place; otherwise a plain line whenever a device's
// percentage or state changes, so a log file reads top to bottom.

#include "CollectJobs.h"

#include <QString>
#include <QVector>

namespace cli {

class Console;
using collect::JobOutcome;
using collect::JobState;

// "QD0000A1  QVX-ID2040M  [#########.........]  45%" and the state text.
QString progressLine(const JobState& job, int serialWidth, int modelWidth, int barWidth);
// "QD0000A1 QVX-ID2040M 45%", or the outcome with its message or folder.
QString plainProgressLine(const JobState& job);

class ProgressView final {
public:
    enum class Mode { Terminal, Plain, Silent };

    ProgressView(const Console& console, Mode mode);

    void begin(const QVector<JobState>& jobs);
    void changed(const QVector<JobState>& jobs, int index);

private:
    void redraw(const QVector<JobState>& jobs, bool moveUp);

    const Console& m_console;
    Mode m_mode;
    QVector<QString> m_lastPlainLines;
};

} // namespace cli
