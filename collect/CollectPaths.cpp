#include "CollectPaths.h"

namespace collect {

QString CollectionFolderOf(const QString& virtualCameraRoot, const QString& modelName)
{
    return QStringLiteral("%1/%2").arg(virtualCameraRoot, modelName);
}

QString ImageFolderOf(const QString& collectionFolder)
{
    return QStringLiteral("%1%2").arg(collectionFolder, QStringLiteral("/Jpg"));
}

QString ImageFileOf(const QString& imageFolder, quint32 frameNumber)
{
    return QStringLiteral("%1/%2.jpg").arg(imageFolder).arg(frameNumber);
}

QString CsvFileOf(const QString& collectionFolder)
{
    return collectionFolder + QStringLiteral("/ImportInformation.csv");
}

QString FeatureDescriptionName(const QString& modelName)
{
    return QStringLiteral("%1.xml").arg(modelName);
}

QString RegisterDumpName(const QString& modelName)
{
    return QStringLiteral("%1_regfile.dat").arg(modelName);
}

QString StringRegisterDumpName(const QString& modelName)
{
    return QStringLiteral("%1_strRegFile.dat").arg(modelName);
}

bool IsSafeModelName(const QString& modelName)
{
    if (modelName == QLatin1String(".") || modelName == QLatin1String(".."))
        return false;
    for (const QChar c : modelName) {
        if (c == QLatin1Char('/') || c == QLatin1Char('\\') || c.category() == QChar::Other_Control)
            return false;
    }
    return true;
}

} // namespace collect
