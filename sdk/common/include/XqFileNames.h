#pragma once
// The names of the files a collection and the virtual camera store are made
// of, spelled here once: the camera SDK writes the register dumps under
// them, the tool collects and copies them, and the simulator finds them
// again when it replays a camera.

namespace xq::names {

// In a collection folder and in a camera folder.
inline constexpr char kDescriptionSuffix[] = ".xml";               // <model>.xml
inline constexpr char kRegisterDumpSuffix[] = "_regfile.dat";      // <model>_regfile.dat
inline constexpr char kStringRegisterDumpSuffix[] = "_strRegFile.dat"; // <model>_strRegFile.dat
inline constexpr char kImageFolder[] = "Jpg";                      // Jpg/1.jpg, 2.jpg, ...
inline constexpr char kImageSuffix[] = ".jpg";
inline constexpr char kCodesFile[] = "ImportInformation.csv";

// The store: <machine-wide temporary folder>/VirtualCamera, and the
// suite's collection root <suite>/common/VirtualCamera.
inline constexpr char kVirtualCameraFolder[] = "VirtualCamera";
inline constexpr char kStoreConfigFile[] = "VirtualCameraConfig.ini";
inline constexpr char kStoreCamerasFolder[] = "Cameras";
// A virtual camera's group, folder and serial number: this prefix and an
// eight-digit ID. Discovery tells virtual cameras from devices by it.
inline constexpr char kVirtualCameraPrefix[] = "Vir";

} // namespace xq::names
