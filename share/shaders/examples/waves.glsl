varying vec2 place;

// From crest, at whole numbers, to trough.
vec3 waveColour(float way)
{
    float height = 0.5 + 0.5 * cos(6.2831853 * way);
    return mix(vec3(0.0, 0.2, 0.4), vec3(0.4, 0.8, 1.0), height);
}
