// The pixmill program run as a separate process in a scratch directory, and
// the generated files its tests feed it.
#ifndef PIXMILL_TESTS_CLI_FIXTURE_H
#define PIXMILL_TESTS_CLI_FIXTURE_H

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "support/random.h"

namespace pixmill::test {

namespace fs = std::filesystem;
using Bytes = std::string;

struct Result {
    int code;
    std::string out, err;
};

class Cli : public ::testing::Test {
protected:
    void SetUp() override
    {
        std::string pattern = (fs::temp_directory_path() / "pixmill-cli-XXXXXX").string();
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        dir_ = pattern;
    }
    void TearDown() override { fs::remove_all(dir_); }

    static std::string cli() { return std::string("'") + PIXMILL_CLI + "'"; }
    std::string path(const std::string &name) const { return (dir_ / name).string(); }
    bool exists(const std::string &name) const { return fs::exists(dir_ / name); }

    // Runs a shell command line in the scratch directory.
    Result shell(const std::string &line) const
    {
        const std::string cmd = "cd '" + dir_.string() + "' && ( " + line + " ) >.out 2>.err";
        const int status = std::system(cmd.c_str());
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, read(".out"), read(".err")};
    }
    // Runs the program with these arguments.
    Result run(const std::string &args) const { return shell(cli() + " " + args); }
    // Runs the program; true when it exits with 0, a failure (with its
    // standard error) when not.
    bool ok(const std::string &args) const
    {
        const Result r = run(args);
        EXPECT_EQ(r.code, 0) << args << "\n" << r.err;
        return r.code == 0;
    }

    void write(const std::string &name, const Bytes &bytes) const
    {
        std::ofstream(path(name), std::ios::binary) << bytes;
    }
    Bytes read(const std::string &name) const
    {
        std::ifstream in(path(name), std::ios::binary);
        std::ostringstream bytes;
        bytes << in.rdbuf();
        return bytes.str();
    }

    fs::path dir_;
};

inline Bytes randomBytes(Random &rnd, size_t n)
{
    Bytes b(n, '\0');
    for (char &c : b)
        c = static_cast<char>(rnd.byte());
    return b;
}

// A Y4M stream of random frames; chroma rows per frame follow the tag.
inline Bytes y4m(Random &rnd, int w, int h, const std::string &colour, int frames)
{
    const size_t luma = static_cast<size_t>(w) * static_cast<size_t>(h);
    const size_t chroma = colour == "mono" ? 0 : colour == "422" ? luma / 2 : luma / 4;
    Bytes s = "YUV4MPEG2 W" + std::to_string(w) + " H" + std::to_string(h) + " F30:1 Ip A1:1 C" + colour + "\n";
    for (int i = 0; i < frames; ++i)
        s += "FRAME\n" + randomBytes(rnd, luma + 2 * chroma);
    return s;
}

} // namespace pixmill::test

#endif
