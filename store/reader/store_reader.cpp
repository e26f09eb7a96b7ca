#include "store_reader.h"

#include "ini_file.h"
#include "store_names.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <pwd.h>
#include <unistd.h>

namespace quorvex::store {

namespace fs = std::filesystem;

namespace {

std::string environment(const char* name)
{
    const char* value = std::getenv(name);
    return value ? std::string(value) : std::string();
}

std::string homeFolder()
{
    std::string home = environment("HOME");
    if (!home.empty())
        return home;
    if (const passwd* entry = ::getpwuid(::getuid()); entry && entry->pw_dir)
        return entry->pw_dir;
    return "/";
}

// Reads the keys of one camera group and keeps the first reason it cannot
// be served.
class CameraCheck final {
public:
    explicit CameraCheck(const IniSection& section) : m_section(section) {}

    const std::string& failure() const { return m_failure; }
    bool failed() const { return !m_failure.empty(); }

    // A key that must be present and hold one text.
    std::optional<std::string> requiredText(const char* key)
    {
        const IniEntry* entry = m_section.find(key);
        if (!entry)
            return fail("key " + std::string(key) + " is missing");
        return textOf(*entry);
    }

    std::string optionalText(const char* key)
    {
        const IniEntry* entry = m_section.find(key);
        if (!entry)
            return {};
        return textOf(*entry).value_or(std::string());
    }

    std::uint32_t hexWord(const char* key, bool required, std::uint32_t fallback = 0)
    {
        const IniEntry* entry = m_section.find(key);
        if (!entry) {
            if (required)
                fail("key " + std::string(key) + " is missing");
            return fallback;
        }
        const std::optional<std::string> text = textOf(*entry);
        std::uint32_t value = 0;
        if (text && !parseHexWord(*text, value))
            fail("key " + std::string(key) + " (line " + std::to_string(entry->line)
                 + ") is not 1 to 8 hexadecimal digits: \"" + *text + "\"");
        return value;
    }

    unsigned decimal(const char* key, unsigned fallback)
    {
        const IniEntry* entry = m_section.find(key);
        if (!entry)
            return fallback;
        const std::optional<std::string> text = textOf(*entry);
        if (!text)
            return fallback;
        if (text->empty() || text->size() > 5
            || !std::all_of(text->begin(), text->end(), [](char c) { return c >= '0' && c <= '9'; })) {
            fail("key " + std::string(key) + " (line " + std::to_string(entry->line)
                 + ") is not a small decimal number: \"" + *text + "\"");
            return fallback;
        }
        const unsigned long value = std::stoul(*text);
        if (value > 0xFFFF) {
            fail("key " + std::string(key) + " is larger than 65535");
            return fallback;
        }
        return static_cast<unsigned>(value);
    }

    std::nullopt_t fail(std::string reason)
    {
        if (m_failure.empty())
            m_failure = std::move(reason);
        return std::nullopt;
    }

private:
    std::optional<std::string> textOf(const IniEntry& entry)
    {
        if (entry.value.kind != IniValue::Kind::Text)
            return fail("key " + entry.key + " (line " + std::to_string(entry.line)
                        + ") holds a list or typed value, not a text");
        return entry.value.items.empty() ? std::string() : entry.value.items.front();
    }

