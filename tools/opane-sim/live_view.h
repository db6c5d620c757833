#pragma once

#include <optional>
#include <string>
#include <utility>

#include "platform/posix/file_descriptor.h"
#include "shared/screen_geometry.h"
#include "simulator/screen_picture.h"
#include "simulator/simulated_module.h"

namespace opane::sim {

/// What is shown of a module at one moment.
struct View {
    ScreenImage shown{};
    simulator::BacklightLevels backlight;
    std::string status;  ///< one line: node, bus, speed, backlight, last key, frames heard
    bool unplugged = false;

    explicit View(const simulator::SimulatedModule& module);
    bool looksLike(const View& other) const;  ///< whatever the status line says
};

/// Draws the screen on standard output. On a terminal that it fits into it is drawn anew in its place, with plain
/// cursor movements only; elsewhere a new picture follows when the screen has changed.
class ScreenDrawing {
public:
    ScreenDrawing();
    void show(const View& view);
    void breakOff() { last_.reset(); }  ///< something else has been printed: the next picture stands below it

private:
    bool inPlace_;
    FileDescriptor output_;  // without a number: standard output itself
    std::optional<View> last_;
};

/// Keeps a picture file up to date.
class Snapshot {
public:
    explicit Snapshot(std::string path) : path_(std::move(path)) {}

    /// Writes the picture if it looks different from the last one.
    /// @throws std::runtime_error that names the file and the reason
    void show(const View& view);

private:
    std::string path_;
    std::optional<View> last_;
};

}  // namespace opane::sim
