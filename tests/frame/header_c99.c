/* The public header compiles as C99 and links; the Frame record has the
 * field order and sizes of the ABI. */
#include <stddef.h>
#include "pixmill.h"

typedef char check_width_offset[offsetof(Frame, width) == 3 * sizeof(void *) ? 1 : -1];
typedef char check_height_offset[offsetof(Frame, height) == 3 * sizeof(void *) + 2 ? 1 : -1];
typedef char check_tag_offset[offsetof(Frame, tag) == 3 * sizeof(void *) + 4 ? 1 : -1];
typedef char check_rotation_size[sizeof(Rotation) == 4 ? 1 : -1];

int main(void)
{
    uint8_t y[4] = {81, 82, 83, 84}, u[1] = {90}, v[1] = {240}, out[12];
    Frame f;
    f.y = y;
    f.u = u;
    f.v = v;
    f.width = 2;
    f.height = 2;
    f.tag = 0;
    gEmYUV420toRGB888TopDown(&f, out, 2, 2, 1);
    return out[0] == 238 && out[11] == 16 ? 0 : 1;
}
