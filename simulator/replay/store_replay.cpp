#include "store_replay.h"

#include "core/simulator_server.h"

#include <filesystem>

namespace quorvex::sim {

namespace fs = std::filesystem;

namespace {

std::string fileStamp(const std::string& path)
{
    std::error_code error;
    const auto size = fs::file_size(path, error);
    if (error)
        return path + ":missing;";
    const auto time = fs::last_write_time(path, error);
    return path + ":" + std::to_string(size) + ":" +
           std::to_string(error ? 0 : time.time_since_epoch().count()) + ";";
}

} // namespace

std::string cameraFingerprint(const store::StoreCamera& camera)
{
    std::string text = camera.group + '\n' + camera.modelName + '\n' + camera.deviceVersion + '\n' +
                       camera.manufacturerName + '\n' + camera.manufacturerSpecificInfo + '\n' +
                       camera.userDefinedName + '\n' + std::to_string(camera.macHigh) + ':' +
                       std::to_string(camera.macLow) + '\n';
    for (const std::string* path : {&camera.genicamXml, &camera.registerFile, &camera.stringRegisterFile})
        text += fileStamp(*path);
    for (const std::string& image : camera.images)
        text += fileStamp(image);
    return text;
}

StoreReplay::StoreReplay(SimulatorServer& server, StoreReplayOptions options, LogSink log)
    : m_server(server), m_options(std::move(options)), m_log(std::move(log))
{
}

void StoreReplay::report(const std::string& problem, std::set<std::string>& seen)
{
    seen.insert(problem);
    // Said once while it lasts, not at every change of the store.
    if (m_reportedProblems.count(problem) == 0 && m_log)
        m_log(problem);
}

void StoreReplay::synchronise()
{
    const store::StoreListing listing = store::readStore(m_options.storeDirectory);
    std::set<std::string> problems;
    for (const store::StoreProblem& problem : listing.problems)
        report(problem.describe(), problems);

    std::map<std::string, const store::StoreCamera*> listed;
    for (const store::StoreCamera& camera : listing.cameras)
        listed.emplace(camera.group, &camera);

    // Gone or changed: stop serving first, so a changed camera can keep its address.
    for (auto it = m_served.begin(); it != m_served.end();) {
        const auto found = listed.find(it->first);
        const bool changed = found != listed.end() && cameraFingerprint(*found->second) != it->second.fingerprint;
        if (found != listed.end() && !changed) {
            ++it;
            continue;
        }
        m_server.removeDevice(it->second.address);
        if (m_log)
            m_log("camera " + it->first + (changed ? " changed; serving it again" : " is gone; no longer served on ") +
                  (changed ? std::string() : formatIpv4(it->second.address)));
        it = m_served.erase(it);
    }

    for (const auto& [group, camera] : listed) {
        if (m_served.count(group) != 0)
            continue;
        serve(*camera, cameraFingerprint(*camera), problems);
    }
    m_reportedProblems = std::move(problems);
}

void StoreReplay::serve(const store::StoreCamera& camera, const std::string& fingerprint,
                        std::set<std::string>& problems)
{
    std::string error;
    std::unique_ptr<ReplayedCamera> model = ReplayedCamera::load(camera, m_log, error);
    for (std::uint32_t address = m_options.firstAddress; model && address <= m_options.lastAddress; ++address) {
        if ((address & 0xFF) == 0 || (address & 0xFF) == 0xFF || m_server.hasDevice(address))
            continue;
        const DeviceIdentity identity = model->identity();
        try {
            m_server.addDevice(std::move(model), address);
        } catch (const SimulatorError& failure) {
            // Another program may hold that address; the model went with the call.
            if (m_log)
                m_log("camera " + camera.group + ": " + failure.what() + "; trying the next address");
            model = ReplayedCamera::load(camera, m_log, error);
            continue;
        }
        m_served[camera.group] = Entry{address, fingerprint};
        if (m_log)
            m_log("serving virtual camera " + camera.group + " (" + identity.modelName + ", \"" +
                  identity.userDefinedName + "\") on " + formatIpv4(address));
        return;
    }
    if (!model)
        report("camera " + camera.group + " skipped: " + error, problems);
    else
        report("camera " + camera.group + " skipped: no free loopback address from " +
                   formatIpv4(m_options.firstAddress) + " to " + formatIpv4(m_options.lastAddress),
               problems);
}

std::vector<ServedCamera> StoreReplay::served() const
{
    std::vector<ServedCamera> cameras;
    for (const auto& [group, entry] : m_served)
        cameras.push_back({group, entry.address});
    return cameras;
}

} // namespace quorvex::sim
