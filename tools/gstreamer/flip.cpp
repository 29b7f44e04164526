// pixmillflip: quarter and half turns and mirrors of planar frames and RGB16
// images, with the method names of videoflip.
#include "common.h"

GST_DEBUG_CATEGORY_STATIC(pixmill_flip_debug);
#define GST_CAT_DEFAULT pixmill_flip_debug

namespace pixmill::gst {
namespace {

const std::vector<GstVideoFormat> kFormats = {GST_VIDEO_FORMAT_I420, GST_VIDEO_FORMAT_Y42B, GST_VIDEO_FORMAT_GRAY8,
                                              GST_VIDEO_FORMAT_RGB16};

enum Method { NONE, CLOCKWISE, ROTATE_180_METHOD, COUNTERCLOCKWISE, HORIZONTAL, VERTICAL };

GType methodType()
{
    static const GEnumValue values[] = {{NONE, "Identity (no turn)", "none"},
                                        {CLOCKWISE, "Rotate clockwise 90 degrees", "clockwise"},
                                        {ROTATE_180_METHOD, "Rotate 180 degrees (flip both ways)", "rotate-180"},
                                        {COUNTERCLOCKWISE, "Rotate counter-clockwise 90 degrees", "counterclockwise"},
                                        {HORIZONTAL, "Flip horizontally", "horizontal-flip"},
                                        {VERTICAL, "Flip vertically", "vertical-flip"},
                                        {0, nullptr, nullptr}};
    static const GType type = g_enum_register_static("PixmillFlipMethod", values);
    return type;
}

bool quarterTurn(int method) { return method == CLOCKWISE || method == COUNTERCLOCKWISE; }

// The mirror mode of the library for the methods that keep the size.
uint32_t mirrorMode(int method)
{
    return method == VERTICAL ? MIRROR_VERTICAL : method == ROTATE_180_METHOD ? MIRROR_BOTH : MIRROR_HORIZONTAL;
}

struct Work {
    Scratch in, out, chroma;
};

enum { PROP_0, PROP_METHOD };

} // namespace
} // namespace pixmill::gst

using namespace pixmill::gst;

struct PixmillFlip {
    GstVideoFilter parent;
    gint method;  // the property
    gint active;  // the method the negotiated caps were made for
    GstVideoFormat format;
    bool loggedStaging;
    Work *work;
};
struct PixmillFlipClass {
    GstVideoFilterClass parent_class;
};

G_DEFINE_TYPE(PixmillFlip, pixmill_flip, GST_TYPE_VIDEO_FILTER)

#define PIXMILL_FLIP(obj) (reinterpret_cast<PixmillFlip *>(obj))

