// What both stages share.
varying vec3 ground;  // place in the model, metres: east, north, up
varying vec2 slope;   // normal of the surface that is not exaggerated, its z is 1
