// SPDX-License-Identifier: MIT
#include "ShaderProgram.h"

#include "RangedDataType.h"
#include "ShaderTestTools.h"
#include "UniformForm.h"
#include "UniformTestValues.h"
#include "support/CallLog.h"
#include "support/LogCapture.h"

#include <QColor>
#include <QGenericMatrix>
#include <QMatrix4x4>
#include <QMetaType>
#include <QVariant>
#include <QVector2D>
#include <QVector3D>
#include <QVector4D>

#include <memory>

using namespace Harrow::Vrk;
using namespace Harrow::Vrk::Test;

namespace
{

/// A type that Qt can turn into a `RangedFloat`.
struct Slider
{
    float position = 0.0f;
};

/// What the last array or matrix call was given.
struct Given
{
    QByteArray function;
    GLint location = -2;
    GLsizei count = -1;
    int transposed = -1;
    QList<double> values;

    static Given& last()
    {
        static Given given;
        return given;
    }
};

template <typename T> void keep(const char* function, GLint location, GLsizei count, int numbers, const T* values)
{
    Given given;
    given.function = function;
    given.location = location;
    given.count = count;
    for (int i = 0; i < numbers; ++i)
        given.values.append(static_cast<double>(values[i]));
    Given::last() = given;
}

template <typename T, int Tuple> void keepArray(GLint location, GLsizei count, const T* values)
{
    keep("array", location, count, count * Tuple, values);
}

template <int Numbers> void keepMatrix(GLint location, GLsizei count, GLboolean transposed, const GLfloat* values)
{
    keep("matrix", location, count, count * Numbers, values);
    Given::last().transposed = transposed;
}

class ShaderProgramUniform : public ScriptedDriverTest
{
protected:
    void SetUp() override
    {
        ScriptedDriverTest::SetUp();
        Given::last() = Given();
        driver.replace("glUniform1fv", &keepArray<GLfloat, 1>);
        driver.replace("glUniform2fv", &keepArray<GLfloat, 2>);
        driver.replace("glUniform3fv", &keepArray<GLfloat, 3>);
        driver.replace("glUniform4fv", &keepArray<GLfloat, 4>);
        driver.replace("glUniform1iv", &keepArray<GLint, 1>);
        driver.replace("glUniform2iv", &keepArray<GLint, 2>);
        driver.replace("glUniform3iv", &keepArray<GLint, 3>);
        driver.replace("glUniform4iv", &keepArray<GLint, 4>);
        driver.replace("glUniform1uiv", &keepArray<GLuint, 1>);
        driver.replace("glUniform2uiv", &keepArray<GLuint, 2>);
        driver.replace("glUniform3uiv", &keepArray<GLuint, 3>);
        driver.replace("glUniform4uiv", &keepArray<GLuint, 4>);
        driver.replace("glUniformMatrix2fv", &keepMatrix<4>);
        driver.replace("glUniformMatrix3fv", &keepMatrix<9>);
        driver.replace("glUniformMatrix4fv", &keepMatrix<16>);
        driver.replace("glUniformMatrix4x2fv", &keepMatrix<8>);
        ASSERT_EQ(driver.load(), 1);
        driver.setUniformLocation("u_A", 5);
        program = std::make_unique<ShaderProgram>(nullptr);
        ASSERT_TRUE(program->link());
    }

    void TearDown() override
    {
        program.reset();
    }

    /// The calls that setting `value` makes.
    QStringList callsOf(const QVariant& value)
    {
        const CallLog calls;
        EXPECT_TRUE(program->setUniform(5, value));
        return calls.list();
    }

    std::unique_ptr<ShaderProgram> program;
};

} // namespace

// ---- types, without any driver -------------------------------------------------------------------------------------

