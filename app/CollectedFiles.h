#pragma once
// What a collection job leaves on disk, and how it is removed again. A device's
// model name comes from the network and names a folder below the collection
// root, so every removal here is confined to the root and to the three staging
// names in the application folder.

#include <QString>
#include <QStringList>

// True when a model name can name a folder directly below the collection
// root: not empty, not "." or "..", no "/", "\" or control character.
bool isSafeModelName(const QString& strModelName);

// The staging files a job writes into the application folder, in the order
// they are removed: <model>_regfile.dat, <model>_strRegFile.dat, <model>.xml.
QStringList stagingFilePaths(const QString& strAppDir, const QString& strModelName);

// The collection folder of a model: root + "/" + model.
QString collectionFolderPath(const QString& strRoot, const QString& strModelName);

// Removes a file, or a folder with all its non-hidden contents. True for a
// removed or missing file and a missing folder; for a folder, whether the
// folder itself could be removed (hidden entries keep it).
bool DeleteFileOrFolderAt(const QString& strPath);

// Removes the staging files and the collection folder of a model, refusing
// anything a hostile model name could point outside its folder. Returns the
// paths it was asked to remove and refused (empty when all was in bounds).
QStringList deleteCollectedFilesOf(const QString& strAppDir, const QString& strRoot, const QString& strModelName);
