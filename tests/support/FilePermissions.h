#pragma once
// File permissions that hold even for a privileged test user.

#include <linux/capability.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace xqtest {

// Permission bits bind root too once the capabilities that override them
// are out of the calling thread's effective set; restored on destruction.
class FilePermissionsEnforced final {
public:
    FilePermissionsEnforced()
    {
        if (::syscall(SYS_capget, &m_header, m_saved) != 0)
            return;
        __user_cap_data_struct reduced[2] = {m_saved[0], m_saved[1]};
        for (const int cap : {CAP_DAC_OVERRIDE, CAP_DAC_READ_SEARCH, CAP_FOWNER})
            reduced[cap / 32].effective &= ~(1u << (cap % 32));
        m_active = ::syscall(SYS_capset, &m_header, reduced) == 0;
    }
    ~FilePermissionsEnforced()
    {
        if (m_active)
            ::syscall(SYS_capset, &m_header, m_saved);
    }
    FilePermissionsEnforced(const FilePermissionsEnforced&) = delete;
    FilePermissionsEnforced& operator=(const FilePermissionsEnforced&) = delete;

    bool isActive() const { return m_active; }

private:
    __user_cap_header_struct m_header{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct m_saved[2]{};
    bool m_active = false;
};

} // namespace xqtest
