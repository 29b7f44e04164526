// The table of operations and the choice of one for a command.
#include "ops.h"

#include <algorithm>
#include <sstream>

namespace pixmill::tools {

const std::vector<const OpSpec *> &allOps()
{
    static const std::vector<OpSpec> table = [] {
        std::vector<OpSpec> ops;
        addRgbOps(ops);
        addYuvOps(ops);
        addGeometryOps(ops);
        addScaleOps(ops);
        return ops;
    }();
    static const std::vector<const OpSpec *> pointers = [] {
        std::vector<const OpSpec *> v;
        for (const OpSpec &op : table)
            v.push_back(&op);
        return v;
    }();
    return pointers;
}

const OpSpec *findOp(const std::string &name)
{
    for (const OpSpec *op : allOps())
        if (name == op->name)
            return op;
    return nullptr;
}

void requireRan(int32_t result, const char *op)
{
    if (result != 0)
        dataError(std::string(op) + " refused the call (internal error: the checks should have caught it)");
}

bool adaptable(Fmt from, Fmt to, bool lossy)
{
    if (from == to)
        return true;
    const auto pair = [&](Fmt a, Fmt b) { return (from == a && to == b) || (from == b && to == a); };
    if (pair(Fmt::Yv12, Fmt::Yuv420p) || pair(Fmt::Rgb24, Fmt::Bgr24))
        return true;
    return lossy && to == Fmt::Rgb565 && (from == Fmt::Rgb24 || from == Fmt::Bgr24);
}

Picture adapt(Picture &&pic, Fmt to)
{
    if (pic.fmt == to)
        return std::move(pic);
    const size_t n = static_cast<size_t>(pic.w) * static_cast<size_t>(pic.h);
    if (to == Fmt::Rgb565) { // keep the top bits of each level
        Picture out;
        out.alloc(to, pic.w, pic.h);
        const size_t r = pic.fmt == Fmt::Rgb24 ? 0 : 2, b = 2 - r;
        for (size_t i = 0; i < n; ++i) {
            const uint8_t *px = &pic.data[3 * i];
            out.words()[i] = static_cast<uint16_t>((px[r] >> 3) << 11 | (px[1] >> 2) << 5 | px[b] >> 3);
        }
        return out;
    }
    if (to == Fmt::Rgb24 || to == Fmt::Bgr24) {
        for (size_t i = 0; i < n; ++i)
            std::swap(pic.data[3 * i], pic.data[3 * i + 2]);
    } else { // yv12 <-> yuv420p: exchange the two chroma planes
        const size_t chroma = n / 4;
        std::swap_ranges(pic.plane(1), pic.plane(1) + chroma, pic.plane(2));
    }
    pic.fmt = to;
    return std::move(pic);
}

namespace {

bool hasWord(const char *list, const std::string &word)
{
    std::istringstream words(list);
    for (std::string w; words >> w;)
        if (w == word)
            return true;
    return false;
}

bool containerHolds(Container c, Fmt fmt)
{
    if (c == Container::Y4m)
        return isPlanarYuv(fmt);
    if (c == Container::Png)
        return fmt != Fmt::Yuyv && fmt != Fmt::Uyvy;
    return true;
}

} // namespace

const OpSpec *chooseOp(const Options &opt, Fmt in, Container out)
{
    const OpSpec *best = nullptr;
    int bestCost = 1 << 30;
    bool named = false;
    for (const OpSpec *op : allOps()) {
        if (!opt.op.empty()) {
            if (opt.op != op->name)
                continue;
            named = true;
        } else {
            if (!hasWord(op->command, opt.command) || opt.ratio != op->variant)
                continue;
            if ((opt.rect.set && !(op->uses & kUseRect)) || (opt.matrix && opt.matrix != op->matrix))
                continue;
        }
        if (!adaptable(in, op->in, true))
            continue;
        const Fmt result = opt.to == Fmt::None ? op->out : opt.to;
        if (!adaptable(op->out, result, false) || !containerHolds(out, result))
            continue;
        // Outside `convert` the format stays unless --to asks otherwise; then
        // exact formats first, BT.601 before BT.709, then table order.
        const bool keeps = opt.command == "convert" || opt.to != Fmt::None || adaptable(in, result, false);
        const int cost = (keeps ? 0 : 8) + (in != op->in ? 2 : 0) + (result != op->out ? 2 : 0) +
                         (op->matrix == 709 ? 1 : 0);
        if (cost < bestCost) {
            best = op;
            bestCost = cost;
        }
    }
    if (best)
        return best;
    const std::string fmt = formatInfo(in).name;
    if (!opt.op.empty() && !named)
        usageError("unknown operation '" + opt.op + "' (see pixmill ops)");
    if (named)
        usageError(opt.op + " does not take " + fmt + " input" +
                   (opt.to != Fmt::None ? std::string(" to ") + formatInfo(opt.to).name : std::string()) +
                   " (see pixmill ops)");
    std::string what = "no operation of '" + opt.command + "' takes " + fmt;
    if (opt.to != Fmt::None)
        what += std::string(" to ") + formatInfo(opt.to).name;
    if (opt.matrix)
        what += " with --matrix " + std::to_string(opt.matrix);
    if (!opt.ratio.empty())
        what += " at --ratio " + opt.ratio;
    usageError(what + " (see pixmill ops)");
}

} // namespace pixmill::tools
