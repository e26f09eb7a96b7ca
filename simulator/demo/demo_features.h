#pragma once
// The feature catalogue of the demo code reader.

#include "feature_table.h"

#include <cstdint>

namespace quorvex::sim::demo {

constexpr std::uint32_t kRegisterBase = 0x00010000;

// Values the device itself acts on.
namespace value {
constexpr std::int64_t kAcquisitionSingleFrame = 0;
constexpr std::int64_t kAcquisitionMultiFrame = 1;
constexpr std::int64_t kAcquisitionContinuous = 2;
constexpr std::int64_t kTriggerSourceTcpStart = 4;
constexpr std::int64_t kTriggerSourceUdpStart = 5;
constexpr std::int64_t kTriggerSourceSoftware = 7;
constexpr std::int64_t kRunningModeNormal = 2;
constexpr std::int64_t kProtocolTcpServer = 0;
constexpr std::int64_t kProtocolTcpClient = 1;
} // namespace value

FeatureTable buildCodeReaderFeatures();

} // namespace quorvex::sim::demo
