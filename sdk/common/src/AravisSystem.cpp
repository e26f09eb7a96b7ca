#include "AravisSystem.h"

// One lock for the whole process, shared by both SDK libraries: Aravis's
// discovery and its GenICam XML parser keep global state, so opening in one
// library must not overlap parsing in the other. Exported weak, the dynamic
// linker binds every library's calls to the same definition.
extern "C" __attribute__((visibility("default"), weak)) std::mutex* xq_sdk_aravis_lock()
{
    static std::mutex mutex;
    return &mutex;
}

namespace xq {

std::mutex& aravisSystemMutex() { return *xq_sdk_aravis_lock(); }

} // namespace xq
