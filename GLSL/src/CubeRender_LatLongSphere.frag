#version 150

// SPDX-License-Identifier: MIT
//
// From a map by latitude and longitude: up at v 0, +x at u 0, +z at u 0.25.

uniform sampler2D s_texture;

const float kPi = 3.14159265358979;

in vec3 it_normal;

out vec4 o_ZelFragData[1];

// Nothing of the library defines the name; it stands for a function of Func_ColorSpace.glslc.
#ifdef ZEL_CUBERENDER_CONVERT_COLORSPACE
vec4 ZEL_CUBERENDER_CONVERT_COLORSPACE(vec4 color);
#endif

void main()
{
    vec3 n = normalize(it_normal);
    float Phi = acos(clamp(n.y, -1.0, 1.0));
    float horizontal = length(n.xz); // 0 at the poles, which have no longitude
    float Theta = horizontal > 0.0 ? acos(clamp(n.x / horizontal, -1.0, 1.0)) : 0.0;
    if (n.z < 0.0)
        Theta = 2.0 * kPi - Theta;
    vec2 uv = vec2(Theta / (2.0 * kPi), Phi / kPi);
    vec4 color = texture(s_texture, uv);
#ifdef ZEL_CUBERENDER_CONVERT_COLORSPACE
    color = ZEL_CUBERENDER_CONVERT_COLORSPACE(color);
#endif
    o_ZelFragData[0] = vec4(color.rgb, 1.0);
}
