// C entry points of XQCameraControl: argument checks and handle lookup, then
// the session does the work.
#include "XQCameraControl.h"

#include "CameraDevices.h"
#include "CameraSession.h"
#include "HandleRegistry.h"

#include <new>

namespace {

using xq::CameraSession;

constexpr std::uint16_t kCameraHandleTag = 0x5143;

xq::HandleRegistry<CameraSession>& registry()
{
    static xq::HandleRegistry<CameraSession> handles(kCameraHandleTag);
    return handles;
}

// Looks the handle up and runs operation(session); errors never escape.
template <class Operation>
int withSession(XQ_HANDLE handle, Operation&& operation)
{
    try {
        const std::shared_ptr<CameraSession> session = registry().find(handle);
        if (!session)
            return XQ_ERR_INVALID_HANDLE;
        return operation(*session);
    } catch (const std::bad_alloc&) {
        return XQ_ERR_RESOURCE;
    } catch (...) {
        return XQ_ERR_INTERNAL;
    }
}

} // namespace

extern "C" {

int XQ_CC_EnumDevices(XQ_CC_DEVICE_INFO_LIST* pstDevList, unsigned int nTLayerType)
{
    try {
        return xq::enumerateCameras(pstDevList, nTLayerType);
    } catch (const std::bad_alloc&) {
        return XQ_ERR_RESOURCE;
    } catch (...) {
        return XQ_ERR_INTERNAL;
    }
}

bool XQ_CC_IsDeviceAccessible(const XQ_CC_DEVICE_INFO* pstDevInfo, unsigned int nAccessMode)
{
    try {
        return xq::isCameraAccessible(pstDevInfo, nAccessMode);
    } catch (...) {
        return false;
    }
}

int XQ_CC_CreateHandle(XQ_HANDLE* phHandle, const XQ_CC_DEVICE_INFO* pstDevInfo)
{
    if (!phHandle || !pstDevInfo)
        return XQ_ERR_INVALID_PARAMETER;
    if (pstDevInfo->nTLayerType != XQ_TLAYER_GIGE && pstDevInfo->nTLayerType != XQ_TLAYER_USB)
        return XQ_ERR_INVALID_PARAMETER;
    try {
        // The stamp ties node records to this session; the handle gives it.
        auto session = std::shared_ptr<CameraSession>();
        XQ_HANDLE handle = nullptr;
        static std::mutex creation;
        const std::lock_guard<std::mutex> lock(creation);
        static std::uint32_t nextStamp = 1;
        session = std::make_shared<CameraSession>(*pstDevInfo, nextStamp++);
        handle = registry().add(std::move(session));
        *phHandle = handle;
        return XQ_OK;
    } catch (const std::bad_alloc&) {
        return XQ_ERR_RESOURCE;
    } catch (...) {
        return XQ_ERR_INTERNAL;
    }
}

int XQ_CC_DestroyHandle(XQ_HANDLE hHandle)
{
    try {
        const std::shared_ptr<CameraSession> session = registry().remove(hHandle);
        if (!session)
            return XQ_ERR_INVALID_HANDLE;
        return session->release();
    } catch (...) {
        return XQ_ERR_INTERNAL;
    }
}

int XQ_CC_OpenDevice(XQ_HANDLE hHandle, unsigned int nAccessMode, unsigned short nSwitchoverKey)
{
    return withSession(hHandle, [&](CameraSession& s) { return s.open(nAccessMode, nSwitchoverKey); });
}

int XQ_CC_CloseDevice(XQ_HANDLE hHandle)
{
    return withSession(hHandle, [](CameraSession& s) { return s.close(); });
}

int XQ_CC_SetRegisterDumpFolder(XQ_HANDLE hHandle, const char* pFolder)
{
    return withSession(hHandle, [&](CameraSession& s) { return s.setDumpFolder(pFolder); });
}

int XQ_CC_RegisterExceptionCallBack(XQ_HANDLE hHandle, XQ_EXCEPTION_CALLBACK cbException, void* pUser)
{
    return withSession(hHandle, [&](CameraSession& s) { return s.registerExceptionCallback(cbException, pUser); });
}

int XQ_GIGE_SetGvcpTimeout(XQ_HANDLE hHandle, unsigned int nMillisec)
{
    return withSession(hHandle, [&](CameraSession& s) { return s.setGvcpTimeout(nMillisec); });
}

int XQ_XML_GetGenICamXML(XQ_HANDLE hHandle, unsigned char* pData, unsigned int nDataBufSize, unsigned int* pnDataLen)
{
    return withSession(hHandle, [&](CameraSession& s) { return s.genicamXml(pData, nDataBufSize, pnDataLen); });
}

int XQ_XML_GetRootNode(XQ_HANDLE hHandle, XQ_XML_NODE_FEATURE* pstNode)
{
    return withSession(hHandle, [&](CameraSession& s) { return s.rootNode(pstNode); });
}

int XQ_XML_GetChildren(XQ_HANDLE hHandle, const XQ_XML_NODE_FEATURE* pstNode, XQ_XML_NODES_LIST* pstNodesList)
{
    return withSession(hHandle, [&](CameraSession& s) { return s.children(pstNode, pstNodesList); });
}

int XQ_XML_GetNodeFeature(XQ_HANDLE hHandle, const char* strName, XQ_XML_NODE_FEATURE* pstNode)
{
    return withSession(hHandle, [&](CameraSession& s) { return s.nodeFeature(strName, pstNode); });
}

int XQ_XML_GetNodeAccessMode(XQ_HANDLE hHandle, const char* strName, unsigned int* penAccessMode)
{
    return withSession(hHandle, [&](CameraSession& s) { return s.nodeAccessMode(strName, penAccessMode); });
}

int XQ_XML_GetNodeVisibility(XQ_HANDLE hHandle, const char* strName, unsigned int* penVisibility)
{
    return withSession(hHandle, [&](CameraSession& s) { return s.nodeVisibility(strName, penVisibility); });
}

int XQ_XML_GetNodeInterfaceType(XQ_HANDLE hHandle, const char* strName, unsigned int* penInterfaceType)
{
    return withSession(hHandle, [&](CameraSession& s) { return s.nodeInterfaceType(strName, penInterfaceType); });
}

int XQ_CC_GetIntValue(XQ_HANDLE hHandle, const char* strKey, int64_t* pnValue)
{
    return withSession(hHandle, [&](CameraSession& s) { return s.getInteger(strKey, pnValue); });
}

int XQ_CC_SetIntValue(XQ_HANDLE hHandle, const char* strKey, int64_t nValue)
{
    return withSession(hHandle, [&](CameraSession& s) { return s.setInteger(strKey, nValue); });
}

int XQ_CC_GetFloatValue(XQ_HANDLE hHandle, const char* strKey, double* pfValue)
{
    return withSession(hHandle, [&](CameraSession& s) { return s.getFloat(strKey, pfValue); });
}

int XQ_CC_SetFloatValue(XQ_HANDLE hHandle, const char* strKey, double fValue)
{
    return withSession(hHandle, [&](CameraSession& s) { return s.setFloat(strKey, fValue); });
}

int XQ_CC_GetBoolValue(XQ_HANDLE hHandle, const char* strKey, bool* pbValue)
{
    return withSession(hHandle, [&](CameraSession& s) { return s.getBoolean(strKey, pbValue); });
}

int XQ_CC_SetBoolValue(XQ_HANDLE hHandle, const char* strKey, bool bValue)
{
    return withSession(hHandle, [&](CameraSession& s) { return s.setBoolean(strKey, bValue); });
}

int XQ_CC_GetStringValue(XQ_HANDLE hHandle, const char* strKey, XQ_CC_STRINGVALUE* pstValue)
{
    return withSession(hHandle, [&](CameraSession& s) { return s.getString(strKey, pstValue); });
}

int XQ_CC_SetStringValue(XQ_HANDLE hHandle, const char* strKey, const char* strValue)
{
    return withSession(hHandle, [&](CameraSession& s) { return s.setString(strKey, strValue); });
}

int XQ_CC_GetEnumValue(XQ_HANDLE hHandle, const char* strKey, XQ_ENUMVALUE* pstValue)
{
    return withSession(hHandle, [&](CameraSession& s) { return s.getEnumeration(strKey, pstValue); });
}

int XQ_CC_SetEnumValue(XQ_HANDLE hHandle, const char* strKey, unsigned int nValue)
{
    return withSession(hHandle, [&](CameraSession& s) { return s.setEnumerationValue(strKey, nValue); });
}

int XQ_CC_SetEnumValueByString(XQ_HANDLE hHandle, const char* strKey, const char* strValue)
{
    return withSession(hHandle, [&](CameraSession& s) { return s.setEnumerationSymbol(strKey, strValue); });
}

int XQ_CC_GetEnumEntrySymbolic(XQ_HANDLE hHandle, const char* strKey, unsigned int nValue, char* pBuf,
                               unsigned int nBufSize)
{
    return withSession(hHandle, [&](CameraSession& s) { return s.enumerationSymbol(strKey, nValue, pBuf, nBufSize); });
}

int XQ_CC_SetCommandValue(XQ_HANDLE hHandle, const char* strKey)
{
    return withSession(hHandle, [&](CameraSession& s) { return s.executeCommand(strKey); });
}

} // extern "C"
