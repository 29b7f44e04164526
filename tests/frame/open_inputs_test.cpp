// Every operation within its callers' limits and, in a quarter of the cases,
// past them, through the fuzz target's table of calls on random cases: exact
// sources (now and then against an inaccessible page) and guarded targets,
// where a byte changed outside what the operation may write, or anything
// written by a call the header says it turns down, aborts the run. Each case
// is drawn from four seed bytes; PIXMILL_TEST_SEED picks another series.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>

#include "support/random.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size);

TEST(OpenInputs, TurnedDownOrServedInsideTheBuffers)
{
    pixmill::test::Random rng;
    for (int i = 0; i < 40000; ++i) {
        const uint32_t seed = rng.word();
        uint8_t bytes[4];
        std::memcpy(bytes, &seed, 4);
        LLVMFuzzerTestOneInput(bytes, 4);
    }
}
