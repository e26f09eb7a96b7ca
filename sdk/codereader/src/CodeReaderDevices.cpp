#include "CodeReaderDevices.h"

#include "DeviceRecords.h"

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
    fillGigEIdentity(record, device);
    copyText(record.chDeviceId, device.deviceId);
    fillGigEInfo(record.stGigE, device);
    return record;
}

} // namespace

int enumerateCodeReaders(XQ_CODEREADER_DEVICE_INFO_LIST* list, unsigned int transports)
{
    if (!list || !isKnownTransportMask(transports))
        return XQ_ERR_INVALID_PARAMETER;
    std::memset(list, 0, sizeof *list);
    if ((transports & XQ_TLAYER_GIGE) == 0)
        return XQ_OK; // code readers are network devices only
    fillDeviceList(*list, discoverDevices(true, false), recordStore(), recordOf);
    return XQ_OK;
}

bool isCodeReaderAccessible(const XQ_CODEREADER_DEVICE_INFO* record, unsigned int accessMode)
{
    return isRecordAccessible(record, accessMode);
}

} // namespace xq
