// End-to-end tests of the pixmill program: it runs as a separate process on
// generated files in a scratch directory, and its output is compared with
// direct calls of the library, with itself through other paths, and with
// what ffmpeg reads back.
#include <regex>
#include <set>
#include <vector>

#include "cli_fixture.h"
#include "pixmill.h"

namespace {

using namespace pixmill::test;

// Frame i (0-based) of a Y4M stream with plain FRAME headers.
Bytes y4mFrame(const Bytes &stream, size_t frameBytes, size_t i)
{
    const size_t start = stream.find('\n') + 1 + i * (6 + frameBytes) + 6;
    return stream.substr(start, frameBytes);
}

// A Frame over the planes of one frame held in a byte string.
Frame frameOver(Bytes &bytes, int w, int h, bool is422)
{
    auto *y = reinterpret_cast<uint8_t *>(bytes.data());
    const size_t luma = static_cast<size_t>(w) * static_cast<size_t>(h), chroma = is422 ? luma / 2 : luma / 4;
    return Frame{y, y + luma, y + luma + chroma, static_cast<uint16_t>(w), static_cast<uint16_t>(h), 0};
}

template <typename T>
Bytes bytesOf(const std::vector<T> &v)
{
    return Bytes(reinterpret_cast<const char *>(v.data()), v.size() * sizeof(T));
}

// ---- Round trips and multi-frame streams -----------------------------------

TEST_F(Cli, LosslessRoundTripsKeepEveryFrame)
{
    Random rnd;
    const Bytes in = y4m(rnd, 48, 32, "420jpeg", 5);
    write("in.y4m", in);
    // A quarter turn there and back, in parallel, and a double flip.
    ASSERT_TRUE(ok("rotate in.y4m r.y4m --rotate 90 --threads 3"));
    EXPECT_NE(read("r.y4m").find("W32 H48 F30:1"), std::string::npos);
    ASSERT_TRUE(ok("rotate r.y4m back.y4m --rotate 270 --threads 2 --quiet"));
    EXPECT_EQ(read("back.y4m"), in);
    ASSERT_TRUE(ok("mirror in.y4m m.y4m --mirror vertical"));
    ASSERT_TRUE(ok("mirror m.y4m mm.y4m --mirror vertical --in-place"));
    EXPECT_EQ(read("mm.y4m"), in);
    EXPECT_EQ(run("info back.y4m").out, "back.y4m: y4m, yuv420p, 48x32, 5 frames, 2304 bytes a frame\n");
    // --frames stops early; raw output of the same frames is the frame data.
    ASSERT_TRUE(ok("rotate in.y4m two.yuv --rotate 0 --frames 2"));
    EXPECT_EQ(read("two.yuv"), y4mFrame(in, 2304, 0) + y4mFrame(in, 2304, 1));
}

TEST_F(Cli, PackedAndPlanarPathsAgree)
{
    Random rnd;
    write("in.yuyv", randomBytes(rnd, 2 * 24 * 16 * 3));
    const std::string raw = " --format yuyv --size 24x16";
    // YUY2toYUV420 and gY1UY2VToYV12 give the same planes; gY1UY2VToYUV420
    // puts V in the u plane and so writes a yv12 file, which --to undoes.
    for (const char *c : {"a.yuv --op YUY2toYUV420", "b.yuv --op gY1UY2VToYV12",
                          "c.yuv --op gY1UY2VToYUV420 --to yuv420p", "d.yuv --op gY1UY2VToYUV420"})
        ASSERT_TRUE(ok(std::string("convert in.yuyv ") + c + raw));
    EXPECT_EQ(read("a.yuv").size(), 24u * 16 * 3 / 2 * 3);
    EXPECT_EQ(read("a.yuv"), read("b.yuv"));
    EXPECT_EQ(read("a.yuv"), read("c.yuv"));
    EXPECT_NE(read("a.yuv"), read("d.yuv"));
    // The same pixels as uyvy give the same planes.
    Bytes uyvy = read("in.yuyv");
    for (size_t i = 0; i < uyvy.size(); i += 2)
        std::swap(uyvy[i], uyvy[i + 1]);
    write("in.uyvy", uyvy);
    ASSERT_TRUE(ok("convert in.uyvy e.yuv --to yuv420p --format uyvy --size 24x16"));
    EXPECT_EQ(read("a.yuv"), read("e.yuv"));
}

TEST_F(Cli, PngWrittenAndReadBackMatchesRawRgb)
{
    Random rnd;
    write("in.y4m", y4m(rnd, 32, 24, "420jpeg", 1));
    ASSERT_TRUE(ok("convert in.y4m a.png"));
    ASSERT_TRUE(ok("convert in.y4m a.rgb --to rgb24"));
    // Both RGB images go into 4:2:0 through the same operation.
    ASSERT_TRUE(ok("convert a.png p.yuv --to yuv420p"));
    ASSERT_TRUE(ok("convert a.rgb r.yuv --to yuv420p --format rgb24 --size 32x24"));
    EXPECT_EQ(read("p.yuv"), read("r.yuv"));
    EXPECT_EQ(run("info a.png").out, "a.png: png, rgb24, 32x24, 1 frame, 2304 bytes a frame\n");
}

TEST_F(Cli, StandardInputAndOutputMatchFiles)
{
    Random rnd;
    write("in.y4m", y4m(rnd, 40, 30, "422", 3));
    ASSERT_TRUE(ok("scale in.y4m file.y4m --size 20x14"));
    ASSERT_EQ(shell("cat in.y4m | " + cli() + " scale - - --size 20x14 > pipe.y4m").code, 0);
    EXPECT_EQ(read("pipe.y4m"), read("file.y4m"));
    EXPECT_NE(read("pipe.y4m").find(" C422\n"), std::string::npos);
    // Raw frames from a pipe, raw out when forced.
    write("in.gray", randomBytes(rnd, 16 * 8 * 2));
    ASSERT_EQ(shell("cat in.gray | " + cli() + " rotate - - --rotate 180 --format gray --size 16x8 > a.gray").code, 0);
    ASSERT_TRUE(ok("rotate in.gray b.y4m --rotate 180 --format gray --size 16x8"));
    EXPECT_EQ(read("b.y4m").substr(0, 30), "YUV4MPEG2 W16 H8 F25:1 Cmono\nF");
    const Bytes a = read("a.gray");
    ASSERT_EQ(a.size(), 256u);
    EXPECT_EQ(Bytes(a.rbegin() + 128, a.rend()), read("in.gray").substr(0, 128));
}

// ---- The program's calls are the library's calls ---------------------------

TEST_F(Cli, OperationsReceiveTheirArgumentsInTheirOwnOrder)
{
    Random rnd;
    const Bytes s420 = y4m(rnd, 40, 30, "420jpeg", 1), s422 = y4m(rnd, 40, 30, "422", 1);
    write("a.y4m", s420);
    write("b.y4m", s422);
    Bytes f420 = y4mFrame(s420, 1800, 0), f422 = y4mFrame(s422, 2400, 0);
    const Frame a = frameOver(f420, 40, 30, false), b = frameOver(f422, 40, 30, true);

    // The 4:2:2 bottom-up conversion takes the canvas's size before the turn.
    ASSERT_TRUE(ok("rotate b.y4m o1.raw --to rgb565 --matrix 601 --rect 10x8+3+1 --rotate 90 --canvas 12x14 "
                   "--at 2,3"));
    std::vector<uint16_t> s1(12 * 14, 0);
    ASSERT_EQ(gYUV422HPlanartoBGR565TopDown_Rotate(&b, s1.data(), 3, 1, 10, 8, 2, 3, 14, 12, 1), 0);
    EXPECT_EQ(read("o1.raw"), bytesOf(s1));

    // BT.709 rectangle, default canvas just large enough for the turned rectangle.
    ASSERT_TRUE(ok("rotate a.y4m o2.raw --to rgb565 --matrix 709 --rect 9x7+5+3 --rotate 270 --at 1,2"));
    std::vector<uint16_t> s2(8 * 11, 0);
    ASSERT_EQ(gYUV420toRGB16Rotate(&a, s2.data(), 8, 11, 1, 2, 5, 3, 9, 7, 3), 0);
    EXPECT_EQ(read("o2.raw"), bytesOf(s2));

    // RGB565 rectangle onto a B,G,R canvas: height, then a stride in bytes.
    const Bytes rgb = randomBytes(rnd, 20 * 10 * 2);
    write("c.rgb565", rgb);
    ASSERT_TRUE(ok("rotate c.rgb565 o3.raw --format rgb565 --size 20x10 --to bgr24 --rect 8x6+2+2 --rotate 270 "
                   "--at 1,1"));
    std::vector<uint8_t> s3(7 * 9 * 3, 0);
    ASSERT_EQ(gRotateRGB16toBGR24(reinterpret_cast<const uint16_t *>(rgb.data()), s3.data(), 20, 10, 2, 2, 8, 6, 1, 1,
                                  9, 21, 3),
              0);
    EXPECT_EQ(read("o3.raw"), bytesOf(s3));

    // 4:2:2 crop and scale into 4:2:0, and the 709 whole-frame conversion.
    ASSERT_TRUE(ok("scale b.y4m o4.yuv --to yuv420p --rect 30x20+4+2 --size 16x12"));
    std::vector<uint8_t> s4(16 * 12 * 3 / 2);
    Frame t{s4.data(), s4.data() + 192, s4.data() + 240, 16, 12, 0};
    gYUV422toYUV420(&b, &t, 4, 2, 30, 20);
    EXPECT_EQ(read("o4.yuv"), bytesOf(s4));
    ASSERT_TRUE(ok("convert a.y4m o5.bgr --matrix 709"));
    std::vector<uint8_t> s5(40 * 30 * 3);
    ASSERT_EQ(gYUV420toBGR24(&a, s5.data(), 120), 0);
    EXPECT_EQ(read("o5.bgr"), bytesOf(s5));
}

TEST_F(Cli, EveryExportIsReachableAndTheGalleryShowsThem)
{
    std::ostringstream header;
    header << std::ifstream(PIXMILL_HEADER).rdbuf();
    const std::string text = header.str();
    const std::regex decl(R"(PIXMILL_API\s+\w+\s+(\w+)\s*\()");
    std::set<std::string> exported;
    for (std::sregex_iterator i(text.begin(), text.end(), decl), end; i != end; ++i)
        exported.insert((*i)[1]);
    ASSERT_EQ(exported.size(), 32u);
    const Result ops = run("ops");
    ASSERT_EQ(ops.code, 0);
    for (const std::string &name : exported)
        EXPECT_NE(ops.out.find("\n" + name + " "), std::string::npos) << name;
    // Both make their directory, parents included.
    const Result gallery = run("gallery out/g");
    ASSERT_EQ(gallery.code, 0) << gallery.err;
    const Bytes index = read("out/g/index.html");
    for (const std::string &name : exported)
        EXPECT_NE(index.find("<code>" + name + "</code>"), std::string::npos) << name;
    size_t pngs = 0;
    for (const auto &entry : fs::directory_iterator(dir_ / "out/g"))
        pngs += entry.path().extension() == ".png";
    EXPECT_EQ(pngs, 33u);
    ASSERT_TRUE(ok("demo a/b"));
    EXPECT_TRUE(exists("a/b/pixmill-demo.png"));
    write("file", "");
    EXPECT_NE(run("demo file/d").err.find("file/d: cannot make it the output directory"), std::string::npos);
}

// ---- Next to ffmpeg ---------------------------------------------------------

#ifdef PIXMILL_FFMPEG
TEST_F(Cli, FfmpegTestsrcThroughPixmillReadsBack)
{
    const std::string ff = std::string("'") + PIXMILL_FFMPEG + "' -v error -f lavfi -i testsrc=size=176x144:rate=25 "
                                                               "-frames:v 4 -f yuv4mpegpipe ";
    const std::string probe = std::string(" | '") + PIXMILL_FFPROBE +
                              "' -v error -count_frames -show_entries stream=width,height,pix_fmt,nb_read_frames "
                              "-of csv=p=0 -";
    struct Case {
        const char *pixFmt, *pixmill, *expect;
    };
    const Case cases[] = {
        {"yuv420p", "scale - - --size 88x72", "88,72,yuv420p,4"},
        {"yuv420p", "rotate - - --rotate 90 --threads 2", "144,176,yuv420p,4"},
        {"yuv420p", "scale - - --ratio 4:3", "132,108,yuv420p,4"},
        {"yuv422p", "scale - - --to yuv420p --size 64x48", "64,48,yuv420p,4"},
        {"yuv422p", "mirror - - --mirror both", "176,144,yuv422p,4"},
        {"gray", "rotate - - --rotate 270", "144,176,gray,4"},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.pixmill);
        const Result r = shell(ff + "-pix_fmt " + c.pixFmt + " - | " + cli() + " " + c.pixmill + probe);
        EXPECT_EQ(r.code, 0) << r.err;
        EXPECT_EQ(r.out, std::string(c.expect) + "\n") << r.err;
    }
}
#endif

} // namespace
