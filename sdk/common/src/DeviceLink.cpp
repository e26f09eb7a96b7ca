#include "DeviceLink.h"

#include "AravisSystem.h"
#include "ErrorMapping.h"
#include "XQSdkDefs.h"

namespace xq {
namespace {

constexpr guint64 kCcpRegister = 0x0A00;
constexpr guint32 kCcpExclusive = 0x1;
constexpr guint64 kHeartbeatTimeoutRegister = 0x0938;

} // namespace

DeviceLink::DeviceLink(GObjectPtr<ArvDevice> device, unsigned int accessMode)
    : m_device(std::move(device)), m_accessMode(accessMode), m_shared(std::make_shared<Shared>())
{
}

int DeviceLink::open(const OpenRequest& request, LostHandler onLost, std::unique_ptr<DeviceLink>& link)
{
    const unsigned int mode = request.accessMode;
    if (mode != XQ_ACCESS_EXCLUSIVE && mode != XQ_ACCESS_CONTROL && mode != XQ_ACCESS_MONITOR)
        return XQ_ERR_INVALID_PARAMETER;

    GErrorSlot error;
    GObjectPtr<ArvDevice> device;
    {
        // Opening by address does not touch the device list, but opening a
        // USB device by id does; both share Aravis's interface objects.
        const std::lock_guard<std::mutex> lock(aravisSystemMutex());
        const std::string name =
            request.transport == Transport::GigE ? formatIpv4(request.ip) : request.deviceId;
        if (name.empty() || (request.transport == Transport::GigE && request.ip == 0))
            return XQ_ERR_INVALID_PARAMETER;
        device.reset(arv_open_device(name.c_str(), error.out()));
    }
    if (!device) {
        const int code = errorCodeOf(error.get());
        return code == XQ_ERR_ACCESS_DENIED || code == XQ_ERR_GENICAM ? code : XQ_ERR_NOT_FOUND;
    }

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
