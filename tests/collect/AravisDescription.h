#pragma once
// What Aravis itself sees of the devices, to compare with what the tool
// writes. Kept apart from Qt code: glib's headers use a member named
// "signals".

#include <string>
#include <vector>

// The GenICam description of the GigE Vision device at address; empty when
// the device cannot be reached.
std::string DescriptionFromAravis(const std::string& deviceAddress);

// Serial numbers of the devices Aravis discovers.
std::vector<std::string> SerialNumbersFromAravis();
