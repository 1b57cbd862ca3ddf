// A rectangle from (-1, -1) to (1, 1) fills the picture.
// There is no version line: the application's macros come first, and a driver wants that before.
varying vec2 place;

void main()
{
    place = gl_Vertex.xy;
    gl_Position = gl_Vertex;
}