namespace {

gboolean flipSetInfo(GstVideoFilter *filter, GstCaps *, GstVideoInfo *in, GstCaps *, GstVideoInfo *out)
{
    auto *self = PIXMILL_FLIP(filter);
    GST_OBJECT_LOCK(self);
    const int method = self->method;
    GST_OBJECT_UNLOCK(self);
    const int w = GST_VIDEO_INFO_WIDTH(in), h = GST_VIDEO_INFO_HEIGHT(in);
    const bool quarter = quarterTurn(method);
    self->active = method;
    self->format = GST_VIDEO_INFO_FORMAT(in);
    self->loggedStaging = false;
    if (GST_VIDEO_INFO_WIDTH(out) != (quarter ? h : w) || GST_VIDEO_INFO_HEIGHT(out) != (quarter ? w : h))
        return refuse(filter, "the output size " + sizeText(GST_VIDEO_INFO_WIDTH(out), GST_VIDEO_INFO_HEIGHT(out)) +
                                  " is not the input's " + sizeText(w, h) + (quarter ? " turned" : ""));
    gst_base_transform_set_passthrough(GST_BASE_TRANSFORM(filter), method == NONE);
    if (method == NONE)
        return TRUE;
    // Quarter turns of every planar frame need even sizes; a mirror of a
    // frame with chroma needs whole chroma columns (and rows for 4:2:0).
    const char *format = gst_video_format_to_string(self->format);
    bool evenW = false, evenH = false;
    if (self->format == GST_VIDEO_FORMAT_I420)
        evenW = evenH = true;
    else if (self->format == GST_VIDEO_FORMAT_Y42B)
        evenW = true, evenH = quarter;
    else if (self->format == GST_VIDEO_FORMAT_GRAY8)
        evenW = evenH = quarter;
    if ((evenW && w % 2) || (evenH && h % 2))
        return refuse(filter, std::string(quarter ? "a quarter turn" : "a mirror") + " of " + format + " needs an even " +
                                  (evenW && evenH ? "width and height" : "width") + ", not " + sizeText(w, h));
    Work &work = *self->work; // for frames that need repacking
    work.in.resize(layoutOf(self->format, w, h).bytes());
    work.out.resize(layoutOf(self->format, GST_VIDEO_INFO_WIDTH(out), GST_VIDEO_INFO_HEIGHT(out)).bytes());
    if (self->format == GST_VIDEO_FORMAT_GRAY8 && !quarter)
        work.chroma.assign(4 * Layout::yuv420(w, h).plane[1].bytes(), 128);
    return TRUE;
}

GstFlowReturn flipFrame(GstVideoFilter *filter, GstVideoFrame *in, GstVideoFrame *out)
{
    auto *self = PIXMILL_FLIP(filter);
    // A method set while playing that keeps the output size needs no new
    // caps, so no set_info comes: plan again here.
    GST_OBJECT_LOCK(self);
    const int wanted = self->method;
    GST_OBJECT_UNLOCK(self);
    if (wanted != self->active && quarterTurn(wanted) == quarterTurn(self->active)) {
        if (!flipSetInfo(filter, nullptr, &filter->in_info, nullptr, &filter->out_info))
            return GST_FLOW_NOT_NEGOTIATED;
        if (wanted == NONE) // passthrough from the next frame on
            return gst_video_frame_copy(out, in) ? GST_FLOW_OK : GST_FLOW_ERROR;
    }
    Work &work = *self->work;
    const int method = self->active;
    const int w = GST_VIDEO_FRAME_WIDTH(in), h = GST_VIDEO_FRAME_HEIGHT(in);
    const int ow = GST_VIDEO_FRAME_WIDTH(out), oh = GST_VIDEO_FRAME_HEIGHT(out);
    const Layout inLayout = layoutOf(self->format, w, h), outLayout = layoutOf(self->format, ow, oh);
    Planes src, dst;
    bool staged = readTight(in, inLayout, work.in, src);
    staged = writeTarget(out, outLayout, work.out, dst) || staged;
    const Rotation code = method == CLOCKWISE ? ROTATE_90 : ROTATE_270;
    int32_t ran = 0;
    if (self->format == GST_VIDEO_FORMAT_RGB16) {
        ran = quarterTurn(method) ? gRotateRGB16(src.words(), dst.words(), w, h, 0, 0, w, h, 0, 0, ow, oh, code)
                                  : gMirrorImageRGB565(src.words(), dst.words(), w, h, mirrorMode(method));
    } else {
        Frame s = src.frame(w, h), t = dst.frame(ow, oh);
        if (self->format == GST_VIDEO_FORMAT_GRAY8 && !quarterTurn(method)) {
            // The mirror flips chroma too: give it neutral planes of its own.
            const size_t c = Layout::yuv420(w, h).plane[1].bytes();
            uint8_t *chroma = work.chroma.data();
            s.u = chroma, s.v = chroma + c, t.u = chroma + 2 * c, t.v = chroma + 3 * c;
        }
        const int32_t layout = self->format == GST_VIDEO_FORMAT_Y42B ? 1 : 0;
        if (!quarterTurn(method))
            ran = gMirrorImageYUV(&s, &t, layout, mirrorMode(method), 1);
        else if (self->format == GST_VIDEO_FORMAT_I420)
            gRotateFrame(&s, &t, code);
        else if (self->format == GST_VIDEO_FORMAT_Y42B)
            gRotate422Frame(&s, &t, code);
        else
            gRotateMonochromeFrame(&s, &t, code);
    }
    if (ran != 0) {
        GST_ELEMENT_ERROR(self, STREAM, FAILED, ("the library refused the %dx%d frame", w, h), (nullptr));
        return GST_FLOW_ERROR;
    }
    writeBack(out, outLayout, dst);
    noteStaging(GST_CAT_DEFAULT, filter, self->loggedStaging, staged);
    return GST_FLOW_OK;
}

GstCaps *flipTransformCaps(GstBaseTransform *trans, GstPadDirection, GstCaps *caps, GstCaps *filter)
{
    auto *self = PIXMILL_FLIP(trans);
    GST_OBJECT_LOCK(self);
    const int method = self->method;
    GST_OBJECT_UNLOCK(self);
    GstCaps *result = gst_caps_copy(caps);
    if (quarterTurn(method))
        for (guint i = 0; i < gst_caps_get_size(result); ++i)
            swapSize(gst_caps_get_structure(result, i));
    return limitTo(filter, result);
}

void flipSetProperty(GObject *object, guint id, const GValue *value, GParamSpec *pspec)
{
    auto *self = PIXMILL_FLIP(object);
    if (id == PROP_METHOD)
        storeProperty(&self->parent, self->method, value);
    else
        G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, pspec);
    // Between methods that keep the size the caps stay as they are: only
    // passthrough goes on or off, and flipFrame takes the new method.
    if (!quarterTurn(self->method) && !quarterTurn(self->active))
        gst_base_transform_set_passthrough(GST_BASE_TRANSFORM(object), self->method == NONE);
    gst_base_transform_reconfigure_src(GST_BASE_TRANSFORM(object));
}

