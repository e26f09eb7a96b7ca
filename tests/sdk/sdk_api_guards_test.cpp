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

// Records of a device nobody serves (127.0.0.99): creating handles needs no device.
class ApiGuards : public ::testing::Test {
protected:
    ApiGuards()
    {
        m_camera.nTLayerType = XQ_TLAYER_GIGE;
        m_camera.stGigE.nCurrentIp = 0x7F000063;
        m_reader.nTLayerType = XQ_TLAYER_GIGE;
        m_reader.stGigE.nCurrentIp = 0x7F000063;
    }
    XQ_CC_DEVICE_INFO m_camera{};
    XQ_CODEREADER_DEVICE_INFO m_reader{};
};

// One case per kind of guard: missing pointer, unknown transport, unopened
// handle, unsupported mode.
TEST_F(ApiGuards, nullArgumentsUnknownTransportsAndUnopenedHandlesAreRefused)
{
    XQ_CC_DEVICE_INFO_LIST cameras;
    EXPECT_EQ(XQ_CC_EnumDevices(nullptr, XQ_TLAYER_GIGE), XQ_ERR_INVALID_PARAMETER);
    EXPECT_EQ(XQ_CC_EnumDevices(&cameras, 2), XQ_ERR_INVALID_PARAMETER);
    EXPECT_FALSE(XQ_CODEREADER_IsDeviceAccessible(nullptr, XQ_ACCESS_EXCLUSIVE));
    XQ_HANDLE handle = nullptr;
    EXPECT_EQ(XQ_CC_CreateHandle(&handle, nullptr), XQ_ERR_INVALID_PARAMETER);
    EXPECT_EQ(handle, nullptr);
    XQ_CC_DEVICE_INFO unknownTransport = m_camera;
    unknownTransport.nTLayerType = 2;
    EXPECT_EQ(XQ_CC_CreateHandle(&handle, &unknownTransport), XQ_ERR_INVALID_PARAMETER);

    ASSERT_EQ(XQ_CC_CreateHandle(&handle, &m_camera), XQ_OK);
    std::int64_t integer = 0;
    EXPECT_EQ(XQ_CC_GetIntValue(handle, "Width", nullptr), XQ_ERR_INVALID_PARAMETER);
    EXPECT_EQ(XQ_CC_GetIntValue(handle, "Width", &integer), XQ_ERR_WRONG_STATE);
    EXPECT_EQ(XQ_GIGE_SetGvcpTimeout(handle, 5), XQ_ERR_INVALID_PARAMETER);
    EXPECT_EQ(XQ_CC_OpenDevice(handle, 1, 7), XQ_ERR_NOT_SUPPORTED) << "switch-over keys are not offered";
    EXPECT_EQ(XQ_CC_CloseDevice(handle), XQ_ERR_WRONG_STATE);
    EXPECT_EQ(XQ_CC_DestroyHandle(handle), XQ_OK);

    ASSERT_EQ(XQ_CODEREADER_CreateHandle(&handle, &m_reader), XQ_OK);
    unsigned char* data = nullptr;
    XQ_CODEREADER_FRAME_INFO info;
    EXPECT_EQ(XQ_CODEREADER_StartGrabbing(handle), XQ_ERR_WRONG_STATE);
    EXPECT_EQ(XQ_CODEREADER_GetOneFrameTimeout(handle, &data, &info, 10), XQ_ERR_WRONG_STATE);
    EXPECT_EQ(XQ_CODEREADER_DestroyHandle(handle), XQ_OK);
}

