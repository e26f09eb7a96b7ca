#include "RegisterDumpWriter.h"

#include "XqFileNames.h"

#include "XQSdkDefs.h"

#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <sstream>

namespace xq {
namespace {

constexpr char kMagic[] = "QUORVEX-REGDUMP 1";

std::string hexBytes(const std::vector<std::uint8_t>& bytes)
{
    static constexpr char digits[] = "0123456789abcdef";
    std::string text;
    text.reserve(bytes.size() * 2);
    for (const std::uint8_t byte : bytes) {
        text.push_back(digits[byte >> 4]);
        text.push_back(digits[byte & 0x0F]);
    }
    return text;
}

std::string hexAddress(std::uint64_t address)
{
    char text[24];
    std::snprintf(text, sizeof text, "0x%08llx", static_cast<unsigned long long>(address));
    return text;
}

// Device texts are untrusted: anything but printable ASCII is %-escaped, so
// the header stays one line of plain text.
std::string escaped(const std::string& text)
{
    std::string out;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte > 0x20 && byte < 0x7F && byte != '%') {
            out.push_back(c);
        } else {
            char code[4];
            std::snprintf(code, sizeof code, "%%%02X", byte);
            out += code;
        }
    }
    return out;
}

// Writes content to a new temporary file next to path; every write, the
// flush to disk and the close are checked, since a full disk may only tell
// at the end. Returns the temporary name, or "" after removing what it wrote.
std::string writeTemporary(const std::string& path, const std::string& content)
{
    std::string name = path + ".XXXXXX";
    const int fd = ::mkstemp(name.data());
    if (fd < 0)
        return {};
    ::fchmod(fd, 0644); // as an ordinary new file, not mkstemp's owner-only mode
    std::size_t written = 0;
    while (written < content.size()) {
        const ssize_t step = ::write(fd, content.data() + written, content.size() - written);
        if (step < 0 && errno == EINTR)
            continue;
        if (step <= 0)
            break;
        written += static_cast<std::size_t>(step);
    }
    const bool complete = written == content.size() && ::fsync(fd) == 0;
    if (::close(fd) != 0 || !complete) {
        ::unlink(name.c_str());
        return {};
    }
    return name;
}

} // namespace

std::string dumpDirectory()
{
    if (const char* overridden = std::getenv("QUORVEX_SDK_DUMP_DIR"); overridden && *overridden)
        return overridden;
    char path[4096];
    const ssize_t length = ::readlink("/proc/self/exe", path, sizeof path - 1);
    if (length <= 0)
        return ".";
    const std::string executable(path, static_cast<std::size_t>(length));
    const auto slash = executable.rfind('/');
    return slash == std::string::npos ? "." : slash == 0 ? "/" : executable.substr(0, slash);
}

bool isSafeModelName(const std::string& model)
{
    for (const char c : model) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '/' || c == '\\' || byte < 0x20 || byte == 0x7F)
            return false;
    }
    return true;
}

std::string formatRegisterDump(const RegisterRecording& recording, bool strings, const std::string& model,
                               const std::string& deviceId)
{
    std::ostringstream text;
    text << kMagic << '\n';
    text << "content " << (strings ? "string" : "numeric") << '\n';
    text << "model " << escaped(model) << '\n';
    text << "device " << escaped(deviceId) << '\n';

    std::size_t eventCount = 0;
    for (const auto& event : recording.events)
        eventCount += isStringAccess(recording, event.access) == strings ? 1 : 0;
    text << "events " << eventCount << '\n';
    for (const auto& event : recording.events) {
        if (isStringAccess(recording, event.access) != strings)
            continue;
        text << (event.kind == RegisterEvent::Kind::Read ? 'R' : 'W') << ' ' << event.epoch << ' '
             << hexAddress(event.access.address) << ' ' << event.access.length << ' ' << hexBytes(event.bytes) << '\n';
    }

    std::size_t lastCount = 0;
    for (const auto& entry : recording.lastRead)
        lastCount += isStringAccess(recording, entry.first) == strings ? 1 : 0;
    text << "last " << lastCount << '\n';
    for (const auto& [access, bytes] : recording.lastRead) {
        if (isStringAccess(recording, access) != strings)
            continue;
        text << "L " << hexAddress(access.address) << ' ' << access.length << ' ' << hexBytes(bytes) << '\n';
    }
    text << "end\n";
    return text.str();
}

int writeRegisterDumps(const RegisterRecording& recording, const std::string& directory, const std::string& model,
                       const std::string& deviceId)
{
    if (!isSafeModelName(model))
        return XQ_ERR_INVALID_PARAMETER;
    const std::string base = (directory.empty() ? dumpDirectory() : directory) + "/" + model;
    const std::string paths[] = {base + names::kRegisterDumpSuffix, base + names::kStringRegisterDumpSuffix};
    // Both files are complete on disk before either replaces an older one.
    std::string temporaries[2];
    for (int index = 0; index < 2; ++index) {
        temporaries[index] = writeTemporary(paths[index], formatRegisterDump(recording, index == 1, model, deviceId));
        if (temporaries[index].empty()) {
            if (index == 1)
                ::unlink(temporaries[0].c_str());
            return XQ_ERR_RESOURCE;
        }
    }
    bool renamed = true;
    for (int index = 0; index < 2; ++index) {
        if (renamed && std::rename(temporaries[index].c_str(), paths[index].c_str()) == 0)
            continue;
        renamed = false;
        ::unlink(temporaries[index].c_str());
    }
    return renamed ? XQ_OK : XQ_ERR_RESOURCE;
}

} // namespace xq
