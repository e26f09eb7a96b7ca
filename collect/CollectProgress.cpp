#include "CollectProgress.h"

namespace collect {

int boolPassProgress(int boolIndex, int boolCount, int enumCount)
{
    const float share = static_cast<float>(boolIndex) / static_cast<float>(boolCount + enumCount);
    return static_cast<int>(static_cast<double>(share) * 0.9 * 100 + 10);
}

int enumPassProgress(int enumIndex, int boolCount, int enumCount)
{
    const float share = static_cast<float>(boolCount + enumIndex) / static_cast<float>(enumCount + boolCount);
    return static_cast<int>(static_cast<double>(share) * 0.9 * 100 + 10);
}

} // namespace collect
