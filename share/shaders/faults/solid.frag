// plain.vert gives it a vec2.
varying vec3 place;

void main()
{
    gl_FragColor = vec4(place, 1.0);
}
