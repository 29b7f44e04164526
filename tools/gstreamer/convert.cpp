// pixmillconvert: colour conversions between planar, packed and RGB formats,
// with the one-pass convert-and-turn to RGB16.
#include "common.h"

#include <algorithm>
#include <cstring>

GST_DEBUG_CATEGORY_STATIC(pixmill_convert_debug);
#define GST_CAT_DEFAULT pixmill_convert_debug

namespace pixmill::gst {
namespace {

const std::vector<GstVideoFormat> kSinkFormats = {
    GST_VIDEO_FORMAT_I420, GST_VIDEO_FORMAT_YV12,  GST_VIDEO_FORMAT_Y42B, GST_VIDEO_FORMAT_YUY2,
    GST_VIDEO_FORMAT_UYVY, GST_VIDEO_FORMAT_GRAY8, GST_VIDEO_FORMAT_RGB16, GST_VIDEO_FORMAT_BGR};
const std::vector<GstVideoFormat> kSrcFormats = {GST_VIDEO_FORMAT_I420, GST_VIDEO_FORMAT_RGB16, GST_VIDEO_FORMAT_RGB,
                                                 GST_VIDEO_FORMAT_BGR};

// How the input reaches the library: as a 4:2:0 or 4:2:2 Frame (grey with
// neutral chroma, packed 4:2:2 unpacked first), or as an RGB image that only
// goes to I420.
enum class Source { Yuv420, Gray, Yuv422, Yuy2, Uyvy, Rgb16, Bgr, Unknown };

Source sourceOf(GstVideoFormat f)
{
    switch (f) {
    case GST_VIDEO_FORMAT_I420:
    case GST_VIDEO_FORMAT_YV12:
        return Source::Yuv420;
    case GST_VIDEO_FORMAT_GRAY8:
        return Source::Gray;
    case GST_VIDEO_FORMAT_Y42B:
        return Source::Yuv422;
    case GST_VIDEO_FORMAT_YUY2:
        return Source::Yuy2;
    case GST_VIDEO_FORMAT_UYVY:
        return Source::Uyvy;
    case GST_VIDEO_FORMAT_RGB16:
        return Source::Rgb16;
    case GST_VIDEO_FORMAT_BGR:
        return Source::Bgr;
    default:
        return Source::Unknown;
    }
}

bool isPlanar(Source s) { return s != Source::Rgb16 && s != Source::Bgr && s != Source::Unknown; }

// The pairs the library has an operation (or a chain of two) for. A turn
// exists only on the way to RGB16.
bool pairSupported(GstVideoFormat in, GstVideoFormat out, int rotation)
{
    const Source s = sourceOf(in);
    if (rotation != 0)
        return out == GST_VIDEO_FORMAT_RGB16 && isPlanar(s);
    if (in == out)
        return true; // passthrough
    switch (out) {
    case GST_VIDEO_FORMAT_RGB16:
    case GST_VIDEO_FORMAT_BGR:
        return isPlanar(s);
    case GST_VIDEO_FORMAT_RGB: // only the 4:2:0 conversion writes R first
        return isPlanar(s) && s != Source::Yuv422;
    case GST_VIDEO_FORMAT_I420:
        return s != Source::Unknown;
    default:
        return false;
    }
}

enum { PROP_0, PROP_MATRIX, PROP_ROTATION };

GType matrixType()
{
    static const GEnumValue values[] = {
        {601, "BT.601 coefficients", "bt601"}, {709, "BT.709 coefficients", "bt709"}, {0, nullptr, nullptr}};
    static const GType type = g_enum_register_static("PixmillConvertMatrix", values);
    return type;
}

GType rotationType()
{
    static const GEnumValue values[] = {{ROTATE_NONE, "No turn", "0"},
                                        {ROTATE_90, "A quarter turn clockwise", "90"},
                                        {ROTATE_180, "A half turn", "180"},
                                        {ROTATE_270, "A quarter turn counter-clockwise", "270"},
                                        {0, nullptr, nullptr}};
    static const GType type = g_enum_register_static("PixmillConvertRotation", values);
    return type;
}

// The RGB16 operations and how each gives a top-down GStreamer frame.
enum class ToRgb16 {
    Dithered601, // gEmYUV420toRGB565TopDown, rows top-down
    Turn709,     // gYUV420toRGB16Rotate / gYUV422toRGB16Rotate, top-down, turns clockwise
    BottomUp601, // gYUV420toBGR565TopDown_Rotate / gYUV422HPlanartoBGR565TopDown_Rotate, then a mirror
};

// Scratch of one element: the input repacked, packed 4:2:2 unpacked, the
// bottom-up RGB16 before its mirror (or BGR's three planes), the output
// staged, and grey's neutral chroma.
struct Work {
    Scratch in, unpacked, mid, out, neutral;
};

} // namespace
} // namespace pixmill::gst

