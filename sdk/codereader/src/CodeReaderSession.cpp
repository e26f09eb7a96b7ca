#include "CodeReaderSession.h"

#include "FeatureAccess.h"
#include "SessionSupport.h"

namespace xq {
namespace {

constexpr unsigned int kDefaultJpegQuality = 90;

XQ_CODEREADER_DECODE_PARAM defaultDecodeParam()
{
    XQ_CODEREADER_DECODE_PARAM param{};
    param.nFormats = XQ_FORMAT_DEFAULT;
    param.bTryHarder = 0;
    param.nMaxCodes = XQ_CODEREADER_MAX_CODE_NUM;
    param.nJpegQuality = kDefaultJpegQuality;
    return param;
}

} // namespace

CodeReaderSession::CodeReaderSession(const XQ_CODEREADER_DEVICE_INFO& info)
    : m_info(info), m_param(defaultDecodeParam())
{
}

CodeReaderSession::~CodeReaderSession() { release(); }

int CodeReaderSession::open()
{
    const auto stop = m_canceller.stopCheck();
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_link)
        return XQ_ERR_WRONG_STATE;
    if (m_info.nTLayerType != XQ_TLAYER_GIGE)
        return XQ_ERR_NOT_SUPPORTED;
    OpenRequest request;
    request.transport = Transport::GigE;
    request.ip = m_info.stGigE.nCurrentIp;
    request.accessMode = XQ_ACCESS_EXCLUSIVE;
    return DeviceLink::open(request, stop, lossReporter(m_exceptionSlot), m_link);
}

int CodeReaderSession::close()
{
    m_canceller.cancelCalls();
    const std::lock_guard<std::mutex> lock(m_mutex);
    return closeLocked();
}

int CodeReaderSession::closeLocked()
{
    if (!m_link)
        return XQ_ERR_WRONG_STATE;
    if (m_stream)
        stopGrabbingLocked();
    m_link.reset();
    return XQ_OK;
}

void CodeReaderSession::release()
{
    m_canceller.releaseForever();
    m_exceptionSlot->clear();
    const auto lock = lockWithin(m_mutex, kReleaseWait);
    if (lock.owns_lock() && m_link)
        closeLocked(); // else a device command is under way: the destructor closes after it
}

int CodeReaderSession::registerExceptionCallback(XQ_EXCEPTION_CALLBACK callback, void* user)
{
    m_exceptionSlot->set(callback, user);
    return XQ_OK;
}

int CodeReaderSession::setGvcpTimeout(unsigned int milliseconds)
{
    return xq::setGvcpTimeout(m_mutex, m_link, milliseconds);
}

int CodeReaderSession::getEnumeration(const char* name, XQ_ENUMVALUE* value)
{
    return whileOpen([&](ArvGc* tree) { return features::getEnumeration(tree, name, value); });
}

int CodeReaderSession::setEnumerationValue(const char* name, unsigned int value)
{
    return whileOpen([&](ArvGc* tree) { return features::setEnumerationValue(tree, name, value); });
}

int CodeReaderSession::setEnumerationSymbol(const char* name, const char* symbol)
{
    return whileOpen([&](ArvGc* tree) { return features::setEnumerationSymbol(tree, name, symbol); });
}

int CodeReaderSession::executeCommand(const char* name)
{
    return whileOpen([&](ArvGc* tree) { return features::executeCommand(tree, name); });
}

int CodeReaderSession::setDecodeParam(const XQ_CODEREADER_DECODE_PARAM* param)
{
    if (!param || param->nJpegQuality > 100 || param->nMaxCodes > XQ_CODEREADER_MAX_CODE_NUM)
        return XQ_ERR_INVALID_PARAMETER;
    constexpr unsigned int known = XQ_FORMAT_DEFAULT | XQ_FORMAT_AZTEC | XQ_FORMAT_DATABAR | XQ_FORMAT_DATABAR_EXPANDED;
    if ((param->nFormats & ~known) != 0)
        return XQ_ERR_INVALID_PARAMETER;
    XQ_CODEREADER_DECODE_PARAM applied = *param;
    if (applied.nFormats == 0)
        applied.nFormats = XQ_FORMAT_DEFAULT;
    if (applied.nMaxCodes == 0)
        applied.nMaxCodes = XQ_CODEREADER_MAX_CODE_NUM;
    if (applied.nJpegQuality == 0)
        applied.nJpegQuality = kDefaultJpegQuality;
    applied.bTryHarder = applied.bTryHarder ? 1 : 0;
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_param = applied;
    return XQ_OK;
}

int CodeReaderSession::getDecodeParam(XQ_CODEREADER_DECODE_PARAM* param)
{
    if (!param)
        return XQ_ERR_INVALID_PARAMETER;
    const std::lock_guard<std::mutex> lock(m_mutex);
    *param = m_param;
    return XQ_OK;
}

int CodeReaderSession::usable() const { return linkState(m_link); }

ArvGc* CodeReaderSession::genicam() const { return arv_device_get_genicam(m_link->device()); }

} // namespace xq
