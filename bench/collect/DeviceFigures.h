#pragma once
// The demo reader measured through the camera SDK, apart from the job.

#include "XQCameraControl.h"
#include "XqCodeReaderCtrl.h"

#include <QByteArray>
#include <QSet>
#include <QString>

// Walks measured alone, of which the median is kept.
constexpr int kMeasuredWalks = 9;
// Reads of one plain register that time a round trip.
constexpr int kRoundTripReads = 5000;

struct WalkFigures {
    int reads = 0;
    // Read commands the walk put on the wire, from the demo reader's own
    // counter; -1 when the device has none.
    qint64 wireReads = -1;
    double walkMs = 0;
    // Where one walk spends its time.
    double accessModeMs = 0;
    double childrenMs = 0;
    double valueReadMs = 0;
};

struct DeviceSample {
    // The demo reader's count of read commands answered so far.
    qint64 readCommands = -1;
    // Mean time of one read of an integer feature that is one plain
    // register, taken right after the count.
    double roundTripMs = -1;
    bool valid() const { return readCommands >= 0 && roundTripMs > 0; }
};

// Only loopback may be up: devices are served and found on 127.0.0.0/8.
bool InPrivateNamespace();
// The simulator's two code readers, waited for.
bool FindReaders(XQ_CODEREADER_DEVICE_INFO* reader, XQ_CODEREADER_DEVICE_INFO* sibling);
QByteArray SerialOf(const XQ_CODEREADER_DEVICE_INFO& reader);
// A camera-SDK session on the device with serial, or null.
XQ_HANDLE OpenCamera(const QByteArray& serial);
// Walks in the state the job left and one in the default state.
bool MeasureDevice(const QByteArray& serial, const QSet<QString>& ignore, WalkFigures* lastState,
                   WalkFigures* defaultState);
// The device's read counter and one read's round trip; restores its factory settings.
DeviceSample SampleDevice(const QByteArray& serial);
