#include "forms/qt/sized_widgets.h"

#include <QFontDatabase>
#include <QFontMetrics>
#include <QScrollBar>
#include <algorithm>
#include <cmath>

namespace opane::qt {
namespace {

/// Digits, which most boxes hold, are wider than the average letter.
int textWidth(const QFontMetrics& metrics, int characters) {
    return metrics.horizontalAdvance(u'0') * characters;
}

/// The given font where it is there, else the system's own of a fixed pitch.
QFont fixedPitchFont() {
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setFamilies({QStringLiteral("Terminal"), font.family()});
    return font;
}

}  // namespace

QSize LineBox::sizeHint() const {
    const QSize usual = QLineEdit::sizeHint();
    const int usualText = fontMetrics().horizontalAdvance(u'x') * 17;  // what Qt makes room for
    return {usual.width() - usualText + textWidth(fontMetrics(), characters_), usual.height()};
}

LinesBox::LinesBox(const window::TextBox::Style& style) : characters_(style.characters), lines_(style.lines) {
    setTabChangesFocus(true);
    setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    if (style.verticalScrollBar)
        setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    if (style.fixedPitch)
        setFont(fixedPitchFont());
}

QSize LinesBox::minimumSizeHint() const {
    constexpr int kFewestLines = 3;
    return sizeFor(std::min(lines_, kFewestLines));
}

QSize LinesBox::sizeFor(int lines) const {
    const int margins = 2 * (frameWidth() + static_cast<int>(std::ceil(document()->documentMargin())));
    const int scrollBar = verticalScrollBar()->sizeHint().width();
    return {textWidth(fontMetrics(), characters_) + margins + scrollBar, fontMetrics().lineSpacing() * lines + margins};
}

}  // namespace opane::qt
