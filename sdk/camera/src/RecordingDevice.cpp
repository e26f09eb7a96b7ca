#include "RecordingDevice.h"

#include "RegisterRecorder.h"

#include <cstring>

namespace {

struct XqRecordingDevice {
    ArvDevice parent;
    ArvDevice* inner;
    ArvGc* genicam;
    xq::RegisterRecorder* recorder;
};

struct XqRecordingDeviceClass {
    ArvDeviceClass parent_class;
};

GType xq_recording_device_get_type();

#define XQ_RECORDING_DEVICE(object) \
    (G_TYPE_CHECK_INSTANCE_CAST((object), xq_recording_device_get_type(), XqRecordingDevice))

G_DEFINE_TYPE(XqRecordingDevice, xq_recording_device, ARV_TYPE_DEVICE)

void xq_recording_device_init(XqRecordingDevice* self)
{
    self->inner = nullptr;
    self->genicam = nullptr;
    self->recorder = nullptr;
}

void recordingDeviceFinalize(GObject* object)
{
    XqRecordingDevice* self = XQ_RECORDING_DEVICE(object);
    // The tree points at this device without a reference: drop it first.
    g_clear_object(&self->genicam);
    g_clear_object(&self->inner);
    G_OBJECT_CLASS(xq_recording_device_parent_class)->finalize(object);
}

ArvGc* recordingGetGenicam(ArvDevice* device) { return XQ_RECORDING_DEVICE(device)->genicam; }

const char* recordingGetGenicamXml(ArvDevice* device, size_t* size)
{
    return arv_device_get_genicam_xml(XQ_RECORDING_DEVICE(device)->inner, size);
}

ArvStream* recordingCreateStream(ArvDevice* device, ArvStreamCallback callback, void* userData, GDestroyNotify destroy,
                                 GError** error)
{
    return arv_device_create_stream_full(XQ_RECORDING_DEVICE(device)->inner, callback, userData, destroy, error);
}

gboolean recordingReadMemory(ArvDevice* device, guint64 address, guint32 size, void* buffer, GError** error)
{
    XqRecordingDevice* self = XQ_RECORDING_DEVICE(device);
    if (!arv_device_read_memory(self->inner, address, size, buffer, error))
        return FALSE;
    self->recorder->recordRead(address, buffer, size);
    return TRUE;
}

gboolean recordingWriteMemory(ArvDevice* device, guint64 address, guint32 size, void* buffer, GError** error)
{
    XqRecordingDevice* self = XQ_RECORDING_DEVICE(device);
    self->recorder->recordWrite(address, buffer, size);
    return arv_device_write_memory(self->inner, address, size, buffer, error);
}

// Register values travel big-endian on the wire; record them that way so
// both access paths give the same bytes.
void toBigEndian(guint32 value, std::uint8_t (&bytes)[4])
{
    bytes[0] = static_cast<std::uint8_t>(value >> 24);
    bytes[1] = static_cast<std::uint8_t>(value >> 16);
    bytes[2] = static_cast<std::uint8_t>(value >> 8);
    bytes[3] = static_cast<std::uint8_t>(value);
}

gboolean recordingReadRegister(ArvDevice* device, guint64 address, guint32* value, GError** error)
{
    XqRecordingDevice* self = XQ_RECORDING_DEVICE(device);
    if (!arv_device_read_register(self->inner, address, value, error))
        return FALSE;
    std::uint8_t bytes[4];
    toBigEndian(*value, bytes);
    self->recorder->recordRead(address, bytes, sizeof bytes);
    return TRUE;
}

gboolean recordingWriteRegister(ArvDevice* device, guint64 address, guint32 value, GError** error)
{
    XqRecordingDevice* self = XQ_RECORDING_DEVICE(device);
    std::uint8_t bytes[4];
    toBigEndian(value, bytes);
    self->recorder->recordWrite(address, bytes, sizeof bytes);
    return arv_device_write_register(self->inner, address, value, error);
}

void xq_recording_device_class_init(XqRecordingDeviceClass* klass)
{
    G_OBJECT_CLASS(klass)->finalize = recordingDeviceFinalize;
    ArvDeviceClass* deviceClass = ARV_DEVICE_CLASS(klass);
    deviceClass->get_genicam = recordingGetGenicam;
    deviceClass->get_genicam_xml = recordingGetGenicamXml;
    deviceClass->create_stream = recordingCreateStream;
    deviceClass->read_memory = recordingReadMemory;
    deviceClass->write_memory = recordingWriteMemory;
    deviceClass->read_register = recordingReadRegister;
    deviceClass->write_register = recordingWriteRegister;
}

} // namespace

namespace xq {

GObjectPtr<ArvDevice> makeRecordingDevice(ArvDevice* inner, RegisterRecorder* recorder)
{
    size_t size = 0;
    const char* xml = arv_device_get_genicam_xml(inner, &size);
    if (!xml || size == 0)
        return nullptr;
    GObjectPtr<ArvDevice> device(ARV_DEVICE(g_object_new(xq_recording_device_get_type(), nullptr)));
    XqRecordingDevice* self = XQ_RECORDING_DEVICE(device.get());
    self->inner = ARV_DEVICE(g_object_ref(inner));
    self->recorder = recorder;
    // Parsing is serialised inside arv_gc_new (sdk/common/src/AravisSystem.h).
    self->genicam = arv_gc_new(device.get(), xml, size);
    if (!self->genicam)
        return nullptr;
    // Every read must reach the device, so that the recording is complete.
    arv_gc_set_register_cache_policy(self->genicam, ARV_REGISTER_CACHE_POLICY_DISABLE);
    return device;
}

} // namespace xq
