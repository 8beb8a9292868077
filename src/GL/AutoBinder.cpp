// SPDX-License-Identifier: MIT
#include "AutoBinder.h"

#include "Bindable.h"
#include "Diagnostics.h"

namespace Harrow::Vrk
{

AutoBinder::AutoBinder(Bindable* object) : _object(object), _bound(false)
{
    if (_object)
        _bound = _object->bind();
    else
        VRK_LOG_DEBUG("AutoBinder tried to bind NULL object");
}

AutoBinder::AutoBinder(QSharedPointer<Bindable> object) : AutoBinder(object.data()) {}

AutoBinder::~AutoBinder()
{
    if (_bound)
        _object->unbind();
}

} // namespace Harrow::Vrk
