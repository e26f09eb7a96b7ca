// libFuzzer target: arbitrary datagrams into one device's control channel.
// The first input byte picks the sender, how far the clock moves and
// whether the packet arrives on the shared broadcast listener; the rest is
// the datagram. Checks that every answer is a well-formed ack that fits
// the clients' 1024-byte buffers.

#include "core/device_control.h"
#include "demo/demo_code_reader.h"

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <vector>

using namespace quorvex::sim;

namespace {

struct Target final {
    DeviceControl control{std::make_unique<DemoCodeReader>(DemoCodeReader::demoIdentity(0)), 0x7F000002};
    Clock::time_point now = Clock::now();
    std::vector<std::uint8_t> reply;
};

Target& target()
{
    static Target instance;
    return instance;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return 0;
    Target& t = target();
    const std::uint8_t control = data[0];
    const Peer sender{0x7F000001, static_cast<std::uint16_t>(50000 + (control & 0x3))};
    t.now += std::chrono::milliseconds((control >> 2) & 0x1F) * 50;
    const ByteView datagram(data + 1, size - 1);

    StreamActions actions;
    if (control & 0x80)
        t.control.handleBroadcast(datagram, t.reply);
    else
        t.control.handle(datagram, sender, t.now, t.reply, actions);
    t.control.tick(t.now, actions);

    if (!t.reply.empty()) {
        // Every answer: a header, the declared length, the ack code, small enough.
        if (t.reply.size() < 8 || t.reply.size() > 1024)
            std::abort();
        const std::size_t declared = (std::size_t{t.reply[4]} << 8) | t.reply[5];
        if (declared != t.reply.size() - 8)
            std::abort();
    }
    if (actions.resends.size() > 64)
        std::abort();
    return 0;
}
