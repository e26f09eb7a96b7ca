#pragma once
// Files on disk as the Qt tests lay them out and compare them.

#include <QByteArray>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QMap>
#include <QString>
#include <QStringList>

inline bool WriteFile(const QString& path, const QByteArray& bytes)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(bytes) == bytes.size();
}

inline QByteArray ReadAll(const QString& path, const QByteArray& missing = QByteArray())
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : missing;
}

// The names in folder, hidden ones included, sorted.
inline QStringList Entries(const QString& folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden, QDir::Name);
}

// Every file and folder below folder, hidden ones included, as sorted paths.
inline QStringList FilesBelow(const QString& folder)
{
    QStringList files;
    QDirIterator it(folder, QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot | QDir::Hidden, QDirIterator::Subdirectories);
    while (it.hasNext())
        files.append(it.next());
    files.sort();
    return files;
}

// Every file below folder with its bytes, by relative path; hidden ones
// (a job's staging folder) only when asked.
inline QMap<QString, QByteArray> Contents(const QString& folder, bool hidden = true)
{
    QMap<QString, QByteArray> contents;
    QDirIterator it(folder, QDir::Files | (hidden ? QDir::Hidden : QDir::Filters()), QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        contents.insert(QDir(folder).relativeFilePath(path), ReadAll(path));
    }
    return contents;
}

// The entries of a collection folder, as Entries lists them.
inline QStringList CollectedFilesOf(const QString& model)
{
    return {QStringLiteral("ImportInformation.csv"), QStringLiteral("Jpg"), model + QStringLiteral(".xml"),
            model + QStringLiteral("_regfile.dat"), model + QStringLiteral("_strRegFile.dat")};
}

// A collection folder as a job leaves it, made by hand.
inline bool MakeCollectionFolder(const QString& folder, const QString& model, int images = 3)
{
    bool written = WriteFile(folder + "/" + model + ".xml", "<RegisterDescription/>")
                   && WriteFile(folder + "/" + model + "_regfile.dat", "registers of " + model.toUtf8())
                   && WriteFile(folder + "/" + model + "_strRegFile.dat", "string registers");
    QByteArray csv("TriggerIndex,FrameNum,PicPath\n");
    for (int n = 1; n <= images; ++n) {
        written = written && WriteFile(QString("%1/Jpg/%2.jpg").arg(folder).arg(n), "\xFF\xD8 frame " + QByteArray::number(n));
        csv += "1," + QByteArray::number(n) + "," + QByteArray::number(n) + ".jpg\r\n";
    }
    return written && WriteFile(folder + "/ImportInformation.csv", csv);
}
