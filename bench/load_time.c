/* Loads a library into a process that has no C++ of its own and prints how long that took, in milliseconds. */
#include <dlfcn.h>
#include <stdio.h>
#include <time.h>

static double milliseconds(void) {
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return (double)now.tv_sec * 1e3 + (double)now.tv_nsec / 1e6;
}

/* usage: opane-load-time LIBRARY [FIRST]    FIRST is loaded before the time runs */
int main(int argc, char** argv) {
    if (argc < 2 || (argc > 2 && dlopen(argv[2], RTLD_NOW | RTLD_GLOBAL) == NULL))
        return 2;
    const double start = milliseconds();
    void* const library = dlopen(argv[1], RTLD_NOW);
    const double took = milliseconds() - start;
    if (library == NULL || dlsym(library, "DllGetClassObject") == NULL) {
        fprintf(stderr, "%s\n", dlerror());
        return 1;
    }
    printf("%.4f\n", took);
    return 0;
}
