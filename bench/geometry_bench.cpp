// Benchmarks of rotation and mirroring.
#include "bench.h"

namespace pixmill::bench {

// ---- Rotation of a 4:2:0 frame --------------------------------------------
void rotate(Size s)
{
    const Planes &in = sources(s).i420;
    for (int quarter : {1, 2}) {
        const Job job{quarter == 1 ? "i420_rotate90" : "i420_rotate180", s.name(), in.bytes()};
        job.addMemcpy();
        const Size turned = quarter == 1 ? Size{s.h, s.w} : s;
        job.add("pixmill:gRotateFrame", [s, turned, quarter] {
            auto out = std::make_shared<Planes>(turned, false);
            return Step([s, out, quarter] { gRotateFrame(&sources(s).i420.frame, &out->frame, Rotation(quarter)); });
        });
#if PIXMILL_BENCH_LIBYUV
        job.add("libyuv:I420Rotate", [s, turned, quarter] {
            auto out = std::make_shared<Planes>(turned, false);
            return Step([s, out, quarter] {
                const Planes &p = sources(s).i420;
                libyuv::I420Rotate(p.y.data(), s.w, p.u.data(), p.cw, p.v.data(), p.cw, out->y.data(), out->s.w,
                                   out->u.data(), out->cw, out->v.data(), out->cw, s.w, s.h,
                                   quarter == 1 ? libyuv::kRotate90 : libyuv::kRotate180);
            });
        });
#endif
    }
}

} // namespace pixmill::bench
