#include "CliProcess.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>

bool CliSuite::prepare(QString* error)
{
    m_strHome = qEnvironmentVariable("QUORVEX_TEST_HOME");
    if (m_strHome.isEmpty()) {
        *error = QStringLiteral("QUORVEX_TEST_HOME is not set; run the test through ctest");
        return false;
    }
    QDir(m_strHome + QStringLiteral("/suite")).removeRecursively();
    const QString program = applicationDir() + QStringLiteral("/quorvex-cli");
    if (!QDir().mkpath(applicationDir() + QStringLiteral("/Config"))
        || !QDir().mkpath(m_strHome + QStringLiteral("/suite/common"))
        || !QFile::copy(QStringLiteral(QUORVEX_CLI_UNDER_TEST), program)
        || !QFile::copy(QStringLiteral(QUORVEX_SOURCE_DIR "/resources/config/Config.json"),
                        applicationDir() + QStringLiteral("/Config/Config.json"))) {
        *error = QStringLiteral("cannot lay out the suite for %1 in %2").arg(QStringLiteral(QUORVEX_CLI_UNDER_TEST), m_strHome);
        return false;
    }
    QFile::setPermissions(program, QFile::permissions(program) | QFile::ExeOwner);
    return true;
}

QString CliSuite::applicationDir() const
{
    return m_strHome + QStringLiteral("/suite/apps/Quorvex");
}

QString CliSuite::collectionRoot() const
{
    return m_strHome + QStringLiteral("/suite/common/VirtualCamera");
}

QString CliSuite::storePath() const
{
    return qEnvironmentVariable("XDG_CACHE_HOME") + QStringLiteral("/ZELTA/VirtualCamera");
}

void CliSuite::start(QProcess& process, const QStringList& arguments) const
{
    process.setWorkingDirectory(applicationDir());
    process.start(applicationDir() + QStringLiteral("/quorvex-cli"), arguments);
}

CliResult CliSuite::run(const QStringList& arguments, const QProcessEnvironment& environment, int timeoutMs) const
{
    QProcess process;
    process.setProcessEnvironment(environment);
    start(process, arguments);
    CliResult result;
    result.finished = process.waitForFinished(timeoutMs);
    if (!result.finished) {
        process.kill();
        process.waitForFinished(5000);
    }
    result.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    result.out = process.readAllStandardOutput();
    result.err = process.readAllStandardError();
    return result;
}

QJsonObject CliResult::json() const
{
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(out, &error);
    return error.error == QJsonParseError::NoError ? document.object() : QJsonObject();
}

QString CliResult::describe() const
{
    return QStringLiteral("exit %1%2\n--- stdout:\n%3--- stderr:\n%4")
        .arg(exitCode)
        .arg(finished ? QString() : QStringLiteral(" (timed out)"))
        .arg(QString::fromUtf8(out), QString::fromUtf8(err));
}
