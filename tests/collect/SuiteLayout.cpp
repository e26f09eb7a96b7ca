#include "SuiteLayout.h"

#include <QDir>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <system_error>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

fs::path HomeFolder()
{
    if (const char* home = std::getenv("QUORVEX_TEST_HOME"); home != nullptr && *home != '\0')
        return fs::path(home);
    // Started by hand: a fresh folder of its own.
    char pattern[] = "/tmp/quorvex-collect-test-XXXXXX";
    if (mkdtemp(pattern) == nullptr) {
        std::fprintf(stderr, "cannot make a temporary folder: %s\n", std::strerror(errno));
        std::exit(2);
    }
    setenv("QUORVEX_TEST_HOME", pattern, 1);
    setenv("QUORVEX_COLLECT_TEMPORARY_HOME", "1", 1);
    return fs::path(pattern);
}

fs::path SuiteFolder()
{
    return HomeFolder() / "suite";
}

} // namespace

void RunFromOwnSuiteLayout(char** argv)
{
    std::error_code error;
    const fs::path self = fs::read_symlink("/proc/self/exe", error);
    if (error) {
        std::fprintf(stderr, "cannot find the test program: %s\n", error.message().c_str());
        std::exit(2);
    }
    const fs::path appDir = SuiteFolder() / "apps" / "Quorvex";
    // The marker also ends the chain when a symbolic link in the home path
    // makes the two spellings differ.
    if (self.parent_path() == appDir || std::getenv("QUORVEX_COLLECT_RELOCATED") != nullptr)
        return;

    fs::create_directories(appDir, error);
    const fs::path copy = appDir / self.filename();
    if (!error)
        fs::copy_file(self, copy, fs::copy_options::overwrite_existing, error);
    if (error) {
        std::fprintf(stderr, "cannot copy the test program to %s: %s\n", copy.c_str(), error.message().c_str());
        std::exit(2);
    }
    setenv("QUORVEX_COLLECT_RELOCATED", "1", 1);
    execv(copy.c_str(), argv);
    std::fprintf(stderr, "cannot run %s: %s\n", copy.c_str(), std::strerror(errno));
    std::exit(2);
}

QString SuiteRoot()
{
    return QString::fromStdString(SuiteFolder().string());
}

QString ApplicationDir()
{
    return SuiteRoot() + QStringLiteral("/apps/Quorvex");
}

QString CollectionRoot()
{
    return SuiteRoot() + QStringLiteral("/common/VirtualCamera");
}

void RemoveTemporaryHome()
{
    if (std::getenv("QUORVEX_COLLECT_TEMPORARY_HOME") == nullptr)
        return;
    std::error_code error;
    fs::remove_all(HomeFolder(), error);
}
