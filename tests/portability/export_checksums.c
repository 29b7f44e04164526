/* Calls every export of pixmill on fixed inputs and prints one checksum per
 * export: FNV-1a over each call's result and its whole output buffer (bytes
 * it does not write keep a fill pattern, so they count too). The same program
 * built for another CPU or system must print the same lines; the cross tests
 * compare them with a native run. Plain C99, no argument, exit status 0.
 * The threads test runs pixmillChecksums() from many threads at once. */
#include <stddef.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "pixmill.h"

enum { W = 64, H = 48 };

/* The Frame record has the field order and sizes of the ABI. */
typedef char check_width_offset[offsetof(Frame, width) == 3 * sizeof(void *) ? 1 : -1];
typedef char check_height_offset[offsetof(Frame, height) == 3 * sizeof(void *) + 2 ? 1 : -1];
typedef char check_tag_offset[offsetof(Frame, tag) == 3 * sizeof(void *) + 4 ? 1 : -1];
typedef char check_rotation_size[sizeof(Rotation) == 4 ? 1 : -1];

typedef void (*ChecksumLine)(const char *name, uint32_t hash, void *context);

/* One run: the inputs, the output buffer (64 KiB, as words and as bytes) and
 * the hash of the export at hand. */
typedef struct {
    uint8_t src420[W * H * 3 / 2], src422[W * H * 2], packed[W * H * 2], bgr[W * H * 3];
    uint16_t rgb565[W * H], out16[32768];
    uint8_t *out;
    uint32_t hash;
    int exports;
    ChecksumLine line;
    void *context;
} Run;
typedef char check_inputs_first[offsetof(Run, rgb565) == W * H * 17 / 2 ? 1 : -1];

static void mix(Run *r, const void *bytes, size_t n)
{
    const uint8_t *p = (const uint8_t *)bytes;
    size_t i;
    for (i = 0; i < n; ++i)
        r->hash = (r->hash ^ p[i]) * 16777619u;
}

static void fill(Run *r) { memset(r->out16, 0xA5, sizeof r->out16); }

/* One call done: its result and the whole output buffer go into the hash. */
static void take(Run *r, int32_t result)
{
    uint8_t b[4];
    int i;
    for (i = 0; i < 4; ++i)
        b[i] = (uint8_t)((uint32_t)result >> 8 * i);
    mix(r, b, 4);
    mix(r, r->out16, sizeof r->out16);
    fill(r);
}

