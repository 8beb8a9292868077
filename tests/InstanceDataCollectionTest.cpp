// SPDX-License-Identifier: MIT
//
// InstanceDataCollection: the bytes of the records, and when they count as changed.
#include "InstanceDataTestTools.h"

#include <limits>
#include <memory>

namespace Harrow::Vrk::Test
{
namespace
{

constexpr size_t kHuge = std::numeric_limits<size_t>::max();

const QString kTooBig = QStringLiteral("List is too big for plan 'Object'");

QString noPlan(const QString& message)
{
    return assertionLine("_plan != NULL", message);
}

QString notHeld(const char* name, int index, int count)
{
    return assertionLine("isHeld(position, size)",
                         QStringLiteral("plan 'Object' data '%1': item %2 of %3 has no such bytes")
                             .arg(QLatin1String(name))
                             .arg(index)
                             .arg(count));
}

QString listTooBig(int count)
{
    return assertionLine("size_t(instanceDataDataList.size()) <= _plan->arraySize()",
                         QStringLiteral("List %1 too big, max 4 plan 'Object'").arg(count));
}

class InstanceDataCollectionTest : public RecordsFixture
{
protected:
    /// Records that are filled with 1, 2, …
    static QList<InstanceData> records(int count, int first = 1)
    {
        QList<InstanceData> list;
        for (int i = 0; i < count; ++i)
        {
            InstanceData record(kPlanName);
            record.set(0, filled(first + i).constData(), kRecordBytes);
            list.append(record);
        }
        return list;
    }

    static QByteArray filled(int value)
    {
        return QByteArray(kRecordBytes, char(value));
    }

    static QByteArray filledRecords(int count, int first = 1)
    {
        QByteArray bytes;
        for (int i = 0; i < count; ++i)
            bytes += filled(first + i);
        return bytes;
    }

