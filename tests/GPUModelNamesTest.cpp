// SPDX-License-Identifier: MIT
//
// What the scene knows of its drawables beside themselves: instances by name and the properties that are set by it,
// estimates, and what is said of handles that there are not.
#include "GPUModelTestTools.h"

#include "BufferObject.h"
#include "InstanceDataTestTools.h"
#include "OpenGLDeviceContext.h"

#include <gtest/gtest.h>

#include <climits>
#include <random>

namespace Harrow::Vrk::Test
{
namespace
{

const QString kSteel = QStringLiteral("steel");
const QString kBolt = QStringLiteral("bolt");
const QString kAlpha = QStringLiteral("alpha");

QStringList sorted(QStringList names)
{
    names.sort();
    return names;
}

class GPUModelNamesTest : public GPUModelFixture
{
protected:
    void setMaterial(const QString& name, float value, const QString& property = kAlpha)
    {
        model.setMaterialProperty(name, property, &value, sizeof value);
    }

    void setObject(const QString& name, float value, const QString& property = kAlpha)
    {
        model.setObjectProperty(name, property, &value, sizeof value);
    }

    /// A drawable with three records of each kind.
    int addBoth(quint64 flags = 0)
    {
        return model.add(newDrawList(3), 0, newRecords(3), newRecords(3), flags);
    }

    QList<float> materials(int handle) const
    {
        return numbers(model.materialData(handle));
    }

