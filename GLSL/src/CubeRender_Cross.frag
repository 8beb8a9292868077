#version 150

// SPDX-License-Identifier: MIT
//
// From an unfolded cube: a cross of six cells, upright or lying.

uniform sampler2D s_texture;

// From a direction whose largest component is 1 or -1, and 1, to the cell of the face.
uniform mat4x2 u_ZelNormalToUvMatrix;

in vec3 it_normal;

out vec4 o_ZelFragData[1];

// Nothing of the library defines the name; it stands for a function of Func_ColorSpace.glslc.
#ifdef ZEL_CUBERENDER_CONVERT_COLORSPACE
vec4 ZEL_CUBERENDER_CONVERT_COLORSPACE(vec4 color);
#endif

void main()
{
    vec2 uv = u_ZelNormalToUvMatrix * vec4(it_normal, 1.0);
    vec4 color = texture(s_texture, uv);
#ifdef ZEL_CUBERENDER_CONVERT_COLORSPACE
    color = ZEL_CUBERENDER_CONVERT_COLORSPACE(color);
#endif
    o_ZelFragData[0] = vec4(color.rgb, 1.0);
}
