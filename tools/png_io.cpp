#include "png_io.h"

#include <png.h>

#include <cstdio>
#include <memory>

namespace pixmill::tools {

std::string writePngRgb(const std::string &path, const uint8_t *rgb, int32_t w, int32_t h)
{
    std::unique_ptr<FILE, int (*)(FILE *)> file(std::fopen(path.c_str(), "wb"), &std::fclose);
    if (!file)
        return "cannot open " + path + " for writing";
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png ? png_create_info_struct(png) : nullptr;
    if (!png || !info) {
        png_destroy_write_struct(&png, &info);
        return "out of memory in libpng";
    }
    if (setjmp(png_jmpbuf(png))) {
        png_destroy_write_struct(&png, &info);
        return "libpng failed while writing " + path;
    }
    png_init_io(png, file.get());
    png_set_IHDR(png, info, static_cast<png_uint_32>(w), static_cast<png_uint_32>(h), 8, PNG_COLOR_TYPE_RGB,
                 PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_write_info(png, info);
    for (int32_t r = 0; r < h; ++r)
        png_write_row(png, rgb + static_cast<size_t>(r) * static_cast<size_t>(w) * 3);
    png_write_end(png, nullptr);
    png_destroy_write_struct(&png, &info);
    if (std::fflush(file.get()) != 0)
        return "cannot write " + path;
    return {};
}

} // namespace pixmill::tools
