#include "safe_output.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <utility>

#include "cli.h"

namespace pixmill::tools {
namespace {

// The temporary file being written, for the signal handler to remove. The
// program writes one output at a time.
char g_pendingTemp[4096];

extern "C" void removePendingAndExit(int sig)
{
    if (g_pendingTemp[0] != '\0')
        unlink(g_pendingTemp);
    std::signal(sig, SIG_DFL);
    std::raise(sig);
}

void setPending(const std::string &temp)
{
    const size_t n = std::min(temp.size(), sizeof g_pendingTemp - 1);
    std::memcpy(g_pendingTemp, temp.data(), n);
    g_pendingTemp[n] = '\0';
    std::signal(SIGINT, removePendingAndExit);
    std::signal(SIGTERM, removePendingAndExit);
    std::signal(SIGHUP, removePendingAndExit);
}

std::string errnoText() { return std::strerror(errno); }

} // namespace

OutputFile::OutputFile(std::string path) : path_(std::move(path))
{
    if (path_ == "-") {
        file_ = stdout;
        return;
    }
    const size_t slash = path_.rfind('/');
    const std::string dir = slash == std::string::npos ? "." : path_.substr(0, slash == 0 ? 1 : slash);
    const std::string base = slash == std::string::npos ? path_ : path_.substr(slash + 1);
    if (base.empty())
        usageError(path_ + ": output path names a directory");
    struct stat st {};
    if (stat(path_.c_str(), &st) == 0 && S_ISDIR(st.st_mode))
        usageError(path_ + ": output path is a directory");
    std::string pattern = dir + "/." + base + ".pixmill-XXXXXX";
    const int fd = mkstemp(pattern.data());
    if (fd < 0)
        dataError(path_ + ": cannot create a file in " + dir + ": " + errnoText());
    temp_ = pattern;
    setPending(temp_);
    // mkstemp makes the file private; give it the mode a new file would have.
    const mode_t mask = umask(0);
    umask(mask);
    fchmod(fd, static_cast<mode_t>(0666 & ~mask));
    file_ = fdopen(fd, "wb");
    if (!file_) {
        close(fd);
        unlink(temp_.c_str());
        dataError(path_ + ": " + errnoText());
    }
}

OutputFile::~OutputFile()
{
    if (committed_ || temp_.empty())
        return;
    if (file_)
        std::fclose(file_);
    unlink(temp_.c_str());
    g_pendingTemp[0] = '\0';
}

void OutputFile::write(const void *bytes, size_t count)
{
    if (count != 0 && std::fwrite(bytes, 1, count, file_) != count)
        dataError(path_ + ": write failed: " + errnoText());
}

void OutputFile::commit()
{
    if (temp_.empty()) {
        if (std::fflush(file_) != 0)
            dataError("standard output: write failed: " + errnoText());
        committed_ = true;
        return;
    }
    const bool ok = std::fflush(file_) == 0 && fsync(fileno(file_)) == 0;
    const bool closed = std::fclose(file_) == 0;
    file_ = nullptr;
    if (!ok || !closed)
        dataError(path_ + ": write failed: " + errnoText());
    if (std::rename(temp_.c_str(), path_.c_str()) != 0)
        dataError(path_ + ": cannot move the finished file into place: " + errnoText());
    committed_ = true;
    g_pendingTemp[0] = '\0';
}

} // namespace pixmill::tools
