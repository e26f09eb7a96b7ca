// Device discovery through Aravis, completed with identity fields read
// from each GigE Vision device's bootstrap registers.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace xq {

enum class Transport { GigE, Usb3 };

struct DiscoveredDevice {
    Transport transport = Transport::GigE;
    std::string deviceId;          // Aravis device id, the key to open it again
    std::string vendor;
    std::string model;
    std::string serial;
    std::string deviceVersion;
    std::string manufacturerInfo;
    std::string userDefinedName;
    std::uint16_t majorVersion = 0;
    std::uint16_t minorVersion = 0;
    std::uint32_t macHigh = 0;
    std::uint32_t macLow = 0;
    std::uint32_t ipConfigOptions = 0;
    std::uint32_t ipConfigCurrent = 0;
    std::uint32_t ip = 0;          // first octet in the most significant byte
    std::uint32_t subnetMask = 0;
    std::uint32_t gateway = 0;
    std::uint32_t hostInterface = 0;
};

// Runs discovery on the transports asked for; takes about a second.
// Serialised process-wide, as Aravis's device list is global.
std::vector<DiscoveredDevice> discoverDevices(bool gige, bool usb3);

// "a.b.c.d" to an address with the first octet most significant; 0 if invalid.
std::uint32_t parseIpv4(const char* text);
std::string formatIpv4(std::uint32_t address);

} // namespace xq
