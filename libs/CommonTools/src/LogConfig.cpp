#include "LogConfig.h"

#include <QFile>
#include <QRegularExpression>
#include <QStringList>

bool parseLogLevel(const QString& text, LogLevel* level)
{
    static const struct { const char* name; LogLevel level; } names[] = {
        {"TRACE", LogLevel::Trace}, {"ALL", LogLevel::Trace}, {"DEBUG", LogLevel::Debug},
        {"INFO", LogLevel::Info},   {"WARN", LogLevel::Warn}, {"WARNING", LogLevel::Warn},
        {"ERROR", LogLevel::Error}, {"FATAL", LogLevel::Fatal}, {"OFF", LogLevel::Off},
    };
    const QString wanted = text.trimmed().toUpper();
    for (const auto& entry : names) {
        if (wanted == QLatin1String(entry.name)) {
            *level = entry.level;
            return true;
        }
    }
    return false;
}

bool parseByteSize(const QString& text, qint64* bytes)
{
    static const QRegularExpression pattern(QStringLiteral("^\\s*(\\d{1,12})\\s*(KB|MB|GB|B)?\\s*$"),
                                            QRegularExpression::CaseInsensitiveOption);
    const QRegularExpressionMatch match = pattern.match(text);
    if (!match.hasMatch())
        return false;
    qint64 value = match.captured(1).toLongLong();
    const QString unit = match.captured(2).toUpper();
    if (unit == QLatin1String("KB"))
        value *= 1024;
    else if (unit == QLatin1String("MB"))
        value *= 1024 * 1024;
    else if (unit == QLatin1String("GB"))
        value *= 1024LL * 1024 * 1024;
    if (value < 1024)  // a rotation below one kilobyte would rotate on every line
        return false;
    *bytes = value;
    return true;
}

LogConfigResult parseLogConfig(const QString& text)
{
    LogConfigResult result;
    LogSettings& settings = result.settings;
    QString fileAppender;

    const QStringList lines = text.split(QLatin1Char('\n'));
    // First pass: the root logger names the level and which appender writes the file.
    for (const QString& raw : lines) {
        const QString line = raw.trimmed();
        if (!line.startsWith(QLatin1String("log4j.rootLogger")))
            continue;
        const int equals = line.indexOf(QLatin1Char('='));
        const QStringList parts = line.mid(equals + 1).split(QLatin1Char(','));
        if (equals < 0 || !parseLogLevel(parts.value(0), &settings.level))
            result.problems << QStringLiteral("root logger: ") + line;
        for (int i = 1; i < parts.size(); ++i) {
            const QString appender = parts.at(i).trimmed();
            if (appender.compare(QLatin1String("console"), Qt::CaseInsensitive) == 0
                || appender.compare(QLatin1String("stdout"), Qt::CaseInsensitive) == 0)
                settings.echoToConsole = true;
            else if (fileAppender.isEmpty())
                fileAppender = appender;
        }
    }

    for (const QString& raw : lines) {
        const QString line = raw.trimmed();
        if (line.isEmpty() || line.startsWith(QLatin1Char('#')) || line.startsWith(QLatin1Char('!'))
            || line.startsWith(QLatin1String("log4j.rootLogger")))
            continue;
        const int equals = line.indexOf(QLatin1Char('='));
        if (equals <= 0) {
            result.problems << line;
            continue;
        }
        const QString key = line.left(equals).trimmed();
        const QString value = line.mid(equals + 1).trimmed();
        const QString prefix = QStringLiteral("log4j.appender.") + fileAppender + QLatin1Char('.');
        bool understood = true;
        if (!fileAppender.isEmpty() && key.startsWith(prefix)) {
            const QString property = key.mid(prefix.size());
            if (property == QLatin1String("File"))
                settings.filePath = value;
            else if (property == QLatin1String("MaxFileSize"))
                understood = parseByteSize(value, &settings.maxFileSize);
            else if (property == QLatin1String("MaxBackupIndex")) {
                bool ok = false;
                const int backups = value.toInt(&ok);
                understood = ok && backups >= 0 && backups <= 1000;
                if (understood)
                    settings.maxBackups = backups;
            }
        } else if (key.endsWith(QLatin1String(".Threshold")) && key.contains(QLatin1String("console"), Qt::CaseInsensitive)) {
            understood = parseLogLevel(value, &settings.consoleLevel);
        }
        if (!understood)
            result.problems << line;
    }
    return result;
}

LogConfigResult readLogConfigFile(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        LogConfigResult result;
        result.problems << QStringLiteral("cannot read ") + path;
        return result;
    }
    // A log configuration is a few lines; anything huge is not one.
    const QByteArray bytes = file.read(1024 * 1024);
    LogConfigResult result = parseLogConfig(QString::fromUtf8(bytes));
    result.fileRead = true;
    return result;
}
