#include "valley.glsl"
const float hill = 1.0;