using namespace pixmill::gst;

struct PixmillConvert {
    GstVideoFilter parent;
    gint matrix;   // 601 or 709
    gint rotation; // a Rotation code
    // Set by set_info for the negotiated pair.
    gint planMatrix;
    Rotation turn;
    Source source;
    GstVideoFormat outFormat;
    ToRgb16 rgb16;
    bool loggedStaging;
    Work *work;
};
struct PixmillConvertClass {
    GstVideoFilterClass parent_class;
};

G_DEFINE_TYPE(PixmillConvert, pixmill_convert, GST_TYPE_VIDEO_FILTER)

#define PIXMILL_CONVERT(obj) (reinterpret_cast<PixmillConvert *>(obj))

namespace {

// Rows needed: even sizes where the operation works on 2x2 blocks or pixel
// pairs without a tail, and at least `minimum` in both directions.
struct SizeRule {
    int minimum;
    bool even;
    const char *operation;
};

SizeRule sizeRule(const PixmillConvert *self)
{
    const Source s = self->source;
    // Packed 4:2:2 is unpacked first, and that needs the most.
    if (s == Source::Yuy2)
        return {2, true, "gY1UY2VToYV12"};
    if (s == Source::Uyvy)
        return {2, true, "gUY1VY2ToYUV420"};
    switch (self->outFormat) {
    case GST_VIDEO_FORMAT_RGB16:
        if (self->rgb16 == ToRgb16::Dithered601)
            return {2, false, "gEmYUV420toRGB565TopDown"};
        if (s == Source::Yuv422)
            return {2, true, self->rgb16 == ToRgb16::Turn709 ? "gYUV422toRGB16Rotate"
                                                             : "gYUV422HPlanartoBGR565TopDown_Rotate"};
        return {2, true, self->rgb16 == ToRgb16::Turn709 ? "gYUV420toRGB16Rotate" : "gYUV420toBGR565TopDown_Rotate"};
    case GST_VIDEO_FORMAT_RGB:
        return {2, false, "gEmYUV420toRGB888TopDown"};
    case GST_VIDEO_FORMAT_BGR:
        if (s == Source::Yuv422)
            return {2, false, "gYUV422HPlanartoBGR888TopDown"};
        return {2, true, "gYUV420toBGR24"};
    default: // I420
        switch (s) {
        case Source::Gray:
            return {2, true, "gRotateMonochromeFrame"};
        case Source::Yuv422:
            return {4, true, "gYUV422toYUV420"};
        case Source::Rgb16:
            return {2, true, "gEmRGB565toYUV420"};
        case Source::Bgr:
            return {2, true, "gBGR24INTtoYUV420Planar"};
        default:
            return {2, true, "gRotateFrame"};
        }
    }
}

gboolean convertSetInfo(GstVideoFilter *filter, GstCaps *, GstVideoInfo *in, GstCaps *, GstVideoInfo *out)
{
    auto *self = PIXMILL_CONVERT(filter);
    GST_OBJECT_LOCK(self);
    const int matrix = self->matrix, rotation = self->rotation;
    GST_OBJECT_UNLOCK(self);
    const GstVideoFormat inFormat = GST_VIDEO_INFO_FORMAT(in), outFormat = GST_VIDEO_INFO_FORMAT(out);
    if (!pairSupported(inFormat, outFormat, rotation))
        return refuse(filter, std::string("no operation converts ") + gst_video_format_to_string(inFormat) + " to " +
                                  gst_video_format_to_string(outFormat) +
                                  (rotation ? " with a turn (turns are made on the way to RGB16)" : ""));
    self->source = sourceOf(inFormat);
    self->outFormat = outFormat;
    self->turn = static_cast<Rotation>(rotation);
    self->planMatrix = matrix;
    self->loggedStaging = false;
    self->rgb16 = matrix == 709 ? ToRgb16::Turn709
                  : rotation == ROTATE_NONE && self->source != Source::Yuv422 ? ToRgb16::Dithered601
                                                                              : ToRgb16::BottomUp601;
    const int w = GST_VIDEO_INFO_WIDTH(in), h = GST_VIDEO_INFO_HEIGHT(in);
    const bool quarter = rotation == ROTATE_90 || rotation == ROTATE_270;
    if (GST_VIDEO_INFO_WIDTH(out) != (quarter ? h : w) || GST_VIDEO_INFO_HEIGHT(out) != (quarter ? w : h))
        return refuse(filter, "the output size " + sizeText(GST_VIDEO_INFO_WIDTH(out), GST_VIDEO_INFO_HEIGHT(out)) +
                                  " is not the input's " + sizeText(w, h) + (quarter ? " turned" : ""));
    if (inFormat == outFormat) {
        gst_base_transform_set_passthrough(GST_BASE_TRANSFORM(filter), TRUE);
        return TRUE;
    }
    gst_base_transform_set_passthrough(GST_BASE_TRANSFORM(filter), FALSE);
    const SizeRule rule = sizeRule(self);
    if (w < rule.minimum || h < rule.minimum || (rule.even && (w % 2 || h % 2)))
        return refuse(filter, std::string(rule.operation) + " cannot take a " + sizeText(w, h) + " " +
                                  gst_video_format_to_string(inFormat) + " frame: it needs " +
                                  (rule.even ? "even sizes" : "sizes") + " of at least " +
                                  std::to_string(rule.minimum));
    if (matrix == 709 && outFormat != GST_VIDEO_FORMAT_RGB16)
        GST_INFO_OBJECT(self, "%s has one colour set only; matrix=bt709 applies to RGB16 output", rule.operation);
    // Scratch for every stage this pair may need, sized once per caps.
    Work &work = *self->work;
    const int ow = GST_VIDEO_INFO_WIDTH(out), oh = GST_VIDEO_INFO_HEIGHT(out);
    const Layout frame = Layout::yuv420(w, h);
    work.in.resize(layoutOf(inFormat, w, h).bytes());
    work.unpacked.resize(frame.bytes());
    work.mid.resize(std::max(frame.bytes(), Layout::packed(ow, oh, 2).bytes()));
    work.out.resize(layoutOf(outFormat, ow, oh).bytes());
    if (self->source == Source::Gray)
        work.neutral.assign(frame.plane[1].bytes(), 128);
    GST_DEBUG_OBJECT(self, "%s -> %s %dx%d through %s", gst_video_format_to_string(inFormat),
                     gst_video_format_to_string(outFormat), w, h, rule.operation);
    return TRUE;
}

// The input as a library Frame. Packed 4:2:2 is unpacked by the library, into
// `target` when the caller passes the output's planes, else into scratch.
bool frameOf(PixmillConvert *self, GstVideoFrame *in, const Planes *target, Frame &frame)
{
    Work &work = *self->work;
    const int w = GST_VIDEO_FRAME_WIDTH(in), h = GST_VIDEO_FRAME_HEIGHT(in);
    const auto uw = static_cast<uint32_t>(w), uh = static_cast<uint32_t>(h);
    Planes planes;
    bool staged = false;
    switch (self->source) {
    case Source::Yuv420:
        staged = readTight(in, Layout::yuv420(w, h), work.in, planes);
        break;
    case Source::Yuv422:
        staged = readTight(in, Layout::yuv422(w, h), work.in, planes);
        break;
    case Source::Gray:
        staged = readTight(in, Layout::packed(w, h, 1), work.in, planes);
        planes.p[1] = planes.p[2] = work.neutral.data();
        break;
    case Source::Yuy2:
    case Source::Uyvy: {
        Planes packed;
        staged = readTight(in, Layout::packed(w, h, 2), work.in, packed);
        planes = target ? *target : carve(Layout::yuv420(w, h), work.unpacked);
        frame = planes.frame(w, h);
        if (self->source == Source::Yuy2)
            gY1UY2VToYV12(packed.p[0], &frame, uw, uh); // byte 1 is U
        else
            gUY1VY2ToYUV420(packed.p[0], &frame, uw, uh);
        break;
    }
    default:
        break;
    }
    noteStaging(GST_CAT_DEFAULT, &self->parent, self->loggedStaging, staged);
    frame = planes.frame(w, h);
    return true;
}

// RGB16 from a Frame, turned by the rotation property, rows top-down.
int32_t toRgb16(PixmillConvert *self, const Frame &f, uint16_t *dst, int ow, int oh, Rotation rotation)
{
    const int w = f.width, h = f.height;
    const bool is422 = self->source == Source::Yuv422;
    switch (self->rgb16) {
    case ToRgb16::Dithered601:
        gEmYUV420toRGB565TopDown(&f, dst, w, h, 1);
        return 0;
    case ToRgb16::Turn709:
        return is422 ? gYUV422toRGB16Rotate(&f, dst, ow, oh, 0, 0, 0, 0, w, h, rotation)
                     : gYUV420toRGB16Rotate(&f, dst, ow, oh, 0, 0, 0, 0, w, h, rotation);
    case ToRgb16::BottomUp601:
        break;
    }
    // These two write rows bottom-up: in memory their codes are a vertical
    // flip (NONE), a horizontal flip (180) and a transposition (90). A mirror
    // of the library turns each into the top-down image that was asked for.
    Rotation code = ROTATE_NONE;
    uint32_t mirror = MIRROR_VERTICAL;
    switch (rotation) {
    case ROTATE_90:
        code = ROTATE_90;
        mirror = MIRROR_HORIZONTAL;
        break;
    case ROTATE_180:
        code = ROTATE_180;
        break;
    case ROTATE_270:
        code = ROTATE_90;
        break;
    default:
        break;
    }
    uint16_t *mid = carve(Layout::packed(ow, oh, 2), self->work->mid).words();
    const auto u = [](int v) { return static_cast<uint16_t>(v); };
    // The 4:2:2 form takes the target's size before the turn, the 4:2:0 form
    // the surface as it lies in memory.
    const int32_t ran = is422 ? gYUV422HPlanartoBGR565TopDown_Rotate(&f, mid, 0, 0, u(w), u(h), 0, 0, u(w), u(h), code)
                              : gYUV420toBGR565TopDown_Rotate(&f, mid, 0, 0, u(w), u(h), 0, 0, u(ow), u(oh), code);
    if (ran != 0)
        return ran;
    return gMirrorImageRGB565(mid, dst, ow, oh, mirror);
}

// Into I420 from every source: `dst` are the output planes.
void toI420(PixmillConvert *self, GstVideoFrame *in, Planes &dst)
{
    Work &work = *self->work;
    const int w = GST_VIDEO_FRAME_WIDTH(in), h = GST_VIDEO_FRAME_HEIGHT(in);
    const auto uw = static_cast<uint32_t>(w), uh = static_cast<uint32_t>(h);
    Frame target = dst.frame(w, h);
    const FramePlanes src(in);
    switch (self->source) {
    case Source::Rgb16: {
        // The operation puts image row 0 on the frame's last row: hand it the
        // rows in reverse so that the frame comes out upright.
        const int rowBytes = 2 * w;
        Planes reversed = carve(Layout::packed(w, h, 2), work.in);
        copyRows(reversed.p[0], rowBytes, src.p[0] + static_cast<ptrdiff_t>(h - 1) * src.stride[0], -src.stride[0],
                 rowBytes, h);
        gEmRGB565toYUV420(reversed.words(), &target, uw, uh);
        return;
    }
    case Source::Bgr: {
        // One buffer of three adjoining planes: the output's own when it is
        // laid out so, else scratch split into planes afterwards.
        const Layout l = Layout::yuv420(w, h);
        const size_t ysize = l.plane[0].bytes(), csize = l.plane[1].bytes();
        const bool adjoining = dst.p[1] == dst.p[0] + ysize && dst.p[2] == dst.p[1] + csize;
        uint8_t *buffer = adjoining ? dst.p[0] : carve(l, work.mid).p[0];
        gBGR24INTtoYUV420Planar(src.p[0], buffer, uw, uh, src.stride[0]);
        if (!adjoining) {
            std::memcpy(dst.p[0], buffer, ysize);
            std::memcpy(dst.p[1], buffer + ysize, csize);
            std::memcpy(dst.p[2], buffer + ysize + csize, csize);
        }
        return;
    }
    case Source::Yuy2:
    case Source::Uyvy:
        frameOf(self, in, &dst, target); // unpacks straight into the output
        return;
    default:
        break;
    }
    Frame f{};
    frameOf(self, in, nullptr, f);
    if (self->source == Source::Yuv422) {
        gYUV422toYUV420(&f, &target, 0, 0, static_cast<uint16_t>(w), static_cast<uint16_t>(h));
    } else if (self->source == Source::Gray) {
        gRotateMonochromeFrame(&f, &target, ROTATE_NONE); // a copy of the luma
        const Layout l = Layout::yuv420(w, h);
        std::memset(dst.p[1], 128, l.plane[1].bytes());
        std::memset(dst.p[2], 128, l.plane[2].bytes());
    } else {
        gRotateFrame(&f, &target, ROTATE_NONE); // YV12: planes found by component
    }
}

// A matrix or rotation set while playing that keeps the output size needs no
// new caps, so no set_info comes: plan again here.
gboolean replanIfChanged(PixmillConvert *self)
{
    GST_OBJECT_LOCK(self);
    const int matrix = self->matrix, rotation = self->rotation;
    GST_OBJECT_UNLOCK(self);
    const bool quarter = rotation % 2 != 0, wasQuarter = self->turn % 2 != 0;
    if ((matrix == self->planMatrix && rotation == static_cast<int>(self->turn)) || quarter != wasQuarter)
        return TRUE; // unchanged, or waiting for the renegotiation that the new size needs
    GstVideoFilter *filter = &self->parent;
    return convertSetInfo(filter, nullptr, &filter->in_info, nullptr, &filter->out_info);
}

GstFlowReturn convertFrame(GstVideoFilter *filter, GstVideoFrame *in, GstVideoFrame *out)
{
    auto *self = PIXMILL_CONVERT(filter);
    if (!replanIfChanged(self))
        return GST_FLOW_NOT_NEGOTIATED;
    Work &work = *self->work;
    const int w = GST_VIDEO_FRAME_WIDTH(in), h = GST_VIDEO_FRAME_HEIGHT(in);
    const int ow = GST_VIDEO_FRAME_WIDTH(out), oh = GST_VIDEO_FRAME_HEIGHT(out);

    if (self->outFormat == GST_VIDEO_FORMAT_BGR && self->source != Source::Yuv422) {
        // gYUV420toBGR24 takes the row stride: it writes the frame directly.
        Frame f{};
        frameOf(self, in, nullptr, f);
        const FramePlanes dst(out);
        if (gYUV420toBGR24(&f, dst.p[0], dst.stride[0]) != 0) {
            GST_ELEMENT_ERROR(self, STREAM, FAILED, ("gYUV420toBGR24 refused the frame"), (nullptr));
            return GST_FLOW_ERROR;
        }
        return GST_FLOW_OK;
    }

    const Layout layout = layoutOf(self->outFormat, ow, oh);
    Planes dst;
    const bool staged = writeTarget(out, layout, work.out, dst);
    int32_t ran = 0;
    switch (self->outFormat) {
    case GST_VIDEO_FORMAT_I420:
        toI420(self, in, dst);
        break;
    case GST_VIDEO_FORMAT_RGB16: {
        Frame f{};
        frameOf(self, in, nullptr, f);
        ran = toRgb16(self, f, dst.words(), ow, oh, self->turn); // the turn the caps were made for
        break;
    }
    case GST_VIDEO_FORMAT_RGB: {
        Frame f{};
        frameOf(self, in, nullptr, f);
        gEmYUV420toRGB888TopDown(&f, dst.p[0], w, h, 1);
        break;
    }
    default: { // BGR from 4:2:2
        Frame f{};
        frameOf(self, in, nullptr, f);
        gYUV422HPlanartoBGR888TopDown(&f, dst.p[0], w, h, 1);
        break;
    }
    }
    if (ran != 0) {
        GST_ELEMENT_ERROR(self, STREAM, FAILED, ("the RGB16 conversion refused the frame"), (nullptr));
        return GST_FLOW_ERROR;
    }
    writeBack(out, layout, dst);
    noteStaging(GST_CAT_DEFAULT, &self->parent, self->loggedStaging, staged);
    return GST_FLOW_OK;
}

// Formats a structure's "format" field allows: one, a list, or (absent) all.
std::vector<GstVideoFormat> formatsIn(const GstStructure *s, const std::vector<GstVideoFormat> &all)
{
    const GValue *v = gst_structure_get_value(s, "format");
    if (!v)
        return all;
    std::vector<GstVideoFormat> found;
    const auto add = [&found](const GValue *one) {
        if (G_VALUE_HOLDS_STRING(one))
            found.push_back(gst_video_format_from_string(g_value_get_string(one)));
    };
    if (GST_VALUE_HOLDS_LIST(v)) {
        for (guint i = 0; i < gst_value_list_get_size(v); ++i)
            add(gst_value_list_get_value(v, i));
    } else {
        add(v);
    }
    return found;
}

GstCaps *convertTransformCaps(GstBaseTransform *trans, GstPadDirection direction, GstCaps *caps, GstCaps *filter)
{
    auto *self = PIXMILL_CONVERT(trans);
    GST_OBJECT_LOCK(self);
    const int rotation = self->rotation;
    GST_OBJECT_UNLOCK(self);
    const bool toSrc = direction == GST_PAD_SINK;
    const auto &mine = toSrc ? kSinkFormats : kSrcFormats;
    const auto &other = toSrc ? kSrcFormats : kSinkFormats;
    GstCaps *result = gst_caps_new_empty();
    for (guint i = 0; i < gst_caps_get_size(caps); ++i) {
        const GstStructure *s = gst_caps_get_structure(caps, i);
        std::vector<GstVideoFormat> reachable;
        for (GstVideoFormat o : other)
            for (GstVideoFormat f : formatsIn(s, mine))
                if (toSrc ? pairSupported(f, o, rotation) : pairSupported(o, f, rotation)) {
                    reachable.push_back(o);
                    break;
                }
        if (reachable.empty())
            continue;
        GstCaps *one = gst_caps_new_full(gst_structure_copy(s), nullptr);
        GstCaps *mapped = withFormats(one, reachable, false);
        gst_caps_unref(one);
        if (rotation == ROTATE_90 || rotation == ROTATE_270)
            for (guint k = 0; k < gst_caps_get_size(mapped); ++k)
                swapSize(gst_caps_get_structure(mapped, k));
        gst_caps_append(result, mapped);
    }
    result = limitTo(filter, result);
    GST_LOG_OBJECT(self, "%" GST_PTR_FORMAT " -> %" GST_PTR_FORMAT, caps, result);
    return result;
}

// Keeps the input format when the other side allows it (passthrough).
GstCaps *convertFixateCaps(GstBaseTransform *, GstPadDirection, GstCaps *caps, GstCaps *othercaps)
{
    const char *format = gst_structure_get_string(gst_caps_get_structure(caps, 0), "format");
    if (format) {
        GstCaps *same = gst_caps_new_simple("video/x-raw", "format", G_TYPE_STRING, format, nullptr);
        GstCaps *kept = gst_caps_intersect(othercaps, same);
        gst_caps_unref(same);
        if (!gst_caps_is_empty(kept)) {
            gst_caps_unref(othercaps);
            othercaps = kept;
        } else {
            gst_caps_unref(kept);
        }
    }
    return gst_caps_fixate(othercaps);
}

void convertSetProperty(GObject *object, guint id, const GValue *value, GParamSpec *pspec)
{
    auto *self = PIXMILL_CONVERT(object);
    if (id == PROP_MATRIX)
        storeProperty(&self->parent, self->matrix, value);
    else if (id == PROP_ROTATION)
        storeProperty(&self->parent, self->rotation, value);
    else
        G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, pspec);
    gst_base_transform_reconfigure_src(GST_BASE_TRANSFORM(object));
}

