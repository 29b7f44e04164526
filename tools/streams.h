// Frame streams in and out of files: YUV4MPEG2 (several frames), raw frames
// (--format and --size), PNG (one frame). "-" is standard input or output.
#ifndef PIXMILL_TOOLS_STREAMS_H
#define PIXMILL_TOOLS_STREAMS_H

#include <cstdio>
#include <memory>
#include <string>

#include "cli.h"
#include "safe_output.h"

namespace pixmill::tools {

enum class Container { Y4m, Raw, Png };
const char *containerName(Container c);

class Reader {
public:
    // Opens `path`, recognises Y4M and PNG by their first bytes and reads
    // the stream header. Raw input takes its format and size from the
    // options; `sizeOption` is the option that gives that size. Every size
    // is checked here, before anything is allocated.
    Reader(const std::string &path, Fmt rawFormat, Size rawSize, const char *sizeOption);
    ~Reader();
    Reader(const Reader &) = delete;
    Reader &operator=(const Reader &) = delete;

    // Reads the next frame into `pic`; false at a clean end of the stream.
    bool next(Picture &pic);

    const std::string &name() const { return name_; }
    Container container() const { return container_; }
    Fmt fmt() const { return fmt_; }
    int32_t width() const { return w_; }
    int32_t height() const { return h_; }
    long framesRead() const { return frames_; }
    // Number of frames a regular raw file holds, or -1 when not known ahead.
    long framesKnown() const { return framesKnown_; }
    // Y4M stream parameters carried over: frame rate, interlacing, aspect.
    const std::string &y4mExtras() const { return extras_; }

private:
    size_t read(void *bytes, size_t count);
    bool readLine(std::string &line, const char *what);
    void openY4m();
    void openRaw(Fmt rawFormat, Size rawSize, const char *sizeOption);

    std::string name_;
    FILE *file_ = nullptr;
    bool ownFile_ = false;
    unsigned char peek_[8] = {};
    size_t peekLen_ = 0, peekPos_ = 0;
    Container container_ = Container::Raw;
    Fmt fmt_ = Fmt::None;
    int32_t w_ = 0, h_ = 0;
    long frames_ = 0, framesKnown_ = -1;
    std::string extras_;
    std::unique_ptr<Picture> png_;
};

// Picks the container of an output path: by its extension, and for "-" by
// --container, else Y4M for planar YUV from a Y4M input, else raw.
Container outputContainer(const std::string &path, const std::string &forced, Fmt fmt, Container input);

// The output path, once the container is known to hold the format.
const std::string &checkedOutput(const std::string &path, Container container, Fmt fmt);

class Writer {
public:
    // Refuses a format the container cannot hold before creating anything.
    Writer(const std::string &path, Container container, Fmt fmt, int32_t w, int32_t h, std::string y4mExtras);
    void write(Picture &pic);
    void commit();

private:
    OutputFile out_;
    Container container_;
    Fmt fmt_;
    int32_t w_, h_;
    std::string extras_;
    long frames_ = 0;
};

// PNG pixels for a picture: grey for luma alone, else R,G,B. YUV goes through
// the library's BT.601 conversions; RGB565 levels are widened by repeating
// their top bits. Packed 4:2:2 is not shown.
Picture displayable(Picture &pic, const std::string &name);

} // namespace pixmill::tools

#endif
