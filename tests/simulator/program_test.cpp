// The quorvex-simulator program as users start it: help, option errors,
// an address already taken, serving discovery and a clean stop on SIGTERM.

#include "gvcp_client.h"
#include "replay_fixture.h"

#include <gtest/gtest.h>

#include <regex>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <map>
#include <set>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

extern char** environ;

using namespace quorvex::sim;
using namespace std::chrono_literals;

namespace {

std::string simulatorPath()
{
    const char* path = std::getenv("QUORVEX_SIMULATOR");
    return path ? path : "";
}

// A started simulator whose output and errors are collected in one file.
class Program final {
public:
    explicit Program(const std::vector<std::string>& arguments)
        : m_errorFile(std::string(std::getenv("QUORVEX_TEST_HOME") ? std::getenv("QUORVEX_TEST_HOME") : "/tmp") +
                      "/simulator-stderr-" + std::to_string(::getpid()) + ".txt")
    {
        std::vector<std::string> all{simulatorPath()};
        all.insert(all.end(), arguments.begin(), arguments.end());
        std::vector<char*> argv;
        for (std::string& argument : all)
            argv.push_back(argument.data());
        argv.push_back(nullptr);
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, 2, m_errorFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        posix_spawn_file_actions_adddup2(&actions, 2, 1); // one file for both streams
        if (posix_spawn(&m_pid, argv[0], &actions, nullptr, argv.data(), environ) != 0)
            m_pid = -1;
        posix_spawn_file_actions_destroy(&actions);
    }

    ~Program()
    {
        if (m_pid > 0 && !m_exited) {
            ::kill(m_pid, SIGKILL);
            ::waitpid(m_pid, nullptr, 0);
        }
        ::unlink(m_errorFile.c_str());
    }

    bool started() const { return m_pid > 0; }
    void signal(int number) const { ::kill(m_pid, number); }

    // The exit status, or -1 if it is still running after the timeout.
    int waitForExit(std::chrono::milliseconds timeout)
    {
        const auto deadline = std::chrono::steady_clock::now() + timeout;
        while (std::chrono::steady_clock::now() < deadline) {
            int status = 0;
            if (::waitpid(m_pid, &status, WNOHANG) == m_pid) {
                m_exited = true;
                return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
            }
            std::this_thread::sleep_for(20ms);
        }
        return -1;
    }

    std::string errors() const
    {
        std::string text;
        if (FILE* file = std::fopen(m_errorFile.c_str(), "r")) {
            char buffer[512];
            std::size_t n = 0;
            while ((n = std::fread(buffer, 1, sizeof buffer, file)) > 0)
                text.append(buffer, n);
            std::fclose(file);
        }
        return text;
    }

private:
    std::string m_errorFile;
    pid_t m_pid = -1;
    bool m_exited = false;
};

class SimulatorProgram : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_FALSE(simulatorPath().empty()) << "QUORVEX_SIMULATOR is not set: the tests need the quorvex-simulator program";
        ASSERT_EQ(::access(simulatorPath().c_str(), X_OK), 0) << "quorvex-simulator missing at " << simulatorPath();
    }
};

TEST_F(SimulatorProgram, help_documentsEveryOption)
{
    Program program({"--help"});
    ASSERT_TRUE(program.started());
    EXPECT_EQ(program.waitForExit(5s), 0);
    // Each option starts a line of its own (--first-index once ran into --store's text).
    for (const char* option : {"--demo", "--store", "--first-index", "--hostile", "--base-address", "--port", "--link-speed",
                               "--drop-packets", "--drop-seed", "--no-broadcast", "--print-xml", "--verbose", "--version",
                               "--help"})
        EXPECT_TRUE(std::regex_search(program.errors(), std::regex(std::string("\n +(-[a-z], )?") + option + " ")))
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
        {{"--hostile", "bad-zip=1"}, "takes no value"},
        {{"--link-speed", "fast"}, "--link-speed needs a speed"},
        {{"--link-speed", "1.5.5G"}, "--link-speed needs a speed"},
        {{"--drop-packets", "60%"}, "--drop-packets needs a fraction"},
        {{"--drop-seed", "x"}, "--drop-seed needs a number"},
    };
    for (const auto& [arguments, message] : cases) {
        Program program(arguments);
        EXPECT_EQ(program.waitForExit(5s), 2) << arguments.front();
        EXPECT_NE(program.errors().find(message), std::string::npos) << program.errors();
    }
}

TEST_F(SimulatorProgram, addressAlreadyTaken_exitsWithStatus1InsteadOfHanging)
{
    const UdpSocket taken = UdpSocket::bind(0x7F000003, gvcp::kPort);
    Program program({"--demo", "2"});
    EXPECT_EQ(program.waitForExit(5s), 1);
    EXPECT_NE(program.errors().find("127.0.0.3:3956 is already in use"), std::string::npos) << program.errors();
}

TEST_F(SimulatorProgram, servesDiscoveryUntilSigterm_thenStopsCleanly)
{
    Program program({"--demo", "3", "--base-address", "127.0.0.10"});
    ASSERT_TRUE(program.started());
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
    EXPECT_EQ(program.waitForExit(5s), 0);
    EXPECT_NE(program.errors().find("stopping on SIGTERM"), std::string::npos);
    // Its addresses are free again.
    EXPECT_NO_THROW(UdpSocket::bind(0x7F00000A, gvcp::kPort));
}

TEST_F(SimulatorProgram, firstIndex_shiftsDemoIdentitiesSoTwoProgramsServeDistinctDevices)
{
    Program first({"--demo", "1", "--base-address", "127.0.0.20"});
    Program second({"--demo", "2", "--first-index", "1", "--base-address", "127.0.0.21"});
    ASSERT_TRUE(first.started());
    ASSERT_TRUE(second.started());
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
    ASSERT_EQ(seen.size(), 3u) << first.errors() << second.errors();
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
    Program program({"--store", store.string(), "--demo", "1", "--base-address", "127.0.0.30"});
    ASSERT_TRUE(program.started());
    // Demo readers first, then the store's cameras.
    EXPECT_TRUE(waitForSerial(0x7F00001E, "QD24A10000", 5s)) << program.errors();
    EXPECT_TRUE(waitForSerial(0x7F00001F, "Vir11111111", 5s)) << program.errors();

    // "Add" writes the group, then copies the files: picked up when they land.
    test::writeConfig(store, {test::configGroup("Vir11111111"), test::configGroup("Vir22222222")});
    std::this_thread::sleep_for(500ms);
    test::writeCamera(store, "Vir22222222");
    EXPECT_TRUE(waitForSerial(0x7F000020, "Vir22222222", 5s)) << program.errors();

    // Deleted: no longer answered.
    std::filesystem::remove_all(store / "Cameras" / "Vir11111111");
    test::writeConfig(store, {test::configGroup("Vir22222222")});
    EXPECT_TRUE(waitForSerial(0x7F00001F, "", 5s)) << program.errors();
    EXPECT_NE(program.errors().find("camera Vir11111111 is gone"), std::string::npos) << program.errors();

    program.signal(SIGHUP);
    std::this_thread::sleep_for(300ms);
    EXPECT_NE(program.errors().find("SIGHUP: reading the store again"), std::string::npos);
    EXPECT_EQ(test::serialAt(0x7F000020), "Vir22222222");
    program.signal(SIGTERM);
    EXPECT_EQ(program.waitForExit(5s), 0);
}

} // namespace
