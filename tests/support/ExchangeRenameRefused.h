#pragma once
// Makes the calling thread see a file system without exchanging renames, as
// on many network and FUSE file systems: renameat2() with RENAME_EXCHANGE
// fails with EINVAL, every other call is untouched.

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>

#include <cerrno>
#include <cstddef>
#include <fcntl.h>

namespace xqtest {

// For the rest of the thread's life (a seccomp filter cannot be removed), so
// call it on a thread of its own. False when the kernel refuses the filter.
inline bool refuseExchangeRenamesOnThisThread()
{
    // The flags are renameat2's fifth argument; its low 32 bits come first
    // on the little-endian machines we build for.
    constexpr unsigned kFlagsLow = offsetof(seccomp_data, args) + 4 * sizeof(__u64);
    sock_filter program[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_renameat2, 0, 3),
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, kFlagsLow),
        BPF_JUMP(BPF_JMP | BPF_JSET | BPF_K, RENAME_EXCHANGE, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EINVAL),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    const sock_fprog filter{sizeof program / sizeof program[0], program};
    return ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0
        && ::syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER, 0, &filter) == 0;
}

} // namespace xqtest
