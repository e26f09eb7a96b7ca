// Both SDKs against the simulator's hostile devices, on loopback inside the
// test's private network namespace: hostile descriptions are refused, a
// stuck open delays no other device and ends when its handle goes, and an
// unterminated model name reads alike in both records and the dump names.
#include "DeviceProcess.h"
#include "SdkTestHelpers.h"
#include "SuiteDevice.h"

#include <arv.h>
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <future>
#include <thread>

namespace {

using namespace std::chrono_literals;

// Devices in the order the simulator places them, from 127.0.0.2 on.
constexpr char kGoodIp[] = "127.0.0.2";
const std::vector<std::string> kHostileKinds = {"bad-zip", "zip-bomb", "huge-xml", "file-url", "slow-xml", "name-32"};
constexpr char kSlowIp[] = "127.0.0.7";
constexpr char kName32Ip[] = "127.0.0.8";

struct StartHostile {
    static bool start(xqtest::DeviceProcess& process, std::string& error)
    {
        return xqtest::startSimulator(process, 1, error, kHostileKinds);
    }
};

class Hostile : public xqtest::DeviceSuite<StartHostile> {
protected:
    void SetUp() override
    {
        DeviceSuite::SetUp();
        ASSERT_EQ(XQ_CODEREADER_EnumDevices(&m_readers, XQ_TLAYER_GIGE), XQ_OK);
        ASSERT_EQ(XQ_CC_EnumDevices(&m_cameras, XQ_TLAYER_GIGE), XQ_OK);
    }
    const XQ_CODEREADER_DEVICE_INFO* reader(const char* ip) const { return xqtest::findDeviceAt(m_readers, ip); }
    const XQ_CC_DEVICE_INFO* camera(const char* ip) const { return xqtest::findDeviceAt(m_cameras, ip); }

