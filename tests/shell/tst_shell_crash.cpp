// Crash reports from a real crashing child process.

#include "QtPrinters.h"
#include "CrashHandler.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtCore>

#include <gtest/gtest.h>

#include <csignal>

class CrashReportTest : public ::testing::Test {
protected:
    struct ChildResult
    {
        bool bCrashed = false;
        int nSignal = 0;
        QString strOutput;
        QString strErrors;
    };
    ChildResult runChild(const QString& userDataPath, const QString& mode)
    {
        QProcess child;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("QUORVEX_USER_DATA", userDataPath);
        child.setProcessEnvironment(environment);
        child.start(QStringLiteral(QUORVEX_CRASH_CHILD), {mode});
        ChildResult result;
        if (!child.waitForFinished(30000)) {
            child.kill();
            child.waitForFinished();
            qWarning("crash child did not end within 30 s: the handler hangs");
            return result;
        }
        result.bCrashed = child.exitStatus() == QProcess::CrashExit;
        result.nSignal = child.exitCode();
        result.strOutput = QString::fromLocal8Bit(child.readAllStandardOutput());
        result.strErrors = QString::fromLocal8Bit(child.readAllStandardError());
        return result;
    }
    static qint64 localSecondsNow()
    {
        const QDateTime now = QDateTime::currentDateTime();
        return now.toSecsSinceEpoch() + now.offsetFromUtc();
    }
    static QStringList reportsIn(const QString& userDataPath)
    {
        return QDir(userDataPath + "/Dump/Quorvex_Dump").entryList({"*.DMP"}, QDir::Files);
    }
};

TEST_F(CrashReportTest, segvOnWorkerThread_leavesReportWithBacktrace)
{
    QTemporaryDir home;
    const QString userData = home.path() + "/data/ZELTA"; // not there yet: start-up makes it
    const qint64 before = localSecondsNow();
    const ChildResult result = runChild(userData, "segv-worker");
    const qint64 after = localSecondsNow();

    ASSERT_TRUE(result.bCrashed) << qPrintable("child did not die of a signal: " + result.strErrors);
    ASSERT_EQ(result.nSignal, SIGSEGV);

    const QStringList reports = reportsIn(userData);
    ASSERT_EQ(reports.size(), 1);
    QStringList expectedNames;
    for (qint64 second = before; second <= after; ++second)
        expectedNames << crashReportFileName(second);
    ASSERT_TRUE(expectedNames.contains(reports.first())) << qPrintable(reports.first() + " is not named after the crash time " + expectedNames.join(", "));

    QFile file(userData + "/Dump/Quorvex_Dump/" + reports.first());
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QString report = QString::fromUtf8(file.readAll());
    ASSERT_TRUE(report.contains("signal: 11 SIGSEGV")) << qPrintable(report.left(600));

    const QRegularExpression faultAddress("fault address (0x[0-9a-f]+)");
    const QString printed = faultAddress.match(result.strOutput).captured(1);
    ASSERT_TRUE(!printed.isEmpty()) << qPrintable(result.strOutput);
    ASSERT_TRUE(report.contains("fault address: " + printed)) << qPrintable(report.left(600));

    // The faulting thread is the worker, not the process's main thread.
    const QRegularExpression identity("process: (\\d+)\\nthread: (\\d+)");
    const QRegularExpressionMatch ids = identity.match(report);
    ASSERT_TRUE(ids.hasMatch()) << qPrintable(report.left(600));
    ASSERT_TRUE(ids.captured(1) != ids.captured(2));

    const int backtraceAt = report.indexOf("backtrace:\n");
    const int mapAt = report.indexOf("memory map:\n");
    ASSERT_TRUE(backtraceAt > 0 && mapAt > backtraceAt);
    const QString backtrace = report.mid(backtraceAt, mapAt - backtraceAt);
    ASSERT_TRUE(backtrace.contains("quorvexCrashTestWorker")) << qPrintable(backtrace);
    ASSERT_TRUE(backtrace.count('\n') >= 4) << qPrintable(backtrace);
    ASSERT_TRUE(report.mid(mapAt).contains("shell_crash_child")) << "memory map lacks the program";

    ASSERT_TRUE(result.strErrors.contains(reports.first())) << qPrintable(result.strErrors);
}

TEST_F(CrashReportTest, abortOnMainThread_reportsAbortAndEndsWithIt)
{
    QTemporaryDir home;
    const ChildResult result = runChild(home.path(), "abort-main");
    ASSERT_TRUE(result.bCrashed);
    ASSERT_EQ(result.nSignal, SIGABRT);
    const QStringList reports = reportsIn(home.path());
    ASSERT_EQ(reports.size(), 1);
    QFile file(home.path() + "/Dump/Quorvex_Dump/" + reports.first());
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray report = file.readAll();
    ASSERT_TRUE(report.contains("signal: 6 SIGABRT"));
    ASSERT_TRUE(report.contains("abort"));
}

TEST_F(CrashReportTest, unwritableDumpFolder_stillEndsWithTheSignal)
{
    QTemporaryDir home;
    // A file where the folder should be: the folder cannot be made.
    QFile blocker(home.path() + "/Dump");
    ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
    blocker.close();
    const ChildResult result = runChild(home.path(), "segv-worker");
    ASSERT_TRUE(result.bCrashed);
    ASSERT_EQ(result.nSignal, SIGSEGV);
    ASSERT_TRUE(result.strErrors.contains("no crash report could be written")) << qPrintable(result.strErrors);
}

