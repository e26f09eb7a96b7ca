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

// Every readable integer, boolean and enumeration the SDK's tree walk finds
// reads the same through the SDK as through an independent Aravis client at
// ip; returns how many were compared.
inline std::size_t expectValueReadsAgreeWithAravis(const std::function<XQ_HANDLE()>& openCamera, const char* ip)
{
    std::vector<std::string> names;
    {
        XQ_HANDLE camera = openCamera();
        const ScopeExit releaseCamera([camera] { XQ_CC_DestroyHandle(camera); });
        for (const auto& [name, node] : walkTree(camera)) {
            const bool valueType = node.type == XQ_IFT_IINTEGER || node.type == XQ_IFT_IBOOLEAN
                || node.type == XQ_IFT_IENUMERATION;
            // The control privilege tells which of the two clients asks.
            if (valueType && (node.access == XQ_AM_RO || node.access == XQ_AM_RW) && name != "GevCCP")
                names.push_back(name);
        }
    }
    const auto expected = stableAravisValues(ip, names);
    XQ_HANDLE camera = openCamera();
    const ScopeExit releaseCamera([camera] { XQ_CC_DestroyHandle(camera); });
    for (const auto& [name, value] : expected) {
        AravisValue read;
        XQ_ENUMVALUE enumeration{};
        bool flag = false;
        if (XQ_CC_GetEnumValue(camera, name.c_str(), &enumeration) == XQ_OK) {
            read.value = enumeration.nCurrentValue;
            read.entries.assign(enumeration.nSupportedValues, enumeration.nSupportedValues + enumeration.nSupportedCount);
        } else if (XQ_CC_GetBoolValue(camera, name.c_str(), &flag) == XQ_OK) {
            read.value = flag ? 1 : 0;
        } else {
            EXPECT_EQ(XQ_CC_GetIntValue(camera, name.c_str(), &read.value), XQ_OK) << name;
        }
        EXPECT_EQ(read.value, value.value) << name;
        EXPECT_EQ(read.entries, value.entries) << name;
    }
    return expected.size();
}

} // namespace xqtest
