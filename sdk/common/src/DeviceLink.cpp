#include "DeviceLink.h"

#include "AravisSystem.h"
#include "DescriptionGuard.h"
#include "ErrorMapping.h"
#include "GvcpProbe.h"
#include "XQSdkDefs.h"

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <thread>

namespace xq {
namespace {

constexpr guint64 kCcpRegister = 0x0A00;
constexpr guint32 kCcpExclusive = 0x1;
constexpr guint64 kHeartbeatTimeoutRegister = 0x0938;
constexpr auto kStopCheckInterval = std::chrono::milliseconds(50);

int openFailureCode(const GError* error)
{
    const int code = errorCodeOf(error);
    return code == XQ_ERR_ACCESS_DENIED || code == XQ_ERR_GENICAM ? code : XQ_ERR_NOT_FOUND;
}

// Aravis's constructor downloads and parses the description and cannot be
// interrupted, so it runs on a thread of its own; a cancelled caller leaves
// it behind, and the device it makes is dropped there when it ends.
struct PendingOpen {
    std::mutex mutex;
    std::condition_variable finished;
    bool done = false;
    int code = XQ_OK;
    GObjectPtr<ArvDevice> device;
};

int openGigE(std::uint32_t deviceIp, const std::function<bool()>& stop, GObjectPtr<ArvDevice>& device)
{
    const std::uint32_t interfaceIp = GvcpProbe(deviceIp).localAddress();
    if (interfaceIp == 0)
        return XQ_ERR_NOT_FOUND;
    auto pending = std::make_shared<PendingOpen>();
    std::thread([pending, deviceIp, interfaceIp] {
        const GObjectPtr<GInetAddress> local(g_inet_address_new_from_string(formatIpv4(interfaceIp).c_str()));
        const GObjectPtr<GInetAddress> remote(g_inet_address_new_from_string(formatIpv4(deviceIp).c_str()));
        GErrorSlot error;
        GObjectPtr<ArvDevice> opened(arv_gv_device_new(local.get(), remote.get(), error.out()));
        const int code = opened ? XQ_OK : openFailureCode(error.get());
        const std::lock_guard<std::mutex> lock(pending->mutex);
        pending->device = std::move(opened);
        pending->code = code;
        pending->done = true;
        pending->finished.notify_all();
    }).detach();

    std::unique_lock<std::mutex> lock(pending->mutex);
    while (!pending->finished.wait_for(lock, kStopCheckInterval, [&] { return pending->done; })) {
        if (stop && stop())
            return XQ_ERR_CANCELLED;
    }
    device = std::move(pending->device);
    return pending->code;
}

int openUsb(const std::string& deviceId, GObjectPtr<ArvDevice>& device)
{
    // Opening by id searches Aravis's device lists.
    const std::lock_guard<std::mutex> lock(aravisSystemMutex());
    GErrorSlot error;
    device.reset(arv_open_device(deviceId.c_str(), error.out()));
    return device ? XQ_OK : openFailureCode(error.get());
}

} // namespace

DeviceLink::DeviceLink(GObjectPtr<ArvDevice> device, unsigned int accessMode)
    : m_device(std::move(device)), m_accessMode(accessMode), m_shared(std::make_shared<Shared>())
{
}

int DeviceLink::open(const OpenRequest& request, const std::function<bool()>& stop, LostHandler onLost,
                     std::unique_ptr<DeviceLink>& link)
{
    const unsigned int mode = request.accessMode;
    if (mode != XQ_ACCESS_EXCLUSIVE && mode != XQ_ACCESS_CONTROL && mode != XQ_ACCESS_MONITOR)
        return XQ_ERR_INVALID_PARAMETER;

    GObjectPtr<ArvDevice> device;
    if (request.transport == Transport::GigE) {
        if (request.ip == 0)
            return XQ_ERR_INVALID_PARAMETER;
        std::string reason;
        if (const int code = checkDeviceDescription(request.ip, stop, reason); code != XQ_OK) {
            if (code == XQ_ERR_DESCRIPTION_REFUSED)
                std::fprintf(stderr, "XQ SDK: device %s: description refused: %s\n", formatIpv4(request.ip).c_str(),
                             reason.c_str());
            return code;
        }
        if (const int code = openGigE(request.ip, stop, device); code != XQ_OK)
            return code;
    } else {
        if (request.deviceId.empty())
            return XQ_ERR_INVALID_PARAMETER;
        if (const int code = openUsb(request.deviceId, device); code != XQ_OK)
            return code;
    }
    GErrorSlot error;

    // Aravis never caches registers unless told to; make sure of it, since
    // every read must reach the device.
    arv_device_set_register_cache_policy(device.get(), ARV_REGISTER_CACHE_POLICY_DISABLE);

    std::unique_ptr<DeviceLink> opened(new DeviceLink(std::move(device), mode));
    if (ArvGvDevice* gv = opened->gvDevice()) {
        const bool controller = arv_gv_device_is_controller(gv);
        if (mode == XQ_ACCESS_MONITOR) {
            if (controller)
                arv_gv_device_leave_control(gv, nullptr);
        } else {
            if (!controller)
                return XQ_ERR_ACCESS_DENIED;
            if (mode == XQ_ACCESS_EXCLUSIVE
                && !arv_device_write_register(opened->device(), kCcpRegister, kCcpExclusive, error.out()))
                return XQ_ERR_ACCESS_DENIED;
        }
    }

    opened->m_shared->onLost = std::move(onLost);
    auto* sharedRef = new std::shared_ptr<Shared>(opened->m_shared);
    opened->m_lostHandlerId = g_signal_connect_data(opened->device(), "control-lost", G_CALLBACK(&DeviceLink::onControlLost),
                                                    sharedRef, &DeviceLink::releaseSharedRef, GConnectFlags(0));
    link = std::move(opened);
    return XQ_OK;
}

DeviceLink::~DeviceLink()
{
    {
        const std::lock_guard<std::mutex> lock(m_shared->mutex);
        m_shared->onLost = nullptr;
    }
    if (m_lostHandlerId != 0)
        g_signal_handler_disconnect(m_device.get(), m_lostHandlerId);
    // Releasing the device leaves control and joins Aravis's heartbeat thread.
    m_device.reset();
}

ArvGvDevice* DeviceLink::gvDevice() const
{
    return ARV_IS_GV_DEVICE(m_device.get()) ? ARV_GV_DEVICE(m_device.get()) : nullptr;
}

bool DeviceLink::isController() const
{
    ArvGvDevice* gv = gvDevice();
    return gv ? arv_gv_device_is_controller(gv) : true;
}

int DeviceLink::setHeartbeatTimeout(unsigned int milliseconds)
{
    if (!gvDevice())
        return XQ_ERR_NOT_SUPPORTED;
    if (isLost())
        return XQ_ERR_DEVICE_LOST;
    GErrorSlot error;
    if (!arv_device_write_register(m_device.get(), kHeartbeatTimeoutRegister, milliseconds, error.out()))
        return errorCodeOf(error.get());
    return XQ_OK;
}

void DeviceLink::onControlLost(ArvDevice*, gpointer data)
{
    const auto& shared = *static_cast<std::shared_ptr<Shared>*>(data);
    if (shared->lost.exchange(true))
        return;
    LostHandler handler;
    {
        const std::lock_guard<std::mutex> lock(shared->mutex);
        handler = shared->onLost;
    }
    if (handler)
        handler();
}

void DeviceLink::releaseSharedRef(gpointer data, GClosure*)
{
    delete static_cast<std::shared_ptr<Shared>*>(data);
}

} // namespace xq
