// The store followed by a running server, in a private network namespace:
// which cameras are served on which addresses, what a bad group or a
// missing file costs, and cameras that come, change and go.

#include "replay_fixture.h"

#include "core/simulator_server.h"
#include "gvcp_client.h"
#include "store_replay.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

using namespace quorvex::sim;
using namespace quorvex::sim::test;
using namespace std::chrono_literals;

namespace {

class StoreReplayTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        m_store = temporaryStore("replay");
        ServerOptions options;
        options.answerBroadcasts = false;
        m_server = std::make_unique<SimulatorServer>(options);
        m_server->start();
        StoreReplayOptions replayOptions;
        replayOptions.storeDirectory = m_store.string();
        replayOptions.firstAddress = 0x7F000002;
        replayOptions.lastAddress = 0x7F000004;
        m_replay = std::make_unique<StoreReplay>(*m_server, replayOptions,
                                                 [this](const std::string& line) { m_log.push_back(line); });
    }

    std::set<std::pair<std::string, std::uint32_t>> served() const
    {
        std::set<std::pair<std::string, std::uint32_t>> cameras;
        for (const ServedCamera& camera : m_replay->served())
            cameras.emplace(camera.group, camera.address);
        return cameras;
    }

    bool logged(const std::string& text) const
    {
        return std::any_of(m_log.begin(), m_log.end(),
                           [&](const std::string& line) { return line.find(text) != std::string::npos; });
    }

    fs::path m_store;
    std::unique_ptr<SimulatorServer> m_server;
    std::unique_ptr<StoreReplay> m_replay;
    std::vector<std::string> m_log;
};

} // namespace

TEST_F(StoreReplayTest, goodCamerasAreServed_badOnesSkippedWithOneLineEach)
{
    writeCamera(m_store, "Vir1");
    writeCamera(m_store, "Vir2");
    fs::remove(m_store / "Cameras" / "Vir2" / "QVX-ID2040M_strRegFile.dat");
    writeCamera(m_store, "Vir3");
    writeConfig(m_store, {configGroup("Vir1"), configGroup("Vir2"), configGroup("Vir3"),
                          configGroup("Vir4", "../../etc"), "[..]\nchModelName=QVX-ID2040M\n\n",
                          configGroup("Vir5", "QVX-ID2040M", "not-hex")});
    m_replay->synchronise();

    EXPECT_EQ(served(), (std::set<std::pair<std::string, std::uint32_t>>{{"Vir1", 0x7F000002}, {"Vir3", 0x7F000003}}));
    EXPECT_EQ(serialAt(0x7F000002), "Vir1");
    EXPECT_EQ(serialAt(0x7F000003), "Vir3");
    EXPECT_TRUE(logged("camera Vir2 skipped: file")) ;
    EXPECT_TRUE(logged("camera Vir4 skipped"));
    EXPECT_TRUE(logged("camera .. skipped"));
    EXPECT_TRUE(logged("camera Vir5 skipped"));
    EXPECT_TRUE(logged("serving virtual camera Vir1"));

    // Reading again changes nothing and repeats no complaint.
    const std::size_t lines = m_log.size();
    m_replay->synchronise();
    EXPECT_EQ(m_log.size(), lines);
    EXPECT_EQ(served().size(), 2u);
}

TEST_F(StoreReplayTest, camerasComeChangeAndGo_withoutDisturbingTheOthers)
{
    writeCamera(m_store, "Vir1");
    writeConfig(m_store, {configGroup("Vir1")});
    m_replay->synchronise();
    ASSERT_EQ(serialAt(0x7F000002), "Vir1");

    // A group written before its files are copied is skipped, then served.
    writeConfig(m_store, {configGroup("Vir1"), configGroup("Vir2")});
    m_replay->synchronise();
    EXPECT_EQ(served().size(), 1u);
    writeCamera(m_store, "Vir2");
    m_replay->synchronise();
    EXPECT_EQ(serialAt(0x7F000003), "Vir2");

    // A camera whose files change is loaded again on its address.
    CameraFiles colour;
    colour.colour = true;
    writeCamera(m_store, "Vir1", colour);
    fs::last_write_time(m_store / "Cameras" / "Vir1" / "QVX-ID2040M_regfile.dat",
                        fs::file_time_type::clock::now() + 5s);
    m_replay->synchronise();
    EXPECT_TRUE(logged("camera Vir1 changed"));
    EXPECT_EQ(served(), (std::set<std::pair<std::string, std::uint32_t>>{{"Vir1", 0x7F000002}, {"Vir2", 0x7F000003}}));

    // Deleted by the tool: no longer served, its address free for the next.
    fs::remove_all(m_store / "Cameras" / "Vir1");
    writeConfig(m_store, {configGroup("Vir2")});
    m_replay->synchronise();
    EXPECT_EQ(serialAt(0x7F000002), "");
    EXPECT_EQ(serialAt(0x7F000003), "Vir2");
    EXPECT_TRUE(logged("camera Vir1 is gone"));

    // More cameras than addresses: the rest wait, said once.
    for (const char* group : {"Vir3", "Vir4", "Vir5"})
        writeCamera(m_store, group);
    writeConfig(m_store, {configGroup("Vir2"), configGroup("Vir3"), configGroup("Vir4"), configGroup("Vir5")});
    m_replay->synchronise();
    EXPECT_EQ(served().size(), 3u);
    EXPECT_TRUE(logged("camera Vir5 skipped: no free loopback address"));
}

TEST_F(StoreReplayTest, missingStoreOrFile_servesNothingAndSaysWhy)
{
    fs::remove_all(m_store);
    m_replay->synchronise();
    EXPECT_TRUE(served().empty());
    EXPECT_TRUE(logged("store: no VirtualCameraConfig.ini"));
}
