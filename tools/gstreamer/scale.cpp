// pixmillscale: bilinear scaling at any ratio, and the fixed 2:1, 1:2, 1:4
// and 4:3 kernels when the ratio is exactly one of them.
#include "common.h"

#include <cmath>

GST_DEBUG_CATEGORY_STATIC(pixmill_scale_debug);
#define GST_CAT_DEFAULT pixmill_scale_debug

namespace pixmill::gst {
namespace {

const std::vector<GstVideoFormat> kFormats = {GST_VIDEO_FORMAT_I420, GST_VIDEO_FORMAT_Y42B, GST_VIDEO_FORMAT_GRAY8,
                                              GST_VIDEO_FORMAT_RGB16};

enum class Kernel { Bilinear, Down2, Up2, Up4, Down4to3 };

const char *kernelName(Kernel k, GstVideoFormat f)
{
    switch (k) {
    case Kernel::Down2:
        return "gScaleCroppedFrame_downby2";
    case Kernel::Up2:
        return "gScaleCroppedFrame_upby2";
    case Kernel::Up4:
        return "gScaleCroppedFrame_upby4";
    case Kernel::Down4to3:
        return "gScaleCroppedFrame_downto3by3";
    default:
        return f == GST_VIDEO_FORMAT_RGB16  ? "gScaleRGB565Frame"
               : f == GST_VIDEO_FORMAT_Y42B ? "gScaleCroppedFrameYUV422"
                                            : "gScaleFrame";
    }
}

// The fixed kernel for an exact ratio whose sizes fit it in all planes.
Kernel fixedKernel(int iw, int ih, int ow, int oh)
{
    if (iw == 2 * ow && ih == 2 * oh && ow % 4 == 0 && oh >= 2)
        return Kernel::Down2;
    if (ow == 2 * iw && oh == 2 * ih && iw % 2 == 0 && ih % 2 == 0)
        return Kernel::Up2;
    if (ow == 4 * iw && oh == 4 * ih && ow % 8 == 0 && oh % 8 == 0 && ow >= 16 && oh >= 16)
        return Kernel::Up4;
    if (4 * ow == 3 * iw && 4 * oh == 3 * ih && ow % 6 == 0 && oh % 6 == 0)
        return Kernel::Down4to3;
    return Kernel::Bilinear;
}

// The bilinear plane scaler reaches its taps through a span of at most 8191
// tap distances per axis.
bool spanFits(int extent, int target)
{
    if (extent < 1 || target < 1)
        return true; // an empty chroma extent: that plane is not written
    const int ratio = extent / target;
    const int shift = ratio <= 2 ? 0 : ratio <= 4 ? 1 : ratio <= 8 ? 2 : ratio <= 16 ? 3 : 4;
    return ((extent - 1) >> shift) < 8192;
}

struct Work {
    Scratch in, out;
};

enum { PROP_0, PROP_FIXED_KERNELS };

} // namespace
} // namespace pixmill::gst

using namespace pixmill::gst;

struct PixmillScale {
    GstVideoFilter parent;
    gboolean fixedKernels;
    Kernel kernel;
    GstVideoFormat format;
    bool loggedStaging;
    Work *work;
};
struct PixmillScaleClass {
    GstVideoFilterClass parent_class;
};

G_DEFINE_TYPE(PixmillScale, pixmill_scale, GST_TYPE_VIDEO_FILTER)

#define PIXMILL_SCALE(obj) (reinterpret_cast<PixmillScale *>(obj))

