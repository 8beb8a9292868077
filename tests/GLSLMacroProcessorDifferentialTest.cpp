// SPDX-License-Identifier: MIT
//
// Compares GLSLMacroProcessor on random texts with a transcription of its rules, step by step, which looks at
// each '#' anew and decides by the patterns alone.

#include "support/LogCapture.h"

#include <VrkCore/ResourcesPath.h>
#include <VrkGL/GLSLMacroProcessor.h>
#include <VrkGL/InstanceDataPlan.h>
#include <VrkGL/InstanceDataRegistry.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMap>
#include <QRegularExpression>
#include <QSet>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <iterator>
#include <random>
#include <string>

namespace Harrow::Vrk::Test
{
namespace
{

struct Held
{
    QMap<QString, QString> macros;
    QMap<QString, QString> defines;
    QMap<QString, QString> plans;
    QList<QDir> directories = {QDir(resourcesPath() + QStringLiteral("/GLSL/include")),
                               QDir(QStringLiteral(":/GLSL/include"))};
};

/// The rules as they are told, without regard to time. No depth limit: the texts here are finite.
class Transcription
{
public:
    explicit Transcription(const Held& held) : _held(held) {}

    QString process(const QString& source)
    {
        const bool injectDefines = !_held.defines.isEmpty();
        QString output;
        qsizetype copied = 0;
        for (qsizetype hash = source.indexOf(u'#'); hash != -1; hash = source.indexOf(u'#', copied))
        {
            output += source.mid(copied, hash - copied);
            qsizetype start = hash;
            while (start > 0 && source[start - 1] != u'\n' && source[start - 1] != u'\r')
                --start;
            const qsizetype end = source.indexOf(_lineEnd, hash);
            const QString line = end == -1 ? source.mid(start) : source.mid(start, end - start);
            copied = end;
            if (!macro(line, output) && !instanceData(line, output) && !include(line, output))
            {
                if (line.startsWith(QStringLiteral("#version")))
                {
                    output += line + u'\n';
                    if (injectDefines)
                        for (auto i = _held.defines.begin(); i != _held.defines.end(); ++i)
                            output += QStringLiteral("#define %1 %2\n").arg(i.key(), i.value());
                }
                else
                {
                    output += u'#';
                    copied = hash + 1;
                }
            }
            if (copied == -1)
                return output;
        }
        return output + source.mid(copied);
    }

    QStringList warnings;

private:
    bool macro(const QString& line, QString& output)
    {
        const QRegularExpressionMatch match = _macro.match(line);
        if (match.hasMatch())
        {
            const bool known = _held.macros.contains(match.captured(1));
            output += process(known ? _held.macros[match.captured(1)] : match.captured(2)) + u'\n';
        }
        return match.hasMatch();
    }

    bool instanceData(const QString& line, QString& output)
    {
        const QRegularExpressionMatch match = _instanceData.match(line);
        if (!match.hasMatch())
            return false;
        const QString name = match.captured(1);
        if (_held.plans.contains(name))
            output += process(_held.plans.value(name)) + u'\n';
        else if (!_missed.contains(name)) // which the registry says once for each name
            warnings +=
                QStringLiteral("InstanceDataRegistry::getPlan() : Specified instanceData plan does not exist : ") +
                name;
        _missed.insert(name);
        return true;
    }

    bool include(const QString& line, QString& output)
    {
        const QRegularExpressionMatch match = _include.match(line);
        if (!match.hasMatch())
            return false;
        const QString name = match.captured(1);
        if (name.isEmpty())
        {
            warnings += QStringLiteral("Cannot extract include filename from '%1'").arg(line);
            return true;
        }
        for (const QDir& directory : _held.directories)
        {
            QFile file(directory.filePath(name));
            if (QFileInfo(file.fileName()).isFile() && file.open(QIODevice::ReadOnly))
            {
                output += process(QString::fromUtf8(file.readAll())) + u'\n';
                return true;
            }
        }
        warnings += QStringLiteral("Failed to open include file '%1'").arg(name);
        return true;
    }

