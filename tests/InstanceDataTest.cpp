// SPDX-License-Identifier: MIT
//
// InstanceData: one record, by name and by offset.
#include "InstanceDataTestTools.h"

#include <limits>

namespace Harrow::Vrk::Test
{
namespace
{

constexpr size_t kHuge = std::numeric_limits<size_t>::max();

const QString kNoPlanText = QStringLiteral("InstanceData::set() : There is no associated instanceData plan. set() "
                                           "should not be called on such InstanceData");

QString noPlan(const QString& name)
{
    return assertionLine("_plan != NULL", QStringLiteral("data '%1'").arg(name));
}

QString wrongMember(const QString& condition, const char* name)
{
    return assertionLine(condition, QStringLiteral("plan 'Object' data '%1'").arg(QLatin1String(name)));
}

QString notHeld(const QString& name, size_t bytes, int offset)
{
    return assertionLine("offset >= 0 && start <= bytes && size <= bytes - start",
                         QStringLiteral("plan '%1' has no %2 bytes at %3").arg(name).arg(bytes).arg(offset));
}

QString tokenBySet(const char* name)
{
    return assertionLine("InstanceDataPlan::eTexture != _plan->dataType(dataName)",
                         QStringLiteral("InstanceData::set( '%1') call on data type 0").arg(QLatin1String(name)));
}

QString noToken(const char* name, int type)
{
    return assertionLine(
        "InstanceDataPlan::eTexture == _plan->dataType(dataName)",
        QStringLiteral("InstanceData::setTexture( '%1') call on data type %2").arg(QLatin1String(name)).arg(type));
}

class InstanceDataTest : public RecordsFixture
{
protected:
    void SetUp() override
    {
        RecordsFixture::SetUp();
        record = InstanceData(kPlanName);
    }

    /// A plan without a member: its records have no byte.
    static void registerEmptyPlan()
    {
        registerPlan(new InstanceDataPlan("Empty"));
    }

