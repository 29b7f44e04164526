// The program on broken input: a corpus of files made here (truncated,
// garbage, huge, zero and negative sizes, wrong frame markers, high bit
// depths, PNGs of other colour types, damaged checksums) and inputs that
// break an operation's rules. Each is refused with its rule named and a
// non-zero exit, leaves neither an output nor a temporary file, and leaves
// an existing output file as it was. Also: which PNGs are read, and the
// progress line on a terminal.
#include <png.h>
#include <zlib.h>

#include <algorithm>
#include <optional>
#include <regex>
#include <vector>

#include "cli_fixture.h"

namespace {

using namespace pixmill::test;

// A w x h PNG of libpng's colour type and bit depth from rows as PNG stores
// them; `palette` holds R,G,B triples, `transparent` makes entry 0 so.
Bytes png(int w, int h, int type, int depth, const Bytes &rows, const Bytes &palette = "", bool transparent = false)
{
    Bytes out;
    png_structp p = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(p);
    png_set_write_fn(
        p, &out,
        [](png_structp s, png_bytep b, size_t n) {
            static_cast<Bytes *>(png_get_io_ptr(s))->append(reinterpret_cast<const char *>(b), n);
        },
        [](png_structp) {});
    png_set_IHDR(p, info, static_cast<png_uint_32>(w), static_cast<png_uint_32>(h), depth, type, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    if (!palette.empty())
        png_set_PLTE(p, info, reinterpret_cast<png_const_colorp>(palette.data()),
                     static_cast<int>(palette.size() / 3));
    const png_byte clear = 0;
    if (transparent)
        png_set_tRNS(p, info, &clear, 1, nullptr);
    png_write_info(p, info);
    const size_t pitch = rows.size() / static_cast<size_t>(h);
    for (size_t r = 0; r < static_cast<size_t>(h); ++r)
        png_write_row(p, reinterpret_cast<png_const_bytep>(rows.data() + r * pitch));
    png_write_end(p, nullptr);
    png_destroy_write_struct(&p, &info);
    return out;
}

void putBigEndian(Bytes &b, size_t at, uint32_t v)
{
    for (int i = 0; i < 4; ++i)
        b[at + static_cast<size_t>(i)] = static_cast<char>(v >> (24 - 8 * i));
}

// The PNG with IHDR's width and height replaced, its checksum made right.
Bytes withPngSize(Bytes file, uint32_t w, uint32_t h)
{
    putBigEndian(file, 16, w);
    putBigEndian(file, 20, h);
    putBigEndian(file, 29, static_cast<uint32_t>(crc32(0, reinterpret_cast<const Bytef *>(file.data() + 12), 17)));
    return file;
}

// The file with one byte inverted.
Bytes flipped(Bytes file, size_t at)
{
    file[at] = static_cast<char>(~file[at]);
    return file;
}

TEST_F(Cli, BrokenInputIsRefusedByNameAndLeavesNoOutput)
{
    Random rnd;
    const Bytes good = y4m(rnd, 32, 24, "420jpeg", 2);
    const Bytes rgbRows = randomBytes(rnd, 4 * 2 * 3), rgbPng = png(4, 2, PNG_COLOR_TYPE_RGB, 8, rgbRows);
    // The IDAT chunk's checksum (its data is under 256 bytes).
    const size_t idat = rgbPng.find("IDAT") - 4, idatCrc = idat + 8 + static_cast<uint8_t>(rgbPng[idat + 3]);
    // Files that several cases read; each other case brings its own, named by its second argument.
    for (const auto &[name, bytes] : {std::pair<const char *, Bytes>{"good.y4m", good},
                                      {"good422.y4m", y4m(rnd, 32, 24, "422", 1)},
                                      {"img.rgb565", randomBytes(rnd, 20 * 10 * 2)},
                                      {"short.yuv", randomBytes(rnd, 100)}})
        write(name, bytes);
    struct Case {
        const char *args;
        int code;
        const char *message;
        std::optional<Bytes> file = std::nullopt;
    };
    const Bytes hdr = "YUV4MPEG2 W16 H16";
    const Case cases[] = {
        // The content against the extension.
        {"convert empty.y4m out.png", 1, "empty.y4m: file is empty", ""},
        {"convert garbage.y4m out.png", 1, "garbage.y4m: not a YUV4MPEG2 stream", randomBytes(rnd, 500)},
        {"convert y4m.png out.y4m", 1, "y4m.png: not a PNG file (it is a YUV4MPEG2 stream)", good},
        {"convert garbage.png out.y4m", 1, "garbage.png: not a PNG file (no PNG signature",
         "\x89PNG\r\n\x1aX" + randomBytes(rnd, 200)},
        {"convert empty.yuv out.png --format yuv420p --size 16x16", 1, "empty.yuv: file is empty", ""},
        {"convert short.yuv out.png", 2, "give --format FMT and --size WxH", {}},
        {"scale short.yuv out.yuv --format yuv420p --size 8x8", 2, "give --in-size WxH (here --size is the target", {}},
        // Y4M headers and frames.
        {"convert odd.y4m out.png", 1, "odd.y4m: width 31 is odd",
         "YUV4MPEG2 W31 H24 C420jpeg\nFRAME\n" + Bytes(31 * 24 * 2, 'x')},
        {"rotate cut.y4m out.y4m --rotate 90", 1, "frame 2 is cut short", good.substr(0, good.size() - 100)},
        {"info cutheader.y4m", 1, "Y4M header is cut short", "YUV4MPEG2 W16 H16 C420"},
        {"info longheader.y4m", 1, "longer than 4096 bytes", "YUV4MPEG2 W" + Bytes(100000, '9') + "\n"},
        {"convert big.y4m out.png", 1, "width '99999' is not a number from 1 to 65535",
         "YUV4MPEG2 W99999 H99999 C420jpeg\nFRAME\n"},
        {"convert huge.y4m out.png", 1, "65534x65534 yuv420p frames are too large",
         "YUV4MPEG2 W65534 H65534 C420jpeg\nFRAME\n"},
        {"info zero.y4m", 1, "width '0' is not a number from 1", "YUV4MPEG2 W0 H16\n"},
        {"info negative.y4m", 1, "height '-16' is not a number from 1", "YUV4MPEG2 W16 H-16\n"},
        {"info noheight.y4m", 1, "Y4M header lacks H", "YUV4MPEG2 W16 C420jpeg\n"},
        {"rotate framx.y4m out.y4m --rotate 90", 1, "frame 1 does not start with FRAME", hdr + "\nFRAMX\n"},
        {"rotate frames.y4m out.y4m --rotate 90", 1, "frame 1 does not start with FRAME",
         hdr + "\nFRAMES\n" + Bytes(384, 'x')},
        {"convert p10.y4m out.png", 1, "C420p10 has 10-bit samples",
         hdr + " C420p10 XYSCSS=420P10\nFRAME\n" + Bytes(768, 'x')},
        {"info 444alpha.y4m", 1, "C444alpha has 4:4:4 chroma and an alpha plane", hdr + " C444alpha\n"},
        {"info mono16.y4m", 1, "Cmono16 has 16-bit samples", hdr + " Cmono16\n"},
        {"info odd-tag.y4m", 1, "Cxyz is not a colour space pixmill knows", hdr + " Cxyz\n"},
        // PNG colour types that would lose data, damage, sizes.
        {"convert rgb48.png out.yuv --to yuv420p", 1, "rgb48.png: PNG with 16-bit samples",
         png(2, 2, PNG_COLOR_TYPE_RGB, 16, randomBytes(rnd, 2 * 2 * 6))},
        {"convert greyalpha.png out.yuv --to yuv420p", 1, "PNG with an alpha channel",
         png(2, 2, PNG_COLOR_TYPE_GRAY_ALPHA, 8, randomBytes(rnd, 2 * 2 * 2))},
        {"convert trns.png out.yuv --to yuv420p", 1, "PNG with transparency",
         png(2, 2, PNG_COLOR_TYPE_PALETTE, 8, Bytes(4, '\0'), Bytes(3, '\x7f'), true)},
        {"convert ihdr-crc.png out.yuv --to yuv420p", 1, "damaged PNG: IHDR: CRC error", flipped(rgbPng, 29)},
        {"convert idat-crc.png out.yuv --to yuv420p", 1, "damaged PNG: IDAT: CRC error", flipped(rgbPng, idatCrc)},
        {"convert cut.png out.yuv --to yuv420p", 1, "damaged PNG: the file ends too early",
         rgbPng.substr(0, rgbPng.size() - 20)},
        {"convert zero.png out.yuv --to yuv420p", 1, "damaged PNG: Invalid IHDR data (Image width is zero in IHDR)",
         withPngSize(rgbPng, 0, 2)},
        {"convert wide.png out.yuv --to yuv420p", 1, "Invalid IHDR data (Image width exceeds user limit in IHDR)",
         withPngSize(rgbPng, 70000, 2)},
        {"convert huge.png out.yuv --to yuv420p", 1, "PNG of 40000x40000 is too large",
         withPngSize(rgbPng, 40000, 40000)},
        // Raw sizes on the command line.
        {"convert img.rgb565 out.yuv --format rgb565 --size 0x10", 2, "'0x10': expected WxH with sides from 1 to 65535"},
        {"convert img.rgb565 out.yuv --format rgb565 --size 65536x2", 2, "--size '65536x2': expected WxH"},
        // An operation's rules, checked before the call.
        {"scale good.y4m out.y4m --size 17x12", 1, "gScaleFrame: target width 17 is odd"},
        {"scale good.y4m out.y4m --size 16x12 --rect 8x8+40+0", 1, "not inside the 32x24 frame"},
        {"scale good.y4m out.y4m --ratio 2:1 --size 10x8", 1, "target width 10 is not a multiple of 4"},
        {"scale good.y4m out.y4m --ratio 1:2 --rect 8x8+2+2", 1, "plane would be read to offset"},
        {"scale good.y4m out.y4m --ratio 4:3 --size 18x12", 1, "source width 32 is not 4/3 of the target width 18"},
        {"scale good.y4m out.y4m --ratio 1:4 --size 32x32 --rect 8x8+28+0", 1, "is not inside the 32x24 frame"},
        {"scale good422.y4m out.y4m --to yuv420p --size 2x2", 1, "gYUV422toYUV420: target width 2 is below 4"},
        {"scale img.rgb565 out.raw --in-size 20x10 --format rgb565 --size 1x5", 1, "target width 1 is below 2"},
        {"convert img.rgb565 out.yuv --format rgb565 --size 20x10 --op gEmRGB565toYUV420 --canvas 16x16", 1,
         "image width 20 exceeds the frame width"},
        {"rotate img.rgb565 out.raw --format rgb565 --size 20x10 --rotate 90 --rect 4x4+25+0", 1, "not inside"},
        {"rotate good.y4m out.raw --to rgb565 --rect 8x8+34+0 --rotate 90", 1, "rectangle x 34 lies beyond"},
        {"rotate good.y4m out.raw --to rgb565 --rect 8x8+0+0 --canvas 20x20 --at 19,0", 1, "leaves no 2x2 block"},
        // Usage.
        {"rotate good.y4m out.y4m --rotate 45", 2, "expected 0, 90, 180 or 270"},
        {"rotate good.y4m out.y4m --rotate 90 --size", 2, "--size needs a value"},
        {"convert good.y4m out.y4m --op gScaleFrame --rect 8x8", 2, "--rect does not apply to gScaleFrame"},
        {"convert good.y4m out.y4m --op gRotateRGB16", 2, "gRotateRGB16 does not take yuv420p"},
        {"convert good.y4m out.y4m --to rgb24", 2, "Y4M holds planar YUV only"},
        {"convert good.y4m out.png", 1, "PNG holds one frame"},
        {"frobnicate good.y4m out.y4m", 2, "unknown command"},
    };
    const char *outputs[] = {"out.png", "out.y4m", "out.raw", "out.yuv"};
    for (const Case &c : cases) {
        SCOPED_TRACE(c.args);
        if (c.file) {
            const std::string args = c.args;
            const size_t from = args.find(' ') + 1;
            write(args.substr(from, args.find(' ', from) - from), *c.file);
        }
        // Once with no output file there, once over an existing one.
        for (const bool existing : {false, true}) {
            for (const char *name : outputs)
                existing ? write(name, "precious") : static_cast<void>(fs::remove(dir_ / name));
            const Result r = run(c.args);
            EXPECT_EQ(r.code, c.code);
            EXPECT_NE(r.err.find(c.message), std::string::npos) << r.err;
            EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), 1) << r.err;
            for (const char *name : outputs)
                EXPECT_EQ(existing ? read(name) : std::to_string(exists(name)), existing ? "precious" : "0") << name;
            for (const auto &entry : fs::directory_iterator(dir_))
                EXPECT_EQ(entry.path().filename().string().find(".pixmill-"), std::string::npos);
        }
    }
}

