// Default of every control. The single resets and ppl_reset_all_controls share them.
#pragma once

#include <stdint.h>

namespace ppl {

constexpr uint8_t kDefaultMeanCollection = 1;
constexpr uint32_t kUnityGain = 256;                                                            // 8.8
constexpr int32_t kDefaultSensorMatrix[9] = {389, -15, -120, -118, 509, -137, -19, -229, 503};  // 8.8
constexpr uint32_t kDefaultSensorMatrixIndexUpperBound = 12;
constexpr int32_t kDefaultMediumDiff = 24, kDefaultMediumHot = 240, kDefaultMediumDead = 16;
constexpr int32_t kDefaultMediumHotPercentage = 80, kDefaultMediumDeadPercentage = 48;  // 8.8
constexpr int32_t kDefaultDifference = 25, kDefaultSumOrDifference = 30;                // to either side of 0
constexpr uint32_t kDefaultEdgeThreshold = 100, kDefaultEdgeThreshold2 = 1530, kDefaultEdgeFactor = 32;
constexpr uint32_t kDefaultG12T = 60, kDefaultR8T = 40, kDefaultB8T = 40;
constexpr uint32_t kDefaultCfaT0 = 10, kDefaultCfaT1 = 15, kDefaultIntl3T = 50;
constexpr uint32_t kDefaultSaturation = 256;  // 8.8
constexpr int32_t kDefaultHue = 0;
constexpr int32_t kDefaultGbGrDiff = 10;

}  // namespace ppl
