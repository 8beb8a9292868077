#version 150
// SPDX-License-Identifier: MIT

#include "VrkUtilities.glslh"
#include "TextureManager.glslh"
#include "Frame.glslh"
#include "Output.glslh"
#instancedata "Material"

in vec3 vo_Position;
in vec3 vo_Normal;
in vec2 vo_TexCoord;

out vec4 o_Color;

#ifdef DRAW_BUFFER_USE_BASE_INSTANCE
// Only the vertex stage sees the base instance.
flat in uint vo_DrawID;

uint getDrawID(void)
{
    return vo_DrawID;
}
#endif

// Light, already divided by pi: a white surface facing light of 1 shows 1.
const vec3 kSky = vec3(0.40, 0.45, 0.53);
const vec3 kGround = vec3(0.18, 0.155, 0.13);
const vec3 kKey = vec3(0.82, 0.77, 0.68);
const vec3 kRim = vec3(0.10, 0.12, 0.15);

vec3 skyAndGround(vec3 direction)
{
    return mix(kGround, kSky, 0.5 * direction.y + 0.5);
}

// The unit normal on the eye's side of the surface. The triangle's own plane decides which side that is, so neither the
// winding of its corners nor a mirroring matrix matters; it also stands in where a model has no usable normal.
vec3 facingNormal(vec3 toEye)
{
    vec3 plane = cross(dFdx(vo_Position), dFdy(vo_Position));
    plane /= max(max(abs(plane.x), abs(plane.y)), abs(plane.z));    // or its square is lost in very small scenes
    plane *= dot(plane, toEye) < 0.0 ? -1.0 : 1.0;
    vec3 normal = dot(vo_Normal, vo_Normal) > 0.0 ? vo_Normal : plane;
    return normalize(dot(normal, plane) < 0.0 ? -normal : normal);
}

// The numbers of ImageKind in Model.h.
const uint kCube = 1u;
const uint kTiles = 3u;

// The smallest level that pictures from files have.
const float kLastLevel = 4.0;

// Where a picture that ends at 0 and 1 is to be looked at. Mirrored by Wrap in Model.h.
float wrapped(float place, uint wrap)
{
    if (wrap == 0u)
        return fract(place);
    if (wrap == 1u)
        return 1.0 - abs(mod(place, 2.0) - 1.0);
    return place;
}

// The level at which a picture of this size in texels is to be looked at. It comes from the coordinate before that is
// wrapped, which jumps.
float levelFor(vec2 size)
{
    vec2 across = dFdx(vo_TexCoord) * size;
    vec2 upwards = dFdy(vo_TexCoord) * size;
    return min(0.5 * log2(max(max(dot(across, across), dot(upwards, upwards)), 1.0)), kLastLevel);
}

// Where a place on a globe is seen from its middle; x goes once around, y from pole to pole.
vec3 onGlobe(vec2 place)
{
    vec2 angle = (place - 0.5) * vec2(6.28318531, 3.14159265);
    return vec3(cos(angle.y) * sin(angle.x), sin(angle.y), cos(angle.y) * cos(angle.x));
}

// The picture at the surface, in linear light.
vec4 pictured()
{
    VrkTextureToken image = getColorMap();
    uvec4 picture = getPicture();    // wrapping of x and y, kind, width of a tile
    if (picture.z == kTiles)
        return managedTextureLod(image, vo_TexCoord, levelFor(vec2(float(picture.w))));
    if (picture.z == kCube)
        return managedTextureCubeLod(image, onGlobe(vo_TexCoord), levelFor(4.0 * managedTextureCubeSize(image)));
    vec2 place = vec2(wrapped(vo_TexCoord.x, picture.x), wrapped(vo_TexCoord.y, picture.y));
    return managedTextureLod(image, place, levelFor(managedTextureSize(image)));
}

void main()
{
    vec4 surface = getSurface();    // roughness, metallic, alpha below which there is a hole, 1 where it is blended
    vec4 picture = pictured();
    if (picture.a < surface.z)
        discard;
    vec4 color = getBaseColor() * picture;
    vec3 baseColor = color.rgb;
    vec3 toEye = normalize(u_Eye.xyz - vo_Position);
    vec3 normal = facingNormal(toEye);
    float roughness = max(surface.x, 0.08);
    float metallic = surface.y;

    float towardsEye = max(dot(normal, toEye), 0.0);
    float towardsKey = max(dot(normal, u_ToKey.xyz), 0.0);
    float grazing = pow(1.0 - towardsEye, 4.0);

    vec3 diffuse = baseColor * (1.0 - metallic) * (skyAndGround(normal) + kKey * towardsKey);

    // What mirrors: the key light as a highlight whose size follows the roughness, and sky and ground around.
    vec3 mirrored = mix(vec3(0.04), baseColor, metallic);
    mirrored += (max(vec3(1.0 - roughness), mirrored) - mirrored) * grazing;
    float sharpness = 2.0 / (roughness * roughness * roughness * roughness);
    float highlight = pow(max(dot(normal, normalize(u_ToKey.xyz + toEye)), 0.0), sharpness) * (0.125 * sharpness + 1.0);
    vec3 specular = mirrored * (skyAndGround(reflect(-toEye, normal)) + kKey * towardsKey * highlight);

    vec3 rim = kRim * grazing * (0.5 * normal.y + 0.5);

    o_Color = vec4(displayed(diffuse + specular + rim).rgb, mix(1.0, color.a, surface.w));
}
