// SPDX-License-Identifier: MIT
//
// A whole frame of the scene with records, textures and units: once warm, it allocates nothing.
#include "GPUModelDrawingTestTools.h"

#include "InstanceDataPlanTestTools.h"
#include "SamplerTextureManager.h"
#include "support/HeapCount.h"

#include <QColor>

#include <utility>

namespace Harrow::Vrk::Test
{
namespace
{

constexpr int kLists = 4;
constexpr int kCommands = 10;

/// Lists of commands that each have a transform, a box and an object record of their own, with one material.
class GPUModelFrameTest : public GPUModelDrawing, public testing::WithParamInterface<InstanceDataPlan::MechanismType>
{
protected:
    void SetUp() override
    {
        GPUModelDrawing::SetUp();
        UniformBufferObjectTestAccess::forgetContexts();
        driver.setInteger(GL_MAX_TEXTURE_IMAGE_UNITS, 16);
        driver.setInteger(GL_MAX_TEXTURE_SIZE, 1024);
        driver.setInteger(GL_MAX_TEXTURE_BUFFER_SIZE, 65'536);
        driver.setInteger(GL_MAX_UNIFORM_BLOCK_SIZE, 65'536);
        driver.setInteger(GL_MAX_VERTEX_UNIFORM_COMPONENTS, 16'384);
        driver.setInteger(GL_MAX_FRAGMENT_UNIFORM_COMPONENTS, 16'384);
        sampler = std::make_unique<SamplerTextureManager>();
        material = newRecords(newPlan("Material", {}, "ColorMap"));
        const TextureToken token = sampler->tokenForColor(Qt::red);
        for (int i = 0; i < kCommands; ++i)
            material->set(i, QStringLiteral("ColorMap"), &token.token, sizeof token.token);
        InstanceDataPlan* const objects = newPlan("Object", {kModelMatrix, kPreviousModelMatrix, kInverseModelMatrix});
        const GPUModel::BoundingBox box = {-1, -1, -1, 1, 1, 1};
        model.loadBoundingBoxes(&box, 1);
        for (int list = 0; list < kLists; ++list)
        {
            const int handle = model.add(newList(kCommands), list, material, newRecords(objects), quint64(list));
            for (int command = 0; command < kCommands; ++command)
            {
                model.useTransform(handle, command, model.addTransform(-1, QMatrix4x4()));
                model.useBoundingBox(handle, command, 0);
            }
        }
        clipFromWorld.perspective(60, 1, 0.1f, 100);
    }

    void TearDown() override
    {
        model.clear();
        records.clear();
        sampler.reset();
        GPUModelDrawing::TearDown();
        UniformBufferObjectTestAccess::forgetContexts();
    }

    InstanceDataPlan* newPlan(const char* name, const QStringList& matrices, const char* texture = nullptr)
    {
        auto* const made = new InstanceDataPlan(QString::fromLatin1(name));
        for (const QString& matrix : matrices)
            made->addMember(InstanceDataPlan::eMat4, matrix);
        if (texture)
            made->addMember(InstanceDataPlan::eTexture, QString::fromLatin1(texture));
        made->setMechanism(GetParam());
        made->setArraySize(kCommands);
        const LogCapture limits; // not of interest here
        InstanceDataRegistry::Instance().registerPlan(made);
        return made;
    }

    InstanceDataCollection* newRecords(InstanceDataPlan* of)
    {
        records.push_back(std::make_unique<InstanceDataCollection>(of, size_t(kCommands)));
        return records.back().get();
    }

    /// All move, and about half come into view; one pass is sorted by distance, one by winding.
    bool frame(int number)
    {
        for (int index = 0; model.isValidTransform(index); ++index)
            model.setLocalTransform(index, translation(float(index % 7 - 3) * 10, 0, -20.0f - float(number % 2)),
                                    false);
        model.setFlags(number % kLists, quint64(number % 2), 1);
        bool isDrawn = model.updateTransforms();
        model.resetCulling();
        model.visibilityCull();
        model.frustumCull(clipFromWorld);
        model.sortDrawablesByFlags();
        const QMatrix4x4 place = translation(1, 2, 3);
        isDrawn &= model.draw(program.get(), sampler.get(), kSortFlag, 0, GPUModel::WindingNone, &place, false);
        isDrawn &= model.drawExclude(program.get(), sampler.get(), 0, 0, GPUModel::WindingCCW, nullptr, excluded);
        model.updatePreviousMatrices();
        return isDrawn;
    }

    static QMatrix4x4 translation(float x, float y, float z)
    {
        QMatrix4x4 matrix;
        matrix.translate(x, y, z);
        return matrix;
    }

    std::unique_ptr<SamplerTextureManager> sampler;
    InstanceDataCollection* material = nullptr;
    QMatrix4x4 clipFromWorld;
    const QList<int> excluded = {2};
};

TEST_P(GPUModelFrameTest, AWarmFrameAllocatesNothing)
{
    for (int number = 0; number < 8; ++number)
        ASSERT_TRUE(frame(number));
    for (int number = 0; number < 8; ++number)
    {
        const HeapCount count;
        const bool isDrawn = frame(number);
        const long long allocations = count.soFar();
        EXPECT_TRUE(isDrawn);
        EXPECT_EQ(allocations, 0) << "frame " << number;
    }
    CallLog calls;
    EXPECT_TRUE(frame(8));
    EXPECT_GT(calls.count("glDrawElementsBaseVertex"), kCommands) << "there is something in view";
    EXPECT_LT(calls.count("glDrawElementsBaseVertex"), (2 * kLists - 1) * kCommands) << "and something is not";
    EXPECT_GT(calls.count("glBindTexture"), 0);
}

INSTANTIATE_TEST_SUITE_P(Carriers, GPUModelFrameTest, testing::ValuesIn(kCarriers));

} // namespace
} // namespace Harrow::Vrk::Test
