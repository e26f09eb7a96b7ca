#pragma once
// A code reader's texts that are available only under certain trigger and
// protocol settings: made available and read once, so that the register
// recording holds them.

#include "XQCameraControl.h"

namespace collect {

// The model marker of a code reader: "ID", case-sensitive, anywhere.
constexpr char kCodeReaderMarker[] = "ID";

// Each string is read under the settings that make it available, so the
// order of the settings matters; every result is ignored. The device is left
// in the last of them.
void readCodeReaderStrings(XQ_HANDLE hCamera);

} // namespace collect