static void report(Run *r, const char *name)
{
    r->line(name, r->hash, r->context);
    r->hash = 2166136261u;
    ++r->exports;
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

static void makeInputs(Run *r)
{
    uint32_t x = 0x12345678u;
    size_t i;
#define NEXT (x ^= x << 13, x ^= x >> 17, x ^= x << 5, x)
    /* src420, src422, packed and bgr in turn: the bytes the record starts with. */
    for (i = 0; i < offsetof(Run, rgb565); ++i)
        ((uint8_t *)r)[i] = (uint8_t)NEXT;
    for (i = 0; i < W * H; ++i)
        r->rgb565[i] = (uint16_t)NEXT;
#undef NEXT
}

static void wholeImageConversions(Run *r, const Frame *f420, const Frame *f422)
{
    gEmYUV420toRGB888TopDown(f420, r->out, W, H, 1), take(r, 0);
    gEmYUV420toRGB888TopDown(f420, r->out, 37, 25, 0), take(r, 0);
    report(r, "gEmYUV420toRGB888TopDown");
    gEmYUV420toRGB565TopDown(f420, r->out16, W, H, 1), take(r, 0);
    gEmYUV420toRGB565TopDown(f420, r->out16, 37, 25, 0), take(r, 0);
    report(r, "gEmYUV420toRGB565TopDown");
    take(r, gYUV420toBGR24(f420, r->out, 3 * W));
    take(r, gYUV420toBGR24(f420, r->out, 3 * W + 8));
    take(r, gYUV420toBGR24(f420, r->out, 3 * W - 1));
    report(r, "gYUV420toBGR24");
    gYUV422HPlanartoBGR888TopDown(f422, r->out, W, H, 1), take(r, 0);
    gYUV422HPlanartoBGR888TopDown(f422, r->out, 37, 25, 0), take(r, 0);
    report(r, "gYUV422HPlanartoBGR888TopDown");
    gYUV422HPlanartoRGB888TopDown(f422, r->out, W, H, 1), take(r, 0);
    gYUV422HPlanartoRGB888TopDown(f422, r->out, 37, 25, 0), take(r, 0);
    report(r, "gYUV422HPlanartoRGB888TopDown");
}

static void rectangleConversions(Run *r, const Frame *f420, const Frame *f422)
{
    uint32_t k;
    for (k = 0; k < 4; ++k)
        take(r, gYUV420toBGR565TopDown_Rotate(f420, r->out16, 4, 6, 40, 30, 2, 2, 48, 48, k));
    report(r, "gYUV420toBGR565TopDown_Rotate");
    for (k = 0; k < 4; ++k)
        take(r, gYUV420toRGB16Rotate(f420, r->out16, 48, 48, 2, 2, 4, 6, 40, 30, k));
    report(r, "gYUV420toRGB16Rotate");
    for (k = 0; k < 4; ++k)
        take(r, gYUV422toRGB16Rotate(f422, r->out16, 48, 48, 2, 2, 4, 6, 40, 30, k));
    report(r, "gYUV422toRGB16Rotate");
    for (k = 0; k < 4; ++k)
        take(r, gYUV422HPlanartoBGR565TopDown_Rotate(f422, r->out16, 4, 6, 40, 30, 2, 2, 48, 48, k));
    report(r, "gYUV422HPlanartoBGR565TopDown_Rotate");
}

static void intoYuv420(Run *r, const Frame *f420, const Frame *f422)
{
    (void)f420;
    Frame t = frameOver(r->out, W, H, 0);
    gEmRGB565toYUV420(r->rgb565, &t, W, H), take(r, 0);
    gEmRGB565toYUV420(r->rgb565, &t, 37, 25), take(r, 0);
    report(r, "gEmRGB565toYUV420");
    gBGR24INTtoYUV420Planar(r->bgr, r->out, W, H, 3 * W), take(r, 0);
    gBGR24INTtoYUV420Planar(r->bgr + 3 * W * (H - 1), r->out, W, H, -3 * W), take(r, 0);
    report(r, "gBGR24INTtoYUV420Planar");
    t = frameOver(r->out, W, H, 0);
    take(r, gY1UY2VToYUV420(r->packed, &t, W, H));
    report(r, "gY1UY2VToYUV420");
    take(r, gY1UY2VToYV12(r->packed, &t, W, H));
    report(r, "gY1UY2VToYV12");
    take(r, gUY1VY2ToYUV420(r->packed, &t, W, H));
    report(r, "gUY1VY2ToYUV420");
    YUY2toYUV420(r->packed, r->out, W, H), take(r, 0);
    report(r, "YUY2toYUV420");
    t = frameOver(r->out, 40, 30, 0);
    take(r, gYUV422toYUV420(f422, &t, 4, 2, 50, 40));
    t = frameOver(r->out, 100, 70, 0);
    take(r, gYUV422toYUV420(f422, &t, 0, 0, W, H));
    report(r, "gYUV422toYUV420");
}

static void rotationAndMirroring(Run *r, const Frame *f420, const Frame *f422)
{
    Frame d420 = frameOver(r->out, W, H, 0), d422 = frameOver(r->out, W, H, 1);
    uint32_t k;
    for (k = 0; k < 4; ++k)
        gRotateFrame(f420, &d420, k), take(r, 0);
    report(r, "gRotateFrame");
    for (k = 0; k < 4; ++k)
        gRotate422Frame(f422, &d422, k), take(r, 0);
    report(r, "gRotate422Frame");
    for (k = 0; k < 4; ++k)
        gRotateMonochromeFrame(f420, &d420, k), take(r, 0);
    report(r, "gRotateMonochromeFrame");
    for (k = 0; k < 4; ++k)
        take(r, gRotateRGB16(r->rgb565, r->out16, W, H, 3, 5, 30, 20, 2, 1, 40, 40, k));
    report(r, "gRotateRGB16");
    for (k = 0; k < 4; ++k)
        take(r, gRotateRGB16toBGR24(r->rgb565, r->out, W, H, 3, 5, 30, 20, 2, 1, 40, 40 * 3 + 2, k));
    report(r, "gRotateRGB16toBGR24");
    for (k = 0; k < 3; ++k)
        take(r, gMirrorImageRGB565(r->rgb565, r->out16, W, H, k));
    report(r, "gMirrorImageRGB565");
    for (k = 0; k < 3; ++k) {
        Frame s420 = *f420, s422 = *f422, in;
        take(r, gMirrorImageYUV(&s420, &d420, 0, k, 1));
        take(r, gMirrorImageYUV(&s422, &d422, 1, k, 1));
        memcpy(r->out, r->src420, sizeof r->src420);
        in = frameOver(r->out, W, H, 0);
        take(r, gMirrorImageYUV(&in, NULL, 0, k, 0));
    }
    report(r, "gMirrorImageYUV");
}

static void scaling(Run *r, const Frame *f420, const Frame *f422)
{
    Frame t = frameOver(r->out, 40, 30, 0);
    gScaleFrame(f420, &t), take(r, 0);
    t = frameOver(r->out, 100, 70, 0);
    gScaleFrame(f420, &t), take(r, 0);
    report(r, "gScaleFrame");
    t = frameOver(r->out, 32, 24, 0);
    gScaleCroppedFrame(f420, &t, 4, 6, 40, 30), take(r, 0);
    report(r, "gScaleCroppedFrame");
    t = frameOver(r->out, 32, 24, 1);
    gScaleCroppedFrameYUV422(f422, &t, 4, 6, 40, 30), take(r, 0);
    report(r, "gScaleCroppedFrameYUV422");
    gScaleRGB565Frame(r->rgb565, r->out16, W, H, 40, 30), take(r, 0);
    gScaleRGB565Frame(r->rgb565, r->out16, W, H, 90, 70), take(r, 0);
    report(r, "gScaleRGB565Frame");
    gScaleRGB565CroppedFrame(r->rgb565, r->out16, W, H, 40, 30, 4, 6, 40, 30), take(r, 0);
    report(r, "gScaleRGB565CroppedFrame");
    t = frameOver(r->out, 32, 24, 0);
    gScaleCroppedFrame_downby2(f420, &t, 0, 0, W, H), take(r, 0);
    report(r, "gScaleCroppedFrame_downby2");
    t = frameOver(r->out, 2 * W, 2 * H, 0);
    gScaleCroppedFrame_upby2(f420, &t, 0, 0, W, H), take(r, 0);
    report(r, "gScaleCroppedFrame_upby2");
    t = frameOver(r->out, W, H, 0);
    gScaleCroppedFrame_upby4(f420, &t, 8, 4, 16, 12), take(r, 0);
    report(r, "gScaleCroppedFrame_upby4");
    t = frameOver(r->out, 48, 36, 0);
    gScaleCroppedFrame_downto3by3(f420, &t, 0, 0, W, H), take(r, 0);
    report(r, "gScaleCroppedFrame_downto3by3");
}

/* Calls every export, the families from the `first` on, and hands `line`
 * each one's name and checksum; returns how many exports were called. */
int pixmillChecksums(int first, ChecksumLine line, void *context);
int pixmillChecksums(int first, ChecksumLine line, void *context)
{
    static void (*const sections[5])(Run *, const Frame *, const Frame *) = {
        wholeImageConversions, rectangleConversions, intoYuv420, rotationAndMirroring, scaling};
    Frame f420, f422;
    int exports, i;
    Run *r = (Run *)calloc(1, sizeof(Run));
    if (r == NULL)
        return 0;
    r->out = (uint8_t *)r->out16;
    r->hash = 2166136261u;
    r->line = line;
    r->context = context;
    makeInputs(r);
    fill(r);
    f420 = frameOver(r->src420, W, H, 0);
    f422 = frameOver(r->src422, W, H, 1);
    for (i = 0; i < 5; ++i)
        sections[(first + i) % 5](r, &f420, &f422);
    exports = r->exports;
    free(r);
    return exports;
}

#ifndef PIXMILL_CHECKSUMS_NO_MAIN
static void printLine(const char *name, uint32_t hash, void *context)
{
    (void)context;
    printf("%-40s %08lx\n", name, (unsigned long)hash);
}

int main(void)
{
    printf("%d exports called\n", pixmillChecksums(0, printLine, NULL));
    return 0;
}
#endif
