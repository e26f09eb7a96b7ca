#include "replayed_camera.h"

#include "register_dump.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace quorvex::sim {

namespace {

// Bootstrap text fields the description's vendor features read.
constexpr std::uint32_t kManufacturerNameField = 0x0048;
constexpr std::uint32_t kManufacturerInfoField = 0x00A8;

// Frames larger than this are not sent, whatever the registers say.
constexpr std::uint64_t kMaxFrameBytes = 64u * 1024u * 1024u;

bool readText(const std::string& path, std::uintmax_t limit, std::string& text, std::string& error)
{
    std::error_code status;
    const std::uintmax_t size = std::filesystem::file_size(path, status);
    if (status) {
        error = "file " + path + ": " + status.message();
        return false;
    }
    if (size == 0 || size > limit) {
        error = "file " + path + " is empty or larger than " + std::to_string(limit) + " bytes";
        return false;
    }
    std::ifstream file(path, std::ios::binary);
    text.assign(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    if (text.size() != size) {
        error = "file " + path + " cannot be read";
        return false;
    }
    return true;
}

} // namespace

ReplayedCamera::ReplayedCamera(store::StoreCamera camera, LogSink log)
    : m_camera(std::move(camera)), m_log(std::move(log))
{
}

ReplayedCamera::~ReplayedCamera()
{
    // The image outlives the description that reads it.
    m_genicam.reset();
}

std::unique_ptr<ReplayedCamera> ReplayedCamera::load(const store::StoreCamera& camera, LogSink log, std::string& error)
{
    std::unique_ptr<ReplayedCamera> replay(new ReplayedCamera(camera, std::move(log)));
    const auto note = [&](const std::string& message) {
        if (replay->m_log)
            replay->m_log("camera " + camera.group + ": " + message);
    };

    if (!readText(camera.genicamXml, kMaxGenicamXmlBytes, replay->m_xml, error))
        return nullptr;

    RegisterDump numbers;
    RegisterDump strings;
    if (!readRegisterDump(camera.registerFile, numbers, error) ||
        !readRegisterDump(camera.stringRegisterFile, strings, error))
        return nullptr;
    replay->m_image = std::make_unique<RegisterImage>(RegisterImage::fromDumps({&numbers, &strings}));
    replay->m_genicam = GenicamEvaluator::create(replay->m_xml, *replay->m_image, error);
    if (!replay->m_genicam) {
        error = camera.genicamXml + ": " + error;
        return nullptr;
    }
    replay->m_acquisitionStart = replay->m_genicam->registerOf("AcquisitionStart");
    replay->m_acquisitionStop = replay->m_genicam->registerOf("AcquisitionStop");
    replay->m_triggerSoftware = replay->m_genicam->registerOf("TriggerSoftware");
    replay->m_collectedFrameRate = replay->m_genicam->floating("ResultingFrameRate");
    replay->m_resultingFrameRate = replay->m_genicam->registerOf("ResultingFrameRate");
    if (!replay->m_acquisitionStart)
        note("the description has no AcquisitionStart register: no frames will be sent");

    for (const std::string& path : camera.images) {
        JpegSize size;
        std::string problem;
        if (!readJpegSize(path, size, problem)) {
            note("image left out: " + problem);
            continue;
        }
        if (replay->m_images.empty())
            replay->m_imageSize = size;
        replay->m_images.push_back(path);
    }
    if (replay->m_images.empty()) {
        error = "no readable JPEG image in " + camera.imageFolder;
        return nullptr;
    }
    const FrameFormat format = replay->frameFormat();
    if (static_cast<int>(format.width) != replay->m_imageSize.width ||
        static_cast<int>(format.height) != replay->m_imageSize.height)
        note("images are " + std::to_string(replay->m_imageSize.width) + "x" +
             std::to_string(replay->m_imageSize.height) + ", the registers ask for " + std::to_string(format.width) +
             "x" + std::to_string(format.height) + ": frames show them cut or padded at the top-left corner");

    DeviceIdentity& identity = replay->m_identity;
    identity.serialNumber = camera.group;
    identity.modelName = camera.modelName;
    identity.deviceVersion = camera.deviceVersion;
    identity.userDefinedName = camera.userDefinedName;
    identity.mac = camera.mac;
    // The group holds the tool's placeholders for these; the device's own
    // words, when the collection read them, are what its features showed.
    identity.manufacturerName =
        replay->m_image->text(kManufacturerNameField, 32).value_or(camera.manufacturerName);
    identity.manufacturerInfo =
        replay->m_image->text(kManufacturerInfoField, 48).value_or(camera.manufacturerSpecificInfo);
    return replay;
}

std::string ReplayedCamera::genicamFileName() const
{
    // The name travels in a "Local:<name>;<address>;<size>" URL.
    std::string name = m_identity.modelName;
    std::replace_if(name.begin(), name.end(), [](unsigned char c) { return !std::isalnum(c) && c != '-' && c != '_'; },
                    '_');
    return (name.empty() ? std::string("device") : name) + ".xml";
}

gvcp::Status ReplayedCamera::readMemory(std::uint32_t address, MutableByteView out)
{
    if (m_resultingFrameRate && m_resultingFrameRate->overlaps(address, out.size))
        updateResultingFrameRate();
    m_image->read(address, out.data, out.size);
    return gvcp::status::kSuccess;
}

gvcp::Status ReplayedCamera::writeMemory(std::uint32_t address, ByteView data, DeviceCommands& commands)
{
    m_image->write(address, data.data, data.size);
    if (m_acquisitionStop && m_acquisitionStop->overlaps(address, data.size))
        commands.acquisitionStop = true;
    if (m_acquisitionStart && m_acquisitionStart->overlaps(address, data.size))
        commands.acquisitionStart = true;
    if (m_triggerSoftware && m_triggerSoftware->overlaps(address, data.size))
        ++commands.softwareTriggers;
    return gvcp::status::kSuccess;
}

FrameFormat ReplayedCamera::frameFormat() const
{
    FrameFormat format;
    const auto dimension = [](std::optional<std::int64_t> value, int fallback) {
        return static_cast<std::uint32_t>(value && *value > 0 && *value <= 65535 ? *value : fallback);
    };
    format.width = dimension(m_genicam->integer("Width"), m_imageSize.width);
    format.height = dimension(m_genicam->integer("Height"), m_imageSize.height);
    const std::optional<std::int64_t> pixelFormat = m_genicam->enumerationValue("PixelFormat");
    format.pixelFormat = pixelFormat && *pixelFormat == gvsp::kPixelRgb8 ? gvsp::kPixelRgb8 : gvsp::kPixelMono8;
    if (format.imageSize() > kMaxFrameBytes) {
        format.width = static_cast<std::uint32_t>(m_imageSize.width);
        format.height = static_cast<std::uint32_t>(m_imageSize.height);
    }
    return format;
}

AcquisitionSetup ReplayedCamera::acquisitionSetup() const
{
    AcquisitionSetup setup;
    setup.format = frameFormat();
    const std::optional<std::int64_t> pixelFormat = m_genicam->enumerationValue("PixelFormat");
    if (pixelFormat && *pixelFormat != gvsp::kPixelMono8 && *pixelFormat != gvsp::kPixelRgb8 && m_log) {
        char code[24];
        std::snprintf(code, sizeof code, "0x%08llX", static_cast<unsigned long long>(*pixelFormat));
        m_log("camera " + m_camera.group + ": pixel format " + code + " is not served; frames are Mono8");
    }

    const std::string mode = m_genicam->enumerationEntry("AcquisitionMode").value_or("Continuous");
    if (mode == "SingleFrame")
        setup.mode = AcquisitionMode::SingleFrame;
    else if (mode == "MultiFrame")
        setup.mode = AcquisitionMode::MultiFrame;
    setup.frameCount = static_cast<std::uint32_t>(std::clamp<std::int64_t>(
        m_genicam->integer("AcquisitionFrameCount").value_or(1), 1, 0xFFFF));

    const bool triggered = m_genicam->enumerationEntry("TriggerMode").value_or("Off") == "On";
    const bool software = m_genicam->enumerationEntry("TriggerSource").value_or("Software") == "Software";
    setup.softwareTriggered = triggered && software;
    setup.externallyTriggered = triggered && !software;

    std::optional<double> rate;
    if (m_genicam->boolean("AcquisitionFrameRateEnable").value_or(false))
        rate = m_genicam->floating("AcquisitionFrameRate");
    if (!rate)
        rate = m_genicam->floating("ResultingFrameRate");
    if (!rate)
        rate = m_genicam->floating("AcquisitionFrameRate");
    setup.framesPerSecond = rate && std::isfinite(*rate) ? std::clamp(*rate, 0.1, 1000.0) : 10.0;
    setup.framesPerSecond = std::min(setup.framesPerSecond, linkFrameRate());
    return setup;
}

std::unique_ptr<FrameSource> ReplayedCamera::createFrameSource() const
{
    return std::make_unique<JpegFrameSource>(m_images);
}

double ReplayedCamera::linkFrameRate() const
{
    const auto wire = std::chrono::duration<double>(
        frameWireTime(frameFormat().imageSize(), m_transport.packetSize, m_transport.packetGap, m_transport.link));
    return wire.count() > 0 ? 1.0 / wire.count() : 1000.0;
}

void ReplayedCamera::updateResultingFrameRate()
{
    // A rate the device computes (no register of its own) is left as it is.
    if (m_collectedFrameRate && std::isfinite(*m_collectedFrameRate))
        m_genicam->setFloating("ResultingFrameRate", std::min(*m_collectedFrameRate, linkFrameRate()));
}

void ReplayedCamera::transportChanged(const TransportSettings& settings)
{
    m_transport = settings;
}

std::vector<BootstrapSetting> ReplayedCamera::initialBootstrapSettings() const
{
    // Client-set transport settings start as the collection first read them;
    // addresses, ports and control stay those of the live transport.
    std::vector<BootstrapSetting> settings;
    for (const std::uint32_t address :
         {gvcp::reg::kHeartbeatTimeout, gvcp::reg::kStreamPacketSize, gvcp::reg::kStreamPacketDelay}) {
        if (!m_image->knows(address, 4))
            continue;
        std::uint8_t bytes[4];
        m_image->read(address, bytes, sizeof bytes);
        settings.push_back({address, readBig32(bytes)});
    }
    return settings;
}

void ReplayedCamera::controlChanged(bool controlled)
{
    if (!controlled) {
        m_hold.release();
        return;
    }
    std::string error;
    // Serve anyway: only the tool's deletion guard is lost.
    if (!m_hold.acquire(m_camera.registerFile, error) && m_log)
        m_log("camera " + m_camera.group + ": " + error + "; the tool can delete it while in use");
}

} // namespace quorvex::sim
