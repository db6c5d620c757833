#pragma once

#include <cstdio>
#include <string>

/// A program's checks: each is printed as it is made, and the program exits with the number of those that failed.
class Checks {
public:
    Checks() { std::setvbuf(stdout, nullptr, _IONBF, 0); }  // nothing is lost when a check ends the program

    void operator()(bool holds, const std::string& what) {
        std::printf("%s: %s\n", holds ? "ok" : "FAILED", what.c_str());
        failures_ += holds ? 0 : 1;
    }

    int failures() const { return failures_; }

private:
    int failures_ = 0;
};
