// PNG files for the command-line program (libpng; the library itself never
// touches files).
#ifndef PIXMILL_TOOLS_PNG_IO_H
#define PIXMILL_TOOLS_PNG_IO_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "cli.h"

namespace pixmill::tools {

// Reads whole bytes from the input; returns how many it got (0 at the end).
using ByteSource = std::function<size_t(void *bytes, size_t count)>;

// Decodes a PNG whose 8-byte signature has been read already into rgb24
// (grey and palette images of up to 8 bits are widened to R, G, B). Throws a
// data error naming `name` for a damaged or oversized file, 16-bit samples,
// an alpha channel or transparency.
Picture readPng(const ByteSource &source, const std::string &name);

// Encodes w x h pixels of `channels` bytes each (1 grey, 3 R,G,B) as PNG.
std::vector<uint8_t> encodePng(const uint8_t *pixels, int32_t w, int32_t h, int channels, const std::string &name);

} // namespace pixmill::tools

#endif
