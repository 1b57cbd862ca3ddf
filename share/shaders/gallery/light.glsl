// Light of a sun and of the whole sky.
uniform float exaggeration;
uniform float sunX, sunY, sunZ;  // where the sun stands

vec3 lit(vec3 colour, vec3 normal)
{
    float sun = max(dot(normal, vec3(sunX, sunY, sunZ)), 0.0);
    float sky = 0.5 + 0.5 * normal.z;
    return colour * (sun * vec3(0.78, 0.74, 0.66) + sky * vec3(0.52, 0.55, 0.60));
}

// Walls get light from the ground too, so that one in the shade still shows its layers.
vec3 litWall(vec3 colour, vec2 normal)
{
    return colour * (0.92 + 0.25 * dot(normal, vec2(sunX, sunY)));
}