TEST_F(Cli, GreyAndPalettePngsAreReadAsTheirColours)
{
    // 2-bit grey 0..3 widens to 0, 85, 170, 255; 4-bit palette indices give
    // their entries. Each PNG converts exactly as its R,G,B twin.
    const Bytes palette = "\x0a\x0b\x0c\x80\x90\xa0\xfe\x01\x7f";
    struct Case {
        const char *name;
        Bytes file, rgb;
    };
    const Case cases[] = {
        {"grey2", png(4, 2, PNG_COLOR_TYPE_GRAY, 2, "\x1b\xe4"),
         Bytes("\0\0\0UUU\xaa\xaa\xaa\xff\xff\xff\xff\xff\xff\xaa\xaa\xaaUUU\0\0\0", 24)},
        {"grey8", png(4, 2, PNG_COLOR_TYPE_GRAY, 8, Bytes("\x01\x40\x80\xfe\x00\x10\x20\x30", 8)),
         Bytes("\x01\x01\x01\x40\x40\x40\x80\x80\x80\xfe\xfe\xfe\0\0\0\x10\x10\x10\x20\x20\x20\x30\x30\x30", 24)},
        {"palette4", png(4, 2, PNG_COLOR_TYPE_PALETTE, 4, "\x01\x20\x22\x10", palette),
         palette.substr(0, 6) + palette.substr(6, 3) + palette.substr(0, 3) + palette.substr(6, 3) +
             palette.substr(6, 3) + palette.substr(3, 3) + palette.substr(0, 3)},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        const std::string name = c.name;
        write(name + ".png", c.file);
        write(name + ".rgb", c.rgb);
        ASSERT_TRUE(ok("convert " + name + ".png a.yuv --to yuv420p"));
        ASSERT_TRUE(ok("convert " + name + ".rgb b.yuv --to yuv420p --format rgb24 --size 4x2"));
        EXPECT_EQ(read("a.yuv"), read("b.yuv"));
    }
}

