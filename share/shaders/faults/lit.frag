// Its fault is two includes away.
#include "light.glsl"

void main()
{
    gl_FragColor = vec4(light(), 1.0);
}
