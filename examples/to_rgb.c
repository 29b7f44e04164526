/* Smallest use of the library from C: a 2x2 4:2:0 frame to R,G,B bytes. */
#include <stdio.h>

#include "pixmill.h"

int main(void)
{
    uint8_t y[4] = {81, 82, 83, 84}, u[1] = {90}, v[1] = {240};
    uint8_t rgb[2 * 2 * 3];
    Frame frame = {y, u, v, 2, 2, 0};
    int i;

    gEmYUV420toRGB888TopDown(&frame, rgb, 2, 2, 1);
    for (i = 0; i < 4; ++i)
        printf("pixel %d: R=%u G=%u B=%u\n", i, rgb[3 * i], rgb[3 * i + 1], rgb[3 * i + 2]);
    return 0;
}
