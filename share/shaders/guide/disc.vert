varying vec2 place;  // in the window, from -1 to 1

void main()
{
    place = gl_Vertex.xy;
    gl_Position = gl_Vertex;
}
