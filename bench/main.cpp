#include <cstdio>
#include <exception>

#include "figure.h"

// Prints a table of what the library costs, measured on this machine, and ends with 1 when a figure is above its limit.
int main() {
    using namespace opane::bench;
    try {
        std::printf("%-64s %9s %9s\n", "figure", "measured", "at most");
        bool within = true;
        for (Figures (*const measure)() : {pacedJobs, systemCalls, silentModule}) {
            for (const Figure& figure : measure()) {
                within = within && figure.value <= figure.limit;
                std::printf("%-64s %9.3f %9.3f  %s\n", figure.name.c_str(), figure.value, figure.limit,
                            figure.remark.c_str());
                std::fflush(stdout);
            }
        }
        return within ? 0 : 1;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "opane-bench: %s\n", error.what());
        return 2;
    }
}
