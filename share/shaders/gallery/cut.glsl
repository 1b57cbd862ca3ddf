// The face of the cut. Nothing is drawn there: through the opening one sees the back faces of the
// closed block, and each of their fragments takes the colour of the place where the line of sight
// went through the plane.
uniform float cutX, cutY;  // where the plane looks to
uniform float cutOffset;   // how far it lies from the middle, metres

vec3 cutColour()
{
    vec3 eye = gl_ModelViewMatrixInverse[3].xyz;
    vec3 sight = ground - eye;
    vec2 normal = vec2(cutX, cutY);
    float way = (cutOffset - dot(normal, eye.xy)) / dot(normal, sight.xy);
    return litWall(1.1 * strataColour(eye + way * sight), normal);
}

// A dark rim where the surface ends at the cut.
vec3 rimmed(vec3 colour)
{
    float distance = cutOffset - dot(vec2(cutX, cutY), ground.xy);
    float pixels = distance / max(fwidth(distance), 1e-5);
    return mix(vec3(0.20, 0.12, 0.08), colour, clamp(pixels - 0.7, 0.0, 1.0));
}
