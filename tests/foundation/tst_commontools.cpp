// Text conversion of device fields and the log configuration.

#include "LogConfig.h"
#include "XQInterface.h"

#include <QtTest>

class CommonToolsTest : public QObject
{
    Q_OBJECT

private slots:
    void deviceText_stopsAtNulOrLength();
    void deviceText_decodesWithTheNamedCodec();
    void logConfig_goodFileIsRead();
    void logConfig_missingOrBrokenFileFallsBackToDefaults();
    void logging_writesFileLineFunctionAndRotates();
};

void CommonToolsTest::deviceText_stopsAtNulOrLength()
{
    const unsigned char field[8] = {'I', 'D', '3', '0', '0', 0, 'X', 'Y'};
    QCOMPARE(XQInterface::uchar2QString(field, 8, "UTF-8"), QString("ID300"));
    // A field filled to its end has no NUL: the length bounds it.
    const unsigned char full[4] = {'A', 'B', 'C', 'D'};
    QCOMPARE(XQInterface::uchar2QString(full, 4, "UTF-8"), QString("ABCD"));
    QCOMPARE(XQInterface::uchar2QString(full, 2, "UTF-8"), QString("AB"));
    QCOMPARE(XQInterface::uchar2QString(full, 0, "UTF-8"), QString());
    QCOMPARE(XQInterface::uchar2QString(full, -5, "UTF-8"), QString());
    QCOMPARE(XQInterface::uchar2QString(nullptr, 64, "UTF-8"), QString());
}

void CommonToolsTest::deviceText_decodesWithTheNamedCodec()
{
    const QByteArray chinese = QString::fromUtf8("读码器").toUtf8();
    QCOMPARE(XQInterface::char2QString(chinese.constData(), 64, "UTF-8"), QString::fromUtf8("读码器"));
    const char latin1[] = {'\xe9', 0};
    QCOMPARE(XQInterface::char2QString(latin1, 64, "ISO-8859-1"), QString::fromUtf8("é"));
    // An unknown codec falls back to UTF-8 rather than failing.
    QCOMPARE(XQInterface::char2QString("abc", 64, "no-such-codec"), QString("abc"));
    // Invalid UTF-8 from a device becomes replacement characters, not a crash.
    const char broken[] = {'A', '\xff', '\xfe', 0};
    QVERIFY(XQInterface::char2QString(broken, 64, "UTF-8").startsWith('A'));
}

void CommonToolsTest::logConfig_goodFileIsRead()
{
    QTemporaryDir dir;
    QFile file(dir.filePath("log.conf"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("# comment\n"
               "log4j.rootLogger=DEBUG, rolling, console\n"
               "log4j.appender.rolling.File=/var/tmp/q.log\n"
               "log4j.appender.rolling.MaxFileSize=2MB\n"
               "log4j.appender.rolling.MaxBackupIndex=3\n"
               "log4j.appender.console.Threshold=ERROR\n");
    file.close();
    const LogConfigResult result = readLogConfigFile(file.fileName());
    QVERIFY(result.fileRead);
    QVERIFY2(result.problems.isEmpty(), qPrintable(result.problems.join("; ")));
    QCOMPARE(result.settings.level, LogLevel::Debug);
    QCOMPARE(result.settings.filePath, QString("/var/tmp/q.log"));
    QCOMPARE(result.settings.maxFileSize, qint64(2 * 1024 * 1024));
    QCOMPARE(result.settings.maxBackups, 3);
    QVERIFY(result.settings.echoToConsole);
    QCOMPARE(result.settings.consoleLevel, LogLevel::Error);

    // The shipped configuration must parse cleanly too.
    const LogConfigResult shipped = readLogConfigFile(QUORVEX_SOURCE_DIR "/resources/config/log4qt_Quorvex.conf");
    QVERIFY(shipped.fileRead);
    QVERIFY2(shipped.problems.isEmpty(), qPrintable(shipped.problems.join("; ")));
}

void CommonToolsTest::logConfig_missingOrBrokenFileFallsBackToDefaults()
{
    const LogSettings defaults;
    const LogConfigResult missing = readLogConfigFile("/nonexistent/log.conf");
    QVERIFY(!missing.fileRead);
    QCOMPARE(missing.settings.level, defaults.level);
    QCOMPARE(missing.settings.maxFileSize, defaults.maxFileSize);

    const LogConfigResult broken = parseLogConfig("log4j.rootLogger=LOUD, f\n"
                                                  "log4j.appender.f.MaxFileSize=-3XB\n"
                                                  "log4j.appender.f.MaxBackupIndex=many\n"
                                                  "garbage without equals\n"
                                                  "\x01\x02\n");
    QCOMPARE(broken.problems.size(), 5);
    QCOMPARE(broken.settings.level, defaults.level);
    QCOMPARE(broken.settings.maxFileSize, defaults.maxFileSize);
    QCOMPARE(broken.settings.maxBackups, defaults.maxBackups);

    qint64 bytes = 0;
    QVERIFY(parseByteSize("512KB", &bytes));
    QCOMPARE(bytes, qint64(512 * 1024));
    QVERIFY(!parseByteSize("10", &bytes));  // would rotate on every line
    QVERIFY(!parseByteSize("99999999999999999MB", &bytes));
}

void CommonToolsTest::logging_writesFileLineFunctionAndRotates()
{
    QTemporaryDir dir;
    const QString logFile = dir.filePath("logs/tool.log");
    QFile conf(dir.filePath("log.conf"));
    QVERIFY(conf.open(QIODevice::WriteOnly));
    conf.write(QString("log4j.rootLogger=INFO, r\nlog4j.appender.r.File=%1\n"
                       "log4j.appender.r.MaxFileSize=4KB\nlog4j.appender.r.MaxBackupIndex=2\n")
                   .arg(logFile).toUtf8());
    conf.close();
    QVERIFY(XQInterface::initLog4qtConfig(conf.fileName()));

    qInfo() << "first line";
    QFile log(logFile);
    QVERIFY(log.open(QIODevice::ReadOnly));
    const QString text = QString::fromUtf8(log.readAll());
    log.close();
    QVERIFY2(text.contains("[info]"), qPrintable(text));
    QVERIFY2(text.contains("tst_commontools.cpp:"), qPrintable(text));
    QVERIFY2(text.contains("CommonToolsTest::logging_writesFileLineFunctionAndRotates"), qPrintable(text));
    QVERIFY(text.contains("first line"));

    // Size-based rotation keeps at most the configured number of backups.
    for (int i = 0; i < 400; ++i)
        qInfo("filler line %d with some text to make it long enough", i);
    QVERIFY(QFile::exists(logFile + ".1") || QFile::exists(dir.filePath("logs/tool.1.log")));
    QVERIFY(!QFile::exists(dir.filePath("logs/tool.3.log")));
    QVERIFY(QFileInfo(logFile).size() <= 4 * 1024 + 512);

    // A broken configuration still gives a working logger.
    QVERIFY(!XQInterface::initLog4qtConfig(dir.filePath("missing.conf")));
    qInfo() << "still logging";
    qInstallMessageHandler(nullptr);
}

QTEST_GUILESS_MAIN(CommonToolsTest)
#include "tst_commontools.moc"