TEST(UniformForm, EachTypeOfTheTableHasItsForm)
{
    const struct
    {
        QVariant value;
        UniformForm form;
    } rows[] = {
        {QVariant(true), UniformForm::eInt},
        {QVariant(-3), UniformForm::eInt},
        {QVariant(someImage()), UniformForm::eInt},
        {QVariant(3u), UniformForm::eUInt},
        {QVariant(2.5), UniformForm::eFloat},
        {QVariant(2.5f), UniformForm::eFloat},
        {QVariant(QColor(Qt::red)), UniformForm::eColor},
        {QVariant(QVector2D()), UniformForm::eVector2},
        {QVariant(QVector3D()), UniformForm::eVector3},
        {QVariant(QVector4D()), UniformForm::eVector4},
        {QVariant(QMatrix4x4()), UniformForm::eMatrix4},
        {QVariant::fromValue(QMatrix3x3()), UniformForm::eMatrix3},
        {QVariant::fromValue(QMatrix4x2()), UniformForm::eMatrix4x2},
        {QVariant::fromValue(QMatrix2x2()), UniformForm::eMatrix2},
        {rangedFloat(1.0f), UniformForm::eFloatInRange},
        {rangedDouble(1.0), UniformForm::eDoubleInRange},
    };
    for (const auto& row : rows)
        EXPECT_EQ(uniformFormOf(row.value), row.form) << row.value.typeName();
}

TEST(UniformForm, OtherTypesHaveNone)
{
    const QList<QVariant> values = {QVariant(),
                                    QVariant(QStringLiteral("1")),
                                    QVariant(qlonglong(1)),
                                    QVariant(qulonglong(1)),
                                    QVariant(QChar(u'1')),
                                    QVariant::fromValue(short(1)),
                                    QVariant::fromValue(QMatrix2x3()),
                                    QVariant::fromValue(QMatrix2x4()),
                                    QVariant::fromValue(QMatrix3x4()),
                                    QVariant(QVariantList({1.0, 2.0}))};
    for (const QVariant& value : values)
        EXPECT_EQ(uniformFormOf(value), UniformForm::eNone) << value.typeId();
}

TEST(UniformForm, MatrixUnderItsUsualNameCountsToo)
{
    const auto named = [](QMetaType type) { return uniformFormOf(QVariant(type)); };
    EXPECT_EQ(named(namedType<QMatrix3x3>("QMatrix3x3")), UniformForm::eMatrix3);
    EXPECT_EQ(named(namedType<QMatrix4x2>("QMatrix4x2")), UniformForm::eMatrix4x2);
    EXPECT_EQ(named(namedType<QMatrix2x2>("QMatrix2x2")), UniformForm::eMatrix2);
}

TEST(UniformForm, RangedNumberUnderItsMetaTypeNameIsNone)
{
    const QVariant byName = QVariant::fromValue(RangedFloat{1.0f, 0.0f, 2.0f});
    EXPECT_STREQ(byName.typeName(), "Harrow::Vrk::RangedDataType<float>");
    EXPECT_EQ(uniformFormOf(byName), UniformForm::eNone);
    const QVariant byDoubleName = QVariant::fromValue(RangedDouble{1.0, 0.0, 2.0});
    EXPECT_STREQ(byDoubleName.typeName(), "Harrow::Vrk::RangedDataType<double>");
    EXPECT_EQ(uniformFormOf(byDoubleName), UniformForm::eNone);
}

TEST(RangedDataType, IsAllZeroByDefaultWithTheValueFirst)
{
    const RangedFloat ranged;
    EXPECT_EQ(ranged.value, 0.0f);
    EXPECT_EQ(ranged.minimum, 0.0f);
    EXPECT_EQ(ranged.maximum, 0.0f);
    EXPECT_EQ(static_cast<const void*>(&ranged), static_cast<const void*>(&ranged.value));
    EXPECT_EQ(sizeof(RangedFloat), 3 * sizeof(float));
    EXPECT_EQ(sizeof(RangedDouble), 3 * sizeof(double));
}

