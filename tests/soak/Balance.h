// SPDX-License-Identifier: MIT
// What is alive: the library's own counters, the names that OpenGL has given out, and the texture units that are taken.
#pragma once

#include "LiveNames.h"

#include <QString>

namespace vrksoak
{

struct Balance
{
    /// What is alive now. A context is current.
    static Balance now();

    int textures = 0;
    int buffers = 0;
    int managedBuffers = 0;
    int uniformBuffers = 0;
    int vertexArrays = 0;
    int drawBuffers = 0;
    int framebuffers = 0;
    int attachments = 0;
    int takenUnits = 0;
    NameCounts names = {};

    friend bool operator==(const Balance&, const Balance&) = default;

    /// In one line, all that is not zero.
    QString text() const;
    /// In one line, what is more or less than in `before`.
    QString differenceTo(const Balance& before) const;
};

} // namespace vrksoak
