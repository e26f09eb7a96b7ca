#include "device_control.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace quorvex::sim {

namespace {

std::uint32_t roundUpTo4(std::uint32_t size) { return (size + 3u) & ~3u; }

void startAck(std::vector<std::uint8_t>& reply, gvcp::Status status, std::uint16_t commandCode, std::uint16_t requestId)
{
    reply.clear();
    appendBig16(reply, status);
    appendBig16(reply, static_cast<std::uint16_t>(commandCode + 1));
    appendBig16(reply, 0);
    appendBig16(reply, requestId);
}

void finishAck(std::vector<std::uint8_t>& reply)
{
    writeBig16(&reply[4], static_cast<std::uint16_t>(reply.size() - gvcp::kHeaderSize));
}

void errorAck(std::vector<std::uint8_t>& reply, gvcp::Status status, std::uint16_t commandCode, std::uint16_t requestId)
{
    startAck(reply, status, commandCode, requestId);
}

std::uint64_t timestampTicks(Clock::time_point now)
{
    return static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::nanoseconds>(now.time_since_epoch()).count());
}

} // namespace

struct DeviceControl::Command final {
    std::uint8_t flags = 0;
    std::uint16_t code = 0;
    std::uint16_t requestId = 0;
    ByteView payload;
    Peer sender;

    bool ackRequired() const { return (flags & gvcp::flag::kAckRequired) != 0; }

    // Splits a datagram; false when it is not a GVCP command at all.
    static bool parse(ByteView datagram, Command& command, bool& truncated)
    {
        truncated = false;
        if (datagram.size < gvcp::kHeaderSize || datagram.data[0] != gvcp::kCommandKey)
            return false;
        command.flags = datagram.data[1];
        command.code = readBig16(datagram.data + 2);
        const std::uint16_t length = readBig16(datagram.data + 4);
        command.requestId = readBig16(datagram.data + 6);
        // Bytes beyond the declared length are ignored; fewer are an error.
        truncated = length > datagram.size - gvcp::kHeaderSize;
        command.payload = datagram.subview(gvcp::kHeaderSize, length);
        return true;
    }
};

DeviceControl::DeviceControl(std::unique_ptr<DeviceModel> model, std::uint32_t ipAddress)
    : m_model(std::move(model)),
      m_ipAddress(ipAddress),
      m_xmlSize(static_cast<std::uint32_t>(m_model->genicamXml().size())),
      m_bootstrap(m_model->identity(), ipAddress, xmlUrl())
{
    using namespace gvcp::reg;
    for (const BootstrapSetting& setting : m_model->initialBootstrapSettings()) {
        if (setting.address == kHeartbeatTimeout) {
            m_privilege.setHeartbeatTimeoutMs(setting.value);
            m_bootstrap.setValue(kHeartbeatTimeout, m_privilege.heartbeatTimeoutMs());
        } else if (setting.address == kStreamPacketSize) {
            const std::uint32_t size = setting.value & gvcp::packetsize::kValueMask;
            // The size and 'do not fragment', as a client left them.
            if (size >= gvcp::packetsize::kMinimum && size <= gvcp::packetsize::kMaximum)
                m_bootstrap.setValue(kStreamPacketSize, setting.value & (gvcp::packetsize::kDoNotFragment |
                                                                         gvcp::packetsize::kValueMask));
        } else if (setting.address == kStreamPacketDelay) {
            m_bootstrap.setValue(kStreamPacketDelay, setting.value);
        }
    }
    setLink(m_link);
}

std::string DeviceControl::xmlUrl() const
{
    if (std::string chosen = m_model->genicamUrl(); !chosen.empty())
        return chosen;
    char url[160];
    std::snprintf(url, sizeof url, "Local:%s;%X;%X", m_model->genicamFileName().c_str(), kGenicamAddress,
                  static_cast<unsigned>(m_model->genicamXml().size()));
    return url;
}

void DeviceControl::setStreamSourcePort(std::uint16_t port)
{
    m_bootstrap.setValue(gvcp::reg::kStreamSourcePort, port);
}

