#version 150

// SPDX-License-Identifier: MIT
//
// The part of the utilities that belongs to the fragment stage. There is no getDrawID here: with base
// instances the draw id is known in the vertex stage alone, and the application's vertex shader passes it on.

// Keeps the unit from being empty, which some compilers and linkers do not take.
void vrkUtilitiesFragDUMMY(void)
{
}
