/*
 * pixmill — fixed-point image processing for video frames in memory.
 *
 * One header, plain C ABI, usable from C99 and C++. Every operation is one
 * synchronous call over caller-owned memory: nothing is allocated, nothing is
 * kept after the call returns, no floating point is used and no state is
 * shared, so any number of calls may run at once on disjoint memory.
 *
 * Conventions that hold for the whole library
 * -------------------------------------------
 *  - Frame: planar YUV. `width` is also the luma row stride; chroma planes
 *    have a row stride of width >> 1. 4:2:0 chroma has height >> 1 rows,
 *    4:2:2 chroma has height rows. Which layout is read is decided by the
 *    operation called, never by the record.
 *  - RGB565 word: one native-endian 16-bit store per pixel with R in bits
 *    15..11, G in 10..5, B in 4..0 — for every 16-bit output, whatever the
 *    letters (RGB or BGR) in the operation's name say.
 *  - 24-bit pixels: three bytes; each operation states which byte comes
 *    first (R,G,B or B,G,R).
 *  - Colour sets (Q14 fixed point, full-range luma, chroma centred on 128):
 *      BT.601:  Cr->R 22970, Cr->G 11700, Cb->G 5638, Cb->B 29032
 *      BT.709:  Cr->R 25802, Cr->G  7671, Cb->G 3072, Cb->B 30397
 *  - Results: operations return nothing, or int32_t 0 always, or int32_t
 *    0 (ran) / -1 (refused, nothing written). -1 is the only failure value.
 *  - Only the checks each operation documents are made. Buffer sizes and the
 *    Frame pointer itself are never checked: they are the caller's to keep.
 */
#ifndef PIXMILL_H
#define PIXMILL_H

#include <stdint.h>

#if defined(_WIN32) || defined(__CYGWIN__)
#  if defined(PIXMILL_STATIC)
#    define PIXMILL_API
#  elif defined(PIXMILL_BUILDING)
#    define PIXMILL_API __declspec(dllexport)
#  else
#    define PIXMILL_API __declspec(dllimport)
#  endif
#elif defined(__GNUC__)
#  define PIXMILL_API __attribute__((visibility("default")))
#else
#  define PIXMILL_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* A planar YUV image. The record owns nothing; no operation changes the
 * plane pointers. Field order and types are part of the ABI. */
typedef struct Frame {
    uint8_t *y;      /* luma plane, `height` rows of `width` samples */
    uint8_t *u;      /* Cb plane */
    uint8_t *v;      /* Cr plane */
    uint16_t width;  /* luma width in pixels, also the luma row stride */
    uint16_t height; /* luma height in rows */
    uint32_t tag;    /* the caller's own word; only gMirrorImageYUV copies it */
} Frame;

/* Rotation code. Pixel (c, r) of a W x H source lands at:
 *   ROTATE_NONE  (c, r)                 ROTATE_90   (H-1-r, c)   clockwise
 *   ROTATE_180   (W-1-c, H-1-r)         ROTATE_270  (r, W-1-c)   counter-clockwise
 * gYUV420toBGR565TopDown_Rotate and gYUV422HPlanartoBGR565TopDown_Rotate
 * write rows bottom-up and have placements of their own (see them). Most
 * operations read all 32 bits of the code; those two read the low 8 only. */
typedef uint32_t Rotation;
enum { ROTATE_NONE = 0, ROTATE_90 = 1, ROTATE_180 = 2, ROTATE_270 = 3 };

/* Mirror modes. Only 1 and 2 are tested: every other value flips left-right. */
enum { MIRROR_HORIZONTAL = 0, MIRROR_VERTICAL = 1, MIRROR_BOTH = 2 };

/* ---- Planar YUV to 24-bit and RGB565, whole image ---------------------- */

/* 4:2:0 -> packed R,G,B bytes (R at the lowest address), BT.601, no dither.
 * Converts the top-left sourceWidth x sourceHeight pixels into a tight image
 * (pitch 3*sourceWidth). topDown != 0 keeps row order, 0 reverses it. An odd
 * last column/row repeats its neighbour. Served: 2 <= sourceWidth <= width
 * and 2 <= sourceHeight <= height; any other size (0, 1, negative or beyond
 * the frame) writes nothing. */