void DeviceControl::setLink(LinkSpeed link)
{
    m_link = link;
    // An unlimited link reports the fastest a register can say.
    m_bootstrap.setValue(gvcp::reg::kLinkSpeed, link.unlimited() ? 0xFFFFFFFF : link.megabits());
    reportTransport();
}

void DeviceControl::reportTransport()
{
    const StreamTarget target = streamTarget();
    TransportSettings settings;
    settings.link = m_link;
    settings.packetSize = target.packetSize;
    settings.packetGap = target.packetGap();
    m_model->transportChanged(settings);
}

void DeviceControl::handle(ByteView datagram, const Peer& sender, Clock::time_point now,
                           std::vector<std::uint8_t>& reply, StreamActions& actions)
{
    reply.clear();
    Command command;
    bool truncated = false;
    if (!Command::parse(datagram, command, truncated))
        return;
    if (!m_model->answers(command.code, command.requestId, command.payload))
        return;
    command.sender = sender;
    m_sender = sender;

    if (truncated) {
        if (command.ackRequired())
            errorAck(reply, gvcp::status::kInvalidHeader, command.code, command.requestId);
        return;
    }

    m_privilege.noteActivity(sender, now);

    switch (command.code) {
    case gvcp::command::kDiscovery:
        handleDiscovery(command, reply);
        return; // discovery is answered even without the ack flag
    case gvcp::command::kReadReg:
        m_model->readCommandServed();
        handleReadRegisters(command, reply);
        break;
    case gvcp::command::kWriteReg:
        handleWriteRegisters(command, now, reply, actions);
        break;
    case gvcp::command::kReadMem:
        m_model->readCommandServed();
        handleReadMemory(command, reply);
        break;
    case gvcp::command::kWriteMem:
        handleWriteMemory(command, now, reply, actions);
        break;
    case gvcp::command::kPacketResend:
        handlePacketResend(command, actions);
        return; // answered on the stream channel, never here
    default:
        errorAck(reply, gvcp::status::kNotImplemented, command.code, command.requestId);
        break;
    }
    if (!command.ackRequired())
        reply.clear();
}

bool DeviceControl::handleBroadcast(ByteView datagram, std::vector<std::uint8_t>& reply) const
{
    reply.clear();
    Command command;
    bool truncated = false;
    if (!Command::parse(datagram, command, truncated) || truncated || command.code != gvcp::command::kDiscovery)
        return false;
    if (!m_model->answers(command.code, command.requestId, command.payload))
        return true; // seen, but the device is silent
    handleDiscovery(command, reply);
    return true;
}

void DeviceControl::handleDiscovery(const Command& command, std::vector<std::uint8_t>& reply) const
{
    startAck(reply, gvcp::status::kSuccess, command.code, command.requestId);
    const ByteView data = m_bootstrap.discoveryData();
    reply.insert(reply.end(), data.data, data.data + data.size);
    finishAck(reply);
}

void DeviceControl::handleReadRegisters(const Command& command, std::vector<std::uint8_t>& reply)
{
    const ByteView& payload = command.payload;
    if (payload.size == 0 || payload.size % 4 != 0)
        return errorAck(reply, gvcp::status::kInvalidParameter, command.code, command.requestId);

    startAck(reply, gvcp::status::kSuccess, command.code, command.requestId);
    for (std::size_t offset = 0; offset < payload.size; offset += 4) {
        const std::uint32_t address = readBig32(payload.data + offset);
        gvcp::Status status = gvcp::status::kSuccess;
        std::uint8_t value[4] = {};
        if (address % 4 != 0)
            status = gvcp::status::kBadAlignment;
        else if (m_privilege.deniesReadsFrom(command.sender) && address != gvcp::reg::kControlChannelPrivilege)
            status = gvcp::status::kAccessDenied;
        else
            status = readMemory(address, {value, sizeof value});
        if (status != gvcp::status::kSuccess) {
            // The registers read before the failing one are still returned.
            writeBig16(&reply[0], status);
            break;
        }
        reply.insert(reply.end(), value, value + 4);
    }
    finishAck(reply);
}

