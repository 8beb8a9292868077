// SPDX-License-Identifier: MIT
// GLSL expansion of made-up texts, with macros and defines that are made up too. The input is text in parts that the
// byte 1 divides: the source; then, each told by its first letter, "d" a define, "m" a macro, "D" and "M" one that is
// dropped again, as name and value with a blank between them. Its very first byte chooses the limits.
//
// What is included is fixed: the library's own files, and those of the folder glsl, which include themselves and each
// other and expand the macros INNER and OUTER.
#include "GLSLMacroProcessor.h"

#include "FuzzDriver.h"
#include "InstanceDataPlan.h"
#include "InstanceDataRegistry.h"

#include <QStringList>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string_view>

namespace Harrow::Vrk
{
struct GLSLMacroProcessorTestAccess
{
    static QString processWithin(qsizetype sizeLimit, const QString& source, GLSLMacroProcessor* processor)
    {
        return GLSLMacroProcessor::processWithin(sizeLimit, source, processor);
    }
};
} // namespace Harrow::Vrk

using namespace Harrow::Vrk;
using namespace Harrow::Vrk::Test;

namespace
{

/// The library's own limit is half a gigabyte, which takes longer than a run may.
constexpr qsizetype kSizeLimit = 1 << 12;
constexpr qsizetype kSmallSizeLimit = 256;

enum Option : unsigned
{
    eStandard = 0x01, // by the processor that serves where there is none, at the library's own limit
    eSmallLimit = 0x02,
};

/// With the plan "P" for as long as a run takes: unknown names are remembered until the registry is cleared.
class Plans
{
public:
    Plans()
    {
        auto* const plan = new InstanceDataPlan(QStringLiteral("P"));
        plan->setMechanism(InstanceDataPlan::eTextureMechanism);
        plan->addMember(InstanceDataPlan::eFloat, QStringLiteral("x;\n#macro INNER \nfloat y"));
        InstanceDataRegistry::Instance().registerPlan(plan);
    }
    ~Plans()
    {
        InstanceDataRegistry::Instance().clear();
    }
    Plans(const Plans&) = delete;
    Plans& operator=(const Plans&) = delete;
};

void hold(GLSLMacroProcessor& processor, const QString& part)
{
    if (part.isEmpty())
        return;
    const qsizetype blank = part.indexOf(u' ');
    const QString name = part.sliced(1, (blank < 0 ? part.size() : std::max<qsizetype>(blank, 1)) - 1);
    const QString value = blank < 0 ? QString() : part.sliced(blank + 1);
    const bool isMacro = part[0].toLower() == u'm';
    isMacro ? processor.addMacro(name, value) : processor.addDefine(name, value);
    if (part[0] == u'M')
        processor.removeMacro(name);
    if (part[0] == u'D')
        processor.removeDefine(name);
}

void expect(bool condition, const char* message)
{
    if (!condition)
        FuzzDriver::fail(message);
}

void expand(const QString& source, qsizetype limit, GLSLMacroProcessor* processor)
{
    const QString output = processor ? GLSLMacroProcessorTestAccess::processWithin(limit, source, processor)
                                     : GLSLMacroProcessor::process(source, nullptr);
    if (!source.contains(u'#'))
        expect(output == source, "a text without directives is changed");
    // At the limit each #version line still gets its line end, and lines that are none stay.
    if (processor)
        expect(output.size() <= 2 * std::max(limit, source.size()), "the output is beyond its limit");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzDriver::instance();
    if (size == 0)
        return 0;
    const QStringList parts =
        QString::fromUtf8(reinterpret_cast<const char*>(data) + 1, static_cast<qsizetype>(size - 1)).split(u'\x01');
    // Making the plan costs as much as a short text, so it is made for those that can come to name one.
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    std::optional<Plans> plans;
    if (text.find("instancedata") != text.npos || text.find("outer.glslh") != text.npos ||
        text.find("noend.glslh") != text.npos)
        plans.emplace();
    if (data[0] & eStandard)
    {
        expand(parts[0], 0, nullptr);
        return 0;
    }
    GLSLMacroProcessor processor;
    processor.addIncludePath(QStringLiteral(":/fuzz"));
    for (qsizetype i = 1; i < parts.size(); ++i)
        hold(processor, parts[i]);
    expand(parts[0], data[0] & eSmallLimit ? kSmallSizeLimit : kSizeLimit, &processor);
    return 0;
}
