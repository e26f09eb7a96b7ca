// Crash reports from a real crashing child process.

#include "QtPrinters.h"
#include "CrashHandler.h"

#include <QtCore>

#include <gtest/gtest.h>

#include <csignal>

namespace {

struct ChildResult
{
    int signal = 0; // 0 unless the child died of one
    QString output;
    QString errors;
    QStringList reports; // file names in the report folder
    QString firstReport; // its text
};

ChildResult runChild(const QString& userDataPath, const char* mode)
{
    QProcess child;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("QUORVEX_USER_DATA", userDataPath);
    child.setProcessEnvironment(environment);
    child.start(QUORVEX_CRASH_CHILD, {mode});
    ChildResult result;
    if (!child.waitForFinished(30000)) {
        child.kill();
        child.waitForFinished();
        result.errors = "crash child did not end within 30 s: the handler hangs";
        return result;
    }
    if (child.exitStatus() == QProcess::CrashExit)
        result.signal = child.exitCode();
    result.output = QString::fromLocal8Bit(child.readAllStandardOutput());
    result.errors = QString::fromLocal8Bit(child.readAllStandardError());
    const QString folder = userDataPath + "/Dump/Quorvex_Dump/";
    result.reports = QDir(folder).entryList({"*.DMP"}, QDir::Files);
    QFile file(folder + result.reports.value(0));
    if (!result.reports.isEmpty() && file.open(QIODevice::ReadOnly))
        result.firstReport = QString::fromUtf8(file.readAll());
    return result;
}

qint64 localSecondsNow()
{
    const QDateTime now = QDateTime::currentDateTime();
    return now.toSecsSinceEpoch() + now.offsetFromUtc();
}

} // namespace

TEST(CrashReportTest, segvOnWorkerThread_leavesReportWithBacktrace)
{
    QTemporaryDir home;
    const QString userData = home.path() + "/data/ZELTA"; // not there yet: start-up makes it
    const qint64 before = localSecondsNow();
    const ChildResult result = runChild(userData, "segv-worker");
    const qint64 after = localSecondsNow();
    ASSERT_EQ(result.signal, SIGSEGV) << qPrintable(result.errors);

    ASSERT_EQ(result.reports.size(), 1);
    QStringList expectedNames;
    for (qint64 second = before; second <= after; ++second)
        expectedNames << crashReportFileName(second);
    ASSERT_TRUE(expectedNames.contains(result.reports.first()))
        << qPrintable(result.reports.first() + " is not named after the crash time " + expectedNames.join(", "));
    EXPECT_TRUE(result.errors.contains(result.reports.first())) << qPrintable(result.errors);

    const QString& report = result.firstReport;
    EXPECT_TRUE(report.contains("signal: 11 SIGSEGV")) << qPrintable(report.left(600));
    const QString printed = QRegularExpression("fault address (0x[0-9a-f]+)").match(result.output).captured(1);
    ASSERT_FALSE(printed.isEmpty()) << qPrintable(result.output);
    EXPECT_TRUE(report.contains("fault address: " + printed)) << qPrintable(report.left(600));

    // The faulting thread is the worker, not the process's main thread.
    const QRegularExpressionMatch ids = QRegularExpression("process: (\\d+)\\nthread: (\\d+)").match(report);
    ASSERT_TRUE(ids.hasMatch()) << qPrintable(report.left(600));
    EXPECT_NE(ids.captured(1), ids.captured(2));

    const int backtraceAt = report.indexOf("backtrace:\n");
    const int mapAt = report.indexOf("memory map:\n");
    ASSERT_TRUE(backtraceAt > 0 && mapAt > backtraceAt);
    const QString backtrace = report.mid(backtraceAt, mapAt - backtraceAt);
    EXPECT_TRUE(backtrace.contains("quorvexCrashTestWorker")) << qPrintable(backtrace);
    EXPECT_GE(backtrace.count('\n'), 4) << qPrintable(backtrace);
    EXPECT_TRUE(report.mid(mapAt).contains("shell_crash_child")) << "memory map lacks the program";
}

TEST(CrashReportTest, abortOnMainThread_reportsAbortAndEndsWithIt)
{
    QTemporaryDir home;
    const ChildResult result = runChild(home.path(), "abort-main");
    ASSERT_EQ(result.signal, SIGABRT) << qPrintable(result.errors);
    ASSERT_EQ(result.reports.size(), 1);
    EXPECT_TRUE(result.firstReport.contains("signal: 6 SIGABRT"));
    EXPECT_TRUE(result.firstReport.contains("abort"));
}

TEST(CrashReportTest, unwritableDumpFolder_stillEndsWithTheSignal)
{
    QTemporaryDir home;
    QFile blocker(home.path() + "/Dump"); // a file where the folder should be
    ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
    blocker.close();
    const ChildResult result = runChild(home.path(), "segv-worker");
    ASSERT_EQ(result.signal, SIGSEGV);
    EXPECT_TRUE(result.errors.contains("no crash report could be written")) << qPrintable(result.errors);
}
