// The GStreamer elements against the library called directly: random frames in
// GStreamer's own layout (padded strides included) go through a GstHarness,
// and the output, read back into tight planes, must equal what the library
// makes of the same frame's tight planes.
#include <gst/check/gstharness.h>
#include <gst/gst.h>
#include <gst/video/video.h>
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "common.h" // registerElements
#include "pixmill.h"

namespace {

using Bytes = std::vector<uint8_t>;

GstVideoInfo infoOf(GstVideoFormat f, int w, int h)
{
    GstVideoInfo info;
    gst_video_info_set_format(&info, f, static_cast<guint>(w), static_cast<guint>(h));
    return info;
}

// Each plane of the library's tight layout: bytes per row, rows, and where the
// GStreamer frame keeps it (offset and stride of component 0, 1 or 2).
struct TightPlane {
    int rowBytes, rows;
    size_t offset;
    int stride;
};

std::vector<TightPlane> tightPlanes(const GstVideoInfo &info)
{
    const int w = GST_VIDEO_INFO_WIDTH(&info), h = GST_VIDEO_INFO_HEIGHT(&info);
    const GstVideoFormat f = GST_VIDEO_INFO_FORMAT(&info);
    if (GST_VIDEO_INFO_N_PLANES(&info) == 1)
        return {{w * GST_VIDEO_INFO_COMP_PSTRIDE(&info, 0), h, GST_VIDEO_INFO_PLANE_OFFSET(&info, 0),
                 GST_VIDEO_INFO_PLANE_STRIDE(&info, 0)}};
    const int chromaRows = f == GST_VIDEO_FORMAT_Y42B ? h : h >> 1;
    std::vector<TightPlane> planes;
    for (int c = 0; c < 3; ++c) {
        const guint plane = GST_VIDEO_INFO_COMP_PLANE(&info, c);
        planes.push_back({c ? w >> 1 : w, c ? chromaRows : h, GST_VIDEO_INFO_PLANE_OFFSET(&info, plane),
                          GST_VIDEO_INFO_PLANE_STRIDE(&info, plane)});
    }
    return planes;
}

// A buffer in GStreamer's layout, every byte (padding too) random.
GstBuffer *randomBuffer(const GstVideoInfo &info, std::mt19937 &rng)
{
    Bytes bytes(GST_VIDEO_INFO_SIZE(&info));
    for (auto &b : bytes)
        b = static_cast<uint8_t>(rng());
    GstBuffer *buffer = gst_buffer_new_allocate(nullptr, bytes.size(), nullptr);
    gst_buffer_fill(buffer, 0, bytes.data(), bytes.size());
    return buffer;
}

// The frame's planes as the library lays them out, Y, U, V (by component).
Bytes tightOf(GstBuffer *buffer, const GstVideoInfo &info)
{
    GstMapInfo map;
    EXPECT_TRUE(gst_buffer_map(buffer, &map, GST_MAP_READ));
    Bytes out;
    for (const TightPlane &p : tightPlanes(info))
        for (int r = 0; r < p.rows; ++r) {
            const uint8_t *row = map.data + p.offset + static_cast<size_t>(r) * static_cast<size_t>(p.stride);
            out.insert(out.end(), row, row + p.rowBytes);
        }
    gst_buffer_unmap(buffer, &map);
    return out;
}

Frame frameOver(Bytes &planes, int w, int h, bool is422)
{
    uint8_t *y = planes.data();
    const size_t chroma = static_cast<size_t>(w >> 1) * static_cast<size_t>(is422 ? h : h >> 1);
    uint8_t *u = y + static_cast<size_t>(w) * static_cast<size_t>(h);
    return Frame{y, u, u + chroma, static_cast<uint16_t>(w), static_cast<uint16_t>(h), 0};
}

uint16_t *words(Bytes &b) { return reinterpret_cast<uint16_t *>(b.data()); }

// One run of an element: the output in tight planes (`same` when it is the
// input buffer itself), or nothing (and the bus error's text in `error`) when
// the element refuses.
struct Outcome {
    bool ran = false, same = false;
    Bytes output;
    std::string error;
};

Outcome runElement(const char *element, const char *properties, const GstVideoInfo &in, const GstVideoInfo &out,
               GstBuffer *buffer)
{
    GstHarness *h = gst_harness_new_parse((std::string(element) + " " + properties).c_str());
    GstBus *bus = gst_bus_new();
    gst_element_set_bus(h->element, bus);
    // Downstream asks for a format and a size, as a capsfilter would.
    GstCaps *wanted = gst_video_info_to_caps(&out);
    gst_structure_remove_fields(gst_caps_get_structure(wanted, 0), "colorimetry", "chroma-site", nullptr);
    gst_harness_set_caps(h, gst_video_info_to_caps(&in), wanted);
    Outcome run;
    if (gst_harness_push(h, gst_buffer_ref(buffer)) == GST_FLOW_OK) {
        GstBuffer *result = gst_harness_pull(h);
        run.ran = result != nullptr;
        run.same = result == buffer;
        if (result) {
            run.output = tightOf(result, out);
            gst_buffer_unref(result);
        }
    }
    if (GstMessage *m = gst_bus_pop_filtered(bus, GST_MESSAGE_ERROR)) {
        GError *e = nullptr;
        gst_message_parse_error(m, &e, nullptr);
        run.error = e->message;
        g_error_free(e);
        gst_message_unref(m);
    }
    gst_buffer_unref(buffer);
    gst_element_set_bus(h->element, nullptr);
    gst_object_unref(bus);
    gst_harness_teardown(h);
    return run;
}

const char *name(GstVideoFormat f) { return gst_video_format_to_string(f); }

// ---- pixmillconvert ----------------------------------------------------------

// What the library makes of a tight input, called the way the element's
// documentation says: RGB16 upright and turned clockwise by `rotation`.
Bytes expectedConvert(GstVideoFormat in, GstVideoFormat out, int w, int h, int matrix, Rotation rotation, Bytes src)
{
    const auto uw = static_cast<uint32_t>(w), uh = static_cast<uint32_t>(h);
    const auto i420 = static_cast<size_t>(w * h * 3 / 2);
    Bytes planes = src, result(static_cast<size_t>(w) * static_cast<size_t>(h) * 3);
    const bool is422 = in == GST_VIDEO_FORMAT_Y42B;
    Frame f = frameOver(planes, w, h, is422), t = frameOver(result, w, h, false);
    if (in == GST_VIDEO_FORMAT_GRAY8) {
        planes.resize(planes.size() * 3 / 2, 128);
        f = frameOver(planes, w, h, false);
    } else if (in == GST_VIDEO_FORMAT_YUY2 || in == GST_VIDEO_FORMAT_UYVY) {
        planes.assign(i420, 0);
        f = frameOver(planes, w, h, false);
        (in == GST_VIDEO_FORMAT_YUY2 ? gY1UY2VToYV12 : gUY1VY2ToYUV420)(src.data(), &f, uw, uh);
    } else if (in == GST_VIDEO_FORMAT_RGB16) { // the operation stores the image upside down
        const size_t row = 2 * static_cast<size_t>(w);
        Bytes reversed;
        for (int r = h - 1; r >= 0; --r)
            reversed.insert(reversed.end(), src.begin() + static_cast<ptrdiff_t>(row * r),
                            src.begin() + static_cast<ptrdiff_t>(row * (r + 1)));
        gEmRGB565toYUV420(words(reversed), &t, uw, uh);
        result.resize(i420);
        return result;
    } else if (in == GST_VIDEO_FORMAT_BGR) {
        gBGR24INTtoYUV420Planar(src.data(), result.data(), uw, uh, 3 * w);
        result.resize(i420);
        return result;
    }
    if (out == GST_VIDEO_FORMAT_I420) {
        if (!is422)
            return Bytes(planes.begin(), planes.begin() + static_cast<ptrdiff_t>(i420));
        gYUV422toYUV420(&f, &t, 0, 0, static_cast<uint16_t>(w), static_cast<uint16_t>(h));
        result.resize(i420);
        return result;
    }
    if (out == GST_VIDEO_FORMAT_RGB || out == GST_VIDEO_FORMAT_BGR) {
        if (out == GST_VIDEO_FORMAT_RGB)
            gEmYUV420toRGB888TopDown(&f, result.data(), w, h, 1);
        else if (is422)
            gYUV422HPlanartoBGR888TopDown(&f, result.data(), w, h, 1);
        else
            gYUV420toBGR24(&f, result.data(), 3 * w);
        return result;
    }
    const bool quarter = rotation == ROTATE_90 || rotation == ROTATE_270;
    const int ow = quarter ? h : w, oh = quarter ? w : h;
    result.resize(static_cast<size_t>(2 * w * h));
    if (matrix == 709) {
        (is422 ? gYUV422toRGB16Rotate : gYUV420toRGB16Rotate)(&f, words(result), ow, oh, 0, 0, 0, 0, w, h, rotation);
        return result;
    }
    Bytes upright(result.size());
    if (is422) { // bottom-up rows: read them from the last
        Bytes flipped(result.size());
        const auto u = [](int v) { return static_cast<uint16_t>(v); };
        gYUV422HPlanartoBGR565TopDown_Rotate(&f, words(flipped), 0, 0, u(w), u(h), 0, 0, u(w), u(h), ROTATE_NONE);
        const size_t row = static_cast<size_t>(2 * w);
        for (int r = 0; r < h; ++r)
            std::memcpy(&upright[row * static_cast<size_t>(r)], &flipped[row * static_cast<size_t>(h - 1 - r)], row);
    } else {
        gEmYUV420toRGB565TopDown(&f, words(upright), w, h, 1);
    }
    gRotateRGB16(words(upright), words(result), w, h, 0, 0, w, h, 0, 0, ow, oh, rotation);
    return result;
}

struct Size {
    int w, h;
};
// 18, 34 and 62 wide: I420 rows padded to 4 bytes; 64: tight.
const Size kSizes[] = {{18, 10}, {34, 6}, {62, 4}, {64, 8}};

void expectConverts(GstVideoFormat in, GstVideoFormat out, int w, int h, int matrix, int degrees)
{
    SCOPED_TRACE(std::string(name(in)) + " -> " + name(out) + " " + std::to_string(w) + "x" + std::to_string(h) +
                 " matrix " + std::to_string(matrix) + " rotation " + std::to_string(degrees));
    std::mt19937 rng(static_cast<unsigned>(w * 1000 + h + degrees));
    const auto rotation = static_cast<Rotation>(degrees / 90);
    const bool quarter = degrees % 180 == 90;
    const GstVideoInfo inInfo = infoOf(in, w, h), outInfo = infoOf(out, quarter ? h : w, quarter ? w : h);
    GstBuffer *buffer = randomBuffer(inInfo, rng);
    const Bytes src = tightOf(buffer, inInfo);
    const std::string props = "matrix=" + std::to_string(matrix) + " rotation=" + std::to_string(degrees);
    const Outcome run = runElement("pixmillconvert", props.c_str(), inInfo, outInfo, buffer);
    ASSERT_TRUE(run.ran) << run.error;
    EXPECT_EQ(run.same, in == out);
    EXPECT_TRUE(run.output == expectedConvert(in, out, w, h, matrix, rotation, src));
}

const GstVideoFormat kPlanarIn[] = {GST_VIDEO_FORMAT_I420, GST_VIDEO_FORMAT_YV12, GST_VIDEO_FORMAT_Y42B,
                                    GST_VIDEO_FORMAT_YUY2, GST_VIDEO_FORMAT_UYVY, GST_VIDEO_FORMAT_GRAY8};

TEST(PixmillConvert, EveryPairAndTurnEqualsTheLibrary)
{
    for (const Size s : kSizes)
        for (GstVideoFormat in : kPlanarIn) {
            for (int matrix : {601, 709})
                for (int degrees : {0, 90, 180, 270})
                    expectConverts(in, GST_VIDEO_FORMAT_RGB16, s.w, s.h, matrix, degrees);
            if (in != GST_VIDEO_FORMAT_Y42B)
                expectConverts(in, GST_VIDEO_FORMAT_RGB, s.w, s.h, 601, 0);
            expectConverts(in, GST_VIDEO_FORMAT_BGR, s.w, s.h, 601, 0);
            expectConverts(in, GST_VIDEO_FORMAT_I420, s.w, s.h, 601, 0);
        }
    for (const Size s : kSizes)
        for (GstVideoFormat in : {GST_VIDEO_FORMAT_RGB16, GST_VIDEO_FORMAT_BGR})
            expectConverts(in, GST_VIDEO_FORMAT_I420, s.w, s.h, 601, 0);
    // Odd sizes where the operation takes them.
    for (GstVideoFormat in : {GST_VIDEO_FORMAT_I420, GST_VIDEO_FORMAT_YV12, GST_VIDEO_FORMAT_GRAY8}) {
        expectConverts(in, GST_VIDEO_FORMAT_RGB16, 17, 9, 601, 0);
        expectConverts(in, GST_VIDEO_FORMAT_RGB, 17, 9, 601, 0);
    }
    expectConverts(GST_VIDEO_FORMAT_Y42B, GST_VIDEO_FORMAT_BGR, 17, 9, 601, 0);
}

// ---- pixmillscale ------------------------------------------------------------

TEST(PixmillScale, KernelsAndBilinearEqualTheLibrary)
{
    using Kernel = decltype(&gScaleCroppedFrame_downby2); // nullptr: bilinear
    const Kernel down2 = gScaleCroppedFrame_downby2, up2 = gScaleCroppedFrame_upby2, up4 = gScaleCroppedFrame_upby4,
                 down4to3 = gScaleCroppedFrame_downto3by3;
    const GstVideoFormat I420 = GST_VIDEO_FORMAT_I420, GRAY8 = GST_VIDEO_FORMAT_GRAY8, Y42B = GST_VIDEO_FORMAT_Y42B,
                         RGB16 = GST_VIDEO_FORMAT_RGB16;
    const struct {
        GstVideoFormat f;
        int iw, ih, ow, oh;
        bool fixed;
        Kernel kernel;
    } cases[] = {
        {I420, 72, 40, 36, 20, true, down2},     {I420, 18, 10, 36, 20, true, up2},
        {I420, 18, 10, 72, 40, true, up4},       {I420, 72, 40, 54, 30, true, down4to3},
        {I420, 72, 40, 36, 20, false, nullptr},  {I420, 62, 10, 34, 6, true, nullptr},
        {I420, 18, 10, 34, 20, true, nullptr},   {GRAY8, 72, 40, 36, 20, true, down2},
        {GRAY8, 17, 9, 30, 13, true, nullptr},   {Y42B, 34, 10, 18, 7, true, nullptr},
        {Y42B, 18, 5, 62, 11, true, nullptr},    {RGB16, 17, 9, 30, 14, true, nullptr},
        {RGB16, 62, 10, 31, 5, true, nullptr},
    };
    std::mt19937 rng(11);
    for (const auto &c : cases) {
        SCOPED_TRACE(std::string(name(c.f)) + " " + std::to_string(c.iw) + "x" + std::to_string(c.ih) + " -> " +
                     std::to_string(c.ow) + "x" + std::to_string(c.oh));
        const GstVideoInfo in = infoOf(c.f, c.iw, c.ih), out = infoOf(c.f, c.ow, c.oh);
        GstBuffer *buffer = randomBuffer(in, rng);
        Bytes src = tightOf(buffer, in);
        const Outcome run = runElement("pixmillscale", c.fixed ? "" : "fixed-kernels=false", in, out, buffer);
        ASSERT_TRUE(run.ran) << run.error;
        Bytes expected(run.output.size());
        const bool is422 = c.f == Y42B;
        Frame s = frameOver(src, c.iw, c.ih, is422), t = frameOver(expected, c.ow, c.oh, is422);
        if (c.f == GRAY8)
            s.u = s.v = t.u = t.v = nullptr;
        if (c.f == RGB16)
            gScaleRGB565Frame(words(src), words(expected), c.iw, c.ih, c.ow, c.oh);
        else if (c.kernel)
            c.kernel(&s, &t, 0, 0, static_cast<uint32_t>(c.iw), static_cast<uint32_t>(c.ih));
        else if (is422)
            gScaleCroppedFrameYUV422(&s, &t, 0, 0, static_cast<uint16_t>(c.iw), static_cast<uint16_t>(c.ih));
        else
            gScaleFrame(&s, &t);
        EXPECT_TRUE(run.output == expected);
    }
}

// ---- pixmillflip -------------------------------------------------------------

// Every sample of a w x h plane (of `size` bytes each) stands where the
// method puts it, with videoflip's meaning of the names.
int misplaced(const uint8_t *in, const uint8_t *out, int w, int h, int size, const std::string &method)
{
    int wrong = 0;
    const int ow = method == "clockwise" || method == "counterclockwise" ? h : w;
    for (int r = 0; r < h; ++r)
        for (int c = 0; c < w; ++c) {
            int tc = c, tr = r;
            if (method == "clockwise")
                tc = h - 1 - r, tr = c;
            else if (method == "counterclockwise")
                tc = r, tr = w - 1 - c;
            else if (method == "rotate-180")
                tc = w - 1 - c, tr = h - 1 - r;
            else if (method == "horizontal-flip")
                tc = w - 1 - c;
            else if (method == "vertical-flip")
                tr = h - 1 - r;
            wrong += std::memcmp(out + (tr * ow + tc) * size, in + (r * w + c) * size, static_cast<size_t>(size)) != 0;
        }
    return wrong;
}

TEST(PixmillFlip, EveryMethodPutsEverySampleInItsPlace)
{
    const char *methods[] = {"clockwise", "rotate-180", "counterclockwise", "horizontal-flip", "vertical-flip"};
    const GstVideoFormat formats[] = {GST_VIDEO_FORMAT_I420, GST_VIDEO_FORMAT_Y42B, GST_VIDEO_FORMAT_GRAY8,
                                      GST_VIDEO_FORMAT_RGB16};
    std::mt19937 rng(5);
    std::vector<Size> sizes(std::begin(kSizes), std::end(kSizes));
    sizes.push_back({17, 9}); // odd: RGB16 throughout, GRAY8 mirrors
    for (const Size s : sizes)
        for (GstVideoFormat f : formats)
            for (const std::string method : methods) {
                const bool quarter = method == "clockwise" || method == "counterclockwise";
                const bool odd = s.w % 2 != 0;
                if (odd && !(f == GST_VIDEO_FORMAT_RGB16 || (f == GST_VIDEO_FORMAT_GRAY8 && !quarter)))
                    continue;
                SCOPED_TRACE(std::string(name(f)) + " " + method + " " + std::to_string(s.w) + "x" +
                             std::to_string(s.h));
                const GstVideoInfo in = infoOf(f, s.w, s.h), out = infoOf(f, quarter ? s.h : s.w, quarter ? s.w : s.h);
                GstBuffer *buffer = randomBuffer(in, rng);
                Bytes src = tightOf(buffer, in);
                const Outcome run = runElement("pixmillflip", ("method=" + method).c_str(), in, out, buffer);
                ASSERT_TRUE(run.ran) << run.error;
                Bytes got = run.output;
                const int size = f == GST_VIDEO_FORMAT_RGB16 ? 2 : 1;
                EXPECT_EQ(misplaced(src.data(), got.data(), s.w, s.h, size, method), 0);
                if (f == GST_VIDEO_FORMAT_I420) {
                    const size_t y = static_cast<size_t>(s.w * s.h), c = y / 4;
                    for (size_t plane : {y, y + c})
                        EXPECT_EQ(misplaced(&src[plane], &got[plane], s.w / 2, s.h / 2, 1, method), 0);
                } else if (f == GST_VIDEO_FORMAT_Y42B) {
                    // 4:2:2 chroma follows the library's own rules (a quarter
                    // turn keeps every second chroma row, twice).
                    Bytes expected(got.size());
                    Frame sf = frameOver(src, s.w, s.h, true), tf = frameOver(expected, quarter ? s.h : s.w,
                                                                               quarter ? s.w : s.h, true);
                    if (quarter)
                        gRotate422Frame(&sf, &tf, method == "clockwise" ? ROTATE_90 : ROTATE_270);
                    else
                        gMirrorImageYUV(&sf, &tf, 1,
                                        method == "rotate-180"        ? MIRROR_BOTH
                                        : method == "vertical-flip" ? MIRROR_VERTICAL
                                                                      : MIRROR_HORIZONTAL,
                                        1);
                    EXPECT_TRUE(got == expected);
                }
            }
}

// A property set while playing that keeps the caps takes effect from the next
// frame, without new caps (passthrough going on and off included).
TEST(PixmillElements, PropertyChangesWhilePlaying)
{
    const GstVideoInfo i420 = infoOf(GST_VIDEO_FORMAT_I420, 18, 10), rgb = infoOf(GST_VIDEO_FORMAT_RGB16, 18, 10);
    const struct {
        const char *element, *property, *value;
        int matrix;
        Rotation rotation;
    } steps[] = {{"pixmillconvert", "matrix", "bt601", 601, ROTATE_NONE},
                 {"pixmillconvert", "matrix", "bt709", 709, ROTATE_NONE},
                 {"pixmillconvert", "rotation", "180", 709, ROTATE_180},
                 {"pixmillconvert", "matrix", "bt601", 601, ROTATE_180},
                 {"pixmillflip", "method", "none"},
                 {"pixmillflip", "method", "horizontal-flip"},
                 {"pixmillflip", "method", "vertical-flip"},
                 {"pixmillflip", "method", "none"},
                 {"pixmillflip", "method", "rotate-180"}};
    std::mt19937 rng(13);
    GstHarness *h = nullptr;
    std::string playing;
    for (const auto &step : steps) {
        const bool flip = std::string(step.element) == "pixmillflip";
        const GstVideoInfo &in = flip ? rgb : i420;
        if (playing != step.element) { // one harness for each element's steps
            if (h)
                gst_harness_teardown(h);
            h = gst_harness_new(step.element);
            gst_harness_set_caps(h, gst_video_info_to_caps(&in), gst_caps_from_string("video/x-raw,format=RGB16"));
            playing = step.element;
        }
        gst_util_set_object_arg(G_OBJECT(h->element), step.property, step.value);
        GstBuffer *buffer = randomBuffer(in, rng);
        const Bytes src = tightOf(buffer, in);
        GstBuffer *result = gst_harness_push_and_pull(h, buffer);
        ASSERT_NE(result, nullptr);
        const Bytes got = tightOf(result, rgb);
        if (flip)
            EXPECT_EQ(misplaced(src.data(), got.data(), 18, 10, 2, step.value), 0) << step.value;
        else
            EXPECT_TRUE(got == expectedConvert(GST_VIDEO_FORMAT_I420, GST_VIDEO_FORMAT_RGB16, 18, 10, step.matrix,
                                               step.rotation, src))
                << step.property << "=" << step.value;
        gst_buffer_unref(result);
    }
    gst_harness_teardown(h);
}

// Caps an element must refuse: pairs without an operation, and sizes the
// operation cannot take (with a bus error that says why).
TEST(PixmillElements, RefuseWhatTheLibraryCannotDo)
{
    std::mt19937 rng(7);
    const GstVideoFormat I420 = GST_VIDEO_FORMAT_I420, Y42B = GST_VIDEO_FORMAT_Y42B, RGB16 = GST_VIDEO_FORMAT_RGB16,
                         BGR = GST_VIDEO_FORMAT_BGR;
    const struct {
        const char *element;
        GstVideoFormat in, out;
        int w, h, ow, oh;
        const char *props, *why;
    } cases[] = {
        {"pixmillconvert", Y42B, GST_VIDEO_FORMAT_RGB, 18, 10, 18, 10, "", nullptr},
        {"pixmillconvert", RGB16, BGR, 18, 10, 18, 10, "", nullptr},
        {"pixmillconvert", I420, I420, 18, 10, 18, 10, "rotation=180", nullptr},
        {"pixmillconvert", I420, BGR, 17, 10, 17, 10, "", "gYUV420toBGR24 cannot take a 17x10"},
        {"pixmillconvert", I420, RGB16, 18, 9, 18, 9, "matrix=709", "gYUV420toRGB16Rotate cannot take"},
        {"pixmillconvert", GST_VIDEO_FORMAT_YUY2, I420, 18, 9, 18, 9, "", "needs even sizes"},
        {"pixmillconvert", Y42B, I420, 2, 2, 2, 2, "", "at least 4"},
        {"pixmillconvert", RGB16, I420, 17, 10, 17, 10, "", "gEmRGB565toYUV420"},
        {"pixmillscale", I420, I420, 18, 10, 17, 9, "", "I420 scaling needs even sizes"},
        {"pixmillscale", RGB16, RGB16, 4, 9000, 4, 4, "", "at most 8191"},
        {"pixmillflip", I420, I420, 17, 10, 10, 17, "method=clockwise", "needs an even width and height, not 17x10"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(std::string(c.element) + " " + name(c.in) + " -> " + name(c.out) + " " + c.props);
        const GstVideoInfo in = infoOf(c.in, c.w, c.h), out = infoOf(c.out, c.ow, c.oh);
        const Outcome run = runElement(c.element, c.props, in, out, randomBuffer(in, rng));
        EXPECT_FALSE(run.ran);
        EXPECT_TRUE(!c.why || run.error.find(c.why) != std::string::npos) << run.error;
    }
}

} // namespace

int main(int argc, char **argv)
{
    gst_init(&argc, &argv);
    gst_plugin_register_static(GST_VERSION_MAJOR, GST_VERSION_MINOR, "pixmill", "pixmill elements",
                               pixmill::gst::registerElements, "0", "unknown", "pixmill", "pixmill", "pixmill");
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
