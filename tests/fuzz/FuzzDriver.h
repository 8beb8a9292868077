// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// The driver of the fuzz targets: the harness' fake one, which here reads all the texels that it is given, as a real
/// one does, and which knows what must be as it was when a file has been loaded or refused.

#include "support/FakeDriver.h"

namespace Harrow::Vrk::Test
{

class FuzzDriver
{
public:
    /// The one of this process, made and loaded at first use. Messages of the library go nowhere from then on,
    /// formatted as always.
    static FuzzDriver& instance();

    /// Whether uploads leave an error, as if memory had run out. Forgets the errors of before.
    void refuseUploads(bool refused);

    /// Ends the process, with a line that tells why, unless there is no texture, no texture unit is taken and the
    /// unpack state is as it was before.
    void expectNothingLeft() const;

    /// Ends the process.
    [[noreturn]] static void fail(const char* message);

private:
    FuzzDriver();

    FakeDriver _driver;
};

} // namespace Harrow::Vrk::Test
