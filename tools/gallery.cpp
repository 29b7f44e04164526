// `pixmill demo` and `pixmill gallery`: every operation applied to the
// built-in test frame, written as PNGs with an index.html beside them.
#include <cstdio>
#include <filesystem>
#include <sstream>

#include "args.h"
#include "commands.h"
#include "ops.h"
#include "png_io.h"
#include "safe_output.h"
#include "streams.h"
#include "test_frame.h"

namespace pixmill::tools {
namespace {

constexpr int32_t kW = 320, kH = 240;

// Arguments shown for each operation; the others run with their defaults.
struct GalleryArgs {
    const char *op, *args;
};
constexpr GalleryArgs kArgs[] = {
    {"gEmYUV420toRGB565TopDown", "--bottom-up"},
    {"gYUV420toBGR565TopDown_Rotate", "--rect 160x120+40+30 --rotate 90 --canvas 200x200 --at 20,20"},
    {"gYUV420toRGB16Rotate", "--rect 160x120+40+30 --rotate 90 --canvas 200x200 --at 20,20"},
    {"gYUV422toRGB16Rotate", "--rect 160x120+40+30 --rotate 270 --canvas 200x200 --at 20,20"},
    {"gYUV422HPlanartoBGR565TopDown_Rotate", "--rect 160x120+40+30 --rotate 270 --canvas 200x200 --at 20,20"},
    {"gEmRGB565toYUV420", "--canvas 352x288"},
    {"gYUV422toYUV420", "--rect 200x150+60+40 --size 320x240"},
    {"gRotateFrame", "--rotate 90"},
    {"gRotate422Frame", "--rotate 270"},
    {"gRotateMonochromeFrame", "--rotate 180"},
    {"gRotateRGB16", "--rect 160x120+80+60 --rotate 90"},
    {"gRotateRGB16toBGR24", "--rotate 270"},
    {"gMirrorImageRGB565", "--mirror horizontal"},
    {"gMirrorImageYUV", "--mirror vertical"},
    {"gScaleFrame", "--size 176x144"},
    {"gScaleCroppedFrame", "--rect 160x120+80+60 --size 320x240"},
    {"gScaleCroppedFrameYUV422", "--size 176x144"},
    {"gScaleRGB565Frame", "--size 480x360"},
    {"gScaleRGB565CroppedFrame", "--rect 100x80+20+20 --size 200x160"},
};

std::string argsOf(const OpSpec *op)
{
    for (const GalleryArgs &a : kArgs)
        if (std::string(a.op) == op->name)
            return a.args;
    return "";
}

// The test frame in every format an operation takes.
Picture source(Fmt fmt)
{
    const bool is422 = fmt == Fmt::Yuv422p || fmt == Fmt::Yuyv || fmt == Fmt::Uyvy;
    OwnedFrame f = makeTestFrame(kW, kH, is422);
    Picture yuv;
    yuv.alloc(is422 ? Fmt::Yuv422p : Fmt::Yuv420p, kW, kH);
    yuv.data = f.y;
    yuv.data.insert(yuv.data.end(), f.u.begin(), f.u.end());
    yuv.data.insert(yuv.data.end(), f.v.begin(), f.v.end());
    Picture out;
    const Frame frame = yuv.frame();
    switch (fmt) {
    case Fmt::Gray:
        out.alloc(fmt, kW, kH);
        out.data.assign(f.y.begin(), f.y.end());
        return out;
    case Fmt::Rgb565:
        out.alloc(fmt, kW, kH);
        gEmYUV420toRGB565TopDown(&frame, out.words(), kW, kH, 1);
        return out;
    case Fmt::Bgr24:
        out.alloc(fmt, kW, kH);
        gYUV420toBGR24(&frame, out.data.data(), 3 * kW);
        return out;
    case Fmt::Yuyv:
    case Fmt::Uyvy: {
        out.alloc(fmt, kW, kH);
        const bool yFirst = fmt == Fmt::Yuyv;
        for (size_t i = 0; i < f.y.size(); i += 2) {
            uint8_t *g = &out.data[2 * i];
            g[yFirst ? 0 : 1] = f.y[i];
            g[yFirst ? 2 : 3] = f.y[i + 1];
            g[yFirst ? 1 : 0] = f.u[i / 2];
            g[yFirst ? 3 : 2] = f.v[i / 2];
        }
        return out;
    }
    default: return yuv;
    }
}

void writeFile(const std::string &path, const std::string &bytes)
{
    OutputFile out(path);
    out.write(bytes.data(), bytes.size());
    out.commit();
}

void writePngFile(const std::string &path, Picture &pic)
{
    Picture shown = displayable(pic, path);
    const std::vector<uint8_t> png = encodePng(shown.data.data(), shown.w, shown.h, shown.fmt == Fmt::Gray ? 1 : 3, path);
    writeFile(path, std::string(png.begin(), png.end()));
}

std::string html(const std::string &text)
{
    std::string out;
    for (char c : text)
        out += c == '<' ? "&lt;" : c == '>' ? "&gt;" : c == '&' ? "&amp;" : std::string(1, c);
    return out;
}

// Makes the output directory and its missing parents.
void makeDir(const std::string &dir)
{
    std::error_code error;
    std::filesystem::create_directories(dir, error);
    if (error || !std::filesystem::is_directory(dir, error))
        dataError(dir + ": cannot make it the output directory" + (error ? ": " + error.message() : ": not a directory"));
}

} // namespace

int runGallery(const std::string &dir)
{
    makeDir(dir);
    std::ostringstream page;
    page << "<!doctype html>\n<html><head><meta charset=\"utf-8\"><title>pixmill gallery</title>\n"
            "<style>body{font-family:sans-serif;background:#222;color:#eee}"
            "figure{display:inline-block;vertical-align:top;margin:8px;padding:8px;background:#333}"
            "figcaption{font-size:13px;max-width:340px}code{color:#fc6}img{image-rendering:pixelated}</style>"
            "</head><body>\n<h1>pixmill gallery</h1>\n<p>Every operation on the built-in "
         << kW << "x" << kH
         << " test frame. Operations that give YUV are shown through gEmYUV420toRGB888TopDown (BT.601); "
            "RGB565 levels are widened by repeating their top bits.</p>\n";
    int index = 0;
    for (const OpSpec *op : allOps()) {
        const std::string args = argsOf(op);
        std::vector<std::string> words;
        std::istringstream split(args);
        for (std::string w; split >> w;)
            words.push_back(w);
        Options opt = parseArgs((op->uses & kUseSize) ? "scale" : "convert", words);
        opt.op = op->name;
        const Plan plan = planFor(op, opt, kW, kH, "test frame");
        Picture out = applyPlan(plan, op->out, source(op->in));
        char file[128];
        std::snprintf(file, sizeof file, "%02d-%s.png", ++index, op->name);
        writePngFile(dir + "/" + file, out);
        const std::string shownArgs = (op->variant[0] ? "--ratio " + std::string(op->variant) + " " : "") + args;
        page << "<figure><img src=\"" << file << "\"><figcaption><code>" << op->name << "</code> " << html(shownArgs)
             << "<br>" << formatInfo(op->in).name << " " << kW << "x" << kH << " &rarr; " << formatInfo(op->out).name
             << " " << plan.outW << "x" << plan.outH << "<br>" << html(op->what) << "</figcaption></figure>\n";
    }
    page << "</body></html>\n";
    writeFile(dir + "/index.html", page.str());
    std::printf("pixmill gallery: %d operations on the test frame -> %s/index.html\n", index, dir.c_str());
    return kExitOk;
}

int runDemo(const std::string &dir)
{
    constexpr int32_t w = 640, h = 480;
    OwnedFrame f = makeTestFrame(w, h);
    Picture rgb;
    rgb.alloc(Fmt::Rgb24, w, h);
    gEmYUV420toRGB888TopDown(&f.frame, rgb.data.data(), w, h, 1);
    makeDir(dir);
    const std::string path = dir + "/pixmill-demo.png";
    writePngFile(path, rgb);
    std::printf("pixmill demo: built-in %dx%d 4:2:0 test frame -> gEmYUV420toRGB888TopDown (BT.601)\n", w, h);
    std::printf("wrote %s\n", path.c_str());
    std::printf("every operation side by side: pixmill gallery %s/gallery\n", dir.c_str());
    return kExitOk;
}

} // namespace pixmill::tools
