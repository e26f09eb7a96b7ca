#pragma once
// A demo code reader with one fault of a hostile device: a description
// that is malformed, huge, slow or elsewhere, a model name no tool should
// trust, or a device that falls silent mid-job. Apart from its fault it
// behaves as the demo reader whose model it takes, so a collection gets as
// far as the fault.

#include "core/device_model.h"
#include "demo/demo_code_reader.h"
#include "hostile_fault.h"

#include <cstdint>
#include <string>

namespace quorvex::sim {

class HostileReader final : public DeviceModel {
public:
    // Where the oversized description is served from, and its declared size.
    static constexpr std::uint32_t kHugeXmlAddress = 0x80000000;
    static constexpr std::uint32_t kHugeXmlSize = 256u << 20;
    // Tries a slow device lets pass before it answers a description read.
    static constexpr unsigned kSlowAnswerAttempt = 3;

    // number counts the hostile devices from 0 (serial, MAC and user name of
    // their own); modelIndex names the demo identity whose model it takes.
    HostileReader(const HostileFault& fault, unsigned number, unsigned modelIndex);

    // Identity of hostile device number, as a demo identity's model.
    static DeviceIdentity hostileIdentity(const HostileFault& fault, unsigned number, unsigned modelIndex);
    // Every device of kind Vanish falls silent from now on (SIGUSR1).
    static void vanishAll();

    const DeviceIdentity& identity() const override { return m_identity; }
    std::string genicamFileName() const override;
    std::string_view genicamXml() const override;
    std::string genicamUrl() const override;
    bool answers(std::uint16_t commandCode, std::uint16_t requestId, ByteView payload) override;

    gvcp::Status readMemory(std::uint32_t address, MutableByteView out) override;
    gvcp::Status writeMemory(std::uint32_t address, ByteView data, DeviceCommands& commands) override
    {
        return m_reader.writeMemory(address, data, commands);
    }
    void readCommandServed() override { m_reader.readCommandServed(); }
    AcquisitionSetup acquisitionSetup() const override { return m_reader.acquisitionSetup(); }
    void setAcquisitionActive(bool active) override { m_reader.setAcquisitionActive(active); }
    std::unique_ptr<FrameSource> createFrameSource() const override { return m_reader.createFrameSource(); }

private:
    bool answersSlowly(std::uint16_t commandCode, std::uint16_t requestId, ByteView payload);

    HostileFault m_fault;
    DeviceIdentity m_identity;
    // Describes the features with the plain model name, so the description
    // itself stays well-formed whatever the name fault.
    DemoCodeReader m_reader;
    std::string m_zip; // the served archive of the zip kinds
    std::uint32_t m_readsSeen = 0;
    std::uint16_t m_slowRequestId = 0;
    unsigned m_slowAttempts = 0;
};

} // namespace quorvex::sim
