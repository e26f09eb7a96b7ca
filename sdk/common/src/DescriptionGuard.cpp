#include "DescriptionGuard.h"

#include "DescriptionCheck.h"
#include "GvcpProbe.h"
#include "XQSdkDefs.h"

#include <algorithm>

namespace xq {
namespace {

constexpr std::uint32_t kFirstUrlRegister = 0x0200;
constexpr std::uint32_t kSecondUrlRegister = 0x0400;
constexpr std::uint16_t kUrlRegisterSize = 512;
constexpr std::uint32_t kReadChunk = 512;
constexpr int kRequestTimeoutMs = 500;
constexpr int kRequestAttempts = 3;
constexpr std::uint16_t kStatusAccessDenied = 0x8006;

int failureOf(const GvcpResult& result, const std::function<bool()>& stop, std::string& reason)
{
    if (result.interrupted && stop && stop())
        return XQ_ERR_CANCELLED;
    if (result.interrupted) {
        reason = "description not read within " + std::to_string(kDescriptionTimeLimit.count()) + " s";
        return XQ_ERR_DESCRIPTION_REFUSED;
    }
    if (result.answered && result.status == kStatusAccessDenied) {
        reason = "device held by another client";
        return XQ_ERR_ACCESS_DENIED;
    }
    reason = result.answered ? "device refused to read its description" : "device did not answer";
    return result.answered ? XQ_ERR_DEVICE_IO : XQ_ERR_NOT_FOUND;
}

// Reads [address, address + size) in aligned chunks into bytes.
int download(GvcpProbe& probe, const LocalDescription& place, std::vector<std::uint8_t>& bytes,
             const std::function<bool()>& stop, std::string& reason)
{
    const std::uint64_t begin = place.address & ~std::uint64_t{3};
    const std::uint64_t end = (std::uint64_t{place.address} + place.size + 3) & ~std::uint64_t{3};
    bytes.clear();
    bytes.reserve(static_cast<std::size_t>(end - begin));
    for (std::uint64_t at = begin; at < end; at += kReadChunk) {
        const auto length = static_cast<std::uint16_t>(std::min<std::uint64_t>(kReadChunk, end - at));
        GvcpResult result;
        const auto chunk = probe.readMemory(static_cast<std::uint32_t>(at), length, &result);
        if (!chunk)
            return failureOf(result, stop, reason);
        bytes.insert(bytes.end(), chunk->begin(), chunk->end());
    }
    const auto skip = static_cast<std::ptrdiff_t>(place.address - begin);
    bytes.erase(bytes.begin(), bytes.begin() + skip);
    bytes.resize(place.size);
    return XQ_OK;
}

} // namespace

int checkDeviceDescription(std::uint32_t deviceIp, const std::function<bool()>& stop, std::string& reason)
{
    GvcpProbe probe(deviceIp, kRequestTimeoutMs, kRequestAttempts);
    if (!probe.isOpen()) {
        reason = "no socket for the device";
        return XQ_ERR_RESOURCE;
    }
    probe.setStopCheck(stop);
    probe.setDeadline(std::chrono::steady_clock::now() + kDescriptionTimeLimit);

    std::string urls[2];
    const std::uint32_t registers[2] = {kFirstUrlRegister, kSecondUrlRegister};
    for (int index = 0; index < 2; ++index) {
        GvcpResult result;
        const auto text = probe.readMemory(registers[index], kUrlRegisterSize, &result);
        if (!text)
            return failureOf(result, stop, reason);
        // Aravis reads at most 511 characters of a URL register.
        urls[index] = urlRegisterText(*text).substr(0, kUrlRegisterSize - 1);
    }
    const auto place = parseLocalUrl(urls[0], reason);
    if (!place)
        return XQ_ERR_DESCRIPTION_REFUSED;
    if (!isHarmlessSecondUrl(urls[1], urls[0])) {
        reason = "second description URL refused: only empty, http: or the first URL";
        return XQ_ERR_DESCRIPTION_REFUSED;
    }
    std::vector<std::uint8_t> bytes;
    if (const int code = download(probe, *place, bytes, stop, reason); code != XQ_OK)
        return code;
    if (place->zipped && !isSafeZippedDescription(bytes, kMaxDescriptionBytes, reason))
        return XQ_ERR_DESCRIPTION_REFUSED;
    return XQ_OK;
}

} // namespace xq
