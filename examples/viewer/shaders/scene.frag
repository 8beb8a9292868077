#version 150
// SPDX-License-Identifier: MIT

#include "VrkUtilities.glslh"
#include "TextureManager.glslh"
#include "Frame.glslh"
#include "Output.glslh"
#include "DrawId.glslh"
#instancedata "Material"
#include "Picture.glslh"
#include "Maps.glslh"
#ifdef VRKVIEW_ENVIRONMENT
#include "Environment.glslh"
#endif
#ifdef VRKVIEW_SHADOWS
#include "Lights.glslh"
#include "ShadowMapManager.glslh"
#endif

in vec3 vo_Position;
in vec3 vo_Normal;
in vec2 vo_TexCoord;
in vec2 vo_MoreTexCoord;

out vec4 o_Color;

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
// winding of its corners nor a mirroring matrix matters; it also stands in where a model has no usable normal. `side`
// is -1 where the model's own normal points away. `across` and `upwards` lie in that plane.
vec3 facingNormal(vec3 toEye, vec3 across, vec3 upwards, out float side)
{
    vec3 plane = cross(across, upwards);
    plane /= max(max(abs(plane.x), abs(plane.y)), abs(plane.z));    // or its square is lost in very small scenes
    plane *= dot(plane, toEye) < 0.0 ? -1.0 : 1.0;
    vec3 normal = dot(vo_Normal, vo_Normal) > 0.0 ? vo_Normal : plane;
    side = dot(normal, plane) < 0.0 ? -1.0 : 1.0;
    return normalize(side * normal);
}

// What the light of all directions does: of what it lights, and of what it mirrors.
struct Lit
{
    vec3 diffuse;
    vec3 specular;
    vec3 glossy;    // mirrored already
};

struct Reflection
{
    vec3 normal;
    vec3 toEye;
    vec3 mirrored;      // the share of light that is mirrored
    float sharpness;    // of a highlight
    vec3 reflectance;   // at a right angle
    float roughness;
};

void addLight(inout Lit lit, Reflection surface, vec3 color, vec3 toLight)
{
    float towards = max(dot(surface.normal, toLight), 0.0);
    vec3 between = normalize(toLight + surface.toEye);
    float highlight =
        pow(max(dot(surface.normal, between), 0.0), surface.sharpness) * (0.125 * surface.sharpness + 1.0);
    lit.diffuse += color * towards;
    lit.specular += color * (towards * highlight);
}

#ifdef VRKVIEW_SHADOWS

// A light of the model's file: microfacets as the environment's table has them, with the share that they mirror away
// missing in what is scattered.
void addFileLight(inout Lit lit, Reflection surface, vec3 color, vec3 toLight)
{
    float towards = max(dot(surface.normal, toLight), 0.0);
    float towardsEye = max(dot(surface.normal, surface.toEye), 1.0e-4);
    vec3 between = normalize(toLight + surface.toEye);
    float along = max(dot(surface.normal, between), 0.0);
    float width = surface.roughness * surface.roughness;
    width *= width;
    float spread = along * along * (width - 1.0) + 1.0;
    float distribution = width / (spread * spread);    // times pi, by which the light is divided
    float visibility = 0.5 / max(towards * sqrt(towardsEye * towardsEye * (1.0 - width) + width) +
                                     towardsEye * sqrt(towards * towards * (1.0 - width) + width),
                                 1.0e-6);
    float grazing = pow(1.0 - max(dot(surface.toEye, between), 0.0), 5.0);
    vec3 mirrored = surface.reflectance + (1.0 - surface.reflectance) * grazing;
    lit.diffuse += color * (towards * (0.96 - 0.96 * grazing));
    lit.glossy += color * mirrored * (towards * distribution * visibility);
}

// Places around, on rings: the first few, and then the others.
const int kOuterTaps = 4;
const int kInnerTaps = 4;

// Looked up at several places around, so that edges are soft. Where the outer places agree it is no edge.
float visibilityOf(uint light, vec3 normal, vec3 toLight, float radius)
{
    vec3 across = radius * normalize(cross(toLight, abs(toLight.y) < 0.9 ? vec3(0.0, 1.0, 0.0) : vec3(1.0, 0.0, 0.0)));
    vec3 upwards = cross(toLight, across);
    vec3 place = vo_Position + normal * radius;
    float visibility = 0.0;
    for (int tap = 0; tap < kOuterTaps + kInnerTaps; ++tap)
    {
        if (tap == kOuterTaps && (visibility == 0.0 || visibility == float(kOuterTaps)))
            return visibility / float(kOuterTaps);
        float angle = 1.57079633 * float(tap) + (tap < kOuterTaps ? 0.0 : 0.78539816);
        float reach = tap < kOuterTaps ? 1.0 : 0.5;
        visibility += shadowMapGetVisibility(light, place + reach * (cos(angle) * across + sin(angle) * upwards));
    }
    return visibility / float(kOuterTaps + kInnerTaps);
}

