#pragma once
// The identity a new virtual camera gets: an ID from the clock, a MAC text
// and an address text from the C library's generator.

#include <QString>

namespace VirtualStore {

// Eight digits: the decimal clock text from position 4, that is the
// millisecond clock divided by 10, modulo 100000000. 1731734400123 gives
// "73440012".
QString cameraIdFromClock(qint64 nMSecsSinceEpoch);
// "Vir" + the ID: the camera's group, folder name and serial number.
QString groupNameForId(const QString& strId);

// Eight uppercase hex digits: the low bytes of four rand() values after
// seeding with the current second.
QString GenerateVirtualMac();
// "a4034" + two lowercase hex digits of rand() % 253 after the same
// seeding: the address 10.64.52.n, n from 0 to 252.
QString GenerateVirtualIp();

} // namespace VirtualStore
