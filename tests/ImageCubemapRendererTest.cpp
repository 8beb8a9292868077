// SPDX-License-Identifier: MIT
//
// The renderers behind the cube map conversion, on the fake driver: what derives from what, the fields that they start
// with, what they keep of their source, their programs, and in which order they let go of what they own.
#include "ZelRenderCubemap.h"

#include "ImageCubemapCallTools.h"

#include <QObject>

#include <functional>
#include <type_traits>

namespace Harrow::Vrk::Test
{

namespace
{

template <typename Derived, typename Base>
constexpr bool derives = std::is_base_of_v<Base, Derived>&& std::is_convertible_v<Derived*, Base*>;

static_assert(std::is_abstract_v<ZelRenderCubemapBase> && std::has_virtual_destructor_v<ZelRenderCubemapBase>);
static_assert(!derives<ZelRenderCubemapBase, QObject>);
static_assert(derives<ZelRenderCubemapBaseTexture, ZelRenderCubemapBase>);
static_assert(derives<ZelRenderCubemap_Cross, ZelRenderCubemapBaseTexture>);
static_assert(derives<ZelRenderCubemap_LatLongSphere, ZelRenderCubemapBaseTexture>);
static_assert(derives<ZelRenderCubemap_Sphere, ZelRenderCubemapBaseTexture>);
static_assert(derives<ZelRenderCubemap_Linear, ZelRenderCubemapBaseTexture>);
static_assert(derives<ZelRenderCubemap_Blur, ZelRenderCubemapBaseTexture>);
static_assert(derives<ZelRenderCubemap_NDotL, ZelRenderCubemapBaseTexture>);

/// A renderer whose fields can be seen.
template <typename Renderer> class Open final : public Renderer
{
public:
    using Renderer::_activeBatch;
    using Renderer::_arrayCubes;
    using Renderer::_batchSize;
    using Renderer::_colorSpace;
    using Renderer::_face;
    using Renderer::_layer;
    using Renderer::_layerCount;
    using Renderer::_magFilter;
    using Renderer::_minFilter;
    using Renderer::_program;
    using Renderer::_quad;
    using Renderer::_source;
    using Renderer::Renderer;

    /// In the order in which they should lie.
    std::vector<const void*> fields() const
    {
        return {&_arrayCubes, &_layerCount, &_layer,  &_face,       &_batchSize, &_activeBatch,
                &_program,    &_quad,       &_source, &_colorSpace, &_minFilter, &_magFilter};
    }
};

} // namespace

class ImageCubemapRendererTest : public ImageCubemapCallFixture
{
protected:
    template <typename Renderer>
    void expectKept(const Open<Renderer>& renderer, const Texture* source, int colorSpace, GLint minFilter,
                    GLint magFilter)
    {
        EXPECT_EQ(renderer._source, source);
        EXPECT_EQ(renderer._colorSpace, colorSpace);
        EXPECT_EQ(renderer._minFilter, minFilter);
        EXPECT_EQ(renderer._magFilter, magFilter);
    }
};

TEST_F(ImageCubemapRendererTest, ARendererStartsWithOneCubeInABatchOfOne)
{
    const auto source = newTexture();
    const Open<ZelRenderCubemap_Linear> renderer(source.get(), 0);
    EXPECT_EQ(renderer._arrayCubes, 1);
    EXPECT_EQ(renderer._batchSize, 1);
    EXPECT_EQ(renderer._activeBatch, 1);
    EXPECT_EQ(renderer._program, nullptr);
    ASSERT_NE(renderer._quad, nullptr);
    EXPECT_NE(renderer._quad->VAO(), nullptr);
}

TEST_F(ImageCubemapRendererTest, FieldsLieInTheirOrder)
{
    const auto source = newTexture();
    const Open<ZelRenderCubemap_Linear> renderer(source.get(), 0);
    const std::vector<const void*> fields = renderer.fields();
    EXPECT_TRUE(std::is_sorted(fields.begin(), fields.end(), std::less<>()));
}

TEST_F(ImageCubemapRendererTest, LayoutsAreReadWithNearestFiltersAndKeepTheColorSpace)
{
    const auto source = newTexture();
    const Open<ZelRenderCubemap_Cross> cross(source.get(), 2, true);
    expectKept(cross, source.get(), 2, GL_NEAREST, GL_NEAREST);
    const Open<ZelRenderCubemap_LatLongSphere> latLong(source.get(), 1);
    expectKept(latLong, source.get(), 1, GL_NEAREST, GL_NEAREST);
    const Open<ZelRenderCubemap_Sphere> sphere(source.get(), 99);
    expectKept(sphere, source.get(), 99, GL_NEAREST, GL_NEAREST);
    const Open<ZelRenderCubemap_Linear> linear(source.get(), -1);
    expectKept(linear, source.get(), -1, GL_NEAREST, GL_NEAREST);
}

TEST_F(ImageCubemapRendererTest, FiltersReadTheirSourceTrilinear)
{
    const auto source = newTexture(GL_TEXTURE_CUBE_MAP);
    const Open<ZelRenderCubemap_Blur> blur(source.get());
    expectKept(blur, source.get(), 0, GL_LINEAR_MIPMAP_LINEAR, GL_LINEAR);
    const Open<ZelRenderCubemap_NDotL> cosine(source.get(), 2.0f);
    expectKept(cosine, source.get(), 0, GL_LINEAR_MIPMAP_LINEAR, GL_LINEAR);
}

TEST_F(ImageCubemapRendererTest, AProgramIsThereWhateverBecameOfItsBuild)
{
    const auto flat = newTexture();
    const auto cube = newTexture(GL_TEXTURE_CUBE_MAP);
    Open<ZelRenderCubemap_Linear> linear(flat.get(), 0);
    Open<ZelRenderCubemap_NDotL> cosine(cube.get(), 1.0f);
    script.linkStatus = 0;
    EXPECT_TRUE(linear.createProgram());
    EXPECT_TRUE(cosine.createProgram());
    EXPECT_FALSE(linear._program->isLinked());
    EXPECT_FALSE(cosine._program->isLinked());
    script.linkStatus = 1;
    script.brokenMark = "it_normal";
    EXPECT_TRUE(linear.createProgram());
    EXPECT_TRUE(cosine.createProgram());
    EXPECT_FALSE(linear._program->isLinked());
    EXPECT_FALSE(cosine._program->isLinked());
}

TEST_F(ImageCubemapRendererTest, AFilterForgetsTheMacroProcessorOfItsProgram)
{
    const auto source = newTexture(GL_TEXTURE_CUBE_MAP);
    Open<ZelRenderCubemap_Blur> renderer(source.get());
    ASSERT_TRUE(renderer.createProgram());
    EXPECT_EQ(renderer._program->getMacroProcessor(), nullptr) << "it is gone";
}

TEST_F(ImageCubemapRendererTest, ProgramsNameTheirOutputs)
{
    const auto source = newTexture();
    Open<ZelRenderCubemap_Sphere> layout(source.get(), 0);
    Open<ZelRenderCubemap_NDotL> filter(source.get(), 1.0f);
    const CallLog calls;
    ASSERT_TRUE(layout.createProgram());
    ASSERT_TRUE(filter.createProgram());
    QStringList expected;
    for (const unsigned program : {layout._program->shaderProgramID(), filter._program->shaderProgramID()})
        expected.append(CallLog::call("glBindFragDataLocation", program, 0, "o_ZelFragData"));
    EXPECT_EQ(calls.named({line("glBindFragDataLocation")}), expected);
}

TEST_F(ImageCubemapRendererTest, ARendererLetsTheQuadAndThenTheProgramGo)
{
    const auto source = newTexture();
    auto renderer = std::make_unique<Open<ZelRenderCubemap_Linear>>(source.get(), 0);
    ASSERT_TRUE(renderer->createProgram());
    const CallLog calls;
    renderer.reset();
    const QStringList released = calls.list().filter(QRegularExpression(line("^(?!glDeleteShader)")));
    EXPECT_EQ(shown(released), shown({writes("glDeleteBuffers", 1), writes("glDeleteBuffers", 1),
                                      CallLog::call("glDeleteProgram", 1), CallLog::call("glFlush")}));
}

TEST_F(ImageCubemapRendererTest, AnArrayOfNoCubesHasNothingDrawn)
{
    const auto source = newTexture(GL_TEXTURE_CUBE_MAP);
    for (const int layers : {0, -3})
    {
        const CallLog calls;
        EXPECT_NE(cosine(*source, GL_TEXTURE_CUBE_MAP_ARRAY, layers), nullptr);
        EXPECT_EQ(cubemap.depth, layers * 6) << "for OpenGL to judge";
        EXPECT_EQ(calls.count(line("glClear")) + calls.count(line("glDrawArrays")), 0);
    }
}

} // namespace Harrow::Vrk::Test
