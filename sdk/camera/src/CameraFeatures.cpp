// Typed feature values of a camera session.
#include "CameraSession.h"

#include "ErrorMapping.h"
#include "FeatureAccess.h"
#include "TextFields.h"

#include <algorithm>
#include <string_view>
#include <vector>

namespace xq {
namespace {

// Marks string accesses for the recorder for the duration of one call.
class StringContext final {
public:
    explicit StringContext(RegisterRecorder& recorder) : m_recorder(recorder) { m_recorder.setStringContext(true); }
    ~StringContext() { m_recorder.setStringContext(false); }
    StringContext(const StringContext&) = delete;
    StringContext& operator=(const StringContext&) = delete;

private:
    RegisterRecorder& m_recorder;
};

} // namespace

template <class Value, class ReadTree, class Decode>
int CameraSession::readNumber(const char* name, Value* value, FeatureShortcut::Kind kind, ReadTree&& readTree,
                              Decode&& decode)
{
    if (!name || !*name || !value)
        return XQ_ERR_INVALID_PARAMETER;
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (const int state = usable(); state != XQ_OK)
        return state;
    const FeatureShortcut* shortcut = shortcutFor(name, kind);
    if (!shortcut)
        return readTree(genicam());
    if (const int code = checkReadable(*shortcut); code != XQ_OK)
        return code;
    std::uint8_t bytes[8] = {};
    if (const int code = readBytes(shortcut->place, bytes); code != XQ_OK)
        return code;
    decode(*shortcut, bytes);
    return XQ_OK;
}

int CameraSession::getInteger(const char* name, std::int64_t* value)
{
    return readNumber(
        name, value, FeatureShortcut::Kind::Integer, [&](ArvGc* tree) { return features::getInteger(tree, name, value); },
        [&](const FeatureShortcut& shortcut, const std::uint8_t* bytes) {
            *value = decodeIntegerRegister(bytes, shortcut.place);
        });
}

const FeatureShortcut* CameraSession::shortcutOf(const char* name)
{
    auto known = m_shortcuts.find(std::string_view(name));
    if (known == m_shortcuts.end()) {
        ArvGcFeatureNode* node = nullptr;
        std::optional<FeatureShortcut> shortcut;
        if (features::find(genicam(), name, &node) == XQ_OK)
            shortcut = featureShortcutFor(node);
        known = m_shortcuts.emplace(name, std::move(shortcut)).first;
    }
    return known->second ? &*known->second : nullptr;
}

const FeatureShortcut* CameraSession::shortcutFor(const char* name, FeatureShortcut::Kind kind)
{
    const FeatureShortcut* shortcut = shortcutOf(name);
    return shortcut && shortcut->kind == kind ? shortcut : nullptr;
}

int CameraSession::evaluateAvailability(const AvailabilityRule& rule, bool* available)
{
    std::int64_t value = 0;
    for (const AvailabilityRule::Variable& variable : rule.variables) {
        if (const int code = readRegister(variable.place, &value); code != XQ_OK)
            return code;
        if (rule.formula)
            arv_evaluator_set_int64_variable(rule.formula.get(), variable.name.c_str(), value);
    }
    if (rule.formula) {
        GErrorSlot error;
        value = arv_evaluator_evaluate_as_int64(rule.formula.get(), error.out());
        if (error)
            return XQ_ERR_GENICAM;
    }
    *available = value != 0;
    return XQ_OK;
}

int CameraSession::checkReadable(const FeatureShortcut& shortcut)
{
    if (!shortcut.availability)
        return XQ_OK;
    bool available = false;
    if (const int code = evaluateAvailability(*shortcut.availability, &available); code != XQ_OK)
        return code;
    return available ? XQ_OK : XQ_ERR_ACCESS_DENIED;
}

int CameraSession::readBytes(const RegisterPlace& place, std::uint8_t* bytes, std::uint64_t* address)
{
    GErrorSlot error;
    std::uint64_t at = place.address;
    if (place.index) {
        at += arv_gc_index_node_get_index(place.index, place.length, error.out());
        if (error)
            return errorCodeOf(error.get());
    }
    if (address)
        *address = at;
    // Through the recording device, like the tree's own read. An aligned
    // 4-byte register goes as a register read, the cheapest GVCP command,
    // which every GigE Vision device serves; the bytes recorded are the same.
    if (place.length == 4 && at % 4 == 0) {
        guint32 word = 0;
        if (!arv_device_read_register(m_proxy.get(), at, &word, error.out()))
            return errorCodeOf(error.get());
        bytes[0] = static_cast<std::uint8_t>(word >> 24);
        bytes[1] = static_cast<std::uint8_t>(word >> 16);
        bytes[2] = static_cast<std::uint8_t>(word >> 8);
        bytes[3] = static_cast<std::uint8_t>(word);
    } else if (!arv_device_read_memory(m_proxy.get(), at, place.length, bytes, error.out())) {
        return errorCodeOf(error.get());
    }
    return XQ_OK;
}

int CameraSession::readRegister(const RegisterPlace& place, std::int64_t* value)
{
    std::uint8_t bytes[8] = {};
    if (const int code = readBytes(place, bytes); code != XQ_OK)
        return code;
    *value = decodeIntegerRegister(bytes, place);
    return XQ_OK;
}

int CameraSession::setInteger(const char* name, std::int64_t value)
{
    return whileOpen([&](ArvGc* tree) { return features::setInteger(tree, name, value); });
}

int CameraSession::getFloat(const char* name, double* value)
{
    return readNumber(
        name, value, FeatureShortcut::Kind::Float, [&](ArvGc* tree) { return features::getFloat(tree, name, value); },
        [&](const FeatureShortcut& shortcut, const std::uint8_t* bytes) {
            *value = decodeFloatRegister(bytes, shortcut.place);
        });
}

int CameraSession::setFloat(const char* name, double value)
{
    return whileOpen([&](ArvGc* tree) { return features::setFloat(tree, name, value); });
}

int CameraSession::getBoolean(const char* name, bool* value)
{
    return readNumber(
        name, value, FeatureShortcut::Kind::Boolean, [&](ArvGc* tree) { return features::getBoolean(tree, name, value); },
        [&](const FeatureShortcut& shortcut, const std::uint8_t* bytes) {
            *value = decodeIntegerRegister(bytes, shortcut.place) == shortcut.onValue;
        });
}

int CameraSession::setBoolean(const char* name, bool value)
{
    return whileOpen([&](ArvGc* tree) { return features::setBoolean(tree, name, value); });
}

void CameraSession::noteStringFeature(const char* name)
{
    ArvGcFeatureNode* node = nullptr;
    if (features::find(genicam(), name, &node) != XQ_OK || !ARV_IS_GC_REGISTER(node))
        return;
    GErrorSlot error;
    const guint64 address = arv_gc_register_get_address(ARV_GC_REGISTER(node), error.out());
    if (error)
        return;
    const guint64 length = arv_gc_register_get_length(ARV_GC_REGISTER(node), error.out());
    if (!error)
        m_recorder.markStringRange(address, length);
}

int CameraSession::getString(const char* name, XQ_CC_STRINGVALUE* value)
{
    if (!value)
        return XQ_ERR_INVALID_PARAMETER;
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (const int state = usable(); state != XQ_OK)
        return state;
    const StringContext context(m_recorder);
    std::string text;
    std::int64_t maxLength = 0;
    if (const FeatureShortcut* shortcut = name ? shortcutFor(name, FeatureShortcut::Kind::String) : nullptr) {
        if (const int code = checkReadable(*shortcut); code != XQ_OK)
            return code;
        const RegisterPlace& place = shortcut->place;
        std::vector<std::uint8_t> bytes(place.length);
        std::uint64_t address = 0;
        if (const int code = readBytes(place, bytes.data(), &address); code != XQ_OK)
            return code;
        m_recorder.markStringRange(address, place.length);
        // The text ends at the first NUL, or with the register.
        text.assign(bytes.begin(), std::find(bytes.begin(), bytes.end(), std::uint8_t{0}));
        maxLength = place.length;
    } else {
        if (const int code = features::getString(genicam(), name, &text, &maxLength); code != XQ_OK)
            return code;
        noteStringFeature(name);
    }
    *value = XQ_CC_STRINGVALUE{};
    copyText(value->chValue, text);
    value->nMaxLength = maxLength;
    return XQ_OK;
}

int CameraSession::setString(const char* name, const char* value)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (const int state = usable(); state != XQ_OK)
        return state;
    const StringContext context(m_recorder);
    const int code = features::setString(genicam(), name, value);
    if (code == XQ_OK)
        noteStringFeature(name);
    return code;
}