TEST_F(Cli, ProgressLineOnlyOnATerminalAndNotWhenQuiet)
{
    Random rnd;
    const Bytes stream = y4m(rnd, 16, 16, "420jpeg", 3);
    const size_t second = stream.find("FRAME", stream.find("FRAME") + 1);
    write("head", stream.substr(0, second));
    write("tail", stream.substr(second));
    // Frame 1 at once, the rest after more than a second; standard error on
    // script(1)'s pseudo-terminal or in a file. Returns what it received.
    const auto job = [&](const std::string &flags, bool terminal) {
        const std::string feed = "(cat head; sleep 1.3; cat tail) | " + cli() + " rotate - out.y4m --rotate 180 " +
                                 flags;
        const Result r = shell(terminal ? "script -qec \"" + feed + "\" /dev/null </dev/null" : feed);
        EXPECT_EQ(r.code, 0) << r.err;
        return terminal ? r.out : r.err;
    };
    const std::string shown = job("", true);
    // Frame 2 comes after the first second; on a slow machine frame 1 may too.
    EXPECT_TRUE(std::regex_search(shown, std::regex("\rpixmill: [12] frames, [0-9]+\\.[0-9] fps "))) << shown;
    EXPECT_EQ(shown.back(), '\n') << shown;
    EXPECT_EQ(read("out.y4m").size(), stream.size());
    EXPECT_EQ(job("--quiet", true), "");
    EXPECT_EQ(job("", false), "");
}

} // namespace
