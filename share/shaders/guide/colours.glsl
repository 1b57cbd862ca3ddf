const vec3 paper = vec3(1.0, 1.0, 1.0);
const vec3 ink = vec3(0.0, 0.2, 0.4);
