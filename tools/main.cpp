// pixmill: the library's command-line program.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "args.h"
#include "commands.h"
#include "frame/cpu.h"

namespace {

using namespace pixmill::tools;

const char kUsage[] = R"(usage: pixmill COMMAND [INPUT OUTPUT] [options]

Commands
  convert IN OUT   change the pixel format (--to FMT, or by the output's extension)
  scale IN OUT     resize: --size WxH (bilinear) or --ratio 2:1|1:2|1:4|4:3
  rotate IN OUT    turn: --rotate 90|180|270 (degrees clockwise)
  mirror IN OUT    flip: --mirror horizontal|vertical|both
  info IN          container, pixel format, size and frame count
  ops              every library operation with its formats
  gallery DIR      every operation on the built-in test frame: PNGs and index.html
  demo [DIR]       the built-in test frame as DIR/pixmill-demo.png (the default)
  version          library version, vector targets built in and the one in use
  COMMAND --help   the options of one command

Files
  .y4m             YUV4MPEG2, any number of frames, C420*, C422 or Cmono
  .png             one frame, read as rgb24; YUV results are shown through BT.601
  anything else    raw frames back to back: --format FMT --size WxH for input
  -                standard input or output; input is recognised by its first bytes,
                   output is Y4M when the input was Y4M and the result is planar YUV
                   (else raw; --container y4m|raw|png decides)

Pixel formats (W x H pixels)
)";

const char kNotes[] = R"(
RGB565 words have R in bits 15-11, G in 10-5, B in 4-0 whatever the operation's
name says (BGR565 included), stored little-endian in files. rgb24 is R,G,B in
byte order, bgr24 is B,G,R. gYUV422HPlanartoRGB888TopDown writes B,G,R too: it is
the same function as gYUV422HPlanartoBGR888TopDown.

Colour sets (full-range luma, chroma centred on 128): BT.601 in
gEmYUV420toRGB888TopDown, gEmYUV420toRGB565TopDown, gYUV420toBGR565TopDown_Rotate,
gYUV422HPlanartoBGR565TopDown_Rotate, gYUV422HPlanarto{BGR,RGB}888TopDown and
gBGR24INTtoYUV420Planar; BT.709 in gYUV420toBGR24, gYUV420toRGB16Rotate and
gYUV422toRGB16Rotate; gEmRGB565toYUV420 makes BT.709 studio-range YUV.
--matrix 601|709 picks between two operations for one job.

Every operation of the library: pixmill ops. Any of them: --op NAME.
Exit status: 0 done, 1 I/O or data error (the input breaks a rule of the
operation), 2 usage error. A failed run leaves no output file behind.
)";

const char kTransformOptions[] = R"(
Options
  --op NAME          run this library operation (see pixmill ops)
  --to FMT           pixel format of the output
  --format FMT       pixel format of raw input;  --size WxH (or --in-size) its size
  --rect WxH+X+Y     source rectangle (--crop is the same)
  --canvas WxH       target surface of the rectangle operations (default: just fits)
  --at X,Y           corner of the rectangle on the canvas
  --rotate DEG       0, 90, 180 or 270 clockwise (the bottom-up RGB565 operations
                     gYUV420toBGR565TopDown_Rotate and gYUV422HPlanartoBGR565TopDown_Rotate
                     write rows from the bottom: read their output rows last to first)
  --mirror MODE      horizontal, vertical or both;  --in-place  flip in the input frame
  --bottom-up        reverse the row order (whole-image conversions, BGR24 input)
  --matrix 601|709   colour set where the library has one operation for each
  --frames N         stop after N frames
  --threads N        process N frames at a time (default 1)
  --quiet            no progress line on stderr
)";

