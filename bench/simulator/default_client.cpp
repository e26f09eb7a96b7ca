#include "default_client.h"

#include <arv.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <memory>
#include <mutex>
#include <thread>

namespace bench {

namespace {

using Clock = std::chrono::steady_clock;

// One device's stream and what its callback saw.
struct Subject final {
    ArvDevice* device = nullptr;
    ArvStream* stream = nullptr;
    double wireSeconds = 0;
    std::mutex mutex;
    std::vector<double> pacingErrors;
    std::uint64_t complete = 0;
    std::uint64_t failed = 0;
};

// Called on the stream thread as each frame closes.
void onStreamEvent(void* data, ArvStreamCallbackType type, ArvBuffer* buffer)
{
    if (type != ARV_STREAM_CALLBACK_TYPE_BUFFER_DONE || !buffer)
        return;
    auto& subject = *static_cast<Subject*>(data);
    const double transfer = (static_cast<double>(g_get_real_time()) * 1000.0 -
                             static_cast<double>(arv_buffer_get_system_timestamp(buffer))) / 1e9;
    const std::lock_guard<std::mutex> lock(subject.mutex);
    if (arv_buffer_get_status(buffer) == ARV_BUFFER_STATUS_ABORTED)
        return; // in flight when the stream ended
    if (arv_buffer_get_status(buffer) != ARV_BUFFER_STATUS_SUCCESS) {
        ++subject.failed;
        return;
    }
    ++subject.complete;
    if (subject.wireSeconds > 0)
        subject.pacingErrors.push_back(transfer / subject.wireSeconds - 1.0);
}

void setIfPresent(ArvDevice* device, const char* feature, const char* value)
{
    GError* error = nullptr;
    if (arv_device_get_feature(device, feature))
        arv_device_set_string_feature_value(device, feature, value, &error);
    g_clear_error(&error);
}

bool open(const std::string& address, unsigned width, unsigned height, double link, Subject& subject)
{
    GError* error = nullptr;
    subject.device = arv_open_device(address.c_str(), &error);
    if (!subject.device) {
        std::fprintf(stderr, "  open %s: %s\n", address.c_str(), error ? error->message : "?");
        g_clear_error(&error);
        return false;
    }
    ArvDevice* device = subject.device;
    setIfPresent(device, "TriggerMode", "Off");
    setIfPresent(device, "AcquisitionMode", "Continuous");
    if (width && height) {
        arv_device_set_integer_feature_value(device, "Width", width, &error);
        arv_device_set_integer_feature_value(device, "Height", height, &error);
        g_clear_error(&error);
    }
    if (arv_device_get_feature(device, "AcquisitionFrameRateEnable"))
        arv_device_set_boolean_feature_value(device, "AcquisitionFrameRateEnable", TRUE, &error);
    g_clear_error(&error);
    arv_device_set_float_feature_value(device, "AcquisitionFrameRate", 10.0, &error);
    g_clear_error(&error);
    // The stream as it comes: no option, no property.
    subject.stream = arv_device_create_stream(device, onStreamEvent, &subject, &error);
    if (!subject.stream) {
        std::fprintf(stderr, "  stream %s: %s\n", address.c_str(), error ? error->message : "?");
        g_clear_error(&error);
        return false;
    }
    const gint64 payload = arv_device_get_integer_feature_value(device, "PayloadSize", &error);
    g_clear_error(&error);
    const auto packetSize = static_cast<std::uint32_t>(arv_gv_device_get_packet_size(ARV_GV_DEVICE(device), &error));
    g_clear_error(&error);
    subject.wireSeconds = link > 0 ? frameWireSeconds(static_cast<std::uint64_t>(payload), packetSize, link) : 0;
    for (int i = 0; i < 8; ++i)
        arv_stream_push_buffer(subject.stream, arv_buffer_new_allocate(static_cast<std::size_t>(payload)));
    return true;
}

double percentile(std::vector<double> values, double fraction)
{
    if (values.empty())
        return 0;
    std::sort(values.begin(), values.end());
    return values[std::min(values.size() - 1, static_cast<std::size_t>(values.size() * fraction))];
}

} // namespace

double frameWireSeconds(std::uint64_t payload, std::uint32_t packetSize, double bitsPerSecond)
{
    // IP datagram + Ethernet header and check (18), at least 64, + preamble and gap (20).
    const auto onWire = [](std::uint64_t ip) { return std::max<std::uint64_t>(ip + 18, 64) + 20; };
    const std::uint64_t perPacket = packetSize - 36;
    const std::uint64_t full = payload / perPacket;
    const std::uint64_t rest = payload % perPacket;
    std::uint64_t bytes = onWire(28 + 44) + onWire(28 + 16) + full * onWire(packetSize);
    if (rest > 0)
        bytes += onWire(36 + rest);
    return static_cast<double>(bytes) * 8.0 / bitsPerSecond;
}

std::vector<DefaultClientFigures> measureDefaultClients(const std::vector<std::string>& addresses, double seconds,
                                                         unsigned width, unsigned height, double linkBitsPerSecond)
{
    std::vector<std::unique_ptr<Subject>> subjects;
    std::vector<DefaultClientFigures> figures(addresses.size());
    for (const std::string& address : addresses) {
        subjects.push_back(std::make_unique<Subject>());
        open(address, width, height, linkBitsPerSecond, *subjects.back());
    }
    GError* error = nullptr;
    // Free-running devices keep beats of their own: starts spread over one
    // 100 ms period, rather than every frame of every device at one instant.
    const auto spread = std::chrono::microseconds(100000 / std::max<std::size_t>(subjects.size(), 1));
    for (const auto& subject : subjects) {
        if (subject->stream)
            arv_device_execute_command(subject->device, "AcquisitionStart", &error);
        g_clear_error(&error);
        if (subjects.size() > 1)
            std::this_thread::sleep_for(spread);
    }

    std::vector<std::uint64_t> firstId(subjects.size(), 0), lastId(subjects.size(), 0);
    const Clock::time_point end = Clock::now() + std::chrono::duration_cast<Clock::duration>(
                                                     std::chrono::duration<double>(seconds));
    while (Clock::now() < end) {
        bool any = false;
        for (std::size_t i = 0; i < subjects.size(); ++i) {
            if (!subjects[i]->stream)
                continue;
            while (ArvBuffer* buffer = arv_stream_try_pop_buffer(subjects[i]->stream)) {
                any = true;
                const guint64 id = arv_buffer_get_frame_id(buffer);
                if (firstId[i] == 0)
                    firstId[i] = id;
                lastId[i] = std::max<std::uint64_t>(lastId[i], id);
                arv_stream_push_buffer(subjects[i]->stream, buffer);
            }
        }
        if (!any)
            g_usleep(2000);
    }
    for (std::size_t i = 0; i < subjects.size(); ++i) {
        Subject& subject = *subjects[i];
        if (!subject.stream) {
            if (subject.device)
                g_object_unref(subject.device);
            continue;
        }
        arv_device_execute_command(subject.device, "AcquisitionStop", &error);
        g_clear_error(&error);
        guint64 resent = 0, missing = 0;
        arv_gv_stream_get_statistics(ARV_GV_STREAM(subject.stream), &resent, &missing);
        g_object_unref(subject.stream);
        g_object_unref(subject.device);
        const std::lock_guard<std::mutex> lock(subject.mutex);
        DefaultClientFigures& f = figures[i];
        f.ok = true;
        f.complete = subject.complete;
        // Frames the device sent, by block id; a frame never seen counts as lost.
        const std::uint64_t sent = firstId[i] ? (lastId[i] + 0x10000 - firstId[i]) % 0x10000 + 1 : 0;
        f.frames = std::max<std::uint64_t>(sent, subject.complete + subject.failed);
        f.resent = resent;
        f.wireSeconds = subject.wireSeconds;
        f.pacingErrorMedian = percentile(subject.pacingErrors, 0.5);
        f.pacingErrorP90 = percentile(subject.pacingErrors, 0.9);
    }
    return figures;
}

} // namespace bench
