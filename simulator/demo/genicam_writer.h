#pragma once
// Writes a GenICam description (schema 1.1) for a feature table.

#include "feature_table.h"

#include <string>

namespace quorvex::sim {

struct GenicamHeader final {
    std::string modelName;
    std::string vendorName;
    std::string toolTip;
    std::string productGuid;
    std::string versionGuid;
    int majorVersion = 1;
    int minorVersion = 0;
    int subMinorVersion = 0;
};

std::string writeGenicamXml(const GenicamHeader& header, const FeatureTable& table);

// Names of the hidden nodes behind a feature, shared with tests.
std::string registerNodeName(const std::string& feature);
std::string availabilityNodeName(const std::string& feature);

} // namespace quorvex::sim
