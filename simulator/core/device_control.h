#pragma once
// The control channel of one device: parses GVCP commands, answers them
// from the bootstrap block, the GenICam description and the device model,
// and keeps the control privilege. It owns no socket and no thread, so
// tests and the fuzzer drive it directly; callers serialise access.

#include "bootstrap_registers.h"
#include "control_privilege.h"
#include "device_model.h"
#include "peer.h"
#include "stream_actions.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace quorvex::sim {

class DeviceControl final {
public:
    // Where the GenICam description is served; far above any register a
    // device description is likely to use.
    static constexpr std::uint32_t kGenicamAddress = 0xFF000000;

    DeviceControl(std::unique_ptr<DeviceModel> model, std::uint32_t ipAddress);

    const DeviceModel& model() const { return *m_model; }
    const DeviceIdentity& identity() const { return m_model->identity(); }
    std::uint32_t ipAddress() const { return m_ipAddress; }
    std::string xmlUrl() const;
    void setStreamSourcePort(std::uint16_t port);
    // The device's emulated link: its speed register and the rate the model reports.
    void setLink(LinkSpeed link);

    // Handles one datagram sent to the device's own address. reply is
    // cleared and filled with the answer, or left empty for none.
    void handle(ByteView datagram, const Peer& sender, Clock::time_point now, std::vector<std::uint8_t>& reply,
                StreamActions& actions);

    // Answers a discovery command seen on the shared broadcast socket.
    // Returns false (and leaves reply empty) for anything else; reply is
    // also left empty when the model stays silent.
    bool handleBroadcast(ByteView datagram, std::vector<std::uint8_t>& reply) const;

    // Drops control whose heartbeat has lapsed.
    void tick(Clock::time_point now, StreamActions& actions);
    std::optional<Clock::time_point> nextDeadline() const { return m_privilege.deadline(); }

    bool isStreaming() const { return m_streaming; }
    const ControlPrivilege& privilege() const { return m_privilege; }

private:
    struct Command;

    void handleDiscovery(const Command& command, std::vector<std::uint8_t>& reply) const;
    void handleReadRegisters(const Command& command, std::vector<std::uint8_t>& reply);
    void handleWriteRegisters(const Command& command, Clock::time_point now, std::vector<std::uint8_t>& reply,
                              StreamActions& actions);
    void handleReadMemory(const Command& command, std::vector<std::uint8_t>& reply);
    void handleWriteMemory(const Command& command, Clock::time_point now, std::vector<std::uint8_t>& reply,
                           StreamActions& actions);
    void handlePacketResend(const Command& command, StreamActions& actions) const;

    gvcp::Status readMemory(std::uint32_t address, MutableByteView out);
    gvcp::Status writeMemory(std::uint32_t address, ByteView data, Clock::time_point now, StreamActions& actions);
    gvcp::Status writeBootstrap(std::uint32_t address, ByteView data, Clock::time_point now, StreamActions& actions);
    gvcp::Status writeBootstrapRegister(std::uint32_t address, std::uint32_t value, Clock::time_point now,
                                        StreamActions& actions);

    // Tells the model when control starts or ends.
    void reportControl();
    StreamTarget streamTarget() const;
    void reportTransport();
    void updateStreaming(StreamActions& actions, bool restart = false);

    std::unique_ptr<DeviceModel> m_model;
    std::uint32_t m_ipAddress;
    std::uint32_t m_xmlSize;
    BootstrapRegisters m_bootstrap;
    ControlPrivilege m_privilege;
    bool m_acquisitionRequested = false;
    bool m_streaming = false;
    bool m_reportedControl = false;
    Peer m_sender;
    LinkSpeed m_link;
};

} // namespace quorvex::sim
