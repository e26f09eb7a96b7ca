#include "SessionSupport.h"

#include "ExceptionDispatcher.h"

namespace xq {
namespace {

constexpr unsigned int kShortestGvcpTimeoutMs = 100;
constexpr unsigned int kLongestGvcpTimeoutMs = 600000;

} // namespace

DeviceLink::LostHandler lossReporter(std::weak_ptr<ExceptionSlot> slot)
{
    return [slot = std::move(slot)] {
        ExceptionDispatcher::instance().post([slot] {
            if (const auto alive = slot.lock())
                alive->invoke(XQ_EXCEPTION_DEVICE_LOST);
        });
    };
}

int linkState(const std::unique_ptr<DeviceLink>& link)
{
    if (!link)
        return XQ_ERR_WRONG_STATE;
    if (link->isLost())
        return XQ_ERR_DEVICE_LOST;
    return XQ_OK;
}

int setGvcpTimeout(std::mutex& sessionMutex, const std::unique_ptr<DeviceLink>& link, unsigned int milliseconds)
{
    if (milliseconds < kShortestGvcpTimeoutMs || milliseconds > kLongestGvcpTimeoutMs)
        return XQ_ERR_INVALID_PARAMETER;
    const std::lock_guard<std::mutex> lock(sessionMutex);
    if (const int state = linkState(link); state != XQ_OK)
        return state;
    return link->setHeartbeatTimeout(milliseconds);
}

} // namespace xq
