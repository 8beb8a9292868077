// SPDX-License-Identifier: MIT
#include "support/FloorProfile.h"

#include <QByteArray>
#include <QByteArrayList>

namespace Harrow::Vrk::Test
{
namespace
{

// Mesa warns that some of these cannot be disabled, and leaves them out all the same.
constexpr const char* kHiddenExtensions[] = {
    "GL_ARB_base_instance",
    "GL_ARB_bindless_texture",
    "GL_ARB_blend_func_extended",
    "GL_ARB_buffer_storage",
    "GL_ARB_compute_shader",
    "GL_ARB_debug_output",
    "GL_ARB_direct_state_access",
    "GL_ARB_draw_indirect",
    "GL_ARB_get_program_binary",
    "GL_ARB_multi_bind",
    "GL_ARB_multi_draw_indirect",
    "GL_ARB_parallel_shader_compile",
    "GL_ARB_program_interface_query",
    "GL_ARB_shader_atomic_counters",
    "GL_ARB_shader_draw_parameters",
    "GL_ARB_shader_image_load_store",
    "GL_ARB_shader_storage_buffer_object",
    "GL_ARB_tessellation_shader",
    "GL_ARB_texture_cube_map_array",
    "GL_ARB_texture_filter_anisotropic",
    "GL_EXT_base_instance",
    "GL_EXT_blend_func_extended",
    "GL_EXT_buffer_storage",
    "GL_EXT_direct_state_access",
    "GL_EXT_multi_draw_indirect",
    "GL_EXT_texture_filter_anisotropic",
    "GL_KHR_debug",
    "GL_KHR_parallel_shader_compile",
};

} // namespace

bool isFloorProfile()
{
    return qEnvironmentVariableIsSet("VRK_TEST_FLOOR");
}

void applyFloorProfile()
{
    if (!isFloorProfile())
        return;
    QByteArrayList overrides;
    for (const char* const name : kHiddenExtensions)
        overrides.append(QByteArray("-") + name);
    qputenv("MESA_EXTENSION_OVERRIDE", overrides.join(' '));
    qputenv("MESA_GL_VERSION_OVERRIDE", "3.2");
}

} // namespace Harrow::Vrk::Test
