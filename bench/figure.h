#pragma once

#include <string>
#include <vector>

namespace opane::bench {

/// One measured figure and the limit that we promise.
struct Figure {
    std::string name;
    double value;
    double limit;
    std::string remark;  ///< what it was made of
};

using Figures = std::vector<Figure>;

// Each takes some seconds at most.
Figures pacedJobs();
Figures silentModule();
Figures systemCalls();

}  // namespace opane::bench