const char *commandHelp(const std::string &cmd)
{
    if (cmd == "convert")
        return "usage: pixmill convert IN OUT [--to FMT] [--matrix 601|709] [options]\n"
               "  Picks the operation by input format, --to (or the output's extension) and --matrix.\n"
               "  e.g. pixmill convert in.y4m out.png;  pixmill convert cam.yuyv out.y4m --format yuyv --size 640x480\n";
    if (cmd == "scale")
        return "usage: pixmill scale IN OUT --size WxH [--rect WxH+X+Y] | --ratio 2:1|1:2|1:4|4:3\n"
               "  Here --size is the target size; give the size of raw input with --in-size WxH.\n"
               "  yuv422p input with --to yuv420p uses gYUV422toYUV420 (crop, scale and 4:2:0 in one pass).\n";
    if (cmd == "rotate")
        return "usage: pixmill rotate IN OUT --rotate 90|180|270 [--to rgb565|bgr24 --rect .. --canvas .. --at ..]\n"
               "  Planar YUV and gray frames turn whole; rgb565 rectangles land on a canvas;\n"
               "  YUV with --to rgb565 converts and turns in one pass.\n";
    if (cmd == "mirror")
        return "usage: pixmill mirror IN OUT --mirror horizontal|vertical|both [--in-place]\n";
    if (cmd == "info")
        return "usage: pixmill info IN [--format FMT --size WxH]\n";
    return nullptr;
}

void usage(FILE *to)
{
    std::fputs(kUsage, to);
    for (const FormatInfo &f : allFormats())
        std::fprintf(to, "  %-9s %-22s %s\n", f.name, f.aliases, f.layout);
    std::fputs(kNotes, to);
}

// Targets as names, best first.
std::string targetList(int64_t targets)
{
    std::string names;
    for (; targets != 0; targets &= targets - 1)
        names += std::string(names.empty() ? "" : " ") + pixmill::cpu::targetName(targets & -targets);
    return names.empty() ? "none" : names;
}

int printVersion()
{
    using namespace pixmill::cpu;
    std::printf("pixmill %s\n", PIXMILL_VERSION_STRING);
    std::printf("vector targets built in: %s\n", targetList(builtTargets()).c_str());
    std::printf("this CPU runs:           %s\n", targetList(runnableTargets()).c_str());
    const char *cap = std::getenv("PIXMILL_CPU");
    std::printf("in use:                  %s%s%s\n", targetName(target()), cap ? " (PIXMILL_CPU=" : "",
                cap ? (std::string(cap) + ")").c_str() : "");
    return kExitOk;
}

int dispatch(const std::string &cmd, const std::vector<std::string> &rest)
{
    const bool help = !rest.empty() && (rest[0] == "--help" || rest[0] == "-h");
    if (cmd == "help" || cmd == "--help" || cmd == "-h") {
        usage(stdout);
        return kExitOk;
    }
    if (cmd == "version" || cmd == "--version")
        return printVersion();
    if (cmd == "demo" || cmd == "gallery" || cmd == "ops") {
        if (help) {
            std::printf("usage: pixmill %s%s\n", cmd.c_str(), cmd == "ops" ? "" : cmd == "demo" ? " [DIR]" : " DIR");
            return kExitOk;
        }
        if (cmd == "ops")
            return listOps();
        if (rest.size() > 1 || (cmd == "gallery" && rest.empty()))
            usageError("usage: pixmill " + cmd + (cmd == "demo" ? " [DIR]" : " DIR"));
        return cmd == "demo" ? runDemo(rest.empty() ? "." : rest[0]) : runGallery(rest[0]);
    }
    const char *text = commandHelp(cmd);
    if (!text)
        usageError("unknown command '" + cmd + "' (see pixmill --help)");
    if (help) {
        std::fputs(text, stdout);
        if (cmd != "info")
            std::fputs(kTransformOptions, stdout);
        return kExitOk;
    }
    const Options opt = parseArgs(cmd, rest);
    return cmd == "info" ? runInfo(opt) : runTransform(opt);
}

} // namespace

int main(int argc, char **argv)
{
    const std::string cmd = argc > 1 ? argv[1] : "demo";
    const std::vector<std::string> rest(argv + (argc > 1 ? 2 : 1), argv + argc);
    try {
        return dispatch(cmd, rest);
    } catch (const Failure &f) {
        std::fprintf(stderr, "pixmill: %s\n", f.what());
        return f.code;
    } catch (const std::exception &e) {
        std::fprintf(stderr, "pixmill: %s\n", e.what());
        return kExitData;
    }
}
