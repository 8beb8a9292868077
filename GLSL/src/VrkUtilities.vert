#version 150

// SPDX-License-Identifier: MIT
//
// The part of the utilities that belongs to the vertex stage: the draw id when the draws are told apart by
// their base instance. The extension line has to stand before any declaration.

#ifdef DRAW_BUFFER_USE_BASE_INSTANCE
#extension GL_ARB_shader_draw_parameters : enable
#endif

#include "VrkUtilities.glslh"

#ifdef DRAW_BUFFER_USE_BASE_INSTANCE

// The base instance is the id of the first instance of the draw, and gl_InstanceID counts from 0 in each
// draw. So instance i gets the number that u_DrawID would hold for it.
uint getDrawID(void)
{
    return uint(gl_BaseInstanceARB + gl_InstanceID);
}

#endif // DRAW_BUFFER_USE_BASE_INSTANCE

// Keeps the unit from being empty, which some compilers and linkers do not take.
void vrkUtilitiesVertDUMMY(void)
{
}
