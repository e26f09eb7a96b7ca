// Figures the other benchmarks do not measure, for scripts/bench:
//
//   board_probe udp-floor [--seconds S]
//       request/answer round trips of a bare UDP echo between two loopback
//       sockets: the floor under any register read on this machine.
//   board_probe gvcp-floor ADDRESS [--seconds S]
//       READREG round trips to a device at ADDRESS:3956 from a bare socket,
//       without Aravis: what the device itself costs per read.
//   board_probe peak-rss -- PROGRAM [ARGS...]
//       runs the program and prints its peak resident set size.
//
// Every figure is printed as "<name> <value>" on one line. Loopback only.

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;
constexpr std::uint16_t kGvcpPort = 3956;
constexpr int kAnswerTimeoutMs = 500;

class Socket final {
public:
    Socket() : m_fd(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {}
    ~Socket()
    {
        if (m_fd >= 0)
            ::close(m_fd);
    }
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;
    int fd() const { return m_fd; }

private:
    int m_fd;
};

sockaddr_in LoopbackAddress(const char* text, std::uint16_t port)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    if (::inet_pton(AF_INET, text, &address.sin_addr) != 1)
        address.sin_addr.s_addr = 0;
    return address;
}

bool IsLoopback(const sockaddr_in& address)
{
    return (ntohl(address.sin_addr.s_addr) >> 24) == 127;
}

bool Bind(const Socket& socket, const sockaddr_in& address)
{
    return ::bind(socket.fd(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

bool WaitReadable(int fd, int timeoutMs)
{
    pollfd entry{fd, POLLIN, 0};
    return ::poll(&entry, 1, timeoutMs) == 1;
}

double SecondsOption(int argc, char** argv, double fallback)
{
    for (int i = 1; i + 1 < argc; ++i)
        if (std::strcmp(argv[i], "--seconds") == 0)
            return std::atof(argv[i + 1]);
    return fallback;
}

int UdpFloor(double seconds)
{
    Socket server;
    Socket client;
    sockaddr_in serverAddress = LoopbackAddress("127.0.0.1", 0);
    if (!Bind(server, serverAddress) || !Bind(client, LoopbackAddress("127.0.0.1", 0))) {
        std::perror("board_probe: bind");
        return 1;
    }
    socklen_t length = sizeof serverAddress;
    ::getsockname(server.fd(), reinterpret_cast<sockaddr*>(&serverAddress), &length);

    // The echo never sleeps, so no wake-up is in the figure: a device that
    // answers at once (the simulator looks for requests without sleeping
    // while a client is busy) can only be slower than this.
    std::atomic<bool> running{true};
    std::thread echo([&] {
        char buffer[64];
        while (running) {
            sockaddr_in from{};
            socklen_t fromLength = sizeof from;
            const ssize_t size = ::recvfrom(server.fd(), buffer, sizeof buffer, MSG_DONTWAIT,
                                            reinterpret_cast<sockaddr*>(&from), &fromLength);
            if (size > 0)
                ::sendto(server.fd(), buffer, static_cast<size_t>(size), 0, reinterpret_cast<sockaddr*>(&from), fromLength);
        }
    });

    // A READREG-sized request and answer.
    char request[12] = {0x42, 0x01, 0x00, static_cast<char>(0x80), 0x00, 0x04, 0x00, 0x01, 0, 0, 0, 0};
    char answer[64];
    long trips = 0;
    const auto start = Clock::now();
    const auto end = start + std::chrono::duration<double>(seconds);
    while (Clock::now() < end) {
        ::sendto(client.fd(), request, sizeof request, 0, reinterpret_cast<const sockaddr*>(&serverAddress), sizeof serverAddress);
        if (WaitReadable(client.fd(), kAnswerTimeoutMs) && ::recv(client.fd(), answer, sizeof answer, 0) > 0)
            ++trips;
    }
    const double elapsed = std::chrono::duration<double>(Clock::now() - start).count();
    running = false;
    echo.join();
    std::printf("udp_round_trips_per_s %.0f\n", trips / elapsed);
    std::printf("udp_round_trip_us %.2f\n", trips > 0 ? elapsed / trips * 1e6 : 0.0);
    return trips > 0 ? 0 : 1;
}

int GvcpFloor(const char* deviceText, double seconds)
{
    const sockaddr_in device = LoopbackAddress(deviceText, kGvcpPort);
    if (!IsLoopback(device)) {
        std::fprintf(stderr, "board_probe: only loopback devices are measured; %s is not one\n", deviceText);
        return 2;
    }
    Socket client;
    if (!Bind(client, LoopbackAddress("127.0.0.1", 0))) {
        std::perror("board_probe: bind");
        return 1;
    }
    unsigned char request[12] = {0x42, 0x01, 0x00, 0x80, 0x00, 0x04, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00};
    unsigned char answer[64];
    std::uint16_t id = 0;
    long reads = 0;
    long lost = 0;
    const auto start = Clock::now();
    const auto end = start + std::chrono::duration<double>(seconds);
    while (Clock::now() < end) {
        id = static_cast<std::uint16_t>(id == 0xFFFF ? 1 : id + 1);
        request[6] = static_cast<unsigned char>(id >> 8);
        request[7] = static_cast<unsigned char>(id & 0xFF);
        ::sendto(client.fd(), request, sizeof request, 0, reinterpret_cast<const sockaddr*>(&device), sizeof device);
        bool answered = false;
        while (!answered && WaitReadable(client.fd(), kAnswerTimeoutMs)) {
            const ssize_t size = ::recv(client.fd(), answer, sizeof answer, 0);
            // status 0, READREG_ACK, our request id
            answered = size >= 12 && answer[0] == 0 && answer[1] == 0 && answer[2] == 0x00 && answer[3] == 0x81
                && answer[6] == request[6] && answer[7] == request[7];
        }
        answered ? ++reads : ++lost;
    }
    const double elapsed = std::chrono::duration<double>(Clock::now() - start).count();
    std::printf("gvcp_bare_reads_per_s %.0f\n", reads / elapsed);
    std::printf("gvcp_bare_lost %ld\n", lost);
    return reads > 0 ? 0 : 1;
}

int PeakRss(char** command)
{
    const pid_t child = ::fork();
    if (child < 0) {
        std::perror("board_probe: fork");
        return 1;
    }
    if (child == 0) {
        ::execvp(command[0], command);
        std::perror("board_probe: exec");
        ::_exit(127);
    }
    int status = 0;
    rusage usage{};
    if (::wait4(child, &status, 0, &usage) < 0) {
        std::perror("board_probe: wait");
        return 1;
    }
    std::printf("peak_rss_kib %ld\n", usage.ru_maxrss);
    std::printf("exit_status %d\n", WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status));
    return WIFEXITED(status) && WEXITSTATUS(status) == 0 ? 0 : 1;
}

void Usage()
{
    std::fprintf(stderr, "usage: board_probe udp-floor [--seconds S]\n"
                         "       board_probe gvcp-floor ADDRESS [--seconds S]\n"
                         "       board_probe peak-rss -- PROGRAM [ARGS...]\n");
}

} // namespace

int main(int argc, char** argv)
{
    const std::string mode = argc > 1 ? argv[1] : "";
    if (mode == "udp-floor")
        return UdpFloor(SecondsOption(argc, argv, 2.0));
    if (mode == "gvcp-floor" && argc > 2)
        return GvcpFloor(argv[2], SecondsOption(argc, argv, 2.0));
    if (mode == "peak-rss" && argc > 3 && std::strcmp(argv[2], "--") == 0)
        return PeakRss(argv + 3);
    Usage();
    return 2;
}
