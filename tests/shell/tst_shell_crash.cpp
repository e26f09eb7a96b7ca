// Crash reports from a real crashing child process.

#include "CrashHandler.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>

class CrashReportTest : public QObject
{
    Q_OBJECT

private:
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

private slots:
    void segvOnWorkerThread_leavesReportWithBacktrace()
    {
        QTemporaryDir home;
        const QString userData = home.path() + "/data/ZELTA"; // not there yet: start-up makes it
        const qint64 before = localSecondsNow();
        const ChildResult result = runChild(userData, "segv-worker");
        const qint64 after = localSecondsNow();

        QVERIFY2(result.bCrashed, qPrintable("child did not die of a signal: " + result.strErrors));
        QCOMPARE(result.nSignal, SIGSEGV);

        const QStringList reports = reportsIn(userData);
        QCOMPARE(reports.size(), 1);
        QStringList expectedNames;
        for (qint64 second = before; second <= after; ++second)
            expectedNames << crashReportFileName(second);
        QVERIFY2(expectedNames.contains(reports.first()),
                 qPrintable(reports.first() + " is not named after the crash time " + expectedNames.join(", ")));

        QFile file(userData + "/Dump/Quorvex_Dump/" + reports.first());
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QString report = QString::fromUtf8(file.readAll());
        QVERIFY2(report.contains("signal: 11 SIGSEGV"), qPrintable(report.left(600)));

        const QRegularExpression faultAddress("fault address (0x[0-9a-f]+)");
        const QString printed = faultAddress.match(result.strOutput).captured(1);
        QVERIFY2(!printed.isEmpty(), qPrintable(result.strOutput));
        QVERIFY2(report.contains("fault address: " + printed), qPrintable(report.left(600)));

        // The faulting thread is the worker, not the process's main thread.
        const QRegularExpression identity("process: (\\d+)\\nthread: (\\d+)");
        const QRegularExpressionMatch ids = identity.match(report);
        QVERIFY2(ids.hasMatch(), qPrintable(report.left(600)));
        QVERIFY(ids.captured(1) != ids.captured(2));

        const int backtraceAt = report.indexOf("backtrace:\n");
        const int mapAt = report.indexOf("memory map:\n");
        QVERIFY(backtraceAt > 0 && mapAt > backtraceAt);
        const QString backtrace = report.mid(backtraceAt, mapAt - backtraceAt);
        QVERIFY2(backtrace.contains("quorvexCrashTestWorker"), qPrintable(backtrace));
        QVERIFY2(backtrace.count('\n') >= 4, qPrintable(backtrace));
        QVERIFY2(report.mid(mapAt).contains("shell_crash_child"), "memory map lacks the program");

        QVERIFY2(result.strErrors.contains(reports.first()), qPrintable(result.strErrors));
    }

    void abortOnMainThread_reportsAbortAndEndsWithIt()
    {
        QTemporaryDir home;
        const ChildResult result = runChild(home.path(), "abort-main");
        QVERIFY(result.bCrashed);
        QCOMPARE(result.nSignal, SIGABRT);
        const QStringList reports = reportsIn(home.path());
        QCOMPARE(reports.size(), 1);
        QFile file(home.path() + "/Dump/Quorvex_Dump/" + reports.first());
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray report = file.readAll();
        QVERIFY(report.contains("signal: 6 SIGABRT"));
        QVERIFY(report.contains("abort"));
    }

    void unwritableDumpFolder_stillEndsWithTheSignal()
    {
        QTemporaryDir home;
        // A file where the folder should be: the folder cannot be made.
        QFile blocker(home.path() + "/Dump");
        QVERIFY(blocker.open(QIODevice::WriteOnly));
        blocker.close();
        const ChildResult result = runChild(home.path(), "segv-worker");
        QVERIFY(result.bCrashed);
        QCOMPARE(result.nSignal, SIGSEGV);
        QVERIFY2(result.strErrors.contains("no crash report could be written"), qPrintable(result.strErrors));
    }
};

QTEST_GUILESS_MAIN(CrashReportTest)
#include "tst_shell_crash.moc"
