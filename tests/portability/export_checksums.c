/* Calls every export of pixmill on fixed inputs and prints one checksum per
 * export: FNV-1a over each call's result and its whole output buffer (bytes
 * it does not write keep a fill pattern, so they count too). The same program
 * built for another CPU or system must print the same lines; the cross tests
 * compare them with a native run. Plain C99, no argument, exit status 0. */
#include <stdint.h>
#include <stdio.h>
#include <string.h>

#include "pixmill.h"

enum { W = 64, H = 48 };

static uint8_t src420[W * H * 3 / 2], src422[W * H * 2], packed[W * H * 2], bgr[W * H * 3];
static uint16_t rgb565[W * H];
static uint16_t out16[32768]; /* 64 KiB, as words and as bytes */
static uint8_t *const out = (uint8_t *)out16;
static uint32_t hash = 2166136261u;
static int exports;

static void mix(const void *bytes, size_t n)
{
    const uint8_t *p = (const uint8_t *)bytes;
    size_t i;
    for (i = 0; i < n; ++i)
        hash = (hash ^ p[i]) * 16777619u;
}

static void fill(void) { memset(out, 0xA5, sizeof out16); }

/* One call done: its result and the whole output buffer go into the hash. */
static void take(int32_t result)
{
    uint8_t r[4];
    r[0] = (uint8_t)result;
    r[1] = (uint8_t)(result >> 8);
    r[2] = (uint8_t)(result >> 16);
    r[3] = (uint8_t)(result >> 24);
    mix(r, 4);
    mix(out, sizeof out16);
    fill();
}

static void report(const char *name)
{
    printf("%-40s %08lx\n", name, (unsigned long)hash);
    hash = 2166136261u;
    ++exports;
}

static Frame frameOver(uint8_t *base, int w, int h, int is422)
{
    Frame f;
    const size_t luma = (size_t)w * (size_t)h, chroma = (size_t)(w >> 1) * (size_t)(is422 ? h : h >> 1);
    f.y = base;
    f.u = base + luma;
    f.v = base + luma + chroma;
    f.width = (uint16_t)w;
    f.height = (uint16_t)h;
    f.tag = 0x5eedu;
    return f;
}

static void makeInputs(void)
{
    uint32_t x = 0x12345678u;
    size_t i;
#define NEXT (x ^= x << 13, x ^= x >> 17, x ^= x << 5, x)
    for (i = 0; i < sizeof src420; ++i)
        src420[i] = (uint8_t)NEXT;
    for (i = 0; i < sizeof src422; ++i)
        src422[i] = (uint8_t)NEXT;
    for (i = 0; i < sizeof packed; ++i)
        packed[i] = (uint8_t)NEXT;
    for (i = 0; i < sizeof bgr; ++i)
        bgr[i] = (uint8_t)NEXT;
    for (i = 0; i < W * H; ++i)
        rgb565[i] = (uint16_t)NEXT;
#undef NEXT
}

static void wholeImageConversions(const Frame *f420, const Frame *f422)
{
    gEmYUV420toRGB888TopDown(f420, out, W, H, 1), take(0);
    gEmYUV420toRGB888TopDown(f420, out, 37, 25, 0), take(0);
    report("gEmYUV420toRGB888TopDown");
    gEmYUV420toRGB565TopDown(f420, out16, W, H, 1), take(0);
    gEmYUV420toRGB565TopDown(f420, out16, 37, 25, 0), take(0);
    report("gEmYUV420toRGB565TopDown");
    take(gYUV420toBGR24(f420, out, 3 * W));
    take(gYUV420toBGR24(f420, out, 3 * W + 8));
    take(gYUV420toBGR24(f420, out, 3 * W - 1));
    report("gYUV420toBGR24");
    gYUV422HPlanartoBGR888TopDown(f422, out, W, H, 1), take(0);
    gYUV422HPlanartoBGR888TopDown(f422, out, 37, 25, 0), take(0);
    report("gYUV422HPlanartoBGR888TopDown");
    gYUV422HPlanartoRGB888TopDown(f422, out, W, H, 1), take(0);
    gYUV422HPlanartoRGB888TopDown(f422, out, 37, 25, 0), take(0);
    report("gYUV422HPlanartoRGB888TopDown");
}

static void rectangleConversions(const Frame *f420, const Frame *f422)
{
    uint32_t r;
    for (r = 0; r < 4; ++r)
        take(gYUV420toBGR565TopDown_Rotate(f420, out16, 4, 6, 40, 30, 2, 2, 48, 48, r));
    report("gYUV420toBGR565TopDown_Rotate");
    for (r = 0; r < 4; ++r)
        take(gYUV420toRGB16Rotate(f420, out16, 48, 48, 2, 2, 4, 6, 40, 30, r));
    report("gYUV420toRGB16Rotate");
    for (r = 0; r < 4; ++r)
        take(gYUV422toRGB16Rotate(f422, out16, 48, 48, 2, 2, 4, 6, 40, 30, r));
    report("gYUV422toRGB16Rotate");
    for (r = 0; r < 4; ++r)
        take(gYUV422HPlanartoBGR565TopDown_Rotate(f422, out16, 4, 6, 40, 30, 2, 2, 48, 48, r));
    report("gYUV422HPlanartoBGR565TopDown_Rotate");
}

