#include <cstdio>

#include "automation/clsOPaneCommDLL.h"
#include "shared/runtime_error.h"

int main(int argc, char** argv) try {
    if (argc != 2)
        return 2;  // the character generator is its argument
    opane::clsOPaneCommDLL display;
    std::int16_t status = 1;
    display.Synchronize(1, 9600, 3, status);  // COM 1, 9600 baud, node 3
    if (status == 0)
        display.DisplayString("Hello, world", 2, 3, 0, 0, argv[1], status);
    return status;  // 0: the module shows it
} catch (const opane::RuntimeError& error) {
    std::fprintf(stderr, "error %d: %s\n", static_cast<int>(error.number()), error.what());
    return 3;
}
