#version 150

// SPDX-License-Identifier: MIT
//
// A cube map weighted by a power of the cosine to each direction, from the plain cosine (value 0) to nearly a mirror
// (value 1).

// One for each cube of the batch, which has an attachment of its own.
struct BatchSlot
{
    float value;
};

uniform samplerCube s_texture;
uniform BatchSlot s_blur[ZEL_CUBERENDER_NDOT_BATCH_SIZE];

in vec3 it_normal;

out vec4 o_ZelFragData[ZEL_CUBERENDER_NDOT_BATCH_SIZE];

const int kAxes = 3;
const int kMaxSteps = 128;

// The place s, t, each from -1 to 1, on the side of the cube at the positive end of an axis.
vec3 placeOnSide(int axis, vec2 st)
{
    if (axis == 0)
        return vec3(1.0, st);
    if (axis == 1)
        return vec3(st.x, 1.0, st.y);
    return vec3(st, 1.0);
}

void main()
{
    vec3 normal = normalize(it_normal);
    float roughness[ZEL_CUBERENDER_NDOT_BATCH_SIZE];
    vec3 colors[ZEL_CUBERENDER_NDOT_BATCH_SIZE];
    float weights[ZEL_CUBERENDER_NDOT_BATCH_SIZE];
    for (int i = 0; i < ZEL_CUBERENDER_NDOT_BATCH_SIZE; ++i)
    {
        roughness[i] = exp2(13.0 * s_blur[i].value);
        colors[i] = vec3(0.0);
        weights[i] = 0.0;
    }

    int size = textureSize(s_texture, 0).x;
    int steps = min(kMaxSteps, size);
    // Each step reads the level whose texels are as large as it is. Neighbours skip other steps: the level is given.
    float lod = log2(float(size) / float(steps));
    // Of a place and the one opposite only one lies before the normal, so both take one turn: some drivers end the
    // loops of a shader after 65536 turns, and six sides of their own would need more.
    for (int axis = 0; axis < kAxes; ++axis)
        for (int y = 0; y < steps; ++y)
            for (int x = 0; x < steps; ++x)
            {
                vec2 st = (vec2(x, y) + 0.5) * (2.0 / float(steps)) - 1.0;
                vec3 direction = normalize(placeOnSide(axis, st));
                float NdotL = dot(normal, direction);
                if (NdotL < 0.0)
                {
                    direction = -direction;
                    NdotL = -NdotL;
                }
                if (NdotL <= 0.0)
                    continue;
                vec3 color = textureLod(s_texture, direction, lod).rgb;
                for (int i = 0; i < ZEL_CUBERENDER_NDOT_BATCH_SIZE; ++i)
                {
                    float weight = max(0.0, pow(NdotL, roughness[i]));
                    colors[i] += color * weight;
                    weights[i] += weight;
                }
            }

    // A power may be so high that no step is near enough to count. What is mirrored is then the direction itself.
    vec3 mirrored = textureLod(s_texture, normal, 0.0).rgb;
    for (int i = 0; i < ZEL_CUBERENDER_NDOT_BATCH_SIZE; ++i)
        o_ZelFragData[i] = vec4(weights[i] > 0.0 ? colors[i] / weights[i] : mirrored, 1.0);
}
