#version 150
// SPDX-License-Identifier: MIT

#include "VrkUtilities.glslh"
#include "Output.glslh"

in vec2 vo_TexCoord;

out vec4 o_Color;

const vec3 kTop = vec3(0.030, 0.037, 0.048);
const vec3 kBottom = vec3(0.125, 0.135, 0.147);

void main()
{
    vec3 light = mix(kBottom, kTop, smoothstep(0.0, 1.0, vo_TexCoord.y));
    light *= 1.0 - 0.35 * dot(vo_TexCoord - 0.5, vo_TexCoord - 0.5);

    // A step of the screen is wider than a pixel here; half a step of noise keeps it from showing as a band.
    float noise = fract(52.9829189 * fract(dot(gl_FragCoord.xy, vec2(0.06711056, 0.00583715))));
    o_Color = displayed(light) + vec4(vec3(noise - 0.5) / 255.0, 0.0);
}
