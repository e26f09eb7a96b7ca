// C entry points of XqCodeReaderCtrl: argument checks and handle lookup, then
// the session does the work.
#include "XqCodeReaderCtrl.h"

#include "CodeReaderDevices.h"
#include "CodeReaderSession.h"
#include "HandleRegistry.h"

#include <new>

namespace {

using xq::CodeReaderSession;

constexpr std::uint16_t kCodeReaderHandleTag = 0x5152;

xq::HandleRegistry<CodeReaderSession>& registry()
{
    static xq::HandleRegistry<CodeReaderSession> handles(kCodeReaderHandleTag);
    return handles;
}

template <class Operation>
int guarded(Operation&& operation)
{
    try {
        return operation();
    } catch (const std::bad_alloc&) {
        return XQ_ERR_RESOURCE;
    } catch (...) {
        return XQ_ERR_INTERNAL;
    }
}

// Looks the handle up and runs operation(session); errors never escape.
template <class Operation>
int withSession(XQ_HANDLE handle, Operation&& operation)
{
    return guarded([&] {
        const std::shared_ptr<CodeReaderSession> session = registry().find(handle);
        return session ? operation(*session) : XQ_ERR_INVALID_HANDLE;
    });
}

} // namespace

extern "C" {

int XQ_CODEREADER_EnumDevices(XQ_CODEREADER_DEVICE_INFO_LIST* pstDevList, unsigned int nTLayerType)
{
    return guarded([&] { return xq::enumerateCodeReaders(pstDevList, nTLayerType); });
}

bool XQ_CODEREADER_IsDeviceAccessible(const XQ_CODEREADER_DEVICE_INFO* pstDevInfo, unsigned int nAccessMode)
{
    try {
        return xq::isCodeReaderAccessible(pstDevInfo, nAccessMode);
    } catch (...) {
        return false;
    }
}

int XQ_CODEREADER_CreateHandle(XQ_HANDLE* phHandle, const XQ_CODEREADER_DEVICE_INFO* pstDevInfo)
{
    if (!phHandle || !pstDevInfo)
        return XQ_ERR_INVALID_PARAMETER;
    if (pstDevInfo->nTLayerType != XQ_TLAYER_GIGE)
        return XQ_ERR_NOT_SUPPORTED;
    return guarded([&] {
        *phHandle = registry().add(std::make_shared<CodeReaderSession>(*pstDevInfo));
        return XQ_OK;
    });
}

int XQ_CODEREADER_DestroyHandle(XQ_HANDLE hHandle)
{
    return guarded([&] {
        const std::shared_ptr<CodeReaderSession> session = registry().remove(hHandle);
        if (!session)
            return XQ_ERR_INVALID_HANDLE;
        session->release();
        return XQ_OK;
    });
}

int XQ_CODEREADER_OpenDevice(XQ_HANDLE hHandle)
{
    return withSession(hHandle, [](CodeReaderSession& s) { return s.open(); });
}

int XQ_CODEREADER_CloseDevice(XQ_HANDLE hHandle)
{
    return withSession(hHandle, [](CodeReaderSession& s) { return s.close(); });
}

int XQ_CODEREADER_RegisterExceptionCallBack(XQ_HANDLE hHandle, XQ_EXCEPTION_CALLBACK cbException, void* pUser)
{
    return withSession(hHandle, [&](CodeReaderSession& s) { return s.registerExceptionCallback(cbException, pUser); });
}

int XQ_CODEREADER_GIGE_SetGvcpTimeout(XQ_HANDLE hHandle, unsigned int nMillisec)
{
    return withSession(hHandle, [&](CodeReaderSession& s) { return s.setGvcpTimeout(nMillisec); });
}

int XQ_CODEREADER_GetEnumValue(XQ_HANDLE hHandle, const char* strKey, XQ_ENUMVALUE* pstValue)
{
    return withSession(hHandle, [&](CodeReaderSession& s) { return s.getEnumeration(strKey, pstValue); });
}

int XQ_CODEREADER_SetEnumValue(XQ_HANDLE hHandle, const char* strKey, unsigned int nValue)
{
    return withSession(hHandle, [&](CodeReaderSession& s) { return s.setEnumerationValue(strKey, nValue); });
}

int XQ_CODEREADER_SetEnumValueByString(XQ_HANDLE hHandle, const char* strKey, const char* strValue)
{
    return withSession(hHandle, [&](CodeReaderSession& s) { return s.setEnumerationSymbol(strKey, strValue); });
}

int XQ_CODEREADER_SetCommandValue(XQ_HANDLE hHandle, const char* strKey)
{
    return withSession(hHandle, [&](CodeReaderSession& s) { return s.executeCommand(strKey); });
}

int XQ_CODEREADER_SetDecodeParam(XQ_HANDLE hHandle, const XQ_CODEREADER_DECODE_PARAM* pstParam)
{
    return withSession(hHandle, [&](CodeReaderSession& s) { return s.setDecodeParam(pstParam); });
}

int XQ_CODEREADER_GetDecodeParam(XQ_HANDLE hHandle, XQ_CODEREADER_DECODE_PARAM* pstParam)
{
    return withSession(hHandle, [&](CodeReaderSession& s) { return s.getDecodeParam(pstParam); });
}

int XQ_CODEREADER_StartGrabbing(XQ_HANDLE hHandle)
{
    return withSession(hHandle, [](CodeReaderSession& s) { return s.startGrabbing(); });
}

int XQ_CODEREADER_StopGrabbing(XQ_HANDLE hHandle)
{
    return withSession(hHandle, [](CodeReaderSession& s) { return s.stopGrabbing(); });
}

int XQ_CODEREADER_GetOneFrameTimeout(XQ_HANDLE hHandle, unsigned char** ppData, XQ_CODEREADER_FRAME_INFO* pstFrameInfo,
                                     unsigned int nMsec)
{
    return withSession(hHandle, [&](CodeReaderSession& s) { return s.nextFrame(ppData, pstFrameInfo, nMsec); });
}

} // extern "C"
