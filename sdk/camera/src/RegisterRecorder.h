// Records the register and memory traffic of one open camera, so that a
// simulator can later answer the same reads.
//
// Kept per access (address and length): the bytes last read. Kept in order:
// every write, and every read whose bytes are new or differ from the previous
// read of that access, stamped with the number of writes before it ("epoch"),
// so a replay knows which answers follow which writes.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <mutex>
#include <utility>
#include <vector>

namespace xq {

struct RegisterAccess {
    std::uint64_t address = 0;
    std::uint32_t length = 0;
    bool operator<(const RegisterAccess& other) const
    {
        return address != other.address ? address < other.address : length < other.length;
    }
};

struct RegisterEvent {
    enum class Kind { Read, Write };
    Kind kind = Kind::Read;
    std::uint64_t epoch = 0;
    RegisterAccess access;
    std::vector<std::uint8_t> bytes;
};

struct RegisterRecording {
    std::vector<RegisterEvent> events;                              // in order
    std::map<RegisterAccess, std::vector<std::uint8_t>> lastRead;   // by address
    std::set<std::pair<std::uint64_t, std::uint64_t>> stringRanges; // [begin, end)
};

class RegisterRecorder final {
public:
    void recordRead(std::uint64_t address, const void* data, std::uint32_t length);
    void recordWrite(std::uint64_t address, const void* data, std::uint32_t length);
    // Marks [address, address + length) as holding a string feature.
    void markStringRange(std::uint64_t address, std::uint64_t length);
    // While set, accesses longer than a number register count as string data.
    void setStringContext(bool active);

    RegisterRecording snapshot() const;
    void clear();

private:
    mutable std::mutex m_mutex;
    RegisterRecording m_recording;
    std::uint64_t m_writes = 0;
    bool m_stringContext = false;
};

// True if the access overlaps a string range of the recording.
bool isStringAccess(const RegisterRecording& recording, const RegisterAccess& access);

} // namespace xq
