// Checks of the library's caller guarantees, made before every call. Each
// refusal is one line naming the file, the operation, the value and the rule.
#ifndef PIXMILL_TOOLS_CHECKS_H
#define PIXMILL_TOOLS_CHECKS_H

#include <algorithm>
#include <string>

#include "cli.h"

namespace pixmill::tools {

class Checker {
public:
    Checker(const std::string &file, const char *op) : prefix_(file + ": " + op + ": ") {}
    // Refuses with "<file>: <op>: <what>" unless ok.
    void require(bool ok, const std::string &what) const
    {
        if (!ok)
            dataError(prefix_ + what);
    }
    void even(int64_t value, const char *name) const
    {
        require((value & 1) == 0, name + (" " + std::to_string(value)) + " is odd; it must be even");
    }
    void atLeast(int64_t value, int64_t min, const char *name) const
    {
        require(value >= min, name + (" " + std::to_string(value)) + " is below " + std::to_string(min));
    }
    void atMost(int64_t value, int64_t max, const char *name, const char *limit) const
    {
        require(value <= max, name + (" " + std::to_string(value)) + " exceeds " + limit + " (" +
                                  std::to_string(max) + ")");
    }
    void fits16(int64_t value, const char *name) const { atMost(value, 65535, name, "the 16-bit argument"); }

private:
    std::string prefix_;
};

inline std::string sizeText(int64_t w, int64_t h) { return std::to_string(w) + "x" + std::to_string(h); }

// The source rectangle of the options, or the whole w x h image.
inline Rect sourceRect(const Options &opt, int32_t w, int32_t h)
{
    return opt.rect.set ? opt.rect : Rect{0, 0, w, h, false};
}

inline bool quarterTurn(uint32_t code) { return (code & 1u) != 0; }

} // namespace pixmill::tools

#endif
