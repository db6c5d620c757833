#include "forms/qt/accessible_names.h"

#include <algorithm>
#include <map>

namespace opane::qt {
namespace {

/// A label or a button, whose caption may tell of what follows it.
const window::Captioned* teller(const window::Control* control) {
    if (const auto* const label = dynamic_cast<const window::Label*>(control))
        return label;
    return dynamic_cast<const window::CommandButton*>(control);
}

/// What stands before a control in its row: the first caption, and the one right before it, with no other box between.
struct RowCaptions {
    const window::Captioned* first = nullptr;
    const window::Captioned* nearest = nullptr;
};

RowCaptions captionsBefore(const window::Control& control) {
    std::map<int, const window::Control*> before;  // by column
    for (const window::Control* const other : control.container().controls())
        if (other->place().row == control.place().row && other->place().column < control.place().column)
            before.emplace(other->place().column, other);
    RowCaptions found;
    for (const auto& [column, other] : before) {
        found.nearest = teller(other);
        if (found.first == nullptr)
            found.first = found.nearest;
    }
    return found;
}

/// The button right after a control, which acts on what is chosen there.
const window::CommandButton* buttonAfter(const window::Control& control) {
    const window::Place place = control.place();
    for (const window::Control* const other : control.container().controls())
        if (other->place().row == place.row && other->place().column == place.column + place.columnSpan)
            if (const auto* const button = dynamic_cast<const window::CommandButton*>(other))
                return button;
    return nullptr;
}

bool standsInOtherRows(const window::Captioned& caption) {
    const auto& all = caption.container().controls();
    return std::any_of(all.begin(), all.end(), [&](const window::Control* other) {
        const auto* const candidate = teller(other);
        return candidate != nullptr && candidate->caption() == caption.caption() &&
               other->place().row != caption.place().row;
    });
}

}  // namespace

std::string accessibleName(const window::Control& control) {
    if (const auto* const itself = dynamic_cast<const window::Captioned*>(&control))
        return itself->caption();
    const auto [first, nearest] = captionsBefore(control);
    if (nearest != nullptr)
        return first != nearest && standsInOtherRows(*nearest) ? first->caption() + " " + nearest->caption()
                                                               : nearest->caption();
    const auto* const button = buttonAfter(control);
    if (button != nullptr && dynamic_cast<const window::ComboBox*>(&control) != nullptr)
        return button->caption();
    const window::Control* const around = control.container().asControl();
    return around != nullptr ? accessibleName(*around) : control.container().form().caption();
}

}  // namespace opane::qt
