// Placeholder entry points until the Aravis-backed implementation lands.
#include "XQCameraControl.h"

extern "C" {

int XQ_CC_EnumDevices(XQ_CC_DEVICE_INFO_LIST* /*pstDevList*/, unsigned int /*nTLayerType*/)
{
    return XQ_ERR_NOT_SUPPORTED;
}

bool XQ_CC_IsDeviceAccessible(const XQ_CC_DEVICE_INFO* /*pstDevInfo*/, unsigned int /*nAccessMode*/)
{
    return false;
}

int XQ_CC_CreateHandle(XQ_HANDLE* /*phHandle*/, const XQ_CC_DEVICE_INFO* /*pstDevInfo*/)
{
    return XQ_ERR_NOT_SUPPORTED;
}

int XQ_CC_DestroyHandle(XQ_HANDLE /*hHandle*/)
{
    return XQ_ERR_NOT_SUPPORTED;
}

int XQ_CC_OpenDevice(XQ_HANDLE /*hHandle*/, unsigned int /*nAccessMode*/, unsigned short /*nSwitchoverKey*/)
{
    return XQ_ERR_NOT_SUPPORTED;
}

int XQ_CC_CloseDevice(XQ_HANDLE /*hHandle*/)
{
    return XQ_ERR_NOT_SUPPORTED;
}

int XQ_CC_RegisterExceptionCallBack(XQ_HANDLE /*hHandle*/, XQ_EXCEPTION_CALLBACK /*cbException*/, void* /*pUser*/)
{
    return XQ_ERR_NOT_SUPPORTED;
}

int XQ_GIGE_SetGvcpTimeout(XQ_HANDLE /*hHandle*/, unsigned int /*nMillisec*/)
{
    return XQ_ERR_NOT_SUPPORTED;
}

int XQ_XML_GetGenICamXML(XQ_HANDLE /*hHandle*/, unsigned char* /*pData*/, unsigned int /*nDataBufSize*/, unsigned int* /*pnDataLen*/)
{
    return XQ_ERR_NOT_SUPPORTED;
}

int XQ_XML_GetRootNode(XQ_HANDLE /*hHandle*/, XQ_XML_NODE_FEATURE* /*pstNode*/)
{
    return XQ_ERR_NOT_SUPPORTED;
}

int XQ_XML_GetChildren(XQ_HANDLE /*hHandle*/, const XQ_XML_NODE_FEATURE* /*pstNode*/, XQ_XML_NODES_LIST* /*pstNodesList*/)
{
    return XQ_ERR_NOT_SUPPORTED;
}

int XQ_XML_GetNodeFeature(XQ_HANDLE /*hHandle*/, const char* /*strName*/, XQ_XML_NODE_FEATURE* /*pstNode*/)
{
    return XQ_ERR_NOT_SUPPORTED;
}

int XQ_XML_GetNodeAccessMode(XQ_HANDLE /*hHandle*/, const char* /*strName*/, unsigned int* /*penAccessMode*/)
{
    return XQ_ERR_NOT_SUPPORTED;
}

int XQ_XML_GetNodeVisibility(XQ_HANDLE /*hHandle*/, const char* /*strName*/, unsigned int* /*penVisibility*/)
{
    return XQ_ERR_NOT_SUPPORTED;
}

int XQ_XML_GetNodeInterfaceType(XQ_HANDLE /*hHandle*/, const char* /*strName*/, unsigned int* /*penInterfaceType*/)
{
    return XQ_ERR_NOT_SUPPORTED;
}

int XQ_CC_GetIntValue(XQ_HANDLE /*hHandle*/, const char* /*strKey*/, int64_t* /*pnValue*/)
{
    return XQ_ERR_NOT_SUPPORTED;
}

int XQ_CC_SetIntValue(XQ_HANDLE /*hHandle*/, const char* /*strKey*/, int64_t /*nValue*/)
{
    return XQ_ERR_NOT_SUPPORTED;
}

int XQ_CC_GetFloatValue(XQ_HANDLE /*hHandle*/, const char* /*strKey*/, double* /*pfValue*/)
{
    return XQ_ERR_NOT_SUPPORTED;
}

int XQ_CC_SetFloatValue(XQ_HANDLE /*hHandle*/, const char* /*strKey*/, double /*fValue*/)
{
    return XQ_ERR_NOT_SUPPORTED;
}

int XQ_CC_GetBoolValue(XQ_HANDLE /*hHandle*/, const char* /*strKey*/, bool* /*pbValue*/)
{
    return XQ_ERR_NOT_SUPPORTED;
}

int XQ_CC_SetBoolValue(XQ_HANDLE /*hHandle*/, const char* /*strKey*/, bool /*bValue*/)
{
    return XQ_ERR_NOT_SUPPORTED;
}

int XQ_CC_GetStringValue(XQ_HANDLE /*hHandle*/, const char* /*strKey*/, XQ_CC_STRINGVALUE* /*pstValue*/)
{
    return XQ_ERR_NOT_SUPPORTED;
}

int XQ_CC_SetStringValue(XQ_HANDLE /*hHandle*/, const char* /*strKey*/, const char* /*strValue*/)
{
    return XQ_ERR_NOT_SUPPORTED;
}

int XQ_CC_GetEnumValue(XQ_HANDLE /*hHandle*/, const char* /*strKey*/, XQ_ENUMVALUE* /*pstValue*/)
{
    return XQ_ERR_NOT_SUPPORTED;
}

int XQ_CC_SetEnumValue(XQ_HANDLE /*hHandle*/, const char* /*strKey*/, unsigned int /*nValue*/)
{
    return XQ_ERR_NOT_SUPPORTED;
}

int XQ_CC_SetEnumValueByString(XQ_HANDLE /*hHandle*/, const char* /*strKey*/, const char* /*strValue*/)
{
    return XQ_ERR_NOT_SUPPORTED;
}

int XQ_CC_GetEnumEntrySymbolic(XQ_HANDLE /*hHandle*/, const char* /*strKey*/, unsigned int /*nValue*/, char* /*pBuf*/, unsigned int /*nBufSize*/)
{
    return XQ_ERR_NOT_SUPPORTED;
}

int XQ_CC_SetCommandValue(XQ_HANDLE /*hHandle*/, const char* /*strKey*/)
{
    return XQ_ERR_NOT_SUPPORTED;
}

} // extern "C"