PIXMILL_API void gEmYUV420toRGB888TopDown(const Frame *frame, uint8_t *destination,
                                          int32_t sourceWidth, int32_t sourceHeight, int32_t topDown);

/* 4:2:0 -> RGB565 words, BT.601, 2x2 dither tied to the source pixel.
 * Same walk, sizes and row order as gEmYUV420toRGB888TopDown; pitch is
 * sourceWidth words. */
PIXMILL_API void gEmYUV420toRGB565TopDown(const Frame *frame, uint16_t *destination,
                                          int32_t sourceWidth, int32_t sourceHeight, int32_t topDown);

/* Whole 4:2:0 frame -> B,G,R bytes (B at the lowest address), BT.709 with
 * rounded chroma terms, odd columns' luma lifted by 1. Rows top-down, `stride`
 * bytes apart. Returns -1 (nothing written) if stride < 3*width, else 0.
 * width and height should be even: an odd last column or row repeats its
 * neighbour, and a width or height of 1 writes nothing. */
PIXMILL_API int32_t gYUV420toBGR24(const Frame *frame, uint8_t *destination, int32_t stride);

/* 4:2:2 planar -> B,G,R bytes (B at the lowest address), BT.601, with the 2x2
 * dither added to the 8-bit values. Both names are one function. Walk, sizes
 * and row order as gEmYUV420toRGB888TopDown. */
PIXMILL_API void gYUV422HPlanartoBGR888TopDown(const Frame *frame, uint8_t *destination,
                                               int32_t sourceWidth, int32_t sourceHeight, int32_t topDown);
PIXMILL_API void gYUV422HPlanartoRGB888TopDown(const Frame *frame, uint8_t *destination,
                                               int32_t sourceWidth, int32_t sourceHeight, int32_t topDown);

/* ---- Planar YUV rectangle to RGB565 with rotation ---------------------- */
/* Each converts a source rectangle into a rectangle of an RGB565 surface
 * (dstW wide = its stride in pixels, dstH high), clipped to the frame and the
 * surface, turned by `rotation`, dithered. Pixels outside the written
 * rectangle keep their values. Return -1 (nothing written) for a null
 * destination/y/u/v or a code above 3, else 0 (also when nothing fits). A
 * corner beyond the frame or the surface, or a size of 1 where only whole
 * 2x2 blocks are converted, leaves nothing to write. */

/* 4:2:0, BT.601. Corner made even (low 16 bits, & 0xfffe); rows are written
 * bottom-up; the low 8 bits of `rotation` count. */
PIXMILL_API int32_t gYUV420toBGR565TopDown_Rotate(const Frame *frame, uint16_t *destination,
                                                  uint32_t srcX, uint32_t srcY, uint16_t srcW, uint16_t srcH,
                                                  uint16_t dstX, uint16_t dstY, uint16_t dstW, uint16_t dstH,
                                                  Rotation rotation);

/* 4:2:0, BT.709. Note the argument order: surface first, then source. The
 * corner's lowest bits are cleared; rows are written top-down and odd sizes
 * are converted in full. Negative corners or surface sizes write nothing. At
 * an odd frame width or height, a rectangle that reaches the last column or
 * row reads chroma column width >> 1 or row height >> 1, one past the plane
 * layout: the caller provides those samples or keeps the rectangle short. */
PIXMILL_API int32_t gYUV420toRGB16Rotate(const Frame *frame, uint16_t *destination,
                                         int32_t dstW, int32_t dstH, int32_t dstX, int32_t dstY,
                                         int32_t srcX, int32_t srcY, int32_t srcW, int32_t srcH,
                                         Rotation rotation);

/* 4:2:2 planar, BT.709, dither of the even-row entries only. Corner and size
 * made even, rows top-down. Negative corners or surface sizes write nothing. */
PIXMILL_API int32_t gYUV422toRGB16Rotate(const Frame *frame, uint16_t *destination,
                                         int32_t dstW, int32_t dstH, int32_t dstX, int32_t dstY,
                                         int32_t srcX, int32_t srcY, int32_t srcW, int32_t srcH,
                                         Rotation rotation);

