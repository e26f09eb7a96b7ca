// Text conversion of device fields and the log configuration.

#include "QtPrinters.h"
#include "LogConfig.h"
#include "XQInterface.h"

#include <QtCore>

#include <gtest/gtest.h>

TEST(CommonToolsTest, deviceText_stopsAtNulOrLength_andDecodesWithTheNamedCodec)
{
    const unsigned char field[8] = {'I', 'D', '3', '0', '0', 0, 'X', 'Y'};
    const unsigned char full[4] = {'A', 'B', 'C', 'D'}; // filled to its end: the length bounds it
    const struct { const unsigned char* bytes; int length; const char* text; } fields[] = {
        {field, 8, "ID300"}, {full, 4, "ABCD"}, {full, 2, "AB"}, {full, 0, ""}, {full, -5, ""}, {nullptr, 64, ""}};
    for (const auto& f : fields)
        EXPECT_EQ(XQInterface::uchar2QString(f.bytes, f.length, "UTF-8"), QString(f.text)) << f.text << f.length;

    EXPECT_EQ(XQInterface::char2QString("读码器", 64, "UTF-8"), QString::fromUtf8("读码器"));
    EXPECT_EQ(XQInterface::char2QString("\xe9", 64, "ISO-8859-1"), QString::fromUtf8("é"));
    EXPECT_EQ(XQInterface::char2QString("abc", 64, "no-such-codec"), QString("abc")); // UTF-8, not a failure
    // Invalid UTF-8 from a device becomes replacement characters, not a crash.
    EXPECT_TRUE(XQInterface::char2QString("A\xff\xfe", 64, "UTF-8").startsWith('A'));
}

TEST(CommonToolsTest, logConfig_goodAndShippedFilesAreRead)
{
    const LogConfigResult result = parseLogConfig("# comment\n"
                                                  "log4j.rootLogger=DEBUG, rolling, console\n"
                                                  "log4j.appender.rolling.File=/var/tmp/q.log\n"
                                                  "log4j.appender.rolling.MaxFileSize=2MB\n"
                                                  "log4j.appender.rolling.MaxBackupIndex=3\n"
                                                  "log4j.appender.console.Threshold=ERROR\n");
    EXPECT_TRUE(result.problems.isEmpty()) << qPrintable(result.problems.join("; "));
    EXPECT_EQ(result.settings.level, LogLevel::Debug);
    EXPECT_EQ(result.settings.filePath, QString("/var/tmp/q.log"));
    EXPECT_EQ(result.settings.maxFileSize, qint64(2 * 1024 * 1024));
    EXPECT_EQ(result.settings.maxBackups, 3);
    EXPECT_TRUE(result.settings.echoToConsole);
    EXPECT_EQ(result.settings.consoleLevel, LogLevel::Error);

    const LogConfigResult shipped = readLogConfigFile(QUORVEX_SOURCE_DIR "/resources/config/log4qt_Quorvex.conf");
    EXPECT_TRUE(shipped.fileRead);
    EXPECT_TRUE(shipped.problems.isEmpty()) << qPrintable(shipped.problems.join("; "));
}

TEST(CommonToolsTest, logConfig_missingOrBrokenFileFallsBackToDefaults)
{
    const LogSettings defaults;
    const LogConfigResult missing = readLogConfigFile("/nonexistent/log.conf");
    EXPECT_FALSE(missing.fileRead);
    EXPECT_EQ(missing.settings.level, defaults.level);
    EXPECT_EQ(missing.settings.maxFileSize, defaults.maxFileSize);

    const LogConfigResult broken = parseLogConfig("log4j.rootLogger=LOUD, f\n"
                                                  "log4j.appender.f.MaxFileSize=-3XB\n"
                                                  "log4j.appender.f.MaxBackupIndex=many\n"
                                                  "garbage without equals\n"
                                                  "\x01\x02\n");
    EXPECT_EQ(broken.problems.size(), 5);
    EXPECT_EQ(broken.settings.level, defaults.level);
    EXPECT_EQ(broken.settings.maxFileSize, defaults.maxFileSize);
    EXPECT_EQ(broken.settings.maxBackups, defaults.maxBackups);

    qint64 bytes = 0;
    EXPECT_TRUE(parseByteSize("512KB", &bytes));
    EXPECT_EQ(bytes, qint64(512 * 1024));
    EXPECT_FALSE(parseByteSize("10", &bytes)); // would rotate on every line
    EXPECT_FALSE(parseByteSize("99999999999999999MB", &bytes));
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
    for (const char* part : {"[info]", "tst_commontools.cpp:", "logging_writesFileLineFunctionAndRotates", "first line"})
        EXPECT_TRUE(text.contains(part)) << part << " is not in " << qPrintable(text);

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

