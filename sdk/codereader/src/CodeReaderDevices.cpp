#include "CodeReaderDevices.h"

#include "Accessibility.h"
#include "Discovery.h"
#include "RecordStore.h"
#include "TextFields.h"

#include <cstring>

namespace xq {
namespace {

RecordStore<XQ_CODEREADER_DEVICE_INFO>& recordStore()
{
    static RecordStore<XQ_CODEREADER_DEVICE_INFO> store;
    return store;
}

XQ_CODEREADER_DEVICE_INFO recordOf(const DiscoveredDevice& device)
{
    XQ_CODEREADER_DEVICE_INFO record;
    std::memset(&record, 0, sizeof record);
    record.nTLayerType = XQ_TLAYER_GIGE;
    record.nMajorVer = device.majorVersion;
    record.nMinorVer = device.minorVersion;
    record.nMacAddrHigh = device.macHigh;
    record.nMacAddrLow = device.macLow;
    copyText(record.chDeviceId, device.deviceId);
    XQ_CODEREADER_GIGE_INFO& gige = record.stGigE;
    gige.nIpCfgOption = device.ipConfigOptions;
    gige.nIpCfgCurrent = device.ipConfigCurrent;
    gige.nCurrentIp = device.ip;
    gige.nCurrentSubNetMask = device.subnetMask;
    gige.nDefultGateWay = device.gateway;
    gige.nNetExport = device.hostInterface;
    copyText(gige.chManufacturerName, device.vendor);
    copyText(gige.chModelName, device.model);
    copyText(gige.chDeviceVersion, device.deviceVersion);
    copyText(gige.chManufacturerSpecificInfo, device.manufacturerInfo);
    copyText(gige.chSerialNumber, device.serial);
    copyText(gige.chUserDefinedName, device.userDefinedName);
    return record;
}

} // namespace

int enumerateCodeReaders(XQ_CODEREADER_DEVICE_INFO_LIST* list, unsigned int transports)
{
    constexpr unsigned int known = XQ_TLAYER_GIGE | XQ_TLAYER_USB;
    if (!list || transports == 0 || (transports & ~known) != 0)
        return XQ_ERR_INVALID_PARAMETER;
    std::memset(list, 0, sizeof *list);
    if ((transports & XQ_TLAYER_GIGE) == 0)
        return XQ_OK; // code readers are network devices only
    const auto devices = discoverDevices(true, false);
    unsigned int count = 0;
    for (const auto& device : devices) {
        if (count == XQ_MAX_DEVICE_NUM)
            break;
        list->pDeviceInfo[count++] = recordStore().intern(recordOf(device));
    }
    list->nDeviceNum = count;
    return XQ_OK;
}

bool isCodeReaderAccessible(const XQ_CODEREADER_DEVICE_INFO* record, unsigned int accessMode)
{
    if (!record || record->nTLayerType != XQ_TLAYER_GIGE)
        return false;
    return isDeviceAccessible(record->stGigE.nCurrentIp, accessMode);
}

} // namespace xq