namespace {

// Why the library cannot scale iw x ih to ow x oh in this format, or "".
std::string sizeProblem(GstVideoFormat f, int iw, int ih, int ow, int oh, bool bilinear)
{
    const std::string pair = sizeText(iw, ih) + " to " + sizeText(ow, oh);
    switch (f) {
    case GST_VIDEO_FORMAT_I420:
        if (iw % 2 || ih % 2 || ow % 2 || oh % 2 || iw < 2 || ih < 2)
            return "I420 scaling needs even sizes of at least 2, not " + pair;
        break;
    case GST_VIDEO_FORMAT_Y42B:
        if (iw % 2 || ow % 2 || iw < 2)
            return "Y42B scaling needs even widths of at least 2, not " + pair;
        break;
    case GST_VIDEO_FORMAT_RGB16:
        if (ih < 2 || ow < 2 || oh < 2)
            return "RGB16 scaling needs a source at least 2 high and a target of at least 2x2, not " + pair;
        if (iw > 8191 || ih > 8191)
            return "RGB16 scaling reads at most 8191 pixels across and down, not " + pair;
        return "";
    default:
        break;
    }
    if (!bilinear)
        return "";
    const int cv = f == GST_VIDEO_FORMAT_I420 ? 1 : 0;
    bool fits = spanFits(iw, ow) && spanFits(ih, oh);
    if (f != GST_VIDEO_FORMAT_GRAY8)
        fits = fits && spanFits(iw >> 1, ow >> 1) && spanFits(ih >> cv, oh >> cv);
    if (!fits)
        return "the bilinear scaler spans at most 8191 taps per axis; " + pair + " is too far";
    return "";
}

gboolean scaleSetInfo(GstVideoFilter *filter, GstCaps *, GstVideoInfo *in, GstCaps *, GstVideoInfo *out)
{
    auto *self = PIXMILL_SCALE(filter);
    const int iw = GST_VIDEO_INFO_WIDTH(in), ih = GST_VIDEO_INFO_HEIGHT(in);
    const int ow = GST_VIDEO_INFO_WIDTH(out), oh = GST_VIDEO_INFO_HEIGHT(out);
    self->format = GST_VIDEO_INFO_FORMAT(in);
    self->loggedStaging = false;
    if (iw == ow && ih == oh) {
        gst_base_transform_set_passthrough(GST_BASE_TRANSFORM(filter), TRUE);
        return TRUE;
    }
    gst_base_transform_set_passthrough(GST_BASE_TRANSFORM(filter), FALSE);
    GST_OBJECT_LOCK(self);
    const bool fixed = self->fixedKernels;
    GST_OBJECT_UNLOCK(self);
    self->kernel = Kernel::Bilinear;
    if (fixed && (self->format == GST_VIDEO_FORMAT_I420 || self->format == GST_VIDEO_FORMAT_GRAY8))
        self->kernel = fixedKernel(iw, ih, ow, oh);
    const std::string problem = sizeProblem(self->format, iw, ih, ow, oh, self->kernel == Kernel::Bilinear);
    if (!problem.empty())
        return refuse(filter, problem);
    self->work->in.resize(layoutOf(self->format, iw, ih).bytes()); // for frames that need repacking
    self->work->out.resize(layoutOf(self->format, ow, oh).bytes());
    GST_DEBUG_OBJECT(self, "%s %dx%d -> %dx%d through %s", gst_video_format_to_string(self->format), iw, ih, ow, oh,
                     kernelName(self->kernel, self->format));
    return TRUE;
}

GstFlowReturn scaleFrame(GstVideoFilter *filter, GstVideoFrame *in, GstVideoFrame *out)
{
    auto *self = PIXMILL_SCALE(filter);
    Work &work = *self->work;
    const int iw = GST_VIDEO_FRAME_WIDTH(in), ih = GST_VIDEO_FRAME_HEIGHT(in);
    const int ow = GST_VIDEO_FRAME_WIDTH(out), oh = GST_VIDEO_FRAME_HEIGHT(out);
    const Layout inLayout = layoutOf(self->format, iw, ih), outLayout = layoutOf(self->format, ow, oh);
    Planes src, dst;
    bool staged = readTight(in, inLayout, work.in, src);
    staged = writeTarget(out, outLayout, work.out, dst) || staged;
    if (self->format == GST_VIDEO_FORMAT_RGB16) {
        gScaleRGB565Frame(src.words(), dst.words(), iw, ih, ow, oh);
    } else {
        // Grey is a frame with no chroma planes: the scalers skip null planes.
        Frame s = src.frame(iw, ih), t = dst.frame(ow, oh);
        const auto uw = static_cast<uint32_t>(iw), uh = static_cast<uint32_t>(ih);
        switch (self->kernel) {
        case Kernel::Down2:
            gScaleCroppedFrame_downby2(&s, &t, 0, 0, uw, uh);
            break;
        case Kernel::Up2:
            gScaleCroppedFrame_upby2(&s, &t, 0, 0, uw, uh);
            break;
        case Kernel::Up4:
            gScaleCroppedFrame_upby4(&s, &t, 0, 0, uw, uh);
            break;
        case Kernel::Down4to3:
            gScaleCroppedFrame_downto3by3(&s, &t, 0, 0, uw, uh);
            break;
        case Kernel::Bilinear:
            if (self->format == GST_VIDEO_FORMAT_Y42B)
                gScaleCroppedFrameYUV422(&s, &t, 0, 0, static_cast<uint16_t>(iw), static_cast<uint16_t>(ih));
            else
                gScaleFrame(&s, &t);
            break;
        }
    }
    writeBack(out, outLayout, dst);
    noteStaging(GST_CAT_DEFAULT, filter, self->loggedStaging, staged);
    return GST_FLOW_OK;
}

GstCaps *scaleTransformCaps(GstBaseTransform *, GstPadDirection, GstCaps *caps, GstCaps *filter)
{
    GstCaps *result = gst_caps_new_empty();
    for (guint i = 0; i < gst_caps_get_size(caps); ++i) {
        GstStructure *s = gst_structure_copy(gst_caps_get_structure(caps, i));
        gst_structure_set(s, "width", GST_TYPE_INT_RANGE, 1, 65535, "height", GST_TYPE_INT_RANGE, 1, 65535, nullptr);
        if (gst_structure_has_field(s, "pixel-aspect-ratio"))
            gst_structure_set(s, "pixel-aspect-ratio", GST_TYPE_FRACTION_RANGE, 1, G_MAXINT, G_MAXINT, 1, nullptr);
        gst_caps_append_structure(result, s);
    }
    return limitTo(filter, gst_caps_simplify(result));
}

// Unfixed sizes keep the input's, or follow its aspect when the other side is
// fixed; planar formats get even sizes.
GstCaps *scaleFixateCaps(GstBaseTransform *, GstPadDirection, GstCaps *caps, GstCaps *othercaps)
{
    othercaps = gst_caps_make_writable(gst_caps_truncate(othercaps));
    const GstStructure *ins = gst_caps_get_structure(caps, 0);
    GstStructure *outs = gst_caps_get_structure(othercaps, 0);
    gint iw = 0, ih = 0, n = 1, d = 1;
    gst_structure_get_int(ins, "width", &iw);
    gst_structure_get_int(ins, "height", &ih);
    if (gst_structure_get_fraction(ins, "pixel-aspect-ratio", &n, &d) &&
        gst_structure_has_field(outs, "pixel-aspect-ratio"))
        gst_structure_fixate_field_nearest_fraction(outs, "pixel-aspect-ratio", n, d);
    const GstVideoFormat f = formatOf(outs);
    const int step = f == GST_VIDEO_FORMAT_I420 || f == GST_VIDEO_FORMAT_Y42B ? 2 : 1;
    const auto near = [step](double v) { return std::max(step, static_cast<int>(std::lround(v / step)) * step); };
    gint ow = 0, oh = 0;
    const bool wFixed = gst_structure_get_int(outs, "width", &ow) &&
                        gst_value_is_fixed(gst_structure_get_value(outs, "width"));
    const bool hFixed = gst_structure_get_int(outs, "height", &oh) &&
                        gst_value_is_fixed(gst_structure_get_value(outs, "height"));
    if (iw > 0 && ih > 0) {
        if (wFixed && !hFixed)
            gst_structure_fixate_field_nearest_int(outs, "height", near(static_cast<double>(ih) * ow / iw));
        else if (hFixed && !wFixed)
            gst_structure_fixate_field_nearest_int(outs, "width", near(static_cast<double>(iw) * oh / ih));
        else if (!wFixed && !hFixed) {
            gst_structure_fixate_field_nearest_int(outs, "width", iw);
            gst_structure_fixate_field_nearest_int(outs, "height", ih);
        }
    }
    return gst_caps_fixate(othercaps);
}

void scaleSetProperty(GObject *object, guint id, const GValue *value, GParamSpec *pspec)
{
    auto *self = PIXMILL_SCALE(object);
    if (id == PROP_FIXED_KERNELS)
        storeProperty(&self->parent, self->fixedKernels, value);
    else
        G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, pspec);
}

