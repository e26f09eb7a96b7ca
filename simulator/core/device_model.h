#pragma once
// What the server needs from one simulated device. The transport layer
// (bootstrap registers, control privilege, streaming) is the server's; a
// model supplies identity, its GenICam description, the registers behind
// that description and the pictures it streams.

#include "byte_order.h"
#include "gvcp.h"
#include "link_pacer.h"

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace quorvex::sim {

struct DeviceIdentity final {
    std::string manufacturerName;
    std::string modelName;
    std::string deviceVersion;
    std::string manufacturerInfo;
    std::string serialNumber;
    std::string userDefinedName;
    std::array<std::uint8_t, 6> mac{};
    // Texts that fill their bootstrap field take all of it, with no
    // terminating NUL, as some faulty devices do.
    bool unterminatedTexts = false;
};

struct FrameFormat final {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t pixelFormat = gvsp::kPixelMono8;

    std::uint32_t bytesPerPixel() const { return pixelFormat == gvsp::kPixelRgb8 ? 3 : 1; }
    std::size_t imageSize() const { return std::size_t{width} * height * bytesPerPixel(); }
};

enum class AcquisitionMode { Continuous, SingleFrame, MultiFrame };

// Everything the stream channel needs to know when acquisition starts.
struct AcquisitionSetup final {
    FrameFormat format;
    AcquisitionMode mode = AcquisitionMode::Continuous;
    std::uint32_t frameCount = 1; // MultiFrame only
    bool softwareTriggered = false;
    bool externallyTriggered = false; // trigger on but from a source we never fire
    double framesPerSecond = 10.0;     // free running
};

// Commands a register write asked for; the server acts on them after the
// write has been acknowledged in the register image.
struct DeviceCommands final {
    bool acquisitionStart = false;
    bool acquisitionStop = false;
    unsigned softwareTriggers = 0;
};

// Produces the pictures of one device. Called only from its stream thread.
class FrameSource {
public:
    virtual ~FrameSource() = default;
    // Fills image (resized to format.imageSize()) with frame frameNumber.
    // The same frame number and format give the same bytes.
    virtual void render(std::uint64_t frameNumber, const FrameFormat& format, std::vector<std::uint8_t>& image) = 0;
};

// How the device's frames travel: what limits the rate it can stream at.
struct TransportSettings final {
    LinkSpeed link;
    std::uint32_t packetSize = gvcp::packetsize::kDefault; // IP datagram bytes
    Clock::duration packetGap{};                           // the packet delay, as time
};

// A bootstrap register value a device starts with instead of the default.
struct BootstrapSetting final {
    std::uint32_t address = 0;
    std::uint32_t value = 0;
};

// The device-specific side. Calls come from the control thread under the
// device's lock; the model needs no locking of its own.
class DeviceModel {
public:
    virtual ~DeviceModel() = default;

    virtual const DeviceIdentity& identity() const = 0;
    // The file name announced in the XML URL (".zip" means a zipped description).
    virtual std::string genicamFileName() const = 0;
    virtual std::string_view genicamXml() const = 0;
    // The first URL of the bootstrap block when the model chooses it itself
    // (a description served from its own registers or another scheme);
    // empty for the usual Local: URL of genicamXml().
    virtual std::string genicamUrl() const { return {}; }
    // Whether a GVCP command (code, request id, payload) is answered at all.
    // A model that stays silent makes the client time out and retry: a slow
    // or vanished device. Silence is no activity for the heartbeat.
    virtual bool answers(std::uint16_t /*commandCode*/, std::uint16_t /*requestId*/, ByteView /*payload*/) { return true; }

    // Registers outside the bootstrap block and the description. Return a
    // GVCP status; out is fully written on success.
    virtual gvcp::Status readMemory(std::uint32_t address, MutableByteView out) = 0;
    virtual gvcp::Status writeMemory(std::uint32_t address, ByteView data, DeviceCommands& commands) = 0;
    // Told once per read command answered, whatever it reads (bootstrap,
    // description or device registers): one round trip for a client.
    virtual void readCommandServed() {}

    virtual AcquisitionSetup acquisitionSetup() const = 0;
    // Told when streaming starts and stops, so image settings can be locked.
    virtual void setAcquisitionActive(bool active) = 0;

    // A new, independent picture source for a stream thread.
    virtual std::unique_ptr<FrameSource> createFrameSource() const = 0;

    // Transport settings a client may change (heartbeat time-out, packet
    // size and delay) that this device starts with; others are ignored.
    virtual std::vector<BootstrapSetting> initialBootstrapSettings() const { return {}; }

    // Told at start and whenever the link, packet size or packet delay
    // changes, so a model can report the frame rate the link carries.
    virtual void transportChanged(const TransportSettings& /*settings*/) {}

    // Told when a client gains control of the device and when control ends
    // (released, heartbeat lapsed); models that mark a file as in use act here.
    virtual void controlChanged(bool /*controlled*/) {}
};

} // namespace quorvex::sim
