#include "streams.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <sstream>

#include "png_io.h"

namespace pixmill::tools {
namespace {

constexpr size_t kMaxHeaderLine = 4096;
constexpr unsigned char kPngSignature[8] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n'};

bool hostIsLittleEndian()
{
    const uint16_t one = 1;
    uint8_t first = 0;
    std::memcpy(&first, &one, 1);
    return first == 1;
}

// rgb565 files hold little-endian words; the library works on native ones.
void swapWordsIfBigEndian(Picture &pic)
{
    if (pic.fmt != Fmt::Rgb565 || hostIsLittleEndian())
        return;
    for (size_t i = 0; i + 1 < pic.data.size(); i += 2)
        std::swap(pic.data[i], pic.data[i + 1]);
}

// Parses a decimal size of 1..kMaxSide; -1 if malformed or out of range.
int32_t parseSide(const std::string &digits)
{
    if (digits.empty() || digits.size() > 6 || digits.find_first_not_of("0123456789") != std::string::npos)
        return -1;
    const long v = std::stol(digits);
    return v >= 1 && v <= kMaxSide ? static_cast<int32_t>(v) : -1;
}

std::string sizeText(int32_t w, int32_t h) { return std::to_string(w) + "x" + std::to_string(h); }

bool hasExtension(const std::string &path, const char *ext)
{
    const size_t n = std::strlen(ext);
    return path.size() > n && path.compare(path.size() - n, n, ext) == 0;
}

// The pixel format of a Y4M colour tag (without its C), or a data error
// naming the tag, its chroma layout and its sample depth. Only 8-bit 4:2:0,
// 4:2:2 and luma alone can be read; the 4:2:0 tags differ in chroma siting
// only, which the library does not model.
Fmt y4mColour(const std::string &name, const std::string &tag)
{
    if (tag == "420jpeg" || tag == "420paldv" || tag == "420mpeg2" || tag == "420")
        return Fmt::Yuv420p;
    if (tag == "422")
        return Fmt::Yuv422p;
    if (tag == "mono")
        return Fmt::Gray;
    // What makes it unreadable: "C444p10" has 4:4:4 chroma and 10-bit samples.
    const bool mono = tag.compare(0, 4, "mono") == 0;
    const size_t digitsEnd = std::min(tag.find_first_not_of("0123456789", mono ? 4 : 0), tag.size());
    const std::string layout = mono ? "" : tag.substr(0, digitsEnd), rest = tag.substr(digitsEnd);
    const auto allDigits = [](const std::string &t) {
        return !t.empty() && t.find_first_not_of("0123456789") == std::string::npos;
    };
    std::string what;
    if (layout.size() == 3 && layout != "420" && layout != "422")
        what = "4:" + layout.substr(1, 1) + ":" + layout.substr(2, 1) + " chroma";
    const std::string depth = mono                                ? tag.substr(4, digitsEnd - 4)
                              : rest.size() > 1 && rest[0] == 'p' ? rest.substr(1)
                                                                  : "";
    if (allDigits(depth))
        what += (what.empty() ? "" : " and ") + depth + "-bit samples";
    else if (rest == "alpha")
        what += " and an alpha plane";
    what = what.empty() ? "is not a colour space pixmill knows" : "has " + what;
    dataError(name + ": Y4M colour space C" + tag + " " + what +
              "; pixmill reads 8-bit C420jpeg, C420paldv, C420mpeg2, C420, C422 and Cmono");
}

void checkShape(const std::string &name, Fmt fmt, int32_t w, int32_t h)
{
    const FormatInfo &f = formatInfo(fmt);
    if (f.evenWidth && (w & 1))
        dataError(name + ": width " + std::to_string(w) + " is odd; " + f.name + " needs an even width");
    if (f.evenHeight && (h & 1))
        dataError(name + ": height " + std::to_string(h) + " is odd; " + f.name + " needs an even height");
    if (frameBytes(fmt, w, h) == 0)
        dataError(name + ": " + sizeText(w, h) + " " + f.name + " frames are too large (limit " +
                  std::to_string(kMaxFrameBytes >> 20) + " MiB a frame)");
}

} // namespace

const char *containerName(Container c)
{
    return c == Container::Y4m ? "y4m" : c == Container::Png ? "png" : "raw";
}

Reader::Reader(const std::string &path, Fmt rawFormat, Size rawSize, const char *sizeOption)
    : name_(path == "-" ? "standard input" : path)
{
    if (path == "-") {
        file_ = stdin;
    } else {
        struct stat st {};
        if (stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode))
            dataError(name_ + ": is a directory");
        file_ = std::fopen(path.c_str(), "rb");
        if (!file_)
            dataError(name_ + ": cannot open: " + std::strerror(errno));
        ownFile_ = true;
    }
    peekLen_ = std::fread(peek_, 1, sizeof peek_, file_);
    const bool png = peekLen_ == sizeof peek_ && std::memcmp(peek_, kPngSignature, 8) == 0;
    const bool y4m = peekLen_ == sizeof peek_ && std::memcmp(peek_, "YUV4MPEG", 8) == 0;
    // The content decides the container; an extension that promises one the
    // content is not is refused, with what the content is.
    if (peekLen_ == 0)
        dataError(name_ + (ownFile_ ? ": file is empty" : ": is empty"));
    if (hasExtension(path, ".y4m") && !y4m)
        dataError(name_ + ": not a YUV4MPEG2 stream (" +
                  (png ? "it is a PNG file" : "it does not start with \"YUV4MPEG2 \"") + ")");
    if (hasExtension(path, ".png") && !png)
        dataError(name_ + ": not a PNG file (" +
                  (y4m ? "it is a YUV4MPEG2 stream" : "no PNG signature in its first 8 bytes") + ")");
    if (png) {
        container_ = Container::Png;
        peekPos_ = peekLen_;
        png_ = std::make_unique<Picture>(
            readPng([this](void *b, size_t n) { return read(b, n); }, name_));
        fmt_ = Fmt::Rgb24;
        w_ = png_->w;
        h_ = png_->h;
        framesKnown_ = 1;
    } else if (y4m) {
        container_ = Container::Y4m;
        openY4m();
    } else {
        openRaw(rawFormat, rawSize, sizeOption);
    }
}

