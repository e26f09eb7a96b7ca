#include "options.h"

#include "core/byte_order.h"

#include <cerrno>
#include <cstdlib>

namespace quorvex::sim {

namespace {

constexpr unsigned kMaxDemoDevices = 64;
// Keeps serial numbers at eight hex digits and MAC addresses distinct.
constexpr unsigned kMaxFirstDemoIndex = 9999;

bool parseNumber(const std::string& text, unsigned long minimum, unsigned long maximum, unsigned long& value)
{
    if (text.empty() || text.find_first_not_of("0123456789") != std::string::npos || text.size() > 9)
        return false;
    value = std::strtoul(text.c_str(), nullptr, 10);
    return value >= minimum && value <= maximum;
}

} // namespace

bool parseOptions(const std::vector<std::string>& arguments, ProgramOptions& options, std::string& error)
{
    bool demoGiven = false;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string& argument = arguments[i];
        std::string name = argument;
        std::string value;
        bool hasValue = false;
        const std::size_t equals = argument.find('=');
        if (argument.rfind("--", 0) == 0 && equals != std::string::npos) {
            name = argument.substr(0, equals);
            value = argument.substr(equals + 1);
            hasValue = true;
        }
        const auto takeValue = [&]() {
            if (hasValue)
                return true;
            if (i + 1 >= arguments.size()) {
                error = "option " + name + " needs a value";
                return false;
            }
            value = arguments[++i];
            return true;
        };

        unsigned long number = 0;
        if (name == "-h" || name == "--help") {
            options.showHelp = true;
        } else if (name == "--version") {
            options.showVersion = true;
        } else if (name == "-v" || name == "--verbose") {
            options.verbose = true;
        } else if (name == "--print-xml") {
            options.printXml = true;
        } else if (name == "--no-broadcast") {
            options.answerBroadcasts = false;
        } else if (name == "-n" || name == "--demo") {
            if (!takeValue())
                return false;
            if (!parseNumber(value, 1, kMaxDemoDevices, number)) {
                error = "--demo needs a number of devices from 1 to " + std::to_string(kMaxDemoDevices) + ", not '" +
                        value + "'";
                return false;
            }
            options.demoDevices = static_cast<unsigned>(number);
            demoGiven = true;
        } else if (name == "-s" || name == "--store") {
            options.serveStore = true;
            // The folder is optional: "--store" alone serves the suite's store.
            if (hasValue)
                options.storeDirectory = value;
            else if (i + 1 < arguments.size() && !arguments[i + 1].empty() && arguments[i + 1][0] != '-')
                options.storeDirectory = arguments[++i];
            if (hasValue && value.empty()) {
                error = "--store= needs a folder";
                return false;
            }
        } else if (name == "--hostile") {
            if (!takeValue())
                return false;
            const std::optional<HostileFault> fault = parseHostileFault(value, error);
            if (!fault)
                return false;
            if (options.hostileDevices.size() >= kMaxDemoDevices) {
                error = "at most " + std::to_string(kMaxDemoDevices) + " --hostile devices";
                return false;
            }
            options.hostileDevices.push_back(*fault);
        } else if (name == "--first-index") {
            if (!takeValue())
                return false;
            if (!parseNumber(value, 0, kMaxFirstDemoIndex, number)) {
                error = "--first-index needs a device index from 0 to " + std::to_string(kMaxFirstDemoIndex) +
                        ", not '" + value + "'";
                return false;
            }
            options.firstDemoIndex = static_cast<unsigned>(number);
        } else if (name == "-a" || name == "--base-address") {
            if (!takeValue())
                return false;
            std::uint32_t address = 0;
            if (!parseIpv4(value, address)) {
                error = "--base-address needs a dotted IPv4 address, not '" + value + "'";
                return false;
            }
            if (!isLoopback(address)) {
                error = "--base-address must be a loopback address (127.x.y.z); " + value + " is not";
                return false;
            }
            options.baseAddress = address;
        } else if (name == "--link-speed") {
            if (!takeValue())
                return false;
            const std::optional<LinkSpeed> link = LinkSpeed::parse(value);
            if (!link) {
                error = "--link-speed needs a speed such as 100M, 1G, 2.5G or 10G, or 'unlimited', not '" + value + "'";
                return false;
            }
            options.link = *link;
        } else if (name == "--drop-packets") {
            if (!takeValue())
                return false;
            const bool percent = !value.empty() && value.back() == '%';
            const std::string digits = percent ? value.substr(0, value.size() - 1) : value;
            char* end = nullptr;
            const double number = digits.empty() ? -1.0 : std::strtod(digits.c_str(), &end);
            const double fraction = percent ? number / 100.0 : number;
            if (digits.empty() || *end != '\0' || !(fraction >= 0.0 && fraction <= 0.5)) {
                error = "--drop-packets needs a fraction from 0 to 0.5 or a percentage such as 5%, not '" + value + "'";
                return false;
            }
            options.loss.fraction = fraction;
        } else if (name == "--drop-seed") {
            if (!takeValue())
                return false;
            if (!parseNumber(value, 0, 999999999, number)) {
                error = "--drop-seed needs a number from 0 to 999999999, not '" + value + "'";
                return false;
            }
            options.loss.seed = number;
        } else if (name == "-p" || name == "--port") {
            if (!takeValue())
                return false;
            if (!parseNumber(value, 1, 65535, number)) {
                error = "--port needs a UDP port from 1 to 65535, not '" + value + "'";
                return false;
            }
            options.gvcpPort = static_cast<std::uint16_t>(number);
        } else {
            error = "unknown option '" + argument + "' (see --help)";
            return false;
        }
    }
    if (options.serveStore && !demoGiven)
        options.demoDevices = 0;
    // Every device needs a host address of its own inside 127.0.0.0/8.
    const std::size_t devices = options.demoDevices + options.hostileDevices.size();
    const std::uint64_t last = std::uint64_t{options.baseAddress} + devices - (options.serveStore ? 0 : 1);
    if (last > 0x7FFFFFFE) {
        error = "not enough loopback addresses after " + formatIpv4(options.baseAddress) + " for " +
                std::to_string(devices) + " devices";
        return false;
    }
    return true;
}

