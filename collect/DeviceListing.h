#pragma once
// Which discovered devices the tool lists, and how their fields read.

#include "XqCodeReaderCtrl.h"

#include <QString>

namespace collect {

// A fixed-size text field of a device record: at most 64 bytes, UTF-8.
QString DeviceText(const unsigned char* field);

// The address text of nCurrentIp, whose first octet is the most significant
// byte: 0x0A403402 reads "10.64.52.2".
QString IpAddressText(unsigned int address);

// Code readers are listed; virtual cameras ("Vir" in the serial number) and
// devices whose model name lacks "ID" are not. Both tests are case-sensitive.
bool IsListedCodeReader(const XQ_CODEREADER_DEVICE_INFO& record);

} // namespace collect