Reader::~Reader()
{
    if (ownFile_)
        std::fclose(file_);
}

size_t Reader::read(void *bytes, size_t count)
{
    auto *out = static_cast<unsigned char *>(bytes);
    size_t got = 0;
    while (got < count && peekPos_ < peekLen_)
        out[got++] = peek_[peekPos_++];
    if (got < count)
        got += std::fread(out + got, 1, count - got, file_);
    return got;
}

// Reads one header line without its newline, refusing lines beyond
// kMaxHeaderLine. False at the end of input before any byte.
bool Reader::readLine(std::string &line, const char *what)
{
    line.clear();
    char c = 0;
    while (read(&c, 1) == 1) {
        if (c == '\n')
            return true;
        if (line.size() >= kMaxHeaderLine)
            dataError(name_ + ": " + what + " is longer than " + std::to_string(kMaxHeaderLine) + " bytes");
        line.push_back(c);
    }
    if (!line.empty())
        dataError(name_ + ": " + what + " is cut short");
    return false;
}

void Reader::openY4m()
{
    std::string line;
    if (!readLine(line, "Y4M header") || line.compare(0, 10, "YUV4MPEG2 ") != 0)
        dataError(name_ + ": not a YUV4MPEG2 stream (header must start with \"YUV4MPEG2 \")");
    std::istringstream tokens(line.substr(10));
    std::string colour = "420jpeg";
    for (std::string t; tokens >> t;) {
        const char tag = t[0];
        const std::string value = t.substr(1);
        if (tag == 'W' || tag == 'H') {
            const int32_t v = parseSide(value);
            if (v < 0)
                dataError(name_ + ": Y4M " + (tag == 'W' ? "width" : "height") + " '" + value +
                          "' is not a number from 1 to " + std::to_string(kMaxSide));
            (tag == 'W' ? w_ : h_) = v;
        } else if (tag == 'C') {
            colour = value;
        } else if (tag == 'F' || tag == 'A' || tag == 'I') {
            extras_ += " " + t;
        }
    }
    if (w_ == 0 || h_ == 0)
        dataError(name_ + ": Y4M header lacks " + std::string(w_ == 0 ? "W" : "H") + " (frame size)");
    fmt_ = y4mColour(name_, colour);
    checkShape(name_, fmt_, w_, h_);
}

