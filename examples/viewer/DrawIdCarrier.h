// SPDX-License-Identifier: MIT
// The ways in which the number of a draw can reach the shader: a choice for the whole process, made on the command line
// and carried out by the renderer.
#pragma once

namespace vrkview
{

enum class DrawIdCarrier
{
    Automatic,    ///< base instances where the driver has them, else the uniform
    Uniform,      ///< a uniform set before each draw
    BaseInstance, ///< the base instance of the draw call
};

} // namespace vrkview