TEST_F(ApiGuards, releaseFunctionsTwiceAndWithForeignHandlesDoNoHarm)
{
    XQ_HANDLE camera = nullptr;
    XQ_HANDLE reader = nullptr;
    ASSERT_EQ(XQ_CC_CreateHandle(&camera, &m_camera), XQ_OK);
    ASSERT_EQ(XQ_CODEREADER_CreateHandle(&reader, &m_reader), XQ_OK);

    // The collection's release path stops grabbing with the camera handle.
    EXPECT_EQ(XQ_CODEREADER_StopGrabbing(camera), XQ_ERR_INVALID_HANDLE);
    EXPECT_EQ(XQ_CODEREADER_DestroyHandle(camera), XQ_ERR_INVALID_HANDLE);
    EXPECT_EQ(XQ_CC_DestroyHandle(reader), XQ_ERR_INVALID_HANDLE);
    // Foreign calls left both handles intact.
    XQ_CODEREADER_DECODE_PARAM param{};
    EXPECT_EQ(XQ_CODEREADER_GetDecodeParam(reader, &param), XQ_OK);
    EXPECT_EQ(XQ_CC_CloseDevice(camera), XQ_ERR_WRONG_STATE);

    EXPECT_EQ(XQ_CODEREADER_DestroyHandle(reader), XQ_OK);
    EXPECT_EQ(XQ_CODEREADER_DestroyHandle(reader), XQ_ERR_INVALID_HANDLE);
    EXPECT_EQ(XQ_CC_DestroyHandle(camera), XQ_OK);
    EXPECT_EQ(XQ_CC_CloseDevice(camera), XQ_ERR_INVALID_HANDLE);

    for (const auto raw : {std::uintptr_t{0}, std::uintptr_t{1}, ~std::uintptr_t{0}}) {
        auto* bogus = reinterpret_cast<XQ_HANDLE>(raw);
        EXPECT_EQ(XQ_CC_DestroyHandle(bogus), XQ_ERR_INVALID_HANDLE);
        EXPECT_EQ(XQ_CODEREADER_StopGrabbing(bogus), XQ_ERR_INVALID_HANDLE);
    }
}

TEST_F(ApiGuards, decodeParametersAreCheckedAndNormalised)
{
    XQ_HANDLE reader = nullptr;
    ASSERT_EQ(XQ_CODEREADER_CreateHandle(&reader, &m_reader), XQ_OK);
    XQ_CODEREADER_DECODE_PARAM wanted{};
    wanted.nFormats = XQ_FORMAT_QR | XQ_FORMAT_AZTEC;
    wanted.bTryHarder = 5;
    ASSERT_EQ(XQ_CODEREADER_SetDecodeParam(reader, &wanted), XQ_OK);
    XQ_CODEREADER_DECODE_PARAM param{};
    ASSERT_EQ(XQ_CODEREADER_GetDecodeParam(reader, &param), XQ_OK);
    EXPECT_EQ(param.nFormats, XQ_FORMAT_QR | XQ_FORMAT_AZTEC);
    EXPECT_EQ(param.bTryHarder, 1u);
    wanted.nJpegQuality = 101;
    EXPECT_EQ(XQ_CODEREADER_SetDecodeParam(reader, &wanted), XQ_ERR_INVALID_PARAMETER);
    wanted.nJpegQuality = 0;
    wanted.nFormats = 0x80000000u;
    EXPECT_EQ(XQ_CODEREADER_SetDecodeParam(reader, &wanted), XQ_ERR_INVALID_PARAMETER);
    EXPECT_EQ(XQ_CODEREADER_DestroyHandle(reader), XQ_OK);
}

TEST_F(ApiGuards, openingAnAbsentDeviceFailsWithoutHanging)
{
    XQ_HANDLE camera = nullptr;
    ASSERT_EQ(XQ_CC_CreateHandle(&camera, &m_camera), XQ_OK);
    EXPECT_NE(XQ_CC_OpenDevice(camera, XQ_ACCESS_EXCLUSIVE, 0), XQ_OK);
    EXPECT_EQ(XQ_CC_CloseDevice(camera), XQ_ERR_WRONG_STATE);
    EXPECT_EQ(XQ_CC_DestroyHandle(camera), XQ_OK);
    EXPECT_FALSE(XQ_CC_IsDeviceAccessible(&m_camera, XQ_ACCESS_EXCLUSIVE));
}

TEST_F(ApiGuards, destroyingWhileOtherThreadsUseTheHandleIsSafe)
{
    for (int round = 0; round < 20; ++round) {
        XQ_HANDLE reader = nullptr;
        ASSERT_EQ(XQ_CODEREADER_CreateHandle(&reader, &m_reader), XQ_OK);
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
