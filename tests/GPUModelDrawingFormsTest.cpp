// SPDX-License-Identifier: MIT
//
// The public forms of a pass: what each hands on and what it leaves out; keys that are excluded and keys that are
// named; the switch that makes every pass a simple draw.
#include "GPUModelDrawingTestTools.h"

#include "SamplerTextureManager.h"

#include <functional>

namespace Harrow::Vrk::Test
{
namespace
{

/// What can be seen of a pass.
struct Traits
{
    QString manager;
    bool setsWinding = false;
    bool isSorted = false;
    bool isExcluding = false;
    bool isNaming = false;
    bool writesStencil = false;

    bool operator==(const Traits& other) const
    {
        return manager == other.manager && setsWinding == other.setsWinding && isSorted == other.isSorted &&
               isExcluding == other.isExcluding && isNaming == other.isNaming && writesStencil == other.writesStencil;
    }
};

std::ostream& operator<<(std::ostream& stream, const Traits& traits)
{
    return stream << traits.manager.toStdString() << (traits.setsWinding ? ", winding" : "")
                  << (traits.isSorted ? ", sorted" : "") << (traits.isExcluding ? ", excluding" : "")
                  << (traits.isNaming ? ", naming" : "") << (traits.writesStencil ? ", stencil" : "");
}

class GPUModelDrawingFormsTest : public GPUModelDrawing
{
protected:
    static constexpr int kExcluded = 20;
    static constexpr int kNamed = 30;
    static constexpr quint64 kSorted = kSortFlag | 1;

    void SetUp() override
    {
        GPUModelDrawing::SetUp();
        instance = std::make_unique<LoggedManager>("instance");
        TextureManager::setInstance(instance.get());
        // Of the list under the named key the second command is the nearer one.
        const GPUModel::BoundingBox boxes[] = {{5, 5, 5, 6, 6, 6}, {-1, -1, -1, 1, 1, 1}};
        model.loadBoundingBoxes(boxes, 2);
        const int handle = add(2, 1, kNamed);
        model.useBoundingBox(handle, 0, 0);
        model.useBoundingBox(handle, 1, 1);
        add(1, 1, kExcluded);
        add(1, 1, 40);
        add(1, 2, 40); // never takes part
    }

    void TearDown() override
    {
        TextureManager::setInstance(nullptr);
        instance.reset();
        GPUModelDrawing::TearDown();
    }

    Traits traitsOf(const std::function<bool()>& pass)
    {
        CallLog calls;
        EXPECT_TRUE(pass());
        QList<int> ids;
        for (const int id : {0, 1, 100, 200, 300})
            if (calls.list().contains(call("glUniform1ui", kDrawIDLocation, id)))
                ids.append(id);
        EXPECT_FALSE(ids.contains(300)) << "value and mask";
        Traits traits;
        for (const char* const name : {"manager", "instance"})
            if (calls.list().contains(QString::fromLatin1(name) + QStringLiteral(" binds program")))
                traits.manager += QString::fromLatin1(name);
        traits.setsWinding = calls.list().contains(call("glFrontFace", GL_CCW));
        traits.isSorted = calls.list().indexOf(call("glUniform1ui", kDrawIDLocation, 1)) <
                          calls.list().indexOf(call("glUniform1ui", kDrawIDLocation, 0));
        traits.isExcluding = ids == QList<int>({0, 1, 200});
        traits.isNaming = ids == QList<int>({0, 1});
        EXPECT_TRUE(traits.isExcluding || traits.isNaming || ids == QList<int>({0, 1, 100, 200}));
        traits.writesStencil = calls.count("glStencilMask") == 1;
        EXPECT_EQ(calls.count("glStencilFunc"), traits.writesStencil ? 3 : 0);
        return traits;
    }

    /// The first draw identifier of each list that a pass draws, ascending.
    QList<int> drawnLists(const std::function<bool()>& pass)
    {
        CallLog calls;
        pass();
        QList<int> drawn;
        for (const int list : {0, 1, 2, 3})
            drawn += QList<int>(calls.list().count(call("glUniform1ui", kDrawIDLocation, 100 * list)), list);
        return drawn;
    }

    bool drawExcluding(const QList<int>& keys)
    {
        return model.drawExclude(program.get(), manager.get(), 0, 0, GPUModel::WindingUnchanged, nullptr, keys);
    }
    bool drawNaming(const QList<int>& keys)
    {
        return model.drawMaterials(program.get(), manager.get(), 0, 0, GPUModel::WindingUnchanged, nullptr, keys);
    }

