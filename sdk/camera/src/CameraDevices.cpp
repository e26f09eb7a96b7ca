#include "CameraDevices.h"

#include "DeviceRecords.h"

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
        fillGigEIdentity(record, device);
        fillGigEInfo(record.stGigE, device);
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
    if (!list || !isKnownTransportMask(transports))
        return XQ_ERR_INVALID_PARAMETER;
    std::memset(list, 0, sizeof *list);
    const auto devices = discoverDevices((transports & XQ_TLAYER_GIGE) != 0, (transports & XQ_TLAYER_USB) != 0);
    fillDeviceList(*list, devices, recordStore(), recordOf);
    return XQ_OK;
}

bool isCameraAccessible(const XQ_CC_DEVICE_INFO* record, unsigned int accessMode)
{
    return isRecordAccessible(record, accessMode);
}

} // namespace xq
