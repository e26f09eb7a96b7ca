#pragma once
// Folder copy for the store, and the "held open" test. Removal is the
// collection library's deleteFileOrFolderAt (collect/CollectedFiles.h), shared with the collect
// workflow.

#include <QString>

namespace VirtualStore {

// Copies source into destination recursively. Destination is created one
// level deep if missing; with bOverwrite, existing files are replaced.
// Hidden entries are not copied and symbolic links to folders are not
// followed. False at the first failure, leaving a partial copy; a missing
// source copies nothing and yields true.
bool CopyDirectory(const QString& strSource, const QString& strDestination, bool bOverwrite);

// True while a serving program holds the file (a client is connected to
// that virtual camera), or when the file exists but cannot be tested. A
// missing file is not occupied.
bool IsFileOccupied(const QString& strPath);

} // namespace VirtualStore
