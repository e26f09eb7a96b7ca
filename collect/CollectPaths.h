#pragma once
// Where a collection job puts its files. Paths are joined with "/" and not
// normalised, like every folder of the suite.

#include <QString>

#include <cstddef>

namespace collect {

// <root>/<model>: a device's collection folder is keyed by its model name.
QString collectionFolderOf(const QString& virtualCameraRoot, const QString& modelName);
// <collection folder>/Jpg
QString imageFolderOf(const QString& collectionFolder);
// <image folder>/<n>.jpg
QString imageFileOf(const QString& imageFolder, quint32 frameNumber);
// <collection folder>/ImportInformation.csv
QString csvFileOf(const QString& collectionFolder);

// The three files a feature capture leaves, named after the model:
// "<model>.xml", "<model>_regfile.dat", "<model>_strRegFile.dat".
QString featureDescriptionName(const QString& modelName);
QString registerDumpName(const QString& modelName);
QString stringRegisterDumpName(const QString& modelName);

// The model name comes from the network and becomes a folder that is later
// deleted recursively: refuse anything that could leave the collection root
// (a "/" or "\\", a control character, "." or ".."). Empty stays allowed.
bool isSafeModelName(const QString& modelName);

// A GigE model name is at most 31 bytes and a NUL in its 32-byte bootstrap
// field; the camera record's field has just those 32 bytes.
constexpr std::size_t kModelNameFieldBytes = 32;

// The model name of a record's model-name field, spelled by exactly the
// bytes that name its files and folders. Empty for a name that fills its
// field without a NUL, is not UTF-8, cannot name a file with the same bytes,
// is unsafe (isSafeModelName) or is empty.
QString modelNameOfField(const unsigned char* field, std::size_t fieldSize);

} // namespace collect
