// A version has to come first, and the macros of the program come before this file.
#version 120

void main()
{
    gl_FragColor = vec4(1.0);
}
