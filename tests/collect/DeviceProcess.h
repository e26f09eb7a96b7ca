#pragma once
// A device program run as a child of the test (the suite's simulator or
// Aravis's fake camera), always inside the test's private network namespace.

#include "XqCodeReaderCtrl.h"

#include <QProcess>
#include <QString>
#include <QStringList>
#include <QVector>

class DeviceProcess final
{
public:
    DeviceProcess() = default;
    ~DeviceProcess();
    DeviceProcess(const DeviceProcess&) = delete;
    DeviceProcess& operator=(const DeviceProcess&) = delete;

    // The simulator named by $QUORVEX_SIMULATOR with "--demo <count>".
    bool startSimulator(int demoCount, QString* error);
    // The simulator with a command line of the caller's.
    bool startSimulator(const QStringList& arguments, QString* error);
    // arv-fake-gv-camera-0.8 on 127.0.0.1.
    bool startFakeCamera(QString* error);
    // The simulator with count demo readers, once the code-reader SDK lists
    // them all; empty with the reason otherwise.
    QVector<XQ_CODEREADER_DEVICE_INFO> startReaders(int count, QString* error);

    // Ends the program at once, as a device that loses power.
    void kill();
    // Everything the program printed so far, also to a caller without an
    // event loop.
    QString output();

private:
    bool start(const QString& program, const QStringList& arguments, QString* error);

    QProcess m_process;
    QString m_output;
};

// Code readers the code-reader SDK finds, waiting up to timeoutMs until at
// least minimum are listed. Records are copied.
QVector<XQ_CODEREADER_DEVICE_INFO> WaitForCodeReaders(int minimum, int timeoutMs);

QString ModelOf(const XQ_CODEREADER_DEVICE_INFO& record);
QString SerialOf(const XQ_CODEREADER_DEVICE_INFO& record);
QString AddressOf(const XQ_CODEREADER_DEVICE_INFO& record);
