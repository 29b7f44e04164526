// Speed of the main jobs of pixmill next to libyuv, libswscale and a memcpy
// of the same number of bytes, all measured in one run. Benchmarks are named
// job/size/implementation; bench/ratios.sh turns a run into a ratio table.
// A peer that was not found at configure time is left out with a message.
#include "bench.h"

int main(int argc, char **argv)
{
    using namespace pixmill::bench;
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
#if PIXMILL_BENCH_SWSCALE
    av_log_set_level(AV_LOG_ERROR);
#else
    std::fprintf(stderr, "libswscale was not found at configure time: its benchmarks are left out\n");
#endif
#if !PIXMILL_BENCH_LIBYUV
    std::fprintf(stderr, "libyuv was not found at configure time: its benchmarks are left out\n");
#endif
    for (Size s : kSizes) {
        yuvToRgb(s);
        packedToYuv(s);
        rotate(s);
    }
    scaling();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
