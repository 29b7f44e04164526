// Makes every reference to a pixmill export weak, so that the benchmarks and
// fuzzers link against a library that does not define every export yet. An
// export that is missing has a null address; callers test it with defined().
#ifndef PIXMILL_WEAK_EXPORTS_H
#define PIXMILL_WEAK_EXPORTS_H

#include "pixmill.h"

#if defined(__GNUC__) && !defined(_WIN32)
#pragma weak gEmYUV420toRGB888TopDown
#pragma weak gEmYUV420toRGB565TopDown
#pragma weak gYUV420toBGR24
#pragma weak gYUV422HPlanartoBGR888TopDown
#pragma weak gYUV422HPlanartoRGB888TopDown
#pragma weak gYUV420toBGR565TopDown_Rotate
#pragma weak gYUV420toRGB16Rotate
#pragma weak gYUV422toRGB16Rotate
#pragma weak gYUV422HPlanartoBGR565TopDown_Rotate
#pragma weak gEmRGB565toYUV420
#pragma weak gBGR24INTtoYUV420Planar
#pragma weak gY1UY2VToYUV420
#pragma weak gY1UY2VToYV12
#pragma weak gUY1VY2ToYUV420
#pragma weak YUY2toYUV420
#pragma weak gYUV422toYUV420
#pragma weak gRotateFrame
#pragma weak gRotate422Frame
#pragma weak gRotateMonochromeFrame
#pragma weak gRotateRGB16
#pragma weak gRotateRGB16toBGR24
#pragma weak gMirrorImageRGB565
#pragma weak gMirrorImageYUV
#pragma weak gScaleFrame
#pragma weak gScaleCroppedFrame
#pragma weak gScaleCroppedFrameYUV422
#pragma weak gScaleRGB565Frame
#pragma weak gScaleRGB565CroppedFrame
#pragma weak gScaleCroppedFrame_downby2
#pragma weak gScaleCroppedFrame_upby2
#pragma weak gScaleCroppedFrame_upby4
#pragma weak gScaleCroppedFrame_downto3by3
#endif

// True when the export is present in the library that was linked.
template <class F>
inline bool defined(F *function)
{
    return function != nullptr;
}

#endif
