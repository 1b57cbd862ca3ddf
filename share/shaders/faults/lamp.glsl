vec3 lamp(float far)
{
    return vec3(1.0 / (1.0 + far * far);
}
