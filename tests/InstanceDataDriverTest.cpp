// SPDX-License-Identifier: MIT
//
// Records on the real driver: quads that are placed by their records and coloured by the textures of their tokens, read
// back.
#include "InstanceData.h"
#include "InstanceDataCollection.h"
#include "InstanceDataPlan.h"
#include "InstanceDataRegistry.h"

#include "AutoBinder.h"
#include "BufferObject.h"
#include "GLSLMacroProcessor.h"
#include "InstanceDataPlanTestTools.h"
#include "SamplerTextureManager.h"
#include "ShaderProgram.h"
#include "Texture.h"
#include "TextureUnits.h"
#include "UniformBufferObject.h"
#include "support/CallLog.h"
#include "support/GLTest.h"
#include "support/LogCapture.h"
#include "support/ObjectAccess.h"
#include "support/Picture.h"

#include <QColor>
#include <QTemporaryDir>

#include <algorithm>
#include <memory>

namespace Harrow::Vrk::Test
{
namespace
{

constexpr int kCell = 4;
const QString kPlanName = QStringLiteral("Quads");

const char* const kVertexText = R"(#version 150
#include "VrkUtilities.glslh"
#instancedata "Quads"
out vec2 vo_TexCoord;
flat out uvec2 vo_Token;
void main()
{
    vo_TexCoord = vec2(gl_VertexID % 2, gl_VertexID / 2);
    vo_Token = getPicture();
    gl_Position = vec4(getPlace().xy + vo_TexCoord * getPlace().zw, 0.0, getScale());
}
)";

const char* const kFragmentText = R"(#version 150
#include "TextureManager.glslh"
in vec2 vo_TexCoord;
flat in uvec2 vo_Token;
out vec4 o_Color;
void main()
{
    o_Color = managedTexture(vo_Token, vo_TexCoord);
}
)";

struct Place
{
    float x, y, width, height;
};

class InstanceDataGL : public GLTest
{
protected:
    void SetUp() override
    {
        GLTest::SetUp();
        texturesBefore = Texture::NumAlive();
        buffersBefore = BufferObject::NumAlive();
        glGenVertexArrays(1, &vertexArray);
        glBindVertexArray(vertexArray);
        glDisable(GL_DEPTH_TEST);
        manager = std::make_unique<SamplerTextureManager>();
        TextureManager::setInstance(manager.get());
    }

    void TearDown() override
    {
        collection.reset();
        program.reset();
        InstanceDataRegistry::Instance().clear();
        manager.reset();
        TextureManager::setInstance(nullptr);
        EXPECT_EQ(Texture::NumAlive(), texturesBefore);
        EXPECT_EQ(BufferObject::NumAlive(), buffersBefore);
        EXPECT_TRUE(TextureUnits::ofCurrentContext().textureToUnitMaps.isEmpty());
        glBindVertexArray(0);
        glDeleteVertexArrays(1, &vertexArray);
        GLTest::TearDown();
    }

    /// A plan of that carrier, and the program that reads its records.
    void build(InstanceDataPlan::MechanismType mechanism = InstanceDataPlan::eUniformBufferMechanism)
    {
        collection.reset();
        InstanceDataRegistry::Instance().clear();
        plan = new InstanceDataPlan(kPlanName);
        plan->addMember(InstanceDataPlan::eFloat, QStringLiteral("scale"));
        plan->addMember(InstanceDataPlan::eTexture, QStringLiteral("picture"));
        plan->addMember(InstanceDataPlan::eVec4, QStringLiteral("place"));
        plan->setArraySize(16);
        plan->setMechanism(mechanism);
        InstanceDataRegistry::Instance().registerPlan(plan);

        GLSLMacroProcessor processor;
        manager->setup(&processor);
        program = std::make_unique<ShaderProgram>();
        program->setMacroProcessor(&processor);
        program->addShader(GL_VERTEX_SHADER, QString::fromLatin1(kVertexText));
        program->addShader(GL_VERTEX_SHADER, plan->glslc());
        program->addShaderFromFile(GL_VERTEX_SHADER, QStringLiteral("VrkUtilities.glslc"));
        program->addShaderFromFile(GL_VERTEX_SHADER, QStringLiteral("VrkUtilities.vert"));
        program->addShader(GL_FRAGMENT_SHADER, QString::fromLatin1(kFragmentText));
        program->addShaderFromFile(GL_FRAGMENT_SHADER, manager->getShaderFile());
        ASSERT_TRUE(program->link()) << program->log().toStdString();
    }

