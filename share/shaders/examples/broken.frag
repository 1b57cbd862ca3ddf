// For two_threads --broken: nothing declares `waves`.
void main()
{
    gl_FragColor = waves;
}