/* 4:2:2 planar, BT.601. Corner used as given; dstW/dstH are the target's size
 * before the turn; rows bottom-up; the low 8 bits of `rotation` count.
 * Chroma starts at half the corner's luma offset, rows width >> 1 apart: at
 * an odd width and an odd corner the caller's chroma planes hold
 * ((width + 1) >> 1) * height samples. */
PIXMILL_API int32_t gYUV422HPlanartoBGR565TopDown_Rotate(const Frame *frame, uint16_t *destination,
                                                         uint32_t srcX, uint32_t srcY, uint16_t srcW, uint16_t srcH,
                                                         uint16_t dstX, uint16_t dstY, uint16_t dstW, uint16_t dstH,
                                                         Rotation rotation);

/* ---- Into planar 4:2:0 -------------------------------------------------- */

/* RGB565 image (stride sourceWidth) -> the 4:2:0 planes of `frame`, upside
 * down: image row 0 lands on the frame's last row. BT.709 studio range from
 * the raw 5/6-bit levels (white gives Y 230); chroma of each 2x2 block from
 * its top-left pixel. An odd last column or row and the frame area beyond the
 * image are filled by replication, so every plane byte is written. Served:
 * even frame sizes, 2 <= sourceWidth <= width, 1 <= sourceHeight <= height;
 * anything else (an odd frame, an image wider or taller than the frame, a
 * sourceWidth under 2, a sourceHeight of 0) writes nothing. */
PIXMILL_API void gEmRGB565toYUV420(const uint16_t *source, Frame *frame,
                                   uint32_t sourceWidth, uint32_t sourceHeight);

/* B,G,R bytes (B at the lowest address, `stride` bytes per row, may be
 * negative) -> one contiguous 4:2:0 buffer: Y (width*height), then U, then V
 * (each width/2 * height/2). Full-range BT.601 luma; chroma is the mean of
 * each 2x2 block. Odd or zero sizes write nothing. */
PIXMILL_API void gBGR24INTtoYUV420Planar(const uint8_t *source, uint8_t *destination,
                                         uint32_t width, uint32_t height, int32_t stride);

/* Packed 4:2:2 (2 bytes a pixel, rows without gaps) -> planar 4:2:0: pure
 * byte moves, the chroma of odd source rows dropped, never averaged. Byte
 * offsets within each 4-byte group of two pixels:
 *                    luma    -> u   -> v
 *   gY1UY2VToYUV420  0, 2    3      1
 *   gY1UY2VToYV12    0, 2    1      3
 *   gUY1VY2ToYUV420  1, 3    0      2
 *   YUY2toYUV420     0, 2    1 (first chroma plane), 3 (second)
 * The Frame forms first store width and height (cut to 16 bits) into the
 * record, then write (height+1)/2 chroma rows; they return 0, and write no
 * plane for an odd width. YUY2toYUV420 writes one contiguous buffer (Y at 0,
 * chroma planes at w*h and w*h + w*h/4) from height/2 row pairs of width/2
 * groups each; its source is 4-byte aligned. */
PIXMILL_API int32_t gY1UY2VToYUV420(const uint8_t *source, Frame *frame, uint32_t width, uint32_t height);
PIXMILL_API int32_t gY1UY2VToYV12(const uint8_t *source, Frame *frame, uint32_t width, uint32_t height);
PIXMILL_API int32_t gUY1VY2ToYUV420(const uint8_t *source, Frame *frame, uint32_t width, uint32_t height);
PIXMILL_API void YUY2toYUV420(const uint8_t *source, uint8_t *destination, uint32_t width, uint32_t height);

/* Planar 4:2:2 rectangle -> the whole 4:2:0 target frame, cropped and
 * bilinear-scaled to the target's width x height in one pass; chroma comes
 * from the even target rows' source rows (dropped, never averaged). The last
 * two luma columns and rows and the last chroma column and row repeat their
 * neighbours. Served: an even source width, at least 2 source rows, a corner
 * inside the frame, a rectangle (cut to the frame) of at least 1 x 1 and
 * under 8192 x 8192, an even target of at least 4 x 4; otherwise nothing is
 * written. Always returns 0. */
