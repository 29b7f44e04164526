// The commands that move frames through an operation (convert, scale,
// rotate, mirror), `info` and `ops`.
#include "commands.h"

#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <exception>
#include <thread>

#include "ops.h"
#include "streams.h"

namespace pixmill::tools {
namespace {

// Frames done and frames per second on stderr, when it is a terminal and the
// job has run for over a second.
class Progress {
public:
    explicit Progress(bool quiet) : on_(!quiet && isatty(STDERR_FILENO)) {}
    void frameDone(long frames)
    {
        if (!on_)
            return;
        const double t = seconds();
        if (t < 1.0 || t - last_ < 0.25)
            return;
        last_ = t;
        shown_ = true;
        std::fprintf(stderr, "\rpixmill: %ld frames, %.1f fps ", frames, static_cast<double>(frames) / t);
    }
    ~Progress()
    {
        if (shown_)
            std::fputc('\n', stderr);
    }

private:
    double seconds() const
    {
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
    }
    bool on_, shown_ = false;
    double last_ = 0;
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

void refuseUnused(const Options &opt, const OpSpec *op)
{
    const auto refuse = [op](bool given, unsigned use, const char *option) {
        if (given && !(op->uses & use))
            usageError(std::string(option) + " does not apply to " + op->name);
    };
    refuse(opt.rect.set, kUseRect, "--rect");
    refuse(opt.rotate >= 0, kUseRotate, "--rotate");
    refuse(opt.canvas.set, kUseCanvas, "--canvas");
    refuse(opt.at.set, kUseCanvas, "--at");
    refuse(opt.bottomUp, kUseBottomUp, "--bottom-up");
    refuse(opt.mirror >= 0, kUseMirror, "--mirror");
    refuse(opt.inPlace, kUseMirror, "--in-place");
    refuse(opt.size.set, kUseSize, "--size");
}

// One frame through the operation, from the input's format to the output's.
struct Job {
    Picture in, out;
    std::exception_ptr error;
};

void process(const Plan &plan, Fmt result, Job &job)
{
    try {
        job.out = applyPlan(plan, result, std::move(job.in));
    } catch (...) {
        job.error = std::current_exception();
    }
}

} // namespace

Plan planFor(const OpSpec *op, const Options &opt, int32_t w, int32_t h, const std::string &file)
{
    refuseUnused(opt, op);
    Plan plan;
    plan.op = op;
    op->plan(plan, w, h, opt, file);
    if (frameBytes(op->out, plan.outW, plan.outH) == 0)
        dataError(file + ": " + op->name + ": a " + std::to_string(plan.outW) + "x" + std::to_string(plan.outH) +
                  " output is too large");
    return plan;
}

Picture applyPlan(const Plan &plan, Fmt result, Picture in)
{
    in = adapt(std::move(in), plan.op->in);
    Picture out;
    out.alloc(plan.op->out, plan.outW, plan.outH);
    plan.op->run(plan, in, out);
    return adapt(std::move(out), result);
}

int runTransform(const Options &opt)
{
    if (opt.input.empty() || opt.output.empty())
        usageError(opt.command + " needs INPUT and OUTPUT (\"-\" for standard input or output)");
    Reader in(opt.input, opt.format, opt.inSize, opt.command == "scale" ? "--in-size" : "--size");
    if (opt.format != Fmt::None && in.container() != Container::Raw && opt.format != in.fmt())
        dataError(in.name() + ": holds " + formatInfo(in.fmt()).name + ", not the --format " +
                  formatInfo(opt.format).name);
    const Container hint = outputContainer(opt.output == "-" ? "" : opt.output, opt.container, Fmt::None, in.container());
    if (opt.to != Fmt::None)
        checkedOutput(opt.output, hint, opt.to);
    const OpSpec *op = chooseOp(opt, in.fmt(), hint);
    const Plan plan = planFor(op, opt, in.width(), in.height(), in.name());
    const Fmt result = opt.to == Fmt::None ? op->out : opt.to;
    Writer out(opt.output, outputContainer(opt.output, opt.container, result, in.container()), result, plan.outW,
               plan.outH, in.y4mExtras());

    Progress progress(opt.quiet);
    std::vector<Job> jobs(static_cast<size_t>(opt.threads));
    long done = 0;
    for (bool more = true; more;) {
        size_t n = 0;
        while (n < jobs.size() && (opt.frames < 0 || done + static_cast<long>(n) < opt.frames) &&
               (more = in.next(jobs[n].in)))
            ++n;
        if (n == 0)
            break;
        if (n == 1) {
            process(plan, result, jobs[0]);
        } else {
            std::vector<std::thread> workers;
            for (size_t i = 0; i < n; ++i)
                workers.emplace_back(process, std::cref(plan), result, std::ref(jobs[i]));
            for (std::thread &t : workers)
                t.join();
        }
        for (size_t i = 0; i < n; ++i) {
            if (jobs[i].error)
                std::rethrow_exception(jobs[i].error);
            out.write(jobs[i].out);
            progress.frameDone(++done);
        }
        if (opt.frames >= 0 && done >= opt.frames)
            break;
    }
    if (done == 0)
        dataError(in.name() + ": no frames in the input");
    out.commit();
    return kExitOk;
}

int runInfo(const Options &opt)
{
    if (opt.input.empty())
        usageError("info needs INPUT");
    Reader in(opt.input, opt.format, opt.inSize, "--size");
    long frames = in.framesKnown();
    if (frames < 0) {
        Picture pic;
        while (in.next(pic))
            ;
        frames = in.framesRead();
    }
    std::printf("%s: %s, %s, %dx%d, %ld frame%s, %zu bytes a frame\n", in.name().c_str(),
                containerName(in.container()), formatInfo(in.fmt()).name, in.width(), in.height(), frames,
                frames == 1 ? "" : "s", frameBytes(in.fmt(), in.width(), in.height()));
    return kExitOk;
}

int listOps()
{
    std::printf("%-38s %-8s    %-8s %-6s %-15s %s\n", "operation", "input", "output", "matrix", "commands", "what it does");
    for (const OpSpec *op : allOps()) {
        const std::string matrix = op->matrix ? "BT." + std::to_string(op->matrix) : "";
        std::printf("%-38s %-8s -> %-8s %-6s %-15s %s\n", op->name, formatInfo(op->in).name, formatInfo(op->out).name,
                    matrix.c_str(), op->command, op->what);
    }
    return kExitOk;
}

} // namespace pixmill::tools
