// An ArvDevice that sits between a GenICam tree and the real device and
// records every register and memory access the tree makes.
//
// The tree is built from the real device's XML with the proxy as its port,
// so feature reads and writes pass here; Aravis's own traffic of the real
// device (control, heartbeat, XML download, streams) does not.
#pragma once

#include "GObjectPtr.h"

#include <arv.h>

namespace xq {

class RegisterRecorder;

// Makes the proxy over inner (which it keeps a reference to). recorder must
// outlive the proxy. Returns null if the XML cannot be parsed.
GObjectPtr<ArvDevice> makeRecordingDevice(ArvDevice* inner, RegisterRecorder* recorder);

} // namespace xq
