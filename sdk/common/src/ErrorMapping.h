// Turns Aravis errors into the SDK's return codes.
#pragma once

#include <glib.h>

namespace xq {

int errorCodeOf(const GError* error);

} // namespace xq
