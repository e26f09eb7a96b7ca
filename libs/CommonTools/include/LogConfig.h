#pragma once
// The log configuration file: a log4j-style properties file.
//
//   log4j.rootLogger=INFO, rolling
//   log4j.appender.rolling.File=Log/Quorvex.log      (relative: below userDataPath())
//   log4j.appender.rolling.MaxFileSize=5MB           (KB, MB, GB or bytes)
//   log4j.appender.rolling.MaxBackupIndex=5
//   log4j.appender.console.Threshold=WARN            (optional: echo to stderr)
//
// Unknown keys are ignored; a value that does not parse keeps its default.

#include "CommonToolsExport.h"

#include <QString>
#include <QStringList>

enum class LogLevel { Trace, Debug, Info, Warn, Error, Fatal, Off };

struct LogSettings
{
    LogLevel level = LogLevel::Info;
    QString filePath;                    // empty: the default below userDataPath()
    qint64 maxFileSize = 5 * 1024 * 1024;
    int maxBackups = 5;
    bool echoToConsole = false;
    LogLevel consoleLevel = LogLevel::Warn;
};

struct LogConfigResult
{
    LogSettings settings;
    bool fileRead = false;     // the file existed and could be read
    QStringList problems;      // lines or values that were not understood
};

// Parses the text of a properties file; never fails, reports what it skipped.
COMMONTOOLS_EXPORT LogConfigResult parseLogConfig(const QString& text);
// Reads and parses a file; a missing or unreadable file gives the defaults.
COMMONTOOLS_EXPORT LogConfigResult readLogConfigFile(const QString& path);
COMMONTOOLS_EXPORT bool parseLogLevel(const QString& text, LogLevel* level);
COMMONTOOLS_EXPORT bool parseByteSize(const QString& text, qint64* bytes);