PIXMILL_API int32_t gYUV422toYUV420(const Frame *source, Frame *target,
                                    uint32_t srcX, uint32_t srcY, uint16_t srcW, uint16_t srcH);

/* ---- Rotation and mirroring -------------------------------------------- */

/* Whole-frame quarter turns from the planes of `source` into those of
 * `destination` (record fields other than the plane pointers are neither
 * read nor set). A code outside 0..3 returns at once, writing nothing.
 * gRotateMonochromeFrame reads only the first field (y) of `destination`.
 * All planes are packed and must not overlap; no pointer is checked.
 * ROTATE_NONE copies width*height luma bytes and (width*height) >> 2 (4:2:0)
 * or >> 1 (4:2:2) bytes per chroma plane (at odd sizes more than the chroma
 * layout holds: the caller's planes take that many). The turns need an even
 * width and height (the 4:2:2 half turn: an even width, any height); other
 * sizes write nothing. A 4:2:2 quarter turn reads the even chroma rows only and
 * stores each sample in two adjacent destination rows, so it stays 4:2:2. */
PIXMILL_API void gRotateFrame(const Frame *source, const Frame *destination, Rotation rotation);
PIXMILL_API void gRotate422Frame(const Frame *source, const Frame *destination, Rotation rotation);
PIXMILL_API void gRotateMonochromeFrame(const Frame *source, const Frame *destination, Rotation rotation);

/* Rectangle of a 16-bit surface into a rectangle of another, turned; the
 * pixels are moved whole. Positions are limited to their surfaces, then the
 * size is cut from its far end by the source and by the room on the
 * destination; nothing is made even. Returns -1 for a null buffer or a code
 * outside 0..3, else 0 (also when nothing is left to write). A negative
 * position or surface size is served as an empty rectangle: 0, nothing
 * written. */
PIXMILL_API int32_t gRotateRGB16(const uint16_t *source, uint16_t *destination,
                                 int32_t sourceWidth, int32_t sourceHeight,
                                 int32_t srcX, int32_t srcY, int32_t srcW, int32_t srcH,
                                 int32_t dstX, int32_t dstY, int32_t dstW, int32_t dstH,
                                 Rotation rotation);

/* Rectangle of an RGB565 surface into a rectangle of a 24-bit B,G,R surface
 * (B at the lowest address), turned. Note: height before stride (dstH,
 * dstStride in bytes); the surface is dstStride / 3 pixels wide and spare
 * bytes at the row ends are never written. Each channel's low bits are filled
 * from a 2x2 pattern tied to the rectangle. Clamps and results as
 * gRotateRGB16; a negative dstStride, like a negative position, writes
 * nothing. */
PIXMILL_API int32_t gRotateRGB16toBGR24(const uint16_t *source, uint8_t *destination,
                                        int32_t sourceWidth, int32_t sourceHeight,
                                        int32_t srcX, int32_t srcY, int32_t srcW, int32_t srcH,
                                        int32_t dstX, int32_t dstY, int32_t dstH, int32_t dstStride,
                                        Rotation rotation);

/* Flip a packed 16-bit image (stride sourceWidth) into a second buffer that
 * must not overlap it. mirrorMode: MIRROR_VERTICAL (1) top-bottom,
 * MIRROR_BOTH (2) both, any other value left-right. Returns -1 (nothing
 * written) for a negative size, else 0. */
PIXMILL_API int32_t gMirrorImageRGB565(const uint16_t *source, uint16_t *destination,
                                       int32_t sourceWidth, int32_t sourceHeight, uint32_t mirrorMode);

/* Flip a planar frame in place, or into `destination` when toDestination is
 * 1 (then width, height and tag are copied into it; otherwise `destination`
 * is not looked at and may be null). chromaLayout: 0 = 4:2:0, 1 = 4:2:2
 * (chroma flipped as a plane of height rows), anything else is refused with
 * -1 before anything is written. Modes as gMirrorImageRGB565. A middle row or
 * column at odd sizes is flipped too: every sample of the output is written. */
PIXMILL_API int32_t gMirrorImageYUV(Frame *source, Frame *destination, int32_t chromaLayout,
                                    uint32_t mirrorMode, uint8_t toDestination);

