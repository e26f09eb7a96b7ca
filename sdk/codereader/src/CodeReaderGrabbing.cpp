// Streaming of a code-reader session: start, stop, and one frame delivered
// as JPEG bytes with the codes found in it.
#include "CodeReaderSession.h"

#include "ErrorMapping.h"
#include "FeatureAccess.h"
#include "TextFields.h"

#include <algorithm>
#include <chrono>
#include <cstring>

namespace xq {
namespace {

constexpr int kStreamBufferCount = 4;
constexpr std::uint32_t kLoopbackNet = 0x7F000000;
constexpr std::uint32_t kLoopbackMask = 0xFF000000;
constexpr long long kWaitSliceUs = 50'000;

} // namespace

int CodeReaderSession::startGrabbing()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (const int state = usable(); state != XQ_OK)
        return state;
    if (m_stream)
        return XQ_ERR_WRONG_STATE;
    if (!m_link->isController())
        return XQ_ERR_ACCESS_DENIED;

    ArvDevice* device = m_link->device();
    if (ArvGvDevice* gv = m_link->gvDevice()) {
        // The packet socket sees nothing on loopback, and probing the packet
        // size there only costs time.
        arv_gv_device_set_stream_options(gv, ARV_GV_STREAM_OPTION_PACKET_SOCKET_DISABLED);
        if ((m_info.stGigE.nCurrentIp & kLoopbackMask) == kLoopbackNet)
            arv_gv_device_set_packet_size_adjustment(gv, ARV_GV_PACKET_SIZE_ADJUSTMENT_NEVER);
    }

    std::int64_t payload = 0;
    if (const int code = features::getInteger(genicam(), "PayloadSize", &payload); code != XQ_OK)
        return code;
    if (payload <= 0 || payload > (std::int64_t{1} << 30))
        return XQ_ERR_GENICAM;

    GErrorSlot error;
    GObjectPtr<ArvStream> stream(arv_device_create_stream(device, nullptr, nullptr, error.out()));
    if (!stream)
        return error ? errorCodeOf(error.get()) : XQ_ERR_RESOURCE;
    if (ARV_IS_GV_STREAM(stream.get()))
        g_object_set(stream.get(), "socket-buffer", ARV_GV_STREAM_SOCKET_BUFFER_AUTO, nullptr);
    for (int i = 0; i < kStreamBufferCount; ++i)
        arv_stream_push_buffer(stream.get(), arv_buffer_new_allocate(static_cast<size_t>(payload)));

    if (const int code = features::executeCommand(genicam(), "AcquisitionStart"); code != XQ_OK)
        return code;
    m_stream = std::move(stream);
    return XQ_OK;
}

int CodeReaderSession::stopGrabbing()
{
    m_canceller.cancelCalls();
    const std::lock_guard<std::mutex> lock(m_mutex);
    return stopGrabbingLocked();
}

int CodeReaderSession::stopGrabbingLocked()
{
    if (!m_link || !m_stream)
        return XQ_ERR_WRONG_STATE;
    // A lost device cannot be told to stop; the stream still has to go.
    const int stopped = m_link->isLost() ? XQ_OK : features::executeCommand(genicam(), "AcquisitionStop");
    m_stream.reset();
    return stopped;
}

int CodeReaderSession::nextFrame(unsigned char** data, XQ_CODEREADER_FRAME_INFO* info, unsigned int timeoutMs)
{
    if (!data || !info)
        return XQ_ERR_INVALID_PARAMETER;
    const auto stop = m_canceller.stopCheck();
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (const int state = usable(); state != XQ_OK)
        return state;
    if (!m_stream)
        return XQ_ERR_WRONG_STATE;

    using Clock = std::chrono::steady_clock;
    const auto deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
    ArvStream* stream = m_stream.get();
    for (;;) {
        // Waits in slices, so that close, stop or release from another
        // thread end the wait promptly.
        if (stop())
            return XQ_ERR_CANCELLED;
        const auto left = std::chrono::duration_cast<std::chrono::microseconds>(deadline - Clock::now()).count();
        ArvBuffer* buffer = left > 0 ? arv_stream_timeout_pop_buffer(
                                           stream, static_cast<guint64>(std::min<long long>(left, kWaitSliceUs)))
                                     : arv_stream_try_pop_buffer(stream);
        if (!buffer && left > kWaitSliceUs && !m_link->isLost())
            continue;
        if (!buffer)
            return m_link->isLost() ? XQ_ERR_DEVICE_LOST : XQ_ERR_NO_DATA;
        if (arv_buffer_get_status(buffer) != ARV_BUFFER_STATUS_SUCCESS) {
            arv_stream_push_buffer(stream, buffer);
            continue;
        }
        // Hand out the newest complete frame; older ones go back to the stream.
        while (ArvBuffer* newer = arv_stream_try_pop_buffer(stream)) {
            if (arv_buffer_get_status(newer) == ARV_BUFFER_STATUS_SUCCESS) {
                arv_stream_push_buffer(stream, buffer);
                buffer = newer;
            } else {
                arv_stream_push_buffer(stream, newer);
            }
        }
        const int delivered = deliver(buffer, data, info);
        arv_stream_push_buffer(stream, buffer);
        return delivered;
    }
}

int CodeReaderSession::deliver(ArvBuffer* buffer, unsigned char** data, XQ_CODEREADER_FRAME_INFO* info)
{
    if (arv_buffer_get_payload_type(buffer) != ARV_BUFFER_PAYLOAD_TYPE_IMAGE)
        return XQ_ERR_NOT_SUPPORTED;
    size_t size = 0;
    const void* pixels = arv_buffer_get_image_data(buffer, &size);
    FrameImage image;
    if (!toFrameImage(arv_buffer_get_image_pixel_format(buffer), arv_buffer_get_image_width(buffer),
                      arv_buffer_get_image_height(buffer), pixels, size, m_scratch, image))
        return XQ_ERR_NOT_SUPPORTED;
    if (!m_jpeg.encode(image, static_cast<int>(m_param.nJpegQuality)))
        return XQ_ERR_RESOURCE;

    DecodeSettings settings;
    settings.formats = m_param.nFormats;
    settings.tryHarder = m_param.bTryHarder != 0;
    settings.maxCodes = m_param.nMaxCodes;
    const std::vector<DecodedCode> codes = decodeCodes(image, settings);

    std::memset(info, 0, sizeof *info);
    info->nFrameNum = static_cast<unsigned int>(arv_buffer_get_frame_id(buffer));
    info->nWidth = static_cast<unsigned int>(image.width);
    info->nHeight = static_cast<unsigned int>(image.height);
    info->nFrameLen = static_cast<unsigned int>(m_jpeg.size());
    info->nTimeStamp = arv_buffer_get_timestamp(buffer);
    for (const auto& code : codes) {
        if (info->nCodeNum == XQ_CODEREADER_MAX_CODE_NUM)
            break;
        XQ_CODEREADER_CODE_INFO& out = info->stCodeInfo[info->nCodeNum++];
        copyText(out.chCode, code.text);
        out.nCodeLen = static_cast<unsigned int>(std::strlen(out.chCode));
        out.nSymbology = code.symbology;
        std::memcpy(out.stCornerPt, code.corners, sizeof out.stCornerPt);
    }
    // JPEG bytes belong to the handle and stay until its next frame.
    *data = m_jpeg.data();
    return XQ_OK;
}

} // namespace xq
