#version 150
// SPDX-License-Identifier: MIT

#include "VrkUtilities.glslh"
#include "Frame.glslh"

// Mirrored by ObjectRecord in GpuScene.cpp.
struct ObjectRecord
{
    mat4 worldFromModel;
    mat3 normalFromModel;    // to world space, also where the matrix above scales unevenly or mirrors
    vec4 baseColor;          // linear
    vec4 surface;            // x: roughness, y: metallic
};

layout(std140) uniform u_Objects
{
    ObjectRecord u_Object[OBJECT_CAPACITY];
};

in vec3 va_Vertex;
in vec3 va_Normal;

out vec3 vo_Position;
out vec3 vo_Normal;
flat out vec3 vo_BaseColor;
flat out vec2 vo_Surface;

void main()
{
    uint object = getDrawID();
    vec4 position = u_Object[object].worldFromModel * vec4(va_Vertex, 1.0);
    vo_Position = position.xyz;
    vo_Normal = u_Object[object].normalFromModel * va_Normal;
    vo_BaseColor = u_Object[object].baseColor.rgb;
    vo_Surface = u_Object[object].surface.xy;
    gl_Position = u_ClipFromWorld * position;
}
