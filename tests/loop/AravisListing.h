#pragma once
// Serial numbers of the devices Aravis itself discovers. Kept apart from Qt
// code: glib's headers use a member named "signals".

#include <string>
#include <vector>

std::vector<std::string> SerialNumbersFromAravis();
