// One code-reader handle: the open device, its stream, and the frame
// pipeline (JPEG bytes owned here, codes decoded from the same frame).
//
// Calls on one session are serialised by its mutex; the session is shared
// between the registry and calls in progress, so a handle released by the
// exception callback while another thread uses it stays safe.
#pragma once

#include "XqCodeReaderCtrl.h"

#include "CallCanceller.h"
#include "CodeDecoder.h"
#include "DeviceLink.h"
#include "ExceptionSlot.h"
#include "JpegEncoder.h"
#include "SessionSupport.h"

#include <memory>
#include <mutex>
#include <vector>

namespace xq {

class CodeReaderSession final {
public:
    explicit CodeReaderSession(const XQ_CODEREADER_DEVICE_INFO& info);
    ~CodeReaderSession();
    CodeReaderSession(const CodeReaderSession&) = delete;
    CodeReaderSession& operator=(const CodeReaderSession&) = delete;

    // Lifecycle and features (CodeReaderSession.cpp)
    int open();
    int close();
    void release();
    int registerExceptionCallback(XQ_EXCEPTION_CALLBACK callback, void* user);
    int setGvcpTimeout(unsigned int milliseconds);
    int getEnumeration(const char* name, XQ_ENUMVALUE* value);
    int setEnumerationValue(const char* name, unsigned int value);
    int setEnumerationSymbol(const char* name, const char* symbol);
    int executeCommand(const char* name);
    int setDecodeParam(const XQ_CODEREADER_DECODE_PARAM* param);
    int getDecodeParam(XQ_CODEREADER_DECODE_PARAM* param);

    // Grabbing (CodeReaderGrabbing.cpp)
    int startGrabbing();
    int stopGrabbing();
    int nextFrame(unsigned char** data, XQ_CODEREADER_FRAME_INFO* info, unsigned int timeoutMs);

private:
    int usable() const;
    ArvGc* genicam() const;
    int closeLocked();
    int stopGrabbingLocked();
    // Encodes and decodes one frame into the handle's buffers and info.
    int deliver(ArvBuffer* buffer, unsigned char** data, XQ_CODEREADER_FRAME_INFO* info);

    template <class Operation>
    int whileOpen(Operation&& operation)
    {
        return whileLinkUsable(m_mutex, m_link, [this] { return genicam(); }, operation);
    }

    const XQ_CODEREADER_DEVICE_INFO m_info;
    const std::shared_ptr<ExceptionSlot> m_exceptionSlot = std::make_shared<ExceptionSlot>();
    CallCanceller m_canceller; // close, stop and release end pending opens and frame waits

    mutable std::mutex m_mutex;
    std::unique_ptr<DeviceLink> m_link;
    GObjectPtr<ArvStream> m_stream;
    XQ_CODEREADER_DECODE_PARAM m_param{};
    JpegEncoder m_jpeg;
    std::vector<std::uint8_t> m_scratch;
};

} // namespace xq
