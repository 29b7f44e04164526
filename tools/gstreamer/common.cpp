#include "common.h"

#include <algorithm>
#include <cstring>

namespace pixmill::gst {

size_t Layout::bytes() const
{
    size_t total = 0;
    for (int i = 0; i < planes; ++i)
        total += plane[i].bytes();
    return total;
}

Layout Layout::packed(int width, int height, int bytesPerPixel)
{
    Layout l;
    l.planes = 1;
    l.plane[0] = {width * bytesPerPixel, height};
    return l;
}

Layout Layout::yuv420(int width, int height)
{
    Layout l;
    l.planes = 3;
    l.plane[0] = {width, height};
    l.plane[1] = l.plane[2] = {width >> 1, height >> 1};
    return l;
}

Layout Layout::yuv422(int width, int height)
{
    Layout l;
    l.planes = 3;
    l.plane[0] = {width, height};
    l.plane[1] = l.plane[2] = {width >> 1, height};
    return l;
}

Layout layoutOf(GstVideoFormat format, int width, int height)
{
    switch (format) {
    case GST_VIDEO_FORMAT_I420:
    case GST_VIDEO_FORMAT_YV12:
        return Layout::yuv420(width, height);
    case GST_VIDEO_FORMAT_Y42B:
        return Layout::yuv422(width, height);
    case GST_VIDEO_FORMAT_GRAY8:
        return Layout::packed(width, height, 1);
    case GST_VIDEO_FORMAT_RGB16:
    case GST_VIDEO_FORMAT_YUY2:
    case GST_VIDEO_FORMAT_UYVY:
        return Layout::packed(width, height, 2);
    default:
        return Layout::packed(width, height, 3);
    }
}

void copyRows(uint8_t *dst, int dstStride, const uint8_t *src, int srcStride, int rowBytes, int rows)
{
    for (int r = 0; r < rows; ++r)
        std::memcpy(dst + static_cast<ptrdiff_t>(r) * dstStride, src + static_cast<ptrdiff_t>(r) * srcStride,
                    static_cast<size_t>(rowBytes));
}

FramePlanes::FramePlanes(GstVideoFrame *frame)
{
    if (GST_VIDEO_FRAME_N_PLANES(frame) == 1) {
        p[0] = static_cast<uint8_t *>(GST_VIDEO_FRAME_PLANE_DATA(frame, 0));
        stride[0] = GST_VIDEO_FRAME_PLANE_STRIDE(frame, 0);
        return;
    }
    for (int c = 0; c < 3; ++c) {
        p[c] = static_cast<uint8_t *>(GST_VIDEO_FRAME_COMP_DATA(frame, c));
        stride[c] = GST_VIDEO_FRAME_COMP_STRIDE(frame, c);
    }
}

Planes carve(const Layout &layout, Scratch &scratch)
{
    if (scratch.size() < layout.bytes())
        scratch.resize(layout.bytes());
    Planes out;
    uint8_t *at = scratch.data();
    for (int i = 0; i < layout.planes; ++i) {
        out.p[i] = at;
        at += layout.plane[i].bytes();
    }
    return out;
}

namespace {

// The frame's own planes where their strides match the layout, planes of
// `scratch` otherwise, filled from the frame when `copyIn` is set.
bool tightPlanes(GstVideoFrame *frame, const Layout &layout, Scratch &scratch, Planes &out, bool copyIn)
{
    const FramePlanes own(frame);
    Planes spare;
    bool staged = false;
    for (int i = 0; i < layout.planes; ++i) {
        const PlaneShape &s = layout.plane[i];
        if (own.stride[i] == s.rowBytes || s.rows <= 1) {
            out.p[i] = own.p[i];
            continue;
        }
        if (!staged)
            spare = carve(layout, scratch);
        staged = true;
        if (copyIn)
            copyRows(spare.p[i], s.rowBytes, own.p[i], own.stride[i], s.rowBytes, s.rows);
        out.p[i] = spare.p[i];
    }
    return staged;
}

} // namespace

bool readTight(GstVideoFrame *frame, const Layout &layout, Scratch &scratch, Planes &out)
{
    return tightPlanes(frame, layout, scratch, out, true);
}

bool writeTarget(GstVideoFrame *frame, const Layout &layout, Scratch &scratch, Planes &out)
{
    return tightPlanes(frame, layout, scratch, out, false);
}

bool writeBack(GstVideoFrame *frame, const Layout &layout, const Planes &written)
{
    const FramePlanes dst(frame);
    bool copied = false;
    for (int i = 0; i < layout.planes; ++i) {
        if (written.p[i] == dst.p[i])
            continue;
        const PlaneShape &s = layout.plane[i];
        copyRows(dst.p[i], dst.stride[i], written.p[i], s.rowBytes, s.rowBytes, s.rows);
        copied = true;
    }
    return copied;
}

void noteStaging(GstDebugCategory *category, GstVideoFilter *filter, bool &logged, bool staged)
{
    if (!staged)
        return;
    if (!logged)
        GST_CAT_DEBUG_OBJECT(category, filter,
                             "GStreamer's row strides differ from the library's tight planes: repacking frames");
    logged = true;
}

GstCaps *limitTo(GstCaps *filter, GstCaps *caps)
{
    if (!filter)
        return caps;
    GstCaps *both = gst_caps_intersect_full(filter, caps, GST_CAPS_INTERSECT_FIRST);
    gst_caps_unref(caps);
    return both;
}

void storeProperty(GstVideoFilter *filter, gint &field, const GValue *value)
{
    GST_OBJECT_LOCK(filter);
    if (G_VALUE_HOLDS_ENUM(value))
        field = g_value_get_enum(value);
    else if (G_VALUE_HOLDS_BOOLEAN(value))
        field = g_value_get_boolean(value);
    else
        field = g_value_get_int(value);
    GST_OBJECT_UNLOCK(filter);
}

void loadProperty(GstVideoFilter *filter, const gint &field, GValue *value)
{
    GST_OBJECT_LOCK(filter);
    if (G_VALUE_HOLDS_ENUM(value))
        g_value_set_enum(value, field);
    else if (G_VALUE_HOLDS_BOOLEAN(value))
        g_value_set_boolean(value, field);
    else
        g_value_set_int(value, field);
    GST_OBJECT_UNLOCK(filter);
}

void setUpClass(GstVideoFilterClass *klass, const std::vector<GstVideoFormat> &sinkFormats,
                const std::vector<GstVideoFormat> &srcFormats, const ElementText &text,
                decltype(GstVideoFilterClass::set_info) setInfo,
                decltype(GstVideoFilterClass::transform_frame) transformFrame)
{
    auto *element = GST_ELEMENT_CLASS(klass);
    gst_element_class_add_pad_template(
        element, gst_pad_template_new("sink", GST_PAD_SINK, GST_PAD_ALWAYS, templateCaps(sinkFormats)));
    gst_element_class_add_pad_template(
        element, gst_pad_template_new("src", GST_PAD_SRC, GST_PAD_ALWAYS, templateCaps(srcFormats)));
    gst_element_class_set_static_metadata(element, text.longName, text.classification, text.description,
                                          "pixmill developers");
    klass->set_info = setInfo;
    klass->transform_frame = transformFrame;
}

gboolean refuse(GstVideoFilter *filter, const std::string &why)
{
    GST_ELEMENT_ERROR(filter, STREAM, FORMAT, ("%s", why.c_str()), (nullptr));
    return FALSE;
}

std::string sizeText(int width, int height)
{
    return std::to_string(width) + "x" + std::to_string(height);
}

GstCaps *withFormats(GstCaps *caps, const std::vector<GstVideoFormat> &formats, bool anySize)
{
    GstCaps *result = gst_caps_new_empty();
    const guint n = gst_caps_get_size(caps);
    for (guint i = 0; i < n; ++i) {
        GstStructure *s = gst_structure_copy(gst_caps_get_structure(caps, i));
        GValue list = G_VALUE_INIT;
        gst_value_list_init(&list, static_cast<guint>(formats.size()));
        for (GstVideoFormat f : formats) {
            GValue v = G_VALUE_INIT;
            g_value_init(&v, G_TYPE_STRING);
            g_value_set_string(&v, gst_video_format_to_string(f));
            gst_value_list_append_and_take_value(&list, &v);
        }
        gst_structure_take_value(s, "format", &list);
        gst_structure_remove_fields(s, "colorimetry", "chroma-site", nullptr);
        if (anySize) {
            gst_structure_set(s, "width", GST_TYPE_INT_RANGE, 1, 65535, "height", GST_TYPE_INT_RANGE, 1, 65535,
                              nullptr);
            if (gst_structure_has_field(s, "pixel-aspect-ratio"))
                gst_structure_set(s, "pixel-aspect-ratio", GST_TYPE_FRACTION_RANGE, 1, G_MAXINT, G_MAXINT, 1,
                                  nullptr);
        }
        gst_caps_append_structure(result, s);
    }
    return gst_caps_simplify(result);
}

GstCaps *templateCaps(const std::vector<GstVideoFormat> &formats)
{
    // Whole frames only: the turns, mirrors and vertical filters would mix
    // the fields of interlaced ones.
    GstCaps *any = gst_caps_from_string("video/x-raw, width=(int)[1,65535], height=(int)[1,65535], "
                                        "framerate=(fraction)[0/1,2147483647/1], interlace-mode=(string)progressive");
    GstCaps *caps = withFormats(any, formats, false);
    gst_caps_unref(any);
    return caps;
}

GstVideoFormat formatOf(const GstStructure *s)
{
    const char *name = gst_structure_get_string(s, "format");
    return name ? gst_video_format_from_string(name) : GST_VIDEO_FORMAT_UNKNOWN;
}

void swapSize(GstStructure *s)
{
    GValue w = G_VALUE_INIT, h = G_VALUE_INIT;
    const GValue *wv = gst_structure_get_value(s, "width");
    const GValue *hv = gst_structure_get_value(s, "height");
    if (wv && hv) {
        g_value_init(&w, G_VALUE_TYPE(wv));
        g_value_copy(wv, &w);
        g_value_init(&h, G_VALUE_TYPE(hv));
        g_value_copy(hv, &h);
        gst_structure_take_value(s, "width", &h);
        gst_structure_take_value(s, "height", &w);
    }
    gint n = 0, d = 0;
    if (gst_structure_get_fraction(s, "pixel-aspect-ratio", &n, &d))
        gst_structure_set(s, "pixel-aspect-ratio", GST_TYPE_FRACTION, d, n, nullptr);
}

gboolean registerElements(GstPlugin *plugin)
{
    return registerConvert(plugin) && registerScale(plugin) && registerFlip(plugin);
}

} // namespace pixmill::gst