    static Place placeOf(int index, int count)
    {
        const float width = 2.0f / float(count);
        return {-1.0f + width * float(index), -1.0f, width, 2.0f};
    }

    /// A record for the cell `index` of a row of `count`, without its token.
    static InstanceData quad(int index, int count)
    {
        InstanceData record(kPlanName);
        const Place place = placeOf(index, count);
        const float scale = 1.0f;
        record.set("place", &place, sizeof place);
        record.set("scale", &scale, sizeof scale);
        return record;
    }

    QList<InstanceData> quads(const QList<QColor>& colors)
    {
        QList<InstanceData> records;
        for (const QColor& color : colors)
        {
            records.append(quad(int(records.size()), int(colors.size())));
            records.last().setTextureToken(plan->offset("picture"), manager->tokenForColor(color));
        }
        return records;
    }

    void setToken(int index, TextureToken token)
    {
        collection->set(index, "picture", &token.token, sizeof token.token);
    }

    /// One quad for each record, all bound at once.
    QImage draw()
    {
        const int count = collection->size();
        const OffscreenTarget target(count * kCell, kCell);
        glClearColor(0, 0, 0, 0);
        glClear(GL_COLOR_BUFFER_BIT);
        EXPECT_TRUE(program->bind());
        EXPECT_TRUE(collection->bind(program.get(), manager.get()));
        manager->bind(program.get());
        for (int i = 0; i < count; ++i)
        {
            glUniform1ui(program->getUniformLocation("u_DrawID"), GLuint(i));
            glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
        }
        const QImage picture = target.read();
        manager->unbind(program.get());
        EXPECT_TRUE(collection->unbind(program.get(), manager.get()));
        program->unbind();
        return picture;
    }

    static QImage cells(const QList<QColor>& colors)
    {
        QImage picture(int(colors.size()) * kCell, kCell, QImage::Format_RGBA8888);
        for (int x = 0; x < picture.width(); ++x)
            for (int y = 0; y < kCell; ++y)
                picture.setPixelColor(x, y, colors[x / kCell]);
        return picture;
    }

    static QList<QColor> someColors(int count, int first = 0)
    {
        QList<QColor> colors;
        for (int i = first; i < first + count; ++i)
            colors.append(QColor(250 - 12 * i, 40 * i % 256, (i % 3) * 100, 255 - i));
        return colors;
    }

    static int uploads(const CallLog& calls)
    {
        return calls.count("glBufferData") + calls.count("glNamedBufferData") + calls.count("glBufferSubData") +
               calls.count("glNamedBufferSubData");
    }

    int texturesBefore = 0;
    int buffersBefore = 0;
    GLuint vertexArray = 0;
    QTemporaryDir directory;
    InstanceDataPlan* plan = nullptr;
    std::unique_ptr<SamplerTextureManager> manager;
    std::unique_ptr<ShaderProgram> program;
    std::unique_ptr<InstanceDataCollection> collection;
};

} // namespace

