#include "png_io.h"

#include <png.h>

#include <vector>

namespace pixmill::tools {
namespace {

struct ReadState {
    const ByteSource *source;
};

void readCallback(png_structp png, png_bytep out, png_size_t count)
{
    auto *state = static_cast<ReadState *>(png_get_io_ptr(png));
    if ((*state->source)(out, count) != count)
        png_error(png, "the file ends too early");
}

void writeCallback(png_structp png, png_bytep bytes, png_size_t count)
{
    auto *out = static_cast<std::vector<uint8_t> *>(png_get_io_ptr(png));
    out->insert(out->end(), bytes, bytes + count);
}

void flushCallback(png_structp) {}

// libpng's last warning goes with its error: "Invalid IHDR data" follows
// the warning that says which field is wrong.
struct Messages {
    std::string error, warning;
};

[[noreturn]] void pngError(png_structp png, png_const_charp message)
{
    auto *m = static_cast<Messages *>(png_get_error_ptr(png));
    m->error = message;
    if (!m->warning.empty())
        m->error += " (" + m->warning + ")";
    png_longjmp(png, 1);
}

void pngWarning(png_structp png, png_const_charp message)
{
    static_cast<Messages *>(png_get_error_ptr(png))->warning = message;
}

} // namespace

Picture readPng(const ByteSource &source, const std::string &name)
{
    Messages messages;
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, &messages, pngError, pngWarning);
    png_infop info = png ? png_create_info_struct(png) : nullptr;
    if (!png || !info) {
        png_destroy_read_struct(&png, &info, nullptr);
        dataError(name + ": out of memory in libpng");
    }
    ReadState state{&source};
    Picture pic;
    std::vector<png_bytep> rows;
    if (setjmp(png_jmpbuf(png))) {
        png_destroy_read_struct(&png, &info, nullptr);
        dataError(name + ": damaged PNG: " + messages.error);
    }
    png_set_read_fn(png, &state, readCallback);
    png_set_sig_bytes(png, 8);
    // Bounded memory: refuse sizes beyond what a Frame can describe before
    // anything is allocated for the pixels.
    png_set_user_limits(png, kMaxSide, kMaxSide);
    png_read_info(png, info);
    // Grey and palette images widen to R, G, B without loss; 16-bit samples
    // and transparency would be lost, so they are refused.
    const int depth = png_get_bit_depth(png, info), type = png_get_color_type(png, info);
    const char *lost = nullptr; // nothing with a destructor lives across png_longjmp
    if (depth == 16)
        lost = "16-bit samples";
    else if (type & PNG_COLOR_MASK_ALPHA)
        lost = "an alpha channel";
    else if (png_get_valid(png, info, PNG_INFO_tRNS))
        lost = "transparency (a tRNS chunk)";
    if (lost) {
        png_destroy_read_struct(&png, &info, nullptr);
        dataError(name + ": PNG with " + std::string(lost) +
                  "; pixmill reads 8-bit (or fewer bits) grey, palette and RGB images without transparency");
    }
    png_set_expand(png);
    png_set_gray_to_rgb(png);
    png_set_interlace_handling(png);
    png_read_update_info(png, info);
    const auto w = static_cast<int32_t>(png_get_image_width(png, info));
    const auto h = static_cast<int32_t>(png_get_image_height(png, info));
    if (frameBytes(Fmt::Rgb24, w, h) == 0 || png_get_rowbytes(png, info) != static_cast<size_t>(w) * 3) {
        png_destroy_read_struct(&png, &info, nullptr);
        dataError(name + ": PNG of " + std::to_string(w) + "x" + std::to_string(h) + " is too large");
    }
    pic.alloc(Fmt::Rgb24, w, h);
    rows.resize(static_cast<size_t>(h));
    for (size_t r = 0; r < rows.size(); ++r)
        rows[r] = pic.data.data() + r * static_cast<size_t>(w) * 3;
    png_read_image(png, rows.data());
    png_read_end(png, nullptr);
    png_destroy_read_struct(&png, &info, nullptr);
    return pic;
}

std::vector<uint8_t> encodePng(const uint8_t *pixels, int32_t w, int32_t h, int channels, const std::string &name)
{
    std::vector<uint8_t> out;
    Messages messages;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &messages, pngError, pngWarning);
    png_infop info = png ? png_create_info_struct(png) : nullptr;
    if (!png || !info) {
        png_destroy_write_struct(&png, &info);
        dataError(name + ": out of memory in libpng");
    }
    if (setjmp(png_jmpbuf(png))) {
        png_destroy_write_struct(&png, &info);
        dataError(name + ": cannot write PNG: " + messages.error);
    }
    png_set_write_fn(png, &out, writeCallback, flushCallback);
    png_set_IHDR(png, info, static_cast<png_uint_32>(w), static_cast<png_uint_32>(h), 8,
                 channels == 1 ? PNG_COLOR_TYPE_GRAY : PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_write_info(png, info);
    const size_t pitch = static_cast<size_t>(w) * static_cast<size_t>(channels);
    for (int32_t r = 0; r < h; ++r)
        png_write_row(png, pixels + static_cast<size_t>(r) * pitch);
    png_write_end(png, nullptr);
    png_destroy_write_struct(&png, &info);
    return out;
}

} // namespace pixmill::tools
