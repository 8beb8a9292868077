// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// What the tests of GLSLMacroProcessor share: a processor with a folder of the test's own, and its private steps.

#include "support/LogCapture.h"

#include <VrkGL/GLSLMacroProcessor.h>
#include <VrkGL/InstanceDataRegistry.h>

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <string>

namespace Harrow::Vrk
{
struct GLSLMacroProcessorTestAccess
{
    using Processor = GLSLMacroProcessor;

    static QList<QDir> includeDirectories(const Processor& processor)
    {
        return processor._includeDirectories;
    }
    static QString processWithin(qsizetype sizeLimit, const QString& source, Processor* processor)
    {
        return Processor::processWithin(sizeLimit, source, processor);
    }
    static QString processDefines(Processor* processor)
    {
        return Processor::processDefines(processor);
    }
    static QString include(QString line, const QString& pattern, Processor* processor)
    {
        QRegularExpression expression(pattern);
        Processor::processLineInclude(line, expression, processor);
        return line;
    }
    static QString macro(QString line, const QString& pattern, Processor* processor)
    {
        QRegularExpression expression(pattern);
        Processor::processLineMacro(line, expression, processor);
        return line;
    }
    static QString material(QString line, const QString& pattern, Processor* processor)
    {
        QRegularExpression expression(pattern);
        Processor::processLineMaterial(line, expression, processor);
        return line;
    }
};
} // namespace Harrow::Vrk

namespace Harrow::Vrk::Test
{

using Processor = Harrow::Vrk::GLSLMacroProcessor;
using Access = GLSLMacroProcessorTestAccess;

inline std::string joined(const QStringList& lines)
{
    return lines.join(u'\n').toStdString();
}

/// What the registry says when it is asked for a plan that it does not have, once for each name.
inline std::string unknownPlan(const char* name)
{
    return std::string("InstanceDataRegistry::getPlan() : Specified instanceData plan does not exist : ") + name;
}

/// A processor that also searches a folder of the test's own, and a registry without plans.
class GLSLMacroProcessorFixture : public testing::Test
{
protected:
    GLSLMacroProcessorFixture()
    {
        InstanceDataRegistry::Instance().clear();
        _processor.addIncludePath(_folder.path());
    }

    ~GLSLMacroProcessorFixture() override
    {
        InstanceDataRegistry::Instance().clear();
    }

    void write(const QString& name, const QByteArray& contents)
    {
        QFile file(_folder.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(contents), contents.size());
    }

    std::string expand(const QString& source)
    {
        return Processor::process(source, &_processor).toStdString();
    }
    static std::string expandWithNull(const QString& source)
    {
        return Processor::process(source, nullptr).toStdString();
    }
    std::string warnings() const
    {
        return joined(_log.messages(QtWarningMsg));
    }

    QTemporaryDir _folder;
    Processor _processor;
    LogCapture _log;
};

} // namespace Harrow::Vrk::Test
