#pragma once
// A collection job's own folder beside the model's collection folder:
// "<root>/.<model>.collecting-<pid>-<n>". Hidden, so listings and store
// copies pass it by; unique per job, so jobs never share files. The job
// holds an exclusive flock on the folder for its whole life: a folder whose
// lock is free belongs to a job that has ended or was killed and may be
// swept, while a running job's folder (of this or another process) is never
// touched. Only a finished job replaces the model's folder with its own, in
// one rename; a job that ends otherwise removes just its own folder.

#include <QString>
#include <QStringList>

#include <memory>

namespace collect {

class StagingFolder final {
public:
    // Makes and locks a new staging folder for modelName below root (which
    // must exist). Null with the reason in *error when that fails.
    static std::unique_ptr<StagingFolder> create(const QString& root, const QString& modelName, QString* error);

    // Removes the folder unless it was committed, then drops the lock.
    ~StagingFolder();
    StagingFolder(const StagingFolder&) = delete;
    StagingFolder& operator=(const StagingFolder&) = delete;

    QString path() const { return m_path; }
    QString collectionFolder() const { return m_collectionFolder; }

    // Flushes the folder's file system, then puts the folder in the place of
    // the collection folder in one step (exchanging it with an existing one,
    // which is then removed). False with the reason when the data could not
    // be made durable or the rename failed; the old collection is then as it
    // was.
    bool commit(QString* error);

private:
    StagingFolder(QString path, QString collectionFolder, int fd);
    bool commitWithoutExchange(QString* error);

    QString m_path;
    QString m_collectionFolder;
    int m_fd = -1;
    bool m_committed = false;
};

// True for a name a staging folder can have ("." + model + ".collecting-"
// + pid + "-" + n).
bool isStagingFolderName(const QString& name);

// Removes the staging folders below root whose job has ended (their lock is
// free): leftovers of a killed or stopped job. With a model name, only that
// model's. Returns the paths removed, for the caller's log.
QStringList sweepAbandonedStagingFolders(const QString& root, const QString& modelName = QString());

} // namespace collect
