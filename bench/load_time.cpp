#include <unistd.h>

#include <cstdio>
#include <stdexcept>

#include "figure.h"
#include "measure.h"
#include "platform/folders.h"

namespace opane::bench {
namespace {

constexpr int kLoads = 21;  // each in a process of its own

double medianLoad(const std::string& command) {
    std::vector<double> loads;
    for (int i = 0; i < kLoads; ++i) {
        FILE* const output = popen(command.c_str(), "r");
        double milliseconds = 0;
        const int read = output == nullptr ? 0 : std::fscanf(output, "%lf", &milliseconds);
        if (output == nullptr || pclose(output) != 0 || read != 1)
            throw std::runtime_error(command + " failed");
        loads.push_back(milliseconds);
    }
    return median(loads);
}

}  // namespace

Measured loadTime() {
    const std::string folder = libraryFolder() + "/";
    const std::string component = folder + "libOPaneCommDLL.so";
    Measured measured;
    if (access(component.c_str(), R_OK) != 0) {
        measured.notes = {"no load time: there is no " + component};
        return measured;
    }
    const std::string load = "'" + folder + "opane-load-time' '" + component + "'";
    const std::string remark = "median of " + std::to_string(kLoads) + " processes";
    measured.figures = {
        {"load of the component, libstdc++ loaded, ms", medianLoad(load + " libstdc++.so.6"), 0.5, 0.2, remark},
        {"load of the component into a plain C process, ms", medianLoad(load), 3, 1.5, remark}};
    return measured;
}

}  // namespace opane::bench
