// Layers of rock on the faces of the block.
uniform float layerThickness;
uniform float blockSize;

vec3 layerColour(float number)
{
    float chance = fract(sin(number * 12.9898) * 43758.5453);
    return mix(vec3(0.46, 0.35, 0.28), vec3(0.80, 0.69, 0.53), chance);
}

vec3 strataColour(vec3 place)
{
    vec2 wave = sin(place.xy / blockSize * vec2(9.0, 7.0));
    float layer = place.z / layerThickness + 0.45 * (wave.x + wave.y);
    float blend = clamp(fract(layer) / max(fwidth(layer), 1e-5), 0.0, 1.0);
    return mix(layerColour(floor(layer) - 1.0), layerColour(floor(layer)), blend);
}
