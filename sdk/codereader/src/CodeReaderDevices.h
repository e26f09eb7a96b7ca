// Device records of the code-reader SDK: enumeration and accessibility.
#pragma once

#include "XqCodeReaderCtrl.h"

namespace xq {

int enumerateCodeReaders(XQ_CODEREADER_DEVICE_INFO_LIST* list, unsigned int transports);
bool isCodeReaderAccessible(const XQ_CODEREADER_DEVICE_INFO* record, unsigned int accessMode);

} // namespace xq
