// Every export from many threads at once, each thread on buffers of its own,
// and these are the first calls the process makes: the vector target is
// chosen while the threads race for it. Each thread makes the calls of the
// export checksum program, starting at a family of its own, and must see the
// checksums of the same calls made again afterwards on one thread. Run under
// ThreadSanitizer (preset tsan), any shared write shows up as a race.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

extern "C" int pixmillChecksums(int first, void (*line)(const char *, uint32_t, void *), void *context);

namespace {

// The checksum lines of one run from family `first` on.
std::string checksums(int first)
{
    std::string text;
    const auto line = [](const char *name, uint32_t hash, void *to) {
        *static_cast<std::string *>(to) += std::string(name) + " " + std::to_string(hash) + "\n";
    };
    return text + std::to_string(pixmillChecksums(first, line, &text)) + " exports\n";
}

TEST(Threads, EveryFamilyAtOnceFromTheFirstCallGivesTheBytesOfOneThread)
{
    const size_t threads = std::max(8u, std::thread::hardware_concurrency());
    std::vector<std::string> got(threads);
    std::atomic<size_t> ready{0};
    std::vector<std::thread> pool;
    for (size_t t = 0; t < threads; ++t)
        pool.emplace_back([&, t] {
            // Everyone starts together, each at another family, so that every
            // family is entered by several at once.
            ready.fetch_add(1);
            while (ready.load() < threads)
                std::this_thread::yield();
            got[t] = checksums(int(t % 5));
        });
    for (std::thread &th : pool)
        th.join();
    for (size_t t = 0; t < threads; ++t) {
        const std::string once = checksums(int(t % 5));
        EXPECT_NE(once.find("\n32 exports\n"), std::string::npos) << once;
        EXPECT_EQ(got[t], once) << "thread " << t;
    }
}

} // namespace
