// Pixel formats of the program's files and pictures in memory.
#include <algorithm>
#include <sstream>

#include "cli.h"

namespace pixmill::tools {

void usageError(const std::string &message) { throw Failure(kExitUsage, message); }
void dataError(const std::string &message) { throw Failure(kExitData, message); }

const std::vector<FormatInfo> &allFormats()
{
    static const std::vector<FormatInfo> formats = {
        {Fmt::Yuv420p, "yuv420p", "i420 420", "planar 4:2:0: Y, then U (W/2 x H/2), then V", true, true},
        {Fmt::Yv12, "yv12", "", "planar 4:2:0 with the chroma planes swapped: Y, then V, then U", true, true},
        {Fmt::Yuv422p, "yuv422p", "422", "planar 4:2:2: Y, then U (W/2 x H), then V", true, true},
        {Fmt::Gray, "gray", "mono y8", "luma plane alone", false, false},
        {Fmt::Yuyv, "yuyv", "y1uy2v yuy2 yuyv422", "packed 4:2:2, bytes Y0 U Y1 V", true, false},
        {Fmt::Uyvy, "uyvy", "uy1vy2 uyvy422", "packed 4:2:2, bytes U Y0 V Y1", true, false},
        {Fmt::Rgb565, "rgb565", "rgb565le", "16-bit little-endian words, R in bits 15-11, G 10-5, B 4-0", false,
         false},
        {Fmt::Rgb24, "rgb24", "rgb", "3 bytes a pixel: R, G, B", false, false},
        {Fmt::Bgr24, "bgr24", "bgr", "3 bytes a pixel: B, G, R", false, false},
    };
    return formats;
}

const FormatInfo &formatInfo(Fmt fmt)
{
    for (const FormatInfo &f : allFormats())
        if (f.fmt == fmt)
            return f;
    static const FormatInfo none{Fmt::None, "none", "", "", false, false};
    return none;
}

Fmt parseFormat(const std::string &name)
{
    for (const FormatInfo &f : allFormats()) {
        if (name == f.name)
            return f.fmt;
        std::istringstream aliases(f.aliases);
        for (std::string a; aliases >> a;)
            if (name == a)
                return f.fmt;
    }
    return Fmt::None;
}

bool isPlanarYuv(Fmt fmt)
{
    return fmt == Fmt::Yuv420p || fmt == Fmt::Yv12 || fmt == Fmt::Yuv422p || fmt == Fmt::Gray;
}

bool isRgb(Fmt fmt) { return fmt == Fmt::Rgb565 || fmt == Fmt::Rgb24 || fmt == Fmt::Bgr24; }

namespace {

// Bytes of plane i (memory order) of a w x h picture.
size_t planeBytes(Fmt fmt, int i, size_t w, size_t h)
{
    switch (fmt) {
    case Fmt::Yuv420p:
    case Fmt::Yv12: return i == 0 ? w * h : (w >> 1) * (h >> 1);
    case Fmt::Yuv422p: return i == 0 ? w * h : (w >> 1) * h;
    case Fmt::Gray: return i == 0 ? w * h : 0;
    case Fmt::Yuyv:
    case Fmt::Uyvy:
    case Fmt::Rgb565: return i == 0 ? 2 * w * h : 0;
    case Fmt::Rgb24:
    case Fmt::Bgr24: return i == 0 ? 3 * w * h : 0;
    case Fmt::None: break;
    }
    return 0;
}

} // namespace

size_t frameBytes(Fmt fmt, int32_t w, int32_t h)
{
    if (w < 0 || h < 0 || w > kMaxSide || h > kMaxSide)
        return 0;
    const auto uw = static_cast<size_t>(w), uh = static_cast<size_t>(h);
    const size_t total = planeBytes(fmt, 0, uw, uh) + planeBytes(fmt, 1, uw, uh) + planeBytes(fmt, 2, uw, uh);
    return total <= kMaxFrameBytes ? total : 0;
}

void Picture::alloc(Fmt f, int32_t width, int32_t height)
{
    fmt = f;
    w = width;
    h = height;
    data.assign(frameBytes(f, width, height), 0);
}

uint8_t *Picture::plane(int i)
{
    const auto uw = static_cast<size_t>(w), uh = static_cast<size_t>(h);
    size_t offset = 0;
    for (int p = 0; p < i; ++p)
        offset += planeBytes(fmt, p, uw, uh);
    return data.data() + offset;
}

Frame Picture::memFrame()
{
    Frame f{};
    f.y = plane(0);
    if (fmt != Fmt::Gray) {
        f.u = plane(1);
        f.v = plane(2);
    }
    f.width = static_cast<uint16_t>(w);
    f.height = static_cast<uint16_t>(h);
    return f;
}

Frame Picture::frame()
{
    Frame f = memFrame();
    if (fmt == Fmt::Yv12)
        std::swap(f.u, f.v);
    return f;
}

} // namespace pixmill::tools
