#include "genicam_writer.h"

#include <cstdio>
#include <set>
#include <sstream>

namespace quorvex::sim {

namespace {

// Names the standard feature naming convention defines; the rest are ours.
const std::set<std::string>& standardNames()
{
    static const std::set<std::string> names{
        "Root", "DeviceControl", "DeviceVendorName", "DeviceModelName", "DeviceVersion", "DeviceFirmwareVersion",
        "DeviceSerialNumber", "DeviceManufacturerInfo", "DeviceUserID", "DeviceScanType", "DeviceTemperatureSelector",
        "DeviceTemperature", "DeviceReset", "DeviceLinkSpeed", "ImageFormatControl", "SensorWidth", "SensorHeight",
        "WidthMax", "HeightMax", "Width", "Height", "OffsetX", "OffsetY", "PixelFormat", "PixelSize", "ReverseX",
        "ReverseY", "BinningHorizontal", "BinningVertical", "TestPattern", "AcquisitionControl", "AcquisitionMode",
        "AcquisitionStart", "AcquisitionStop", "AcquisitionFrameCount", "AcquisitionBurstFrameCount",
        "AcquisitionFrameRate", "AcquisitionFrameRateEnable", "ResultingFrameRate", "TriggerSelector", "TriggerMode",
        "TriggerSource", "TriggerActivation", "TriggerDelay", "TriggerSoftware", "ExposureMode", "ExposureAuto",
        "ExposureTime", "AnalogControl", "GainAuto", "Gain", "BlackLevel", "Gamma", "GammaEnable",
        "DigitalIOControl", "LineSelector", "LineMode", "LineInverter", "LineStatus", "LineSource",
        "LineDebouncerTime", "LineStatusAll", "UserOutputSelector", "UserOutputValue", "UserSetControl",
        "UserSetSelector", "UserSetLoad", "UserSetSave", "UserSetDefault", "TransportLayerControl", "PayloadSize",
        "GevCurrentIPAddress", "GevCurrentSubnetMask", "GevCurrentDefaultGateway", "GevMACAddress",
        "GevPersistentIPAddress", "GevHeartbeatTimeout", "GevTimestampTickFrequency", "GevTimestampControlLatch",
        "GevTimestampValue", "GevCCP", "GevStreamChannelCount", "GevSCPHostPort", "GevSCPSPacketSize", "GevSCPD",
        "GevSCDA", "GevSCSP", "GevLinkSpeed", "GevSCPSFireTestPacket"};
    return names;
}

const char* nameSpace(const std::string& name)
{
    return standardNames().count(name) ? "Standard" : "Custom";
}

std::string escape(const std::string& text)
{
    std::string out;
    for (const char c : text) {
        switch (c) {
        case '&': out += "&amp;"; break;
        case '<': out += "&lt;"; break;
        case '>': out += "&gt;"; break;
        case '"': out += "&quot;"; break;
        default: out += c; break;
        }
    }
    return out;
}

const char* visibilityText(FeatureVisibility visibility)
{
    switch (visibility) {
    case FeatureVisibility::Beginner: return "Beginner";
    case FeatureVisibility::Expert: return "Expert";
    case FeatureVisibility::Guru: return "Guru";
    case FeatureVisibility::Invisible: return "Invisible";
    }
    return "Beginner";
}

const char* accessText(FeatureAccess access)
{
    switch (access) {
    case FeatureAccess::ReadOnly: return "RO";
    case FeatureAccess::ReadWrite: return "RW";
    case FeatureAccess::WriteOnly: return "WO";
    }
    return "RW";
}

std::string hex(std::uint32_t value)
{
    char text[16];
    std::snprintf(text, sizeof text, "0x%08X", value);
    return text;
}

std::string number(double value)
{
    char text[48];
    std::snprintf(text, sizeof text, "%.17g", value);
    return text;
}

class Writer final {
public:
    void write(const FeatureDefinition& definition)
    {
        switch (definition.type) {
        case FeatureType::Category: writeCategory(definition); break;
        case FeatureType::Integer: writeInteger(definition); break;
        case FeatureType::Float: writeFloat(definition); break;
        case FeatureType::Boolean: writeBoolean(definition); break;
        case FeatureType::String: writeString(definition); break;
        case FeatureType::Enumeration: writeEnumeration(definition); break;
        case FeatureType::Command: writeCommand(definition); break;
        }
        if (definition.availableWhen)
            writeAvailability(definition);
    }

