#version 150
// SPDX-License-Identifier: MIT

#include "VrkUtilities.glslh"
#include "Output.glslh"
#include "Environment.glslh"

in vec3 vo_Direction;

out vec4 o_Color;

void main()
{
    o_Color = displayed(environmentAt(normalize(vo_Direction)));
}
