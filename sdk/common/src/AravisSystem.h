// Process-wide state around Aravis's globals, and the Aravis entries the
// SDK wraps.
//
// What Aravis 0.8 shares between threads without a lock of its own:
// - the interface objects and their device lists, which discovery rebuilds
//   and opening by device id searches: aravisSystemMutex() is held around
//   both. Opening a GigE device on its known address (arv_gv_device_new)
//   touches neither and runs without it.
// - the GenICam XML parser, which keeps its parse state in one static
//   record (and creates its document-type table lazily): Aravis's two
//   entries into it (arv_dom_document_new_from_memory and _append_from_
//   memory, which arv_gc_new and the GigE defaults use) are defined again
//   in this library, so every call in the process, Aravis's own included,
//   passes a lock that covers nothing but the parse, never the download
//   before it.
// Aravis's zip reader (arv_zip_new) is wrapped the same way: an archive
// that fails DescriptionCheck's rules reaches it as one without members.
// Both locks are shared by the two SDK libraries (exported weak, so the
// dynamic linker binds every library to the same definition).
#pragma once

#include <mutex>

namespace xq {

// Held around Aravis calls that read or rebuild its device lists.
std::mutex& aravisSystemMutex();

} // namespace xq