void scaleGetProperty(GObject *object, guint id, GValue *value, GParamSpec *pspec)
{
    auto *self = PIXMILL_SCALE(object);
    if (id == PROP_FIXED_KERNELS)
        loadProperty(&self->parent, self->fixedKernels, value);
    else
        G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, pspec);
}

void scaleFinalize(GObject *object)
{
    delete PIXMILL_SCALE(object)->work;
    G_OBJECT_CLASS(pixmill_scale_parent_class)->finalize(object);
}

} // namespace

static void pixmill_scale_class_init(PixmillScaleClass *klass)
{
    auto *object = G_OBJECT_CLASS(klass);
    auto *trans = GST_BASE_TRANSFORM_CLASS(klass);
    auto *filter = GST_VIDEO_FILTER_CLASS(klass);
    object->set_property = scaleSetProperty;
    object->get_property = scaleGetProperty;
    object->finalize = scaleFinalize;
    g_object_class_install_property(
        object, PROP_FIXED_KERNELS,
        g_param_spec_boolean("fixed-kernels", "Fixed kernels",
                             "Scale I420 and GRAY8 by exactly 2:1, 1:2, 1:4 or 4:3 with the library's fixed-ratio "
                             "kernels (off: always bilinear); read when the caps are set",
                             TRUE, static_cast<GParamFlags>(G_PARAM_READWRITE | G_PARAM_STATIC_STRINGS)));
    setUpClass(filter, kFormats, kFormats,
               {"pixmill scaler", "Filter/Converter/Video/Scaler",
                "Scales I420, Y42B, GRAY8 and RGB16 frames with the pixmill library"},
               scaleSetInfo, scaleFrame);
    trans->transform_caps = scaleTransformCaps;
    trans->fixate_caps = scaleFixateCaps;
    trans->passthrough_on_same_caps = TRUE;
    GST_DEBUG_CATEGORY_INIT(pixmill_scale_debug, "pixmillscale", 0, "pixmill scaler");
}

static void pixmill_scale_init(PixmillScale *self)
{
    self->fixedKernels = TRUE;
    self->kernel = Kernel::Bilinear;
    self->format = GST_VIDEO_FORMAT_UNKNOWN;
    self->loggedStaging = false;
    self->work = new Work;
}

gboolean pixmill::gst::registerScale(GstPlugin *plugin)
{
    return gst_element_register(plugin, "pixmillscale", GST_RANK_NONE, pixmill_scale_get_type());
}
