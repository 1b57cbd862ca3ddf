varying vec2 place;
#include "lamp.glsl"

vec3 light()
{
    return lamp(length(place));
}
