// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// What the suites of the scene's records share: a view of its lists, object records that have matrices, and a fixture
/// with a model that goes before its plans.

#include "GPUModelPassTestTools.h"
#include "InstanceDataCollection.h"
#include "InstanceDataPlan.h"
#include "InstanceDataRegistry.h"
#include "support/FakeDriver.h"
#include "support/LogCapture.h"

#include <cstring>
#include <utility>

namespace Harrow::Vrk
{

struct GPUModelRecordsTestAccess
{
    static auto& drawables(GPUModel& model)
    {
        return model._drawables;
    }
    static const auto& drawableIndex(const GPUModel& model)
    {
        return model._drawableIndex;
    }
    static bool isUnsorted(const GPUModel& model)
    {
        return model._drawablesUnsorted;
    }
    static const auto& keepParentPositionOnly(const GPUModel& model)
    {
        return model._keepParentPositionOnly;
    }
    static const auto& negative(const GPUModel& model)
    {
        return model._transformNegative;
    }
    static const auto& dirty(const GPUModel& model)
    {
        return model._transformDirty;
    }
    static const auto& visibility(const GPUModel& model)
    {
        return model._transformVisibility;
    }
    static bool& isAnyDirty(GPUModel& model)
    {
        return model._anyTransformDirty;
    }
    static const auto& users(const GPUModel& model)
    {
        return model._transformUsers;
    }
    static const auto& pending(const GPUModel& model)
    {
        return model._previousMatrixPending;
    }
    /// One number if all parallel lists have it, and -1 otherwise.
    static qsizetype transformCount(const GPUModel& model)
    {
        const qsizetype count = model._localTransforms.size();
        for (const qsizetype other :
             {model._keepParentPositionOnly.size(), model._worldTransforms.size(), model._normalTransforms.size(),
              model._transformParents.size(), model._transformNegative.size(), model._transformDirty.size(),
              model._transformVisibility.size(), model._transformUsers.size()})
            if (other != count)
                return -1;
        return count;
    }
};

inline std::ostream& operator<<(std::ostream& stream, const GPUModel::InstanceRef& ref)
{
    return stream << "drawable " << ref.drawable << " instance " << ref.instance;
}

} // namespace Harrow::Vrk

namespace Harrow::Vrk::Test
{

using Normal = QGenericMatrix<3, 3, float>;

inline QString assertion(const char* condition, const QString& message)
{
    return assertionLine(QString::fromLatin1(condition), message);
}

inline QString noDrawable(int handle)
{
    return assertion("this->isHandle(handle)", QStringLiteral("There is no drawable %1").arg(handle));
}

inline QString noTransform(int index, const char* condition = "this->isValidTransform(index)")
{
    return assertion(condition, QStringLiteral("There is no transform %1").arg(index));
}

/// Bit for bit, so that -0 is not 0 and what is not a number equals itself.
template <typename Matrix> bool isSame(const Matrix& a, const Matrix& b)
{
    return std::memcmp(a.constData(), b.constData(), sizeof(float) * (sizeof(Matrix) < 64 ? 9 : 16)) == 0;
}

/// Registered. The carrier is one that asks no driver for limits.
inline InstanceDataPlan* newObjectPlan(const QString& name, const QStringList& matrices, const QString& number = {})
{
    auto* const plan = new InstanceDataPlan(name);
    for (const QString& matrix : matrices)
        plan->addMember(InstanceDataPlan::eMat4, matrix);
    if (!number.isEmpty())
        plan->addMember(InstanceDataPlan::eFloat, number);
    plan->setMechanism(InstanceDataPlan::eTextureMechanism);
    plan->setArraySize(100'000);
    LogCapture limits; // not of interest here
    InstanceDataRegistry::Instance().registerPlan(plan);
    return plan;
}

class GPUModelFixture : public FakeDriverTest
{
protected:
    using Access = GPUModelRecordsTestAccess;
    using Pass = GPUModelTestAccess;
    using Refs = QList<GPUModel::InstanceRef>;

    void SetUp() override
    {
        FakeDriverTest::SetUp();
        driver.setInteger(GL_MAX_TEXTURE_SIZE, 16'384);
        InstanceDataRegistry::Instance().clear();
        plan = newObjectPlan(QStringLiteral("Object"),
                             {kModelMatrix, kPreviousModelMatrix, kInverseModelMatrix, kModelNormalMatrix},
                             QStringLiteral("alpha"));
    }

    void TearDown() override
    {
        model.clear();
        InstanceDataRegistry::Instance().clear();
    }

    InstanceDataCollection* newRecords(int count)
    {
        return new InstanceDataCollection(plan, size_t(count));
    }

    /// A drawable with object records, one for each of its commands.
    int add(int commands, quint64 flags = 0)
    {
        return model.add(newDrawList(commands), 0, nullptr, newRecords(commands), flags);
    }

    /// A drawable of one command for each of these flags.
    void addAll(const QList<quint64>& flagWords)
    {
        for (const quint64 word : flagWords)
            add(1, word);
    }

    /// Of what stands at each position.
    QList<quint64> flags()
    {
        QList<quint64> all;
        for (const GPUModel::Drawable& drawable : std::as_const(Access::drawables(model)))
            all.append(drawable.flags);
        return all;
    }

    const GPUModel::Drawable& at(int position)
    {
        return Pass::drawableAt(model, position);
    }

    /// A drawable of one command that follows `transform`.
    int follow(int transform)
    {
        const int handle = add(1);
        model.useTransform(handle, 0, transform);
        return handle;
    }

    static QMatrix4x4 matrix(const InstanceDataCollection* records, int instance, const QString& member)
    {
        QMatrix4x4 value;
        records->get(instance, member, value.data());
        return value;
    }

    QMatrix4x4 record(int handle, const QString& member, int instance = 0)
    {
        return matrix(std::as_const(model).objectData(handle), instance, member);
    }

    static float number(const InstanceDataCollection* records, int instance, const char* member = "alpha")
    {
        float value = -1.0f;
        records->get(instance, QString::fromLatin1(member), &value);
        return value;
    }

    InstanceDataPlan* plan = nullptr;
    GPUModel model;
    const QMatrix4x4 identity;
};

} // namespace Harrow::Vrk::Test