void convertGetProperty(GObject *object, guint id, GValue *value, GParamSpec *pspec)
{
    auto *self = PIXMILL_CONVERT(object);
    if (id == PROP_MATRIX)
        loadProperty(&self->parent, self->matrix, value);
    else if (id == PROP_ROTATION)
        loadProperty(&self->parent, self->rotation, value);
    else
        G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, pspec);
}

void convertFinalize(GObject *object)
{
    delete PIXMILL_CONVERT(object)->work;
    G_OBJECT_CLASS(pixmill_convert_parent_class)->finalize(object);
}

} // namespace

static void pixmill_convert_class_init(PixmillConvertClass *klass)
{
    auto *object = G_OBJECT_CLASS(klass);
    auto *trans = GST_BASE_TRANSFORM_CLASS(klass);
    auto *filter = GST_VIDEO_FILTER_CLASS(klass);
    object->set_property = convertSetProperty;
    object->get_property = convertGetProperty;
    object->finalize = convertFinalize;
    const auto flags = static_cast<GParamFlags>(G_PARAM_READWRITE | G_PARAM_STATIC_STRINGS |
                                                GST_PARAM_MUTABLE_PLAYING);
    g_object_class_install_property(
        object, PROP_MATRIX,
        g_param_spec_enum("matrix", "Matrix",
                          "Colour set of the conversions to RGB16 (the others have one set each: RGB and 4:2:2 to BGR "
                          "are BT.601, 4:2:0 to BGR is BT.709)",
                          matrixType(), 601, flags));
    g_object_class_install_property(
        object, PROP_ROTATION,
        g_param_spec_enum("rotation", "Rotation", "Turn applied in the same pass as the conversion to RGB16",
                          rotationType(), ROTATE_NONE, flags));
    setUpClass(filter, kSinkFormats, kSrcFormats,
               {"pixmill colour converter", "Filter/Converter/Video",
                "Converts YUV to RGB16, RGB and BGR (turning RGB16 in the same pass), and packed YUV, RGB16 and BGR "
                "to I420, with the pixmill library"},
               convertSetInfo, convertFrame);
    trans->transform_caps = convertTransformCaps;
    trans->fixate_caps = convertFixateCaps;
    trans->passthrough_on_same_caps = TRUE;
    GST_DEBUG_CATEGORY_INIT(pixmill_convert_debug, "pixmillconvert", 0, "pixmill colour converter");
}

static void pixmill_convert_init(PixmillConvert *self)
{
    self->matrix = 601;
    self->rotation = ROTATE_NONE;
    self->turn = ROTATE_NONE;
    self->planMatrix = 601;
    self->source = Source::Unknown;
    self->outFormat = GST_VIDEO_FORMAT_UNKNOWN;
    self->rgb16 = ToRgb16::Dithered601;
    self->loggedStaging = false;
    self->work = new Work;
}

gboolean pixmill::gst::registerConvert(GstPlugin *plugin)
{
    return gst_element_register(plugin, "pixmillconvert", GST_RANK_NONE, pixmill_convert_get_type());
}
