// SPDX-License-Identifier: MIT
#include "Keys.h"

#include <algorithm>

namespace vrkview
{

const KeyRow* rowOf(int key)
{
    if (key == kNoKey)
        return nullptr;
    const auto has = [key](const KeyRow& row)
    { return std::find(row.keys.begin(), row.keys.end(), Qt::Key(key)) != row.keys.end(); };
    const KeyRow* const found = std::find_if(std::begin(kKeys), std::end(kKeys), has);
    return found != std::end(kKeys) ? found : nullptr;
}

QString controlsAsMarkdown()
{
    QString table = QStringLiteral("| Key or mouse | What it does |\n|---|---|\n");
    const auto add = [&table](const char* names, const char* text)
    { table += QStringLiteral("| %1 | %2 |\n").arg(QLatin1String(names), QLatin1String(text)); };
    for (const MouseRow& row : kMouse)
        add(row.names, row.text);
    for (const KeyRow& row : kKeys)
        add(row.names, row.text);
    return table;
}

} // namespace vrkview
