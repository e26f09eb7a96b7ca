// Misuse of the C interfaces: NULL arguments, handles that are stale,
// destroyed twice or from the other library, and calls in the wrong order.
// None may crash; each gets its documented code.
#include "XQCameraControl.h"
#include "XqCodeReaderCtrl.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <thread>
#include <vector>

namespace {

// A record of a device nobody serves: creating handles needs no device.
XQ_CC_DEVICE_INFO absentCamera()
{
    XQ_CC_DEVICE_INFO record;
    std::memset(&record, 0, sizeof record);
    record.nTLayerType = XQ_TLAYER_GIGE;
    record.stGigE.nCurrentIp = 0x7F000063; // 127.0.0.99, silent in the test's namespace
    std::strcpy(reinterpret_cast<char*>(record.stGigE.chModelName), "Absent");
    return record;
}

XQ_CODEREADER_DEVICE_INFO absentReader()
{
    XQ_CODEREADER_DEVICE_INFO record;
    std::memset(&record, 0, sizeof record);
    record.nTLayerType = XQ_TLAYER_GIGE;
    record.stGigE.nCurrentIp = 0x7F000063;
    return record;
}

TEST(ApiGuards, nullArgumentsAreRefused)
{
    EXPECT_EQ(XQ_CC_EnumDevices(nullptr, XQ_TLAYER_GIGE), XQ_ERR_INVALID_PARAMETER);
    XQ_CC_DEVICE_INFO_LIST cameras;
    EXPECT_EQ(XQ_CC_EnumDevices(&cameras, 0), XQ_ERR_INVALID_PARAMETER);
    EXPECT_EQ(XQ_CC_EnumDevices(&cameras, 2), XQ_ERR_INVALID_PARAMETER);
    EXPECT_EQ(XQ_CODEREADER_EnumDevices(nullptr, XQ_TLAYER_GIGE), XQ_ERR_INVALID_PARAMETER);
    EXPECT_FALSE(XQ_CC_IsDeviceAccessible(nullptr, XQ_ACCESS_EXCLUSIVE));
    EXPECT_FALSE(XQ_CODEREADER_IsDeviceAccessible(nullptr, XQ_ACCESS_EXCLUSIVE));

    XQ_HANDLE handle = nullptr;
    const XQ_CC_DEVICE_INFO camera = absentCamera();
    EXPECT_EQ(XQ_CC_CreateHandle(nullptr, &camera), XQ_ERR_INVALID_PARAMETER);
    EXPECT_EQ(XQ_CC_CreateHandle(&handle, nullptr), XQ_ERR_INVALID_PARAMETER);
    EXPECT_EQ(handle, nullptr);
    XQ_CC_DEVICE_INFO unknownTransport = camera;
    unknownTransport.nTLayerType = 2;
    EXPECT_EQ(XQ_CC_CreateHandle(&handle, &unknownTransport), XQ_ERR_INVALID_PARAMETER);

    ASSERT_EQ(XQ_CC_CreateHandle(&handle, &camera), XQ_OK);
    EXPECT_EQ(XQ_XML_GetGenICamXML(handle, nullptr, 16, nullptr), XQ_ERR_INVALID_PARAMETER);
    EXPECT_EQ(XQ_XML_GetRootNode(handle, nullptr), XQ_ERR_INVALID_PARAMETER);
    EXPECT_EQ(XQ_XML_GetChildren(handle, nullptr, nullptr), XQ_ERR_INVALID_PARAMETER);
    EXPECT_EQ(XQ_CC_GetIntValue(handle, "Width", nullptr), XQ_ERR_INVALID_PARAMETER);
    EXPECT_EQ(XQ_GIGE_SetGvcpTimeout(handle, 5), XQ_ERR_INVALID_PARAMETER);
    EXPECT_EQ(XQ_CC_OpenDevice(handle, 1, 7), XQ_ERR_NOT_SUPPORTED) << "switch-over keys are not offered";
    EXPECT_EQ(XQ_CC_DestroyHandle(handle), XQ_OK);
}

TEST(ApiGuards, callsOnAnUnopenedHandleReportTheState)
{
    const XQ_CC_DEVICE_INFO camera = absentCamera();
    XQ_HANDLE handle = nullptr;
    ASSERT_EQ(XQ_CC_CreateHandle(&handle, &camera), XQ_OK);
    std::int64_t integer = 0;
    XQ_XML_NODE_FEATURE node{};
    unsigned int length = 0;
    EXPECT_EQ(XQ_CC_GetIntValue(handle, "Width", &integer), XQ_ERR_WRONG_STATE);
    EXPECT_EQ(XQ_XML_GetRootNode(handle, &node), XQ_ERR_WRONG_STATE);
    EXPECT_EQ(XQ_XML_GetGenICamXML(handle, nullptr, 0, &length), XQ_ERR_WRONG_STATE);
    EXPECT_EQ(XQ_GIGE_SetGvcpTimeout(handle, 5000), XQ_ERR_WRONG_STATE);
    EXPECT_EQ(XQ_CC_CloseDevice(handle), XQ_ERR_WRONG_STATE);
    EXPECT_EQ(XQ_CC_DestroyHandle(handle), XQ_OK);

    const XQ_CODEREADER_DEVICE_INFO reader = absentReader();
    ASSERT_EQ(XQ_CODEREADER_CreateHandle(&handle, &reader), XQ_OK);
    unsigned char* data = nullptr;
    XQ_CODEREADER_FRAME_INFO info;
    EXPECT_EQ(XQ_CODEREADER_StartGrabbing(handle), XQ_ERR_WRONG_STATE);
    EXPECT_EQ(XQ_CODEREADER_StopGrabbing(handle), XQ_ERR_WRONG_STATE);
    EXPECT_EQ(XQ_CODEREADER_GetOneFrameTimeout(handle, &data, &info, 10), XQ_ERR_WRONG_STATE);
    EXPECT_EQ(XQ_CODEREADER_GetOneFrameTimeout(handle, nullptr, &info, 10), XQ_ERR_INVALID_PARAMETER);
    EXPECT_EQ(XQ_CODEREADER_SetCommandValue(handle, "TriggerSoftware"), XQ_ERR_WRONG_STATE);
    EXPECT_EQ(XQ_CODEREADER_CloseDevice(handle), XQ_ERR_WRONG_STATE);
    EXPECT_EQ(XQ_CODEREADER_DestroyHandle(handle), XQ_OK);
}

TEST(ApiGuards, releaseFunctionsTwiceAndWithForeignHandlesDoNoHarm)
{
    const XQ_CC_DEVICE_INFO cameraRecord = absentCamera();
    const XQ_CODEREADER_DEVICE_INFO readerRecord = absentReader();
    XQ_HANDLE camera = nullptr;
    XQ_HANDLE reader = nullptr;
    ASSERT_EQ(XQ_CC_CreateHandle(&camera, &cameraRecord), XQ_OK);
    ASSERT_EQ(XQ_CODEREADER_CreateHandle(&reader, &readerRecord), XQ_OK);

    // The collection's release path stops grabbing with the camera handle.
    EXPECT_EQ(XQ_CODEREADER_StopGrabbing(camera), XQ_ERR_INVALID_HANDLE);
    EXPECT_EQ(XQ_CODEREADER_DestroyHandle(camera), XQ_ERR_INVALID_HANDLE);
    EXPECT_EQ(XQ_CC_CloseDevice(reader), XQ_ERR_INVALID_HANDLE);
    EXPECT_EQ(XQ_CC_DestroyHandle(reader), XQ_ERR_INVALID_HANDLE);
    // Foreign calls left both handles intact.
    XQ_CODEREADER_DECODE_PARAM param{};
    EXPECT_EQ(XQ_CODEREADER_GetDecodeParam(reader, &param), XQ_OK);
    EXPECT_EQ(XQ_CC_CloseDevice(camera), XQ_ERR_WRONG_STATE);

    EXPECT_EQ(XQ_CODEREADER_DestroyHandle(reader), XQ_OK);
    EXPECT_EQ(XQ_CODEREADER_DestroyHandle(reader), XQ_ERR_INVALID_HANDLE);
    EXPECT_EQ(XQ_CODEREADER_StopGrabbing(reader), XQ_ERR_INVALID_HANDLE);
    EXPECT_EQ(XQ_CC_CloseDevice(camera), XQ_ERR_WRONG_STATE);
    EXPECT_EQ(XQ_CC_DestroyHandle(camera), XQ_OK);
    EXPECT_EQ(XQ_CC_CloseDevice(camera), XQ_ERR_INVALID_HANDLE);
    EXPECT_EQ(XQ_CC_DestroyHandle(camera), XQ_ERR_INVALID_HANDLE);

    for (const auto raw : {std::uintptr_t{0}, std::uintptr_t{1}, std::uintptr_t{0xFFFFFFFF}, ~std::uintptr_t{0}}) {
        auto* bogus = reinterpret_cast<XQ_HANDLE>(raw);
        EXPECT_EQ(XQ_CC_DestroyHandle(bogus), XQ_ERR_INVALID_HANDLE);
        EXPECT_EQ(XQ_CODEREADER_DestroyHandle(bogus), XQ_ERR_INVALID_HANDLE);
        EXPECT_EQ(XQ_CC_CloseDevice(bogus), XQ_ERR_INVALID_HANDLE);
        EXPECT_EQ(XQ_CODEREADER_StopGrabbing(bogus), XQ_ERR_INVALID_HANDLE);
    }
}

TEST(ApiGuards, decodeParametersAreCheckedAndDefaulted)
{
    const XQ_CODEREADER_DEVICE_INFO record = absentReader();
    XQ_HANDLE reader = nullptr;
    ASSERT_EQ(XQ_CODEREADER_CreateHandle(&reader, &record), XQ_OK);
    XQ_CODEREADER_DECODE_PARAM param{};
    ASSERT_EQ(XQ_CODEREADER_GetDecodeParam(reader, &param), XQ_OK);
    EXPECT_EQ(param.nFormats, XQ_FORMAT_DEFAULT);
    EXPECT_EQ(param.bTryHarder, 0u);
    XQ_CODEREADER_DECODE_PARAM wanted{};
    wanted.nFormats = XQ_FORMAT_QR | XQ_FORMAT_AZTEC;
    wanted.bTryHarder = 5;
    ASSERT_EQ(XQ_CODEREADER_SetDecodeParam(reader, &wanted), XQ_OK);
    ASSERT_EQ(XQ_CODEREADER_GetDecodeParam(reader, &param), XQ_OK);
    EXPECT_EQ(param.nFormats, XQ_FORMAT_QR | XQ_FORMAT_AZTEC);
    EXPECT_EQ(param.bTryHarder, 1u);
    EXPECT_EQ(param.nJpegQuality, 90u);
    wanted.nJpegQuality = 101;
    EXPECT_EQ(XQ_CODEREADER_SetDecodeParam(reader, &wanted), XQ_ERR_INVALID_PARAMETER);
    wanted.nJpegQuality = 0;
    wanted.nFormats = 0x80000000u;
    EXPECT_EQ(XQ_CODEREADER_SetDecodeParam(reader, &wanted), XQ_ERR_INVALID_PARAMETER);
    EXPECT_EQ(XQ_CODEREADER_SetDecodeParam(reader, nullptr), XQ_ERR_INVALID_PARAMETER);
    EXPECT_EQ(XQ_CODEREADER_DestroyHandle(reader), XQ_OK);
}

TEST(ApiGuards, openingAnAbsentDeviceFailsWithoutHanging)
{
    const XQ_CC_DEVICE_INFO record = absentCamera();
    XQ_HANDLE camera = nullptr;
    ASSERT_EQ(XQ_CC_CreateHandle(&camera, &record), XQ_OK);
    EXPECT_NE(XQ_CC_OpenDevice(camera, XQ_ACCESS_EXCLUSIVE, 0), XQ_OK);
    EXPECT_EQ(XQ_CC_CloseDevice(camera), XQ_ERR_WRONG_STATE);
    EXPECT_EQ(XQ_CC_DestroyHandle(camera), XQ_OK);
    EXPECT_FALSE(XQ_CC_IsDeviceAccessible(&record, XQ_ACCESS_EXCLUSIVE));
}

TEST(ApiGuards, destroyingWhileOtherThreadsUseTheHandleIsSafe)
{
    const XQ_CODEREADER_DEVICE_INFO record = absentReader();
    for (int round = 0; round < 20; ++round) {
        XQ_HANDLE reader = nullptr;
        ASSERT_EQ(XQ_CODEREADER_CreateHandle(&reader, &record), XQ_OK);
        std::atomic<bool> go{false};
        std::vector<std::thread> users;
        for (int t = 0; t < 4; ++t) {
            users.emplace_back([&] {
                while (!go.load()) {
                }
                XQ_CODEREADER_DECODE_PARAM param{};
                for (int i = 0; i < 200; ++i) {
                    const int code = XQ_CODEREADER_GetDecodeParam(reader, &param);
                    EXPECT_TRUE(code == XQ_OK || code == XQ_ERR_INVALID_HANDLE);
                    XQ_CODEREADER_StopGrabbing(reader);
                }
            });
        }
        go = true;
        EXPECT_EQ(XQ_CODEREADER_DestroyHandle(reader), XQ_OK);
        for (auto& user : users)
            user.join();
    }
}

} // namespace
