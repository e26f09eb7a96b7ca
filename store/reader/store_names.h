#pragma once
// Names that become folder or file names inside the store: group names and
// model names come from an editable file and from devices, so they are
// checked before any path is built from them.

#include <string_view>

namespace quorvex::store {

// True for a single, ordinary path component: not empty, not "." or "..",
// no "/" or "\", no control characters, at most 255 bytes.
bool isSafeStoreName(std::string_view name);

} // namespace quorvex::store
