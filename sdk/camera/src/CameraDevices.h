// Device records of the camera SDK: enumeration and accessibility.
#pragma once

#include "XQCameraControl.h"

namespace xq {

int enumerateCameras(XQ_CC_DEVICE_INFO_LIST* list, unsigned int transports);
bool isCameraAccessible(const XQ_CC_DEVICE_INFO* record, unsigned int accessMode);

} // namespace xq