void DeviceControl::handleWriteRegisters(const Command& command, Clock::time_point now,
                                         std::vector<std::uint8_t>& reply, StreamActions& actions)
{
    const ByteView& payload = command.payload;
    if (payload.size == 0 || payload.size % 8 != 0)
        return errorAck(reply, gvcp::status::kInvalidParameter, command.code, command.requestId);

    std::uint16_t written = 0;
    gvcp::Status status = gvcp::status::kSuccess;
    for (std::size_t offset = 0; offset < payload.size; offset += 8) {
        const std::uint32_t address = readBig32(payload.data + offset);
        const ByteView value = payload.subview(offset + 4, 4);
        if (address % 4 != 0)
            status = gvcp::status::kBadAlignment;
        else if (address == gvcp::reg::kControlChannelPrivilege)
            status = writeBootstrapRegister(address, readBig32(value.data), now, actions);
        else if (m_privilege.deniesWritesFrom(command.sender))
            status = gvcp::status::kAccessDenied;
        else
            status = writeMemory(address, value, now, actions);
        if (status != gvcp::status::kSuccess)
            break;
        ++written;
    }
    startAck(reply, status, command.code, command.requestId);
    appendBig16(reply, 0);
    appendBig16(reply, written);
    finishAck(reply);
}

void DeviceControl::handleReadMemory(const Command& command, std::vector<std::uint8_t>& reply)
{
    if (command.payload.size != 8)
        return errorAck(reply, gvcp::status::kInvalidParameter, command.code, command.requestId);
    const std::uint32_t address = readBig32(command.payload.data);
    // Clients differ on whether the count is 16 or 32 bits wide; both fit here.
    const std::uint32_t count = readBig32(command.payload.data + 4);
    if (count == 0 || count > gvcp::kMaxMemoryAccess)
        return errorAck(reply, gvcp::status::kInvalidParameter, command.code, command.requestId);
    if (m_privilege.deniesReadsFrom(command.sender))
        return errorAck(reply, gvcp::status::kAccessDenied, command.code, command.requestId);

    startAck(reply, gvcp::status::kSuccess, command.code, command.requestId);
    appendBig32(reply, address);
    const std::size_t dataOffset = reply.size();
    reply.resize(dataOffset + count);
    const gvcp::Status status = readMemory(address, {reply.data() + dataOffset, count});
    if (status != gvcp::status::kSuccess)
        return errorAck(reply, status, command.code, command.requestId);
    finishAck(reply);
}

void DeviceControl::handleWriteMemory(const Command& command, Clock::time_point now,
                                      std::vector<std::uint8_t>& reply, StreamActions& actions)
{
    const ByteView& payload = command.payload;
    if (payload.size <= 4 || payload.size - 4 > gvcp::kMaxMemoryAccess)
        return errorAck(reply, gvcp::status::kInvalidParameter, command.code, command.requestId);
    const std::uint32_t address = readBig32(payload.data);
    const ByteView data = payload.subview(4, payload.size - 4);

    gvcp::Status status = gvcp::status::kSuccess;
    if (address == gvcp::reg::kControlChannelPrivilege && data.size == 4)
        status = writeBootstrapRegister(address, readBig32(data.data), now, actions);
    else if (m_privilege.deniesWritesFrom(command.sender))
        status = gvcp::status::kAccessDenied;
    else
        status = writeMemory(address, data, now, actions);

    startAck(reply, status, command.code, command.requestId);
    if (status == gvcp::status::kSuccess)
        appendBig32(reply, address);
    finishAck(reply);
}

void DeviceControl::handlePacketResend(const Command& command, StreamActions& actions) const
{
    // Standard ids only: channel and block id, then the first and last packet.
    if (command.payload.size != 12 || !m_streaming)
        return;
    const std::uint8_t* words = command.payload.data;
    ResendRequest request;
    request.blockId = readBig16(words + 2);
    request.firstPacketId = readBig32(words + 4) & 0x00FFFFFF;
    request.lastPacketId = readBig32(words + 8) & 0x00FFFFFF;
    if (readBig16(words) != 0 || request.firstPacketId > request.lastPacketId || actions.resends.size() >= 64)
        return;
    actions.resends.push_back(request);
}

