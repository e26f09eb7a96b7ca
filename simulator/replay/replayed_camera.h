#pragma once
// A virtual camera of the store served as a GigE Vision device: the
// identity its configuration group gives, the collected GenICam
// description, feature registers replayed from the register dumps, and the
// collected images as frames. While a client controls it, the camera's
// register file is held (store/replay CameraHold), so the tool refuses to
// delete it.

#include "core/device_model.h"
#include "genicam_evaluator.h"
#include "jpeg_frame_source.h"
#include "register_image.h"

#include "camera_hold.h"
#include "store_reader.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace quorvex::sim {

using LogSink = std::function<void(const std::string&)>;

// Largest description served; the window for it is 16 MiB.
inline constexpr std::uintmax_t kMaxGenicamXmlBytes = 15u * 1024u * 1024u;

class ReplayedCamera final : public DeviceModel {
public:
    // Loads everything the camera needs; null with a message when a file is
    // missing, unreadable or malformed. log receives notes about a camera
    // that is served anyway (unreadable images, sizes that differ, holds).
    static std::unique_ptr<ReplayedCamera> load(const store::StoreCamera& camera, LogSink log, std::string& error);
    ~ReplayedCamera() override;

    const DeviceIdentity& identity() const override { return m_identity; }
    std::string genicamFileName() const override;
    std::string_view genicamXml() const override { return m_xml; }
    gvcp::Status readMemory(std::uint32_t address, MutableByteView out) override;
    gvcp::Status writeMemory(std::uint32_t address, ByteView data, DeviceCommands& commands) override;
    AcquisitionSetup acquisitionSetup() const override;
    void setAcquisitionActive(bool) override {}
    std::unique_ptr<FrameSource> createFrameSource() const override;
    void controlChanged(bool controlled) override;
    std::vector<BootstrapSetting> initialBootstrapSettings() const override;
    void transportChanged(const TransportSettings& settings) override;

    const store::StoreCamera& storeCamera() const { return m_camera; }
    const std::vector<std::string>& images() const { return m_images; }
    bool isHeld() const { return m_hold.isHeld(); }

private:
    ReplayedCamera(store::StoreCamera camera, LogSink log);
    FrameFormat frameFormat() const;
    // The rate the link carries for the current frame format.
    double linkFrameRate() const;
    // ResultingFrameRate as collected, lowered to what the link carries.
    void updateResultingFrameRate();

    store::StoreCamera m_camera;
    LogSink m_log;
    DeviceIdentity m_identity;
    std::string m_xml;
    // The evaluator points into the image: declared after it, destroyed first.
    std::unique_ptr<RegisterImage> m_image;
    std::unique_ptr<GenicamEvaluator> m_genicam;
    std::optional<RegisterRange> m_acquisitionStart;
    std::optional<RegisterRange> m_acquisitionStop;
    std::optional<RegisterRange> m_triggerSoftware;
    std::vector<std::string> m_images;
    JpegSize m_imageSize; // of the first usable image
    TransportSettings m_transport;
    std::optional<double> m_collectedFrameRate;      // ResultingFrameRate as the collection read it
    std::optional<RegisterRange> m_resultingFrameRate; // its register
    store::CameraHold m_hold;
};

} // namespace quorvex::sim
