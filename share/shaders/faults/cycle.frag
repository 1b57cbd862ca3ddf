#include "hill.glsl"

void main()
{
    gl_FragColor = vec4(hill, valley, 0.0, 1.0);
}
