// Seeded randomness for the tests. Every suite draws from one generator per
// test whose seed is printed on failure; PIXMILL_TEST_SEED overrides it.
#ifndef PIXMILL_TEST_RANDOM_H
#define PIXMILL_TEST_RANDOM_H

#include <cstdint>
#include <cstdlib>
#include <random>

namespace pixmill::test {

inline uint32_t testSeed()
{
    if (const char *s = std::getenv("PIXMILL_TEST_SEED"))
        return static_cast<uint32_t>(std::strtoul(s, nullptr, 0));
    return 0x5EED1234u;
}

class Random {
public:
    explicit Random(uint32_t seed = testSeed()) : engine_(seed) {}
    // Uniform integer in [lo, hi].
    int32_t range(int32_t lo, int32_t hi) { return std::uniform_int_distribution<int32_t>(lo, hi)(engine_); }
    uint8_t byte() { return static_cast<uint8_t>(engine_()); }
    uint32_t word() { return static_cast<uint32_t>(engine_()); }
    bool coin() { return (engine_() & 1u) != 0; }
    std::mt19937 &engine() { return engine_; }

private:
    std::mt19937 engine_;
};

} // namespace pixmill::test

#endif
