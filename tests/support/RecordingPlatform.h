// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// The platform of all test programs: gives out recorders in front of the functions of the platform behind it.

#include "GLPlatform.h"

namespace Harrow::Vrk::Test
{

class RecordingPlatform final : public GLPlatform
{
public:
    /// The one of this process, put in force at its first use.
    static RecordingPlatform& instance();

    /// The platform whose functions are recorded: the native one unless told otherwise.
    void setInner(GLPlatform* inner);
    GLPlatform& inner() const;

    void* procAddress(const char* name) override;
    void* moduleSymbol(const char* name) override;
    void* currentContext() override;

private:
    GLPlatform* _inner = nullptr;
};

} // namespace Harrow::Vrk::Test
