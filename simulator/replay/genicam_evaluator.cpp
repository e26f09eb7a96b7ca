#include "genicam_evaluator.h"

#include "register_image.h"

#include <arv.h>

#include <mutex>

namespace quorvex::sim {

namespace {

std::mutex& aravisLock()
{
    static std::mutex lock;
    return lock;
}

// An ArvDevice whose memory is a RegisterImage: the GenICam engine reads
// and writes it like a device on the wire.
struct ImageDevice {
    ArvDevice parent;
    RegisterImage* image;
};

struct ImageDeviceClass {
    ArvDeviceClass parent_class;
};

GType image_device_get_type();

G_DEFINE_TYPE(ImageDevice, image_device, ARV_TYPE_DEVICE)

ImageDevice* asImageDevice(ArvDevice* device)
{
    return G_TYPE_CHECK_INSTANCE_CAST(device, image_device_get_type(), ImageDevice);
}

void image_device_init(ImageDevice* self)
{
    self->image = nullptr;
}

bool inAddressSpace(guint64 address, guint32 size)
{
    return address + size <= (guint64{1} << 32);
}

gboolean imageReadMemory(ArvDevice* device, guint64 address, guint32 size, void* buffer, GError** error)
{
    if (!inAddressSpace(address, size)) {
        g_set_error(error, ARV_DEVICE_ERROR, ARV_DEVICE_ERROR_PROTOCOL_ERROR, "address out of range");
        return FALSE;
    }
    asImageDevice(device)->image->read(static_cast<std::uint32_t>(address), static_cast<std::uint8_t*>(buffer), size);
    return TRUE;
}

gboolean imageWriteMemory(ArvDevice* device, guint64 address, guint32 size, void* buffer, GError** error)
{
    if (!inAddressSpace(address, size)) {
        g_set_error(error, ARV_DEVICE_ERROR, ARV_DEVICE_ERROR_PROTOCOL_ERROR, "address out of range");
        return FALSE;
    }
    asImageDevice(device)->image->write(static_cast<std::uint32_t>(address), static_cast<const std::uint8_t*>(buffer),
                                        size);
    return TRUE;
}

// Registers travel big-endian, as on the wire.
gboolean imageReadRegister(ArvDevice* device, guint64 address, guint32* value, GError** error)
{
    std::uint8_t bytes[4];
    if (!imageReadMemory(device, address, 4, bytes, error))
        return FALSE;
    *value = guint32{bytes[0]} << 24 | guint32{bytes[1]} << 16 | guint32{bytes[2]} << 8 | bytes[3];
    return TRUE;
}

gboolean imageWriteRegister(ArvDevice* device, guint64 address, guint32 value, GError** error)
{
    std::uint8_t bytes[4] = {static_cast<std::uint8_t>(value >> 24), static_cast<std::uint8_t>(value >> 16),
                             static_cast<std::uint8_t>(value >> 8), static_cast<std::uint8_t>(value)};
    return imageWriteMemory(device, address, 4, bytes, error);
}

void image_device_class_init(ImageDeviceClass* klass)
{
    ArvDeviceClass* deviceClass = ARV_DEVICE_CLASS(klass);
    deviceClass->read_memory = imageReadMemory;
    deviceClass->write_memory = imageWriteMemory;
    deviceClass->read_register = imageReadRegister;
    deviceClass->write_register = imageWriteRegister;
}

// Clears a GError on scope exit and says whether one was set.
class ErrorSlot final {
public:
    ErrorSlot() = default;
    ~ErrorSlot() { g_clear_error(&m_error); }
    ErrorSlot(const ErrorSlot&) = delete;
    ErrorSlot& operator=(const ErrorSlot&) = delete;
    GError** out() { return &m_error; }
    bool failed() const { return m_error != nullptr; }

private:
    GError* m_error = nullptr;
};

} // namespace

struct GenicamEvaluator::Private final {
    ~Private()
    {
        // The description points at the device without a reference: drop it first.
        g_clear_object(&genicam);
        g_clear_object(&device);
    }

    ArvGcNode* node(const std::string& name) const { return arv_gc_get_node(genicam, name.c_str()); }

