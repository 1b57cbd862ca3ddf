// The terrain block, or with BACKDROP the picture's background.
// The application puts one line in front of this text for each macro; there is no version line,
// because a driver wants that first.
#include "varyings.glsl"

void main()
{
    ground = gl_Vertex.xyz;
    slope = gl_Normal.xy;
#ifdef BACKDROP
    gl_Position = gl_Vertex;
#else
    gl_Position = gl_ModelViewProjectionMatrix * gl_Vertex;
#endif
#ifdef ENABLE_CLIPVERTEX
    gl_ClipVertex = gl_ModelViewMatrix * gl_Vertex;
#endif
}
