#pragma once
// Serves the cameras of a virtual camera store and keeps the served set in
// line with the store: synchronise() reads the store again, starts serving
// new or changed cameras, and stops serving the ones that are gone. Each
// camera gets the lowest free loopback address of its range. A group the
// store reader leaves out, or a camera whose files cannot be loaded, costs
// that camera only, with one log line each time the reason changes.

#include "replayed_camera.h"

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace quorvex::sim {

class SimulatorServer;

struct StoreReplayOptions final {
    std::string storeDirectory;
    std::uint32_t firstAddress = 0x7F000002; // 127.0.0.2
    std::uint32_t lastAddress = 0x7F0000FE;  // 127.0.0.254
};

struct ServedCamera final {
    std::string group;
    std::uint32_t address = 0;
};

class StoreReplay final {
public:
    StoreReplay(SimulatorServer& server, StoreReplayOptions options, LogSink log);
    StoreReplay(const StoreReplay&) = delete;
    StoreReplay& operator=(const StoreReplay&) = delete;

    void synchronise();
    std::vector<ServedCamera> served() const;
    const StoreReplayOptions& options() const { return m_options; }

private:
    struct Entry final {
        std::uint32_t address = 0;
        std::string fingerprint;
    };

    void serve(const store::StoreCamera& camera, const std::string& fingerprint, std::set<std::string>& problems);
    void report(const std::string& problem, std::set<std::string>& seen);

    SimulatorServer& m_server;
    StoreReplayOptions m_options;
    LogSink m_log;
    std::map<std::string, Entry> m_served; // by group
    std::set<std::string> m_reportedProblems;
};

// What identifies a camera's served state: its identity and its files'
// sizes and times. A camera whose fingerprint changes is loaded again.
std::string cameraFingerprint(const store::StoreCamera& camera);

} // namespace quorvex::sim