    std::unique_ptr<LoggedManager> instance;
    const QMatrix4x4 matrix;
    const QString own = QStringLiteral("manager");
    const QString shared = QStringLiteral("instance");
};

TEST_F(GPUModelDrawingFormsTest, EachFormHandsOnWhatItHas)
{
    constexpr auto kWinding = GPUModel::WindingCCW;
    ShaderProgram* const p = program.get();
    TextureManager* const m = manager.get();
    // Manager, winding, matrix, excluded keys, named keys, stencil.
    EXPECT_EQ(traitsOf([&] { return model.draw(p, kSorted, 1, kWinding, false); }),
              Traits({shared, true, false, false, false, false}));
    EXPECT_EQ(traitsOf([&] { return model.draw(p, kSorted, 1, kWinding, true); }),
              Traits({shared, true, false, false, false, true}));
    EXPECT_EQ(traitsOf([&] { return model.draw(p, m, kSorted, 1); }), Traits({own, false, false, false, false, false}));
    EXPECT_EQ(traitsOf([&] { return model.draw(p, m, kSorted, 1, kWinding, false); }),
              Traits({own, true, false, false, false, false}));
    EXPECT_EQ(traitsOf([&] { return model.draw(p, m, kSorted, 1, kWinding, true); }),
              Traits({own, true, false, false, false, true}));
    EXPECT_EQ(traitsOf([&] { return model.draw(p, m, kSorted, 1, kWinding, &matrix, false); }),
              Traits({own, true, true, false, false, false}));
    EXPECT_EQ(traitsOf([&] { return model.draw(p, m, kSorted, 1, kWinding, nullptr, true); }),
              Traits({own, true, false, false, false, true}));
    EXPECT_EQ(traitsOf([&] { return model.drawExclude(p, kSorted, 1, kWinding, {kExcluded}); }),
              Traits({shared, true, false, true, false, false}));
    EXPECT_EQ(traitsOf([&] { return model.drawExclude(p, m, kSorted, 1, kWinding, &matrix, {kExcluded}); }),
              Traits({own, true, true, true, false, false}));
    EXPECT_EQ(traitsOf([&] { return model.drawMaterials(p, m, kSorted, 1, kWinding, &matrix, {kNamed}); }),
              Traits({own, true, true, false, true, false}));
}

TEST_F(GPUModelDrawingFormsTest, AManagerIsMadeWhereThereIsNoneYet)
{
    TextureManager::setInstance(nullptr);
    const LogCapture log;
    EXPECT_TRUE(model.draw(program.get(), 8, 8, GPUModel::WindingUnchanged, false));
    EXPECT_EQ(log.messages().size(), 1);
    const std::unique_ptr<SamplerTextureManager> made(
        dynamic_cast<SamplerTextureManager*>(&TextureManager::Instance()));
    EXPECT_NE(made, nullptr);
    EXPECT_EQ(log.messages().size(), 1); // it is there already
}

// -- keys --

TEST_F(GPUModelDrawingFormsTest, ExcludedKeysAreLeftOutAndOthersThatThereAreNoneOfAreIgnored)
{
    EXPECT_EQ(drawnLists([this] { return drawExcluding({}); }), QList<int>({0, 1, 2, 3}));
    EXPECT_EQ(drawnLists([this] { return drawExcluding({99, -1}); }), QList<int>({0, 1, 2, 3}));
    EXPECT_EQ(drawnLists([this] { return drawExcluding({99, 40, -1, 20, 40}); }), QList<int>({0}));
    EXPECT_EQ(drawnLists([this] { return drawExcluding({20, 30, 40}); }), QList<int>());
    EXPECT_EQ(drawnLists([this] { return drawExcluding({}); }), QList<int>({0, 1, 2, 3}));
    EXPECT_EQ(Access::materialDrawables(model).size(), 3);
}

TEST_F(GPUModelDrawingFormsTest, ManyKeysInAnyOrderCanBeExcluded)
{
    QList<int> keys;
    for (int i = 0; i < 100; ++i)
        keys.append((i * 37) % 100);
    for (const int key : {30, 20, 40})
    {
        QList<int> others = keys;
        others.removeOne(key);
        CallLog calls;
        EXPECT_TRUE(drawExcluding(others));
        EXPECT_EQ(calls.count("glUniform1ui"), key == 20 ? 1 : 2) << key;
    }
    EXPECT_EQ(keys.first(), 0) << "the caller's list is as it was";
}

TEST_F(GPUModelDrawingFormsTest, NamedKeysAreDrawnInTheOrderOfTheList)
{
    CallLog calls;
    EXPECT_TRUE(drawNaming({40, 20, 30, 20}));
    QStringList expected;
    for (const int id : {200, 300, 100, 0, 1, 100})
        expected += call("glUniform1ui", kDrawIDLocation, id);
    EXPECT_EQ(calls.named({"glUniform1ui"}), expected);
}

TEST_F(GPUModelDrawingFormsTest, NoNamedKeyMeansAll)
{
    EXPECT_EQ(drawnLists([this] { return drawNaming({}); }), QList<int>({0, 1, 2, 3}));
}

TEST_F(GPUModelDrawingFormsTest, AnUnknownKeyIsDrawnAsNothingAndGetsAnEmptyEntry)
{
    EXPECT_EQ(callsOf([this] { lastResult = drawNaming({77}); }), cullNone());
    EXPECT_TRUE(lastResult);
    EXPECT_TRUE(Access::materialDrawables(model).contains(77));
    EXPECT_TRUE(Access::materialDrawables(model).value(77).isEmpty());
    EXPECT_EQ(drawnLists([this] { return drawNaming({}); }), QList<int>({0, 1, 2, 3}));
    EXPECT_EQ(drawnLists([this] { return drawNaming({77, 40, 78}); }), QList<int>({2, 3}));
}

TEST_F(GPUModelDrawingFormsTest, AnUnknownKeyInACopyLeavesTheOriginalAlone)
{
    GPUModel copy = model;
    copy.drawMaterials(program.get(), manager.get(), 0, 0, GPUModel::WindingUnchanged, nullptr, {77});
    EXPECT_TRUE(Access::materialDrawables(copy).contains(77));
    EXPECT_FALSE(Access::materialDrawables(model).contains(77));
}

// -- the switch --

TEST_F(GPUModelDrawingFormsTest, WithFeatureBit4EveryPassIsASimpleDraw)
{
    model.setFeatureFlags(15 | 16);
    model.addFlags(0, kHiddenFlag);
    model.visibilityCull(); // culls the first drawable
    ASSERT_FALSE(model.isDrawEmpty(1, 1));
    ShaderProgram* const p = program.get();
    TextureManager* const m = manager.get();
    constexpr auto kWinding = GPUModel::WindingCW;
    const auto simple = [this](TextureManager* used)
    { return callsOf([&] { model.drawSimple(program.get(), used, kSorted, 1); }); };
    const QStringList withManager = simple(m);
    const QStringList withInstance = simple(instance.get());
    ASSERT_EQ(withManager.filter(QStringLiteral("glUniform1ui")).size(), 4);
    ASSERT_NE(withManager, withInstance);
    EXPECT_EQ(callsOf([&] { model.draw(p, kSorted, 1, kWinding, true); }), withInstance);
    EXPECT_EQ(callsOf([&] { model.draw(p, m, kSorted, 1); }), withManager);
    EXPECT_EQ(callsOf([&] { model.draw(p, m, kSorted, 1, kWinding, true); }), withManager);
    EXPECT_EQ(callsOf([&] { model.draw(p, m, kSorted, 1, kWinding, &matrix, true); }), withManager);
    EXPECT_EQ(callsOf([&] { model.drawExclude(p, kSorted, 1, kWinding, {kExcluded}); }), withInstance);
    EXPECT_EQ(callsOf([&] { model.drawExclude(p, m, kSorted, 1, kWinding, &matrix, {kExcluded}); }), withManager);
    EXPECT_EQ(callsOf([&] { model.drawMaterials(p, m, kSorted, 1, kWinding, &matrix, {kNamed, 77}); }), withManager);
    EXPECT_FALSE(Access::materialDrawables(model).contains(77));
}

TEST_F(GPUModelDrawingFormsTest, WithFeatureBit4TheFailureOfAnyDrawableCounts)
{
    const LogCapture log;
    lists[0]->setPrimitiveType(GLenum(-1));
    const QList<int> named = {kNamed, 40};
    const auto draw = [&]
    { return model.drawMaterials(program.get(), manager.get(), 0, 0, GPUModel::WindingNone, nullptr, named); };
    EXPECT_TRUE(draw());
    model.setFeatureFlags(16);
    EXPECT_FALSE(draw());
}

TEST_F(GPUModelDrawingFormsTest, WithFeatureBit4ThePassSetsUpPrimitiveRestartOfSimpleDraws)
{
    model.setFeatureFlags(16);
    Access::setPrimitiveRestartDone(false, false);
    Access::setPrimitiveRestartDone(true, false);
    model.draw(program.get(), manager.get(), 0, 0);
    EXPECT_TRUE(Access::isPrimitiveRestartDone(true));
    EXPECT_FALSE(Access::isPrimitiveRestartDone(false));
}

} // namespace
} // namespace Harrow::Vrk::Test
