// Installs the crash handler, then faults the way the brief of each case
// asks: on a worker thread through a page that cannot be written, or by
// abort() on the main thread. Prints the fault address first, so the test
// can find it in the report.
//   shell_crash_child segv-worker | abort-main

#include "CrashHandler.h"

#include <QCoreApplication>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <thread>

#include <sys/mman.h>

// Exported, so the backtrace names the faulting frame.
extern "C" __attribute__((noinline, visibility("default"))) void quorvexCrashTestWorker(volatile int* target)
{
    *target = 42;
    asm volatile("" ::: "memory"); // no tail position: the frame stays on the stack
}

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    installCrashHandler();
    const char* mode = argc > 1 ? argv[1] : "";

    if (std::strcmp(mode, "segv-worker") == 0) {
        void* page = ::mmap(nullptr, 4096, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (page == MAP_FAILED)
            return 2;
        std::printf("fault address %p\n", page);
        std::fflush(stdout);
        std::thread worker(quorvexCrashTestWorker, static_cast<volatile int*>(page));
        worker.join();
        return 0;
    }
    if (std::strcmp(mode, "abort-main") == 0) {
        std::abort();
    }
    return 2;
}