    Held _held;
    QSet<QString> _missed;
    const QRegularExpression _include{QStringLiteral("^#include *\"([^\"]*)\"\\s*$")};
    const QRegularExpression _instanceData{QStringLiteral("^#instancedata *\"([^\"]*)\"\\s*$")};
    const QRegularExpression _macro{QStringLiteral("^\\s*#macro\\s*([^\\s]*)\\s([^\\n\\r]*)\\s*$")};
    const QRegularExpression _lineEnd{QStringLiteral("[\\n\\r]")};
};

// Fragments of lines. Held macros and existing files have digits for names; each text may name only those
// with a greater number, so that every expansion ends.
// clang-format off
const char16_t* const kFragments[] = {
    // line ends, and directives at the start of a line
    u"\n", u"\n", u"\n", u"\r", u"\r\n", u"\n#macro ", u"\n #macro ", u"\n#include \"", u"\n#instancedata \"",
    u"\n#version", u"\n#version 150 core", u"\n//#include \"",
    // blanks, true ones and others
    u" ", u" ", u"\t", u"\f", u"\v", u"\u00a0", u"\u0085", u"\u2028",
    // directives wherever they fall, whole and in parts
    u"#", u"##", u"#macro", u"#macro X", u"#macro\tX y", u"#include", u"#include ", u"#include \"", u"#include \"\"",
    u"#include\"nowhere\"", u"#include \".\"", u"#instancedata", u"#instancedata \"Plan\"", u"#instancedata \"\"",
    u"#version", u"#version 330", u"#define A # 1", u"#ifdef X", u"#MACRO X y", u"# include \"x\"",
    u"#include\t\"x\"", u"#instancedata\t\"x\"",
    // the rest
    u"\"", u"\"\n", u"\" \n", u"\"\t\r\n", u"\" x\n", u"X", u"y z", u"\u00e4", u"\U0001f600", u"%1", u"%s",
    u"float f = 1.0; // #", u"/* # */", u"()"};
// clang-format on

class GLSLMacroProcessorDifferential : public testing::Test
{
protected:
    // A text of up to `length` fragments that names macros and files from number `first` on.
    QString text(int length, int first)
    {
        QString result;
        for (int count = random(length + 1); count > 0; --count)
        {
            const int kind = random(12);
            if (kind == 0 && first < kNames)
                result += QStringLiteral("\n#macro %1 default").arg(first + random(kNames - first));
            else if (kind == 1 && first < kNames)
                result += QStringLiteral("\n#include \"%1\"").arg(first + random(kNames - first)) +
                          (random(4) ? u'\n' : u' ');
            else
                result += QString::fromUtf16(kFragments[random(int(std::size(kFragments)))]);
        }
        // At the start of a text a directive is a directive as well.
        return result.startsWith(u'\n') && random(2) ? result.mid(1) : result;
    }

    /// A plan whose header has directives of its own.
    static void registerPlan(Held& held)
    {
        auto* const plan = new InstanceDataPlan(QStringLiteral("Plan"));
        plan->setMechanism(InstanceDataPlan::eTextureMechanism);
        plan->addMember(InstanceDataPlan::eTexture,
                        QStringLiteral("x;\n#macro NOPE z\n#instancedata \"Lost\"\nfloat y"));
        InstanceDataRegistry::Instance().registerPlan(plan);
        held.plans.insert(plan->name(), plan->glslh());
    }

    int random(int below)
    {
        return int(_engine() % unsigned(below));
    }

    void write(int name, const QString& contents)
    {
        QFile file(_folder.filePath(QString::number(name)));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        const QByteArray bytes = contents.toUtf8();
        ASSERT_EQ(file.write(bytes), bytes.size());
    }

    static constexpr int kNames = 6;
    QTemporaryDir _folder;
    std::mt19937 _engine;
};

} // namespace

TEST_F(GLSLMacroProcessorDifferential, RandomTextsExpandAsTheRulesSay)
{
    LogCapture log;
    int changed = 0;
    int warned = 0;
    for (unsigned seed = 0; seed < 4000; ++seed)
    {
        _engine.seed(seed);
        Held held;
        GLSLMacroProcessor processor;
        for (int name = 0; name < kNames; ++name)
        {
            // New files now and then only: they cost more than all the rest.
            if (seed % 20 == 0)
                write(name, text(7, name + 1));
            if (random(2))
                held.macros.insert(QString::number(name), text(6, name + 1));
        }
        if (random(4) == 0)
        {
            // A nameless macro is reached from any `#macro X`, so it holds none itself.
            held.macros.insert(QString(), text(4, kNames).remove(QStringLiteral("#macro")));
        }
        for (int count = random(3); count > 0; --count)
            held.defines.insert(QStringLiteral("D%1").arg(random(5)), text(2, kNames));
        for (auto i = held.macros.begin(); i != held.macros.end(); ++i)
            processor.addMacro(i.key(), i.value());
        for (auto i = held.defines.begin(); i != held.defines.end(); ++i)
            processor.addDefine(i.key(), i.value());
        held.directories.append(QDir(_folder.path()));
        processor.addIncludePath(_folder.path());

        const bool null = random(8) == 0;
        const QString source = text(30, 0);
        InstanceDataRegistry::Instance().clear();
        if (seed % 2)
            registerPlan(held);
        log.clear();
        const QString output = GLSLMacroProcessor::process(source, null ? nullptr : &processor);
        const QStringList warnings = log.messages();
        // Plans are not the processor's.
        Transcription transcription(null ? Held{{}, {}, held.plans} : held);
        const QString expected = transcription.process(source);

        ASSERT_EQ(output.toStdString(), expected.toStdString()) << "seed " << seed << "\n" << source.toStdString();
        ASSERT_EQ(warnings.join(u'|').toStdString(), transcription.warnings.join(u'|').toStdString())
            << "seed " << seed;
        changed += output != source;
        warned += !warnings.isEmpty();
    }
    InstanceDataRegistry::Instance().clear();
    // The texts are such that the comparison says something.
    EXPECT_GT(changed, 2500);
    EXPECT_GT(warned, 500);
}

} // namespace Harrow::Vrk::Test
