#pragma once
// The folders the tool works from, derived from the executable's location.
// Paths are joined with "/" and deliberately not normalised: the suite's
// tools all derive them the same way, "/../" included.

#include <QString>

// The folder that holds the executable's folder: applicationDirPath() cut
// before its last "/".
QString GetParentDirPath();

// Pure forms of the same arithmetic, for any executable folder.
QString parentDirOf(const QString& applicationDirPath);
// Every "/Quorvex" removed (case-sensitive), whether or not one was there.
QString baseFolderOf(const QString& parentDirPath);
// The base folder followed by "/../".
QString suiteFolderOf(const QString& baseFolder);
// The collection root: the base folder followed by "/../common/VirtualCamera".
QString virtualCameraRootOf(const QString& baseFolder);

// The same, for the running executable.
QString GetBaseDirPath();
QString GetSuiteDirPath();
QString GetVirtualCameraRoot();
