#include "demo_features.h"

#include "core/gvcp.h"

namespace quorvex::sim::demo {

namespace {

using E = std::vector<EnumEntry>;

void deviceControl(FeatureTable& t)
{
    using namespace gvcp::reg;
    t.category("DeviceControl", "Root").tip("Device identity and housekeeping.");
    t.string("DeviceVendorName", "DeviceControl", "", 32).readOnly().at(kManufacturerName, 32).tip("Name of the manufacturer.");
    t.string("DeviceModelName", "DeviceControl", "", 32).readOnly().at(kModelName, 32).tip("Model of the device.");
    t.string("DeviceVersion", "DeviceControl", "", 32).readOnly().at(kDeviceVersion, 32).tip("Version of the device.");
    t.string("DeviceManufacturerInfo", "DeviceControl", "", 48).readOnly().at(kManufacturerInfo, 48).expert();
    t.string("DeviceSerialNumber", "DeviceControl", "", 16).readOnly().at(kSerialNumber, 16);
    t.string("DeviceUserID", "DeviceControl", "", 16).at(kUserDefinedName, 16).tip("Name given by the user.");
    t.string("DeviceFirmwareVersion", "DeviceControl", "", 32).readOnly().tip("Version of the decoding firmware.");
    t.string("DeviceHardwareVersion", "DeviceControl", "HW 2.1", 16).readOnly().expert();
    t.enumeration("DeviceScanType", "DeviceControl", E{{"Areascan", 0}}, 0).readOnly().expert();
    t.enumeration("DeviceTemperatureSelector", "DeviceControl", E{{"Sensor", 0}, {"Mainboard", 1}}, 0).expert().notInUserSet();
    t.floating("DeviceTemperature", "DeviceControl", 41.5, -40.0, 125.0).readOnly().units("C").expert();
    t.select("DeviceTemperatureSelector", {"DeviceTemperature"});
    t.integer("DeviceUptime", "DeviceControl", 0, 0, 0xFFFFFFFF).readOnly().units("s").expert();
    t.integer("DeviceLinkSpeed", "DeviceControl", 1000, 0, 10000).readOnly().units("Mbps").expert().at(kLinkSpeed, 4);
    t.integer("DeviceMaxThroughput", "DeviceControl", 125000000, 0, 0x7FFFFFFF).readOnly().units("Bps").guru();
    t.command("DeviceReset", "DeviceControl").guru().tip("Restarts the device.");
    t.string("DeviceFactoryData", "DeviceControl", "CAL-OK", 32).readOnly().invisible();
    t.integer("DeviceDebugLevel", "DeviceControl", 0, 0, 5).invisible().notInUserSet();
    t.string("DeviceLicenseKey", "DeviceControl", "", 32).writeOnly().guru().tip("Unlocks optional decoders.");
}

void imageFormat(FeatureTable& t)
{
    t.category("ImageFormatControl", "Root").tip("Size and format of the image.");
    t.integer("SensorWidth", "ImageFormatControl", 2592, 2592, 2592).readOnly().expert().units("px");
    t.integer("SensorHeight", "ImageFormatControl", 2048, 2048, 2048).readOnly().expert().units("px");
    t.integer("WidthMax", "ImageFormatControl", 2592, 2592, 2592).readOnly().expert();
    t.integer("HeightMax", "ImageFormatControl", 2048, 2048, 2048).readOnly().expert();
    t.integer("Width", "ImageFormatControl", 1280, 64, 2592, 8).units("px").tip("Width of the image.");
    t.integer("Height", "ImageFormatControl", 1024, 64, 2048, 2).units("px").tip("Height of the image.");
    t.integer("OffsetX", "ImageFormatControl", 0, 0, 2528, 8).units("px");
    t.integer("OffsetY", "ImageFormatControl", 0, 0, 1984, 2).units("px");
    t.enumeration("PixelFormat", "ImageFormatControl",
                  E{{"Mono8", gvsp::kPixelMono8}, {"RGB8Packed", gvsp::kPixelRgb8}}, gvsp::kPixelMono8)
        .tip("Format of the pixels sent.");
    t.enumeration("PixelSize", "ImageFormatControl", E{{"Bpp8", 8}, {"Bpp24", 24}}, 8).readOnly().expert();
    t.boolean("ReverseX", "ImageFormatControl", false).expert();
    t.boolean("ReverseY", "ImageFormatControl", false).expert();
    t.enumeration("BinningHorizontal", "ImageFormatControl", E{{"X1", 1}, {"X2", 2}}, 1).expert();
    t.enumeration("BinningVertical", "ImageFormatControl", E{{"X1", 1}, {"X2", 2}}, 1).expert();
    t.enumeration("TestPattern", "ImageFormatControl", E{{"Off", 0}, {"GreyHorizontalRamp", 1}, {"GreyVerticalRamp", 2}}, 0)
        .guru();
}

void acquisition(FeatureTable& t)
{
    t.category("AcquisitionControl", "Root").tip("Acquisition, trigger and exposure.");
    t.enumeration("AcquisitionMode", "AcquisitionControl",
                  E{{"SingleFrame", value::kAcquisitionSingleFrame}, {"MultiFrame", value::kAcquisitionMultiFrame},
                    {"Continuous", value::kAcquisitionContinuous}},
                  value::kAcquisitionContinuous);
    t.command("AcquisitionStart", "AcquisitionControl");
    t.command("AcquisitionStop", "AcquisitionControl");
    t.integer("AcquisitionFrameCount", "AcquisitionControl", 1, 1, 255)
        .availableIf("AcquisitionMode", value::kAcquisitionMultiFrame);
    t.integer("AcquisitionBurstFrameCount", "AcquisitionControl", 1, 1, 32).expert();
    t.boolean("AcquisitionFrameRateEnable", "AcquisitionControl", false)
        .tip("Limits the free-running frame rate to AcquisitionFrameRate.");
    t.floating("AcquisitionFrameRate", "AcquisitionControl", 30.0, 1.0, 1000.0).units("Hz");
    t.floating("ResultingFrameRate", "AcquisitionControl", 60.0, 0.0, 1000.0).readOnly().units("Hz").expert();
    t.enumeration("TriggerSelector", "AcquisitionControl", E{{"FrameBurstStart", 0}}, 0).expert();
    t.enumeration("TriggerMode", "AcquisitionControl", E{{"Off", 0}, {"On", 1}}, 0);
    t.enumeration("TriggerSource", "AcquisitionControl",
                  E{{"Line0", 0}, {"Line1", 1}, {"Line2", 2}, {"SerialStart", 3},
                    {"TcpStart", value::kTriggerSourceTcpStart}, {"UdpStart", value::kTriggerSourceUdpStart},
                    {"Counter0", 6}, {"Software", value::kTriggerSourceSoftware}},
                  value::kTriggerSourceSoftware);
    t.enumeration("TriggerActivation", "AcquisitionControl", E{{"RisingEdge", 0}, {"FallingEdge", 1}}, 0);
    t.floating("TriggerDelay", "AcquisitionControl", 0.0, 0.0, 1000000.0).units("us").expert();
    t.command("TriggerSoftware", "AcquisitionControl").tip("Takes one picture when the software source is selected.");
    t.boolean("TriggerCacheEnable", "AcquisitionControl", false).guru();
    t.integer("TriggerTimeout", "AcquisitionControl", 0, 0, 60000).units("ms").expert();
    t.enumeration("ExposureMode", "AcquisitionControl", E{{"Timed", 1}}, 1).expert();
    t.enumeration("ExposureAuto", "AcquisitionControl", E{{"Off", 0}, {"Once", 1}, {"Continuous", 2}}, 0);
    t.floating("ExposureTime", "AcquisitionControl", 1000.0, 15.0, 100000.0).units("us");
}

void analog(FeatureTable& t)
{
    t.category("AnalogControl", "Root").tip("Gain, black level and tone.");
    t.enumeration("GainAuto", "AnalogControl", E{{"Off", 0}, {"Once", 1}, {"Continuous", 2}}, 0);
    t.floating("Gain", "AnalogControl", 0.0, 0.0, 20.0).units("dB");
    t.integer("BlackLevel", "AnalogControl", 16, 0, 255).expert();
    t.boolean("GammaEnable", "AnalogControl", false).expert();
    t.floating("Gamma", "AnalogControl", 1.0, 0.1, 4.0).expert().availableIf("GammaEnable", 1);
    t.boolean("SharpnessEnable", "AnalogControl", false).expert();
    t.integer("Sharpness", "AnalogControl", 50, 0, 100).expert().availableIf("SharpnessEnable", 1);
    t.integer("DigitalShift", "AnalogControl", 0, 0, 4).guru();
}

void light(FeatureTable& t)
{
    t.category("LightControl", "Root").tip("Illumination, aimer and focus.");
    t.enumeration("IlluminationSelector", "LightControl", E{{"Internal", 0}, {"External", 1}}, 0).notInUserSet();
    t.boolean("IlluminationEnable", "LightControl", true);
    t.enumeration("IlluminationMode", "LightControl", E{{"AlwaysOn", 0}, {"Strobe", 1}, {"Off", 2}}, 1);
    t.integer("IlluminationIntensity", "LightControl", 80, 0, 100).units("%");
    t.select("IlluminationSelector", {"IlluminationEnable", "IlluminationMode", "IlluminationIntensity"});
    t.enumeration("IlluminationColor", "LightControl", E{{"White", 0}, {"Red", 1}, {"Blue", 2}}, 1);
    t.boolean("AimerEnable", "LightControl", true);
    t.enumeration("AimerMode", "LightControl", E{{"Dot", 0}, {"Cross", 1}, {"Frame", 2}}, 0).availableIf("AimerEnable", 1);
    t.boolean("AutoFocusEnable", "LightControl", false);
    t.integer("FocusPosition", "LightControl", 400, 0, 1000).availableIf("AutoFocusEnable", 0);
    t.command("AutoFocusOnce", "LightControl").expert();
}

void digitalIo(FeatureTable& t)
{
    t.category("DigitalIOControl", "Root").tip("Input and output lines.");
    t.enumeration("LineSelector", "DigitalIOControl", E{{"Line0", 0}, {"Line1", 1}, {"Line2", 2}, {"Line3", 3}}, 0)
        .notInUserSet();
    t.enumeration("LineMode", "DigitalIOControl", E{{"Input", 0}, {"Output", 1}}, 0);
    t.boolean("LineInverter", "DigitalIOControl", false);
    t.boolean("LineStatus", "DigitalIOControl", false).readOnly();
    t.enumeration("LineSource", "DigitalIOControl",
                  E{{"Off", 0}, {"ReadSuccess", 1}, {"ReadFail", 2}, {"AcquisitionActive", 3}, {"UserOutput", 4}}, 0);
    t.floating("LineDebouncerTime", "DigitalIOControl", 100.0, 0.0, 100000.0).units("us").expert();
    t.select("LineSelector", {"LineMode", "LineInverter", "LineStatus", "LineSource", "LineDebouncerTime"});
    t.integer("LineStatusAll", "DigitalIOControl", 0, 0, 15).readOnly().expert();
    t.enumeration("UserOutputSelector", "DigitalIOControl", E{{"UserOutput0", 0}, {"UserOutput1", 1}}, 0).notInUserSet();
    t.boolean("UserOutputValue", "DigitalIOControl", false);
    t.select("UserOutputSelector", {"UserOutputValue"});
    t.integer("OutputPulseDuration", "DigitalIOControl", 100, 1, 10000).units("ms");
    t.boolean("BuzzerEnable", "DigitalIOControl", true);
    t.integer("BuzzerVolume", "DigitalIOControl", 60, 0, 100).units("%").availableIf("BuzzerEnable", 1);
}

void codeReader(FeatureTable& t)
{
    t.category("CodeReaderControl", "Root").tip("Decoding behaviour.");
    t.enumeration("RunningMode", "CodeReaderControl",
                  E{{"Test", 0}, {"Raw", 1}, {"Normal", value::kRunningModeNormal}, {"Training", 3}},
                  value::kRunningModeNormal)
        .tip("Test shows every picture, Raw skips decoding, Normal reads codes.");
    t.integer("DecodeTimeout", "CodeReaderControl", 200, 10, 10000).units("ms");
    t.integer("MaxCodeCount", "CodeReaderControl", 4, 1, 64);
    t.enumeration("CodeSearchMode", "CodeReaderControl", E{{"Fast", 0}, {"Balanced", 1}, {"Robust", 2}}, 1);
    t.boolean("ResultImageEnable", "CodeReaderControl", true);
    t.boolean("RoiEnable", "CodeReaderControl", false).expert();
    t.integer("RoiOffsetX", "CodeReaderControl", 0, 0, 2528, 8).expert().availableIf("RoiEnable", 1);
    t.integer("RoiOffsetY", "CodeReaderControl", 0, 0, 1984, 2).expert().availableIf("RoiEnable", 1);
    t.integer("RoiWidth", "CodeReaderControl", 1280, 64, 2592, 8).expert().availableIf("RoiEnable", 1);
    t.integer("RoiHeight", "CodeReaderControl", 1024, 64, 2048, 2).expert().availableIf("RoiEnable", 1);
    t.boolean("DuplicateFilterEnable", "CodeReaderControl", false);
    t.integer("DuplicateFilterTime", "CodeReaderControl", 1000, 0, 60000).units("ms")
        .availableIf("DuplicateFilterEnable", 1);
    t.boolean("NoReadOutputEnable", "CodeReaderControl", true);
    t.string("NoReadString", "CodeReaderControl", "NoRead", 32).availableIf("NoReadOutputEnable", 1);
    t.integer("ReadCounter", "CodeReaderControl", 0, 0, 0x7FFFFFFF).readOnly().expert();
    t.integer("ReadSuccessCount", "CodeReaderControl", 0, 0, 0x7FFFFFFF).readOnly().expert();
    t.integer("ReadFailCount", "CodeReaderControl", 0, 0, 0x7FFFFFFF).readOnly().expert();
    t.command("ResetReadCounters", "CodeReaderControl").expert();
}

void symbology(FeatureTable& t)
{
    t.category("SymbologyControl", "Root").tip("Which codes are decoded.");
    const char* const enables[] = {"SymbologyQRCodeEnable",    "SymbologyMicroQREnable",   "SymbologyDataMatrixEnable",
                                   "SymbologyPDF417Enable",    "SymbologyAztecEnable",     "SymbologyMaxiCodeEnable",
                                   "SymbologyCode128Enable",   "SymbologyCode39Enable",    "SymbologyCode93Enable",
                                   "SymbologyCodabarEnable",   "SymbologyEAN13Enable",     "SymbologyEAN8Enable",
                                   "SymbologyUPCAEnable",      "SymbologyUPCEEnable",      "SymbologyITF25Enable",
                                   "SymbologyGS1DataBarEnable"};
    int index = 0;
    for (const char* name : enables) {
        // The common ones are on out of the box.
        t.boolean(name, "SymbologyControl", index < 3 || index == 6 || index == 10);
        ++index;
    }
    t.boolean("Code39CheckDigitEnable", "SymbologyControl", false).expert().availableIf("SymbologyCode39Enable", 1);
    t.boolean("Code39FullAsciiEnable", "SymbologyControl", false).expert().availableIf("SymbologyCode39Enable", 1);
    t.integer("Code128MinLength", "SymbologyControl", 1, 1, 80).expert().availableIf("SymbologyCode128Enable", 1);
    t.integer("Code128MaxLength", "SymbologyControl", 80, 1, 80).expert().availableIf("SymbologyCode128Enable", 1);
    t.integer("ITF25Length", "SymbologyControl", 0, 0, 80).expert().availableIf("SymbologyITF25Enable", 1);
    t.enumeration("DataMatrixPolarity", "SymbologyControl", E{{"Normal", 0}, {"Inverted", 1}, {"Both", 2}}, 0)
        .expert()
        .availableIf("SymbologyDataMatrixEnable", 1);
    t.boolean("QRCodeMirrorEnable", "SymbologyControl", false).guru().availableIf("SymbologyQRCodeEnable", 1);
}

void resultFilter(FeatureTable& t)
{
    using value::kRunningModeNormal;
    t.category("ResultControl", "Root").tip("Filters and formatting of the decoded text.");
    t.boolean("BarcodecharacterbeginsEnable", "ResultControl", false).availableIf("RunningMode", kRunningModeNormal);
    t.string("Barcodecharacterbegins", "ResultControl", "", 64).availableIf("BarcodecharacterbeginsEnable", 1)
        .tip("Only codes that begin with this text are output.");
    t.boolean("BarcodeContainStringEnable", "ResultControl", false).availableIf("RunningMode", kRunningModeNormal);
    t.string("BarcodeContainString", "ResultControl", "", 64).availableIf("BarcodeContainStringEnable", 1);
    t.boolean("BarcodeNoContainStringEnable", "ResultControl", false).availableIf("RunningMode", kRunningModeNormal);
    t.string("BarcodeNoContainString", "ResultControl", "", 64).availableIf("BarcodeNoContainStringEnable", 1);
    t.boolean("RegularExpressionRulesEnable", "ResultControl", false).availableIf("RunningMode", kRunningModeNormal);
    t.string("RegularExpressionRules", "ResultControl", "^.*$", 128).availableIf("RegularExpressionRulesEnable", 1);
    t.boolean("BarcodeLengthLimitEnable", "ResultControl", false).expert();
    t.integer("BarcodeMinLength", "ResultControl", 1, 1, 1024).expert().availableIf("BarcodeLengthLimitEnable", 1);
    t.integer("BarcodeMaxLength", "ResultControl", 1024, 1, 1024).expert().availableIf("BarcodeLengthLimitEnable", 1);
    t.string("ResultPrefix", "ResultControl", "", 16);
    t.string("ResultSuffix", "ResultControl", "\\r\\n", 16);
    t.string("ResultSeparator", "ResultControl", ",", 8);
    t.enumeration("OutputFormat", "ResultControl", E{{"CodeOnly", 0}, {"CodeWithType", 1}, {"Json", 2}}, 0);
}

void communication(FeatureTable& t)
{
    using value::kProtocolTcpClient;
    using value::kProtocolTcpServer;
    t.category("CommunicationControl", "Root").tip("Where results are sent.");
    t.enumeration("CommunicationProtocols", "CommunicationControl",
                  E{{"TcpServer", kProtocolTcpServer}, {"CommuPtlTcpIP", kProtocolTcpClient}, {"CommuPtlUdp", 2},
                    {"CommuPtlSerial", 3}},
                  kProtocolTcpServer);
    t.integer("TcpServerPort", "CommunicationControl", 2001, 1, 65535).availableIf("CommunicationProtocols", kProtocolTcpServer);
    t.integer("TcpServerMaxClients", "CommunicationControl", 4, 1, 16).expert()
        .availableIf("CommunicationProtocols", kProtocolTcpServer);
    t.string("TcpServerStartText", "CommunicationControl", "start", 32)
        .availableIf("CommunicationProtocols", kProtocolTcpServer);
    t.string("TcpServerStopText", "CommunicationControl", "stop", 32)
        .availableIf("CommunicationProtocols", kProtocolTcpServer);
    t.string("TcpServerDelimiter", "CommunicationControl", "\\r\\n", 8)
        .availableIf("CommunicationProtocols", kProtocolTcpServer);
    t.integer("TcpClientTargetIP", "CommunicationControl", 0x7F000001, 0, 0xFFFFFFFF)
        .availableIf("CommunicationProtocols", kProtocolTcpClient);
    t.integer("TcpClientTargetPort", "CommunicationControl", 2002, 1, 65535)
        .availableIf("CommunicationProtocols", kProtocolTcpClient);
    t.string("TcpStartText", "CommunicationControl", "T1", 32).availableIf("CommunicationProtocols", kProtocolTcpClient);
    t.string("TcpStopText", "CommunicationControl", "T0", 32).availableIf("CommunicationProtocols", kProtocolTcpClient);
    t.string("TcpDelimiter", "CommunicationControl", ";", 8).availableIf("CommunicationProtocols", kProtocolTcpClient);
    t.integer("UdpTargetPort", "CommunicationControl", 2003, 1, 65535).availableIf("CommunicationProtocols", 2);
    t.enumeration("SerialBaudRate", "CommunicationControl",
                  E{{"Baud9600", 9600}, {"Baud19200", 19200}, {"Baud38400", 38400}, {"Baud115200", 115200}}, 115200)
        .availableIf("CommunicationProtocols", 3);
    t.enumeration("SerialParity", "CommunicationControl", E{{"None", 0}, {"Odd", 1}, {"Even", 2}}, 0)
        .expert()
        .availableIf("CommunicationProtocols", 3);
    t.enumeration("SerialStopBits", "CommunicationControl", E{{"One", 1}, {"Two", 2}}, 1)
        .expert()
        .availableIf("CommunicationProtocols", 3);
    t.boolean("HeartbeatTextEnable", "CommunicationControl", false).expert();
    t.string("HeartbeatText", "CommunicationControl", "alive", 16).expert().availableIf("HeartbeatTextEnable", 1);
}

void triggerStrings(FeatureTable& t)
{
    using value::kTriggerSourceTcpStart;
    using value::kTriggerSourceUdpStart;
    t.category("TriggerStringControl", "Root").tip("Texts that start and end a reading over the network.");
    t.string("TcpStartTriggerStr", "TriggerStringControl", "TRIG", 32).availableIf("TriggerSource", kTriggerSourceTcpStart);
    t.string("UdpStartTriggerStr", "TriggerStringControl", "UTRIG", 32).availableIf("TriggerSource", kTriggerSourceUdpStart);
    t.string("SerialStartTriggerStr", "TriggerStringControl", "S", 16).expert().availableIf("TriggerSource", 3);
    t.boolean("TcpEndTriggerEnable", "TriggerStringControl", false).availableIf("TriggerMode", 1);
    t.string("TcpEndTriggerStr", "TriggerStringControl", "END", 32).availableIf("TcpEndTriggerEnable", 1);
    t.boolean("UdpEndTriggerEnable", "TriggerStringControl", false).availableIf("TriggerMode", 1);
    t.string("UdpEndTriggerStr", "TriggerStringControl", "UEND", 32).availableIf("UdpEndTriggerEnable", 1);
    t.boolean("IOEndTriggerEnable", "TriggerStringControl", false).availableIf("TriggerMode", 1);
    t.enumeration("IOEndTriggerLine", "TriggerStringControl", E{{"Line0", 0}, {"Line1", 1}}, 1)
        .availableIf("IOEndTriggerEnable", 1);
    t.boolean("SerialEndTriggerEnable", "TriggerStringControl", false).availableIf("TriggerMode", 1);
    t.string("SerialEndTriggerStr", "TriggerStringControl", "E", 16).availableIf("SerialEndTriggerEnable", 1);
    t.integer("EndTriggerTimeout", "TriggerStringControl", 5000, 0, 600000).units("ms").expert();
}

void userSets(FeatureTable& t)
{
    t.category("UserSetControl", "Root").tip("Saving and loading settings.");
    const E sets{{"Default", 0}, {"UserSet1", 1}, {"UserSet2", 2}};
    t.enumeration("UserSetSelector", "UserSetControl", sets, 0).notInUserSet();
    t.command("UserSetLoad", "UserSetControl").tip("Loads the selected set; Default restores the factory settings.");
    t.command("UserSetSave", "UserSetControl").availableIf("UserSetSelector", 0, false);
    t.enumeration("UserSetDefault", "UserSetControl", sets, 0).notInUserSet().tip("Set loaded at power-up.");
}

void transportLayer(FeatureTable& t)
{
    using namespace gvcp::reg;
    t.category("TransportLayerControl", "Root").tip("GigE Vision transport settings.");
    t.integer("PayloadSize", "TransportLayerControl", 1280 * 1024, 0, 0x7FFFFFFF).readOnly().units("B");
    t.integer("GevCurrentIPAddress", "TransportLayerControl", 0, 0, 0xFFFFFFFF).readOnly().expert().at(kCurrentIp, 4);
    t.integer("GevCurrentSubnetMask", "TransportLayerControl", 0, 0, 0xFFFFFFFF).readOnly().expert().at(kCurrentSubnetMask, 4);
    t.integer("GevCurrentDefaultGateway", "TransportLayerControl", 0, 0, 0xFFFFFFFF).readOnly().expert()
        .at(kCurrentGateway, 4);
    t.integer("GevMACAddress", "TransportLayerControl", 0, 0, 0xFFFFFFFFFFFF).readOnly().expert().at(kMacHigh, 8);
    t.integer("GevPersistentIPAddress", "TransportLayerControl", 0, 0, 0xFFFFFFFF).guru().at(kPersistentIp, 4);
    t.integer("GevHeartbeatTimeout", "TransportLayerControl", 3000, 500, 600000).units("ms").expert()
        .at(kHeartbeatTimeout, 4);
    t.integer("GevTimestampTickFrequency", "TransportLayerControl", 0, 0, 0x7FFFFFFFFFFFFFFF).readOnly().expert()
        .at(kTickFrequencyHigh, 8);
    t.command("GevTimestampControlLatch", "TransportLayerControl").expert().executes(2).at(kTimestampControl, 4);
    t.integer("GevTimestampValue", "TransportLayerControl", 0, 0, 0x7FFFFFFFFFFFFFFF).readOnly().expert()
        .at(kTimestampLatchedHigh, 8);
    t.enumeration("GevCCP", "TransportLayerControl",
                  E{{"OpenAccess", 0}, {"ExclusiveAccess", 1}, {"ControlAccess", 2}}, 0)
        .guru()
        .at(kControlChannelPrivilege, 4);
    t.integer("GevStreamChannelCount", "TransportLayerControl", 1, 0, 4).readOnly().expert().at(kStreamChannelCount, 4);
    t.integer("GevSCPHostPort", "TransportLayerControl", 0, 0, 65535).expert().at(kStreamPort, 4);
    // Packet size and its flags share one register, as on every device.
    // Clients set 'do not fragment' (bit 1) themselves while probing; it is
    // theirs, like the destination, so the description leaves it out.
    t.integer("GevSCPSPacketSize", "TransportLayerControl", 1500, gvcp::packetsize::kMinimum,
              gvcp::packetsize::kMaximum, 4)
        .units("B")
        .expert()
        .at(kStreamPacketSize, 4)
        .bits(16, 31);
    t.boolean("GevSCPSFireTestPacket", "TransportLayerControl", false)
        .guru()
        .tip("Sends one test packet of the packet size, to find the size the path carries.")
        .at(kStreamPacketSize, 4)
        .bits(0, 0);
    t.integer("GevSCPD", "TransportLayerControl", 0, 0, 1000000)
        .expert()
        .tip("Extra delay after each stream packet, in timestamp ticks.")
        .at(kStreamPacketDelay, 4);
    t.integer("GevLinkSpeed", "TransportLayerControl", 1000, 0, 0xFFFFFFFF).readOnly().expert().units("Mbps")
        .at(kLinkSpeed, 4);
    t.integer("GevSCDA", "TransportLayerControl", 0, 0, 0xFFFFFFFF).expert().at(kStreamDestination, 4);
    t.integer("GevSCSP", "TransportLayerControl", 0, 0, 65535).readOnly().expert().at(kStreamSourcePort, 4);
}

void statistics(FeatureTable& t)
{
    t.category("NetworkStatistics", "Root").tip("Counters of the control channel.");
    t.integer("StatRegisterReads", "NetworkStatistics", 0, 0, 0x7FFFFFFF)
        .readOnly()
        .expert()
        .tip("Read commands answered on the control channel, bootstrap included.");
    t.integer("StatRegisterWrites", "NetworkStatistics", 0, 0, 0x7FFFFFFF).readOnly().expert();
    t.integer("StatRefusedAccesses", "NetworkStatistics", 0, 0, 0x7FFFFFFF).readOnly().expert();
    t.integer("StatFramesTriggered", "NetworkStatistics", 0, 0, 0x7FFFFFFF).readOnly().expert();
    t.command("StatReset", "NetworkStatistics").expert();
}

} // namespace

FeatureTable buildCodeReaderFeatures()
{
    FeatureTable table(kRegisterBase);
    table.category("Root", "");
    deviceControl(table);
    imageFormat(table);
    acquisition(table);
    analog(table);
    light(table);
    digitalIo(table);
    codeReader(table);
    symbology(table);
    resultFilter(table);
    communication(table);
    triggerStrings(table);
    userSets(table);
    transportLayer(table);
    statistics(table);
    table.layOut();
    return table;
}

} // namespace quorvex::sim::demo
