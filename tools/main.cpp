// pixmill: the library's command-line program.
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "pixmill.h"
#include "png_io.h"
#include "test_frame.h"

namespace {

using namespace pixmill::tools;

int demo(const std::string &dir)
{
    constexpr int32_t kW = 640, kH = 480;
    OwnedFrame f = makeTestFrame(kW, kH);
    std::vector<uint8_t> rgb(static_cast<size_t>(kW) * kH * 3);
    gEmYUV420toRGB888TopDown(&f.frame, rgb.data(), kW, kH, 1);
    const std::string path = dir + "/pixmill-demo.png";
    const std::string err = writePngRgb(path, rgb.data(), kW, kH);
    if (!err.empty()) {
        std::fprintf(stderr, "pixmill: %s\n", err.c_str());
        return 1;
    }
    std::printf("pixmill demo: built-in %dx%d 4:2:0 test frame -> gEmYUV420toRGB888TopDown (BT.601)\n", kW, kH);
    std::printf("wrote %s\n", path.c_str());
    return 0;
}

void usage(FILE *to)
{
    std::fprintf(to, "usage: pixmill demo [DIR]   convert the built-in test frame and write a PNG into DIR (default .)\n");
}

} // namespace

int main(int argc, char **argv)
{
    const std::string cmd = argc > 1 ? argv[1] : "demo";
    if (cmd == "-h" || cmd == "--help" || cmd == "help") {
        usage(stdout);
        return 0;
    }
    if (cmd == "demo")
        return demo(argc > 2 ? argv[2] : ".");
    std::fprintf(stderr, "pixmill: unknown command '%s'\n", cmd.c_str());
    usage(stderr);
    return 2;
}
