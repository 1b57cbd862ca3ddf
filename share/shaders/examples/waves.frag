// Waves: RINGS around the middle, else from side to side.
uniform float phase;  // by how many waves they have moved
#include "waves.glsl"

void main()
{
#ifdef RINGS
    float way = length(place);
#else
    float way = place.x;
#endif
    gl_FragColor = vec4(waveColour(2.0 * way - phase), 1.0);
}