gvcp::Status DeviceControl::readMemory(std::uint32_t address, MutableByteView out)
{
    const std::uint64_t end = std::uint64_t{address} + out.size;
    if (BootstrapRegisters::covers(address, out.size)) {
        m_bootstrap.read(address, out);
        return gvcp::status::kSuccess;
    }
    if (address >= kGenicamAddress && end <= std::uint64_t{kGenicamAddress} + roundUpTo4(m_xmlSize)) {
        // The last read of the description is rounded up to whole words.
        const std::string_view xml = m_model->genicamXml();
        const std::size_t offset = address - kGenicamAddress;
        const std::size_t available = offset < xml.size() ? std::min(out.size, xml.size() - offset) : 0;
        std::memcpy(out.data, xml.data() + offset, available);
        std::memset(out.data + available, 0, out.size - available);
        return gvcp::status::kSuccess;
    }
    if (address < gvcp::reg::kBootstrapEnd || end > kGenicamAddress)
        return gvcp::status::kInvalidAddress;
    return m_model->readMemory(address, out);
}

gvcp::Status DeviceControl::writeMemory(std::uint32_t address, ByteView data, Clock::time_point now,
                                        StreamActions& actions)
{
    const std::uint64_t end = std::uint64_t{address} + data.size;
    if (BootstrapRegisters::covers(address, data.size))
        return writeBootstrap(address, data, now, actions);
    if (address >= kGenicamAddress && end <= std::uint64_t{kGenicamAddress} + roundUpTo4(m_xmlSize))
        return gvcp::status::kWriteProtect;
    if (address < gvcp::reg::kBootstrapEnd || end > kGenicamAddress)
        return gvcp::status::kInvalidAddress;

    DeviceCommands commands;
    const gvcp::Status status = m_model->writeMemory(address, data, commands);
    if (status != gvcp::status::kSuccess)
        return status;
    if (commands.acquisitionStop) {
        m_acquisitionRequested = false;
        updateStreaming(actions);
    }
    if (commands.acquisitionStart) {
        m_acquisitionRequested = true;
        updateStreaming(actions, true);
    }
    if (m_streaming)
        actions.softwareTriggers += commands.softwareTriggers;
    return gvcp::status::kSuccess;
}

gvcp::Status DeviceControl::writeBootstrap(std::uint32_t address, ByteView data, Clock::time_point now,
                                           StreamActions& actions)
{
    const gvcp::Status status = BootstrapRegisters::checkWritable(address, data.size);
    if (status != gvcp::status::kSuccess)
        return status;
    // Word registers go through their own rules; the user name is plain bytes.
    if (address % 4 == 0 && data.size == 4)
        return writeBootstrapRegister(address, readBig32(data.data), now, actions);
    for (std::size_t offset = 0; offset < data.size; ++offset) {
        const std::uint32_t byte = address + static_cast<std::uint32_t>(offset);
        if (byte < gvcp::reg::kUserDefinedName || byte >= gvcp::reg::kUserDefinedName + 16)
            return gvcp::status::kInvalidParameter;
    }
    m_bootstrap.write(address, data);
    return gvcp::status::kSuccess;
}

