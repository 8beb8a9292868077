// SPDX-License-Identifier: MIT
//
// #instancedata: the header of a plan in the place of the line that names it.
#include "GLSLMacroProcessorTestTools.h"

#include <VrkGL/InstanceDataPlan.h>

namespace Harrow::Vrk::Test
{
namespace
{

class GLSLMacroProcessorPlan : public GLSLMacroProcessorFixture
{
protected:
    /// Without a driver, and so by the carrier that asks it for nothing that counts.
    InstanceDataPlan* registered(const QString& name, const QString& member,
                                 InstanceDataPlan::DataType type = InstanceDataPlan::eFloat)
    {
        auto* const plan = new InstanceDataPlan(name);
        plan->setMechanism(InstanceDataPlan::eTextureMechanism);
        plan->addMember(type, member);
        InstanceDataRegistry::Instance().registerPlan(plan);
        _log.clear();
        return plan;
    }

    /// The directive for `name`, as a member of a plan writes it into the plan's header: twice, once for each accessor.
    static QString directiveMember(const char* name)
    {
        return QStringLiteral("x;\n#instancedata \"%1\"\nfloat y").arg(QLatin1String(name));
    }
};

const std::string kHeader = "#ifndef VRK_INSTANCEDATAPLAN_P_GLSLH\n"
                            "#define VRK_INSTANCEDATAPLAN_P_GLSLH\n"
                            "float getSize(uint Index);\n"
                            "float getSize(void);\n"
                            "#define P_ARRAY_SIZE 150\n"
                            "#endif // VRK_INSTANCEDATAPLAN_P_GLSLH\n";

} // namespace

TEST_F(GLSLMacroProcessorPlan, TheHeaderOfAKnownPlanStandsInThePlaceOfTheLine)
{
    registered(QStringLiteral("P"), QStringLiteral("size"));
    EXPECT_EQ(expand(QStringLiteral("a\n#instancedata \"P\"\nb")), "a\n" + kHeader + "\n\nb");
    EXPECT_EQ(expand(QStringLiteral("#instancedata\"P\" \t")), kHeader + "\n");
    EXPECT_EQ(expandWithNull(QStringLiteral("#instancedata   \"P\"\r\nb")), kHeader + "\n\r\nb");
    EXPECT_EQ(_log.lines().size(), 0);
}

TEST_F(GLSLMacroProcessorPlan, ThePlanIsLookedUpAtEachLineAndByItsWholeName)
{
    const QString source = QStringLiteral("#instancedata \"P\"\n#instancedata \"P\"\n#instancedata \"P \"");
    EXPECT_EQ(expand(source), "\n\n");
    EXPECT_EQ(warnings(), unknownPlan("P") + "\n" + unknownPlan("P "));
    registered(QStringLiteral("P"), QStringLiteral("size"));
    EXPECT_EQ(expand(source), kHeader + "\n\n" + kHeader + "\n\n");
    InstanceDataRegistry::Instance().clear();
    EXPECT_EQ(expand(source), "\n\n");
    EXPECT_EQ(warnings(), unknownPlan("P") + "\n" + unknownPlan("P "));
}

TEST_F(GLSLMacroProcessorPlan, DefinesStandBehindTheVersionAndInFrontOfTheHeader)
{
    registered(QStringLiteral("P"), QStringLiteral("size"));
    _processor.addDefine(QStringLiteral("A"), QStringLiteral("1"));
    EXPECT_EQ(expand(QStringLiteral("#version 150\n#instancedata \"P\"\nb")),
              "#version 150\n#define A 1\n\n" + kHeader + "\n\nb");
}

TEST_F(GLSLMacroProcessorPlan, TheHeaderIsExpandedAsAnyTextIs)
{
    const auto* const plan = registered(QStringLiteral("P"), QStringLiteral("x;\n#macro M d\n#version 150\nfloat y"));
    ASSERT_EQ(plan->glslh().count(QStringLiteral("\n#macro M d\n")), 2);
    _processor.addMacro(QStringLiteral("M"), QStringLiteral("m"));
    _processor.addDefine(QStringLiteral("A"), QStringLiteral("1"));
    EXPECT_EQ(expand(QStringLiteral("#instancedata \"P\"")),
              QString(plan->glslh())
                      .replace(QStringLiteral("#macro M d"), QStringLiteral("m\n"))
                      .replace(QStringLiteral("#version 150"), QStringLiteral("#version 150\n#define A 1\n"))
                      .toStdString() +
                  "\n");
    EXPECT_EQ(_log.lines().size(), 0);
}

TEST_F(GLSLMacroProcessorPlan, APlanWithTexturesBringsTheHeaderOfTheTextureManager)
{
    const auto* const plan = registered(QStringLiteral("P"), QStringLiteral("map"), InstanceDataPlan::eTexture);
    ASSERT_TRUE(plan->glslh().contains(QStringLiteral("\n#include \"TextureManager.glslh\"\n")));
    const std::string text = expand(QStringLiteral("#instancedata \"P\""));
    EXPECT_EQ(text, expand(plan->glslh()) + "\n");
    EXPECT_EQ(text.find("#include"), std::string::npos);
    EXPECT_NE(text.find("vec4 managedTexture(in VrkTextureToken token, in vec2 texCoord);"), std::string::npos);
    EXPECT_LT(text.find("#define VrkTextureToken"), text.find("VrkTextureToken getMap(uint Index);"));
    EXPECT_EQ(_log.lines().size(), 0);
}

TEST_F(GLSLMacroProcessorPlan, APlanIsReachedThroughFilesMacrosAndOtherPlans)
{
    registered(QStringLiteral("P"), QStringLiteral("size"));
    const auto* const outer = registered(QStringLiteral("Outer"), directiveMember("P"));
    write(QStringLiteral("f"), "#instancedata \"P\"\n");
    _processor.addMacro(QStringLiteral("M"), QStringLiteral("#instancedata \"P\""));
    EXPECT_EQ(expand(QStringLiteral("#include \"f\"")), kHeader + "\n\n\n");
    EXPECT_EQ(expand(QStringLiteral("#macro M d")), kHeader + "\n\n");
    EXPECT_EQ(expand(QStringLiteral("#instancedata \"Outer\"")),
              QString(outer->glslh())
                      .replace(QStringLiteral("#instancedata \"P\""), QString::fromStdString(kHeader + "\n"))
                      .toStdString() +
                  "\n");
    EXPECT_EQ(_log.lines().size(), 0);
}

TEST_F(GLSLMacroProcessorPlan, APlanThatNamesItselfIsCutOffAtTheDepthLimit)
{
    const auto* const plan = registered(QStringLiteral("P"), directiveMember("P"));
    ASSERT_EQ(plan->glslh().count(QStringLiteral("#instancedata \"P\"")), 2);
    const std::string text = expand(QStringLiteral("#version 150\n#instancedata \"P\"\nend"));
    EXPECT_EQ(warnings(), "Expansion depth limit of 256 reached at '#instancedata \"P\"'");
    EXPECT_EQ(_log.lines().size(), 1);
    // As deep as the limit allows, once: behind the cut-off nothing nests any more.
    const QString expansion = QString::fromStdString(text);
    EXPECT_EQ(expansion.count(QStringLiteral("#define P_ARRAY_SIZE 150")), 256);
    EXPECT_EQ(expansion.count(QStringLiteral("#instancedata")), 0);
    EXPECT_TRUE(expansion.endsWith(QStringLiteral("\nend")));
}

TEST_F(GLSLMacroProcessorPlan, PlansThatNameEachOtherAreCutOffAtTheDepthLimit)
{
    registered(QStringLiteral("P"), directiveMember("Q"));
    registered(QStringLiteral("Q"), directiveMember("P"));
    const QString expansion = QString::fromStdString(expand(QStringLiteral("#instancedata \"P\"\nend")));
    EXPECT_EQ(warnings(), "Expansion depth limit of 256 reached at '#instancedata \"P\"'");
    EXPECT_EQ(expansion.count(QStringLiteral("#define P_ARRAY_SIZE 150")), 128);
    EXPECT_EQ(expansion.count(QStringLiteral("#define Q_ARRAY_SIZE 150")), 128);
    EXPECT_TRUE(expansion.endsWith(QStringLiteral("\nend")));
}

TEST_F(GLSLMacroProcessorPlan, BehindACutOffAKnownPlanExpandsToNothing)
{
    registered(QStringLiteral("P"), QStringLiteral("size"));
    write(QStringLiteral("f"), "#include \"f\"");
    EXPECT_EQ(expand(QStringLiteral("#include \"f\"\n#instancedata \"P\"\nend")), std::string(256, '\n') + "\n\nend");
    EXPECT_EQ(warnings(), "Expansion depth limit of 256 reached at '#include \"f\"'");
}

TEST_F(GLSLMacroProcessorPlan, TheSizeLimitCountsTheHeader)
{
    registered(QStringLiteral("P"), QStringLiteral("size"));
    const QString source = QStringLiteral("#instancedata \"P\"");
    const auto needed = qsizetype(kHeader.size()) + 1;
    EXPECT_EQ(Access::processWithin(needed, source, &_processor).toStdString(), kHeader + "\n");
    EXPECT_EQ(_log.lines().size(), 0);
    EXPECT_EQ(Access::processWithin(needed - 1, source, &_processor).toStdString(), "");
    EXPECT_EQ(warnings(),
              "Expansion size limit of " + std::to_string(needed - 1) + " reached at '#instancedata \"P\"'");
}

TEST_F(GLSLMacroProcessorPlan, TheStepForASingleLineLooksForThePlanByTheWholeMatch)
{
    const QString pattern = QStringLiteral("^#instancedata *\"([^\"]*)\"\\s*$");
    const QString line = QStringLiteral("#instancedata \"P\"");
    registered(QStringLiteral("P"), QStringLiteral("size"));
    EXPECT_EQ(Access::material(line, pattern, &_processor), line);
    EXPECT_EQ(warnings(), unknownPlan("#instancedata \"P\""));
    const auto* const plan = registered(line, QStringLiteral("x;\n#macro M d\nfloat y"));
    EXPECT_EQ(Access::material(line, pattern, &_processor).toStdString(), expand(plan->glslh()));
    EXPECT_EQ(Access::material(line, pattern, nullptr).toStdString(), expandWithNull(plan->glslh()));
    EXPECT_NE(expand(plan->glslh()), plan->glslh().toStdString());
}

} // namespace Harrow::Vrk::Test
