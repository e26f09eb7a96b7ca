#include "LogConfig.h"
#include "XQInterface.h"

#include <QDir>
#include <QFileInfo>
#include <QMutex>

#include <spdlog/sinks/rotating_file_sink.h>
#include <spdlog/sinks/stdout_sinks.h>
#include <spdlog/spdlog.h>

#include <atomic>
#include <memory>

namespace {

std::shared_ptr<spdlog::logger>& activeLogger()
{
    static std::shared_ptr<spdlog::logger> logger;
    return logger;
}

spdlog::level::level_enum toSpdlog(LogLevel level)
{
    switch (level) {
    case LogLevel::Trace: return spdlog::level::trace;
    case LogLevel::Debug: return spdlog::level::debug;
    case LogLevel::Info: return spdlog::level::info;
    case LogLevel::Warn: return spdlog::level::warn;
    case LogLevel::Error: return spdlog::level::err;
    case LogLevel::Fatal: return spdlog::level::critical;
    case LogLevel::Off: break;
    }
    return spdlog::level::off;
}

spdlog::level::level_enum levelOf(QtMsgType type)
{
    switch (type) {
    case QtDebugMsg: return spdlog::level::debug;
    case QtInfoMsg: return spdlog::level::info;
    case QtWarningMsg: return spdlog::level::warn;
    case QtCriticalMsg: return spdlog::level::err;
    case QtFatalMsg: return spdlog::level::critical;
    }
    return spdlog::level::info;
}

const char* baseName(const char* path)
{
    if (!path)
        return "";
    const char* name = path;
    for (const char* p = path; *p; ++p)
        if (*p == '/' || *p == '\\')
            name = p + 1;
    return name;
}

void messageHandler(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    const std::shared_ptr<spdlog::logger> logger = std::atomic_load(&activeLogger());
    if (!logger)
        return;
    logger->log(levelOf(type), "{}:{} {} - {}", baseName(context.file), context.line,
                context.function ? context.function : "", message.toStdString());
    if (type == QtFatalMsg)
        logger->flush();
}

QString resolveLogFile(const QString& configured)
{
    if (configured.isEmpty())
        return XQInterface::userDataPath() + "/Log/Quorvex.log";
    if (QDir::isAbsolutePath(configured))
        return configured;
    return XQInterface::userDataPath() + "/" + configured;
}

std::shared_ptr<spdlog::logger> makeLogger(const LogSettings& settings, QString* problem)
{
    std::vector<spdlog::sink_ptr> sinks;
    const QString logFile = resolveLogFile(settings.filePath);
    QDir().mkpath(QFileInfo(logFile).absolutePath());
    try {
        sinks.push_back(std::make_shared<spdlog::sinks::rotating_file_sink_mt>(
            logFile.toStdString(), static_cast<size_t>(settings.maxFileSize),
            static_cast<size_t>(settings.maxBackups)));
    } catch (const spdlog::spdlog_ex& error) {
        *problem = QString::fromUtf8(error.what());
    }
    if (settings.echoToConsole || sinks.empty()) {
        auto console = std::make_shared<spdlog::sinks::stderr_sink_mt>();
        console->set_level(sinks.empty() ? toSpdlog(settings.level) : toSpdlog(settings.consoleLevel));
        sinks.push_back(console);
    }
    auto logger = std::make_shared<spdlog::logger>("Quorvex", sinks.begin(), sinks.end());
    logger->set_level(toSpdlog(settings.level));
    logger->set_pattern("%Y-%m-%d %H:%M:%S.%e [%l] [%t] %v");
    logger->flush_on(spdlog::level::info);
    return logger;
}

} // namespace

bool XQInterface::initLog4qtConfig(const QString& configPath)
{
    const LogConfigResult config = readLogConfigFile(configPath);
    QString sinkProblem;
    std::shared_ptr<spdlog::logger> logger = makeLogger(config.settings, &sinkProblem);
    std::atomic_store(&activeLogger(), logger);
    qInstallMessageHandler(messageHandler);
    if (!config.fileRead)
        qWarning("Log configuration %s not readable; using defaults", qPrintable(configPath));
    for (const QString& problem : config.problems)
        qWarning("Log configuration: ignored '%s'", qPrintable(problem));
    if (!sinkProblem.isEmpty())
        qWarning("Log file not writable (%s); logging to the console", qPrintable(sinkProblem));
    return config.fileRead && config.problems.isEmpty() && sinkProblem.isEmpty();
}
