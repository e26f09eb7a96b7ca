#include "CameraDevices.h"

#include "Accessibility.h"
#include "Discovery.h"
#include "RecordStore.h"
#include "TextFields.h"

#include <cstring>

namespace xq {
namespace {

RecordStore<XQ_CC_DEVICE_INFO>& recordStore()
{
    static RecordStore<XQ_CC_DEVICE_INFO> store;
    return store;
}

XQ_CC_DEVICE_INFO recordOf(const DiscoveredDevice& device)
{
    XQ_CC_DEVICE_INFO record;
    std::memset(&record, 0, sizeof record);
    copyText(record.chDeviceId, device.deviceId);
    if (device.transport == Transport::GigE) {
        record.nTLayerType = XQ_TLAYER_GIGE;
        record.nMajorVer = device.majorVersion;
        record.nMinorVer = device.minorVersion;
        record.nMacAddrHigh = device.macHigh;
        record.nMacAddrLow = device.macLow;
        XQ_CC_GIGE_DEVICE_INFO& gige = record.stGigE;
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
    } else {
        record.nTLayerType = XQ_TLAYER_USB;
        XQ_CC_USB3_DEVICE_INFO& usb = record.stUsb3;
        copyText(usb.chVendorName, device.vendor);
        copyText(usb.chModelName, device.model);
        copyText(usb.chSerialNumber, device.serial);
        copyText(usb.chDeviceVersion, device.deviceVersion);
        copyText(usb.chUserDefinedName, device.userDefinedName);
        copyText(usb.chDeviceGUID, device.deviceId);
    }
    return record;
}

} // namespace

int enumerateCameras(XQ_CC_DEVICE_INFO_LIST* list, unsigned int transports)
{
    constexpr unsigned int known = XQ_TLAYER_GIGE | XQ_TLAYER_USB;
    if (!list || transports == 0 || (transports & ~known) != 0)
        return XQ_ERR_INVALID_PARAMETER;
    std::memset(list, 0, sizeof *list);
    const auto devices = discoverDevices((transports & XQ_TLAYER_GIGE) != 0, (transports & XQ_TLAYER_USB) != 0);
    unsigned int count = 0;
    for (const auto& device : devices) {
        if (count == XQ_MAX_DEVICE_NUM)
            break;
        list->pDeviceInfo[count++] = recordStore().intern(recordOf(device));
    }
    list->nDeviceNum = count;
    return XQ_OK;
}

bool isCameraAccessible(const XQ_CC_DEVICE_INFO* record, unsigned int accessMode)
{
    if (!record || record->nTLayerType != XQ_TLAYER_GIGE)
        return false;
    return isDeviceAccessible(record->stGigE.nCurrentIp, accessMode);
}

} // namespace xq
