#include "demo_code_reader.h"

#include "code_frame_source.h"
#include "demo_features.h"
#include "genicam_writer.h"

#include <algorithm>
#include <cctype>
#include <cstdio>

namespace quorvex::sim {

namespace {

std::shared_ptr<const FeatureTable> sharedCatalogue()
{
    // Built once: every demo device describes the same features.
    static const std::shared_ptr<const FeatureTable> table =
        std::make_shared<const FeatureTable>(demo::buildCodeReaderFeatures());
    return table;
}

// Model names of the demo family; each contains the code-reader marker "ID".
constexpr const char* kModels[] = {"QVX-ID2040M", "QVX-ID3160C", "QVX-ID5120M", "QVX-ID7200X"};
constexpr const char* kVersions[] = {"V3.2.1.R 240315", "V3.4.0.R 240902", "V2.9.7.R 231120", "V4.0.2.R 250110"};

std::uint32_t hashText(const std::string& text)
{
    std::uint32_t hash = 2166136261u;
    for (const unsigned char c : text)
        hash = (hash ^ c) * 16777619u;
    return hash;
}

} // namespace

DeviceIdentity DemoCodeReader::demoIdentity(unsigned index)
{
    DeviceIdentity identity;
    identity.manufacturerName = "Quorvex Demo";
    identity.modelName = kModels[index % std::size(kModels)];
    identity.deviceVersion = kVersions[index % std::size(kVersions)];
    identity.manufacturerInfo = "Simulated code reader";
    char serial[16];
    std::snprintf(serial, sizeof serial, "QD%08X", 0x24A10000u + index * 0x101u);
    identity.serialNumber = serial;
    identity.userDefinedName = "DemoReader" + std::to_string(index + 1);
    // Locally administered unicast addresses, so they can never clash with real hardware.
    identity.mac = {0x02, 0x51, 0x56, 0x58, static_cast<std::uint8_t>(index >> 8), static_cast<std::uint8_t>(index)};
    return identity;
}

DemoCodeReader::DemoCodeReader(DeviceIdentity identity)
    : m_identity(std::move(identity)),
      m_table(sharedCatalogue()),
      m_registers(*m_table),
      m_poweredUp(std::chrono::steady_clock::now())
{
    GenicamHeader header;
    header.modelName = m_identity.modelName;
    header.vendorName = m_identity.manufacturerName;
    header.toolTip = "Demo code reader served by quorvex-simulator";
    header.productGuid = "5A1E2C44-7D0B-4C1E-9E62-3B8F10D2A701";
    header.versionGuid = "5A1E2C44-7D0B-4C1E-9E62-3B8F10D2A7" + std::to_string(10 + hashText(m_identity.deviceVersion) % 90);
    m_xml = writeGenicamXml(header, *m_table);
    applyFactorySettings();
}

std::string DemoCodeReader::genicamFileName() const
{
    std::string name = m_identity.modelName;
    std::replace_if(name.begin(), name.end(), [](unsigned char c) { return !std::isalnum(c); }, '_');
    return name + ".xml";
}

void DemoCodeReader::applyFactorySettings()
{
    m_registers.loadDefaults(true);
    m_registers.setString("DeviceFirmwareVersion", m_identity.deviceVersion);
    m_registers.setFloating("DeviceTemperature", 47.25, 1);
    updateDerivedValues();
}

void DemoCodeReader::updateDerivedValues()
{
    const std::int64_t width = m_registers.integer("Width");
    const std::int64_t height = m_registers.integer("Height");
    const bool colour = m_registers.integer("PixelFormat") == gvsp::kPixelRgb8;
    m_registers.setInteger("PayloadSize", width * height * (colour ? 3 : 1));
    m_registers.setInteger("PixelSize", colour ? 24 : 8);
    // Free running is limited by the exposure, or by the set rate when enabled.
    const double exposureLimit = std::min(1000.0, 1.0e6 / m_registers.floating("ExposureTime"));
    // ... and by the link: a frame cannot start before the last one left.
    const auto wire = std::chrono::duration<double>(
        frameWireTime(static_cast<std::size_t>(width * height * (colour ? 3 : 1)), m_transport.packetSize,
                      m_transport.packetGap, m_transport.link));
    const double linkLimit = wire.count() > 0 ? 1.0 / wire.count() : 1000.0;
    const double rate = std::min({exposureLimit, linkLimit,
                                  m_registers.integer("AcquisitionFrameRateEnable") != 0
                                      ? m_registers.floating("AcquisitionFrameRate")
                                      : 60.0});
    m_registers.setFloating("ResultingFrameRate", rate);
    const auto uptime = std::chrono::steady_clock::now() - m_poweredUp;
    m_registers.setInteger("DeviceUptime", std::chrono::duration_cast<std::chrono::seconds>(uptime).count());
}

bool DemoCodeReader::isImageFormatFeature(const std::string& name) const
{
    return name == "Width" || name == "Height" || name == "PixelFormat" || name == "OffsetX" || name == "OffsetY" ||
           name == "BinningHorizontal" || name == "BinningVertical";
}

gvcp::Status DemoCodeReader::readMemory(std::uint32_t address, MutableByteView out)
{
    if (!m_registers.covers(address, out.size))
        return gvcp::status::kInvalidAddress;
    updateDerivedValues();
    const gvcp::Status status = m_registers.read(address, out);
    if (status != gvcp::status::kSuccess)
        m_registers.setInteger("StatRefusedAccesses", (m_registers.integer("StatRefusedAccesses") + 1) & 0x7FFFFFFF);
    return status;
}

void DemoCodeReader::readCommandServed()
{
    m_registers.setInteger("StatRegisterReads", (m_registers.integer("StatRegisterReads") + 1) & 0x7FFFFFFF);
}

gvcp::Status DemoCodeReader::writeMemory(std::uint32_t address, ByteView data, DeviceCommands& commands)
{
    if (!m_registers.covers(address, data.size))
        return gvcp::status::kInvalidAddress;
    m_registers.setInteger("StatRegisterWrites", (m_registers.integer("StatRegisterWrites") + 1) & 0x7FFFFFFF);

    if (m_acquisitionActive) {
        // Image geometry is fixed while frames are on their way.
        for (const FeatureDefinition& definition : m_table->features()) {
            if (!isImageFormatFeature(definition.name))
                continue;
            const bool overlaps = address < definition.address + definition.length && definition.address < address + data.size;
            if (overlaps)
                return gvcp::status::kBusy;
        }
    }

    std::vector<const FeatureDefinition*> written;
    const gvcp::Status status = m_registers.write(address, data, written);
    if (status != gvcp::status::kSuccess) {
        m_registers.setInteger("StatRefusedAccesses", (m_registers.integer("StatRefusedAccesses") + 1) & 0x7FFFFFFF);
        return status;
    }
    for (const FeatureDefinition* definition : written)
        if (definition->type == FeatureType::Command)
            execute(*definition, commands);
    updateDerivedValues();
    return gvcp::status::kSuccess;
}

void DemoCodeReader::execute(const FeatureDefinition& command, DeviceCommands& commands)
{
    const std::string& name = command.name;
    if (name == "AcquisitionStart") {
        commands.acquisitionStart = true;
    } else if (name == "AcquisitionStop") {
        commands.acquisitionStop = true;
    } else if (name == "TriggerSoftware") {
        ++commands.softwareTriggers;
        m_registers.setInteger("StatFramesTriggered", (m_registers.integer("StatFramesTriggered") + 1) & 0x7FFFFFFF);
    } else if (name == "UserSetLoad") {
        const auto set = static_cast<std::size_t>(m_registers.integer("UserSetSelector"));
        if (set == 0 || set >= m_userSets.size() || !m_userSets[set])
            m_registers.loadDefaults();
        else
            m_registers.restore(*m_userSets[set]);
    } else if (name == "UserSetSave") {
        const auto set = static_cast<std::size_t>(m_registers.integer("UserSetSelector"));
        if (set > 0 && set < m_userSets.size())
            m_userSets[set] = m_registers.snapshot();
    } else if (name == "ResetReadCounters") {
        for (const char* counter : {"ReadCounter", "ReadSuccessCount", "ReadFailCount"})
            m_registers.setInteger(counter, 0);
    } else if (name == "StatReset") {
        for (const char* counter : {"StatRegisterReads", "StatRegisterWrites", "StatRefusedAccesses", "StatFramesTriggered"})
            m_registers.setInteger(counter, 0);
    } else if (name == "AutoFocusOnce") {
        m_registers.setInteger("FocusPosition", 520);
    } else if (name == "DeviceReset") {
        m_userSets = {};
        applyFactorySettings();
        commands.acquisitionStop = true;
    }
}

AcquisitionSetup DemoCodeReader::acquisitionSetup() const
{
    AcquisitionSetup setup;
    setup.format.width = static_cast<std::uint32_t>(m_registers.integer("Width"));
    setup.format.height = static_cast<std::uint32_t>(m_registers.integer("Height"));
    setup.format.pixelFormat = static_cast<std::uint32_t>(m_registers.integer("PixelFormat"));
    switch (m_registers.integer("AcquisitionMode")) {
    case demo::value::kAcquisitionSingleFrame: setup.mode = AcquisitionMode::SingleFrame; break;
    case demo::value::kAcquisitionMultiFrame: setup.mode = AcquisitionMode::MultiFrame; break;
    default: setup.mode = AcquisitionMode::Continuous; break;
    }
    setup.frameCount = static_cast<std::uint32_t>(m_registers.integer("AcquisitionFrameCount"));
    const bool triggered = m_registers.integer("TriggerMode") != 0;
    const bool software = m_registers.integer("TriggerSource") == demo::value::kTriggerSourceSoftware;
    setup.softwareTriggered = triggered && software;
    setup.externallyTriggered = triggered && !software;
    setup.framesPerSecond = m_registers.floating("ResultingFrameRate");
    return setup;
}

void DemoCodeReader::transportChanged(const TransportSettings& settings)
{
    m_transport = settings;
    updateDerivedValues();
}

std::unique_ptr<FrameSource> DemoCodeReader::createFrameSource() const
{
    return std::make_unique<CodeFrameSource>(m_identity.serialNumber, hashText(m_identity.serialNumber));
}

} // namespace quorvex::sim
