#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

// Every test starts in the same surroundings: dates and times of the C locale, no log, nobody's registry, and no port
// of this machine, as a new object opens port 1 and that may be somebody's console.
int main(int argc, char** argv) {
    setenv("LC_ALL", "C", 1);
    for (int port = 1; port <= 16; ++port)
        setenv(("OPANE_COM" + std::to_string(port)).c_str(), "/dev/null/none", 1);
    setenv("OPANE_COMPONENT_REGISTRY", "/dev/null/none", 1);
    for (const char* const name : {"OPANE_DATA", "OPANE_LOG_LEVEL", "OPANE_LOG_TESTER", "OPANE_LOG_FOLDER"})
        unsetenv(name);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
