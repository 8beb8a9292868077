// SPDX-License-Identifier: MIT
// Each translation unit of this program includes the library's headers in another place and calls by plain names. That
// it builds is most of the test; the rest is that all see one table, and that calls without it only report.
#include <cstdio>

void* clearPointerAfterSystemHeaders();
void* clearPointerBeforeSystemHeaders();
void* clearPointerAfterQtHeaders();
void* clearPointerBeforeQtHeaders();

int main()
{
    void* const pointer = clearPointerAfterSystemHeaders();
    const bool same = pointer && pointer == clearPointerBeforeSystemHeaders() &&
                      pointer == clearPointerAfterQtHeaders() && pointer == clearPointerBeforeQtHeaders();
    std::puts(same ? "one table" : "the units disagree");
    return same ? 0 : 1;
}