TEST(RangedDataType, NamesAndAliasesAreRegisteredWhenTheLibraryIsLoaded)
{
    EXPECT_EQ(QMetaType::fromName("Harrow::Vrk::RangedDataType<float>"), QMetaType::fromType<RangedFloat>());
    EXPECT_EQ(QMetaType::fromName("Harrow::Vrk::RangedFloat"), QMetaType::fromType<RangedFloat>());
    EXPECT_EQ(QMetaType::fromName("Harrow::Vrk::RangedDataType<double>"), QMetaType::fromType<RangedDouble>());
    EXPECT_EQ(QMetaType::fromName("Harrow::Vrk::RangedDouble"), QMetaType::fromType<RangedDouble>());
    EXPECT_EQ(QMetaType::fromName("QMatrix2x2"), QMetaType::fromType<QMatrix2x2>());
    EXPECT_EQ(QMetaType::fromName("QMatrix3x3"), QMetaType::fromType<QMatrix3x3>());
    EXPECT_EQ(QMetaType::fromName("QMatrix4x2"), QMetaType::fromType<QMatrix4x2>());
}

// ---- single numbers and lists --------------------------------------------------------------------------------------

TEST_F(ShaderProgramUniform, IntegersAreSetWithoutACheckOfTheLocation)
{
    const CallLog calls;
    EXPECT_TRUE(program->setUniform(5, -7));
    EXPECT_TRUE(program->setUniform(5, 7u));
    EXPECT_TRUE(program->setUniform(-1, -7));
    EXPECT_TRUE(program->setUniform(-1, 7u));
    EXPECT_EQ(calls.list(), QStringList({CallLog::call("glUniform1i", 5, -7), CallLog::call("glUniform1ui", 5, 7),
                                         CallLog::call("glUniform1i", -1, -7), CallLog::call("glUniform1ui", -1, 7)}));
}

TEST_F(ShaderProgramUniform, SettingDoesNotBind)
{
    const CallLog calls;
    program->setUniform(5, 1);
    program->setUniform(text("u_A"), QVariant(1));
    program->setUniform(5, QList<float>({1.0f}));
    EXPECT_EQ(calls.count(text("glUseProgram")), 0);
}

