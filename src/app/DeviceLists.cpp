#include "app/DeviceLists.h"

#include <fmt/format.h>

namespace morvelin {

namespace {

template <class Device>
std::string list(const char* heading, const std::vector<Device>& devices) {
    std::string text = heading;
    for (const Device& device : devices) text += fmt::format("  {}  “{}”\n", device.id, device.name);
    return text;
}

} // namespace

std::string microphoneChoices(AudioInputSource& source) {
    const auto scan = source.microphones();
    if (!scan) return scan.error().description() + "\n";
    if (scan->devices.empty()) return "No microphone is connected.\n";
    return list("Microphones, the default one first:\n", scan->devices);
}

std::string cameraChoices(CameraSource& source) {
    const auto devices = source.devices();
    if (devices.empty()) return "No camera is connected.\n";
    return list("Cameras:\n", devices);
}

} // namespace morvelin