void flipGetProperty(GObject *object, guint id, GValue *value, GParamSpec *pspec)
{
    auto *self = PIXMILL_FLIP(object);
    if (id == PROP_METHOD)
        loadProperty(&self->parent, self->method, value);
    else
        G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, pspec);
}

void flipFinalize(GObject *object)
{
    delete PIXMILL_FLIP(object)->work;
    G_OBJECT_CLASS(pixmill_flip_parent_class)->finalize(object);
}

} // namespace

static void pixmill_flip_class_init(PixmillFlipClass *klass)
{
    auto *object = G_OBJECT_CLASS(klass);
    auto *trans = GST_BASE_TRANSFORM_CLASS(klass);
    auto *filter = GST_VIDEO_FILTER_CLASS(klass);
    object->set_property = flipSetProperty;
    object->get_property = flipGetProperty;
    object->finalize = flipFinalize;
    g_object_class_install_property(
        object, PROP_METHOD,
        g_param_spec_enum("method", "Method", "Turn or mirror, named as videoflip names them", methodType(), NONE,
                          static_cast<GParamFlags>(G_PARAM_READWRITE | G_PARAM_STATIC_STRINGS |
                                                   GST_PARAM_MUTABLE_PLAYING)));
    setUpClass(filter, kFormats, kFormats,
               {"pixmill flipper", "Filter/Effect/Video",
                "Turns and mirrors I420, Y42B, GRAY8 and RGB16 frames with the pixmill library"},
               flipSetInfo, flipFrame);
    trans->transform_caps = flipTransformCaps;
    GST_DEBUG_CATEGORY_INIT(pixmill_flip_debug, "pixmillflip", 0, "pixmill flipper");
}

static void pixmill_flip_init(PixmillFlip *self)
{
    self->method = NONE;
    self->active = NONE;
    self->format = GST_VIDEO_FORMAT_UNKNOWN;
    self->loggedStaging = false;
    self->work = new Work;
}

gboolean pixmill::gst::registerFlip(GstPlugin *plugin)
{
    return gst_element_register(plugin, "pixmillflip", GST_RANK_NONE, pixmill_flip_get_type());
}
