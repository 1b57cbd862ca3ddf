// Colours of the ground seen from above: by height with HYPSOMETRY, by steepness with SLOPE, with
// contour lines over it with CONTOURS, lit with RELIEF.
uniform float lowest, highest;
uniform float contourInterval;
uniform int indexEvery;  // one contour line in so many is bold

// Colour number k of five, blended: k runs from 0 to 4.
vec3 ramp(float k, vec3 a, vec3 b, vec3 c, vec3 d, vec3 e)
{
    vec3 colour = mix(a, b, clamp(k, 0.0, 1.0));
    colour = mix(colour, c, clamp(k - 1.0, 0.0, 1.0));
    colour = mix(colour, d, clamp(k - 2.0, 0.0, 1.0));
    return mix(colour, e, clamp(k - 3.0, 0.0, 1.0));
}

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
    float height = (ground.z - lowest) / (highest - lowest);
    colour = ramp(4.0 * height, vec3(0.45, 0.65, 0.47), vec3(0.72, 0.80, 0.52),
                  vec3(0.95, 0.88, 0.65), vec3(0.82, 0.63, 0.46), vec3(0.98, 0.96, 0.93));
#endif
#ifdef SLOPE
    float steepness = degrees(atan(length(slope)));
    colour = ramp(steepness / 7.0, vec3(0.98, 0.96, 0.88), vec3(0.93, 0.87, 0.66),
                  vec3(0.92, 0.70, 0.40), vec3(0.83, 0.45, 0.30), vec3(0.58, 0.23, 0.30));
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
