#include "CodeReaderStrings.h"

#include <array>

namespace collect {

namespace {

constexpr std::array<const char*, 9> kCodeReaderStrings{
    "UdpEndTriggerStr",     "TcpEndTriggerStr",   "Barcodecharacterbegins",
    "BarcodeContainString", "BarcodeNoContainString", "TcpServerStartText",
    "TcpServerStopText",    "TcpServerDelimiter", "RegularExpressionRules"};
constexpr std::array<const char*, 8> kCodeReaderSwitches{
    "TcpEndTriggerEnable",          "UdpEndTriggerEnable",           "IOEndTriggerEnable",
    "SerialEndTriggerEnable",       "BarcodecharacterbeginsEnable",  "BarcodeContainStringEnable",
    "BarcodeNoContainStringEnable", "RegularExpressionRulesEnable"};

} // namespace

void readCodeReaderStrings(XQ_HANDLE hCamera)
{
    XQ_CC_SetEnumValueByString(hCamera, "RunningMode", "Normal");
    XQ_CC_SetEnumValueByString(hCamera, "TriggerMode", "On");
    XQ_CC_SetEnumValueByString(hCamera, "TriggerSource", "TcpStart");
    XQ_CC_SetEnumValueByString(hCamera, "CommunicationProtocols", "TcpServer");
    for (const char* const pSwitch : kCodeReaderSwitches)
        XQ_CC_SetBoolValue(hCamera, pSwitch, true);

    XQ_CC_STRINGVALUE stString{};
    for (const char* const pString : kCodeReaderStrings)
        XQ_CC_GetStringValue(hCamera, pString, &stString);

    XQ_CC_SetEnumValueByString(hCamera, "TriggerSource", "TcpStart");
    XQ_CC_GetStringValue(hCamera, "TcpStartTriggerStr", &stString);
    XQ_CC_SetEnumValueByString(hCamera, "TriggerSource", "UdpStart");
    XQ_CC_GetStringValue(hCamera, "UdpStartTriggerStr", &stString);
    XQ_CC_SetEnumValueByString(hCamera, "CommunicationProtocols", "CommuPtlTcpIP");
    XQ_CC_GetStringValue(hCamera, "TcpStartText", &stString);
    XQ_CC_GetStringValue(hCamera, "TcpStopText", &stString);
    XQ_CC_GetStringValue(hCamera, "TcpDelimiter", &stString);
}

} // namespace collect
