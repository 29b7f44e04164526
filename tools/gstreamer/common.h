// Shared pieces of the pixmill GStreamer elements: the library's tight plane
// layouts, the staging of frames whose GStreamer layout differs from them,
// and the caps helpers that every element uses.
#pragma once

#include <gst/gst.h>
#include <gst/video/video.h>
#include <gst/video/gstvideofilter.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "pixmill.h"

namespace pixmill::gst {

// Bytes per row and rows of one plane as the library lays it out: rows follow
// each other with no gap.
struct PlaneShape {
    int rowBytes = 0;
    int rows = 0;
    size_t bytes() const { return static_cast<size_t>(rowBytes) * static_cast<size_t>(rows); }
};

// The tight layout of one image: one plane for packed pixels and grey, three
// (Y, U, V) for planar YUV. Chroma strides are width >> 1, as in Frame.
struct Layout {
    int planes = 0;
    PlaneShape plane[3];
    size_t bytes() const;
    static Layout packed(int width, int height, int bytesPerPixel);
    static Layout yuv420(int width, int height);
    static Layout yuv422(int width, int height);
};

// The library layout of a GStreamer format at a size (a single plane for the
// packed and grey formats).
Layout layoutOf(GstVideoFormat format, int width, int height);

// Memory reused from frame to frame; sized when the caps change.
using Scratch = std::vector<uint8_t>;

// Plane pointers of an image in the library's layout, in Y, U, V order.
struct Planes {
    uint8_t *p[3] = {nullptr, nullptr, nullptr};
    Frame frame(int width, int height) const { return Frame{p[0], p[1], p[2], u16(width), u16(height), 0}; }
    uint16_t *words() const { return reinterpret_cast<uint16_t *>(p[0]); }
    static uint16_t u16(int v) { return static_cast<uint16_t>(v); }
};

// Copies `rows` rows of `rowBytes` bytes between two strides.
void copyRows(uint8_t *dst, int dstStride, const uint8_t *src, int srcStride, int rowBytes, int rows);

// Planes of a mapped video frame in Y, U, V order (YV12's planes are found by
// component, so U is always U), with their strides.
struct FramePlanes {
    uint8_t *p[3] = {nullptr, nullptr, nullptr};
    int stride[3] = {0, 0, 0};
    explicit FramePlanes(GstVideoFrame *frame);
};

// The input planes in the library's layout: the frame's own memory where its
// strides already match, a copy in `scratch` otherwise. Returns true when a
// plane had to be copied.
bool readTight(GstVideoFrame *frame, const Layout &layout, Scratch &scratch, Planes &out);

// Where to write an output image: the frame's own planes where their strides
// match the layout, planes of `scratch` otherwise. writeBack() then copies the
// scratch planes into the frame. Both return true when staging is involved.
bool writeTarget(GstVideoFrame *frame, const Layout &layout, Scratch &scratch, Planes &out);
bool writeBack(GstVideoFrame *frame, const Layout &layout, const Planes &written);

// The layout's planes laid one after the other in `scratch`, grown as needed.
Planes carve(const Layout &layout, Scratch &scratch);

// Says once per caps, at debug level, that frames are being repacked
// because GStreamer's strides differ from the library's tight planes.
void noteStaging(GstDebugCategory *category, GstVideoFilter *filter, bool &logged, bool staged);

// The caps of transform_caps limited by the downstream filter, if any.
GstCaps *limitTo(GstCaps *filter, GstCaps *caps);

// Integer, enum and boolean properties kept in a gint of the element, read
// and written under the object lock.
void storeProperty(GstVideoFilter *filter, gint &field, const GValue *value);
void loadProperty(GstVideoFilter *filter, const gint &field, GValue *value);

// The parts every element class shares: pad templates for its formats, its
// metadata and its video filter functions.
struct ElementText {
    const char *longName, *classification, *description;
};
void setUpClass(GstVideoFilterClass *klass, const std::vector<GstVideoFormat> &sinkFormats,
                const std::vector<GstVideoFormat> &srcFormats, const ElementText &text,
                decltype(GstVideoFilterClass::set_info) setInfo,
                decltype(GstVideoFilterClass::transform_frame) transformFrame);

// Posts an element error that names the element and the reason, and returns
// false so that set_info can end with it.
gboolean refuse(GstVideoFilter *filter, const std::string &why);

// "WxH" for messages.
std::string sizeText(int width, int height);

// Caps helpers. The size fields and the fields that only make sense for one
// format family are dropped so that other formats and sizes can be offered.
GstCaps *withFormats(GstCaps *caps, const std::vector<GstVideoFormat> &formats, bool anySize);
GstCaps *templateCaps(const std::vector<GstVideoFormat> &formats);
GstVideoFormat formatOf(const GstStructure *s);
void swapSize(GstStructure *s);


// Element registration, one per element file.
gboolean registerConvert(GstPlugin *plugin);
gboolean registerScale(GstPlugin *plugin);
gboolean registerFlip(GstPlugin *plugin);
// All three; what the plugin's entry point (or a test's static registration) calls.
gboolean registerElements(GstPlugin *plugin);

} // namespace pixmill::gst
