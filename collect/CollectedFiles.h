#pragma once
// How what a collection job leaves on disk is removed again. A device's
// model name comes from the network and names a folder below the collection
// root, so every removal here is confined to that folder and to the three
// staging names in the application folder.

#include <QString>
#include <QStringList>

namespace collect {

// The staging files a job writes into the application folder, in the order
// they are removed: <model>_regfile.dat, <model>_strRegFile.dat, <model>.xml.
QStringList StagingFilePaths(const QString& applicationDir, const QString& modelName);

// Removes a file, or a folder with all its non-hidden contents. True for a
// removed or missing file and a missing folder; for a folder, whether the
// folder itself could be removed (hidden entries keep it). Links are removed
// as themselves, never followed.
bool DeleteFileOrFolderAt(const QString& path);

// Removes the staging files and the collection folder of a model. A model
// name that could leave its folder, or an empty one (which would name the
// whole root), removes nothing: the refused paths are returned instead.
QStringList DeleteCollectedFilesOf(const QString& applicationDir, const QString& collectionRoot,
                                   const QString& modelName);

} // namespace collect
