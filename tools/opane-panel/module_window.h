#pragma once

#include <QLabel>
#include <QTimer>
#include <QWidget>
#include <optional>

#include "simulator/screen_picture.h"
#include "simulator/served_module.h"

namespace opane::panel_tool {

/// What a simulated module shows, as it is at a moment.
struct ModuleLook {
    ScreenImage screen{};
    simulator::BacklightLevels backlight;
    bool operator==(const ModuleLook&) const;
};

/// The module's screen, in pixels as large as fit.
class ScreenPicture final : public QWidget {
public:
    ScreenPicture();
    void show(const ModuleLook& look);
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    ModuleLook look_;
};

/// Shows a simulated module while it is served: its screen on the colour of its backlight, what else it does not show
/// of itself, and the keys of its infrared remote control. The module outlives it.
class ModuleWindow final : public QWidget {
public:
    explicit ModuleWindow(simulator::ServedModule& module);

    /// Shows the module as it is now; done every twentieth of a second by itself.
    void follow();

private:
    simulator::ServedModule& module_;
    ScreenPicture* picture_;
    QLabel* facts_;
    QTimer timer_;
    std::optional<ModuleLook> shown_;
};

}  // namespace opane::panel_tool
