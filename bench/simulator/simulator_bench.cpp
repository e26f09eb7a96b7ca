// Measures a GigE Vision device the way the SDKs use it, through Aravis:
// GVCP register reads per second, a free-running 1280x1024 Mono8 stream
// (frames/s, MB/s) and software-trigger-to-frame latency. Given two device
// addresses it measures both with the same loops and prints the ratios.
// --latency-only measures the latency alone, with the frame's wire time on
// a link of --link bits/s beside it. --default-client measures instead what
// an untuned client gets from every address at once (default-client.h).
//
//   simulator_bench [--seconds S] [--packet-size N] [--latency-only] [--link BPS] ADDRESS [REFERENCE_ADDRESS]
//   simulator_bench --default-client [--seconds S] [--size WxH] [--link BPS] ADDRESS...

#include "default_client.h"
#include "ordinary_user.h"

#include <arv.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

struct Figures final {
    bool ok = false;
    double readsPerSecond = 0;
    double framesPerSecond = 0;
    double megabytesPerSecond = 0;
    double incompleteFrames = 0;
    double latencyMedianMs = 0;
    double latencyP90Ms = 0;
};

struct Settings final {
    double seconds = 3.0;
    unsigned packetSize = 8192;
    bool latencyOnly = false;
    bool defaultClient = false;
    unsigned width = 0, height = 0; // default client: 0 keeps each device's size
    double linkBitsPerSecond = 1e9;
};