void Reader::openRaw(Fmt rawFormat, Size rawSize, const char *sizeOption)
{
    if (rawFormat == Fmt::None || !rawSize.set) {
        std::string missing = rawFormat == Fmt::None ? "--format FMT" : "";
        if (!rawSize.set)
            missing += std::string(missing.empty() ? "" : " and ") + sizeOption + " WxH";
        usageError(name_ + ": not a YUV4MPEG2 stream or PNG file, so raw frames: give " + missing +
                   (std::strcmp(sizeOption, "--in-size") == 0 ? " (here --size is the target size)" : ""));
    }
    fmt_ = rawFormat;
    w_ = rawSize.w;
    h_ = rawSize.h;
    checkShape(name_, fmt_, w_, h_);
    const size_t bytes = frameBytes(fmt_, w_, h_);
    struct stat st {};
    if (ownFile_ && fstat(fileno(file_), &st) == 0 && S_ISREG(st.st_mode)) {
        const auto length = static_cast<size_t>(st.st_size);
        if (length % bytes != 0)
            dataError(name_ + ": length " + std::to_string(length) + " is not a whole number of " +
                      sizeText(w_, h_) + " " + formatInfo(fmt_).name + " frames (" + std::to_string(bytes) +
                      " bytes each)");
        framesKnown_ = static_cast<long>(length / bytes);
    }
}

bool Reader::next(Picture &pic)
{
    if (container_ == Container::Png) {
        if (frames_ > 0)
            return false;
        pic = *png_;
        ++frames_;
        return true;
    }
    if (container_ == Container::Y4m) {
        std::string line;
        if (!readLine(line, "Y4M frame header"))
            return false;
        if (line.compare(0, 5, "FRAME") != 0 || (line.size() > 5 && line[5] != ' '))
            dataError(name_ + ": frame " + std::to_string(frames_ + 1) + " does not start with FRAME");
    }
    pic.alloc(fmt_, w_, h_);
    const size_t got = read(pic.data.data(), pic.data.size());
    if (got == 0 && container_ == Container::Raw)
        return false;
    if (got != pic.data.size())
        dataError(name_ + ": frame " + std::to_string(frames_ + 1) + " is cut short: " + std::to_string(got) +
                  " of " + std::to_string(pic.data.size()) + " bytes");
    swapWordsIfBigEndian(pic);
    ++frames_;
    return true;
}

Container outputContainer(const std::string &path, const std::string &forced, Fmt fmt, Container input)
{
    const auto endsWith = [&path](const char *ext) { return hasExtension(path, ext); };
    if (!forced.empty())
        return forced == "y4m" ? Container::Y4m : forced == "png" ? Container::Png : Container::Raw;
    if (endsWith(".y4m"))
        return Container::Y4m;
    if (endsWith(".png"))
        return Container::Png;
    if (path == "-" && input == Container::Y4m && isPlanarYuv(fmt))
        return Container::Y4m;
    return Container::Raw;
}

const std::string &checkedOutput(const std::string &path, Container container, Fmt fmt)
{
    if (container == Container::Y4m && !isPlanarYuv(fmt))
        usageError(path + ": Y4M holds planar YUV only, not " + formatInfo(fmt).name + "; write a raw or .png file");
    if (container == Container::Png && (fmt == Fmt::Yuyv || fmt == Fmt::Uyvy))
        usageError(path + ": PNG output of packed 4:2:2 is not supported; write a raw file");
    return path;
}