int CameraSession::getEnumeration(const char* name, XQ_ENUMVALUE* value)
{
    return readNumber(
        name, value, FeatureShortcut::Kind::Enumeration,
        [&](ArvGc* tree) { return features::getEnumeration(tree, name, value); },
        [&](const FeatureShortcut& shortcut, const std::uint8_t* bytes) {
            *value = XQ_ENUMVALUE{};
            value->nCurrentValue = static_cast<unsigned int>(decodeIntegerRegister(bytes, shortcut.place));
            const std::size_t kept = std::min<std::size_t>(shortcut.entryValues.size(), XQ_MAX_ENUM_SUPPORTED_NUM);
            for (std::size_t i = 0; i < kept; ++i)
                value->nSupportedValues[i] = static_cast<unsigned int>(shortcut.entryValues[i]);
            value->nSupportedCount = static_cast<unsigned int>(kept);
        });
}

int CameraSession::setEnumerationValue(const char* name, unsigned int value)
{
    return whileOpen([&](ArvGc* tree) { return features::setEnumerationValue(tree, name, value); });
}

int CameraSession::setEnumerationSymbol(const char* name, const char* symbol)
{
    return whileOpen([&](ArvGc* tree) { return features::setEnumerationSymbol(tree, name, symbol); });
}

int CameraSession::enumerationSymbol(const char* name, unsigned int value, char* buffer, unsigned int capacity)
{
    if (!buffer || capacity == 0)
        return XQ_ERR_INVALID_PARAMETER;
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (const int state = usable(); state != XQ_OK)
        return state;
    std::string symbol;
    if (const int code = features::enumerationSymbolOf(genicam(), name, value, &symbol); code != XQ_OK)
        return code;
    if (symbol.size() >= capacity)
        return XQ_ERR_BUFFER_TOO_SMALL;
    copyText(buffer, capacity, symbol);
    return XQ_OK;
}

int CameraSession::executeCommand(const char* name)
{
    return whileOpen([&](ArvGc* tree) { return features::executeCommand(tree, name); });
}

} // namespace xq
