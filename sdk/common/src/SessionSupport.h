// Pieces every device session shares: reporting a lost device to the
// handle's callback, the state check before a call, and the heartbeat
// time-out setting.
#pragma once

#include "DeviceLink.h"
#include "ExceptionSlot.h"

#include <memory>
#include <mutex>

namespace xq {

// Hands a loss notice from Aravis's thread to the dispatcher thread. The
// callback is looked up when the loss is reported, so one registered after
// opening is honoured; a released handle reports nothing.
DeviceLink::LostHandler lossReporter(std::weak_ptr<ExceptionSlot> slot);

// XQ_OK if the link is open and the device not lost; callers hold the
// session lock.
int linkState(const std::unique_ptr<DeviceLink>& link);

// Runs operation(tree()) under sessionMutex if the link is usable; else the
// link's state code.
template <class Tree, class Operation>
int whileLinkUsable(std::mutex& sessionMutex, const std::unique_ptr<DeviceLink>& link, Tree&& tree,
                    Operation&& operation)
{
    const std::lock_guard<std::mutex> lock(sessionMutex);
    if (const int state = linkState(link); state != XQ_OK)
        return state;
    return operation(tree());
}

// Checks the time-out range, then sets it on the link under sessionMutex.
int setGvcpTimeout(std::mutex& sessionMutex, const std::unique_ptr<DeviceLink>& link, unsigned int milliseconds);

} // namespace xq
