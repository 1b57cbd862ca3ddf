// Colours of the ground seen from above: by height with HYPSOMETRY, with contour lines over it with
// CONTOURS, lit with RELIEF.
uniform sampler1D colours;
uniform float lowest, highest;
uniform float contourInterval;
uniform int indexEvery;  // one contour line in so many is bold

// How much of a pixel a line covers that runs where `value` is a whole number. Level ground has no
// line, and where lines would run together they fade.
float lineCover(float value, float width)
{
    float perPixel = fwidth(value);
    float pixels = abs(fract(value + 0.5) - 0.5) / max(perPixel, 1e-5);
    float cover = clamp(0.5 * width + 0.5 - pixels, 0.0, 1.0);
    return perPixel > 3e-4 ? cover * clamp(1.6 - 2.5 * perPixel, 0.0, 1.0) : 0.0;
}

vec3 surfaceColour()
{
    vec3 colour = vec3(0.85);
#ifdef HYPSOMETRY
    colour = texture1D(colours, (ground.z - lowest) / (highest - lowest)).rgb;
#endif
#ifdef RELIEF
    colour = lit(colour, normalize(vec3(slope * exaggeration, 1.0)));
#endif
#ifdef CONTOURS
    float thin = lineCover(ground.z / contourInterval, 0.9);
    float bold = lineCover(ground.z / (contourInterval * float(indexEvery)), 1.9);
    colour = mix(colour, vec3(0.22, 0.13, 0.06), max(0.6 * thin, 0.9 * bold));
#endif
    return colour;
}
