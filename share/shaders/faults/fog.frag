// The file is called haze.glsl.
#include "hase.glsl"

void main()
{
    gl_FragColor = haze;
}
