// The pixmill GStreamer plugin: pixmillconvert, pixmillscale, pixmillflip.
#include "common.h"

#ifndef PACKAGE
#define PACKAGE "pixmill"
#endif

namespace {

gboolean pluginInit(GstPlugin *plugin) { return pixmill::gst::registerElements(plugin); }

} // namespace

extern "C" {
GST_PLUGIN_DEFINE(GST_VERSION_MAJOR, GST_VERSION_MINOR, pixmill,
                  "Colour conversion, scaling and turns of video frames with the pixmill library", pluginInit,
                  PIXMILL_VERSION, "unknown", "pixmill", "pixmill")
}