    const IniSection& m_section;
    std::string m_failure;
};

bool isRegularFile(const fs::path& path)
{
    std::error_code error;
    return fs::is_regular_file(path, error);
}

bool hasJpgExtension(const fs::path& path)
{
    std::string extension = path.extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return extension == ".jpg";
}

// "12.jpg" -> 12; other names have no frame number.
std::optional<unsigned long long> frameNumber(const fs::path& path)
{
    const std::string stem = path.stem().string();
    if (stem.empty() || stem.size() > 18
        || !std::all_of(stem.begin(), stem.end(), [](char c) { return c >= '0' && c <= '9'; }))
        return std::nullopt;
    return std::stoull(stem);
}

// The collection writes "<n>.jpg" for frame n; frames play in that order.
std::vector<std::string> listImages(const fs::path& folder)
{
    std::vector<fs::path> files;
    std::error_code error;
    for (fs::directory_iterator it(folder, error), end; !error && it != end; it.increment(error)) {
        const fs::path& path = it->path();
        const std::string name = path.filename().string();
        if (!name.empty() && name.front() != '.' && hasJpgExtension(path) && isRegularFile(path))
            files.push_back(path);
    }
    std::sort(files.begin(), files.end(), [](const fs::path& a, const fs::path& b) {
        const auto na = frameNumber(a);
        const auto nb = frameNumber(b);
        if (na && nb && *na != *nb)
            return *na < *nb;
        if (na.has_value() != nb.has_value())
            return na.has_value();
        return a.filename().string() < b.filename().string();
    });
    std::vector<std::string> images;
    images.reserve(files.size());
    for (const fs::path& file : files)
        images.push_back(file.string());
    return images;
}

std::array<std::uint8_t, 6> macBytes(std::uint32_t high, std::uint32_t low)
{
    return {static_cast<std::uint8_t>(high >> 8), static_cast<std::uint8_t>(high),
            static_cast<std::uint8_t>(low >> 24), static_cast<std::uint8_t>(low >> 16),
            static_cast<std::uint8_t>(low >> 8),  static_cast<std::uint8_t>(low)};
}

std::optional<StoreCamera> readCamera(const IniSection& section, const fs::path& camerasFolder,
                                      std::string& failure)
{
    CameraCheck check(section);
    StoreCamera camera;
    camera.group = section.name;

    const std::optional<std::string> model = check.requiredText("chModelName");
    if (model && !isSafeStoreName(*model))
        check.fail("model name \"" + *model + "\" cannot name files in the camera folder");
    const std::string serial = check.optionalText("chSerialNumber");
    if (!serial.empty() && serial != section.name)
        check.fail("chSerialNumber \"" + serial + "\" differs from the group name");
    camera.deviceVersion = check.optionalText("chDeviceVersion");
    camera.manufacturerName = check.optionalText("chManufacturerName");
    camera.manufacturerSpecificInfo = check.optionalText("chManufacturerSpecificInfo");
    camera.userDefinedName = check.optionalText("chUserDefinedName");
    camera.macHigh = check.hexWord("nMacAddrHigh", true);
    camera.macLow = check.hexWord("nMacAddrLow", true);
    camera.majorVersion = check.decimal("nMajorVer", 2);
    camera.minorVersion = check.decimal("nMinorVer", 0);
    camera.configuredIp = check.hexWord("nCurrentIp", false);
    camera.configuredSubnetMask = check.hexWord("nCurrentSubNetMask", false);
    camera.configuredGateway = check.hexWord("nDefultGateWay", false);
    if (check.failed()) {
        failure = check.failure();
        return std::nullopt;
    }
    camera.modelName = *model;
    camera.mac = macBytes(camera.macHigh, camera.macLow);

    const fs::path folder = camerasFolder / camera.group;
    camera.folder = folder.string();
    std::error_code error;
    if (!fs::is_directory(folder, error)) {
        failure = "camera folder " + camera.folder + " is missing";
        return std::nullopt;
    }
    const fs::path xml = folder / (camera.modelName + xq::names::kDescriptionSuffix);
    const fs::path registers = folder / (camera.modelName + xq::names::kRegisterDumpSuffix);
    const fs::path stringRegisters = folder / (camera.modelName + xq::names::kStringRegisterDumpSuffix);
    const fs::path images = folder / xq::names::kImageFolder;
    for (const fs::path* required : {&xml, &registers, &stringRegisters}) {
        if (!isRegularFile(*required)) {
            failure = "file " + required->string() + " is missing";
            return std::nullopt;
        }
    }
    camera.genicamXml = xml.string();
    camera.registerFile = registers.string();
    camera.stringRegisterFile = stringRegisters.string();
    camera.imageFolder = images.string();
    camera.images = listImages(images);
    if (camera.images.empty()) {
        failure = "no .jpg image in " + camera.imageFolder;
        return std::nullopt;
    }
    const fs::path csv = folder / xq::names::kCodesFile;
    if (isRegularFile(csv))
        camera.importInformation = csv.string();
    return camera;
}

} // namespace

std::string StoreProblem::describe() const
{
    if (group.empty())
        return "store: " + message;
    return "camera " + group + " skipped: " + message;
}

std::string defaultStoreDirectory()
{
    std::string base = environment("QUORVEX_SYSTEM_TEMP");
    if (base.empty()) {
        const std::string cache = environment("XDG_CACHE_HOME");
        // Relative values are invalid by the XDG rules and ignored.
        base = (!cache.empty() && cache.front() == '/' ? cache : homeFolder() + "/.cache") + "/ZELTA";
    }
    return base + "/" + xq::names::kVirtualCameraFolder;
}

bool parseHexWord(const std::string& text, std::uint32_t& value)
{
    if (text.empty() || text.size() > 8)
        return false;
    std::uint32_t result = 0;
    for (const char c : text) {
        int digit = -1;
        if (c >= '0' && c <= '9')
            digit = c - '0';
        else if (c >= 'a' && c <= 'f')
            digit = c - 'a' + 10;
        else if (c >= 'A' && c <= 'F')
            digit = c - 'A' + 10;
        if (digit < 0)
            return false;
        result = (result << 4) | static_cast<std::uint32_t>(digit);
    }
    value = result;
    return true;
}

StoreListing readStore(const std::string& storeDirectory)
{
    StoreListing listing;
    listing.storeDirectory = storeDirectory;
    const fs::path store(storeDirectory);
    listing.configFile = (store / kConfigFileName).string();

    std::error_code error;
    if (!fs::exists(listing.configFile, error)) {
        listing.problems.push_back({{}, "no " + std::string(kConfigFileName) + " in " + storeDirectory});
        return listing;
    }
    listing.configFileFound = true;
    IniDocument document;
    std::string readError;
    if (!readIniFile(listing.configFile, document, readError)) {
        listing.problems.push_back({{}, readError});
        return listing;
    }
    for (const IniProblem& problem : document.problems)
        listing.problems.push_back(
            {{}, listing.configFile + " line " + std::to_string(problem.line) + ": " + problem.message});

    std::vector<const IniSection*> groups;
    for (const IniSection& section : document.sections) {
        if (section.name.empty() || section.name == kGlobalGroup)
            continue;
        // "A/B" is a subgroup of A, never a camera of its own.
        if (section.name.find('/') != std::string::npos)
            continue;
        groups.push_back(&section);
    }
    std::sort(groups.begin(), groups.end(),
              [](const IniSection* a, const IniSection* b) { return a->name < b->name; });

    const fs::path cameras = store / kCamerasFolderName;
    for (const IniSection* section : groups) {
        if (!isSafeStoreName(section->name)) {
            listing.problems.push_back({section->name, "group name cannot name a camera folder"});
            continue;
        }
        std::string failure;
        if (std::optional<StoreCamera> camera = readCamera(*section, cameras, failure))
            listing.cameras.push_back(std::move(*camera));
        else
            listing.problems.push_back({section->name, failure});
    }
    return listing;
}

} // namespace quorvex::store