    std::string text() const { return m_out.str(); }
    std::ostringstream& out() { return m_out; }

private:
    void open(const char* element, const FeatureDefinition& definition)
    {
        m_out << "  <" << element << " Name=\"" << definition.name << "\" NameSpace=\"" << nameSpace(definition.name) << "\">\n";
        if (!definition.toolTip.empty())
            m_out << "    <ToolTip>" << escape(definition.toolTip) << "</ToolTip>\n";
        m_out << "    <Visibility>" << visibilityText(definition.visibility) << "</Visibility>\n";
        if (definition.availableWhen)
            m_out << "    <pIsAvailable>" << availabilityNodeName(definition.name) << "</pIsAvailable>\n";
        for (const std::string& selected : definition.selects)
            m_out << "    <pSelected>" << selected << "</pSelected>\n";
    }

    void close(const char* element) { m_out << "  </" << element << ">\n"; }

    void registerBody(const FeatureDefinition& definition)
    {
        m_out << "    <Address>" << hex(definition.address) << "</Address>\n";
        if (!definition.selectedBy.empty())
            m_out << "    <pIndex Offset=\"" << definition.length << "\">" << definition.selectedBy << "</pIndex>\n";
        m_out << "    <Length>" << definition.length << "</Length>\n"
              << "    <AccessMode>" << accessText(definition.access) << "</AccessMode>\n"
              << "    <pPort>Device</pPort>\n"
              << "    <Cachable>NoCache</Cachable>\n";
    }

    void intRegister(const FeatureDefinition& definition)
    {
        const bool masked = definition.msb >= 0;
        const char* element = masked ? "MaskedIntReg" : "IntReg";
        m_out << "  <" << element << " Name=\"" << registerNodeName(definition.name) << "\">\n"
              << "    <Visibility>Invisible</Visibility>\n";
        registerBody(definition);
        if (masked && definition.msb == definition.lsb)
            m_out << "    <Bit>" << definition.lsb << "</Bit>\n";
        else if (masked)
            m_out << "    <LSB>" << definition.lsb << "</LSB>\n    <MSB>" << definition.msb << "</MSB>\n";
        m_out << "    <Sign>" << (definition.isSigned ? "Signed" : "Unsigned") << "</Sign>\n"
              << "    <Endianess>BigEndian</Endianess>\n";
        close(element);
    }

    void writeCategory(const FeatureDefinition& definition)
    {
        open("Category", definition);
        for (const std::string& child : definition.children)
            m_out << "    <pFeature>" << child << "</pFeature>\n";
        close("Category");
    }

    void writeInteger(const FeatureDefinition& definition)
    {
        open("Integer", definition);
        m_out << "    <pValue>" << registerNodeName(definition.name) << "</pValue>\n"
              << "    <Min>" << definition.minimum << "</Min>\n"
              << "    <Max>" << definition.maximum << "</Max>\n"
              << "    <Inc>" << definition.increment << "</Inc>\n"
              << "    <Representation>" << (definition.name.find("IPAddress") != std::string::npos ||
                                                     definition.name.find("SubnetMask") != std::string::npos ||
                                                     definition.name.find("Gateway") != std::string::npos ||
                                                     definition.name == "GevSCDA"
                                                 ? "IPV4Address"
                                                 : definition.name == "GevMACAddress" ? "MACAddress" : "Linear")
              << "</Representation>\n";
        if (!definition.unit.empty())
            m_out << "    <Unit>" << escape(definition.unit) << "</Unit>\n";
        close("Integer");
        intRegister(definition);
    }

    void writeFloat(const FeatureDefinition& definition)
    {
        open("Float", definition);
        m_out << "    <pValue>" << registerNodeName(definition.name) << "</pValue>\n"
              << "    <Min>" << number(definition.floatMinimum) << "</Min>\n"
              << "    <Max>" << number(definition.floatMaximum) << "</Max>\n";
        if (!definition.unit.empty())
            m_out << "    <Unit>" << escape(definition.unit) << "</Unit>\n";
        m_out << "    <DisplayNotation>Fixed</DisplayNotation>\n"
              << "    <DisplayPrecision>3</DisplayPrecision>\n";
        close("Float");
        m_out << "  <FloatReg Name=\"" << registerNodeName(definition.name) << "\">\n"
              << "    <Visibility>Invisible</Visibility>\n";
        registerBody(definition);
        m_out << "    <Endianess>BigEndian</Endianess>\n";
        close("FloatReg");
    }

