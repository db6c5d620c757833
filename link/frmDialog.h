#pragma once

#include "forms/common_dialog.h"

namespace opane {

/// The invisible host form of the file dialog control.
class frmDialog {
public:
    CommonDialog& dialog() { return dialog_; }

private:
    CommonDialog dialog_;
};

}  // namespace opane
