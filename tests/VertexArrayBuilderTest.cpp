// SPDX-License-Identifier: MIT
//
// VertexArrayBuilder: what each call appends, what is counted, every message, and the names that the library exports.
#include "VertexArrayBuilder.h"

#include "support/CallLog.h"
#include "support/LogCapture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <type_traits>
#include <utility>

#if !defined(_WIN32)
#include <dlfcn.h>
#endif

namespace Harrow::Vrk::Test
{
namespace
{

using Floats = QList<float>;

const QString kNoSpec = assertionLine(QStringLiteral("0 != this->_componentCount"),
                                      QStringLiteral("Component Count must be setup before data is pushed"));

/// The message of the form with `count` values.
QString tooMany(int count)
{
    return assertionLine(QStringLiteral("%1 <= this->_componentCount").arg(count),
                         QLatin1String(count == 1 ? "Component Count is not large enough for the sdata being pushed"
                                                  : "Component Count is not large enough for the data being pushed"));
}

VertexArrayBuilderStorage storageOf(unsigned componentCount)
{
    VertexArrayBuilderStorage storage;
    storage.setSpec(componentCount, 0);
    return storage;
}

/// Pushes the values 1 to `count`.
void push(VertexArrayBuilderStorage& storage, int count)
{
    switch (count)
    {
    case 1:
        return storage.pushData(1);
    case 2:
        return storage.pushData(1, 2);
    case 3:
        return storage.pushData(1, 2, 3);
    default:
        return storage.pushData(1, 2, 3, 4);
    }
}

Floats oneTo(int count)
{
    Floats values;
    for (int i = 1; i <= count; ++i)
        values.append(float(i));
    return values;
}

template <typename Value> constexpr bool isValueType()
{
    return std::is_copy_constructible_v<Value> && std::is_copy_assignable_v<Value> &&
           std::is_move_constructible_v<Value> && std::is_move_assignable_v<Value> &&
           std::is_default_constructible_v<Value>;
}

} // namespace

static_assert(isValueType<VertexArrayBuilderStorage>() && isValueType<VertexArrayBuilder>());

// ---- one array: its component count --------------------------------------------------------------------------------

TEST(VertexArrayBuilderStorageTest, AFreshOneHasNoSpecAndNoData)
{
    const LogCapture log;
    const VertexArrayBuilderStorage storage;
    EXPECT_EQ(storage.getComponentCount(), 0u);
    EXPECT_EQ(storage.getData(), Floats());
    EXPECT_EQ(log.texts(), QStringList());
}

TEST(VertexArrayBuilderStorageTest, TheSpecFixesTheCountAndMakesRoom)
{
    const LogCapture log;
    VertexArrayBuilderStorage storage;
    storage.setSpec(3, 1000);
    EXPECT_EQ(storage.getComponentCount(), 3u);
    EXPECT_GE(storage.getData().capacity(), 3000);
    EXPECT_EQ(storage.getSize(), 0);
    EXPECT_EQ(log.texts(), QStringList());
}

TEST(VertexArrayBuilderStorageTest, WhoKnowsTheCountAllocatesOnce)
{
    VertexArrayBuilderStorage storage;
    storage.setSpec(3, 1000);
    const float* const place = storage.getData().constData();
    for (int i = 0; i < 1000; ++i)
        storage.pushData(1, 2, 3);
    EXPECT_EQ(storage.getData().constData(), place);
    EXPECT_EQ(storage.getSize(), 1000);
}

TEST(VertexArrayBuilderStorageTest, ASecondSpecIsReportedAndChangesTheCount)
{
    VertexArrayBuilderStorage storage = storageOf(3);
    storage.pushData(1, 2, 3);
    const LogCapture log;
    storage.setSpec(2, 0);
    EXPECT_EQ(log.messages(QtCriticalMsg),
              QStringList({assertionLine(QStringLiteral("0 == this->_componentCount"),
                                         QStringLiteral("Component Count already set to 3. Try to reset to 2"))}));
    EXPECT_EQ(log.texts().size(), 1);
    EXPECT_EQ(storage.getComponentCount(), 2u);
    EXPECT_EQ(storage.getData(), oneTo(3));
}

TEST(VertexArrayBuilderStorageTest, ASpecOfZeroIsReportedAndStored)
{
    const QString zero =
        assertionLine(QStringLiteral("0 != componentCount"), QStringLiteral("Component Count may not be 0."));
    VertexArrayBuilderStorage storage;
    {
        const LogCapture log;
        storage.setSpec(0, 5);
        EXPECT_EQ(log.messages(), QStringList({zero}));
        EXPECT_EQ(storage.getComponentCount(), 0u);
    }
    {
        const LogCapture log;
        storage.setSpec(4, 0);
        EXPECT_EQ(log.texts(), QStringList()) << "a count of 0 counts as none";
    }
    const LogCapture log;
    storage.setSpec(0, 0);
    EXPECT_EQ(log.messages(),
              QStringList({assertionLine(QStringLiteral("0 == this->_componentCount"),
                                         QStringLiteral("Component Count already set to 4. Try to reset to 0")),
                           zero}));
    EXPECT_EQ(storage.getComponentCount(), 0u);
}

TEST(VertexArrayBuilderStorageTest, MoreRoomThanThereIsMemoryForIsReported)
{
    constexpr unsigned most = std::numeric_limits<unsigned>::max();
    VertexArrayBuilderStorage storage;
    const LogCapture log;
    storage.setSpec(most, most);
    EXPECT_EQ(log.messages(),
              QStringList({assertionLine(
                  QStringLiteral("reserved"),
                  QStringLiteral("There is no memory to reserve 4294967295 vertices of 4294967295 components"))}));
    EXPECT_EQ(storage.getComponentCount(), most);
    EXPECT_EQ(storage.getData().capacity(), 0);
}

// The product of both is 0 in 32 bits.
TEST(VertexArrayBuilderStorageTest, RoomIsCountedBeyond32Bits)
{
    constexpr unsigned half = 0x80000000u;
    VertexArrayBuilderStorage storage;
    const LogCapture log;
    storage.setSpec(half, half);
    EXPECT_EQ(log.messages().size(), 1) << "2^62 floats";
}

#if !defined(__SANITIZE_ADDRESS__) // whose allocator ends the process in place of saying no

// 2^48 bytes: a number that can be named, and more than a process can have.
TEST(VertexArrayBuilderStorageTest, RoomThatTheSystemRefusesIsReported)
{
    VertexArrayBuilderStorage storage = storageOf(2);
    storage.pushData(1, 2);
    const LogCapture log;
    storage.setSpec(1u << 30, 1u << 16);
    EXPECT_EQ(log.messages().value(1),
              assertionLine(QStringLiteral("reserved"),
                            QStringLiteral("There is no memory to reserve 65536 vertices of 1073741824 components")));
    EXPECT_EQ(storage.getData(), oneTo(2));
}

#endif

// ---- one array: the values -----------------------------------------------------------------------------------------

TEST(VertexArrayBuilderStorageTest, ShorterValuesAreFilledUpWithZeros)
{
    const LogCapture log;
    for (int components = 1; components <= 7; ++components)
        for (int given = 1; given <= std::min(components, 4); ++given)
        {
            VertexArrayBuilderStorage storage = storageOf(unsigned(components));
            Floats expected;
            for (int vertex = 1; vertex <= 3; ++vertex)
            {
                push(storage, given);
                expected += oneTo(given) + Floats(components - given, 0.0f);
                EXPECT_EQ(storage.getData(), expected) << given << " of " << components;
                EXPECT_EQ(storage.getSize(), vertex);
            }
        }
    EXPECT_EQ(log.texts(), QStringList());
}

TEST(VertexArrayBuilderStorageTest, TooManyValuesAreReportedAndAllAppended)
{
    for (int components = 1; components <= 3; ++components)
        for (int given = components + 1; given <= 4; ++given)
        {
            VertexArrayBuilderStorage storage = storageOf(unsigned(components));
            const LogCapture log;
            push(storage, given);
            EXPECT_EQ(log.messages(QtCriticalMsg), QStringList({tooMany(given)}));
            EXPECT_EQ(log.texts().size(), 1);
            EXPECT_EQ(storage.getData(), oneTo(given)) << given << " of " << components;
        }
}

// So the one-value form, for which no spec is too small, has its own words only here.
TEST(VertexArrayBuilderStorageTest, WithoutASpecBothMessagesComeAndTheValuesAreAppended)
{
    for (int given = 1; given <= 4; ++given)
    {
        VertexArrayBuilderStorage storage;
        const LogCapture log;
        push(storage, given);
        EXPECT_EQ(log.messages(QtCriticalMsg), QStringList({kNoSpec, tooMany(given)}));
        EXPECT_EQ(storage.getData(), oneTo(given));
    }
}

// ---- one array: the size -------------------------------------------------------------------------------------------

TEST(VertexArrayBuilderStorageTest, ValuesLeftOverAreReportedAndDropped)
{
    VertexArrayBuilderStorage storage = storageOf(3);
    storage.pushData(1, 2, 3);
    {
        const LogCapture quiet;
        storage.pushData(1, 2, 3, 4);
    }
    const LogCapture log;
    EXPECT_EQ(storage.getSize(), 2) << "seven values";
    EXPECT_EQ(log.messages(QtCriticalMsg),
              QStringList({assertionLine(QStringLiteral("0 == (this->_data.size() \\% this->_componentCount)"),
                                         QStringLiteral("Component Count and array Size do not match."))}));
}

TEST(VertexArrayBuilderStorageTest, WithoutASpecTheSizeIsReportedAndZero)
{
    VertexArrayBuilderStorage storage;
    {
        const LogCapture quiet;
        storage.pushData(1, 2);
    }
    const LogCapture log;
    EXPECT_EQ(storage.getSize(), 0);
    EXPECT_EQ(log.messages(),
              QStringList({assertionLine(QStringLiteral("0 != this->_componentCount"),
                                         QStringLiteral("Component Count must be setup before size is obtained"))}));
}

// ---- copies --------------------------------------------------------------------------------------------------------

TEST(VertexArrayBuilderStorageTest, CopiesShareTheirListUntilOneIsWrittenTo)
{
    VertexArrayBuilderStorage first = storageOf(2);
    first.pushData(1, 2);
    VertexArrayBuilderStorage second = first;
    EXPECT_EQ(second.getData().constData(), first.getData().constData());
    second.pushData(3, 4);
    EXPECT_NE(second.getData().constData(), first.getData().constData());
    EXPECT_EQ(first.getData(), Floats({1, 2}));
    EXPECT_EQ(second.getData(), Floats({1, 2, 3, 4}));
    EXPECT_EQ(second.getComponentCount(), 2u);
}

TEST(VertexArrayBuilderStorageTest, AListThatWasTakenOutStaysAsItWas)
{
    VertexArrayBuilderStorage storage;
    storage.setSpec(2, 100);
    storage.pushData(1, 2);
    const Floats taken = storage.getData();
    storage.pushData(3, 4);
    EXPECT_EQ(taken, Floats({1, 2}));
    EXPECT_EQ(storage.getData(), Floats({1, 2, 3, 4}));
}

TEST(VertexArrayBuilderTest, CopiesShareTheirListsUntilOneIsWrittenTo)
{
    VertexArrayBuilder first;
    first.setVertexSpec(2, 0);
    first.setVertexAttribSpec(4, 2, 0);
    first.glVertex2f(1, 2);
    first.glVertexAttrib2f(4, 5, 6);
    VertexArrayBuilder second = first;
    EXPECT_EQ(second.getVertexData().constData(), first.getVertexData().constData());
    EXPECT_EQ(second.getVertexAttribData(4).constData(), first.getVertexAttribData(4).constData());
    second.glVertex2f(3, 4);
    second.glVertexAttrib2f(4, 7, 8);
    EXPECT_EQ(first.getVertexData(), Floats({1, 2}));
    EXPECT_EQ(first.getVertexAttribData(4), Floats({5, 6}));
    EXPECT_EQ(second.getVertexData(), Floats({1, 2, 3, 4}));
    VertexArrayBuilder third;
    third = std::move(second);
    EXPECT_EQ(third.getVertexAttribData(4), Floats({5, 6, 7, 8}));
}

// ---- the builder ---------------------------------------------------------------------------------------------------

TEST(VertexArrayBuilderTest, EachSpecReachesItsArrayAlone)
{
    const LogCapture log;
    VertexArrayBuilder builder;
    builder.setVertexSpec(1, 10);
    builder.setColorSpec(2, 20);
    builder.setTexCoordSpec(3, 30);
    builder.setNormalSpec(4, 40);
    builder.setVertexAttribSpec(7, 5, 50);
    const VertexArrayBuilderStorage attribute = builder.getVertexAttribStorage(7);
    const VertexArrayBuilderStorage* const arrays[] = {&builder.getVertexStorage(), &builder.getColorStorage(),
                                                       &builder.getTexCoordStorage(), &builder.getNormalStorage(),
                                                       &attribute};
    for (unsigned components = 1; components <= 5; ++components)
    {
        const VertexArrayBuilderStorage& storage = *arrays[components - 1];
        EXPECT_EQ(storage.getComponentCount(), components);
        EXPECT_EQ(storage.getData().capacity(), qsizetype(components * components * 10));
    }
    EXPECT_EQ(log.texts(), QStringList());
}

TEST(VertexArrayBuilderTest, EachCallAppendsToItsArrayAlone)
{
    const LogCapture log;
    VertexArrayBuilder builder;
    builder.setVertexSpec(3, 0);
    builder.setColorSpec(4, 0);
    builder.setTexCoordSpec(2, 0);
    builder.setNormalSpec(3, 0);
    builder.setVertexAttribSpec(1, 3, 0);
    builder.setVertexAttribSpec(9, 2, 0);
    builder.glVertex2f(1, 2);
    builder.glVertex3f(3, 4, 5);
    builder.glColor3f(6, 7, 8);
    builder.glColor4f(9, 10, 11, 12);
    builder.glTexCoord1f(13);
    builder.glTexCoord2f(14, 15);
    builder.glNormal3f(16, 17, 18);
    builder.glVertexAttrib2f(1, 19, 20);
    builder.glVertexAttrib3f(1, 21, 22, 23);
    builder.glVertexAttrib2f(9, 24, 25);
    EXPECT_EQ(builder.getVertexData(), Floats({1, 2, 0, 3, 4, 5}));
    EXPECT_EQ(builder.getColorData(), Floats({6, 7, 8, 0, 9, 10, 11, 12})) << "alpha is 0, not 1";
    EXPECT_EQ(builder.getTexCoordData(), Floats({13, 0, 14, 15}));
    EXPECT_EQ(builder.getNormalData(), Floats({16, 17, 18}));
    EXPECT_EQ(builder.getVertexAttribData(1), Floats({19, 20, 0, 21, 22, 23}));
    EXPECT_EQ(builder.getVertexAttribData(9), Floats({24, 25}));
    EXPECT_EQ(log.texts(), QStringList());
}

TEST(VertexArrayBuilderTest, AVertexOfTwoInThreeComponentsHasAZOfZero)
{
    VertexArrayBuilder builder;
    builder.setVertexSpec(3, 1);
    builder.glVertex2f(0.5f, -2.0f);
    EXPECT_EQ(builder.getVertexData(), Floats({0.5f, -2.0f, 0.0f}));
}

TEST(VertexArrayBuilderTest, AColourOfFourInThreeComponentsIsReportedAndAppended)
{
    VertexArrayBuilder builder;
    builder.setColorSpec(3, 1);
    const LogCapture log;
    builder.glColor4f(1, 2, 3, 4);
    EXPECT_EQ(log.messages(), QStringList({tooMany(4)}));
    EXPECT_EQ(builder.getColorData(), oneTo(4));
}

TEST(VertexArrayBuilderTest, ResultsAreTheArraysThemselves)
{
    VertexArrayBuilder builder;
    EXPECT_EQ(&builder.getVertexData(), &builder.getVertexStorage().getData());
    EXPECT_EQ(&builder.getColorData(), &builder.getColorStorage().getData());
    EXPECT_EQ(&builder.getTexCoordData(), &builder.getTexCoordStorage().getData());
    EXPECT_EQ(&builder.getNormalData(), &builder.getNormalStorage().getData());
    EXPECT_EQ(&builder.getVertexData(), &std::as_const(builder).getVertexData());
    static_assert(std::is_same_v<decltype(builder.getVertexAttribData(0)), const QList<float>&>);
    static_assert(std::is_same_v<decltype(builder.getVertexAttribStorage(0)), VertexArrayBuilderStorage>, "a copy");
}

// ---- attributes ----------------------------------------------------------------------------------------------------

TEST(VertexArrayBuilderTest, ACallMakesAnAttributeThatHasNoSpec)
{
    VertexArrayBuilder builder;
    const LogCapture log;
    builder.glVertexAttrib3f(4000000000u, 1, 2, 3);
    EXPECT_EQ(log.messages(), QStringList({kNoSpec, tooMany(3)}));
    EXPECT_EQ(builder.getVertexAttribData(4000000000u), oneTo(3));
    EXPECT_EQ(builder.getVertexAttribStorage(4000000000u).getComponentCount(), 0u);
}

TEST(VertexArrayBuilderTest, AnAttributeThatThereIsNoneOfIsReportedAndEmpty)
{
    VertexArrayBuilder builder;
    builder.setVertexAttribSpec(0, 2, 0);
    const QString line = assertionLine(QStringLiteral("attribute != _vertexAttrib.constEnd()"),
                                       QStringLiteral("There is no vertex attribute 5"));
    const LogCapture log;
    EXPECT_EQ(builder.getVertexAttribData(5), Floats());
    const VertexArrayBuilderStorage storage = builder.getVertexAttribStorage(5);
    EXPECT_EQ(storage.getComponentCount(), 0u);
    EXPECT_EQ(storage.getData(), Floats());
    EXPECT_EQ(log.messages(QtCriticalMsg), QStringList({line, line}));
}

TEST(VertexArrayBuilderTest, TheStorageOfAnAttributeIsACopy)
{
    VertexArrayBuilder builder;
    builder.setVertexAttribSpec(2, 2, 0);
    VertexArrayBuilderStorage storage = builder.getVertexAttribStorage(2);
    storage.pushData(1, 2);
    EXPECT_EQ(builder.getVertexAttribData(2), Floats());
}

// ---- the count of vertices -----------------------------------------------------------------------------------------

TEST(VertexArrayBuilderTest, TheVertexArrayAloneCountsWithoutAComplaint)
{
    VertexArrayBuilder builder;
    builder.setVertexSpec(2, 0);
    for (int i = 0; i < 5; ++i)
        builder.glVertex2f(1, 2);
    const LogCapture log;
    EXPECT_EQ(builder.getVertexCount(), 5);
    EXPECT_EQ(log.texts(), QStringList());
}

TEST(VertexArrayBuilderTest, EachArrayOfAnotherSizeIsReportedInOrder)
{
    VertexArrayBuilder builder;
    builder.setVertexSpec(3, 0);
    builder.setNormalSpec(3, 0);
    builder.setTexCoordSpec(2, 0);
    builder.setColorSpec(4, 0);
    builder.setVertexAttribSpec(3, 2, 0);
    builder.glVertex3f(1, 2, 3);
    const auto line = [](const char* member, const char* name)
    {
        return assertionLine(QStringLiteral("this->%1.getComponentCount() == 0 || count == this->%1.getSize()")
                                 .arg(QLatin1String(member)),
                             QStringLiteral("%1 count must match vertex count").arg(QLatin1String(name)));
    };
    {
        const LogCapture log;
        EXPECT_EQ(builder.getVertexCount(), 1);
        EXPECT_EQ(log.messages(QtCriticalMsg),
                  QStringList({line("_color", "Color"), line("_texCoord", "TexCoord"), line("_normal", "Normal")}));
    }
    builder.glTexCoord2f(1, 2);
    {
        const LogCapture log;
        EXPECT_EQ(builder.getVertexCount(), 1);
        EXPECT_EQ(log.messages(), QStringList({line("_color", "Color"), line("_normal", "Normal")}));
    }
    builder.glColor3f(1, 2, 3);
    builder.glNormal3f(1, 2, 3);
    const LogCapture log;
    EXPECT_EQ(builder.getVertexCount(), 1) << "and the attribute of none is not looked at";
    EXPECT_EQ(log.texts(), QStringList());
}

TEST(VertexArrayBuilderTest, WithoutAVertexSpecTheCountIsReportedAndZero)
{
    const VertexArrayBuilder builder;
    const LogCapture log;
    EXPECT_EQ(builder.getVertexCount(), 0);
    EXPECT_EQ(log.messages(),
              QStringList({assertionLine(QStringLiteral("0 != this->_componentCount"),
                                         QStringLiteral("Component Count must be setup before size is obtained"))}));
}

TEST(VertexArrayBuilderTest, NothingCallsOpenGL)
{
    const CallLog calls;
    VertexArrayBuilder builder;
    builder.setVertexSpec(2, 1);
    builder.setVertexAttribSpec(0, 3, 1);
    builder.glVertex2f(1, 2);
    builder.glVertexAttrib2f(0, 1, 2);
    builder.glVertexAttrib3f(0, 1, 2, 3);
    EXPECT_EQ(builder.getVertexCount(), 1);
    EXPECT_EQ(calls.list(), QStringList());
}

// ---- names ---------------------------------------------------------------------------------------------------------

TEST(VertexArrayBuilderTest, BothNamesOfTheAttributeCallsDoTheSame)
{
    VertexArrayBuilder builder;
    builder.setVertexAttribSpec(0, 3, 0);
    builder.glVertexAttrib2f(0, 1, 2);
    builder._ptrc_glVertexAttrib2f(0, 3, 4);
    builder.glVertexAttrib3f(0, 5, 6, 7);
    builder._ptrc_glVertexAttrib3f(0, 8, 9, 10);
    EXPECT_EQ(builder.getVertexAttribData(0), Floats({1, 2, 0, 3, 4, 0, 5, 6, 7, 8, 9, 10}));
}

#if !defined(_WIN32)

TEST(VertexArrayBuilderTest, TheLibraryExportsTheAttributeCallsByTheNamesOfItsTable)
{
    // Harrow::Vrk::VertexArrayBuilder::<name>(…), as the Itanium ABI writes it.
    const auto isExported = [](const char* name)
    { return dlsym(RTLD_DEFAULT, (QByteArray("_ZN6Harrow3Vrk18VertexArrayBuilder") + name).constData()) != nullptr; };
    for (const char* const name :
         {"22_ptrc_glVertexAttrib2fEjff", "22_ptrc_glVertexAttrib3fEjfff", "10glVertex2fEff", "10glVertex3fEfff",
          "9glColor3fEfff", "9glColor4fEffff", "12glTexCoord1fEf", "12glTexCoord2fEff", "10glNormal3fEfff"})
        EXPECT_TRUE(isExported(name)) << name;
    for (const char* const name : {"16glVertexAttrib2fEjff", "16glVertexAttrib3fEjfff"})
        EXPECT_FALSE(isExported(name)) << name;
}

#endif

} // namespace Harrow::Vrk::Test
