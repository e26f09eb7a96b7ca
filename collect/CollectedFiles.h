#pragma once
// How what a collection job leaves on disk is removed again. A job writes
// only into its own staging folder (StagingFolder.h) and removes it itself
// when it fails; what is left to clean up after a job are the staging
// folders of jobs that ended without doing so. A model's collection folder
// is never removed here: it holds the last good collection.

#include <QString>
#include <QStringList>

namespace collect {

// Removes a file, or a folder with all its non-hidden contents. True for a
// removed or missing file and a missing folder; for a folder, whether the
// folder itself could be removed (hidden entries keep it). Links are removed
// as themselves, never followed.
bool deleteFileOrFolderAt(const QString& path);

// Removes the staging folders of a model's jobs that have ended (whose lock
// is free); a running job's folder, of this process or another, stays.
// Returns the folders removed.
QStringList deleteCollectedFilesOf(const QString& collectionRoot, const QString& modelName);

} // namespace collect
