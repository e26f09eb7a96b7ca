#pragma once
// Writing VirtualCameraConfig.ini: the shared "Global" group and one group
// per virtual camera, keyed by the fields of the code reader SDK's device
// record so the serving side can fill that record from it.

#include <QString>

class QObject;
class QSettings;

namespace VirtualStore {

class SupportedModelTable;

// The settings object on the store's file: INI format, "utf-8" codec,
// owned by parent.
QSettings* openVirtualCameraSettings(const QString& strPath, QObject* pParent);

// A missing file passes (the settings object creates it); an existing one
// must open for reading and appending.
bool isConfigFileWritable(const QString& strPath);

// Rewrites "Global" and writes the camera's group, keys in the record's
// order. Generates the MAC first and the address just before nCurrentIp.
void writeVirtualCameraGroup(QSettings& settings, const QString& strGroup, const QString& strModel,
                             SupportedModelTable& models);

} // namespace VirtualStore
