// The quorvex-simulator program as users start it: help, option errors,
// an address already taken, serving discovery and a clean stop on SIGTERM.

#include "DeviceProcess.h"
#include "gvcp_client.h"
#include "replay_fixture.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <list>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <thread>
#include <vector>

using namespace quorvex::sim;
using namespace std::chrono_literals;
using xqtest::DeviceProcess;

namespace {

class SimulatorProgram : public ::testing::Test {
protected:
    // The program started with arguments; ended with the test.
    DeviceProcess& run(const std::vector<std::string>& arguments)
    {
        DeviceProcess& program = m_programs.emplace_back();
        std::string error;
        EXPECT_TRUE(xqtest::startSimulatorWith(program, arguments, error)) << error;
        return program;
    }

private:
    std::list<DeviceProcess> m_programs;
};

TEST_F(SimulatorProgram, help_documentsEveryOption)
{
    DeviceProcess& program = run({"--help"});
    EXPECT_EQ(program.waitForExit(5000), 0);
    // Each option starts a line of its own (--first-index once ran into --store's text).
    for (const char* option : {"--demo", "--store", "--first-index", "--hostile", "--base-address", "--port", "--link-speed",
                               "--drop-packets", "--drop-seed", "--no-broadcast", "--print-xml", "--verbose", "--version",
                               "--help"})
        EXPECT_TRUE(std::regex_search(program.output(), std::regex(std::string("\n +(-[a-z], )?") + option + " ")))
            << option;
}

TEST_F(SimulatorProgram, wrongCommandLines_exitWithStatus2AndSayWhy)
{
    const std::vector<std::pair<std::vector<std::string>, std::string>> cases{
        {{"--demo", "0"}, "--demo"},
        {{"--base-address", "192.168.1.10"}, "loopback"},
        {{"--port", "70000"}, "--port"},
        {{"--frobnicate"}, "unknown option"},
        {{"--demo"}, "needs a value"},
        {{"--first-index", "-1"}, "--first-index"},
        {{"--store="}, "--store= needs a folder"},
        {{"--base-address", "127.255.255.250", "--demo", "10"}, "not enough loopback addresses"},
        {{"--base-address", "127.255.255.250", "--demo", "5", "--hostile", "bad-zip"}, "for 6 devices"},
        {{"--hostile", "zip"}, "unknown --hostile kind 'zip'"},
        {{"--hostile", "file-url=etc/passwd"}, "absolute path"},
        {{"--hostile", "vanish=-1"}, "--hostile vanish="},
        {{"--hostile", "vanish=12x"}, "--hostile vanish="},
        {{"--hostile", "bad-zip=1"}, "takes no value"},
        {{"--link-speed", "fast"}, "--link-speed needs a speed"},
        {{"--link-speed", "1.5.5G"}, "--link-speed needs a speed"},
        {{"--drop-packets", "60%"}, "--drop-packets needs a fraction"},
        {{"--drop-seed", "x"}, "--drop-seed needs a number"},
    };
    for (const auto& [arguments, message] : cases) {
        DeviceProcess& program = run(arguments);
        EXPECT_EQ(program.waitForExit(5000), 2) << arguments.front();
        EXPECT_NE(program.output().find(message), std::string::npos) << program.output();
    }
}

TEST_F(SimulatorProgram, addressAlreadyTaken_exitsWithStatus1InsteadOfHanging)
{
    const UdpSocket taken = UdpSocket::bind(0x7F000003, gvcp::kPort);
    DeviceProcess& program = run({"--demo", "2"});
    EXPECT_EQ(program.waitForExit(5000), 1);
    EXPECT_NE(program.output().find("127.0.0.3:3956 is already in use"), std::string::npos) << program.output();
}

TEST_F(SimulatorProgram, servesDiscoveryUntilSigterm_thenStopsCleanly)
{
    DeviceProcess& program = run({"--demo", "3", "--base-address", "127.0.0.10"});
    test::GvcpClient client;
    std::set<std::uint32_t> answered;
    // The program needs a moment to bind; ask again until all three answer.
    for (int attempt = 0; attempt < 50 && answered.size() < 3; ++attempt) {
        client.send({0xFFFFFFFF, gvcp::kPort}, test::command(gvcp::command::kDiscovery, 0xFFFF));
        while (auto ack = client.receive(100ms)) {
            ASSERT_EQ(ack->size(), 8u + 0xF8u);
            answered.insert(readBig32(ack->data() + 8 + gvcp::reg::kCurrentIp));
        }
    }
    EXPECT_EQ(answered, (std::set<std::uint32_t>{0x7F00000A, 0x7F00000B, 0x7F00000C}));
    // A directed discovery is answered by that device alone.
    client.send({0x7F00000B, gvcp::kPort}, test::command(gvcp::command::kDiscovery, 0xFFFF));
    const auto directed = client.receive(500ms);
    ASSERT_TRUE(directed);
    EXPECT_EQ(readBig32(directed->data() + 8 + gvcp::reg::kCurrentIp), 0x7F00000Bu);
    EXPECT_FALSE(client.receive(200ms));

    program.signal(SIGTERM);
    EXPECT_EQ(program.waitForExit(5000), 0);
    EXPECT_NE(program.output().find("stopping on SIGTERM"), std::string::npos);
    // Its addresses are free again.
    EXPECT_NO_THROW(UdpSocket::bind(0x7F00000A, gvcp::kPort));
}

TEST_F(SimulatorProgram, firstIndex_shiftsDemoIdentitiesSoTwoProgramsServeDistinctDevices)
{
    DeviceProcess& first = run({"--demo", "1", "--base-address", "127.0.0.20"});
    DeviceProcess& second = run({"--demo", "2", "--first-index", "1", "--base-address", "127.0.0.21"});
    test::GvcpClient client;
    std::map<std::uint32_t, std::pair<std::string, std::string>> seen; // address -> serial, user name
    const auto text = [](const std::vector<std::uint8_t>& ack, std::uint32_t offset) {
        const char* begin = reinterpret_cast<const char*>(ack.data() + 8 + offset);
        return std::string(begin, ::strnlen(begin, 16));
    };
    for (int attempt = 0; attempt < 50 && seen.size() < 3; ++attempt) {
        client.send({0xFFFFFFFF, gvcp::kPort}, test::command(gvcp::command::kDiscovery, 0xFFFF));
        while (auto ack = client.receive(100ms)) {
            ASSERT_EQ(ack->size(), 8u + 0xF8u);
            seen[readBig32(ack->data() + 8 + gvcp::reg::kCurrentIp)] = {
                text(*ack, gvcp::reg::kSerialNumber), text(*ack, gvcp::reg::kUserDefinedName)};
        }
    }
    ASSERT_EQ(seen.size(), 3u) << first.output() << second.output();
    EXPECT_EQ(seen[0x7F000014], std::make_pair(std::string("QD24A10000"), std::string("DemoReader1")));
    EXPECT_EQ(seen[0x7F000015], std::make_pair(std::string("QD24A10101"), std::string("DemoReader2")));
    EXPECT_EQ(seen[0x7F000016], std::make_pair(std::string("QD24A10202"), std::string("DemoReader3")));
}

bool waitForSerial(std::uint32_t address, const std::string& serial, std::chrono::milliseconds timeout)
{
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    while (std::chrono::steady_clock::now() < deadline) {
        if (test::serialAt(address) == serial)
            return true;
        std::this_thread::sleep_for(100ms);
    }
    return false;
}

TEST_F(SimulatorProgram, store_followsCamerasAddedAndDeleted_besideTheDemoReaders)
{
    const auto store = test::temporaryStore("program");
    test::writeCamera(store, "Vir11111111");
    test::writeConfig(store, {test::configGroup("Vir11111111")});
    DeviceProcess& program = run({"--store", store.string(), "--demo", "1", "--base-address", "127.0.0.30"});
    // Demo readers first, then the store's cameras.
    EXPECT_TRUE(waitForSerial(0x7F00001E, "QD24A10000", 5s)) << program.output();
    EXPECT_TRUE(waitForSerial(0x7F00001F, "Vir11111111", 5s)) << program.output();

    // "Add" writes the group, then copies the files: picked up when they land.
    test::writeConfig(store, {test::configGroup("Vir11111111"), test::configGroup("Vir22222222")});
    std::this_thread::sleep_for(500ms);
    test::writeCamera(store, "Vir22222222");
    EXPECT_TRUE(waitForSerial(0x7F000020, "Vir22222222", 5s)) << program.output();

    // Deleted: no longer answered.
    std::filesystem::remove_all(store / "Cameras" / "Vir11111111");
    test::writeConfig(store, {test::configGroup("Vir22222222")});
    EXPECT_TRUE(waitForSerial(0x7F00001F, "", 5s)) << program.output();
    EXPECT_NE(program.output().find("camera Vir11111111 is gone"), std::string::npos) << program.output();

    program.signal(SIGHUP);
    std::this_thread::sleep_for(300ms);
    EXPECT_NE(program.output().find("SIGHUP: reading the store again"), std::string::npos);
    EXPECT_EQ(test::serialAt(0x7F000020), "Vir22222222");
    program.signal(SIGTERM);
    EXPECT_EQ(program.waitForExit(5000), 0);
}

TEST_F(SimulatorProgram, storeMadeAfterTheStart_isFollowedOnceItAppears)
{
    // On a fresh machine the simulator may start before the tool makes its
    // store, several folders deep.
    const auto store = test::temporaryStore("late") / "ZELTA" / "VirtualCamera";
    DeviceProcess& program = run({"--store", store.string(), "--demo", "1", "--base-address", "127.0.0.40"});
    ASSERT_TRUE(waitForSerial(0x7F000028, "QD24A10000", 5s)) << program.output();
    test::writeCamera(store, "Vir33333333");
    test::writeConfig(store, {test::configGroup("Vir33333333")});
    EXPECT_TRUE(waitForSerial(0x7F000029, "Vir33333333", 5s)) << program.output();
}

} // namespace
