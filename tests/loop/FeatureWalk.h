#pragma once
// Reads a device's whole feature tree through the camera SDK the way the
// collection's walks do (pre-order, same access and visibility rules, same
// ignore list, the same getter per type), and keeps every value as text.

#include "XQCameraControl.h"

#include <QMap>
#include <QSet>
#include <QString>
#include <QStringList>

struct FeatureWalk final {
    QMap<QString, QString> values; // name -> "int 5", "enum 2", "string abc", ...
    QStringList failedReads;       // qualifying features whose getter failed
};

// Walks from the root of an open device.
bool WalkFeatureTree(XQ_HANDLE hCamera, const QSet<QString>& ignorePatterns, FeatureWalk* walk, QString* error);

// The first device the camera SDK lists with that serial number, opened
// exclusively; null with a message otherwise. The caller destroys the handle.
XQ_HANDLE OpenCameraBySerial(const QString& serial, QString* error);

// Lines "name: a != b" for every feature whose values differ, ignoring names
// in skipped; features missing on one side count as different.
QStringList CompareWalks(const FeatureWalk& expected, const FeatureWalk& actual, const QSet<QString>& skipped);