TEST_F(InstanceDataGL, EachRecordIsDrawnAtItsPlaceWithItsTextureByEachCarrier)
{
    ASSERT_EQ(InstanceDataPlan::supportsStorageMechanism(), !isFloor());
    const auto colors = someColors(6);
    for (const auto carrier : supportedCarriers())
    {
        build(carrier);
        collection = std::make_unique<InstanceDataCollection>(kPlanName, quads(colors));
        const LogCapture log;
        EXPECT_TRUE(picturesAgree(draw(), cells(colors), 0, 0)) << "carrier " << int(carrier);
        EXPECT_TRUE(picturesAgree(draw(), cells(colors), 0, 0)) << "warm, carrier " << int(carrier);
        EXPECT_EQ(log.texts(QtCriticalMsg) + log.texts(QtWarningMsg), QStringList()) << int(carrier);
    }
}

TEST_F(InstanceDataGL, ColourImageAndTextureAreReachedByName)
{
    build();
    QImage image(4, 4, QImage::Format_ARGB32);
    image.fill(Qt::blue);
    const QString path = directory.filePath(QStringLiteral("blue.png"));
    ASSERT_TRUE(image.save(path));
    auto* const texture = new Texture(nullptr);
    texture->create2D(GL_TEXTURE_2D, GL_RGBA8, 1, 1);
    {
        const AutoBinder binder(texture);
        const unsigned char texel[] = {9, 8, 7, 255};
        glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, texel);
    }
    QList<InstanceData> records = {quad(0, 4), quad(1, 4), quad(2, 4), quad(3, 4)};
    records[0].setTexture("picture", path);
    records[1].setTexture("picture", texture);
    records[2].setTexture("picture", texture, manager.get());
    records[3].setTextureToken(plan->offset("picture"), manager->tokenForColor(QColor(1, 2, 3, 4)));
    collection = std::make_unique<InstanceDataCollection>(kPlanName, records);
    EXPECT_TRUE(picturesAgree(draw(), cells({Qt::blue, QColor(9, 8, 7), QColor(9, 8, 7), QColor(1, 2, 3, 4)}), 0, 0));
}

TEST_F(InstanceDataGL, ManyWritesBetweenTwoDrawsAreOneUpload)
{
    build();
    auto colors = someColors(5);
    collection = std::make_unique<InstanceDataCollection>(kPlanName, quads(colors));
    {
        const CallLog calls;
        EXPECT_TRUE(picturesAgree(draw(), cells(colors), 0, 0));
        EXPECT_EQ(uploads(calls), 1);
    }
    // Each quad through all places, and in the end from right to left.
    CallLog calls;
    for (int step = 0; step < 100; ++step)
    {
        for (int i = 0; i < 5; ++i)
        {
            const Place place = placeOf((4 - i + 99 - step) % 5, 5);
            collection->set(i, "place", &place, sizeof place);
        }
    }
    EXPECT_EQ(calls.list(), QStringList());
    std::reverse(colors.begin(), colors.end());
    EXPECT_TRUE(picturesAgree(draw(), cells(colors), 0, 0));
    EXPECT_EQ(uploads(calls), 1);
    calls.clear();
    EXPECT_TRUE(picturesAgree(draw(), cells(colors), 0, 0));
    EXPECT_EQ(uploads(calls), 0) << "nothing has changed";
}

TEST_F(InstanceDataGL, ATokenThatChangesIsShownAfterAnUpdate)
{
    build();
    const auto colors = someColors(3);
    const TextureToken late = manager->tokenForColor(Qt::magenta);
    collection = std::make_unique<InstanceDataCollection>(kPlanName, quads(colors));
    EXPECT_TRUE(picturesAgree(draw(), cells(colors), 0, 0));
    setToken(1, late);
    EXPECT_TRUE(picturesAgree(draw(), cells({colors[0], colors[0], colors[2]}), 0, 0))
        << "the record has it, but nothing bound it: that is slot 0";
    const QByteArray bytes = collection->dataArray();
    collection->update(bytes.constData(), size_t(bytes.size()));
    EXPECT_TRUE(picturesAgree(draw(), cells({colors[0], Qt::magenta, colors[2]}), 0, 0));
}

