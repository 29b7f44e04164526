/* A camera-to-screen chain from C: a packed Y0 U Y1 V image is unpacked into
 * a 4:2:0 frame, reduced to a quarter of its area, and put on an RGB565
 * surface in a rectangle, turned a quarter. The host owns every buffer. */
#include <stdio.h>
#include <stdlib.h>

#include "pixmill.h"

enum { W = 64, H = 48, SW = 80, SH = 60 };

int main(void)
{
    static uint8_t packed[W * H * 2];
    static uint8_t y[W * H], u[(W / 2) * (H / 2)], v[(W / 2) * (H / 2)];
    static uint8_t hy[(W / 2) * (H / 2)], hu[(W / 4) * (H / 4)], hv[(W / 4) * (H / 4)];
    static uint16_t surface[SW * SH];
    Frame camera = {y, u, v, 0, 0, 0};
    Frame half = {hy, hu, hv, W / 2, H / 2, 0};
    int i, result;

    for (i = 0; i < W * H * 2; ++i) /* a ramp of luma, chroma near neutral */
        packed[i] = (uint8_t)(i % 2 ? 128 + (i / 2 % 16) : (i / 2) % W * 4);

    gY1UY2VToYUV420(packed, &camera, W, H); /* sets camera.width/height */
    gScaleCroppedFrame_downby2(&camera, &half, 0, 0, W, H);
    /* The half-size frame lands at (10, 4) of the surface, turned clockwise:
     * it takes H/2 columns and W/2 rows there. */
    result = gYUV420toRGB16Rotate(&half, surface, SW, SH, 10, 4, 0, 0, W / 2, H / 2, ROTATE_90);
    if (result != 0)
        return EXIT_FAILURE;

    printf("camera %ux%u, reduced to %ux%u\n", camera.width, camera.height, half.width, half.height);
    printf("surface pixel (10, 4) = 0x%04X, (%d, %d) = 0x%04X\n", surface[4 * SW + 10], 10 + H / 2 - 1,
           4 + W / 2 - 1, surface[(4 + W / 2 - 1) * SW + 10 + H / 2 - 1]);
    return EXIT_SUCCESS;
}