    /// With `count` records that are all one ramp, clean.
    std::unique_ptr<InstanceDataCollection> clean(int count, int bytesMore = 0)
    {
        const QByteArray bytes = ramp(count * kRecordBytes + bytesMore);
        auto collection = std::make_unique<InstanceDataCollection>(plan, bytes.constData(), size_t(bytes.size()));
        collection->clearDirtyStatus();
        return collection;
    }
};

} // namespace

// ---- making --------------------------------------------------------------------------------------------------------

TEST_F(InstanceDataCollectionTest, OneOfANameIsEmptyAndDirty)
{
    const LogCapture log;
    const InstanceDataCollection collection(kPlanName);
    EXPECT_EQ(collection.plan(), plan);
    EXPECT_EQ(collection.size(), 0);
    EXPECT_EQ(collection.dataArray(), QByteArray());
    EXPECT_TRUE(Books::isDirty(collection));
    EXPECT_TRUE(Books::tokens(collection).isEmpty());
    EXPECT_TRUE(Books::uniformBufferObject(collection).isNull());
    EXPECT_EQ(Books::usage(collection), GL_STATIC_DRAW);
    EXPECT_EQ(Books::storageFlags(collection), 0);
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(InstanceDataCollectionTest, OneOfRecordsHasThemInTheirOrder)
{
    const LogCapture log;
    const InstanceDataCollection collection(kPlanName, records(3));
    EXPECT_EQ(collection.size(), 3);
    EXPECT_EQ(collection.dataArray(), filledRecords(3));
    EXPECT_TRUE(Books::isDirty(collection));
    EXPECT_TRUE(Books::tokens(collection).isEmpty());
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(InstanceDataCollectionTest, OneOfBytesCopiesThem)
{
    QByteArray bytes = filledRecords(2);
    const QByteArray same = filledRecords(2);
    const LogCapture log;
    const InstanceDataCollection collection(plan, bytes.constData(), size_t(bytes.size()));
    bytes.fill('\x7f');
    EXPECT_EQ(collection.dataArray(), same);
    EXPECT_EQ(collection.size(), 2);
    EXPECT_EQ(collection.plan(), plan);
    EXPECT_TRUE(Books::isDirty(collection));
    EXPECT_EQ(Books::usage(collection), GL_STATIC_DRAW);
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(InstanceDataCollectionTest, OneOfANumberIsAllZeros)
{
    const LogCapture log;
    const InstanceDataCollection collection(plan, size_t(3));
    EXPECT_EQ(collection.dataArray(), zeros(3 * kRecordBytes));
    EXPECT_EQ(collection.size(), 3);
    EXPECT_TRUE(Books::isDirty(collection));
    EXPECT_EQ(InstanceDataCollection(plan, size_t(0)).size(), 0);
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(InstanceDataCollectionTest, AsManyRecordsAsThePlanDeclaresAreNotTooMany)
{
    const QByteArray bytes = zeros(5 * kRecordBytes - 1); // the last one is not whole, and does not count
    const LogCapture log;
    EXPECT_EQ(InstanceDataCollection(kPlanName, records(4)).size(), 4);
    EXPECT_EQ(InstanceDataCollection(plan, bytes.constData(), size_t(bytes.size())).size(), 4);
    EXPECT_EQ(InstanceDataCollection(plan, size_t(4)).size(), 4);
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(InstanceDataCollectionTest, MoreRecordsThanThePlanDeclaresAreReportedAndKept)
{
    const QByteArray bytes = filledRecords(5);
    const LogCapture log;
    EXPECT_EQ(InstanceDataCollection(kPlanName, records(6)).dataArray(), filledRecords(6));
    EXPECT_EQ(InstanceDataCollection(plan, bytes.constData(), size_t(bytes.size())).dataArray(), bytes);
    EXPECT_EQ(InstanceDataCollection(plan, size_t(5)).dataArray(), zeros(5 * kRecordBytes));
    EXPECT_EQ(
        log.messages(),
        QStringList({listTooBig(6), assertionLine("(numBytes / _plan->totalDataSize()) <= _plan->arraySize()", kTooBig),
                     assertionLine("numItems <= _plan->arraySize()", kTooBig)}));
}

TEST_F(InstanceDataCollectionTest, RecordsOfNoPlanAddNothing)
{
    QList<InstanceData> list = records(2);
    list.insert(1, InstanceData());
    EXPECT_EQ(InstanceDataCollection(kPlanName, list).dataArray(), filledRecords(2));
}

TEST_F(InstanceDataCollectionTest, ItIsAQObjectWithoutSignalsOrSlotsOfItsOwn)
{
    const QMetaObject& meta = InstanceDataCollection::staticMetaObject;
    EXPECT_STREQ(meta.className(), "Harrow::Vrk::InstanceDataCollection");
    EXPECT_EQ(meta.superClass(), &QObject::staticMetaObject);
    EXPECT_EQ(meta.methodCount(), meta.methodOffset());
    const InstanceDataCollection collection(kPlanName);
    EXPECT_EQ(collection.metaObject(), &meta);
    EXPECT_EQ(collection.parent(), nullptr);
}

TEST_F(InstanceDataCollectionTest, TheSizeCountsWholeRecords)
{
    EXPECT_EQ(clean(3)->size(), 3);
    EXPECT_EQ(clean(1, kRecordBytes - 1)->size(), 1);
    EXPECT_EQ(clean(0, kRecordBytes - 1)->size(), 0);
}

// ---- update --------------------------------------------------------------------------------------------------------

TEST_F(InstanceDataCollectionTest, UpdateReplacesTheRecordsAndMarksThemAsChanged)
{
    const auto collection = clean(3);
    const LogCapture log;
    collection->update(records(2, 7));
    EXPECT_EQ(collection->dataArray(), filledRecords(2, 7));
    EXPECT_TRUE(Books::isDirty(*collection));
    collection->clearDirtyStatus();
    collection->update(filledRecords(4).constData(), 4 * kRecordBytes);
    EXPECT_EQ(collection->dataArray(), filledRecords(4));
    EXPECT_TRUE(Books::isDirty(*collection));
    collection->clearDirtyStatus();
    collection->update(QList<InstanceData>());
    EXPECT_EQ(collection->size(), 0);
    EXPECT_EQ(collection->dataArray().size(), 0);
    EXPECT_TRUE(Books::isDirty(*collection));
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(InstanceDataCollectionTest, UpdateEmptiesTheTokens)
{
    const auto collection = clean(2);
    collection->bindTextureTokens(manager.get());
    EXPECT_EQ(Books::tokens(*collection).size(), 2);
    collection->update(records(2));
    EXPECT_TRUE(Books::tokens(*collection).isEmpty());
    collection->bindTextureTokens(manager.get());
    collection->update(nullptr, 0);
    EXPECT_TRUE(Books::tokens(*collection).isEmpty());
    EXPECT_EQ(collection->size(), 0);
}

TEST_F(InstanceDataCollectionTest, UpdateWithTooManyRecordsIsReportedAndKeepsThemAll)
{
    const auto collection = clean(1);
    const LogCapture log;
    collection->update(records(5));
    EXPECT_EQ(collection->dataArray(), filledRecords(5));
    collection->update(filledRecords(7).constData(), 7 * kRecordBytes);
    EXPECT_EQ(collection->dataArray(), filledRecords(7));
    EXPECT_EQ(log.messages(QtCriticalMsg),
              QStringList({listTooBig(5),
                           assertionLine("(numBytes / _plan->totalDataSize()) <= _plan->arraySize()", kTooBig)}));
}

TEST_F(InstanceDataCollectionTest, UpdateTakesItsOwnBytes)
{
    const auto collection = clean(3);
    const QByteArray bytes = collection->dataArray();
    collection->update(collection->dataArray().constData() + kRecordBytes, kRecordBytes);
    EXPECT_EQ(collection->dataArray(), bytes.mid(kRecordBytes, kRecordBytes));
}

TEST_F(InstanceDataCollectionTest, AListThatIsHeldElsewhereIsLeftAlone)
{
    const auto collection = clean(2);
    const QByteArray held = collection->dataArray();
    const QByteArray copy(held.constData(), held.size());
    collection->set(1, "color", ramp(16, 9).constData(), 16);
    EXPECT_EQ(held, copy);
    collection->update(records(2));
    EXPECT_EQ(held, copy);
}

// ---- members -------------------------------------------------------------------------------------------------------

TEST_F(InstanceDataCollectionTest, SetAndGetReachEachMemberOfEachRecord)
{
    InstanceDataCollection collection(plan, size_t(3));
    const LogCapture log;
    collection.set(0, "matrix", ramp(64).constData(), 64);
    collection.set(1, "color", ramp(16, 70).constData(), 16);
    collection.set(2, "token", ramp(8, 30).constData(), 8);
    collection.set(2, "alpha", ramp(4, 50).constData(), 4);
    EXPECT_EQ(collection.dataArray(), ramp(64) + zeros(32) + with(zeros(), kColorOffset, ramp(16, 70)) +
                                          with(with(zeros(), kTokenOffset, ramp(8, 30)), kAlphaOffset, ramp(4, 50)));
    QByteArray out = zeros(20);
    collection.get(1, "color", out.data());
    EXPECT_EQ(out, ramp(16, 70) + zeros(4));
    collection.get(2, "alpha", out.data());
    EXPECT_EQ(out, ramp(4, 50) + ramp(12, 74) + zeros(4));
    EXPECT_EQ(log.texts(), QStringList()) << "also for a token";
}

TEST_F(InstanceDataCollectionTest, SetOfAnUnknownNameWritesTheStartOfTheRecord)
{
    InstanceDataCollection collection(plan, size_t(2));
    const LogCapture log;
    collection.set(1, "colour", ramp(12).constData(), 12);
    EXPECT_EQ(collection.dataArray(), with(zeros(2 * kRecordBytes), kRecordBytes, ramp(12)));
    QByteArray out = zeros(10);
    collection.get(1, "colour", out.data());
    EXPECT_EQ(out, ramp(8) + zeros(2)) << "as many bytes as a token has";
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(InstanceDataCollectionTest, SetOfMoreBytesThanTheMemberHasGoesOnIntoTheNextOnes)
{
    InstanceDataCollection collection(plan, size_t(2));
    const LogCapture log;
    collection.set(0, "alpha", ramp(20).constData(), 20);
    EXPECT_EQ(collection.dataArray(), with(zeros(2 * kRecordBytes), kAlphaOffset, ramp(20)));
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(InstanceDataCollectionTest, SetOutsideTheBytesWritesNothingAndLeavesThemClean)
{
    const auto collection = clean(2);
    const QByteArray before(collection->dataArray().constData(), collection->dataArray().size());
    const QByteArray bytes = ramp(100);
    struct Row
    {
        int index;
        const char* name;
        size_t size;
    };
    for (const Row& row : {Row{-1, "matrix", 4}, Row{-1, "color", 96}, Row{2, "matrix", 1}, Row{2, "alpha", 4},
                           Row{1, "alpha", 9}, Row{1, "color", kHuge}, Row{std::numeric_limits<int>::max(), "color", 4},
                           Row{std::numeric_limits<int>::min(), "color", 4}})
    {
        const LogCapture log;
        collection->set(row.index, row.name, bytes.constData(), row.size);
        EXPECT_EQ(log.messages(QtCriticalMsg), QStringList({notHeld(row.name, row.index, 2)}));
        EXPECT_EQ(collection->dataArray(), before) << row.index << row.name;
        EXPECT_FALSE(Books::isDirty(*collection));
    }
}

TEST_F(InstanceDataCollectionTest, APartOfARecordAtTheEndIsReachedAsFarAsItGoes)
{
    const auto collection = clean(1, 66);
    QByteArray out = zeros(64);
    LogCapture log;
    collection->get(1, "matrix", out.data());
    EXPECT_EQ(out, ramp(64, kRecordBytes + 1));
    collection->set(1, "color", "ab", 2);
    EXPECT_EQ(collection->dataArray().right(2), QByteArray("ab"));
    EXPECT_EQ(log.texts(), QStringList());
    collection->set(1, "color", "abc", 3);
    collection->get(1, "color", out.data());
    collection->get(1, "alpha", out.data());
    collection->copyInstanceMember(1, "matrix", "color");
    EXPECT_EQ(log.messages(), QStringList({notHeld("color", 1, 1), notHeld("color", 1, 1), notHeld("alpha", 1, 1),
                                           notHeld("color", 1, 1)}));
    EXPECT_EQ(out, ramp(64, kRecordBytes + 1));
}

TEST_F(InstanceDataCollectionTest, GetOutsideTheBytesReadsNothing)
{
    const auto collection = clean(2);
    QByteArray out = ramp(64);
    const LogCapture log;
    collection->get(-1, "color", out.data());
    collection->get(2, "matrix", out.data());
    collection->get(2, "unknown", out.data());
    collection->get(std::numeric_limits<int>::max(), "alpha", out.data());
    InstanceDataCollection(kPlanName).get(0, "alpha", out.data());
    EXPECT_EQ(log.messages(QtCriticalMsg),
              QStringList({notHeld("color", -1, 2), notHeld("matrix", 2, 2), notHeld("unknown", 2, 2),
                           notHeld("alpha", std::numeric_limits<int>::max(), 2), notHeld("alpha", 0, 0)}));
    EXPECT_EQ(out, ramp(64));
}

TEST_F(InstanceDataCollectionTest, NullPlacesAreReportedAndNothingIsCopied)
{
    const auto collection = clean(1);
    const LogCapture log;
    collection->set(0, "color", nullptr, 16);
    collection->get(0, "color", nullptr);
    EXPECT_EQ(log.messages(QtCriticalMsg),
              QStringList({assertionLine("nullptr != data || size == 0", "plan 'Object' data 'color' is NULL"),
                           assertionLine("nullptr != out", "plan 'Object' has no place for data 'color'")}));
    EXPECT_EQ(collection->dataArray(), ramp(kRecordBytes));
    EXPECT_FALSE(Books::isDirty(*collection));
}

TEST_F(InstanceDataCollectionTest, SetOfTheRecordsOwnBytesMovesThem)
{
    const auto collection = clean(2);
    collection->set(0, "matrix", collection->dataArray().constData() + 8, 64);
    EXPECT_EQ(collection->dataArray(), with(ramp(2 * kRecordBytes), 0, ramp(64, 9)));
}

TEST_F(InstanceDataCollectionTest, CopyMovesAMemberOntoAnotherWithinOneRecord)
{
    const auto collection = clean(2);
    const LogCapture log;
    collection->copyInstanceMember(1, "color", "matrix");
    EXPECT_EQ(collection->dataArray(),
              with(ramp(2 * kRecordBytes), kRecordBytes, ramp(16, kRecordBytes + kColorOffset + 1)));
    collection->copyInstanceMember(0, "alpha", "color");
    EXPECT_EQ(collection->dataArray().mid(kColorOffset, 16), ramp(4, kAlphaOffset + 1) + ramp(12, kColorOffset + 5));
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(InstanceDataCollectionTest, CopyTakesAsManyBytesAsTheSourceHasEvenBeyondTheTarget)
{
    const auto collection = clean(2);
    const LogCapture log;
    collection->copyInstanceMember(0, "matrix", "color");
    EXPECT_EQ(collection->dataArray(), with(ramp(2 * kRecordBytes), kColorOffset, ramp(64)));
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(InstanceDataCollectionTest, CopyOfUnknownNamesMeansTheStartAndAToken)
{
    const auto collection = clean(1);
    collection->copyInstanceMember(0, "unknown", "color");
    EXPECT_EQ(collection->dataArray(), with(ramp(kRecordBytes), kColorOffset, ramp(8)));
    collection->copyInstanceMember(0, "alpha", "unknown");
    EXPECT_EQ(collection->dataArray().left(8), ramp(4, kAlphaOffset + 1) + ramp(4, 5));
}

TEST_F(InstanceDataCollectionTest, CopyOfMembersThatOverlapMovesTheBytesAsTheyWere)
{
    // A name of two types is in the record twice; it counts as the later type, here the larger one, at the last place.
    auto* const twice = new InstanceDataPlan(QStringLiteral("Twice"));
    twice->addMember(InstanceDataPlan::eFloat, QStringLiteral("a"));
    twice->addMember(InstanceDataPlan::eFloat, QStringLiteral("b"));
    twice->addMember(InstanceDataPlan::eVec4, QStringLiteral("a"));
    registerPlan(twice);
    ASSERT_EQ(twice->offset("a"), 16);
    ASSERT_EQ(twice->offset("b"), 20);
    ASSERT_EQ(twice->dataSize(QStringLiteral("a")), 16u);
    InstanceDataCollection collection(twice, ramp(64).constData(), 64);
    collection.copyInstanceMember(0, "a", "b");
    EXPECT_EQ(collection.dataArray(), with(ramp(64), 20, ramp(16, 17)));
}

TEST_F(InstanceDataCollectionTest, CopyOutsideTheBytesMovesNothing)
{
    const auto collection = clean(2);
    const LogCapture log;
    collection->copyInstanceMember(-1, "color", "matrix");
    collection->copyInstanceMember(2, "color", "matrix");
    collection->copyInstanceMember(1, "matrix", "color");
    EXPECT_EQ(log.messages(QtCriticalMsg),
              QStringList({notHeld("color", -1, 2), notHeld("color", 2, 2), notHeld("color", 1, 2)}));
    EXPECT_EQ(collection->dataArray(), ramp(2 * kRecordBytes));
    EXPECT_FALSE(Books::isDirty(*collection));
}

// ---- clean and dirty -----------------------------------------------------------------------------------------------

TEST_F(InstanceDataCollectionTest, EachWriteMarksTheCollectionAsChangedAndReadsDoNot)
{
    const auto collection = clean(2);
    QByteArray out = zeros(64);
    EXPECT_FALSE(Books::isDirty(*collection));
    collection->get(0, "color", out.data());
    collection->size();
    collection->dataArray();
    collection->setBOUsageFlags(GL_DYNAMIC_DRAW);
    collection->useStorageBuffer(GL_DYNAMIC_STORAGE_BIT);
    collection->bindTextureTokens(manager.get());
    EXPECT_FALSE(Books::isDirty(*collection));
    collection->set(0, "alpha", out.constData(), 4);
    EXPECT_TRUE(Books::isDirty(*collection));
    collection->clearDirtyStatus();
    collection->set(0, "alpha", nullptr, 0);
    EXPECT_TRUE(Books::isDirty(*collection));
    collection->clearDirtyStatus();
    collection->copyInstanceMember(0, "color", "color");
    EXPECT_TRUE(Books::isDirty(*collection));
    collection->clearDirtyStatus();
    EXPECT_FALSE(Books::isDirty(*collection));
}

TEST_F(InstanceDataCollectionTest, AWritableRecordMarksTheCollectionAsChangedAndNoRecordDoesNot)
{
    const auto collection = clean(2, 95);
    for (const int index : {-1, 2, 3, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()})
        EXPECT_EQ(Books::writableRecord(*collection, index), nullptr) << index;
    EXPECT_FALSE(Books::isDirty(*collection));
    char* const record = Books::writableRecord(*collection, 1);
    EXPECT_TRUE(Books::isDirty(*collection));
    EXPECT_EQ(record, collection->dataArray().constData() + kRecordBytes);
    EXPECT_EQ(Books::writableRecord(*collection, 0), collection->dataArray().constData());
    InstanceDataCollection lost(static_cast<InstanceDataPlan*>(nullptr), size_t(1));
    EXPECT_EQ(Books::writableRecord(lost, 0), nullptr);
}

// ---- guards --------------------------------------------------------------------------------------------------------

TEST_F(InstanceDataCollectionTest, BytesThatCannotBeAreReportedAndNotTaken)
{
    const auto collection = clean(1);
    LogCapture log;
    collection->update(nullptr, kRecordBytes);
    const char byte = 0;
    collection->update(&byte, kHuge); // as of a difference that went below 0
    EXPECT_EQ(InstanceDataCollection(plan, kHuge / 2).size(), 0);
    const QString cannotTake = QStringLiteral("(nullptr != bytes || numBytes == 0) && numBytes <= kMaxBytes");
    EXPECT_EQ(
        log.messages(QtCriticalMsg),
        QStringList({assertionLine(cannotTake, "Plan 'Object' cannot take 96 bytes"),
                     assertionLine("(numBytes / _plan->totalDataSize()) <= _plan->arraySize()", kTooBig),
                     assertionLine(cannotTake, QStringLiteral("Plan 'Object' cannot take %1 bytes").arg(kHuge)),
                     assertionLine("numItems <= _plan->arraySize()", kTooBig),
                     assertionLine("numItems <= kMaxBytes / std::max<size_t>(recordSize(), 1)",
                                   QStringLiteral("Plan 'Object' cannot have %1 items of 96 bytes").arg(kHuge / 2))}));
    EXPECT_EQ(collection->dataArray(), ramp(kRecordBytes));
    EXPECT_FALSE(Books::isDirty(*collection));
}

TEST_F(InstanceDataCollectionTest, WithAnEmptyPlanThereAreNoRecords)
{
    auto* const empty = registerPlan(new InstanceDataPlan(QStringLiteral("Empty")));
    LogCapture log;
    InstanceDataCollection collection(empty, size_t(3));
    EXPECT_EQ(collection.size(), 0);
    collection.update({InstanceData(QStringLiteral("Empty"))});
    EXPECT_EQ(collection.dataArray().size(), 0);
    EXPECT_EQ(Books::writableRecord(collection, 0), nullptr);
    collection.bindTextureTokens(manager.get());
    EXPECT_EQ(manager->takeCalls(), QStringList({"bind(tokens)"}));
    EXPECT_EQ(log.texts(), QStringList());
    collection.update(ramp(8).constData(), 8);
    collection.set(0, "x", ramp(8).constData(), 8);
    EXPECT_EQ(log.messages(QtCriticalMsg),
              QStringList({assertionLine("_plan->totalDataSize() > 0", "Plan 'Empty' is empty"),
                           notHeld("x", 0, 0).replace("Object", "Empty")}));
    EXPECT_EQ(collection.dataArray().size(), 0);
    EXPECT_EQ(collection.size(), 0);
}

TEST_F(InstanceDataCollectionTest, AnUnknownPlanIsReportedByTheRegistryAlone)
{
    LogCapture log;
    const InstanceDataCollection collection(QStringLiteral("Lost"));
    EXPECT_EQ(log.messages(), QStringList({unknownPlan("Lost")}));
    EXPECT_EQ(collection.plan(), nullptr);
    EXPECT_EQ(collection.size(), 0);
    log.clear();
    const InstanceDataCollection filled(QStringLiteral("Lost"), records(2));
    EXPECT_EQ(log.messages(), QStringList({noPlan("collection of 2 items")}));
    EXPECT_EQ(filled.dataArray(), QByteArray());
}

TEST_F(InstanceDataCollectionTest, WithoutAPlanEachUseIsReportedAndDoesNothing)
{
    InstanceDataPlan* const none = nullptr;
    LogCapture log;
    InstanceDataCollection collection(none, size_t(2));
    InstanceDataCollection other(none, ramp(8).constData(), 8);
    EXPECT_EQ(log.messages(QtCriticalMsg),
              QStringList({noPlan("collection of 2 items"), noPlan("collection of 8 bytes")}));
    EXPECT_TRUE(collection.dataArray().isEmpty());
    EXPECT_TRUE(other.dataArray().isEmpty());
    collection.clearDirtyStatus();
    log.clear();
    QByteArray out = ramp(8);
    collection.update(records(1));
    collection.update(out.constData(), 8);
    collection.set(0, "a", out.constData(), 8);
    collection.get(0, "a", out.data());
    collection.copyInstanceMember(0, "a", "b");
    collection.bindTextureTokens(manager.get());
    EXPECT_TRUE(collection.getUniformBufferObject().isNull());
    EXPECT_FALSE(collection.bind(nullptr, manager.get()));
    EXPECT_FALSE(collection.unbind(nullptr, manager.get()));
    EXPECT_EQ(
        log.messages(QtCriticalMsg),
        QStringList({noPlan("collection of 1 items"), noPlan("collection of 8 bytes"), noPlan("data 'a'"),
                     noPlan("data 'a'"), noPlan("data 'a'"), noPlan("collection has no plan on bindTextureTokens"),
                     noPlan("collection has no plan on getUniformBufferObject"),
                     noPlan("collection has no plan on bind"), noPlan("collection has no plan on unbind")}));
    EXPECT_EQ(out, ramp(8));
    EXPECT_EQ(manager->takeCalls(), QStringList());
    EXPECT_FALSE(Books::isDirty(collection));
    EXPECT_EQ(collection.size(), 0);
    EXPECT_EQ(collection.memoryEstimateCPU(), 144u);
}

} // namespace Harrow::Vrk::Test
