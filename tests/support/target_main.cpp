// main() of the family tests. ctest runs each suite once per vector target
// with PIXMILL_CPU naming it (and once with "scalar", or under the
// sanitizers once with "scalar" and once with "best"); a target that this
// build or CPU does not have ends the run as skipped (exit 77), so every run
// that passes has really tested the kernels it names.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <strings.h>

#include <gtest/gtest.h>

#include "frame/cpu.h"

int main(int argc, char **argv)
{
    testing::InitGoogleTest(&argc, argv);
    // "best": whatever the library chooses by itself on this CPU.
    const char *wanted = std::getenv("PIXMILL_CPU");
    if (wanted != nullptr && std::strcmp(wanted, "best") == 0) {
        unsetenv("PIXMILL_CPU"); // before the library's first call reads it
        wanted = nullptr;
    }
    const char *active = pixmill::cpu::targetName(pixmill::cpu::target());
    if (!testing::GTEST_FLAG(list_tests) && wanted != nullptr && *wanted != '\0' &&
        strcasecmp(wanted, active) != 0) {
        std::printf("PIXMILL_CPU=%s: not a target this build and CPU run (best allowed: %s); skipped\n", wanted,
                    active);
        return 77;
    }
    return RUN_ALL_TESTS();
}