Writer::Writer(const std::string &path, Container container, Fmt fmt, int32_t w, int32_t h,
               std::string y4mExtras)
    : out_(checkedOutput(path, container, fmt)), container_(container), fmt_(fmt), w_(w), h_(h),
      extras_(std::move(y4mExtras))
{
}

void Writer::write(Picture &pic)
{
    const std::string &name = out_.path();
    if (container_ == Container::Png) {
        if (frames_++ > 0)
            dataError(name + ": PNG holds one frame; the input has more (use --frames 1)");
        Picture shown = displayable(pic, name);
        const std::vector<uint8_t> png =
            encodePng(shown.data.data(), shown.w, shown.h, shown.fmt == Fmt::Gray ? 1 : 3, name);
        out_.write(png.data(), png.size());
        return;
    }
    if (container_ == Container::Y4m) {
        if (frames_ == 0) {
            const char *colour = fmt_ == Fmt::Yuv422p ? "C422" : fmt_ == Fmt::Gray ? "Cmono" : "C420jpeg";
            std::string extras = extras_.find(" F") == std::string::npos ? " F25:1" + extras_ : extras_;
            const std::string header =
                "YUV4MPEG2 W" + std::to_string(w_) + " H" + std::to_string(h_) + extras + " " + colour + "\n";
            out_.write(header.data(), header.size());
        }
        out_.write("FRAME\n", 6);
        if (pic.fmt == Fmt::Yv12) { // Y4M stores U before V
            const size_t luma = static_cast<size_t>(w_) * static_cast<size_t>(h_), chroma = luma / 4;
            out_.write(pic.plane(0), luma);
            out_.write(pic.plane(2), chroma);
            out_.write(pic.plane(1), chroma);
            ++frames_;
            return;
        }
    }
    swapWordsIfBigEndian(pic);
    out_.write(pic.data.data(), pic.data.size());
    swapWordsIfBigEndian(pic);
    ++frames_;
}

void Writer::commit()
{
    if (frames_ == 0)
        dataError(out_.path() + ": no frames to write");
    out_.commit();
}

Picture displayable(Picture &pic, const std::string &name)
{
    Picture out;
    const size_t n = static_cast<size_t>(pic.w) * static_cast<size_t>(pic.h);
    switch (pic.fmt) {
    case Fmt::Gray:
    case Fmt::Rgb24: return pic;
    case Fmt::Yuv420p:
    case Fmt::Yv12: {
        out.alloc(Fmt::Rgb24, pic.w, pic.h);
        const Frame f = pic.frame();
        gEmYUV420toRGB888TopDown(&f, out.data.data(), pic.w, pic.h, 1);
        return out;
    }
    case Fmt::Yuv422p: {
        out.alloc(Fmt::Bgr24, pic.w, pic.h);
        const Frame f = pic.frame();
        gYUV422HPlanartoRGB888TopDown(&f, out.data.data(), pic.w, pic.h, 1);
        return displayable(out, name);
    }
    case Fmt::Bgr24:
        out = pic;
        out.fmt = Fmt::Rgb24;
        for (size_t i = 0; i < n; ++i)
            std::swap(out.data[3 * i], out.data[3 * i + 2]);
        return out;
    case Fmt::Rgb565:
        out.alloc(Fmt::Rgb24, pic.w, pic.h);
        for (size_t i = 0; i < n; ++i) {
            const uint16_t p = pic.words()[i];
            const unsigned r = p >> 11, g = (p >> 5) & 63u, b = p & 31u;
            out.data[3 * i] = static_cast<uint8_t>(r << 3 | r >> 2);
            out.data[3 * i + 1] = static_cast<uint8_t>(g << 2 | g >> 4);
            out.data[3 * i + 2] = static_cast<uint8_t>(b << 3 | b >> 2);
        }
        return out;
    default: break;
    }
    dataError(name + ": " + formatInfo(pic.fmt).name + " cannot be shown as PNG");
}

} // namespace pixmill::tools
