#include "DeviceProcess.h"

#include "GvcpProbe.h"
#include "Discovery.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <thread>

namespace xqtest {

DeviceProcess::~DeviceProcess()
{
    stop();
    if (m_outputFd >= 0)
        ::close(m_outputFd);
}

bool DeviceProcess::start(const std::string& program, const std::vector<std::string>& arguments, std::string& error)
{
    std::vector<std::string> words{program};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv;
    for (auto& word : words)
        argv.push_back(word.data());
    argv.push_back(nullptr);
    if (m_outputFd < 0)
        m_outputFd = ::open("/tmp", O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
    const pid_t parent = ::getpid();
    const pid_t pid = ::fork();
    if (pid < 0) {
        error = "cannot start " + program;
        return false;
    }
    if (pid == 0) {
        // The device must not outlive a test that dies without cleaning up.
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (::getppid() != parent)
            ::_exit(127);
        if (m_outputFd >= 0) {
            ::dup2(m_outputFd, STDOUT_FILENO);
            ::dup2(m_outputFd, STDERR_FILENO);
        }
        ::execv(program.c_str(), argv.data());
        ::_exit(127);
    }
    m_pid = pid;
    return true;
}

void DeviceProcess::stop(bool kill)
{
    if (m_pid <= 0)
        return;
    ::kill(m_pid, kill ? SIGKILL : SIGTERM);
    int status = 0;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    while (::waitpid(m_pid, &status, WNOHANG) == 0) {
        if (std::chrono::steady_clock::now() > deadline) {
            ::kill(m_pid, SIGKILL);
            ::waitpid(m_pid, &status, 0);
            break;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    m_pid = -1;
}

void DeviceProcess::signal(int number) const
{
    if (m_pid > 0)
        ::kill(m_pid, number);
}

int DeviceProcess::waitForExit(int timeoutMs)
{
    if (m_pid <= 0)
        return -1; // never started, or already reaped
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    int status = 0;
    while (m_pid > 0 && ::waitpid(m_pid, &status, WNOHANG) == 0) {
        if (std::chrono::steady_clock::now() > deadline)
            return -1;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    m_pid = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

std::string DeviceProcess::output() const
{
    std::string text;
    char buffer[4096];
    off_t offset = 0;
    ssize_t got = 0;
    while (m_outputFd >= 0 && (got = ::pread(m_outputFd, buffer, sizeof buffer, offset)) > 0) {
        text.append(buffer, static_cast<std::size_t>(got));
        offset += got;
    }
    return text;
}

std::string findOnPath(const std::string& name)
{
    const char* path = std::getenv("PATH");
    std::string folders = path ? path : "/usr/bin:/bin";
    std::size_t start = 0;
    while (start <= folders.size()) {
        const std::size_t end = folders.find(':', start);
        const std::string folder = folders.substr(start, end == std::string::npos ? std::string::npos : end - start);
        const std::string candidate = (folder.empty() ? "." : folder) + "/" + name;
        if (::access(candidate.c_str(), X_OK) == 0)
            return candidate;
        if (end == std::string::npos)
            break;
        start = end + 1;
    }
    return {};
}

bool waitForGvcp(const std::string& ip, int timeoutMs)
{
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    while (std::chrono::steady_clock::now() < deadline) {
        xq::GvcpProbe probe(xq::parseIpv4(ip.c_str()), 100, 1);
        if (probe.readRegister(0x0A00))
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    return false;
}

bool startFakeCamera(DeviceProcess& process, const std::string& ip, const std::string& serial, std::string& error)
{
    const std::string program = findOnPath("arv-fake-gv-camera-0.8");
    if (program.empty()) {
        error = "arv-fake-gv-camera-0.8 (Debian package aravis-tools) is not installed";
        return false;
    }
    if (!process.start(program, {"-i", ip, "-s", serial}, error))
        return false;
    if (!waitForGvcp(ip, 5000)) {
        error = "arv-fake-gv-camera-0.8 did not answer on " + ip;
        return false;
    }
    return true;
}

bool startSimulatorWith(DeviceProcess& process, const std::vector<std::string>& arguments, std::string& error)
{
    const char* program = std::getenv("QUORVEX_SIMULATOR");
    if (!program || !*program || ::access(program, X_OK) != 0) {
        error = "quorvex-simulator is needed: build the target quorvex-simulator and run through CTest "
                "(QUORVEX_SIMULATOR is unset or not executable)";
        return false;
    }
    return process.start(program, arguments, error);
}

bool startSimulator(DeviceProcess& process, unsigned count, std::string& error, const std::vector<std::string>& hostile)
{
    std::vector<std::string> arguments{"--demo", std::to_string(count)};
    for (const std::string& kind : hostile)
        arguments.insert(arguments.end(), {"--hostile", kind});
    if (!startSimulatorWith(process, arguments, error))
        return false;
    // Devices sit on 127.0.0.2, 127.0.0.3, ... demo readers first.
    for (unsigned i = 0; i < count + hostile.size(); ++i) {
        const std::string ip = "127.0.0." + std::to_string(2 + i);
        if (!waitForGvcp(ip, 10000)) {
            error = "quorvex-simulator did not answer on " + ip;
            return false;
        }
    }
    return true;
}

} // namespace xqtest
