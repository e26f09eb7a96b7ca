#pragma once
// The built-in demo code reader: a device model over the demo feature
// catalogue, with user sets, acquisition commands and coded frames.

#include "core/device_model.h"
#include "feature_registers.h"
#include "feature_table.h"

#include <array>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace quorvex::sim {

class DemoCodeReader final : public DeviceModel {
public:
    explicit DemoCodeReader(DeviceIdentity identity);

    // Identity of the demo device number index (0-based): its own serial
    // number, MAC address and user-defined name.
    static DeviceIdentity demoIdentity(unsigned index);

    const DeviceIdentity& identity() const override { return m_identity; }
    std::string genicamFileName() const override;
    std::string_view genicamXml() const override { return m_xml; }
    gvcp::Status readMemory(std::uint32_t address, MutableByteView out) override;
    void readCommandServed() override;
    gvcp::Status writeMemory(std::uint32_t address, ByteView data, DeviceCommands& commands) override;
    AcquisitionSetup acquisitionSetup() const override;
    void setAcquisitionActive(bool active) override { m_acquisitionActive = active; }
    std::unique_ptr<FrameSource> createFrameSource() const override;
    void transportChanged(const TransportSettings& settings) override;

    const FeatureTable& features() const { return *m_table; }
    const FeatureRegisters& registers() const { return m_registers; }

private:
    void execute(const FeatureDefinition& command, DeviceCommands& commands);
    void applyFactorySettings();
    void updateDerivedValues();
    bool isImageFormatFeature(const std::string& name) const;

    DeviceIdentity m_identity;
    std::shared_ptr<const FeatureTable> m_table;
    FeatureRegisters m_registers;
    std::string m_xml;
    std::array<std::optional<FeatureRegisters::Snapshot>, 3> m_userSets;
    bool m_acquisitionActive = false;
    TransportSettings m_transport;
    std::chrono::steady_clock::time_point m_poweredUp;
};

} // namespace quorvex::sim
