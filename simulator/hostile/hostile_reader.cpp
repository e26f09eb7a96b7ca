#include "hostile_reader.h"

#include "core/device_control.h"
#include "hostile_zip.h"

#include <algorithm>
#include <atomic>
#include <cctype>
#include <cstdio>
#include <cstring>

namespace quorvex::sim {

namespace {

std::atomic<bool> g_vanishNow{false};

std::string modelNameFor(HostileKind kind, const std::string& plainName)
{
    switch (kind) {
    case HostileKind::UnterminatedName: {
        // Exactly the field's 32 bytes, so the next field follows directly.
        std::string name = plainName + "-UNTERMINATED-";
        name.resize(32, 'X');
        return name;
    }
    case HostileKind::NonUtf8Name:
        return plainName + "-\xC4\xD6\xDC"; // Latin-1 umlauts: no valid UTF-8
    case HostileKind::FormatName:
        return plainName + "-%1-%2-%s-%n";
    default:
        return plainName;
    }
}

} // namespace

DeviceIdentity HostileReader::hostileIdentity(const HostileFault& fault, unsigned number, unsigned modelIndex)
{
    DeviceIdentity identity = DemoCodeReader::demoIdentity(modelIndex);
    identity.modelName = modelNameFor(fault.kind, identity.modelName);
    identity.unterminatedTexts = fault.kind == HostileKind::UnterminatedName;
    identity.manufacturerInfo = "Simulated hostile code reader (" + hostileKindName(fault.kind) + ")";
    char serial[16];
    std::snprintf(serial, sizeof serial, "QH%08X", 0x66A10000u + number * 0x101u);
    identity.serialNumber = serial;
    identity.userDefinedName = "Hostile" + std::to_string(number + 1);
    // Locally administered, and apart from the demo readers' 02:51:56:58.
    identity.mac = {0x02, 0x51, 0x56, 0x48, static_cast<std::uint8_t>(number >> 8), static_cast<std::uint8_t>(number)};
    return identity;
}

void HostileReader::vanishAll()
{
    g_vanishNow = true;
}

HostileReader::HostileReader(const HostileFault& fault, unsigned number, unsigned modelIndex)
    : m_fault(fault),
      m_identity(hostileIdentity(fault, number, modelIndex)),
      m_reader([&] {
          DeviceIdentity plain = m_identity;
          plain.modelName = DemoCodeReader::demoIdentity(modelIndex).modelName;
          return plain;
      }())
{
    const std::string memberName = m_reader.genicamFileName(); // "<model>.xml"
    if (fault.kind == HostileKind::MalformedZip)
        m_zip = malformedZip(memberName, std::string(m_reader.genicamXml()));
    else if (fault.kind == HostileKind::ZipBomb)
        m_zip = zipBomb(memberName);
}

std::string HostileReader::genicamFileName() const
{
    std::string name = m_reader.genicamFileName();
    if (!m_zip.empty())
        name.replace(name.size() - 4, 4, ".zip");
    return name;
}

std::string_view HostileReader::genicamXml() const
{
    return m_zip.empty() ? m_reader.genicamXml() : std::string_view(m_zip);
}

std::string HostileReader::genicamUrl() const
{
    char url[600];
    if (m_fault.kind == HostileKind::OversizedXml)
        std::snprintf(url, sizeof url, "Local:%s;%X;%X", genicamFileName().c_str(), kHugeXmlAddress, kHugeXmlSize);
    else if (m_fault.kind == HostileKind::FileUrl)
        std::snprintf(url, sizeof url, "File://%s;0;10000000", m_fault.filePath.c_str());
    else
        return {};
    return url;
}

bool HostileReader::answers(std::uint16_t commandCode, std::uint16_t requestId, ByteView payload)
{
    if (m_fault.kind == HostileKind::SlowXml)
        return answersSlowly(commandCode, requestId, payload);
    if (m_fault.kind != HostileKind::Vanish)
        return true;
    if (commandCode == gvcp::command::kReadReg || commandCode == gvcp::command::kReadMem)
        ++m_readsSeen;
    return m_readsSeen < m_fault.vanishAfterReads && !g_vanishNow;
}

bool HostileReader::answersSlowly(std::uint16_t commandCode, std::uint16_t requestId, ByteView payload)
{
    if (commandCode != gvcp::command::kReadMem || payload.size < 4)
        return true;
    const std::uint32_t address = readBig32(payload.data);
    const std::uint64_t end = std::uint64_t{DeviceControl::kGenicamAddress} + genicamXml().size();
    if (address < DeviceControl::kGenicamAddress || address >= end)
        return true;
    // A client resends a command it got no answer to under the same id.
    if (requestId != m_slowRequestId || m_slowAttempts == 0) {
        m_slowRequestId = requestId;
        m_slowAttempts = 0;
    }
    if (++m_slowAttempts < kSlowAnswerAttempt)
        return false;
    m_slowAttempts = 0;
    return true;
}

gvcp::Status HostileReader::readMemory(std::uint32_t address, MutableByteView out)
{
    const std::uint64_t end = std::uint64_t{address} + out.size;
    if (m_fault.kind != HostileKind::OversizedXml || address < kHugeXmlAddress ||
        end > std::uint64_t{kHugeXmlAddress} + kHugeXmlSize)
        return m_reader.readMemory(address, out);
    // The real description, then blanks up to the declared size: well-formed
    // XML that only a size limit stops.
    const std::string_view xml = m_reader.genicamXml();
    const std::size_t offset = address - kHugeXmlAddress;
    const std::size_t available = offset < xml.size() ? std::min(out.size, xml.size() - offset) : 0;
    std::memcpy(out.data, xml.data() + offset, available);
    std::memset(out.data + available, ' ', out.size - available);
    return gvcp::status::kSuccess;
}

} // namespace quorvex::sim