double secondsSince(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

bool check(GError*& error, const char* what)
{
    if (!error)
        return true;
    std::fprintf(stderr, "  %s: %s\n", what, error->message);
    g_clear_error(&error);
    return false;
}

ArvStream* createStream(ArvDevice* device, unsigned buffers)
{
    GError* error = nullptr;
    arv_gv_device_set_stream_options(ARV_GV_DEVICE(device), ARV_GV_STREAM_OPTION_PACKET_SOCKET_DISABLED);
    ArvStream* stream = arv_device_create_stream(device, nullptr, nullptr, &error);
    if (!check(error, "create stream"))
        return nullptr;
    g_object_set(stream, "socket-buffer", ARV_GV_STREAM_SOCKET_BUFFER_AUTO, "packet-resend",
                 ARV_GV_STREAM_PACKET_RESEND_NEVER, nullptr);
    const gint64 payload = arv_device_get_integer_feature_value(device, "PayloadSize", &error);
    check(error, "PayloadSize");
    for (unsigned i = 0; i < buffers; ++i)
        arv_stream_push_buffer(stream, arv_buffer_new_allocate(static_cast<std::size_t>(payload)));
    return stream;
}

// Totals over the rounds of one device; rounds alternate between devices so
// that both see the same load from the rest of the machine.
struct Totals final {
    double readSeconds = 0, reads = 0;
    double streamSeconds = 0, frames = 0, bytes = 0, broken = 0;
};

void measureReads(ArvDevice* device, double seconds, Totals& totals)
{
    GError* error = nullptr;
    guint32 value = 0;
    std::uint64_t reads = 0;
    const Clock::time_point start = Clock::now();
    while (secondsSince(start) < seconds) {
        // The stream channel's packet size register: plain bootstrap, same on every device.
        arv_device_read_register(device, 0x0D04, &value, &error);
        if (!check(error, "read register"))
            return;
        ++reads;
    }
    totals.readSeconds += secondsSince(start);
    totals.reads += reads;
}

void prepareFreeRun(ArvDevice* device)
{
    GError* error = nullptr;
    arv_device_set_string_feature_value(device, "TriggerMode", "Off", &error);
    check(error, "TriggerMode");
    // As fast as each device allows: our reader needs the rate switch, the reference ignores it.
    if (arv_device_get_feature(device, "AcquisitionFrameRateEnable"))
        arv_device_set_boolean_feature_value(device, "AcquisitionFrameRateEnable", TRUE, &error);
    if (arv_device_get_feature(device, "ExposureTime"))
        arv_device_set_float_feature_value(device, "ExposureTime", 100.0, &error);
    else if (arv_device_get_feature(device, "ExposureTimeAbs"))
        arv_device_set_float_feature_value(device, "ExposureTimeAbs", 100.0, &error);
    g_clear_error(&error);
    arv_device_set_float_feature_value(device, "AcquisitionFrameRate", 1000.0, &error);
    g_clear_error(&error);
}

void measureStream(ArvDevice* device, ArvStream* stream, double seconds, Totals& totals)
{
    GError* error = nullptr;
    arv_device_execute_command(device, "AcquisitionStart", &error);
    check(error, "AcquisitionStart");
    // Let the socket buffer grow before counting.
    for (int i = 0; i < 10; ++i)
        if (ArvBuffer* buffer = arv_stream_timeout_pop_buffer(stream, 200000))
            arv_stream_push_buffer(stream, buffer);

    const Clock::time_point start = Clock::now();
    while (secondsSince(start) < seconds) {
        ArvBuffer* buffer = arv_stream_timeout_pop_buffer(stream, 200000);
        if (!buffer)
            continue;
        if (arv_buffer_get_status(buffer) == ARV_BUFFER_STATUS_SUCCESS) {
            totals.frames += 1;
            std::size_t size = 0;
            arv_buffer_get_data(buffer, &size);
            totals.bytes += size;
        } else {
            totals.broken += 1;
        }
        arv_stream_push_buffer(stream, buffer);
    }
    totals.streamSeconds += secondsSince(start);
    arv_device_execute_command(device, "AcquisitionStop", &error);
    g_clear_error(&error);
    // Drain what is still in flight so the next round starts clean.
    while (ArvBuffer* buffer = arv_stream_timeout_pop_buffer(stream, 100000))
        arv_stream_push_buffer(stream, buffer);
}

void measureTriggerLatency(ArvDevice* device, Figures& figures)
{
    GError* error = nullptr;
    arv_device_set_string_feature_value(device, "TriggerMode", "On", &error);
    arv_device_set_string_feature_value(device, "TriggerSource", "Software", &error);
    if (!check(error, "software trigger"))
        return;
    ArvStream* stream = createStream(device, 4);
    if (!stream)
        return;
    arv_device_execute_command(device, "AcquisitionStart", &error);
    std::vector<double> latencies;
    for (int trigger = 0; trigger < 60; ++trigger) {
        const Clock::time_point sent = Clock::now();
        arv_device_execute_command(device, "TriggerSoftware", &error);
        if (!check(error, "TriggerSoftware"))
            break;
        ArvBuffer* buffer = arv_stream_timeout_pop_buffer(stream, 1000000);
        if (!buffer)
            continue;
        if (arv_buffer_get_status(buffer) == ARV_BUFFER_STATUS_SUCCESS && trigger >= 5) // warm-up frames aside
            latencies.push_back(std::chrono::duration<double, std::milli>(Clock::now() - sent).count());
        arv_stream_push_buffer(stream, buffer);
    }
    arv_device_execute_command(device, "AcquisitionStop", &error);
    g_clear_error(&error);
    g_object_unref(stream);
    if (latencies.empty())
        return;
    std::sort(latencies.begin(), latencies.end());
    figures.latencyMedianMs = latencies[latencies.size() / 2];
    figures.latencyP90Ms = latencies[latencies.size() * 9 / 10];
}

ArvDevice* openDevice(const std::string& address, const Settings& settings)
{
    GError* error = nullptr;
    ArvDevice* device = arv_open_device(address.c_str(), &error);
    if (!check(error, ("open " + address).c_str()) || !device)
        return nullptr;
    arv_gv_device_set_packet_size_adjustment(ARV_GV_DEVICE(device), ARV_GV_PACKET_SIZE_ADJUSTMENT_NEVER);
    arv_gv_device_set_packet_size(ARV_GV_DEVICE(device), static_cast<gint>(settings.packetSize), &error);
    check(error, "packet size");
    arv_device_set_integer_feature_value(device, "Width", 1280, &error);
    arv_device_set_integer_feature_value(device, "Height", 1024, &error);
    arv_device_set_string_feature_value(device, "PixelFormat", "Mono8", &error);
    if (!check(error, "1280x1024 Mono8")) {
        g_object_unref(device);
        return nullptr;
    }
    return device;
}

std::vector<Figures> measureAll(const std::vector<std::string>& addresses, const Settings& settings)
{
    constexpr int kRounds = 4;
    std::vector<ArvDevice*> devices;
    for (const std::string& address : addresses)
        devices.push_back(openDevice(address, settings));
    std::vector<Totals> totals(devices.size());
    std::vector<Figures> figures(devices.size());

    for (int round = 0; round < kRounds && !settings.latencyOnly; ++round)
        for (std::size_t i = 0; i < devices.size(); ++i)
            if (devices[i])
                measureReads(devices[i], settings.seconds / kRounds, totals[i]);

    std::vector<ArvStream*> streams(devices.size(), nullptr);
    for (std::size_t i = 0; i < devices.size(); ++i)
        if (devices[i] && !settings.latencyOnly) {
            prepareFreeRun(devices[i]);
            streams[i] = createStream(devices[i], 16);
        }
    for (int round = 0; round < kRounds; ++round)
        for (std::size_t i = 0; i < devices.size(); ++i)
            if (streams[i])
                measureStream(devices[i], streams[i], settings.seconds / kRounds, totals[i]);
    for (ArvStream* stream : streams)
        if (stream)
            g_object_unref(stream);

    for (std::size_t i = 0; i < devices.size(); ++i) {
        if (!devices[i])
            continue;
        measureTriggerLatency(devices[i], figures[i]);
        g_object_unref(devices[i]);
        const Totals& t = totals[i];
        figures[i].ok = settings.latencyOnly ? figures[i].latencyMedianMs > 0 : t.readSeconds > 0 && t.streamSeconds > 0;
        figures[i].readsPerSecond = t.readSeconds > 0 ? t.reads / t.readSeconds : 0;
        figures[i].framesPerSecond = t.streamSeconds > 0 ? t.frames / t.streamSeconds : 0;
        figures[i].megabytesPerSecond = t.streamSeconds > 0 ? t.bytes / t.streamSeconds / 1.0e6 : 0;
        figures[i].incompleteFrames = t.broken;
    }
    return figures;
}

void print(const char* label, const std::string& address, const Figures& f)
{
    std::printf("%-22s %-12s %10.0f %9.1f %9.1f %8.0f %10.2f %8.2f\n", label, address.c_str(), f.readsPerSecond,
                f.framesPerSecond, f.megabytesPerSecond, f.incompleteFrames, f.latencyMedianMs, f.latencyP90Ms);
}

double ratio(double a, double b) { return b > 0 ? a / b : 0.0; }

int measureDefaultClients(const std::vector<std::string>& addresses, const Settings& settings)
{
    quorvex::sim::test::receiveLikeAnOrdinaryUser();
    const auto figures = bench::measureDefaultClients(addresses, settings.seconds, settings.width, settings.height,
                                                      settings.linkBitsPerSecond);
    std::uint64_t complete = 0, frames = 0;
    std::vector<double> medians, p90s;
    int status = 0;
    for (std::size_t i = 0; i < figures.size(); ++i) {
        const bench::DefaultClientFigures& f = figures[i];
        std::printf("default-client %s complete %llu frames %llu resent %llu pacing-error-median %.3f p90 %.3f\n",
                    addresses[i].c_str(), static_cast<unsigned long long>(f.complete),
                    static_cast<unsigned long long>(f.frames), static_cast<unsigned long long>(f.resent),
                    f.pacingErrorMedian, f.pacingErrorP90);
        complete += f.complete;
        frames += f.frames;
        medians.push_back(f.pacingErrorMedian);
        p90s.push_back(f.pacingErrorP90);
        if (!f.ok)
            status = 1;
    }
    std::sort(medians.begin(), medians.end());
    std::sort(p90s.begin(), p90s.end());
    std::printf("default-client all complete %llu frames %llu percent %.1f pacing-error-median %.3f worst-p90 %.3f "
                "wire-ms %.3f\n",
                static_cast<unsigned long long>(complete), static_cast<unsigned long long>(frames),
                frames ? 100.0 * static_cast<double>(complete) / static_cast<double>(frames) : 0.0,
                medians[medians.size() / 2], p90s.back(), 1e3 * figures.front().wireSeconds);
    arv_shutdown();
    return status;
}

} // namespace

