#pragma once
// Progress of the feature passes: 10 after the recording walk, then the
// booleans and enumerations share the range up to 100 in proportion to the
// features done. The float division before the double arithmetic is kept so
// the values match the suite's other tools to the percent.

namespace collect {

constexpr int kProgressAfterImages = 9;
constexpr int kProgressAfterRecording = 10;
constexpr int kProgressAfterPasses = 99;
constexpr int kProgressDone = 100;

// After boolean boolIndex (0-based) of boolCount, with enumCount enumerations.
int boolPassProgress(int boolIndex, int boolCount, int enumCount);
// After enumeration enumIndex (0-based) of enumCount, with boolCount booleans.
int enumPassProgress(int enumIndex, int boolCount, int enumCount);

} // namespace collect
