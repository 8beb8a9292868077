// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// What the suites of records, collections and the registry share: plans of known layout on the fake driver, and a view
/// of a collection's books.

#include "InstanceData.h"
#include "InstanceDataCollection.h"
#include "InstanceDataPlan.h"
#include "InstanceDataRegistry.h"

#include "TextureManagerTestTools.h"
#include "support/ObjectAccess.h"

#include <QtEndian>

namespace Harrow::Vrk
{

struct InstanceDataCollectionTestAccess
{
    static bool isDirty(const InstanceDataCollection& collection)
    {
        return collection._dirty;
    }
    static const QList<TextureToken>& tokens(const InstanceDataCollection& collection)
    {
        return collection._tokens;
    }
    static const QSharedPointer<UniformBufferObject>& uniformBufferObject(const InstanceDataCollection& collection)
    {
        return collection._uniformBufferObject;
    }
    static int usage(const InstanceDataCollection& collection)
    {
        return collection._usage;
    }
    static int storageFlags(const InstanceDataCollection& collection)
    {
        return collection._storageFlags;
    }
    static char* writableRecord(InstanceDataCollection& collection, int index)
    {
        return collection.writableRecord(index);
    }
};

} // namespace Harrow::Vrk

namespace Harrow::Vrk::Test
{

// The layout of `newPlan`, worked out by hand: larger types first, 92 bytes rounded up.
inline constexpr int kMatrixOffset = 0;
inline constexpr int kColorOffset = 64;
inline constexpr int kTokenOffset = 80;
inline constexpr int kAlphaOffset = 88;
inline constexpr int kRecordBytes = 96;

inline const QString kPlanName = QStringLiteral("Object");
inline const QString kUnknownPlan =
    QStringLiteral("InstanceDataRegistry::getPlan() : Specified instanceData plan does not exist : %1");

/// Members "matrix", "color", "token" and "alpha"; four records. Needs no driver under the texture carrier.
inline InstanceDataPlan* newPlan(const QString& name = kPlanName,
                                 InstanceDataPlan::MechanismType mechanism = InstanceDataPlan::eUniformBufferMechanism)
{
    auto* const plan = new InstanceDataPlan(name);
    plan->addMember(InstanceDataPlan::eFloat, QStringLiteral("alpha"));
    plan->addMember(InstanceDataPlan::eTexture, QStringLiteral("token"));
    plan->addMember(InstanceDataPlan::eVec3, QStringLiteral("color"));
    plan->addMember(InstanceDataPlan::eMat4, QStringLiteral("matrix"));
    plan->setArraySize(4);
    plan->setMechanism(mechanism);
    return plan;
}

inline InstanceDataPlan* registerPlan(InstanceDataPlan* plan)
{
    InstanceDataRegistry::Instance().registerPlan(plan);
    return plan;
}

/// Bytes that differ from each other: `first`, `first` + 1, …
inline QByteArray ramp(int count, int first = 1)
{
    QByteArray bytes;
    for (int i = 0; i < count; ++i)
        bytes.append(char(first + i));
    return bytes;
}

/// `record` with `bytes` at `offset`.
inline QByteArray with(QByteArray record, int offset, const QByteArray& bytes)
{
    return record.replace(offset, bytes.size(), bytes);
}

inline QByteArray zeros(int count = kRecordBytes)
{
    return QByteArray(count, '\0');
}

inline QByteArray bytesOf(TextureToken token)
{
    QByteArray bytes(sizeof token.token, Qt::Uninitialized);
    qToUnaligned(token.token, bytes.data());
    return bytes;
}

/// A registered plan "Object", an empty registry but for it, and a manager that is in use.
class RecordsFixture : public ManagerFixture
{
protected:
    using Books = InstanceDataCollectionTestAccess;

    void SetUp() override
    {
        ManagerFixture::SetUp();
        UniformBufferObjectTestAccess::forgetContexts();
        InstanceDataRegistry::Instance().clear();
        plan = registerPlan(newPlan());
        TextureManager::setInstance(manager.get());
        ASSERT_EQ(plan->totalDataSize(), size_t(kRecordBytes));
        ASSERT_EQ(plan->offset("matrix"), kMatrixOffset);
        ASSERT_EQ(plan->offset("color"), kColorOffset);
        ASSERT_EQ(plan->offset("token"), kTokenOffset);
        ASSERT_EQ(plan->offset("alpha"), kAlphaOffset);
    }

    void TearDown() override
    {
        InstanceDataRegistry::Instance().clear();
        UniformBufferObjectTestAccess::forgetContexts();
        ManagerFixture::TearDown();
    }

    static QString unknownPlan(const char* name)
    {
        return kUnknownPlan.arg(QString::fromLatin1(name));
    }

    InstanceDataPlan* plan = nullptr;
};

} // namespace Harrow::Vrk::Test
