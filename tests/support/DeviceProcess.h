// The one way tests run a GigE Vision device program (our simulator or
// Aravis's fake camera): a child process on loopback, inside the test's
// private network namespace, ended again when the object goes.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace xqtest {

class DeviceProcess final {
public:
    DeviceProcess() = default;
    ~DeviceProcess();
    DeviceProcess(const DeviceProcess&) = delete;
    DeviceProcess& operator=(const DeviceProcess&) = delete;

    // Starts program with arguments; error says why not. What the child
    // prints goes to a file of its own that output() reads.
    bool start(const std::string& program, const std::vector<std::string>& arguments, std::string& error);
    // Ends the child with SIGTERM (SIGKILL if kill is set, as a device that
    // loses power) and reaps it.
    void stop(bool kill = false);
    void signal(int number) const;
    // The exit status (128 + signal when a signal ended it) once the child
    // ends within timeoutMs; -1 while it runs on or when there is no child.
    int waitForExit(int timeoutMs);
    bool running() const { return m_pid > 0; }
    pid_t pid() const { return m_pid; }
    // Everything the child printed so far, stdout and stderr together.
    std::string output() const;

private:
    pid_t m_pid = -1;
    int m_outputFd = -1;
};

// Full path of a program found on PATH, or empty.
std::string findOnPath(const std::string& name);

// Waits until a GVCP device answers at ip (dotted) or the time runs out.
bool waitForGvcp(const std::string& ip, int timeoutMs);

// Aravis's fake camera on ip (one lo already has) with serial; error names what is missing.
bool startFakeCamera(DeviceProcess& process, const std::string& ip, const std::string& serial, std::string& error);

// The project's simulator ($QUORVEX_SIMULATOR) with a command line of the
// caller's, not waited for; error names what is missing.
bool startSimulatorWith(DeviceProcess& process, const std::vector<std::string>& arguments, std::string& error);

// The project's simulator with --demo count and a device for each of
// hostile ("--hostile KIND") after the demo readers, once every device
// answers; error names what is missing.
bool startSimulator(DeviceProcess& process, unsigned count, std::string& error,
                    const std::vector<std::string>& hostile = {});

} // namespace xqtest
