#pragma once
// Code readers as the code-reader SDK lists them, for tests of the tool's
// side: simulated readers started and waited for, and their record texts.

#include "DeviceProcess.h"
#include "XqCodeReaderCtrl.h"

#include <QString>
#include <QVector>

using xqtest::DeviceProcess;

// The simulator with count demo readers, once the code-reader SDK lists
// them all; empty with the reason otherwise.
QVector<XQ_CODEREADER_DEVICE_INFO> startReaders(DeviceProcess& simulator, int count, QString* error);

// Code readers the code-reader SDK finds, waiting up to timeoutMs until at
// least minimum are listed. Records are copied.
QVector<XQ_CODEREADER_DEVICE_INFO> WaitForCodeReaders(int minimum, int timeoutMs);

// What a device program printed, for a failure message.
QString OutputOf(const DeviceProcess& process);

QString ModelOf(const XQ_CODEREADER_DEVICE_INFO& record);
QString SerialOf(const XQ_CODEREADER_DEVICE_INFO& record);
QString AddressOf(const XQ_CODEREADER_DEVICE_INFO& record);
