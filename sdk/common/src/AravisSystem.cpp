#include "AravisSystem.h"

#include "DescriptionCheck.h"

#include <arv.h>
#include <dlfcn.h>

namespace {

// Aravis's own definition of one of its functions, looked up in Aravis
// itself so that the wrapper of the other SDK library is never called.
template <class Function>
Function aravisEntry(const char* name)
{
    void* library = ::dlopen("libaravis-0.8.so.0", RTLD_LAZY | RTLD_NOLOAD);
    return library ? reinterpret_cast<Function>(::dlsym(library, name)) : nullptr;
}

using NewFromMemory = ArvDomDocument* (*)(const void*, int, GError**);
using AppendFromMemory = void (*)(ArvDomDocument*, ArvDomNode*, const void*, int, GError**);

NewFromMemory realNewFromMemory()
{
    static const auto entry = aravisEntry<NewFromMemory>("arv_dom_document_new_from_memory");
    return entry;
}

AppendFromMemory realAppendFromMemory()
{
    static const auto entry = aravisEntry<AppendFromMemory>("arv_dom_document_append_from_memory");
    return entry;
}

} // namespace

extern "C" __attribute__((visibility("default"), weak)) std::mutex* xq_sdk_aravis_lock()
{
    static std::mutex mutex;
    return &mutex;
}

extern "C" __attribute__((visibility("default"), weak)) std::mutex* xq_sdk_xml_parse_lock()
{
    static std::mutex mutex;
    return &mutex;
}

// Aravis's two ways into its XML parser share one static parse state (and
// create the document-type table on first use). Defining them here puts
// these wrappers first in the process's symbol lookup, also for Aravis's own
// calls (it calls them through its PLT), so a lock covers exactly the parse:
// CPU work on bytes already downloaded.
extern "C" __attribute__((visibility("default"))) ArvDomDocument*
arv_dom_document_new_from_memory(const void* buffer, int size, GError** error)
{
    const NewFromMemory parse = realNewFromMemory();
    if (!parse)
        return nullptr;
    const std::lock_guard<std::mutex> lock(*xq_sdk_xml_parse_lock());
    return parse(buffer, size, error);
}

extern "C" __attribute__((visibility("default"))) void
arv_dom_document_append_from_memory(ArvDomDocument* document, ArvDomNode* node, const void* buffer, int size,
                                    GError** error)
{
    const AppendFromMemory parse = realAppendFromMemory();
    if (!parse)
        return;
    const std::lock_guard<std::mutex> lock(*xq_sdk_xml_parse_lock());
    parse(document, node, buffer, size, error);
}

// Aravis's zip reader follows every offset of the archive unchecked. The SDK
// checks a description before opening, but Aravis reads it again, and a
// device may answer differently then: checked here once more on the bytes
// Aravis holds, a bad archive becomes one without members, which Aravis
// reports as an invalid format (the open then fails instead of crashing).
extern "C" __attribute__((visibility("default"))) ArvZip* arv_zip_new(const void* buffer, size_t size)
{
    using ZipNew = ArvZip* (*)(const void*, size_t);
    static const auto real = aravisEntry<ZipNew>("arv_zip_new");
    if (!real)
        return nullptr;
    std::string reason;
    if (xq::isSafeZippedDescription(static_cast<const std::uint8_t*>(buffer), size, xq::kMaxDescriptionBytes, reason))
        return real(buffer, size);
    static const unsigned char noArchive[4] = {0, 0, 0, 0};
    return real(noArchive, sizeof noArchive);
}

namespace xq {

std::mutex& aravisSystemMutex() { return *xq_sdk_aravis_lock(); }

} // namespace xq