int main(int argc, char** argv)
{
    Settings settings;
    std::vector<std::string> addresses;
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        if (argument == "--seconds" && i + 1 < argc)
            settings.seconds = std::atof(argv[++i]);
        else if (argument == "--packet-size" && i + 1 < argc)
            settings.packetSize = static_cast<unsigned>(std::atoi(argv[++i]));
        else if (argument == "--latency-only")
            settings.latencyOnly = true;
        else if (argument == "--default-client")
            settings.defaultClient = true;
        else if (argument == "--link" && i + 1 < argc)
            settings.linkBitsPerSecond = std::atof(argv[++i]);
        else if (argument == "--size" && i + 1 < argc)
            std::sscanf(argv[++i], "%ux%u", &settings.width, &settings.height);
        else
            addresses.push_back(argument);
    }
    if (addresses.empty() || (addresses.size() > 2 && !settings.defaultClient) || settings.seconds <= 0) {
        std::fprintf(stderr,
                     "usage: %s [--seconds S] [--packet-size N] [--latency-only] [--link BPS] ADDRESS [REFERENCE]\n"
                     "       %s --default-client [--seconds S] [--size WxH] [--link BPS] ADDRESS...\n",
                     argv[0], argv[0]);
        return 2;
    }
    for (const std::string& address : addresses) {
        if (address.rfind("127.", 0) != 0) {
            std::fprintf(stderr, "only loopback devices are measured; %s is not one\n", address.c_str());
            return 2;
        }
    }
    arv_disable_interface("USB3Vision");
    if (settings.defaultClient)
        return measureDefaultClients(addresses, settings);
    std::printf("1280x1024 Mono8, packet size %u, %.1f s per measure in alternating rounds\n", settings.packetSize,
                settings.seconds);
    std::printf("%-22s %-12s %10s %9s %9s %8s %10s %8s\n", "device", "address", "reads/s", "frames/s", "MB/s",
                "broken", "trig med ms", "p90 ms");
    const std::vector<Figures> figures = measureAll(addresses, settings);
    print("quorvex-simulator", addresses[0], figures[0]);
    // The same frame on the wire at the link's speed: what no device can beat.
    std::printf("wire_ms %.3f (1280x1024 Mono8 in packets of %u at %.3g b/s)\n",
                1e3 * bench::frameWireSeconds(1280 * 1024, settings.packetSize, settings.linkBitsPerSecond),
                settings.packetSize, settings.linkBitsPerSecond);
    int status = figures[0].ok ? 0 : 1;
    if (addresses.size() == 2) {
        const Figures& subject = figures[0];
        const Figures& reference = figures[1];
        print("reference", addresses[1], reference);
        std::printf("ratio (subject/reference): reads %.2fx, stream MB/s %.2fx, trigger latency %.2fx faster\n",
                    ratio(subject.readsPerSecond, reference.readsPerSecond),
                    ratio(subject.megabytesPerSecond, reference.megabytesPerSecond),
                    ratio(reference.latencyMedianMs, subject.latencyMedianMs));
        status = subject.ok && reference.ok ? 0 : 1;
    }
    arv_shutdown();
    return status;
}
