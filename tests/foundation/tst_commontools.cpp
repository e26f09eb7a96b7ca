// Text conversion of device fields and the log configuration.

#include "QtPrinters.h"
#include "LogConfig.h"
#include "XQInterface.h"

#include <QtCore>

#include <gtest/gtest.h>

TEST(CommonToolsTest, deviceText_stopsAtNulOrLength)
{
    const unsigned char field[8] = {'I', 'D', '3', '0', '0', 0, 'X', 'Y'};
    ASSERT_EQ(XQInterface::uchar2QString(field, 8, "UTF-8"), QString("ID300"));
    // A field filled to its end has no NUL: the length bounds it.
    const unsigned char full[4] = {'A', 'B', 'C', 'D'};
    ASSERT_EQ(XQInterface::uchar2QString(full, 4, "UTF-8"), QString("ABCD"));
    ASSERT_EQ(XQInterface::uchar2QString(full, 2, "UTF-8"), QString("AB"));
    ASSERT_EQ(XQInterface::uchar2QString(full, 0, "UTF-8"), QString());
    ASSERT_EQ(XQInterface::uchar2QString(full, -5, "UTF-8"), QString());
    ASSERT_EQ(XQInterface::uchar2QString(nullptr, 64, "UTF-8"), QString());
}

TEST(CommonToolsTest, deviceText_decodesWithTheNamedCodec)
{
    const QByteArray chinese = QString::fromUtf8("读码器").toUtf8();
    ASSERT_EQ(XQInterface::char2QString(chinese.constData(), 64, "UTF-8"), QString::fromUtf8("读码器"));
    const char latin1[] = {'\xe9', 0};
    ASSERT_EQ(XQInterface::char2QString(latin1, 64, "ISO-8859-1"), QString::fromUtf8("é"));
    // An unknown codec falls back to UTF-8 rather than failing.
    ASSERT_EQ(XQInterface::char2QString("abc", 64, "no-such-codec"), QString("abc"));
    // Invalid UTF-8 from a device becomes replacement characters, not a crash.
    const char broken[] = {'A', '\xff', '\xfe', 0};
    ASSERT_TRUE(XQInterface::char2QString(broken, 64, "UTF-8").startsWith('A'));
}

TEST(CommonToolsTest, logConfig_goodFileIsRead)
{
    QTemporaryDir dir;
    QFile file(dir.filePath("log.conf"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("# comment\n"
               "log4j.rootLogger=DEBUG, rolling, console\n"
               "log4j.appender.rolling.File=/var/tmp/q.log\n"
               "log4j.appender.rolling.MaxFileSize=2MB\n"
               "log4j.appender.rolling.MaxBackupIndex=3\n"
               "log4j.appender.console.Threshold=ERROR\n");
    file.close();
    const LogConfigResult result = readLogConfigFile(file.fileName());
    ASSERT_TRUE(result.fileRead);
    ASSERT_TRUE(result.problems.isEmpty()) << qPrintable(result.problems.join("; "));
    ASSERT_EQ(result.settings.level, LogLevel::Debug);
    ASSERT_EQ(result.settings.filePath, QString("/var/tmp/q.log"));
    ASSERT_EQ(result.settings.maxFileSize, qint64(2 * 1024 * 1024));
    ASSERT_EQ(result.settings.maxBackups, 3);
    ASSERT_TRUE(result.settings.echoToConsole);
    ASSERT_EQ(result.settings.consoleLevel, LogLevel::Error);

    // The shipped configuration must parse cleanly too.
    const LogConfigResult shipped = readLogConfigFile(QUORVEX_SOURCE_DIR "/resources/config/log4qt_Quorvex.conf");
    ASSERT_TRUE(shipped.fileRead);
    ASSERT_TRUE(shipped.problems.isEmpty()) << qPrintable(shipped.problems.join("; "));
}

TEST(CommonToolsTest, logConfig_missingOrBrokenFileFallsBackToDefaults)
{
    const LogSettings defaults;
    const LogConfigResult missing = readLogConfigFile("/nonexistent/log.conf");
    ASSERT_TRUE(!missing.fileRead);
    ASSERT_EQ(missing.settings.level, defaults.level);
    ASSERT_EQ(missing.settings.maxFileSize, defaults.maxFileSize);

    const LogConfigResult broken = parseLogConfig("log4j.rootLogger=LOUD, f\n"
                                                  "log4j.appender.f.MaxFileSize=-3XB\n"
                                                  "log4j.appender.f.MaxBackupIndex=many\n"
                                                  "garbage without equals\n"
                                                  "\x01\x02\n");
    ASSERT_EQ(broken.problems.size(), 5);
    ASSERT_EQ(broken.settings.level, defaults.level);
    ASSERT_EQ(broken.settings.maxFileSize, defaults.maxFileSize);
    ASSERT_EQ(broken.settings.maxBackups, defaults.maxBackups);

    qint64 bytes = 0;
    ASSERT_TRUE(parseByteSize("512KB", &bytes));
    ASSERT_EQ(bytes, qint64(512 * 1024));
    ASSERT_TRUE(!parseByteSize("10", &bytes));  // would rotate on every line
    ASSERT_TRUE(!parseByteSize("99999999999999999MB", &bytes));
}

TEST(CommonToolsTest, logging_writesFileLineFunctionAndRotates)
{
    QTemporaryDir dir;
    const QString logFile = dir.filePath("logs/tool.log");
    QFile conf(dir.filePath("log.conf"));
    ASSERT_TRUE(conf.open(QIODevice::WriteOnly));
    conf.write(QString("log4j.rootLogger=INFO, r\nlog4j.appender.r.File=%1\n"
                       "log4j.appender.r.MaxFileSize=4KB\nlog4j.appender.r.MaxBackupIndex=2\n")
                   .arg(logFile).toUtf8());
    conf.close();
    ASSERT_TRUE(XQInterface::initLog4qtConfig(conf.fileName()));

    qInfo() << "first line";
    QFile log(logFile);
    ASSERT_TRUE(log.open(QIODevice::ReadOnly));
    const QString text = QString::fromUtf8(log.readAll());
    log.close();
    ASSERT_TRUE(text.contains("[info]")) << qPrintable(text);
    ASSERT_TRUE(text.contains("tst_commontools.cpp:")) << qPrintable(text);
    ASSERT_TRUE(text.contains("logging_writesFileLineFunctionAndRotates")) << qPrintable(text);
    ASSERT_TRUE(text.contains("first line"));

    // Size-based rotation keeps at most the configured number of backups.
    for (int i = 0; i < 400; ++i)
        qInfo("filler line %d with some text to make it long enough", i);
    ASSERT_TRUE(QFile::exists(logFile + ".1") || QFile::exists(dir.filePath("logs/tool.1.log")));
    ASSERT_TRUE(!QFile::exists(dir.filePath("logs/tool.3.log")));
    ASSERT_TRUE(QFileInfo(logFile).size() <= 4 * 1024 + 512);

    // A broken configuration still gives a working logger.
    ASSERT_TRUE(!XQInterface::initLog4qtConfig(dir.filePath("missing.conf")));
    qInfo() << "still logging";
    qInstallMessageHandler(nullptr);
}

