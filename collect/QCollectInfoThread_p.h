#pragma once
// What the files of QCollectInfoThread share: how the job logs, its status
// texts and how it reads the SDKs' text fields. Not for use outside them.

#include "XQInterface.h"

#include <QCoreApplication>
#include <QDebug>
#include <QString>

#include <algorithm>
#include <cstddef>

namespace collect::job {

// Every line the job logs names QCollectInfoThread.cpp, whichever of the
// class's files writes it: log readers find a job's lines by that name.
inline constexpr char kLogFile[] = "QCollectInfoThread.cpp";

// The line and function a log line is written from.
struct LogSite final {
    int line;
    const char* function;
};

inline QDebug logAt(const LogSite& site)
{
    QDebug stream = QMessageLogger(kLogFile, site.line, site.function).info();
    stream.noquote();
    return stream;
}

inline constexpr char kTextCodec[] = "UTF-8";
inline constexpr int kTextFieldLength = 64;

// A text field of an SDK record, at most 64 bytes of it.
template <std::size_t N>
QString fieldText(const unsigned char (&field)[N])
{
    return XQInterface::uchar2QString(field, static_cast<int>(std::min<std::size_t>(N, kTextFieldLength)), kTextCodec);
}

inline QString hexCode(int ret)
{
    return QStringLiteral("%1").arg(static_cast<unsigned int>(ret), 0, 16);
}

// Status texts, translated when emitted.
inline constexpr const char* kInvalidModelName = QT_TRANSLATE_NOOP("QCollectInfoThread", "Invalid device model name!");
inline constexpr const char* kCreateFileFailed = QT_TRANSLATE_NOOP("QCollectInfoThread", "Create File Failed!");
inline constexpr const char* kCreateHandleFailed = QT_TRANSLATE_NOOP("QCollectInfoThread", "Create Handle Failed!");
inline constexpr const char* kOpenCameraFail = QT_TRANSLATE_NOOP("QCollectInfoThread", "Open Camera Fail!");
inline constexpr const char* kSetRunningModeFail = QT_TRANSLATE_NOOP("QCollectInfoThread", "Set Running Mode fail!");
inline constexpr const char* kSetTriggerModeFail = QT_TRANSLATE_NOOP("QCollectInfoThread", "Set Trigger Mode fail!");
inline constexpr const char* kStartGrabbingFail = QT_TRANSLATE_NOOP("QCollectInfoThread", "Start Grabbing fail!");
inline constexpr const char* kOpenFileFail = QT_TRANSLATE_NOOP("QCollectInfoThread", "Open File fail!");
inline constexpr const char* kCollectFailed = QT_TRANSLATE_NOOP("QCollectInfoThread", "Collect Failed!");
inline constexpr const char* kStopGrabbingFail = QT_TRANSLATE_NOOP("QCollectInfoThread", "Stop Grabbing fail!");
inline constexpr const char* kNoImageCaptured = QT_TRANSLATE_NOOP("QCollectInfoThread", "No image was captured!");
inline constexpr const char* kCreateHandleFail = QT_TRANSLATE_NOOP("QCollectInfoThread", "Create Handle fail!");
inline constexpr const char* kOpenDeviceFail = QT_TRANSLATE_NOOP("QCollectInfoThread", "Open Device fail!");
inline constexpr const char* kGetXmlFail = QT_TRANSLATE_NOOP("QCollectInfoThread", "GetGenI CamXML fail");
inline constexpr const char* kSetUserSetSelectorFail =
    QT_TRANSLATE_NOOP("QCollectInfoThread", "Set UserSetSelector fail!");
inline constexpr const char* kSetUserSetLoadFail = QT_TRANSLATE_NOOP("QCollectInfoThread", "Set UserSetLoad fail!");
inline constexpr const char* kGetRootNodeFail = QT_TRANSLATE_NOOP("QCollectInfoThread", "Get RootNode fail!");

} // namespace collect::job

// Where the expanding code stands; C++17 has no std::source_location.
#define COLLECT_JOB_SITE (collect::job::LogSite{__LINE__, static_cast<const char*>(Q_FUNC_INFO)})
// A log line of the job, under the class's file name.
#define COLLECT_JOB_LOG() collect::job::logAt(COLLECT_JOB_SITE)
