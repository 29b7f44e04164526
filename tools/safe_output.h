// Output files that appear whole or not at all: data goes to a temporary file
// in the target's directory, which is renamed over the target on success and
// removed otherwise. "-" writes to standard output directly.
#ifndef PIXMILL_TOOLS_SAFE_OUTPUT_H
#define PIXMILL_TOOLS_SAFE_OUTPUT_H

#include <cstddef>
#include <cstdio>
#include <string>

namespace pixmill::tools {

class OutputFile {
public:
    explicit OutputFile(std::string path);
    ~OutputFile();
    OutputFile(const OutputFile &) = delete;
    OutputFile &operator=(const OutputFile &) = delete;

    void write(const void *bytes, size_t count);
    FILE *stream() { return file_; }
    // Flushes, closes and moves the data into place. Throws on failure.
    void commit();
    const std::string &path() const { return path_; }

private:
    std::string path_, temp_;
    FILE *file_ = nullptr;
    bool committed_ = false;
};

} // namespace pixmill::tools

#endif
