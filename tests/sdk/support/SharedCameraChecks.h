// Checks that hold for any camera the SDK opens, run against both the fake
// camera and the simulator.
#pragma once

#include "SdkTestHelpers.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace xqtest {

// Every readable integer the SDK's tree walk finds reads the same through the
// SDK as through an independent Aravis client at ip.
inline void expectIntegerReadsAgreeWithAravis(const std::function<XQ_HANDLE()>& openCamera, const char* ip)
{
    std::vector<std::string> integers;
    {
        XQ_HANDLE camera = openCamera();
        const ScopeExit releaseCamera([camera] { XQ_CC_DestroyHandle(camera); });
        for (const auto& [name, node] : walkTree(camera))
            if (node.type == XQ_IFT_IINTEGER && (node.access == XQ_AM_RO || node.access == XQ_AM_RW))
                integers.push_back(name);
    }
    ASSERT_GE(integers.size(), 5u);
    const auto expected = stableAravisIntegers(ip, integers);
    ASSERT_GE(expected.size(), 5u);
    XQ_HANDLE camera = openCamera();
    const ScopeExit releaseCamera([camera] { XQ_CC_DestroyHandle(camera); });
    for (const auto& [name, value] : expected) {
        std::int64_t read = 0;
        ASSERT_EQ(XQ_CC_GetIntValue(camera, name.c_str(), &read), XQ_OK) << name;
        EXPECT_EQ(read, value) << name;
    }
}

} // namespace xqtest
