#include "colours.glsl"

uniform float radius;
varying vec2 place;

void main()
{
    float distance = length(place) / radius;
    vec3 colour = distance < 1.0 ? ink : paper;
#ifdef RINGS
    if (distance < 1.0 && mod(floor(distance * float(RINGS)), 2.0) > 0.5) colour = paper;
#endif
    gl_FragColor = vec4(colour, 1.0);
}