/* ---- Scaling ------------------------------------------------------------ */

/* Bilinear scaling of every plane of `source` into the whole planes of
 * `target`, at the target's width x height: 4:2:0 for gScaleFrame and
 * gScaleCroppedFrame, 4:2:2 planar for gScaleCroppedFrameYUV422. The cropped
 * forms read a source rectangle in luma pixels, cut to the frame; chroma
 * takes every luma quantity halved (rounding down) on the subsampled axes. A
 * null plane in either frame skips that plane alone; a target 1 wide (or, in
 * 4:2:0, 1 high) leaves its chroma planes unwritten. So does, plane by plane,
 * a rectangle that holds no sample (a corner outside the plane, a size of 0)
 * or whose span reaches 8192 samples. */
PIXMILL_API void gScaleFrame(const Frame *source, Frame *target);
PIXMILL_API void gScaleCroppedFrame(const Frame *source, Frame *target,
                                    uint32_t srcX, uint32_t srcY, uint16_t srcW, uint16_t srcH);
PIXMILL_API void gScaleCroppedFrameYUV422(const Frame *source, Frame *target,
                                          uint32_t srcX, uint32_t srcY, uint16_t srcW, uint16_t srcH);

/* Bilinear scaling of a packed RGB565 image (stride = width in pixels), or of
 * a rectangle of it cut to the image, into a whole dstW x dstH image (stride
 * dstW); each channel blended on its own. The last target column and row
 * repeat their neighbours. Nothing is written for a null buffer, a target
 * under 2 x 2, a corner outside the image, a rectangle (cut to the image)
 * under 1 x 2 pixels or an extent of 8192 or more. */
PIXMILL_API void gScaleRGB565Frame(const uint16_t *source, uint16_t *target,
                                   int32_t sourceWidth, int32_t sourceHeight, int32_t dstW, int32_t dstH);
PIXMILL_API void gScaleRGB565CroppedFrame(const uint16_t *source, uint16_t *target,
                                          int32_t sourceWidth, int32_t sourceHeight, int32_t dstW, int32_t dstH,
                                          int32_t srcX, int32_t srcY, int32_t srcW, int32_t srcH);

/* Fixed-ratio 4:2:0 scaling from the corner (srcX, srcY): 2:1, 1:2, 1:4 and
 * 4:3 (4x4 blocks to 3x3). srcW and srcH are accepted and not used. Chroma
 * gets every size and position halved; a null plane skips that plane alone.
 *   downby2:    target TW x TH; TW a multiple of 4, source width >= 2*TW,
 *               2*TH rows read.
 *   upby2:      writes 2W x 2H (source size), whatever the target says.
 *   upby4:      target TW x TH, multiples of 8 and >= 16, from the
 *               TW/4 x TH/4 rectangle at the corner.
 *   downto3by3: target TW x TH, multiples of 6; source width >= TW*4/3,
 *               TH*4/3 rows read.
 * A plane whose sizes are off these forms (or whose source is narrower than
 * a target row consumes) is left unwritten; a corner of 2^31 or more leaves
 * all three unwritten. Rows are read from the corner on at the source's stride,
 * so a source plane reaches the last row read: past width * height for a
 * corner other than (0, 0) or fewer source rows than the ratio reads. */
PIXMILL_API void gScaleCroppedFrame_downby2(const Frame *source, Frame *target,
                                            uint32_t srcX, uint32_t srcY, uint32_t srcW, uint32_t srcH);
PIXMILL_API void gScaleCroppedFrame_upby2(const Frame *source, Frame *target,
                                          uint32_t srcX, uint32_t srcY, uint32_t srcW, uint32_t srcH);
PIXMILL_API void gScaleCroppedFrame_upby4(const Frame *source, Frame *target,
                                          uint32_t srcX, uint32_t srcY, uint32_t srcW, uint32_t srcH);
PIXMILL_API void gScaleCroppedFrame_downto3by3(const Frame *source, Frame *target,
                                               uint32_t srcX, uint32_t srcY, uint32_t srcW, uint32_t srcH);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* PIXMILL_H */
