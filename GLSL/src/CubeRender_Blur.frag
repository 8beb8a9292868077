#version 150

// SPDX-License-Identifier: MIT
//
// A cube map blurred over a cone about each direction, from none (value 0) to one of 45 degrees (value 1).
//
// ZelRenderCubemap_Blur gives the number of the batch another name, and this stage does not compile: the name here is
// interface.

// One for each cube of the batch, which has an attachment of its own.
struct BatchSlot
{
    float value;
};

uniform samplerCube s_texture;
uniform BatchSlot s_blur[ZEL_CUBERENDER_BLUR_BATCH_SIZE];

in vec3 it_normal;

out vec4 o_ZelFragData[ZEL_CUBERENDER_BLUR_BATCH_SIZE];

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
    vec3 center = texture(s_texture, it_normal).rgb;
    float smallestDotN = 1.0;
    float dotN[ZEL_CUBERENDER_BLUR_BATCH_SIZE];
    vec3 colors[ZEL_CUBERENDER_BLUR_BATCH_SIZE];
    float counts[ZEL_CUBERENDER_BLUR_BATCH_SIZE];
    for (int i = 0; i < ZEL_CUBERENDER_BLUR_BATCH_SIZE; ++i)
    {
        dotN[i] = mix(1.0, 0.707, s_blur[i].value);
        smallestDotN = min(smallestDotN, dotN[i]);
        colors[i] = center;
        counts[i] = 1.0;
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
                if (NdotL < smallestDotN)
                    continue;
                vec3 color = textureLod(s_texture, direction, lod).rgb;
                for (int i = 0; i < ZEL_CUBERENDER_BLUR_BATCH_SIZE; ++i)
                    if (NdotL >= dotN[i])
                    {
                        colors[i] += color;
                        counts[i] += 1.0;
                    }
            }

    for (int i = 0; i < ZEL_CUBERENDER_BLUR_BATCH_SIZE; ++i)
        o_ZelFragData[i] = vec4(colors[i] / counts[i], 1.0);
}