    XQ_CODEREADER_DEVICE_INFO_LIST m_readers{};
    XQ_CC_DEVICE_INFO_LIST m_cameras{};
};

TEST_F(Hostile, hostileDescriptionsAreRefusedByBothSdksAndTheProcessCarriesOn)
{
    for (const char* ip : {"127.0.0.3", "127.0.0.4", "127.0.0.5", "127.0.0.6"}) {
        ASSERT_NE(reader(ip), nullptr) << ip;
        XQ_HANDLE handle = nullptr;
        ASSERT_EQ(XQ_CODEREADER_CreateHandle(&handle, reader(ip)), XQ_OK);
        EXPECT_EQ(XQ_CODEREADER_OpenDevice(handle), XQ_ERR_DESCRIPTION_REFUSED) << ip;
        EXPECT_EQ(XQ_CODEREADER_DestroyHandle(handle), XQ_OK);
        ASSERT_EQ(XQ_CC_CreateHandle(&handle, camera(ip)), XQ_OK);
        EXPECT_EQ(XQ_CC_OpenDevice(handle, XQ_ACCESS_EXCLUSIVE, 0), XQ_ERR_DESCRIPTION_REFUSED) << ip;
        EXPECT_EQ(XQ_CC_DestroyHandle(handle), XQ_OK);
    }
}

TEST_F(Hostile, aStuckOpenDelaysNoOtherDeviceAndEndsWhenItsHandleIsReleased)
{
    // Aravis's parser entries and zip reader must be bound to the SDK's
    // wrappers (serialising, and checking archives once more).
    for (const char* entry :
         {"arv_dom_document_new_from_memory", "arv_dom_document_append_from_memory", "arv_zip_new"}) {
        Dl_info bound{};
        ASSERT_NE(::dladdr(::dlsym(RTLD_DEFAULT, entry), &bound), 0) << entry;
        EXPECT_EQ(std::string(bound.dli_fname).find("libaravis"), std::string::npos) << entry << " in " << bound.dli_fname;
    }

    XQ_HANDLE slowReader = nullptr;
    XQ_HANDLE slowCamera = nullptr;
    ASSERT_EQ(XQ_CODEREADER_CreateHandle(&slowReader, reader(kSlowIp)), XQ_OK);
    ASSERT_EQ(XQ_CC_CreateHandle(&slowCamera, camera(kSlowIp)), XQ_OK);
    std::atomic<bool> slowOpensEnded{false};
    auto readerOpen = std::async(std::launch::async, [&] {
        const int result = XQ_CODEREADER_OpenDevice(slowReader);
        slowOpensEnded = true;
        return result;
    });
    auto cameraOpen = std::async(std::launch::async, [&] {
        const int result = XQ_CC_OpenDevice(slowCamera, XQ_ACCESS_EXCLUSIVE, 0);
        slowOpensEnded = true;
        return result;
    });
    std::this_thread::sleep_for(300ms); // let both reach the slow description download

    // Every description read of the slow device takes three tries, so its
    // opens last until the 10 s limit; the good device opens meanwhile.
    XQ_HANDLE good = nullptr;
    ASSERT_EQ(XQ_CODEREADER_CreateHandle(&good, reader(kGoodIp)), XQ_OK);
    EXPECT_EQ(XQ_CODEREADER_OpenDevice(good), XQ_OK);
    EXPECT_EQ(XQ_CODEREADER_DestroyHandle(good), XQ_OK);
    ASSERT_EQ(XQ_CC_CreateHandle(&good, camera(kGoodIp)), XQ_OK);
    EXPECT_EQ(XQ_CC_OpenDevice(good, XQ_ACCESS_EXCLUSIVE, 0), XQ_OK);
    EXPECT_EQ(XQ_CC_DestroyHandle(good), XQ_OK);
    EXPECT_FALSE(slowOpensEnded) << "a good device waited for the slow one";

    // Releasing from this thread ends the pending opens (a hang would fail
    // far beyond the ~100 ms expected).
    EXPECT_EQ(XQ_CODEREADER_DestroyHandle(slowReader), XQ_OK);
    EXPECT_EQ(XQ_CC_CloseDevice(slowCamera), XQ_ERR_WRONG_STATE);
    ASSERT_EQ(readerOpen.wait_for(3s), std::future_status::ready);
    ASSERT_EQ(cameraOpen.wait_for(3s), std::future_status::ready);
    EXPECT_EQ(readerOpen.get(), XQ_ERR_CANCELLED);
    EXPECT_EQ(cameraOpen.get(), XQ_ERR_CANCELLED);
    EXPECT_EQ(XQ_CC_DestroyHandle(slowCamera), XQ_OK);
}

TEST_F(Hostile, aModelFillingItsFieldIsTheSame32BytesInBothRecordsAndInTheDumpNames)
{
    const XQ_CODEREADER_DEVICE_INFO* readerRecord = reader(kName32Ip);
    const XQ_CC_DEVICE_INFO* cameraRecord = camera(kName32Ip);
    ASSERT_NE(readerRecord, nullptr);
    ASSERT_NE(cameraRecord, nullptr);
    const auto* readerModel = reinterpret_cast<const char*>(readerRecord->stGigE.chModelName);
    const auto* cameraModel = reinterpret_cast<const char*>(cameraRecord->stGigE.chModelName);
    EXPECT_EQ(std::strlen(readerModel), 32u);
    EXPECT_EQ(::strnlen(cameraModel, sizeof cameraRecord->stGigE.chModelName), 32u);
    const std::string model(cameraModel, 32);
    EXPECT_EQ(std::string(readerModel), model);

    XQ_HANDLE handle = nullptr;
    ASSERT_EQ(XQ_CC_CreateHandle(&handle, cameraRecord), XQ_OK);
    const xqtest::TemporaryFolder dumps;
    EXPECT_EQ(XQ_CC_SetRegisterDumpFolder(handle, dumps.path().c_str()), XQ_OK);
    ASSERT_EQ(XQ_CC_OpenDevice(handle, XQ_ACCESS_EXCLUSIVE, 0), XQ_OK);
    EXPECT_EQ(XQ_CC_DestroyHandle(handle), XQ_OK);
    EXPECT_TRUE(std::filesystem::exists(dumps.path() + "/" + model + "_regfile.dat"));
    EXPECT_TRUE(std::filesystem::exists(dumps.path() + "/" + model + "_strRegFile.dat"));
}

} // namespace
