#include "CollectPaths.h"

#include "XqFileNames.h"

#include <QFile>

#include <algorithm>
#include <cstring>

namespace collect {

QString collectionFolderOf(const QString& virtualCameraRoot, const QString& modelName)
{
    return QStringLiteral("%1/%2").arg(virtualCameraRoot, modelName);
}

QString imageFolderOf(const QString& collectionFolder)
{
    return collectionFolder + QLatin1Char('/') + QLatin1String(xq::names::kImageFolder);
}

QString imageFileOf(const QString& imageFolder, quint32 frameNumber)
{
    // Joined, not chained arg(): a "%1" in the model part of the folder
    // would take the frame number.
    return imageFolder + QLatin1Char('/') + QString::number(frameNumber) + QLatin1String(xq::names::kImageSuffix);
}

QString csvFileOf(const QString& collectionFolder)
{
    return collectionFolder + QLatin1Char('/') + QLatin1String(xq::names::kCodesFile);
}

QString featureDescriptionName(const QString& modelName)
{
    return modelName + QLatin1String(xq::names::kDescriptionSuffix);
}

QString registerDumpName(const QString& modelName)
{
    return modelName + QLatin1String(xq::names::kRegisterDumpSuffix);
}

QString stringRegisterDumpName(const QString& modelName)
{
    return modelName + QLatin1String(xq::names::kStringRegisterDumpSuffix);
}

bool isSafeModelName(const QString& modelName)
{
    if (modelName == QLatin1String(".") || modelName == QLatin1String(".."))
        return false;
    for (const QChar c : modelName) {
        if (c == QLatin1Char('/') || c == QLatin1Char('\\') || c.category() == QChar::Other_Control)
            return false;
    }
    return true;
}

QString modelNameOfField(const unsigned char* field, std::size_t fieldSize)
{
    const std::size_t limit = std::min(fieldSize, kModelNameFieldBytes);
    const void* const nul = std::memchr(field, '\0', limit);
    if (nul == nullptr)
        return QString();
    const QByteArray bytes(reinterpret_cast<const char*>(field),
                           static_cast<int>(static_cast<const unsigned char*>(nul) - field));
    const QString name = QString::fromUtf8(bytes);
    // Invalid UTF-8 turns into U+FFFD and so does not come back the same.
    if (name.isEmpty() || name.toUtf8() != bytes || QFile::encodeName(name) != bytes || !isSafeModelName(name))
        return QString();
    return name;
}

} // namespace collect
