#pragma once
// Where the virtual camera store lives. The store is the "VirtualCamera"
// folder of the suite's machine-wide temporary folder; paths are joined with
// "/" and not normalised, like every path of the suite.

#include <QString>

namespace VirtualStore {

// XQInterface::systemTemp() in native separator form.
QString systemTempPath();
// systemTempPath() + "/VirtualCamera".
QString storePath();
// storePath() + "/VirtualCameraConfig.ini".
QString configFilePath();
// storePath() + "/Cameras/<group>".
QString cameraFolder(const QString& strGroup);
// cameraFolder(group) + "/<model>_regfile.dat": the file a serving program
// holds locked while a client is connected.
QString registerFilePath(const QString& strGroup, const QString& strModel);

// A group or model name that can safely name a folder or file of the store.
bool isSafeStoreName(const QString& strName);

// Whether the camera folder of a group may be removed: the store, its
// "Cameras" folder and the camera folder are real folders (no symbolic
// link among them), and the camera folder resolves to a child of the
// store's real "Cameras" folder. A camera folder that does not exist passes
// (there is nothing to remove). On refusal, strReason says why.
bool isCameraFolderInsideStore(const QString& strGroup, QString& strReason);

} // namespace VirtualStore