    void writeBoolean(const FeatureDefinition& definition)
    {
        open("Boolean", definition);
        m_out << "    <pValue>" << registerNodeName(definition.name) << "</pValue>\n"
              << "    <OnValue>1</OnValue>\n"
              << "    <OffValue>0</OffValue>\n";
        close("Boolean");
        intRegister(definition);
    }

    void writeString(const FeatureDefinition& definition)
    {
        open("StringReg", definition);
        registerBody(definition);
        close("StringReg");
    }

    void writeEnumeration(const FeatureDefinition& definition)
    {
        open("Enumeration", definition);
        for (const EnumEntry& entry : definition.entries) {
            m_out << "    <EnumEntry Name=\"" << entry.name << "\" NameSpace=\"" << nameSpace(definition.name) << "\">\n"
                  << "      <Value>" << entry.value << "</Value>\n"
                  << "    </EnumEntry>\n";
        }
        m_out << "    <pValue>" << registerNodeName(definition.name) << "</pValue>\n";
        close("Enumeration");
        intRegister(definition);
    }

    void writeCommand(const FeatureDefinition& definition)
    {
        open("Command", definition);
        m_out << "    <ImposedAccessMode>WO</ImposedAccessMode>\n"
              << "    <pValue>" << registerNodeName(definition.name) << "</pValue>\n"
              << "    <CommandValue>" << definition.commandValue << "</CommandValue>\n";
        close("Command");
        intRegister(definition);
    }

    void writeAvailability(const FeatureDefinition& definition)
    {
        const AvailabilityRule& rule = *definition.availableWhen;
        m_out << "  <IntSwissKnife Name=\"" << availabilityNodeName(definition.name) << "\">\n"
              << "    <Visibility>Invisible</Visibility>\n"
              << "    <pVariable Name=\"V\">" << registerNodeName(rule.feature) << "</pVariable>\n"
              << "    <Formula>V " << (rule.equal ? "=" : "&lt;&gt;") << " " << rule.value << "</Formula>\n";
        close("IntSwissKnife");
    }

    std::ostringstream m_out;
};

} // namespace

std::string registerNodeName(const std::string& feature) { return feature + "Reg"; }
std::string availabilityNodeName(const std::string& feature) { return feature + "Available"; }

std::string writeGenicamXml(const GenicamHeader& header, const FeatureTable& table)
{
    Writer writer;
    std::ostringstream& out = writer.out();
    out << "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
        << "<RegisterDescription ModelName=\"" << escape(header.modelName) << "\" VendorName=\""
        << escape(header.vendorName) << "\" ToolTip=\"" << escape(header.toolTip)
        << "\" StandardNameSpace=\"None\" SchemaMajorVersion=\"1\" SchemaMinorVersion=\"1\""
        << " SchemaSubMinorVersion=\"0\" MajorVersion=\"" << header.majorVersion << "\" MinorVersion=\""
        << header.minorVersion << "\" SubMinorVersion=\"" << header.subMinorVersion << "\" ProductGuid=\""
        << header.productGuid << "\" VersionGuid=\"" << header.versionGuid << "\""
        << " xmlns=\"http://www.genicam.org/GenApi/Version_1_1\""
        << " xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\""
        << " xsi:schemaLocation=\"http://www.genicam.org/GenApi/Version_1_1"
        << " http://www.genicam.org/GenApi/GenApiSchema_Version_1_1.xsd\">\n";
    for (const FeatureDefinition& definition : table.features())
        writer.write(definition);
    out << "  <Port Name=\"Device\" NameSpace=\"Standard\">\n"
        << "    <ToolTip>Port giving access to the device registers.</ToolTip>\n"
        << "  </Port>\n"
        << "</RegisterDescription>\n";
    return writer.text();
}

} // namespace quorvex::sim
