// PNG output for the command-line program (libpng; the library itself never
// touches files).
#ifndef PIXMILL_TOOLS_PNG_IO_H
#define PIXMILL_TOOLS_PNG_IO_H

#include <cstdint>
#include <string>

namespace pixmill::tools {

// Writes w x h pixels of R,G,B bytes (pitch 3*w) as an 8-bit RGB PNG.
// Returns an empty string on success, else what went wrong.
std::string writePngRgb(const std::string &path, const uint8_t *rgb, int32_t w, int32_t h);

} // namespace pixmill::tools

#endif
