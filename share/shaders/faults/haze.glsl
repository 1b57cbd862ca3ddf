const vec4 haze = vec4(0.8, 0.8, 0.9, 1.0);
