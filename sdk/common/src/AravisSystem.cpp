#include "AravisSystem.h"

namespace xq {

std::mutex& aravisSystemMutex()
{
    static std::mutex mutex;
    return mutex;
}

} // namespace xq
