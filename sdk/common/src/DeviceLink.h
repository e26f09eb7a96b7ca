// One opened device: the Aravis connection, the control privilege asked for,
// and the notice when the device is lost.
#pragma once

#include "Discovery.h"
#include "GObjectPtr.h"

#include <arv.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

namespace xq {

struct OpenRequest {
    Transport transport = Transport::GigE;
    std::uint32_t ip = 0;      // GigE: device address
    std::string deviceId;      // USB3: Aravis device id
    unsigned int accessMode = 0; // XQ_ACCESS_*
};

class DeviceLink final {
public:
    using LostHandler = std::function<void()>;

    // Opens the device; returns XQ_OK and sets link, or an XQ_ERR_* code.
    // A GigE device's description is checked first (DescriptionGuard.h;
    // XQ_ERR_DESCRIPTION_REFUSED), then Aravis opens it on its address
    // without any process-wide lock. Once stop() returns true the call ends
    // within about 50 ms with XQ_ERR_CANCELLED. onLost runs once, on an
    // Aravis thread, when control is lost; it must only hand the news on.
    static int open(const OpenRequest& request, const std::function<bool()>& stop, LostHandler onLost,
                    std::unique_ptr<DeviceLink>& link);

    ~DeviceLink();
    DeviceLink(const DeviceLink&) = delete;
    DeviceLink& operator=(const DeviceLink&) = delete;

    ArvDevice* device() const { return m_device.get(); }
    ArvGvDevice* gvDevice() const;
    bool isController() const;
    bool isLost() const { return m_shared->lost.load(); }
    unsigned int accessMode() const { return m_accessMode; }

    // Device-side heartbeat time-out in milliseconds.
    int setHeartbeatTimeout(unsigned int milliseconds);

private:
    struct Shared {
        std::atomic<bool> lost{false};
        std::mutex mutex;
        LostHandler onLost;
    };

    DeviceLink(GObjectPtr<ArvDevice> device, unsigned int accessMode);
    static void onControlLost(ArvDevice* device, gpointer data);
    static void releaseSharedRef(gpointer data, GClosure* closure);

    GObjectPtr<ArvDevice> m_device;
    unsigned int m_accessMode;
    std::shared_ptr<Shared> m_shared;
    gulong m_lostHandlerId = 0;
};

} // namespace xq
