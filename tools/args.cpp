// Command-line parsing: `pixmill COMMAND [INPUT [OUTPUT]] [--option value]...`
#include "args.h"

#include <climits>
#include <cstdlib>

namespace pixmill::tools {
namespace {

// A decimal integer from min to max; false when malformed or out of range.
bool parseNumber(const std::string &text, int64_t min, int64_t max, int64_t &value)
{
    const bool digits = !text.empty() && text.size() <= 10 &&
                        text.find_first_not_of("0123456789", text[0] == '-' ? 1 : 0) == std::string::npos &&
                        text != "-";
    value = digits ? std::strtoll(text.c_str(), nullptr, 10) : min - 1;
    return value >= min && value <= max;
}

// A decimal integer from min to max, or a usage error naming the option.
int64_t number(const std::string &text, int64_t min, int64_t max, const std::string &option)
{
    int64_t v = 0;
    if (!parseNumber(text, min, max, v))
        usageError(option + " '" + text + "': expected a number from " + std::to_string(min) + " to " +
                   std::to_string(max));
    return v;
}

// WxH, each side 1..kMaxSide.
Size parseSize(const std::string &text, const std::string &option)
{
    const size_t x = text.find('x');
    int64_t w = 0, h = 0;
    if (x == std::string::npos || !parseNumber(text.substr(0, x), 1, kMaxSide, w) ||
        !parseNumber(text.substr(x + 1), 1, kMaxSide, h))
        usageError(option + " '" + text + "': expected WxH with sides from 1 to " + std::to_string(kMaxSide) +
                   ", e.g. 320x240");
    return {static_cast<int32_t>(w), static_cast<int32_t>(h), true};
}

// WxH+X+Y (ImageMagick geometry); +X+Y may be left out.
Rect parseRect(const std::string &text, const std::string &option)
{
    const size_t plus = text.find('+');
    const Size s = parseSize(text.substr(0, plus), option);
    Rect r{0, 0, s.w, s.h, true};
    if (plus != std::string::npos) {
        const size_t second = text.find('+', plus + 1);
        if (second == std::string::npos)
            usageError(option + " '" + text + "': expected WxH+X+Y, e.g. 160x120+8+4");
        r.x = static_cast<int32_t>(number(text.substr(plus + 1, second - plus - 1), 0, INT32_MAX / 2, option));
        r.y = static_cast<int32_t>(number(text.substr(second + 1), 0, INT32_MAX / 2, option));
    }
    return r;
}

// X,Y
Rect parsePoint(const std::string &text, const std::string &option)
{
    const size_t comma = text.find(',');
    if (comma == std::string::npos)
        usageError(option + " '" + text + "': expected X,Y, e.g. 16,8");
    return {static_cast<int32_t>(number(text.substr(0, comma), 0, kMaxSide, option)),
            static_cast<int32_t>(number(text.substr(comma + 1), 0, kMaxSide, option)), 0, 0, true};
}

Fmt parseFormatOption(const std::string &text, const std::string &option)
{
    const Fmt f = parseFormat(text);
    if (f == Fmt::None)
        usageError(option + " '" + text + "': unknown pixel format (see pixmill --help)");
    return f;
}

int parseRotation(const std::string &text)
{
    if (text == "0")
        return ROTATE_NONE;
    if (text == "90" || text == "-270")
        return ROTATE_90;
    if (text == "180" || text == "-180")
        return ROTATE_180;
    if (text == "270" || text == "-90")
        return ROTATE_270;
    usageError("--rotate '" + text + "': expected 0, 90, 180 or 270 (degrees clockwise)");
}

int parseMirror(const std::string &text)
{
    if (text == "h" || text == "horizontal" || text == "flop")
        return MIRROR_HORIZONTAL;
    if (text == "v" || text == "vertical" || text == "flip")
        return MIRROR_VERTICAL;
    if (text == "both" || text == "hv")
        return MIRROR_BOTH;
    usageError("--mirror '" + text + "': expected horizontal, vertical or both");
}

} // namespace

Options parseArgs(const std::string &command, const std::vector<std::string> &args)
{
    Options opt;
    opt.command = command;
    std::vector<std::string> positional;
    for (size_t i = 0; i < args.size(); ++i) {
        std::string arg = args[i], value;
        if (arg.size() < 2 || arg[0] != '-') {
            positional.push_back(arg);
            continue;
        }
        const size_t eq = arg.find('=');
        const bool inlineValue = arg.compare(0, 2, "--") == 0 && eq != std::string::npos;
        if (inlineValue) {
            value = arg.substr(eq + 1);
            arg = arg.substr(0, eq);
        }
        const auto flag = [&](const char *name) {
            if (arg != name)
                return false;
            if (inlineValue)
                usageError(arg + " takes no value");
            return true;
        };
        if (flag("--bottom-up")) {
            opt.bottomUp = true;
            continue;
        }
        if (flag("--in-place")) {
            opt.inPlace = true;
            continue;
        }
        if (flag("--quiet") || flag("-q")) {
            opt.quiet = true;
            continue;
        }
        if (!inlineValue) {
            if (i + 1 >= args.size())
                usageError(arg + " needs a value");
            value = args[++i];
        }
        if (arg == "--op")
            opt.op = value;
        else if (arg == "--format" || arg == "-f")
            opt.format = parseFormatOption(value, arg);
        else if (arg == "--to" || arg == "-t")
            opt.to = parseFormatOption(value, arg);
        else if (arg == "--in-size")
            opt.inSize = parseSize(value, arg);
        else if (arg == "--size" || arg == "-s")
            (command == "scale" ? opt.size : opt.inSize) = parseSize(value, arg);
        else if (arg == "--rect" || arg == "--crop")
            opt.rect = parseRect(value, arg);
        else if (arg == "--canvas")
            opt.canvas = parseSize(value, arg);
        else if (arg == "--at")
            opt.at = parsePoint(value, arg);
        else if (arg == "--rotate" || arg == "-r")
            opt.rotate = parseRotation(value);
        else if (arg == "--mirror")
            opt.mirror = parseMirror(value);
        else if (arg == "--matrix") {
            opt.matrix = value == "601" || value == "bt601" ? 601 : value == "709" || value == "bt709" ? 709 : -1;
            if (opt.matrix < 0)
                usageError("--matrix '" + value + "': expected 601 or 709");
        } else if (arg == "--ratio") {
            if (value != "2:1" && value != "1:2" && value != "1:4" && value != "4:3")
                usageError("--ratio '" + value + "': expected 2:1, 1:2, 1:4 or 4:3 (source:target)");
            opt.ratio = value;
        } else if (arg == "--container") {
            if (value != "y4m" && value != "raw" && value != "png")
                usageError("--container '" + value + "': expected y4m, raw or png");
            opt.container = value;
        } else if (arg == "--threads" || arg == "-j")
            opt.threads = static_cast<int>(number(value, 1, 64, arg));
        else if (arg == "--frames")
            opt.frames = static_cast<long>(number(value, 1, INT32_MAX, arg));
        else
            usageError("unknown option " + arg + " (see pixmill " + command + " --help)");
    }
    if (positional.size() > 2)
        usageError("unexpected argument '" + positional[2] + "'");
    if (!positional.empty())
        opt.input = positional[0];
    if (positional.size() > 1)
        opt.output = positional[1];
    return opt;
}

} // namespace pixmill::tools
