// Rules a device's GenICam description must meet before Aravis sees it.
// Devices are untrusted: Aravis would read any local file a "File:" URL
// names, allocate whatever size the URL states, and its zip reader follows
// offsets without checking them. These checks mirror what Aravis will do
// with the same bytes, so that everything it follows has been checked here.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace xq {

// Cap for a description as stored on the device and for its unpacked size.
constexpr std::size_t kMaxDescriptionBytes = 16u << 20;

// A description in the device's own memory ("Local:name;address;size").
struct LocalDescription {
    std::string fileName;
    std::uint32_t address = 0;
    std::uint32_t size = 0;
    bool zipped = false; // Aravis unpacks exactly the names ending in ".zip"
};

// The text of a URL register: its bytes up to the first NUL.
std::string urlRegisterText(const std::vector<std::uint8_t>& registerBytes);

// The description the first URL names, or nothing (with the reason) if it
// names anything but the device's memory, or a size of 0 or over the cap.
std::optional<LocalDescription> parseLocalUrl(std::string_view url, std::string& reason);

// Aravis falls back to the second URL when reading the first fails: it must
// be empty, an "http:" URL (which Aravis does not fetch), or the first URL.
bool isHarmlessSecondUrl(std::string_view second, std::string_view first);

// A zipped description: exactly one member, stored or deflated, every
// offset, size and count in range, unpacking to its stated size (at most
// maxUnpacked) with the stated CRC. Fills reason when refused.
bool isSafeZippedDescription(const std::uint8_t* zip, std::size_t size, std::size_t maxUnpacked, std::string& reason);
inline bool isSafeZippedDescription(const std::vector<std::uint8_t>& zip, std::size_t maxUnpacked, std::string& reason)
{
    return isSafeZippedDescription(zip.data(), zip.size(), maxUnpacked, reason);
}

} // namespace xq
