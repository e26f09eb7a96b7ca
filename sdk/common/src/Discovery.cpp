#include "Discovery.h"

#include "AravisSystem.h"
#include "GvcpProbe.h"
#include "TextFields.h"

#include <arv.h>
#include <arpa/inet.h>

namespace xq {
namespace {

// Offsets of the discovery block in the bootstrap register map.
constexpr std::uint32_t kBootstrapSize = 0xF8;
constexpr std::size_t kModelFieldSize = 32;

std::uint32_t be32At(const std::vector<std::uint8_t>& block, std::size_t offset)
{
    return (std::uint32_t{block[offset]} << 24) | (std::uint32_t{block[offset + 1]} << 16)
        | (std::uint32_t{block[offset + 2]} << 8) | block[offset + 3];
}

std::string textAt(const std::vector<std::uint8_t>& block, std::size_t offset, std::size_t size)
{
    return boundedText(reinterpret_cast<const char*>(block.data() + offset), size);
}

std::string safeString(const char* text) { return text ? text : ""; }

void fillFromBootstrap(DiscoveredDevice& device)
{
    GvcpProbe probe(device.ip);
    device.hostInterface = probe.localAddress();
    const auto block = probe.readMemory(0, kBootstrapSize);
    if (!block || block->size() < kBootstrapSize)
        return;
    const std::uint32_t version = be32At(*block, 0x00);
    device.majorVersion = static_cast<std::uint16_t>(version >> 16);
    device.minorVersion = static_cast<std::uint16_t>(version & 0xFFFF);
    device.macHigh = be32At(*block, 0x08) & 0xFFFF;
    device.macLow = be32At(*block, 0x0C);
    device.ipConfigOptions = be32At(*block, 0x10);
    device.ipConfigCurrent = be32At(*block, 0x14);
    device.subnetMask = be32At(*block, 0x34);
    device.gateway = be32At(*block, 0x44);
    device.vendor = textAt(*block, 0x48, 32);
    device.model = textAt(*block, 0x68, kModelFieldSize);
    device.deviceVersion = textAt(*block, 0x88, 32);
    device.manufacturerInfo = textAt(*block, 0xA8, 48);
    device.serial = textAt(*block, 0xD8, 16);
    device.userDefinedName = textAt(*block, 0xE8, 16);
}

} // namespace

std::uint32_t parseIpv4(const char* text)
{
    in_addr address{};
    if (!text || ::inet_pton(AF_INET, text, &address) != 1)
        return 0;
    return ntohl(address.s_addr);
}

std::string formatIpv4(std::uint32_t address)
{
    return std::to_string(address >> 24) + '.' + std::to_string((address >> 16) & 0xFF) + '.'
        + std::to_string((address >> 8) & 0xFF) + '.' + std::to_string(address & 0xFF);
}

std::vector<DiscoveredDevice> discoverDevices(bool gige, bool usb3)
{
    std::vector<DiscoveredDevice> devices;
    {
        const std::lock_guard<std::mutex> lock(aravisSystemMutex());
        arv_update_device_list();
        const unsigned int count = arv_get_n_devices();
        for (unsigned int i = 0; i < count; ++i) {
            const std::string protocol = safeString(arv_get_device_protocol(i));
            DiscoveredDevice device;
            if (protocol == "GigEVision" && gige)
                device.transport = Transport::GigE;
            else if (protocol == "USB3Vision" && usb3)
                device.transport = Transport::Usb3;
            else
                continue;
            device.deviceId = safeString(arv_get_device_id(i));
            device.vendor = safeString(arv_get_device_vendor(i));
            device.model = safeString(arv_get_device_model(i));
            device.serial = safeString(arv_get_device_serial_nbr(i));
            device.manufacturerInfo = safeString(arv_get_device_manufacturer_info(i));
            if (device.transport == Transport::GigE) {
                device.ip = parseIpv4(arv_get_device_address(i));
                // Replaced by the bootstrap's bytes below; cut to that field's size.
                device.model = device.model.substr(0, kModelFieldSize);
            }
            devices.push_back(std::move(device));
        }
    }
    // The bootstrap reads go to each device directly, outside the global lock.
    for (auto& device : devices) {
        if (device.transport == Transport::GigE && device.ip != 0)
            fillFromBootstrap(device);
    }
    return devices;
}

} // namespace xq