TEST_F(ShaderProgramUniform, ListOfSixFloatsWithTupleSizeThreePassesCountSix)
{
    const CallLog calls;
    EXPECT_TRUE(program->setUniform(5, QList<float>({1, 2, 3, 4, 5, 6}), 3));
    ASSERT_EQ(calls.list().size(), 1);
    EXPECT_TRUE(calls.list()[0].startsWith(QLatin1String("glUniform3fv(5, 6, @"))) << calls.list()[0].toStdString();
    // OpenGL may read 18 numbers: those of the list, and zeros behind.
    EXPECT_EQ(Given::last().values, QList<double>({1, 2, 3, 4, 5, 6, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
}

TEST_F(ShaderProgramUniform, EachTupleSizeOfEachListHasItsFunction)
{
    const QList<float> floats = {1.5f, 2.5f};
    const QList<int> ints = {-1, 2};
    const QList<unsigned int> uints = {1u, 4000000000u};
    for (int tuple = 1; tuple <= 4; ++tuple)
    {
        const auto expectCall = [tuple](const CallLog& calls, const char* family, const QList<double>& first)
        {
            ASSERT_EQ(calls.list().size(), 1);
            EXPECT_TRUE(calls.list()[0].startsWith(
                QStringLiteral("glUniform%1%2(5, 2, @").arg(tuple).arg(QLatin1String(family))))
                << calls.list()[0].toStdString();
            QList<double> expected = first;
            while (expected.size() < 2 * tuple)
                expected.append(0.0);
            EXPECT_EQ(Given::last().values, expected);
        };
        {
            const CallLog calls;
            EXPECT_TRUE(program->setUniform(5, floats, tuple));
            expectCall(calls, "fv", {1.5, 2.5});
        }
        {
            const CallLog calls;
            EXPECT_TRUE(program->setUniform(5, ints, tuple));
            expectCall(calls, "iv", {-1, 2});
        }
        {
            const CallLog calls;
            EXPECT_TRUE(program->setUniform(5, uints, tuple));
            expectCall(calls, "uiv", {1, 4000000000.0});
        }
    }
}

TEST_F(ShaderProgramUniform, PaddingDoesNotCarryOverFromALongerList)
{
    EXPECT_TRUE(program->setUniform(5, QList<float>(8, 9.0f), 4));
    EXPECT_TRUE(program->setUniform(5, QList<float>({1, 2}), 4));
    EXPECT_EQ(Given::last().values, QList<double>({1, 2, 0, 0, 0, 0, 0, 0}));
}

TEST_F(ShaderProgramUniform, ListWithoutTupleSizeIsAnArrayOfFloats)
{
    const CallLog calls;
    EXPECT_TRUE(program->setUniform(5, QList<float>({1, 2, 3})));
    ASSERT_EQ(calls.list().size(), 1);
    EXPECT_TRUE(calls.list()[0].startsWith(QLatin1String("glUniform1fv(5, 3, @")));
    EXPECT_EQ(Given::last().values, QList<double>({1, 2, 3}));
}

TEST_F(ShaderProgramUniform, OtherTupleSizesCallNothingAndAreTrue)
{
    const CallLog calls;
    for (const int tuple : {0, 5, -1, 2147483647, -2147483647 - 1})
    {
        EXPECT_TRUE(program->setUniform(5, QList<float>({1}), tuple));
        EXPECT_TRUE(program->setUniform(5, QList<int>({1}), tuple));
        EXPECT_TRUE(program->setUniform(5, QList<unsigned int>({1}), tuple));
    }
    EXPECT_TRUE(calls.list().isEmpty());
}

TEST_F(ShaderProgramUniform, ListAtANegativeLocationIsFalse)
{
    const CallLog calls;
    EXPECT_FALSE(program->setUniform(-1, QList<float>({1})));
    EXPECT_FALSE(program->setUniform(-1, QList<float>({1}), 9));
    for (int tuple = 1; tuple <= 4; ++tuple)
    {
        EXPECT_FALSE(program->setUniform(-1, QList<float>({1}), tuple));
        EXPECT_FALSE(program->setUniform(-1, QList<int>({1}), tuple));
        EXPECT_FALSE(program->setUniform(-1, QList<unsigned int>({1}), tuple));
    }
    EXPECT_TRUE(calls.list().isEmpty());
}

TEST_F(ShaderProgramUniform, EmptyListPassesCountZero)
{
    EXPECT_TRUE(program->setUniform(5, QList<float>()));
    EXPECT_EQ(Given::last().count, 0);
    EXPECT_TRUE(program->setUniform(5, QList<int>(), 4));
    EXPECT_EQ(Given::last().count, 0);
    EXPECT_EQ(Given::last().location, 5);
}

TEST_F(ShaderProgramUniform, ByNameFormsResolveTheNameOnceAndForward)
{
    const CallLog calls;
    EXPECT_TRUE(program->setUniform(text("u_A"), QList<float>({1, 2})));
    EXPECT_TRUE(program->setUniform(text("u_A"), QList<float>({1, 2}), 2));
    EXPECT_TRUE(program->setUniform(text("u_A"), QList<int>({1, 2}), 3));
    EXPECT_TRUE(program->setUniform(text("u_A"), QList<unsigned int>({1, 2}), 4));
    EXPECT_TRUE(program->setUniform(text("u_A"), QVariant(9)));
    EXPECT_EQ(functionNames(calls.list()), QStringList({"glGetUniformLocation", "glUniform1fv", "glUniform2fv",
                                                        "glUniform3iv", "glUniform4uiv", "glUniform1i"}));
    for (const QString& call : calls.list().mid(1))
        EXPECT_TRUE(call.contains(QLatin1String("(5, "))) << call.toStdString();
}

TEST_F(ShaderProgramUniform, ByNameFormsOfANameThatTheProgramLacksAreFalse)
{
    const CallLog calls;
    EXPECT_FALSE(program->setUniform(text("u_None"), QList<float>({1})));
    EXPECT_FALSE(program->setUniform(text("u_None"), QList<float>({1}), 1));
    EXPECT_FALSE(program->setUniform(text("u_None"), QList<int>({1}), 1));
    EXPECT_FALSE(program->setUniform(text("u_None"), QList<unsigned int>({1}), 1));
    EXPECT_EQ(calls.list(), QStringList({CallLog::call("glGetUniformLocation", 1, "u_None")}));
}

TEST_F(ShaderProgramUniform, VariantByANameThatTheProgramLacksIsFalseAndCachesTheMiss)
{
    const CallLog calls;
    const LogCapture log;
    EXPECT_FALSE(program->setUniform(text("u_None"), QVariant(1)));
    EXPECT_FALSE(program->setUniform(text("u_None"), QVariant(QStringLiteral("text"))));
    EXPECT_EQ(program->getUniformLocation(text("u_None")), -1);
    EXPECT_EQ(calls.list(), QStringList({CallLog::call("glGetUniformLocation", 1, "u_None")}));
    EXPECT_TRUE(log.lines().isEmpty());
}

// ---- variants: the calls -------------------------------------------------------------------------------------------

TEST_F(ShaderProgramUniform, WholeNumbersAndImagesGoByOneInteger)
{
    EXPECT_EQ(callsOf(QVariant(true)), QStringList({CallLog::call("glUniform1i", 5, 1)}));
    EXPECT_EQ(callsOf(QVariant(false)), QStringList({CallLog::call("glUniform1i", 5, 0)}));
    EXPECT_EQ(callsOf(QVariant(-12)), QStringList({CallLog::call("glUniform1i", 5, -12)}));
    EXPECT_EQ(callsOf(QVariant(4000000000u)), QStringList({CallLog::call("glUniform1ui", 5, 4000000000u)}));
}

TEST_F(ShaderProgramUniform, ImageSetsZero)
{
    const LogCapture log;
    EXPECT_EQ(callsOf(QVariant(someImage())), QStringList({CallLog::call("glUniform1i", 5, 0)}));
    EXPECT_TRUE(log.lines().isEmpty());
}

TEST_F(ShaderProgramUniform, NumbersWithAFractionGoByOneFloat)
{
    EXPECT_EQ(callsOf(QVariant(2.5f)), QStringList({CallLog::call("glUniform1f", 5, 2.5f)}));
    EXPECT_EQ(callsOf(QVariant(-0.25)), QStringList({CallLog::call("glUniform1f", 5, -0.25f)}));
}

TEST_F(ShaderProgramUniform, ColoursGoByTheirFourParts)
{
    EXPECT_EQ(callsOf(QVariant(QColor(255, 0, 51, 102))),
              QStringList({CallLog::call("glUniform4f", 5, 1.0f, 0.0f, 0.2f, 0.4f)}));
}

TEST_F(ShaderProgramUniform, VectorsGoByTheirComponents)
{
    EXPECT_EQ(callsOf(QVariant(QVector2D(1, 2))), QStringList({CallLog::call("glUniform2f", 5, 1.0f, 2.0f)}));
    EXPECT_EQ(callsOf(QVariant(QVector3D(1, 2, 3))), QStringList({CallLog::call("glUniform3f", 5, 1.0f, 2.0f, 3.0f)}));
    EXPECT_EQ(callsOf(QVariant(QVector4D(1, 2, 3, 4))),
              QStringList({CallLog::call("glUniform4f", 5, 1.0f, 2.0f, 3.0f, 4.0f)}));
}

TEST_F(ShaderProgramUniform, MatricesGoAsTheyAreStoredOneAtATime)
{
    const struct
    {
        QVariant value;
        const char* function;
        int numbers;
    } rows[] = {
        {QVariant(countingMatrix4()), "glUniformMatrix4fv", 16},
        {QVariant::fromValue(countingMatrix<QMatrix3x3>()), "glUniformMatrix3fv", 9},
        {QVariant::fromValue(countingMatrix<QMatrix4x2>()), "glUniformMatrix4x2fv", 8},
        {QVariant::fromValue(countingMatrix<QMatrix2x2>()), "glUniformMatrix2fv", 4},
    };
    for (const auto& row : rows)
    {
        EXPECT_EQ(functionNames(callsOf(row.value)), QStringList({QString::fromLatin1(row.function)}));
        QList<double> expected;
        for (int i = 1; i <= row.numbers; ++i)
            expected.append(i);
        EXPECT_EQ(Given::last().values, expected);
        EXPECT_EQ(Given::last().location, 5);
        EXPECT_EQ(Given::last().count, 1);
        EXPECT_EQ(Given::last().transposed, 0);
    }
}

TEST_F(ShaderProgramUniform, RangedNumbersUnderTheirAliasGoByTheirValue)
{
    EXPECT_EQ(callsOf(rangedFloat(2.5f)), QStringList({CallLog::call("glUniform1f", 5, 2.5f)}));
    EXPECT_EQ(callsOf(rangedDouble(0.1)), QStringList({CallLog::call("glUniform1f", 5, 0.1f)}));
}

TEST_F(ShaderProgramUniform, RangedNumberUnderItsMetaTypeNameIsAnUnknownType)
{
    const LogCapture log;
    EXPECT_TRUE(callsOf(QVariant::fromValue(RangedFloat{1.0f, 0.0f, 2.0f})).isEmpty());
    EXPECT_TRUE(callsOf(QVariant::fromValue(RangedDouble{1.0, 0.0, 2.0})).isEmpty());
    EXPECT_EQ(
        log.messages(QtCriticalMsg),
        QStringList(
            {text("VrkShaderProgram::setUniform is not implemented for type : Harrow::Vrk::RangedDataType<float>"),
             text("VrkShaderProgram::setUniform is not implemented for type : Harrow::Vrk::RangedDataType<double>")}));
}

TEST_F(ShaderProgramUniform, AnotherTypeUnderTheAliasIsConverted)
{
    QMetaType::registerConverter<Slider, RangedFloat>(
        [](const Slider& slider) {
            return RangedFloat{slider.position, 0.0f, 1.0f};
        });
    const QMetaType type = namedType<Slider>("Harrow::Vrk::RangedFloat", qRegisterMetaType<Slider>());
    const Slider slider{0.75f};
    EXPECT_EQ(callsOf(QVariant(type, &slider)), QStringList({CallLog::call("glUniform1f", 5, 0.75f)}));
    QMetaType::unregisterConverterFunction(QMetaType::fromType<Slider>(), QMetaType::fromType<RangedFloat>());
    // What cannot be converted leaves the default.
    EXPECT_EQ(callsOf(QVariant(type, &slider)), QStringList({CallLog::call("glUniform1f", 5, 0.0f)}));
}

TEST_F(ShaderProgramUniform, TextIsTrueSetsNothingAndIsReported)
{
    const LogCapture log;
    EXPECT_TRUE(callsOf(QVariant(QStringLiteral("1"))).isEmpty());
    EXPECT_EQ(log.messages(QtCriticalMsg),
              QStringList({text("VrkShaderProgram::setUniform is not implemented for type : QString")}));
    EXPECT_EQ(log.lines().size(), 1);
    EXPECT_TRUE(log.texts()[0].startsWith(QLatin1String("[ShaderProgramUniforms.cpp:")));
}

TEST_F(ShaderProgramUniform, InvalidVariantIsTrueSetsNothingAndIsReportedWithoutAName)
{
    const LogCapture log;
    EXPECT_TRUE(callsOf(QVariant()).isEmpty());
    EXPECT_EQ(log.messages(QtCriticalMsg),
              QStringList({text("VrkShaderProgram::setUniform is not implemented for type : ")}));
}

TEST_F(ShaderProgramUniform, VariantAtANegativeLocationIsPassedOnAndTrue)
{
    const CallLog calls;
    EXPECT_TRUE(program->setUniform(-1, QVariant(3)));
    EXPECT_EQ(calls.list(), QStringList({CallLog::call("glUniform1i", -1, 3)}));
}

TEST_F(ShaderProgramUniform, PlainNumbersByNameGoThroughAVariant)
{
    const CallLog calls;
    EXPECT_TRUE(program->setUniform("u_A", 3));
    EXPECT_TRUE(program->setUniform("u_A", 3u));
    EXPECT_TRUE(program->setUniform("u_A", 0.5f));
    EXPECT_TRUE(program->setUniform("u_A", true));
    EXPECT_EQ(calls.list().mid(1),
              QStringList({CallLog::call("glUniform1i", 5, 3), CallLog::call("glUniform1ui", 5, 3),
                           CallLog::call("glUniform1f", 5, 0.5f), CallLog::call("glUniform1i", 5, 1)}));
}
