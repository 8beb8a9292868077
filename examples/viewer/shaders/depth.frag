#version 150
// SPDX-License-Identifier: MIT
// A layer of a shadow map: depth from -1 to 1, and its square for variance maps.

#include "VrkUtilities.glslh"
#include "TextureManager.glslh"
#include "DrawId.glslh"
#instancedata "Material"
#include "Picture.glslh"

in vec3 vo_Position;
in vec3 vo_Normal;
in vec2 vo_TexCoord;

out vec2 o_Depth;

// More than that is a surface seen from its edge.
const float kLargestSlope = 0.01;

void main()
{
    // What changes from pixel to pixel, as long as no pixel is a hole.
    Place place = placeAt(vo_TexCoord);
    float depth = 2.0 * gl_FragCoord.z - 1.0;
    vec2 slope = vec2(dFdx(depth), dFdy(depth));

    if (getBaseColor().a * pictured(place).a < getSurface().z)
        discard;
    // As far back as the surface can be within the texel: or it would shade itself.
    depth += min(abs(slope.x) + abs(slope.y), kLargestSlope);
    o_Depth = vec2(depth, depth * depth + 0.25 * min(dot(slope, slope), kLargestSlope * kLargestSlope));
}
