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
    vec4 surface;            // x: roughness, y: metallic, z: alpha below which there is a hole
    uvec4 image;             // xy: token of the picture that colours it, z: how it wraps along s, w: along t
};

layout(std140) uniform u_Objects
{
    ObjectRecord u_Object[OBJECT_CAPACITY];
};

in vec3 va_Vertex;
in vec3 va_Normal;
in vec2 va_TexCoord;

out vec3 vo_Position;
out vec3 vo_Normal;
flat out vec3 vo_BaseColor;
out vec2 vo_TexCoord;
flat out vec3 vo_Surface;
flat out uvec4 vo_Image;

void main()
{
    uint object = getDrawID();
    vec4 position = u_Object[object].worldFromModel * vec4(va_Vertex, 1.0);
    vo_Position = position.xyz;
    vo_Normal = u_Object[object].normalFromModel * va_Normal;
    vo_BaseColor = u_Object[object].baseColor.rgb;
    vo_Surface = u_Object[object].surface.xyz;
    vo_TexCoord = va_TexCoord;
    vo_Image = u_Object[object].image;
    gl_Position = u_ClipFromWorld * position;
}
