// SPDX-License-Identifier: MIT
#include "TextureIO.h"

#include "Diagnostics.h"
#include "TextureFileInfo.h"
#include "TextureLoader.h"
#include "TextureRecogniser.h"

#include <VrkCore/MemoryMappedFile.h>
#include <VrkCore/RawMemory.h>

#include <QElapsedTimer>
#include <QFileInfo>
#include <QHash>
#include <QList>

#include <memory>

namespace Harrow::Vrk
{
namespace
{

struct Registry
{
    QList<TextureRecogniser*> recognisers;
    QHash<QString, TextureRecogniser*> bySuffix;
};

Registry& registry()
{
    // Never destroyed, as the recognisers are not: the application ends them.
    static auto* const all = new Registry;
    return *all;
}

/// The recogniser of a file's suffix, or null. An entry may have outlived its recogniser.
TextureRecogniser* recogniserOfSuffix(const QString& path)
{
    const QString suffix = QFileInfo(path).suffix().toLower();
    TextureRecogniser* const recogniser = registry().bySuffix.value(suffix);
    if (!recogniser)
        return nullptr;
    VRK_ASSERT_RETURN(registry().recognisers.contains(recogniser), nullptr,
                      "Texture recogniser for suffix '%s' has been deleted", qPrintable(suffix));
    return recogniser;
}

/// Asks `preferred`, which may be null, and then all in their order, `preferred` again among them. The loader owns the
/// memory.
TextureLoader* identify(std::unique_ptr<Memory> memory, const QString& name, const TextureRecogniser* preferred)
{
    TextureLoader* loader = preferred ? preferred->recognise(memory.get(), name) : nullptr;
    for (const TextureRecogniser* const recogniser : std::as_const(registry().recognisers))
    {
        if (loader)
            break;
        loader = recogniser->recognise(memory.get(), name);
    }
    if (loader)
        static_cast<void>(memory.release()); // it is the loader's
    return loader;
}

Texture* logTime(Texture* texture, const QString& name, const QElapsedTimer& timer)
{
    if (texture)
        VRK_LOG_DEBUG("Texture %s loaded in %lld ms", qPrintable(name), static_cast<long long>(timer.elapsed()));
    return texture;
}

} // namespace

const QString kBakedKeyword = QStringLiteral("[baked]");

// ---- recognisers and loaders ---------------------------------------------------------------------------------------

void RegisterTextureRecogniser(TextureRecogniser* recogniser, const QString& suffix)
{
    VRK_ASSERT_RETURN(nullptr != recogniser, , "Texture recogniser is NULL on register");
    if (!registry().recognisers.contains(recogniser))
        registry().recognisers.append(recogniser);
    if (!suffix.isEmpty())
        registry().bySuffix.insert(suffix.toLower(), recogniser);
}

void DeleteAllRegisteredTextureRecognisers()
{
    qDeleteAll(registry().recognisers);
    registry().recognisers.clear();
}

TextureLoader* IdentifyTextureFromFile(const QString& path)
{
    return identify(std::make_unique<MemoryMappedFile>(path), path, recogniserOfSuffix(path));
}

TextureLoader* IdentifyTextureFromMemory(unsigned char* data, size_t size, const QString& name)
{
    return identify(std::make_unique<RawMemory>(data, size), name, nullptr);
}

// ---- textures from files and memory --------------------------------------------------------------------------------

Texture* LoadTextureFromFile(const QString& path, const TextureFileInfo& info)
{
    if (!QFileInfo(path).isFile())
    {
        VRK_LOG_WARNING("File %s not found", qPrintable(path));
        return nullptr;
    }
    QElapsedTimer timer;
    timer.start();
    const std::unique_ptr<TextureLoader> loader(IdentifyTextureFromFile(path));
    if (loader && !loader->valid())
    {
        VRK_LOG_DEBUG("Data appears invalid for texture file '%s'", qPrintable(path));
        return nullptr;
    }
    return logTime(loader ? loader->load(info) : LoadTextureFromQImageFile(path, info), path, timer);
}

Texture* LoadTextureFromMemory(unsigned char* data, size_t size, const TextureFileInfo& info, const QString& name)
{
    const QString shownName = name.isEmpty() ? QStringLiteral("<unnamed>") : name;
    QElapsedTimer timer;
    timer.start();
    const std::unique_ptr<TextureLoader> loader(IdentifyTextureFromMemory(data, size, name));
    if (!loader)
    {
        VRK_LOG_DEBUG("Unable to recognise the file format for texture data '%s'", qPrintable(shownName));
        return nullptr;
    }
    if (!loader->valid())
    {
        VRK_LOG_DEBUG("Data appears invalid for texture data '%s'", qPrintable(shownName));
        return nullptr;
    }
    return logTime(loader->load(info), shownName, timer);
}

// ---- names of baked files ------------------------------------------------------------------------------------------

QString GetBakedImagePath(const QString& path, const QString& suffix, int anisotropy)
{
    const QString extension = QFileInfo(path).suffix();
    QString baked = path.left(path.lastIndexOf(extension) - 1) + kBakedKeyword;
    if (anisotropy > 0)
        baked += QStringLiteral("[aniso%1]").arg(anisotropy);
    return baked + suffix;
}

bool IsBakedImagePath(const QString& path)
{
    return path.contains(kBakedKeyword);
}

int GetAnisoLevel(const QString& path)
{
    static constexpr QLatin1String kMark("[aniso");
    const qsizetype mark = path.indexOf(kMark);
    if (mark < 0)
        return -1;
    const qsizetype number = mark + kMark.size();
    return path.mid(number, path.indexOf(QLatin1Char(']'), number) - number).toInt();
}

} // namespace Harrow::Vrk
