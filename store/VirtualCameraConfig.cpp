#include "VirtualCameraConfig.h"

#include "SupportedModels.h"
#include "VirtualIdentity.h"

#include <QFile>
#include <QSettings>

namespace VirtualStore {

namespace {

// Decimal integers whose digits read as the flag words 0x80000007 and
// 0x80000005: the serving side expects exactly these texts.
constexpr int kIpConfigOption = 80000007;
constexpr int kIpConfigCurrent = 80000005;

} // namespace

QSettings* openVirtualCameraSettings(const QString& strPath, QObject* pParent)
{
    auto* pSettings = new QSettings(strPath, QSettings::IniFormat, pParent);
    pSettings->setIniCodec("utf-8");
    return pSettings;
}

bool isConfigFileWritable(const QString& strPath)
{
    QFile file(strPath);
    if (!file.exists())
        return true;
    if (!file.open(QIODevice::ReadOnly | QIODevice::WriteOnly | QIODevice::Append))
        return false;
    file.close();
    return true;
}

void writeVirtualCameraGroup(QSettings& settings, const QString& strGroup, const QString& strModel,
                             SupportedModelTable& models)
{
    const QString strMac = GenerateVirtualMac();
    settings.setValue("Global/VirtualMode", 1);
    settings.setValue("Global/TriggerIntervalTime", 2000);

    const QString strPrefix = strGroup + "/";
    settings.setValue(strPrefix + "bIsConnect", 0);
    settings.setValue(strPrefix + "nMajorVer", 2);
    settings.setValue(strPrefix + "nMinorVer", 0);
    settings.setValue(strPrefix + "nMacAddrHigh", strMac);
    settings.setValue(strPrefix + "nMacAddrLow", strMac);
    settings.setValue(strPrefix + "nTLayerType", 1);
    settings.setValue(strPrefix + "nIpCfgOption", kIpConfigOption);
    settings.setValue(strPrefix + "nIpCfgCurrent", kIpConfigCurrent);
    settings.setValue(strPrefix + "nCurrentIp", GenerateVirtualIp());
    settings.setValue(strPrefix + "nCurrentSubNetMask", "ffffff00");
    settings.setValue(strPrefix + "nDefultGateWay", "a4034fe");
    settings.setValue(strPrefix + "nNetExport", "a403418");
    settings.setValue(strPrefix + "chSerialNumber", strGroup);
    settings.setValue(strPrefix + "chManufacturerSpecificInfo", "GEV");
    settings.setValue(strPrefix + "chDeviceVersion", models.versionFor(strModel));
    settings.setValue(strPrefix + "chModelName", strModel);
    settings.setValue(strPrefix + "chManufacturerName", "GEV");
    settings.setValue(strPrefix + "chUserDefinedName", QString(""));
}

} // namespace VirtualStore
