#pragma once

#include <string>
#include <vector>

namespace opane::bench {

/// One measured figure.
struct Figure {
    std::string name;
    double value;
    double limit;        ///< what we promise
    double aim;          ///< what a quiet machine should show
    std::string remark;  ///< what it was made of
};

using Figures = std::vector<Figure>;

// Each takes some seconds, the silent modules 20. A group that cannot be measured here gives none and says why in
// notes.
struct Measured {
    Figures figures{};
    std::vector<std::string> notes{};
};

Measured pacedJobs();
Measured manyLinks();
Measured besideModbus();
Measured systemCalls();
Measured silentModule();
Measured timeOuts();
Measured logCost();
Measured memory();
Measured loadTime();

}  // namespace opane::bench
