// This one is good, and so is plain.frag. The others are broken on purpose, for examples/faults.
uniform float height;
varying vec2 place;

void main()
{
    place = gl_Vertex.xy;
    gl_Position = gl_Vertex + vec4(0.0, 0.0, height, 0.0);
}
