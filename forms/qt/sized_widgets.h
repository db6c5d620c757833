#pragma once

#include <QLineEdit>
#include <QPlainTextEdit>

#include "forms/window_controls.h"

namespace opane::qt {

// Boxes as wide as the characters that they are made for, in whatever font is set.

class LineBox final : public QLineEdit {
public:
    explicit LineBox(int characters) : characters_(characters) {}
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

private:
    int characters_;
};

class LinesBox final : public QPlainTextEdit {
public:
    explicit LinesBox(const window::TextBox::Style& style);
    QSize sizeHint() const override { return sizeFor(lines_); }
    QSize minimumSizeHint() const override;

private:
    QSize sizeFor(int lines) const;

    int characters_;
    int lines_;
};

}  // namespace opane::qt