void addLights(inout Lit lit, Reflection surface)
{
    for (uint i = 0u; i < uint(u_Ambient.w); ++i)
    {
        vec3 toLight;
        vec3 color = lightAt(u_LightList[i], vo_Position, toLight);
        if (dot(surface.normal, toLight) > 0.0 && max(color.r, max(color.g, color.b)) > 0.0)
        {
            color *= visibilityOf(i, surface.normal, toLight, u_Eye.w);
            if (u_LightList[i].more.x > 0.0)
                addFileLight(lit, surface, color, toLight);
            else
                addLight(lit, surface, color, toLight);
        }
    }
}

#endif // VRKVIEW_SHADOWS

void main()
{
    // What changes from pixel to pixel, as long as no pixel is a hole.
    Place place = placeAt(vo_TexCoord);
    Place morePlace = placeAt(vo_MoreTexCoord);
    vec3 across = dFdx(vo_Position);
    vec3 upwards = dFdy(vo_Position);

    vec4 material = getSurface();    // roughness, metallic, alpha below which there is a hole, 1 where it is blended
    vec4 color = getBaseColor() * pictured(place);
    if (color.a < material.z)
        discard;
    vec3 baseColor = color.rgb;
    vec4 detail = getDetail();    // how much normals and occlusion count, 1 where no light does
    if (detail.z > 0.0)
    {
        o_Color = vec4(gammaCorrect(baseColor, 2.2).rgb, mix(1.0, color.a, material.w));
        return;
    }
    uvec4 maps = getMaps();
    vec4 texels[kMapCount];
    lookUpMaps(maps, place, morePlace, texels);
    vec3 toEye = normalize(u_Eye.xyz - vo_Position);
    float side;
    vec3 normal = facingNormal(toEye, across, upwards, side);
    if (hasMap(maps[kNormalMap]))
        normal = leaning(normal, side, across, upwards, placeOf(maps[kNormalMap], place, morePlace),
                         texels[kNormalMap].rgb, detail.x);
    float roughness = max(material.x * texels[kSurfaceMap].g, 0.08);
    float metallic = material.y * texels[kSurfaceMap].b;

    float towardsEye = max(dot(normal, toEye), 0.0);
    float grazing = pow(1.0 - towardsEye, 4.0);

    Reflection surface;
    surface.normal = normal;
    surface.toEye = toEye;
    surface.reflectance = mix(vec3(0.04), baseColor, metallic);
    surface.mirrored = surface.reflectance;
    surface.mirrored += (max(vec3(1.0 - roughness), surface.mirrored) - surface.mirrored) * grazing;
    surface.roughness = roughness;
    surface.sharpness = 2.0 / (roughness * roughness * roughness * roughness);

    // What is around: an environment, or sky and ground with a rim. Then lights, whose highlights have a size that
    // follows the roughness.
#ifdef VRKVIEW_ENVIRONMENT
    vec3 around = baseColor * (1.0 - metallic) * environmentDiffuse(normal) +
                  environmentSpecular(reflect(-toEye, normal), towardsEye, roughness, surface.reflectance);
#else
    vec3 around = baseColor * (1.0 - metallic) * skyAndGround(normal) +
                  surface.mirrored * skyAndGround(reflect(-toEye, normal)) +
                  kRim * grazing * (0.5 * normal.y + 0.5);
#endif
    Lit lit = Lit(vec3(0.0), vec3(0.0), vec3(0.0));
#ifdef VRKVIEW_SHADOWS
    around *= u_Ambient.rgb;
    addLights(lit, surface);
#elif !defined(VRKVIEW_ENVIRONMENT)
    addLight(lit, surface, kKey, u_ToKey.xyz);
#endif
    around *= mix(1.0, texels[kOcclusionMap].r, detail.y);
    vec3 emission = getEmission().rgb * texels[kEmissionMap].rgb;
    vec3 light = emission + around + baseColor * (1.0 - metallic) * lit.diffuse + surface.mirrored * lit.specular +
                 lit.glossy;

    o_Color = vec4(displayed(light).rgb, mix(1.0, color.a, material.w));
}
