uniform int steps;
varying vec2 place;

void main()
{
    float grey = floor(length(place) * float(steps)) / float(steps);
    gl_FragColor = vec4(vec3(grey), 1.0);
}
