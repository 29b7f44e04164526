// Shared types of the pixmill program: errors, pixel formats, pictures in
// memory, parsed options and the operation table's entry.
#ifndef PIXMILL_TOOLS_CLI_H
#define PIXMILL_TOOLS_CLI_H

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include "pixmill.h"

namespace pixmill::tools {

// Exit codes: 0 success, 1 I/O or data error, 2 usage error.
enum ExitCode { kExitOk = 0, kExitData = 1, kExitUsage = 2 };

struct Failure : std::runtime_error {
    Failure(int exitCode, const std::string &what) : std::runtime_error(what), code(exitCode) {}
    int code;
};
[[noreturn]] void usageError(const std::string &message);
[[noreturn]] void dataError(const std::string &message);

// ---- Pixel formats ---------------------------------------------------------

enum class Fmt { None, Yuv420p, Yv12, Yuv422p, Gray, Yuyv, Uyvy, Rgb565, Rgb24, Bgr24 };

struct FormatInfo {
    Fmt fmt;
    const char *name;
    const char *aliases;    // space separated, for the command line
    const char *layout;     // one line for the help text
    bool evenWidth, evenHeight;
};

const FormatInfo &formatInfo(Fmt fmt);
const std::vector<FormatInfo> &allFormats();
Fmt parseFormat(const std::string &name); // Fmt::None when unknown
bool isPlanarYuv(Fmt fmt);                // yuv420p, yv12, yuv422p, gray
bool isRgb(Fmt fmt);                      // rgb565, rgb24, bgr24
// Bytes of one w x h frame, 0 if it would not fit in kMaxFrameBytes.
size_t frameBytes(Fmt fmt, int32_t w, int32_t h);
constexpr size_t kMaxFrameBytes = size_t{1} << 30;
constexpr int32_t kMaxSide = 65535; // a Frame's width and height are 16-bit

// ---- One picture in memory -------------------------------------------------

struct Picture {
    Fmt fmt = Fmt::None;
    int32_t w = 0, h = 0;
    std::vector<uint8_t> data;

    void alloc(Fmt f, int32_t width, int32_t height);
    // Plane i in memory order (0 luma, 1 and 2 the chroma planes as stored).
    uint8_t *plane(int i);
    // Frame record with u and v where they belong (yv12 stores V first).
    Frame frame();
    // Frame record with u and v in memory order, whatever the format.
    Frame memFrame();
    uint16_t *words() { return reinterpret_cast<uint16_t *>(data.data()); }
};

// ---- Options ---------------------------------------------------------------

struct Size {
    int32_t w = 0, h = 0;
    bool set = false;
};
struct Rect {
    int32_t x = 0, y = 0, w = 0, h = 0;
    bool set = false;
};

struct Options {
    std::string command, input, output;
    std::string op;               // --op NAME
    Fmt format = Fmt::None;       // --format: pixel format of raw input
    Fmt to = Fmt::None;           // --to: pixel format of the output
    Size inSize;                  // --in-size (and --size outside `scale`)
    Size size;                    // --size in `scale`: the target size
    Rect rect;                    // --rect WxH+X+Y
    Size canvas;                  // --canvas WxH: the target surface
    Rect at;                      // --at X,Y: corner on the surface
    int rotate = -1;              // rotation code 0..3, -1 = not given
    int mirror = -1;              // mirror mode 0..2, -1 = not given
    int matrix = 0;               // 601 or 709, 0 = not given
    std::string ratio;            // fixed ratio: 2:1, 1:2, 1:4, 4:3
    std::string container;        // --container y4m|raw|png (for `-`)
    bool bottomUp = false;        // --bottom-up: reverse the row order
    bool inPlace = false;         // --in-place (mirror)
    bool quiet = false;
    int threads = 1;
    long frames = -1;             // --frames N: stop after N frames
};

// ---- The operation table ---------------------------------------------------

// Everything an operation call needs besides the planes, worked out once per
// stream from the first frame's size and the options, after every check.
struct Plan {
    const struct OpSpec *op = nullptr;
    Fmt outFmt = Fmt::None;
    int32_t outW = 0, outH = 0;
    int32_t x = 0, y = 0, w = 0, h = 0;   // source rectangle or size
    int32_t dx = 0, dy = 0;               // destination corner
    int32_t tw = 0, th = 0;               // target surface or frame size
    uint32_t code = 0;                    // rotation code or mirror mode
    int32_t flag = 0;                     // topDown, chroma layout, ...

    void source(const Rect &r)
    {
        x = r.x;
        y = r.y;
        w = r.w;
        h = r.h;
    }
    // A target of its own size: the output is the target surface or frame.
    void target(int32_t width, int32_t height)
    {
        tw = outW = width;
        th = outH = height;
    }
};

// Options an operation reads, so that any other given option is refused.
enum Uses : unsigned {
    kUseRect = 1u << 0,     // --rect (source rectangle)
    kUseRotate = 1u << 1,   // --rotate
    kUseCanvas = 1u << 2,   // --canvas, --at (target surface)
    kUseBottomUp = 1u << 3, // --bottom-up
    kUseMirror = 1u << 4,   // --mirror, --in-place
    kUseSize = 1u << 5,     // --size (target size)
};

struct OpSpec {
    const char *name;
    const char *command; // commands that offer it by default: convert, scale, rotate, mirror
    Fmt in, out;
    int matrix;          // 601, 709 or 0 when no colour matrix is involved
    const char *variant; // fixed ratio ("2:1", ...) or "" for the free-ratio and other operations
    unsigned uses;       // Uses bits
    const char *what;    // one line for `pixmill ops`
    // Checks every caller guarantee for a w x h input and fills the plan;
    // throws a data error naming `file`, the value and the rule otherwise.
    void (*plan)(Plan &plan, int32_t w, int32_t h, const Options &opt, const std::string &file);
    // Runs the call. `in` may be changed (in-place operations).
    void (*run)(const Plan &plan, Picture &in, Picture &out);
};

const std::vector<const OpSpec *> &allOps();
const OpSpec *findOp(const std::string &name);

} // namespace pixmill::tools

#endif
