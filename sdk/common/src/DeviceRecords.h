// Filling the SDKs' device records from a discovered device. The camera and
// code-reader records are distinct C structures with the same GigE fields.
#pragma once

#include "Accessibility.h"
#include "Discovery.h"
#include "RecordStore.h"
#include "TextFields.h"
#include "XQSdkDefs.h"

#include <cstring>
#include <vector>

namespace xq {

// A transport mask an enumeration accepts: non-empty, known bits only.
inline bool isKnownTransportMask(unsigned int transports)
{
    constexpr unsigned int known = XQ_TLAYER_GIGE | XQ_TLAYER_USB;
    return transports != 0 && (transports & ~known) == 0;
}

// The GigE identity of a record: versions and MAC address.
template <class Record>
void fillGigEIdentity(Record& record, const DiscoveredDevice& device)
{
    record.nMajorVer = device.majorVersion;
    record.nMinorVer = device.minorVersion;
    record.nMacAddrHigh = device.macHigh;
    record.nMacAddrLow = device.macLow;
}

template <class GigEInfo>
void fillGigEInfo(GigEInfo& gige, const DiscoveredDevice& device)
{
    gige.nIpCfgOption = device.ipConfigOptions;
    gige.nIpCfgCurrent = device.ipConfigCurrent;
    gige.nCurrentIp = device.ip;
    gige.nCurrentSubNetMask = device.subnetMask;
    gige.nDefultGateWay = device.gateway;
    gige.nNetExport = device.hostInterface;
    copyText(gige.chManufacturerName, device.vendor);
    // The bootstrap's model bytes as they are (its field is 32 bytes), so
    // both SDKs' records and the dump file names spell a model alike.
    copyBytes(gige.chModelName, device.model);
    copyText(gige.chDeviceVersion, device.deviceVersion);
    copyText(gige.chManufacturerSpecificInfo, device.manufacturerInfo);
    copyText(gige.chSerialNumber, device.serial);
    copyText(gige.chUserDefinedName, device.userDefinedName);
}

// Fills list with up to XQ_MAX_DEVICE_NUM records kept in store; recordOf
// makes the record of one device.
template <class List, class Record, class MakeRecord>
void fillDeviceList(List& list, const std::vector<DiscoveredDevice>& devices, RecordStore<Record>& store,
                    MakeRecord&& recordOf)
{
    unsigned int count = 0;
    for (const auto& device : devices) {
        if (count == XQ_MAX_DEVICE_NUM)
            break;
        list.pDeviceInfo[count++] = store.intern(recordOf(device));
    }
    list.nDeviceNum = count;
}

// Only network devices can be probed without taking control.
template <class Record>
bool isRecordAccessible(const Record* record, unsigned int accessMode)
{
    if (!record || record->nTLayerType != XQ_TLAYER_GIGE)
        return false;
    return isDeviceAccessible(record->stGigE.nCurrentIp, accessMode);
}

} // namespace xq
