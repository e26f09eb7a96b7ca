// One camera handle: the open device, its recorded GenICam tree, the node
// records handed out, and the exception callback.
//
// Calls on one session are serialised by its mutex; the session itself is
// shared between the registry and calls in progress, so releasing a handle
// while another thread uses it is safe.
#pragma once

#include "XQCameraControl.h"

#include "CallCanceller.h"
#include "DeviceLink.h"
#include "ExceptionSlot.h"
#include "FeatureAccess.h"
#include "FeatureShortcut.h"
#include "RegisterRecorder.h"
#include "SessionSupport.h"

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace xq {

class CameraSession final : public std::enable_shared_from_this<CameraSession> {
public:
    CameraSession(const XQ_CC_DEVICE_INFO& info, std::uint32_t stamp);
    ~CameraSession();
    CameraSession(const CameraSession&) = delete;
    CameraSession& operator=(const CameraSession&) = delete;

    // Lifecycle (CameraSession.cpp)
    int open(unsigned int accessMode, unsigned short switchoverKey);
    int close();
    // The handle is gone: no more callbacks, device closed. Returns close's
    // result if the device was open, else XQ_OK.
    int release();
    // Where close writes the register dumps; "" for the application folder.
    int setDumpFolder(const char* folder);
    int registerExceptionCallback(XQ_EXCEPTION_CALLBACK callback, void* user);
    int setGvcpTimeout(unsigned int milliseconds);
    int genicamXml(unsigned char* data, unsigned int capacity, unsigned int* length);

    // Node tree (CameraNodes.cpp)
    int rootNode(XQ_XML_NODE_FEATURE* node);
    int children(const XQ_XML_NODE_FEATURE* node, XQ_XML_NODES_LIST* list);
    int nodeFeature(const char* name, XQ_XML_NODE_FEATURE* node);
    int nodeAccessMode(const char* name, unsigned int* mode);
    int nodeVisibility(const char* name, unsigned int* visibility);
    int nodeInterfaceType(const char* name, unsigned int* type);

    // Feature values (CameraFeatures.cpp)
    int getInteger(const char* name, std::int64_t* value);
    int setInteger(const char* name, std::int64_t value);
    int getFloat(const char* name, double* value);
    int setFloat(const char* name, double value);
    int getBoolean(const char* name, bool* value);
    int setBoolean(const char* name, bool value);
    int getString(const char* name, XQ_CC_STRINGVALUE* value);
    int setString(const char* name, const char* value);
    int getEnumeration(const char* name, XQ_ENUMVALUE* value);
    int setEnumerationValue(const char* name, unsigned int value);
    int setEnumerationSymbol(const char* name, const char* symbol);
    int enumerationSymbol(const char* name, unsigned int value, char* buffer, unsigned int capacity);
    int executeCommand(const char* name);

private:
    // XQ_OK if the device is open and usable; callers hold m_mutex.
    int usable() const;
    // Runs operation(tree) under the session lock on an open, usable device.
    template <class Operation>
    int whileOpen(Operation&& operation)
    {
        return whileLinkUsable(m_mutex, m_link, [this] { return genicam(); }, operation);
    }

    // Looks up a feature node and lets describe(node, out) fill *out.
    template <class Value, class Describe>
    int withFeatureNode(const char* name, Value* out, Describe&& describe)
    {
        if (!out)
            return XQ_ERR_INVALID_PARAMETER;
        return whileOpen([&](ArvGc* tree) {
            ArvGcFeatureNode* found = nullptr;
            if (const int code = features::find(tree, name, &found); code != XQ_OK)
                return code;
            describe(found, out);
            return XQ_OK;
        });
    }
    ArvGc* genicam() const;
    int closeLocked();
    std::string dumpModelName() const;
    std::string dumpFolder() const;
    void fillNode(ArvGcFeatureNode* source, XQ_XML_NODE_FEATURE* node);
    // A node's children as records; a category's list is fixed by the
    // description, so it is built once per open and then copied.
    struct ChildRecords {
        bool isCategory = false;
        std::vector<XQ_XML_NODE_FEATURE> records;
    };
    ChildRecords listChildren(ArvGcFeatureNode* parent);
    std::string nodeNameOf(const XQ_XML_NODE_FEATURE& node) const;
    // The feature's shortcut if it has one (of this kind); callers hold m_mutex.
    const FeatureShortcut* shortcutOf(const char* name);
    const FeatureShortcut* shortcutFor(const char* name, FeatureShortcut::Kind kind);
    // Reads a number feature through its shortcut of this kind, letting
    // decode(shortcut, register bytes) fill *value, or through the node graph
    // with readTree(tree) when it has none.
    template <class Value, class ReadTree, class Decode>
    int readNumber(const char* name, Value* value, FeatureShortcut::Kind kind, ReadTree&& readTree, Decode&& decode);
    // XQ_OK if a shortcut's feature may be read now, else the SDK's code.
    int checkReadable(const FeatureShortcut& shortcut);
    int evaluateAvailability(const AvailabilityRule& rule, bool* available);
    // Reads a shortcut's register through the recording device: its bytes
    // (and the address read, which an index moves), or decoded as an integer.
    int readBytes(const RegisterPlace& place, std::uint8_t* bytes, std::uint64_t* address = nullptr);
    int readRegister(const RegisterPlace& place, std::int64_t* value);
    // Marks the registers behind a string feature for the string dump.
    void noteStringFeature(const char* name);

    const XQ_CC_DEVICE_INFO m_info;
    const std::uint32_t m_stamp;
    const std::shared_ptr<ExceptionSlot> m_exceptionSlot = std::make_shared<ExceptionSlot>();
    CallCanceller m_canceller; // close and release end a pending open

    // Own lock: setting the folder must not wait for an open in progress.
    mutable std::mutex m_dumpFolderMutex;
    std::string m_dumpFolder;

    mutable std::mutex m_mutex;
    RegisterRecorder m_recorder;          // outlives the proxy that feeds it
    std::unique_ptr<DeviceLink> m_link;
    GObjectPtr<ArvDevice> m_proxy;
    std::vector<std::string> m_nodeNames; // full names behind node records
    std::unordered_map<std::string, std::uint32_t> m_nodeIndex;
    std::unordered_map<std::string, ChildRecords> m_children; // by full node name
    // Per feature name: its register shortcut, or nothing if it has none.
    // Ordered with a transparent comparison: looked up on every feature read
    // by the caller's name without building a string.
    std::map<std::string, std::optional<FeatureShortcut>, std::less<>> m_shortcuts;
};

} // namespace xq
