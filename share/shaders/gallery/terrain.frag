// The terrain block. STRATA draws its walls and BACKDROP the picture's background, else this is
// the surface; ENABLE_CLIPVERTEX says that a plane cuts it open.
#include "varyings.glsl"
#include "light.glsl"
#include "surface.glsl"
#include "strata.glsl"
#include "cut.glsl"

uniform float faceX, faceY;  // where the wall being drawn looks to

void main()
{
#if defined(BACKDROP)
    vec3 colour = mix(vec3(0.83, 0.86, 0.89), vec3(0.97, 0.97, 0.96), 0.5 - 0.5 * ground.y);
#elif defined(STRATA)
    vec3 colour = litWall(strataColour(ground), vec2(faceX, faceY));
#else
    vec3 colour = surfaceColour();
#endif
#ifdef ENABLE_CLIPVERTEX
#ifndef STRATA
    colour = rimmed(colour);
#endif
    vec3 inside = cutColour();
    if (!gl_FrontFacing) colour = inside;
#endif
    gl_FragColor = vec4(colour, 1.0);
}
