#pragma once
// The GenICam description of a GigE Vision device at address, as Aravis
// itself reads it; empty when the device cannot be reached. Kept apart from
// Qt code: glib's headers use a member named "signals".

#include <string>

std::string DescriptionFromAravis(const std::string& deviceAddress);
