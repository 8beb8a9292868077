#version 150

// SPDX-License-Identifier: MIT
//
// From a picture of a mirror ball: x and y of the direction are the place.

uniform sampler2D s_texture;

in vec3 it_normal;

out vec4 o_ZelFragData[1];

// Nothing of the library defines the name; it stands for a function of Func_ColorSpace.glslc.
#ifdef ZEL_CUBERENDER_CONVERT_COLORSPACE
vec4 ZEL_CUBERENDER_CONVERT_COLORSPACE(vec4 color);
#endif

void main()
{
    vec3 n = normalize(it_normal);
    vec2 uv = 0.5 * n.xy + 0.5;
    vec4 color = texture(s_texture, uv);
#ifdef ZEL_CUBERENDER_CONVERT_COLORSPACE
    color = ZEL_CUBERENDER_CONVERT_COLORSPACE(color);
#endif
    o_ZelFragData[0] = vec4(color.rgb, 1.0);
}
