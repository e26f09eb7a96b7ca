#include "CameraSession.h"

#include "RecordingDevice.h"
#include "RegisterDumpWriter.h"
#include "SessionSupport.h"
#include "TextFields.h"

#include <cstring>
#include <cstdio>

namespace xq {

CameraSession::CameraSession(const XQ_CC_DEVICE_INFO& info, std::uint32_t stamp) : m_info(info), m_stamp(stamp) {}

CameraSession::~CameraSession() { release(); }

int CameraSession::open(unsigned int accessMode, unsigned short switchoverKey)
{
    if (switchoverKey != 0)
        return XQ_ERR_NOT_SUPPORTED;
    const auto stop = m_canceller.stopCheck();
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_link)
        return XQ_ERR_WRONG_STATE;

    OpenRequest request;
    request.accessMode = accessMode;
    if (m_info.nTLayerType == XQ_TLAYER_GIGE) {
        request.transport = Transport::GigE;
        request.ip = m_info.stGigE.nCurrentIp;
    } else if (m_info.nTLayerType == XQ_TLAYER_USB) {
        request.transport = Transport::Usb3;
        request.deviceId = boundedText(m_info.chDeviceId, sizeof m_info.chDeviceId);
    } else {
        return XQ_ERR_INVALID_PARAMETER;
    }

    std::unique_ptr<DeviceLink> link;
    if (const int code = DeviceLink::open(request, stop, lossReporter(m_exceptionSlot), link); code != XQ_OK)
        return code;

    m_recorder.clear();
    GObjectPtr<ArvDevice> proxy = makeRecordingDevice(link->device(), &m_recorder);
    if (!proxy)
        return XQ_ERR_GENICAM;
    m_nodeNames.clear();
    m_nodeIndex.clear();
    m_children.clear();
    m_shortcuts.clear();
    m_link = std::move(link);
    m_proxy = std::move(proxy);
    return XQ_OK;
}

int CameraSession::close()
{
    m_canceller.cancelCalls();
    const std::lock_guard<std::mutex> lock(m_mutex);
    return closeLocked();
}

int CameraSession::closeLocked()
{
    if (!m_link)
        return XQ_ERR_WRONG_STATE;
    // Shortcuts point into the description that goes with the proxy.
    m_shortcuts.clear();
    m_proxy.reset();
    m_link.reset();
    const RegisterRecording recording = m_recorder.snapshot();
    m_recorder.clear();
    const int written = writeRegisterDumps(recording, dumpFolder(), dumpModelName(),
                                           boundedText(m_info.chDeviceId, sizeof m_info.chDeviceId));
    if (written != XQ_OK)
        std::fprintf(stderr, "XQCameraControl: register dumps for model \"%s\" not written (error 0x%x)\n",
                     dumpModelName().c_str(), static_cast<unsigned int>(written));
    return written;
}

int CameraSession::release()
{
    m_canceller.releaseForever();
    m_exceptionSlot->clear();
    const auto lock = lockWithin(m_mutex, kReleaseWait);
    if (!lock.owns_lock())
        return XQ_OK; // a device command is under way: the destructor closes after it
    return m_link ? closeLocked() : XQ_OK;
}

int CameraSession::setDumpFolder(const char* folder)
{
    const std::lock_guard<std::mutex> lock(m_dumpFolderMutex);
    m_dumpFolder = folder ? folder : "";
    return XQ_OK;
}

std::string CameraSession::dumpFolder() const
{
    const std::lock_guard<std::mutex> lock(m_dumpFolderMutex);
    return m_dumpFolder;
}

int CameraSession::registerExceptionCallback(XQ_EXCEPTION_CALLBACK callback, void* user)
{
    m_exceptionSlot->set(callback, user);
    return XQ_OK;
}

int CameraSession::setGvcpTimeout(unsigned int milliseconds)
{
    return xq::setGvcpTimeout(m_mutex, m_link, milliseconds);
}

int CameraSession::genicamXml(unsigned char* data, unsigned int capacity, unsigned int* length)
{
    if (!length || (!data && capacity != 0))
        return XQ_ERR_INVALID_PARAMETER;
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_link)
        return XQ_ERR_WRONG_STATE;
    size_t size = 0;
    const char* xml = arv_device_get_genicam_xml(m_link->device(), &size);
    if (!xml || size == 0)
        return XQ_ERR_GENICAM;
    if (size > 0xFFFFFFFFu)
        return XQ_ERR_NOT_SUPPORTED;
    *length = static_cast<unsigned int>(size);
    if (size > capacity)
        return XQ_ERR_BUFFER_TOO_SMALL;
    std::memcpy(data, xml, size);
    return XQ_OK;
}

int CameraSession::usable() const { return linkState(m_link); }

ArvGc* CameraSession::genicam() const { return arv_device_get_genicam(m_proxy.get()); }

std::string CameraSession::dumpModelName() const
{
    return m_info.nTLayerType == XQ_TLAYER_GIGE ? fieldText(m_info.stGigE.chModelName) : std::string();
}

} // namespace xq
