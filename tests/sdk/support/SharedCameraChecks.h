// Checks that hold for any camera the SDK opens, run against both the fake
// camera and the simulator.
#pragma once

#include "SdkTestHelpers.h"

#include <arv.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace xqtest {

// An Aravis client of the test's own: "another client" to the SDKs.
struct AravisClient {
    explicit AravisClient(const char* ip) : device(arv_open_device(ip, nullptr)) {}
    ~AravisClient()
    {
        if (device)
            g_object_unref(device);
    }
    ArvDevice* device;
};

// Every node the SDK's tree walk finds has the access mode an independent
// Aravis client at ip evaluates, and every readable integer, boolean,
// enumeration, float and string reads the same through both; returns how
// many values were compared.
inline std::size_t expectValueReadsAgreeWithAravis(const std::function<XQ_HANDLE()>& openCamera, const char* ip)
{
    std::map<std::string, unsigned int> types;
    std::map<std::string, NodeSummary> nodes;
    {
        XQ_HANDLE camera = openCamera();
        const ScopeExit releaseCamera([camera] { XQ_CC_DestroyHandle(camera); });
        nodes = walkTree(camera);
    }
    std::vector<std::string> all;
    for (const auto& [name, node] : nodes) {
        all.push_back(name);
        const bool valueType = node.type == XQ_IFT_IINTEGER || node.type == XQ_IFT_IBOOLEAN
            || node.type == XQ_IFT_IENUMERATION || node.type == XQ_IFT_IFLOAT || node.type == XQ_IFT_ISTRING;
        // The control privilege tells which of the two clients asks.
        if (valueType && (node.access == XQ_AM_RO || node.access == XQ_AM_RW) && name != "GevCCP")
            types[name] = node.type;
    }
    const auto modes = aravisAccessModes(ip, all);
    EXPECT_GE(modes.size(), nodes.size() / 2);
    for (const auto& [name, mode] : modes)
        EXPECT_EQ(nodes.at(name).access, mode) << name;
    std::vector<std::string> names;
    for (const auto& entry : types)
        names.push_back(entry.first);
    const auto expected = stableAravisValues(ip, names);
    XQ_HANDLE camera = openCamera();
    const ScopeExit releaseCamera([camera] { XQ_CC_DestroyHandle(camera); });
    for (const auto& [name, value] : expected) {
        AravisValue read;
        int result = XQ_OK;
        switch (types[name]) {
        case XQ_IFT_IENUMERATION: {
            XQ_ENUMVALUE enumeration{};
            result = XQ_CC_GetEnumValue(camera, name.c_str(), &enumeration);
            read.value = enumeration.nCurrentValue;
            read.entries.assign(enumeration.nSupportedValues, enumeration.nSupportedValues + enumeration.nSupportedCount);
            break;
        }
        case XQ_IFT_IBOOLEAN: {
            bool flag = false;
            result = XQ_CC_GetBoolValue(camera, name.c_str(), &flag);
            read.value = flag ? 1 : 0;
            break;
        }
        case XQ_IFT_IFLOAT:
            result = XQ_CC_GetFloatValue(camera, name.c_str(), &read.number);
            break;
        case XQ_IFT_ISTRING: {
            XQ_CC_STRINGVALUE text{};
            result = XQ_CC_GetStringValue(camera, name.c_str(), &text);
            read.text = text.chValue;
            break;
        }
        default:
            result = XQ_CC_GetIntValue(camera, name.c_str(), &read.value);
        }
        EXPECT_EQ(result, XQ_OK) << name;
        EXPECT_EQ(read, value) << name << ": " << read.value << " " << read.number << " '" << read.text << "' against "
                               << value.value << " " << value.number << " '" << value.text << "'";
    }
    return expected.size();
}

} // namespace xqtest
