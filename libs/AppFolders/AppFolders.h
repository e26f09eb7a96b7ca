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
// The suite's collection root: the base folder followed by
// "/../common/VirtualCamera".
QString virtualCameraRootOf(const QString& baseFolder);

// Whether collections may stay in the suite's own root: this user can write
// it (or the nearest folder above it that exists), and the suite is not an
// installed one below /usr/lib or /usr/local/lib, whose folders belong to
// the package manager even when root runs the tool.
bool suiteHoldsCollections(const QString& baseFolder);
// The suite's root where it may hold collections, else perUserRoot.
QString collectionRootOf(const QString& baseFolder, const QString& perUserRoot);

// The same, for the running executable. The per-user collection root is
// XQInterface::userDataPath() + "/VirtualCamera"; the first call that picks
// it logs where collections go and why.
QString GetBaseDirPath();
QString GetSuiteDirPath();
QString GetVirtualCameraRoot();
