#pragma once
// The store commands: add a virtual camera from a collected model, list the
// cameras, delete one. The store's own functions do the work, the same
// ones the window's slots call.

namespace cli {

class Console;
struct Request;

int runAdd(const Request& request, const Console& console);
int runCameras(const Request& request, const Console& console);
int runDelete(const Request& request, const Console& console);

} // namespace cli
