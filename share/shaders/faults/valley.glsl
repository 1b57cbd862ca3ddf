#include "hill.glsl"
const float valley = 0.0;