gvcp::Status DeviceControl::writeBootstrapRegister(std::uint32_t address, std::uint32_t value,
                                                   Clock::time_point now, StreamActions& actions)
{
    using namespace gvcp::reg;
    switch (address) {
    case kControlChannelPrivilege: {
        const gvcp::Status status = m_privilege.writeRegister(m_sender, value, now);
        if (status == gvcp::status::kSuccess) {
            m_bootstrap.setValue(address, m_privilege.registerValue());
            if (!m_privilege.isHeld()) {
                m_acquisitionRequested = false;
                m_bootstrap.setValue(kStreamPort, 0);
            }
            updateStreaming(actions);
            reportControl();
        }
        return status;
    }
    case kHeartbeatTimeout:
        m_privilege.setHeartbeatTimeoutMs(value);
        m_bootstrap.setValue(address, m_privilege.heartbeatTimeoutMs());
        return gvcp::status::kSuccess;
    case kTimestampControl:
        if (value & 0x2) {
            const std::uint64_t ticks = timestampTicks(now);
            m_bootstrap.setValue(kTimestampLatchedHigh, static_cast<std::uint32_t>(ticks >> 32));
            m_bootstrap.setValue(kTimestampLatchedLow, static_cast<std::uint32_t>(ticks));
        }
        return gvcp::status::kSuccess; // write-only: nothing is kept
    case kStreamPort:
        m_bootstrap.setValue(address, value & 0xFFFF);
        updateStreaming(actions);
        return gvcp::status::kSuccess;
    case kStreamPacketSize: {
        const std::uint32_t size = value & gvcp::packetsize::kValueMask;
        if (size < gvcp::packetsize::kMinimum || size > gvcp::packetsize::kMaximum)
            return gvcp::status::kInvalidParameter;
        const std::uint32_t current = m_bootstrap.value(address) & gvcp::packetsize::kValueMask;
        if (m_streaming && size != current)
            return gvcp::status::kBusy;
        // Firing the test packet is a one-shot request, never stored; pixel
        // data is single bytes, so there is no byte order to choose.
        m_bootstrap.setValue(address, value & (gvcp::packetsize::kDoNotFragment | gvcp::packetsize::kValueMask));
        reportTransport();
        if ((value & gvcp::packetsize::kFireTestPacket) != 0) {
            const StreamTarget target = streamTarget();
            if (target.destination.port != 0 && isLoopback(target.destination.address))
                actions.testPacket = target;
        }
        return gvcp::status::kSuccess;
    }
    case kStreamPacketDelay:
        m_bootstrap.setValue(address, value);
        reportTransport();
        return gvcp::status::kSuccess;
    case kGvcpConfiguration:
        // Heartbeat disable and pending acks are not offered, so they stay off.
        m_bootstrap.setValue(address, 0);
        return gvcp::status::kSuccess;
    case kStreamDestination:
        // Streams never leave the machine.
        if (value != 0 && !isLoopback(value))
            return gvcp::status::kInvalidParameter;
        if (m_streaming && value != m_bootstrap.value(address))
            return gvcp::status::kBusy;
        m_bootstrap.setValue(address, value);
        return gvcp::status::kSuccess;
    default:
        m_bootstrap.setValue(address, value);
        return gvcp::status::kSuccess;
    }
}

void DeviceControl::tick(Clock::time_point now, StreamActions& actions)
{
    if (!m_privilege.expire(now))
        return;
    m_bootstrap.setValue(gvcp::reg::kControlChannelPrivilege, 0);
    m_bootstrap.setValue(gvcp::reg::kStreamPort, 0);
    m_acquisitionRequested = false;
    updateStreaming(actions);
    reportControl();
}

void DeviceControl::reportControl()
{
    const bool controlled = m_privilege.isHeld();
    if (controlled == m_reportedControl)
        return;
    m_reportedControl = controlled;
    m_model->controlChanged(controlled);
}

StreamTarget DeviceControl::streamTarget() const
{
    StreamTarget target;
    target.destination.address = m_bootstrap.value(gvcp::reg::kStreamDestination);
    target.destination.port = static_cast<std::uint16_t>(m_bootstrap.value(gvcp::reg::kStreamPort));
    target.packetSize = m_bootstrap.value(gvcp::reg::kStreamPacketSize) & gvcp::packetsize::kValueMask;
    target.packetDelayTicks = m_bootstrap.value(gvcp::reg::kStreamPacketDelay);
    target.doNotFragment = (m_bootstrap.value(gvcp::reg::kStreamPacketSize) & gvcp::packetsize::kDoNotFragment) != 0;
    return target;
}

void DeviceControl::updateStreaming(StreamActions& actions, bool restart)
{
    const StreamTarget target = streamTarget();
    const bool wanted = m_acquisitionRequested && m_privilege.isHeld() && target.destination.port != 0 &&
                        isLoopback(target.destination.address);
    if (wanted == m_streaming && !(wanted && restart))
        return;
    if (m_streaming)
        actions.stop = true;
    m_streaming = wanted;
    m_model->setAcquisitionActive(wanted);
    if (wanted)
        actions.start = StreamStart{m_model->acquisitionSetup(), target};
    else
        actions.start.reset();
}

} // namespace quorvex::sim