    InstanceData record;
};

} // namespace

// ---- making --------------------------------------------------------------------------------------------------------

TEST_F(InstanceDataTest, OneWithoutAPlanIsEmpty)
{
    const LogCapture log;
    InstanceData none;
    EXPECT_EQ(none.name(), QString());
    EXPECT_EQ(none.dataArray(), QByteArray());
    EXPECT_TRUE(none.getTextureTokens().isEmpty());
    EXPECT_EQ(none.memoryEstimateCPU(), 56u);
    none.clear();
    none.clearTextures();
    EXPECT_EQ(none.dataArray(), QByteArray());
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(InstanceDataTest, ARecordOfAPlanIsAllZeros)
{
    EXPECT_EQ(record.name(), kPlanName);
    EXPECT_EQ(record.dataArray(), zeros());
    EXPECT_TRUE(record.getTextureTokens().isEmpty());
}

TEST_F(InstanceDataTest, AnUnknownPlanIsReportedAndTheRecordHasNone)
{
    const LogCapture log;
    const InstanceData lost(QStringLiteral("Lost"));
    EXPECT_EQ(log.messages(), QStringList({unknownPlan("Lost"), assertionLine("_plan != NULL", "plan 'Lost'")}));
    EXPECT_EQ(lost.name(), QString());
    EXPECT_EQ(lost.dataArray(), QByteArray());
}

TEST_F(InstanceDataTest, CopiesAndAssignmentsHaveAllAndAreIndependent)
{
    record.set(kColorOffset, ramp(16).constData(), 16);
    record.setTextureToken(kTokenOffset, TextureToken(7));
    const QByteArray bytes = record.dataArray();
    InstanceData copy(record);
    InstanceData assigned;
    assigned = record;
    record.clear();
    for (InstanceData* const other : {&copy, &assigned})
    {
        EXPECT_EQ(other->name(), kPlanName);
        EXPECT_EQ(other->dataArray(), bytes);
        EXPECT_EQ(other->getTextureTokens(), tokens({7}));
    }
    copy.clear();
    EXPECT_EQ(assigned.dataArray(), bytes);
}

TEST_F(InstanceDataTest, ARecordKeepsItsPlanWhenTheNameIsGivenToAnother)
{
    auto* const other = new InstanceDataPlan(kPlanName);
    other->addMember(InstanceDataPlan::eVec4, "color");
    registerPlan(other);
    record.set("alpha", ramp(4).constData(), 4);
    EXPECT_EQ(record.dataArray(), with(zeros(), kAlphaOffset, ramp(4)));
    EXPECT_EQ(InstanceData(kPlanName).dataArray(), zeros(16));
    delete plan; // nobody else will
}

// ---- set -----------------------------------------------------------------------------------------------------------

TEST_F(InstanceDataTest, SetCopiesTheBytesToTheMembersPlace)
{
    const LogCapture log;
    record.set("matrix", ramp(64).constData(), 64);
    record.set("color", ramp(16, 65).constData(), 16);
    record.set("alpha", ramp(4, 90).constData(), 4);
    EXPECT_EQ(record.dataArray(), ramp(80) + zeros(8) + ramp(4, 90) + zeros(4));
    EXPECT_TRUE(record.getTextureTokens().isEmpty());
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(InstanceDataTest, SetOfFewerBytesLeavesTheRestOfTheMember)
{
    const LogCapture log;
    record.set("color", ramp(12).constData(), 12);
    record.set("color", "", 0);
    record.set("color", nullptr, 0);
    EXPECT_EQ(record.dataArray(), with(zeros(), kColorOffset, ramp(12)));
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(InstanceDataTest, SetWithoutAPlanIsReportedAndWritesNothing)
{
    InstanceData none;
    LogCapture log;
    none.set("color", ramp(16).constData(), 16);
    ASSERT_EQ(log.messages(), QStringList({kNoPlanText, noPlan("color")}));
    EXPECT_EQ(log.lines()[0].type, QtCriticalMsg);
    log.clear();
    none.set(kColorOffset, ramp(16).constData(), 16);
    EXPECT_EQ(log.messages(QtCriticalMsg), QStringList({kNoPlanText, noPlan("64")}));
    EXPECT_EQ(none.dataArray(), QByteArray());
}

TEST_F(InstanceDataTest, SetOfAnUnknownNameIsReportedAndWritesTheStart)
{
    const LogCapture log;
    record.set("colour", ramp(8).constData(), 8);
    EXPECT_EQ(log.messages(), QStringList({wrongMember("_plan->contains(dataName)", "colour"), tokenBySet("colour")}));
    EXPECT_EQ(record.dataArray(), with(zeros(), 0, ramp(8)));
}

TEST_F(InstanceDataTest, SetOfMoreBytesThanTheMemberHasIsReportedAndWritesTheNextOneToo)
{
    const LogCapture log;
    record.set("color", ramp(20).constData(), 20);
    EXPECT_EQ(log.messages(), QStringList({wrongMember("dataSize <= _plan->dataSize(dataName)", "color")}));
    EXPECT_EQ(record.dataArray(), with(zeros(), kColorOffset, ramp(20)));
}

TEST_F(InstanceDataTest, SetOfATokensNameIsReportedAndWrites)
{
    const LogCapture log;
    record.set("token", ramp(8).constData(), 8);
    EXPECT_EQ(log.messages(), QStringList({tokenBySet("token")}));
    EXPECT_EQ(record.dataArray(), with(zeros(), kTokenOffset, ramp(8)));
    EXPECT_TRUE(record.getTextureTokens().isEmpty());
}

TEST_F(InstanceDataTest, AllThatIsWrongWithASetIsReportedInOrder)
{
    registerEmptyPlan();
    InstanceData empty(QStringLiteral("Empty"));
    const LogCapture log;
    empty.set("x", ramp(9).constData(), 9);
    const auto wrong = [](const char* condition)
    { return assertionLine(condition, QStringLiteral("plan 'Empty' data 'x'")); };
    EXPECT_EQ(log.messages(QtCriticalMsg),
              QStringList({wrong("_plan->contains(dataName)"), wrong("offset >= 0 && offset < _data.size()"),
                           wrong("dataSize <= _plan->dataSize(dataName)"), tokenBySet("x"), notHeld("Empty", 9, 0)}));
    EXPECT_EQ(empty.dataArray(), QByteArray());
}

TEST_F(InstanceDataTest, SetBeyondTheRecordWritesNothing)
{
    const QString tooMuch = wrongMember("dataSize <= _plan->dataSize(dataName)", "alpha");
    LogCapture log;
    record.set("alpha", ramp(9).constData(), 9);
    EXPECT_EQ(log.messages(), QStringList({tooMuch, notHeld(kPlanName, 9, kAlphaOffset)}));
    log.clear();
    record.set("alpha", ramp(9).constData(), kHuge);
    EXPECT_EQ(log.messages(), QStringList({tooMuch, notHeld(kPlanName, kHuge, kAlphaOffset)}));
    EXPECT_EQ(record.dataArray(), zeros());
    log.clear();
    record.set("alpha", ramp(8).constData(), 8);
    EXPECT_EQ(log.messages(), QStringList({tooMuch})) << "up to the end";
    EXPECT_EQ(record.dataArray(), with(zeros(), kAlphaOffset, ramp(8)));
}

TEST_F(InstanceDataTest, SetByOffsetLooksAtNoMember)
{
    const LogCapture log;
    record.set(kTokenOffset - 3, ramp(9).constData(), 9);
    EXPECT_EQ(record.dataArray(), with(zeros(), kTokenOffset - 3, ramp(9)));
    record.set(0, ramp(kRecordBytes).constData(), kRecordBytes);
    EXPECT_EQ(record.dataArray(), ramp(kRecordBytes));
    record.set(kRecordBytes, "", 0);
    EXPECT_EQ(record.dataArray(), ramp(kRecordBytes));
    EXPECT_TRUE(record.getTextureTokens().isEmpty());
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(InstanceDataTest, SetByOffsetOutsideTheRecordWritesNothing)
{
    constexpr struct
    {
        int offset;
        size_t bytes;
    } kOutside[] = {{-1, 4},    {-1, 0}, {kRecordBytes, 1},
                    {93, 4},    {97, 0}, {std::numeric_limits<int>::max(), 4},
                    {4, kHuge}, {0, 97}, {std::numeric_limits<int>::min(), 4}};
    const QByteArray bytes = ramp(100);
    for (const auto& [offset, count] : kOutside)
    {
        const LogCapture log;
        record.set(offset, bytes.constData(), count);
        EXPECT_EQ(log.messages(QtCriticalMsg), QStringList({notHeld(kPlanName, count, offset)}));
        EXPECT_EQ(record.dataArray(), zeros()) << offset;
    }
}

TEST_F(InstanceDataTest, SetOfNullWritesNothing)
{
    const LogCapture log;
    const QString line = assertionLine("nullptr != data", "plan 'Object' data at 64 is NULL");
    record.set("color", nullptr, 16);
    record.set(kColorOffset, nullptr, 1);
    EXPECT_EQ(log.messages(), QStringList({line, line}));
    EXPECT_EQ(record.dataArray(), zeros());
}

TEST_F(InstanceDataTest, SetOfTheRecordsOwnBytesMovesThem)
{
    record.set(0, ramp(kRecordBytes).constData(), kRecordBytes);
    record.set(8, record.dataArray().constData(), 40);
    EXPECT_EQ(record.dataArray(), with(ramp(kRecordBytes), 8, ramp(40)));
}

// ---- get -----------------------------------------------------------------------------------------------------------

TEST_F(InstanceDataTest, GetCopiesTheWholeMemberWhateverSizeIsNamed)
{
    record.set(0, ramp(kRecordBytes).constData(), kRecordBytes);
    const LogCapture log;
    for (const size_t size : {size_t(0), size_t(1), kHuge})
    {
        QByteArray out = zeros(20);
        record.get("color", out.data(), size);
        EXPECT_EQ(out, ramp(16, kColorOffset + 1) + zeros(4));
        out = zeros(20);
        record.get("token", out.data(), size);
        EXPECT_EQ(out, ramp(8, kTokenOffset + 1) + zeros(12));
        out = zeros(20);
        record.get(70, 5, out.data(), size);
        EXPECT_EQ(out, ramp(5, 71) + zeros(15));
    }
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(InstanceDataTest, GetOfAnUnknownNameGivesTheFirstEightBytes)
{
    record.set(0, ramp(kRecordBytes).constData(), kRecordBytes);
    const LogCapture log;
    QByteArray out = zeros(12);
    record.get("colour", out.data(), 12);
    EXPECT_EQ(out, ramp(8) + zeros(4));
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(InstanceDataTest, GetOutsideTheRecordReadsNothing)
{
    registerEmptyPlan();
    const InstanceData empty(QStringLiteral("Empty"));
    QByteArray out = ramp(8);
    LogCapture log;
    record.get(-1, 1, out.data(), 8);
    record.get(92, 5, out.data(), 8);
    record.get(97, 0, out.data(), 8);
    record.get(8, kHuge, out.data(), 8);
    empty.get("x", out.data(), 8);
    EXPECT_EQ(log.messages(QtCriticalMsg),
              QStringList({notHeld(kPlanName, 1, -1), notHeld(kPlanName, 5, 92), notHeld(kPlanName, 0, 97),
                           notHeld(kPlanName, kHuge, 8), notHeld("Empty", 8, 0)}));
    EXPECT_EQ(out, ramp(8));
    log.clear();
    record.get(92, 4, out.data(), 4);
    record.get(96, 0, nullptr, 0);
    EXPECT_EQ(out, zeros(4) + ramp(4, 5));
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(InstanceDataTest, GetWithoutAPlanOrPlaceReadsNothing)
{
    const InstanceData none;
    QByteArray out = ramp(8);
    const LogCapture log;
    none.get("color", out.data(), 8);
    none.get(0, 8, out.data(), 8);
    record.get(64, 4, nullptr, 4);
    EXPECT_EQ(log.messages(QtCriticalMsg),
              QStringList({noPlan("color"), notHeld("", 8, 0),
                           assertionLine("nullptr != out", "plan 'Object' has no place for data at 64")}));
    EXPECT_EQ(out, ramp(8));
}

// ---- tokens --------------------------------------------------------------------------------------------------------

TEST_F(InstanceDataTest, AnImagesTokenComesFromTheManagerInUse)
{
    const QString path = pngFile("a.png");
    const LogCapture log;
    record.setTexture("token", path);
    const TextureToken token = Tables::pathToToken(*manager).value(path, INVALID_TOKEN);
    ASSERT_NE(token, INVALID_TOKEN);
    EXPECT_EQ(Tables::tokenToFileInfo(*manager).size(), 1);
    EXPECT_EQ(record.dataArray(), with(zeros(), kTokenOffset, bytesOf(token)));
    EXPECT_EQ(record.getTextureTokens(), QList<TextureToken>({token}));
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(InstanceDataTest, TheTokenOfNoImageIsThatOfWhite)
{
    manager->tokenForTexture(wrapped(1)[0]); // so that white is not 0
    const LogCapture log;
    record.setTexture("token", QStringLiteral("nowhere.png"));
    EXPECT_EQ(log.messages(QtWarningMsg), QStringList({"Cannot load nowhere.png"}));
    EXPECT_EQ(record.getTextureTokens(), QList<TextureToken>({manager->tokenForColor(Qt::white)}));
    EXPECT_EQ(record.dataArray(), with(zeros(), kTokenOffset, bytesOf(TextureToken(1))));
}

TEST_F(InstanceDataTest, ATexturesTokenComesFromTheManagerInUseOrTheOneThatIsNamed)
{
    const auto textures = wrapped(3);
    for (Texture* const texture : textures)
        manager->tokenForTexture(texture);
    RecordingManager named;
    const TextureToken other(0);
    const LogCapture log;
    record.setTexture("token", textures[2]);
    EXPECT_EQ(record.dataArray(), with(zeros(), kTokenOffset, bytesOf(TextureToken(2))));
    record.setTexture("token", textures[2], &named);
    EXPECT_EQ(record.dataArray(), with(zeros(), kTokenOffset, bytesOf(other)));
    record.setTexture(kTokenOffset, textures[1]);
    EXPECT_EQ(record.dataArray(), with(zeros(), kTokenOffset, bytesOf(TextureToken(1))));
    record.setTexture(kTokenOffset, textures[2], &named);
    EXPECT_EQ(record.dataArray(), with(zeros(), kTokenOffset, bytesOf(other)));
    record.setTextureToken(kTokenOffset, TextureToken(0x123456789ABCDEFull));
    EXPECT_EQ(record.dataArray(), with(zeros(), kTokenOffset, bytesOf(TextureToken(0x123456789ABCDEFull))));
    EXPECT_EQ(record.getTextureTokens(), tokens({2, 0, 1, 0x123456789ABCDEFull}));
    EXPECT_EQ(log.texts(), QStringList());
    named.deleteTexture(textures[2]);
}

TEST_F(InstanceDataTest, ATokenIsListedOnceInTheOrderOfComing)
{
    for (const quint64 number : {5, 3, 5, 9, 3})
        record.setTextureToken(kTokenOffset, TextureToken(number));
    EXPECT_EQ(record.getTextureTokens(), tokens({5, 3, 9})) << "also those that are in the record no more";
    EXPECT_EQ(record.dataArray(), with(zeros(), kTokenOffset, bytesOf(TextureToken(3))));
}

TEST_F(InstanceDataTest, ANullTexturesTokenIsTheInvalidOne)
{
    record.setTexture("token", static_cast<Texture*>(nullptr));
    EXPECT_EQ(record.getTextureTokens(), QList<TextureToken>({INVALID_TOKEN}));
    EXPECT_EQ(record.dataArray(), with(zeros(), kTokenOffset, QByteArray(8, '\xff')));
}

TEST_F(InstanceDataTest, ATextureForAFloatIsReportedAndCopiesFourBytesOfTheToken)
{
    const auto textures = wrapped(1);
    manager->reserveTokenBlock(0x0104);
    const LogCapture log;
    record.setTexture("alpha", textures[0]);
    EXPECT_EQ(log.messages(), QStringList({noToken("alpha", 13)}));
    EXPECT_EQ(record.dataArray(), with(zeros(), kAlphaOffset, bytesOf(TextureToken(0x0104)).left(4)));
    EXPECT_EQ(record.getTextureTokens(), tokens({0x0104}));
}

TEST_F(InstanceDataTest, ATextureForAMemberLargerThanATokenIsReportedAndWritesNothing)
{
    const auto textures = wrapped(1);
    manager->reserveTokenBlock(5);
    const LogCapture log;
    record.setTexture("color", textures[0]);
    record.setTexture("matrix", textures[0]);
    EXPECT_EQ(log.messages(), QStringList({noToken("color", 15), noToken("matrix", 17)}));
    EXPECT_EQ(record.dataArray(), zeros());
    EXPECT_TRUE(record.getTextureTokens().isEmpty());
}

TEST_F(InstanceDataTest, ATextureForAnUnknownNameGoesToTheStart)
{
    const auto textures = wrapped(1);
    manager->reserveTokenBlock(5);
    const LogCapture log;
    record.setTexture("tokken", textures[0]);
    EXPECT_EQ(log.texts(), QStringList()) << "an unknown name counts as a token";
    EXPECT_EQ(record.dataArray(), with(zeros(), 0, bytesOf(TextureToken(5))));
    EXPECT_EQ(record.getTextureTokens(), tokens({5}));
}

TEST_F(InstanceDataTest, TokensOutsideTheRecordAreReportedAndNotTaken)
{
    const auto textures = wrapped(1);
    registerEmptyPlan();
    InstanceData empty(QStringLiteral("Empty"));
    const LogCapture log;
    record.setTextureToken(-8, TextureToken(1));
    record.setTextureToken(89, TextureToken(1));
    record.setTexture(kRecordBytes, textures[0]);
    empty.setTexture("x", textures[0]);
    EXPECT_EQ(log.messages(QtCriticalMsg), QStringList({notHeld(kPlanName, 8, -8), notHeld(kPlanName, 8, 89),
                                                        notHeld(kPlanName, 8, 96), notHeld("Empty", 8, 0)}));
    EXPECT_EQ(record.dataArray(), zeros());
    EXPECT_TRUE(record.getTextureTokens().isEmpty());
    EXPECT_TRUE(empty.getTextureTokens().isEmpty());
}

TEST_F(InstanceDataTest, TokensWithoutAPlanAreReportedAndByNameNoManagerIsAsked)
{
    const auto textures = wrapped(1);
    InstanceData none;
    manager->takeCalls();
    const LogCapture log;
    none.setTexture("token", QStringLiteral("nowhere.png"));
    none.setTexture("token", textures[0]);
    none.setTexture("token", textures[0], manager.get());
    EXPECT_EQ(manager->takeCalls(), QStringList());
    none.setTexture(0, textures[0]);
    none.setTexture(0, textures[0], manager.get());
    none.setTextureToken(0, TextureToken(1));
    const QString named = noPlan("token");
    const QString fast = notHeld("", 8, 0);
    EXPECT_EQ(log.messages(QtCriticalMsg), QStringList({named, named, named, fast, fast, fast}));
    EXPECT_TRUE(none.getTextureTokens().isEmpty());
}

TEST_F(InstanceDataTest, TokensOfANullManagerAreReportedAndNotTaken)
{
    const auto textures = wrapped(1);
    const LogCapture log;
    record.setTexture("token", textures[0], nullptr);
    record.setTexture(kTokenOffset, textures[0], nullptr);
    EXPECT_EQ(log.messages(QtCriticalMsg),
              QStringList({assertionLine("nullptr != textureManager", "TextureManager is NULL for data 'token'"),
                           assertionLine("nullptr != textureManager", "TextureManager is NULL for data at 80")}));
    EXPECT_EQ(record.dataArray(), zeros());
    EXPECT_TRUE(record.getTextureTokens().isEmpty());
}

TEST_F(InstanceDataTest, TheTokensAreGivenAsTheListItself)
{
    record.getTextureTokens().append(TextureToken(4));
    EXPECT_EQ(record.getTextureTokens(), tokens({4}));
    record.setTextureToken(kTokenOffset, TextureToken(4));
    EXPECT_EQ(record.getTextureTokens(), tokens({4}));
    EXPECT_EQ(&record.getTextureTokens(), &record.getTextureTokens());
}

// ---- the record ----------------------------------------------------------------------------------------------------

TEST_F(InstanceDataTest, ClearingTheTexturesLeavesTheTokensBytes)
{
    record.setTextureToken(kTokenOffset, TextureToken(3));
    record.clearTextures();
    EXPECT_TRUE(record.getTextureTokens().isEmpty());
    EXPECT_EQ(record.dataArray(), with(zeros(), kTokenOffset, bytesOf(TextureToken(3))));
}

TEST_F(InstanceDataTest, ClearGivesZerosOfThePlansSizeAndNoTokens)
{
    record.set(0, ramp(kRecordBytes).constData(), kRecordBytes);
    record.setTextureToken(kTokenOffset, TextureToken(3));
    plan->addMember(InstanceDataPlan::eVec4, "late");
    EXPECT_EQ(record.dataArray().size(), kRecordBytes);
    record.clear();
    EXPECT_EQ(record.dataArray(), zeros(kRecordBytes + 16));
    EXPECT_TRUE(record.getTextureTokens().isEmpty());
}

TEST_F(InstanceDataTest, TheEstimateCountsBytesAndTokens)
{
    EXPECT_EQ(record.memoryEstimateCPU(), 96u + 56u);
    for (const quint64 number : {5, 3, 5})
        record.setTextureToken(kTokenOffset, TextureToken(number));
    EXPECT_EQ(record.memoryEstimateCPU(), 96u + 56u + 2 * 4u);
}

} // namespace Harrow::Vrk::Test
