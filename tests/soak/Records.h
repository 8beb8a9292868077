// SPDX-License-Identifier: MIT
// What each instance of the crowd carries: the plans "Object" and "Material".
#pragma once

#include "RenderSettings.h"

#include "TextureToken.h"

#include <QList>
#include <QString>

namespace Harrow::Vrk
{
class InstanceDataCollection;
class InstanceDataPlan;
} // namespace Harrow::Vrk

namespace vrksoak
{

/// Registers both plans, and takes all plans away at its end; collections must be gone by then.
class Records
{
public:
    Records() = default;
    ~Records();
    Records(const Records&) = delete;
    Records& operator=(const Records&) = delete;

    /// False, with `error` in one line, when the driver lacks the carrier.
    bool create(vrkview::RecordCarrier carrier, QString& error);

    /// Records of one list.
    int capacity() const
    {
        return _capacity;
    }

    /// Zeroed records for `count` instances, and filled ones that have these tokens in turn. The caller owns them.
    Harrow::Vrk::InstanceDataCollection* newObjects(int count) const;
    Harrow::Vrk::InstanceDataCollection* newMaterials(int count, const QList<Harrow::Vrk::TextureToken>& tokens) const;

    /// Puts these tokens into records that there are.
    void setTokens(Harrow::Vrk::InstanceDataCollection& materials,
                   const QList<Harrow::Vrk::TextureToken>& tokens) const;

    /// The units with the accessors.
    QString objectUnit() const;
    QString materialUnit() const;

private:
    int recordsOf(int count) const;

    // The registry owns them.
    Harrow::Vrk::InstanceDataPlan* _objects = nullptr;
    Harrow::Vrk::InstanceDataPlan* _materials = nullptr;
    int _capacity = 0;
    bool _fillsBlocks = false;
};

} // namespace vrksoak