    QList<float> objects(int handle) const
    {
        return numbers(model.objectData(handle));
    }

private:
    static QList<float> numbers(const InstanceDataCollection* records)
    {
        QList<float> all;
        for (int i = 0; i < records->size(); ++i)
            all.append(number(records, i));
        return all;
    }
};

// -- names --

TEST_F(GPUModelNamesTest, TheMembersThatTheSceneFillsHaveTheseNames)
{
    EXPECT_EQ(kModelMatrix, QStringLiteral("ModelMatrix"));
    EXPECT_EQ(kPreviousModelMatrix, QStringLiteral("PreviousModelMatrix"));
    EXPECT_EQ(kInverseModelMatrix, QStringLiteral("InverseModelMatrix"));
    EXPECT_EQ(kModelNormalMatrix, QStringLiteral("ModelNormalMatrix"));
    EXPECT_EQ(kPlanar, QStringLiteral("[PLANAR]"));
}

TEST_F(GPUModelNamesTest, InstancesAreListedByNameInTheOrderOfAdding)
{
    model.addMaterialName(2, 1, kSteel);
    model.addMaterialName(0, 0, kSteel);
    model.addMaterialName(2, 1, kSteel);
    model.addMaterialName(1, 5, QStringLiteral("wood"));
    model.addObjectName(3, 4, kBolt);
    EXPECT_EQ(model.materialInstances(kSteel), Refs({{2, 1}, {0, 0}, {2, 1}}));
    EXPECT_EQ(model.materialInstances(QStringLiteral("wood")), Refs({{1, 5}}));
    EXPECT_EQ(model.objectInstances(kBolt), Refs({{3, 4}}));
    EXPECT_EQ(sorted(model.materialNames()), QStringList({kSteel, QStringLiteral("wood")}));
    EXPECT_EQ(model.objectNames(), QStringList({kBolt}));
}

TEST_F(GPUModelNamesTest, AnUnknownNameHasNoInstancesAndIsNotMadeByAsking)
{
    model.addObjectName(0, 0, kBolt);
    EXPECT_EQ(model.materialInstances(kBolt), Refs());
    EXPECT_EQ(model.objectInstances(kSteel), Refs());
    EXPECT_EQ(model.materialNames(), QStringList());
    EXPECT_EQ(model.objectNames(), QStringList({kBolt}));
}

// -- properties --

TEST_F(GPUModelNamesTest, AMaterialPropertyGoesToTheMaterialRecordsOfItsInstances)
{
    addBoth();
    addBoth();
    model.addMaterialName(0, 1, kSteel);
    model.addMaterialName(1, 0, kSteel);
    model.addMaterialName(1, 2, kSteel);
    setMaterial(kSteel, 3.5f);
    EXPECT_EQ(materials(0), QList<float>({0, 3.5f, 0}));
    EXPECT_EQ(materials(1), QList<float>({3.5f, 0, 3.5f}));
    EXPECT_EQ(objects(0), QList<float>({0, 0, 0}));
    EXPECT_EQ(objects(1), QList<float>({0, 0, 0}));
}

TEST_F(GPUModelNamesTest, AnObjectPropertyGoesToTheObjectRecordsOfItsInstances)
{
    addBoth();
    model.addObjectName(0, 2, kBolt);
    setObject(kBolt, -2.0f);
    EXPECT_EQ(objects(0), QList<float>({0, 0, -2.0f}));
    EXPECT_EQ(materials(0), QList<float>({0, 0, 0}));
}

TEST_F(GPUModelNamesTest, APropertyOfAnUnknownNameDoesNothing)
{
    addBoth();
    model.addObjectName(0, 0, kBolt);
    model.addMaterialName(0, 0, kSteel);
    LogCapture log;
    setMaterial(kBolt, 1.0f);
    setObject(kSteel, 1.0f);
    EXPECT_EQ(materials(0), QList<float>({0, 0, 0}));
    EXPECT_EQ(objects(0), QList<float>({0, 0, 0}));
    EXPECT_EQ(log.messages(), QStringList());
}

TEST_F(GPUModelNamesTest, DrawablesWithoutSuchRecordsArePassedOver)
{
    model.add(newDrawList(1), 0, nullptr, newRecords(1), 0);
    model.add(newDrawList(1), 0, newRecords(1), nullptr, 0);
    for (int handle : {0, 1})
    {
        model.addMaterialName(handle, 0, kSteel);
        model.addObjectName(handle, 0, kSteel);
    }
    LogCapture log;
    setMaterial(kSteel, 1.0f);
    setObject(kSteel, 2.0f);
    EXPECT_EQ(materials(1), QList<float>({1.0f}));
    EXPECT_EQ(objects(0), QList<float>({2.0f}));
    EXPECT_EQ(log.messages(), QStringList());
}

TEST_F(GPUModelNamesTest, NamesGoByHandleAfterSorting)
{
    addBoth(9);
    addBoth(1);
    model.addMaterialName(0, 0, kSteel);
    model.addObjectName(1, 1, kBolt);
    model.sortDrawablesByFlags();
    ASSERT_EQ(Pass::drawableAt(model, 0).handle, 1);
    setMaterial(kSteel, 5.0f);
    setObject(kBolt, 6.0f);
    EXPECT_EQ(materials(0), QList<float>({5.0f, 0, 0}));
    EXPECT_EQ(materials(1), QList<float>({0, 0, 0}));
    EXPECT_EQ(objects(1), QList<float>({0, 6.0f, 0}));
}

TEST_F(GPUModelNamesTest, APropertyMarksTheRecordsAsChanged)
{
    addBoth();
    model.addMaterialName(0, 0, kSteel);
    model.materialData(0)->clearDirtyStatus();
    const QByteArray before = model.materialData(0)->dataArray();
    setMaterial(kSteel, 0.0f);
    EXPECT_TRUE(InstanceDataCollectionTestAccess::isDirty(*model.materialData(0)));
    EXPECT_EQ(model.materialData(0)->dataArray(), before);
}

/// Each against the collection's own `set`, with what that says and leaves: properties that there are not, sizes beyond
/// the member, the record and the bytes, bad instances, no data, and two plans in turn.
TEST_F(GPUModelNamesTest, PropertiesAreWrittenAndReportedAsTheCollectionDoes)
{
    InstanceDataPlan* const small = newObjectPlan(QStringLiteral("Small"), {}, kAlpha);
    const QByteArray data(1'000, 'x');
    const auto* const noData = static_cast<const char*>(nullptr);
    struct Case
    {
        QString property;
        const char* data;
        size_t size;
    };
    const Case cases[] = {{kAlpha, data.constData(), 4},
                          {QStringLiteral("nothing"), data.constData(), 4},
                          {kAlpha, data.constData(), 0},
                          {kAlpha, data.constData(), 16},
                          {kAlpha, data.constData(), 17},
                          {kInverseModelMatrix, data.constData(), 500},
                          {kAlpha, data.constData(), 1'000},
                          {kAlpha, noData, 4},
                          {kAlpha, noData, 0}};
    for (const Case& c : cases)
    {
        SCOPED_TRACE(testing::Message() << qPrintable(c.property) << " " << c.size);
        GPUModel scene;
        QList<InstanceDataCollection*> expected;
        for (InstanceDataPlan* const each : {plan, small, plan, small})
        {
            const QByteArray bytes(qsizetype(2 * each->totalDataSize() + 7), 'o'); // ends within a record
            const auto make = [&] { return new InstanceDataCollection(each, bytes.constData(), size_t(bytes.size())); };
            scene.add(newDrawList(1), 0, make(), nullptr, 0);
            expected.append(make());
        }
        QStringList messages;
        {
            LogCapture log;
            for (const int instance : {0, 1, 2, 3, -1, INT_MAX, INT_MIN})
                for (int handle = 0; handle < 4; ++handle)
                {
                    scene.addMaterialName(handle, instance, kSteel);
                    expected[handle]->set(instance, c.property, c.data, c.size);
                }
            messages = log.messages();
        }
        LogCapture log;
        scene.setMaterialProperty(kSteel, c.property, c.data, c.size);
        EXPECT_EQ(log.messages(), messages);
        for (int handle = 0; handle < 4; ++handle)
            EXPECT_EQ(scene.materialData(handle)->dataArray(), expected[handle]->dataArray());
        qDeleteAll(expected);
    }
}

TEST_F(GPUModelNamesTest, APropertyMayComeFromTheRecordsThemselves)
{
    addBoth();
    setMaterial(kSteel, 0.0f);
    model.addMaterialName(0, 2, kBolt);
    setMaterial(kBolt, 7.0f);
    model.addMaterialName(0, 0, kSteel);
    model.addMaterialName(0, 1, kSteel);
    const char* const last = model.materialData(0)->dataArray().constData() + 2 * 272 + plan->offset(kAlpha);
    model.setMaterialProperty(kSteel, kAlpha, last, sizeof(float));
    EXPECT_EQ(materials(0), QList<float>({7.0f, 7.0f, 7.0f}));
}

TEST_F(GPUModelNamesTest, ANameOfADrawableThatThereIsNotIsReportedWhereItIsUsed)
{
    addBoth();
    LogCapture log;
    model.addMaterialName(5, 0, kSteel);
    model.addMaterialName(-1, 0, kSteel);
    model.addMaterialName(0, 0, kSteel);
    EXPECT_EQ(log.messages(), QStringList());
    setMaterial(kSteel, 4.0f);
    EXPECT_EQ(log.messages(), QStringList({noDrawable(5), noDrawable(-1)}));
    EXPECT_EQ(materials(0), QList<float>({4.0f, 0, 0}));
}

// -- estimates --

TEST_F(GPUModelNamesTest, TheNumberOfVerticesIsKeptTo32Bits)
{
    for (const GLuint count : {7u, 0x80000000u, 0x80000001u})
    {
        auto* const buffers = new DrawBuffers(nullptr);
        buffers->setVertexCount(count);
        model.add(buffers, 0, nullptr, nullptr, 0);
    }
    EXPECT_EQ(model.getTotalVerts(), 8);
    model.addSimple(nullptr, 0, nullptr, nullptr, 0);
    EXPECT_EQ(model.getTotalVerts(), 8) << "one without a draw list";
}

TEST_F(GPUModelNamesTest, TheEstimateOfTheCPUAddsUpWhatTheModelHolds)
{
    quint64 bytes = sizeof(GPUModel);
    add(3);
    bytes += sizeof(GPUModel::Drawable) + model.drawBuffers(0)->memoryEstimateCPU() +
             model.objectData(0)->memoryEstimateCPU() + 4;
    EXPECT_EQ(model.memoryEstimateCPU(), bytes) << "a drawable";
    addBoth();
    bytes += sizeof(GPUModel::Drawable) + model.drawBuffers(1)->memoryEstimateCPU() +
             model.objectData(1)->memoryEstimateCPU() + model.materialData(1)->memoryEstimateCPU() + 4;
    EXPECT_EQ(model.memoryEstimateCPU(), bytes) << "one with both kinds of records";
    model.addSimple(nullptr, 0, nullptr, nullptr, 0);
    bytes += sizeof(GPUModel::Drawable) + 4;
    EXPECT_EQ(model.memoryEstimateCPU(), bytes) << "one with nothing";

    model.addMaterialName(0, 0, kSteel);
    model.addMaterialName(0, 1, kSteel);
    bytes += 5 + 2 * 8;
    EXPECT_EQ(model.memoryEstimateCPU(), bytes) << "a material's name";
    model.addObjectName(0, 0, kBolt);
    bytes += 4 + 8;
    EXPECT_EQ(model.memoryEstimateCPU(), bytes) << "an object's name";

    model.addTransform(-1, identity);
    bytes += 68 + 68 + 36 + 4 + 1 + 24;
    EXPECT_EQ(model.memoryEstimateCPU(), bytes) << "a transform";
    model.useTransform(0, 0, 0);
    model.useTransform(0, 1, 0);
    bytes += 2 * 8;
    EXPECT_EQ(model.memoryEstimateCPU(), bytes) << "those who follow it";
    model.setTransformName(0, QStringLiteral("node"));
    bytes += 28 + 4;
    EXPECT_EQ(model.memoryEstimateCPU(), bytes) << "its name";

    model.addCamera({}, QStringLiteral("camera"));
    model.addLight({}, QStringLiteral("light"));
    const GPUModel::BoundingBox box;
    model.loadBoundingBoxes(&box, 1);
    EXPECT_EQ(model.memoryEstimateCPU(), bytes) << "the rest is not counted";
}

TEST_F(GPUModelNamesTest, TheEstimateOfTheGPUAddsUpBuffers)
{
    add(1);
    EXPECT_EQ(model.memoryEstimateGPU(), 0u);
    const auto indices = OpenGLDeviceContext::current()->newBuffer();
    indices->setTarget(GL_ELEMENT_ARRAY_BUFFER);
    const QByteArray bytes(100, '\0');
    ASSERT_TRUE(indices->bind());
    ASSERT_TRUE(indices->uploadArbitraryData(bytes.constData(), 100, GL_STATIC_DRAW, 1));
    ASSERT_TRUE(indices->unbind());
    model.drawBuffers(0)->setIndexedDraw(indices, 3, GL_UNSIGNED_SHORT);
    const quint64 ofBuffers = model.drawBuffers(0)->memoryEstimateGPU();
    EXPECT_EQ(ofBuffers, indices->memoryEstimateGPU());
    EXPECT_EQ(model.memoryEstimateGPU(), ofBuffers);

    model.add(nullptr, 0, newRecords(1), newRecords(2), 0);
    model.add(nullptr, 0, nullptr, nullptr, 0);
    const auto upload = [](InstanceDataCollection* records)
    {
        const auto buffer = records->getUniformBufferObject()->bufferObject();
        EXPECT_TRUE(buffer->bind());
        EXPECT_TRUE(buffer->uploadArbitraryData(records->dataArray().constData(), int(records->dataArray().size()),
                                                GL_STATIC_DRAW, 1));
        EXPECT_TRUE(buffer->unbind());
        return quint64(records->memoryEstimateGPU());
    };
    const quint64 ofMaterial = upload(model.materialData(1));
    EXPECT_GT(ofMaterial, 0u);
    EXPECT_EQ(model.memoryEstimateGPU(), ofBuffers + ofMaterial);
    const quint64 ofObject = upload(model.objectData(1));
    EXPECT_EQ(ofObject, 2 * ofMaterial);
    EXPECT_EQ(model.memoryEstimateGPU(), ofBuffers + ofMaterial + ofObject);
}

// -- handles that there are not --

TEST_F(GPUModelNamesTest, ABadHandleIsReportedAndNothingIsRead)
{
    add(1, 3);
    for (const int handle : {1, -1, INT_MAX, INT_MIN})
    {
        LogCapture log;
        EXPECT_EQ(model.drawBuffers(handle), nullptr);
        EXPECT_EQ(model.materialData(handle), nullptr);
        EXPECT_EQ(model.objectData(handle), nullptr);
        EXPECT_EQ(std::as_const(model).drawBuffers(handle), nullptr);
        EXPECT_EQ(std::as_const(model).materialData(handle), nullptr);
        EXPECT_EQ(std::as_const(model).objectData(handle), nullptr);
        EXPECT_EQ(model.getFlags(handle), 0u);
        model.addFlags(handle, 4);
        model.removeFlags(handle, 4);
        model.setFlags(handle, 4, 4);
        model.set(handle, nullptr, nullptr, nullptr, 4, 4);
        model.useTransform(handle, 0, 0);
        model.useBoundingBox(handle, 0, 0);
        EXPECT_EQ(log.messages(), QStringList(13, noDrawable(handle)));
    }
    EXPECT_EQ(model.getFlags(0), 3u);
    EXPECT_FALSE(Access::isUnsorted(model));
}

TEST_F(GPUModelNamesTest, ARangeWithABadHandleIsReportedAndChangesNothing)
{
    for (int i = 0; i < 3; ++i)
        add(1, 3);
    const auto message = [](int first, int last)
    {
        return assertion("this->isHandle(first) && this->isHandle(last - 1)",
                         QStringLiteral("There are no drawables %1 to %2").arg(first).arg(last));
    };
    for (const auto& [first, last] : {std::pair(-1, 2), {0, 4}, {3, 4}, {INT_MIN, INT_MAX}})
    {
        LogCapture log;
        model.addFlags(first, last, 4);
        model.removeFlags(first, last, 1);
        model.setFlags(first, last, 0, 2);
        EXPECT_EQ(log.messages(), QStringList(3, message(first, last - 1)));
    }
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(model.getFlags(i), 3u);
}

TEST_F(GPUModelNamesTest, ADrawableWithoutADrawListHasNoCommands)
{
    const int handle = model.add(nullptr, 0, nullptr, nullptr, 2);
    EXPECT_EQ(handle, 0);
    EXPECT_TRUE(Pass::drawableAt(model, 0).culled.isEmpty());
    EXPECT_EQ(model.getTotalVerts(), 0);
    model.set(handle, newDrawList(2), nullptr, nullptr, 0, 0);
    EXPECT_EQ(Pass::drawableAt(model, 0).culled.size(), 2);
    model.set(handle, nullptr, nullptr, nullptr, 0, 0);
    EXPECT_EQ(Pass::drawableAt(model, 0).culled.size(), 0);
    EXPECT_EQ(model.sceneBounds().minX, 1.0e20f);
}

} // namespace
} // namespace Harrow::Vrk::Test
