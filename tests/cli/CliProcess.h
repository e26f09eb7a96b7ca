#pragma once
// quorvex-cli run as the user runs it: a copy of the program placed in a
// suite tree of the test's own home (<home>/suite/apps/Quorvex), started
// from its folder, so its collection root and staging folder are the
// test's.

#include <QByteArray>
#include <QJsonObject>
#include <QProcess>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

struct CliResult final {
    int exitCode = -1;
    bool finished = false;
    QByteArray out;
    QByteArray err;

    // The single JSON document on standard output; empty when there is none.
    QJsonObject json() const;
    QString describe() const;
};

class CliSuite final {
public:
    // Copies the program and the shipped ignore list into the home's suite.
    bool prepare(QString* error);

    QString applicationDir() const;
    QString collectionRoot() const;
    QString storePath() const; // where the store is for the default environment

    CliResult run(const QStringList& arguments, const QProcessEnvironment& environment = systemEnvironment(),
                  int timeoutMs = 120000) const;
    // Started and left running, for tests that act while it works.
    void start(QProcess& process, const QStringList& arguments) const;

    static QProcessEnvironment systemEnvironment() { return QProcessEnvironment::systemEnvironment(); }

private:
    QString m_strHome;
};