std::string usageText(const std::string& programName)
{
    return "Usage: " + programName + " [OPTION]...\n"
           "Serves simulated GigE Vision code readers and the virtual cameras of the\n"
           "tool's store on loopback addresses until interrupted (SIGINT or SIGTERM).\n"
           "\n"
           "  -n, --demo N            serve N demo code readers (1-64, default 2, or\n"
           "                          none when --store is given without --demo)\n"
           "  -s, --store [DIR]       serve every virtual camera of the store in DIR\n"
           "                          (default: the suite's store, VirtualCamera in\n"
           "                          $QUORVEX_SYSTEM_TEMP or $XDG_CACHE_HOME/ZELTA);\n"
           "                          cameras take the addresses after the demo\n"
           "                          readers; the store is read again when it\n"
           "                          changes and on SIGHUP\n"
           "      --first-index N     give the demo readers the identities of index N,\n"
           "                          N+1, ... (0-9999, default 0): serial number, MAC,\n"
           "                          model and name, so that two simulators can serve\n"
           "                          distinct devices\n"
           "      --hostile KIND      also serve a code reader with one fault (may be\n"
           "                          repeated, one device each, after the demo\n"
           "                          readers); it takes the first demo reader's model\n"
           "                          name unless its fault is the name, serial QH...:\n" +
           hostileKindsHelp() +
           "  -a, --base-address IP   address of the first device; the others follow\n"
           "                          (default 127.0.0.2; must be in 127.0.0.0/8)\n"
           "  -p, --port PORT         GVCP port (default 3956, the standard one)\n"
           "      --link-speed SPEED  stream no faster than an Ethernet link of SPEED\n"
           "                          (100M, 1G, 2.5G, 10G, ...; default 1G), each\n"
           "                          device on a link of its own; 'unlimited' sends\n"
           "                          as fast as loopback takes packets\n"
           "      --drop-packets P    lose the fraction P (0-0.5, or a percentage such\n"
           "                          as 5%) of stream payload packets, to try a\n"
           "                          client's packet resend; resent packets arrive\n"
           "      --drop-seed N       choose which packets are lost (default 1)\n"
           "      --no-broadcast      do not answer discovery broadcasts, only\n"
           "                          commands sent to a device's own address\n"
           "      --print-xml         print the demo device's GenICam description and exit\n"
           "  -v, --verbose           print stream statistics every five seconds\n"
           "      --version           print the version and exit\n"
           "  -h, --help              print this help and exit\n"
           "\n"
           "Each device answers discovery, register and memory commands on UDP\n"
           "<address>:<port> and streams to the address and port a client sets.\n"
           "Nothing is ever sent outside 127.0.0.0/8.\n"
           "\n"
           "Exit status: 0 after a clean stop, 1 when an address or port cannot be\n"
           "used, 2 for a wrong command line.\n";
}

} // namespace quorvex::sim
