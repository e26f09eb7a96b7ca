#pragma once
// Network tests and benchmarks run as root of a private namespace, where
// Aravis would receive through a packet socket; an ordinary user's client
// cannot, and gets the plain socket receiver. Without the capability to
// open one, so does this process (threads created later included).

#include <linux/capability.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace quorvex::sim::test {

inline void receiveLikeAnOrdinaryUser()
{
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct capabilities[2]{};
    if (syscall(SYS_capget, &header, capabilities) != 0)
        return;
    for (__u32* set : {&capabilities[0].effective, &capabilities[0].permitted, &capabilities[0].inheritable})
        *set &= ~(1u << CAP_NET_RAW);
    syscall(SYS_capset, &header, capabilities);
}

} // namespace quorvex::sim::test
