// SPDX-License-Identifier: MIT
// The switch is read once per process, so each setting runs in a child process of its own.
#include <QProcess>
#include <QProcessEnvironment>

#include <gtest/gtest.h>

#include <optional>

namespace
{

struct Setting
{
    const char* name;
    std::optional<const char*> value;
    bool on;
};

void PrintTo(const Setting& setting, std::ostream* out)
{
    *out << setting.name;
}

QStringList probeLines(const Setting& setting)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(QStringLiteral("VRK_ENABLE_LOGGING"));
    if (setting.value)
        environment.insert(QStringLiteral("VRK_ENABLE_LOGGING"), QString::fromLatin1(*setting.value));
    QProcess probe;
    probe.setProcessEnvironment(environment);
    probe.start(QStringLiteral(VRK_LOGGING_PROBE), QStringList());
    EXPECT_TRUE(probe.waitForFinished());
    EXPECT_EQ(probe.exitCode(), 0);
    return QString::fromUtf8(probe.readAllStandardOutput()).split(u'\n', Qt::SkipEmptyParts);
}

const QStringList kAllLines = {
    QStringLiteral("debug 1"),
    QStringLiteral("critical 2"),
    QStringLiteral("warning 3"),
    QStringLiteral("[ !! ] Assertion 'false' failed: continuing 4"),
    QStringLiteral("[ !! ] Assertion 'false' failed: returning 5"),
    QStringLiteral("returned 0"),
    QStringLiteral("glError: 0x500 'invalid enum' caught"),
    QStringLiteral("bytesFromInternalFormat() does not implement yet : 0x0001"),
    QStringLiteral("Failed to obtain 'glNoSuchFunction'"),
    QStringLiteral("Shader program is not linked"),
    QStringLiteral("VrkShaderProgram::setUniform is not implemented for type : QString"),
    QStringLiteral("[ !! ] Assertion 'itFind != this->_uniformBlockBindingIndices.end()' failed: Trying to set "
                   "uniformBlockIndex 3 on shader 0. Does not exist."),
    QStringLiteral("Failed to obtain 'glBindFragDataLocationIndexed'"),
    QStringLiteral("Trying to setup glBindFragDataLocationIndexed( 1, 0, , ). Func pointer is NULL, falling back to "
                   "glBindFragDataLocation()"),
    QStringLiteral("Failed to link GL shader"),
    QStringLiteral(" =======Log========="),
    QStringLiteral("Program 1"),
    QStringLiteral("Couldn't find shader source file 'no/such.vert'"),
    QStringLiteral("Failed to compile GL shader"),
    QStringLiteral(" Shader Type = GL_VERTEX_SHADER"),
    QStringLiteral(" =======Source======"),
    QStringLiteral("   1 : text"),
    QStringLiteral(" =======Log========="),
    QStringLiteral("evaluated 5"),
    QStringLiteral("switch 1"),
};

// Control flow is the same, no argument is evaluated, and what does not obey the switch is still said.
const QStringList kSilencedLines = {
    QStringLiteral("returned 0"),
    QStringLiteral("glError: 0x500 'invalid enum' caught"),
    QStringLiteral("bytesFromInternalFormat() does not implement yet : 0x0001"),
    QStringLiteral("Failed to link GL shader"),
    QStringLiteral(" =======Log========="),
    QStringLiteral("Program 1"),
    QStringLiteral("Couldn't find shader source file 'no/such.vert'"),
    QStringLiteral("Failed to compile GL shader"),
    QStringLiteral(" Shader Type = GL_VERTEX_SHADER"),
    QStringLiteral(" =======Source======"),
    QStringLiteral("   1 : text"),
    QStringLiteral(" =======Log========="),
    QStringLiteral("evaluated 0"),
    QStringLiteral("switch 0"),
};

class LoggingSwitch : public testing::TestWithParam<Setting>
{
};

} // namespace

TEST_P(LoggingSwitch, DecidesWhatPrintsAndNothingElse)
{
    EXPECT_EQ(probeLines(GetParam()), GetParam().on ? kAllLines : kSilencedLines);
}

INSTANTIATE_TEST_SUITE_P(Settings, LoggingSwitch,
                         testing::Values(Setting{"Unset", std::nullopt, true}, Setting{"One", "1", true},
                                         Setting{"Empty", "", false}, Setting{"Zero", "0", false},
                                         Setting{"False", "false", false}, Setting{"FalseInCapitals", "FALSE", false},
                                         Setting{"FalseMixed", "False", false}, Setting{"Word", "no", true},
                                         Setting{"DoubleZero", "00", true}),
                         [](const auto& setting) { return std::string(setting.param.name); });
