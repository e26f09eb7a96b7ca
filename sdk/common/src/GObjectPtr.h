// Owning wrappers for GLib objects and errors used by both SDKs.
#pragma once

#include <glib-object.h>

#include <memory>
#include <string>

namespace xq {

struct GObjectUnref final {
    void operator()(gpointer object) const noexcept
    {
        if (object)
            g_object_unref(object);
    }
};

template <class T>
using GObjectPtr = std::unique_ptr<T, GObjectUnref>;

// Receives a GError from an Aravis call and frees it on scope exit.
class GErrorSlot final {
public:
    GErrorSlot() = default;
    GErrorSlot(const GErrorSlot&) = delete;
    GErrorSlot& operator=(const GErrorSlot&) = delete;
    ~GErrorSlot() { clear(); }

    GError** out() noexcept
    {
        clear();
        return &m_error;
    }
    explicit operator bool() const noexcept { return m_error != nullptr; }
    const GError* get() const noexcept { return m_error; }
    std::string message() const { return m_error ? m_error->message : std::string(); }
    void clear() noexcept
    {
        if (m_error)
            g_error_free(m_error);
        m_error = nullptr;
    }

private:
    GError* m_error = nullptr;
};

} // namespace xq
