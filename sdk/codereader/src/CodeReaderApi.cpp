// Placeholder entry points until the Aravis-backed implementation lands.
#include "XqCodeReaderCtrl.h"

extern "C" {

int XQ_CODEREADER_EnumDevices(XQ_CODEREADER_DEVICE_INFO_LIST* /*pstDevList*/, unsigned int /*nTLayerType*/)
{
    return XQ_ERR_NOT_SUPPORTED;
}

bool XQ_CODEREADER_IsDeviceAccessible(const XQ_CODEREADER_DEVICE_INFO* /*pstDevInfo*/, unsigned int /*nAccessMode*/)
{
    return false;
}

int XQ_CODEREADER_CreateHandle(XQ_HANDLE* /*phHandle*/, const XQ_CODEREADER_DEVICE_INFO* /*pstDevInfo*/)
{
    return XQ_ERR_NOT_SUPPORTED;
}

int XQ_CODEREADER_DestroyHandle(XQ_HANDLE /*hHandle*/)
{
    return XQ_ERR_NOT_SUPPORTED;
}

int XQ_CODEREADER_OpenDevice(XQ_HANDLE /*hHandle*/)
{
    return XQ_ERR_NOT_SUPPORTED;
}

int XQ_CODEREADER_CloseDevice(XQ_HANDLE /*hHandle*/)
{
    return XQ_ERR_NOT_SUPPORTED;
}

int XQ_CODEREADER_RegisterExceptionCallBack(XQ_HANDLE /*hHandle*/, XQ_EXCEPTION_CALLBACK /*cbException*/, void* /*pUser*/)
{
    return XQ_ERR_NOT_SUPPORTED;
}

int XQ_CODEREADER_GIGE_SetGvcpTimeout(XQ_HANDLE /*hHandle*/, unsigned int /*nMillisec*/)
{
    return XQ_ERR_NOT_SUPPORTED;
}

int XQ_CODEREADER_GetEnumValue(XQ_HANDLE /*hHandle*/, const char* /*strKey*/, XQ_ENUMVALUE* /*pstValue*/)
{
    return XQ_ERR_NOT_SUPPORTED;
}

int XQ_CODEREADER_SetEnumValue(XQ_HANDLE /*hHandle*/, const char* /*strKey*/, unsigned int /*nValue*/)
{
    return XQ_ERR_NOT_SUPPORTED;
}

int XQ_CODEREADER_SetEnumValueByString(XQ_HANDLE /*hHandle*/, const char* /*strKey*/, const char* /*strValue*/)
{
    return XQ_ERR_NOT_SUPPORTED;
}

int XQ_CODEREADER_SetCommandValue(XQ_HANDLE /*hHandle*/, const char* /*strKey*/)
{
    return XQ_ERR_NOT_SUPPORTED;
}

int XQ_CODEREADER_SetDecodeParam(XQ_HANDLE /*hHandle*/, const XQ_CODEREADER_DECODE_PARAM* /*pstParam*/)
{
    return XQ_ERR_NOT_SUPPORTED;
}

int XQ_CODEREADER_GetDecodeParam(XQ_HANDLE /*hHandle*/, XQ_CODEREADER_DECODE_PARAM* /*pstParam*/)
{
    return XQ_ERR_NOT_SUPPORTED;
}

int XQ_CODEREADER_StartGrabbing(XQ_HANDLE /*hHandle*/)
{
    return XQ_ERR_NOT_SUPPORTED;
}

int XQ_CODEREADER_StopGrabbing(XQ_HANDLE /*hHandle*/)
{
    return XQ_ERR_NOT_SUPPORTED;
}

int XQ_CODEREADER_GetOneFrameTimeout(XQ_HANDLE /*hHandle*/, unsigned char** /*ppData*/, XQ_CODEREADER_FRAME_INFO* /*pstFrameInfo*/, unsigned int /*nMsec*/)
{
    return XQ_ERR_NOT_SUPPORTED;
}

} // extern "C"