TEST_F(InstanceDataGL, ACollectionThatGrowsAndShrinksIsShown)
{
    for (const auto carrier : supportedCarriers())
    {
        build(carrier);
        collection = std::make_unique<InstanceDataCollection>(kPlanName);
        for (const int count : {2, 7, 3})
        {
            const auto colors = someColors(count, count);
            collection->update(quads(colors));
            EXPECT_TRUE(picturesAgree(draw(), cells(colors), 0, 0)) << count << ", carrier " << int(carrier);
        }
    }
}

TEST_F(InstanceDataGL, TwoCollectionsOfOnePlanAreShownInTurn)
{
    build();
    const auto colors = someColors(3);
    const auto others = someColors(4, 3);
    collection = std::make_unique<InstanceDataCollection>(kPlanName, quads(colors));
    auto other = std::make_unique<InstanceDataCollection>(kPlanName, quads(others));
    for (int turn = 0; turn < 2; ++turn)
    {
        EXPECT_TRUE(picturesAgree(draw(), cells(colors), 0, 0));
        collection.swap(other);
        EXPECT_TRUE(picturesAgree(draw(), cells(others), 0, 0));
        collection.swap(other);
    }
}

TEST_F(InstanceDataGL, ABufferOfImmutableStorageIsWrittenInPlaceWhereThereIsOne)
{
    build();
    const auto colors = someColors(4);
    collection = std::make_unique<InstanceDataCollection>(kPlanName, quads(colors));
    collection->useStorageBuffer(GL_DYNAMIC_STORAGE_BIT);
    const CallLog calls;
    EXPECT_TRUE(picturesAgree(draw(), cells(colors), 0, 0));
    setToken(0, manager->tokenForColor(colors[1]));
    setToken(1, manager->tokenForColor(colors[0]));
    EXPECT_TRUE(picturesAgree(draw(), cells({colors[1], colors[0], colors[2], colors[3]}), 0, 0));
    EXPECT_EQ(calls.count("glBufferStorage") + calls.count("glNamedBufferStorage"), isFloor() ? 0 : 1);
    EXPECT_EQ(calls.count("glNamedBufferSubData"), isFloor() ? 0 : 2);
    EXPECT_EQ(calls.count("glBufferData"), isFloor() ? 2 : 0);
}

TEST_F(InstanceDataGL, TheShortFormsServeTheProgramInUseAndTheManagerInUse)
{
    build();
    collection = std::make_unique<InstanceDataCollection>(kPlanName, quads({Qt::red}));
    const OffscreenTarget target(kCell, kCell);
    glClearColor(0, 0, 0, 0);
    glClear(GL_COLOR_BUFFER_BIT);
    ASSERT_TRUE(program->bind());
    Bindable& bindable = *collection;
    EXPECT_TRUE(bindable.bind());
    manager->bind(program.get());
    glUniform1ui(program->getUniformLocation("u_DrawID"), 0);
    glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
    EXPECT_TRUE(picturesAgree(target.read(), cells({Qt::red}), 0, 0));
    manager->unbind(program.get());
    EXPECT_TRUE(bindable.unbind());
    program->unbind();
}

TEST_F(InstanceDataGL, TheRecordsComeBackFromTheBufferByteByByte)
{
    build();
    collection = std::make_unique<InstanceDataCollection>(kPlanName, quads(someColors(5)));
    EXPECT_TRUE(collection->bind(nullptr, nullptr));
    const auto buffer = collection->getUniformBufferObject()->bufferObject();
    QByteArray bytes(collection->dataArray().size(), '\x55');
    {
        const AutoBinder binder(buffer.data());
        glGetBufferSubData(buffer->target(), 0, bytes.size(), bytes.data());
    }
    EXPECT_EQ(bytes, collection->dataArray());
    EXPECT_EQ(collection->memoryEstimateGPU(), size_t(bytes.size()));
    EXPECT_TRUE(collection->unbind(nullptr, nullptr));
}

} // namespace Harrow::Vrk::Test
