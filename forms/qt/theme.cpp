#include "forms/qt/theme.h"

#include <QApplication>
#include <QPalette>
#include <QStyleFactory>

namespace opane::qt {
namespace {

struct Colours {
    QColor window;
    QColor base;  // behind what can be typed
    QColor button;
    QColor text;
    QColor faintText;  // of what is disabled or only suggested
    QColor accent;     // behind a selection
    QColor selectedText;
};

const Colours kLight{QColor(239, 239, 239), Qt::white, QColor(239, 239, 239), Qt::black, QColor(120, 120, 120),
                     QColor(25, 95, 170),   Qt::white};
const Colours kDark{QColor(45, 47, 50),    QColor(28, 29, 31),   QColor(60, 63, 66), QColor(235, 235, 235),
                    QColor(150, 150, 150), QColor(60, 130, 210), Qt::white};

QPalette paletteOf(const Colours& colours) {
    QPalette palette(colours.button, colours.window);  // with the shades of borders
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText}) {
        palette.setColor(role, colours.text);
        palette.setColor(QPalette::Disabled, role, colours.faintText);
    }
    palette.setColor(QPalette::PlaceholderText, colours.faintText);
    palette.setColor(QPalette::Base, colours.base);
    palette.setColor(QPalette::Disabled, QPalette::Base, colours.window);
    palette.setColor(QPalette::AlternateBase, colours.window);
    palette.setColor(QPalette::ToolTipBase, colours.base);
    palette.setColor(QPalette::Highlight, colours.accent);
    palette.setColor(QPalette::HighlightedText, colours.selectedText);
    palette.setColor(QPalette::Link, colours.accent);
    return palette;
}

}  // namespace

void applyTheme(Theme theme) {
    if (theme == Theme::system)
        return;
    // The one style that draws itself from a palette alone.
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    QApplication::setPalette(paletteOf(theme == Theme::dark ? kDark : kLight));
}

}  // namespace opane::qt