static void intoYuv420(const Frame *f422)
{
    Frame t = frameOver(out, W, H, 0);
    gEmRGB565toYUV420(rgb565, &t, W, H), take(0);
    gEmRGB565toYUV420(rgb565, &t, 37, 25), take(0);
    report("gEmRGB565toYUV420");
    gBGR24INTtoYUV420Planar(bgr, out, W, H, 3 * W), take(0);
    gBGR24INTtoYUV420Planar(bgr + 3 * W * (H - 1), out, W, H, -3 * W), take(0);
    report("gBGR24INTtoYUV420Planar");
    t = frameOver(out, W, H, 0);
    take(gY1UY2VToYUV420(packed, &t, W, H));
    report("gY1UY2VToYUV420");
    take(gY1UY2VToYV12(packed, &t, W, H));
    report("gY1UY2VToYV12");
    take(gUY1VY2ToYUV420(packed, &t, W, H));
    report("gUY1VY2ToYUV420");
    YUY2toYUV420(packed, out, W, H), take(0);
    report("YUY2toYUV420");
    t = frameOver(out, 40, 30, 0);
    take(gYUV422toYUV420(f422, &t, 4, 2, 50, 40));
    t = frameOver(out, 100, 70, 0);
    take(gYUV422toYUV420(f422, &t, 0, 0, W, H));
    report("gYUV422toYUV420");
}

static void rotationAndMirroring(const Frame *f420, const Frame *f422)
{
    Frame d420 = frameOver(out, W, H, 0), d422 = frameOver(out, W, H, 1);
    uint32_t r;
    for (r = 0; r < 4; ++r)
        gRotateFrame(f420, &d420, r), take(0);
    report("gRotateFrame");
    for (r = 0; r < 4; ++r)
        gRotate422Frame(f422, &d422, r), take(0);
    report("gRotate422Frame");
    for (r = 0; r < 4; ++r)
        gRotateMonochromeFrame(f420, &d420, r), take(0);
    report("gRotateMonochromeFrame");
    for (r = 0; r < 4; ++r)
        take(gRotateRGB16(rgb565, out16, W, H, 3, 5, 30, 20, 2, 1, 40, 40, r));
    report("gRotateRGB16");
    for (r = 0; r < 4; ++r)
        take(gRotateRGB16toBGR24(rgb565, out, W, H, 3, 5, 30, 20, 2, 1, 40, 40 * 3 + 2, r));
    report("gRotateRGB16toBGR24");
    for (r = 0; r < 3; ++r)
        take(gMirrorImageRGB565(rgb565, out16, W, H, r));
    report("gMirrorImageRGB565");
    for (r = 0; r < 3; ++r) {
        Frame s420 = *f420, s422 = *f422, in;
        take(gMirrorImageYUV(&s420, &d420, 0, r, 1));
        take(gMirrorImageYUV(&s422, &d422, 1, r, 1));
        memcpy(out, src420, sizeof src420);
        in = frameOver(out, W, H, 0);
        take(gMirrorImageYUV(&in, NULL, 0, r, 0));
    }
    report("gMirrorImageYUV");
}

static void scaling(const Frame *f420, const Frame *f422)
{
    Frame t = frameOver(out, 40, 30, 0);
    gScaleFrame(f420, &t), take(0);
    t = frameOver(out, 100, 70, 0);
    gScaleFrame(f420, &t), take(0);
    report("gScaleFrame");
    t = frameOver(out, 32, 24, 0);
    gScaleCroppedFrame(f420, &t, 4, 6, 40, 30), take(0);
    report("gScaleCroppedFrame");
    t = frameOver(out, 32, 24, 1);
    gScaleCroppedFrameYUV422(f422, &t, 4, 6, 40, 30), take(0);
    report("gScaleCroppedFrameYUV422");
    gScaleRGB565Frame(rgb565, out16, W, H, 40, 30), take(0);
    gScaleRGB565Frame(rgb565, out16, W, H, 90, 70), take(0);
    report("gScaleRGB565Frame");
    gScaleRGB565CroppedFrame(rgb565, out16, W, H, 40, 30, 4, 6, 40, 30), take(0);
    report("gScaleRGB565CroppedFrame");
    t = frameOver(out, 32, 24, 0);
    gScaleCroppedFrame_downby2(f420, &t, 0, 0, W, H), take(0);
    report("gScaleCroppedFrame_downby2");
    t = frameOver(out, 2 * W, 2 * H, 0);
    gScaleCroppedFrame_upby2(f420, &t, 0, 0, W, H), take(0);
    report("gScaleCroppedFrame_upby2");
    t = frameOver(out, W, H, 0);
    gScaleCroppedFrame_upby4(f420, &t, 8, 4, 16, 12), take(0);
    report("gScaleCroppedFrame_upby4");
    t = frameOver(out, 48, 36, 0);
    gScaleCroppedFrame_downto3by3(f420, &t, 0, 0, W, H), take(0);
    report("gScaleCroppedFrame_downto3by3");
}

int main(void)
{
    Frame f420, f422;
    makeInputs();
    fill();
    f420 = frameOver(src420, W, H, 0);
    f422 = frameOver(src422, W, H, 1);
    wholeImageConversions(&f420, &f422);
    rectangleConversions(&f420, &f422);
    intoYuv420(&f422);
    rotationAndMirroring(&f420, &f422);
    scaling(&f420, &f422);
    printf("%d exports called\n", exports);
    return 0;
}