    ArvDevice* device = nullptr;
    ArvGc* genicam = nullptr;
};

GenicamEvaluator::GenicamEvaluator(std::unique_ptr<Private> data) : d(std::move(data)) {}

GenicamEvaluator::~GenicamEvaluator()
{
    const std::lock_guard<std::mutex> lock(aravisLock());
    d.reset();
}

std::unique_ptr<GenicamEvaluator> GenicamEvaluator::create(std::string_view xml, RegisterImage& image, std::string& error)
{
    const std::lock_guard<std::mutex> lock(aravisLock());
    auto data = std::make_unique<Private>();
    data->device = ARV_DEVICE(g_object_new(image_device_get_type(), nullptr));
    asImageDevice(data->device)->image = &image;
    data->genicam = arv_gc_new(data->device, xml.data(), xml.size());
    if (!data->genicam || !ARV_IS_GC_CATEGORY(arv_gc_get_node(data->genicam, "Root"))) {
        error = "the GenICam description cannot be read (no \"Root\" category)";
        return nullptr;
    }
    // Every evaluation must see the image as it is now.
    arv_gc_set_register_cache_policy(data->genicam, ARV_REGISTER_CACHE_POLICY_DISABLE);
    return std::unique_ptr<GenicamEvaluator>(new GenicamEvaluator(std::move(data)));
}

std::optional<RegisterRange> GenicamEvaluator::registerOf(const std::string& feature) const
{
    const std::lock_guard<std::mutex> lock(aravisLock());
    ArvGcNode* node = d->node(feature);
    // A command or integer names its register through pValue, sometimes via
    // another integer; a few links are plenty for real descriptions.
    for (int depth = 0; node && depth < 8; ++depth) {
        if (ARV_IS_GC_REGISTER(node)) {
            ErrorSlot addressError;
            ErrorSlot lengthError;
            const guint64 address = arv_gc_register_get_address(ARV_GC_REGISTER(node), addressError.out());
            const guint64 length = arv_gc_register_get_length(ARV_GC_REGISTER(node), lengthError.out());
            if (addressError.failed() || lengthError.failed() || length == 0 || length > 4096 ||
                address + length > (guint64{1} << 32))
                return std::nullopt;
            return RegisterRange{static_cast<std::uint32_t>(address), static_cast<std::uint32_t>(length)};
        }
        ArvGcNode* linked = nullptr;
        for (ArvDomNode* child = arv_dom_node_get_first_child(ARV_DOM_NODE(node)); child;
             child = arv_dom_node_get_next_sibling(child)) {
            if (ARV_IS_GC_PROPERTY_NODE(child) &&
                arv_gc_property_node_get_node_type(ARV_GC_PROPERTY_NODE(child)) == ARV_GC_PROPERTY_NODE_TYPE_P_VALUE) {
                linked = arv_gc_property_node_get_linked_node(ARV_GC_PROPERTY_NODE(child));
                break;
            }
        }
        node = linked;
    }
    return std::nullopt;
}

std::optional<std::int64_t> GenicamEvaluator::integer(const std::string& feature) const
{
    const std::lock_guard<std::mutex> lock(aravisLock());
    ArvGcNode* node = d->node(feature);
    if (!node || !ARV_IS_GC_INTEGER(node))
        return std::nullopt;
    ErrorSlot error;
    const gint64 value = arv_gc_integer_get_value(ARV_GC_INTEGER(node), error.out());
    if (error.failed())
        return std::nullopt;
    return value;
}

std::optional<double> GenicamEvaluator::floating(const std::string& feature) const
{
    const std::lock_guard<std::mutex> lock(aravisLock());
    ArvGcNode* node = d->node(feature);
    if (!node || !ARV_IS_GC_FLOAT(node))
        return std::nullopt;
    ErrorSlot error;
    const double value = arv_gc_float_get_value(ARV_GC_FLOAT(node), error.out());
    if (error.failed())
        return std::nullopt;
    return value;
}

bool GenicamEvaluator::setFloating(const std::string& feature, double value)
{
    const std::lock_guard<std::mutex> lock(aravisLock());
    ArvGcNode* node = d->node(feature);
    if (!node || !ARV_IS_GC_FLOAT(node))
        return false;
    ErrorSlot error;
    arv_gc_float_set_value(ARV_GC_FLOAT(node), value, error.out());
    return !error.failed();
}

std::optional<bool> GenicamEvaluator::boolean(const std::string& feature) const
{
    const std::lock_guard<std::mutex> lock(aravisLock());
    ArvGcNode* node = d->node(feature);
    if (!node || !ARV_IS_GC_BOOLEAN(node))
        return std::nullopt;
    ErrorSlot error;
    const gboolean value = arv_gc_boolean_get_value(ARV_GC_BOOLEAN(node), error.out());
    if (error.failed())
        return std::nullopt;
    return value != FALSE;
}

std::optional<std::string> GenicamEvaluator::enumerationEntry(const std::string& feature) const
{
    const std::lock_guard<std::mutex> lock(aravisLock());
    ArvGcNode* node = d->node(feature);
    if (!node || !ARV_IS_GC_ENUMERATION(node))
        return std::nullopt;
    ErrorSlot error;
    const char* value = arv_gc_enumeration_get_string_value(ARV_GC_ENUMERATION(node), error.out());
    if (error.failed() || !value)
        return std::nullopt;
    return std::string(value);
}

std::optional<std::int64_t> GenicamEvaluator::enumerationValue(const std::string& feature) const
{
    const std::lock_guard<std::mutex> lock(aravisLock());
    ArvGcNode* node = d->node(feature);
    if (!node || !ARV_IS_GC_ENUMERATION(node))
        return std::nullopt;
    ErrorSlot error;
    const gint64 value = arv_gc_enumeration_get_int_value(ARV_GC_ENUMERATION(node), error.out());
    if (error.failed())
        return std::nullopt;
    return value;
}

} // namespace quorvex::sim
