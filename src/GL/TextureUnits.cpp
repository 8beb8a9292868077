// SPDX-License-Identifier: MIT
#include "TextureUnits.h"

#include "Diagnostics.h"
#include "GLContextTracker.h"
#include "GLFunctions.h"
#include "Texture.h"

#include <QBasicMutex>
#include <QMutexLocker>

#include <algorithm>
#include <atomic>
#include <memory>

namespace Harrow::Vrk
{
namespace
{

/// A record beside the context that it is for, in a list that only grows: it can be walked without the lock.
struct ContextRecord
{
    void* context = nullptr;
    const ContextRecord* older = nullptr;
    TextureUnits units;
};

std::atomic<const ContextRecord*> newestRecord = nullptr;

/// What a thread has used last, so that its binds take no lock while it stays in one context. It holds for as long as
/// the records are of this generation.
struct LastRecord
{
    const void* context = nullptr;
    TextureUnits* units = nullptr;
    unsigned generation = 0;
};

thread_local LastRecord last;
std::atomic<unsigned> generation = 0;

TextureUnits* rememberedUnits(const void* context)
{
    const bool holds = last.context == context && last.generation == generation.load(std::memory_order_acquire);
    return holds ? last.units : nullptr;
}

TextureUnits& remember(ContextRecord* record)
{
    last = {record->context, &record->units, generation.load(std::memory_order_relaxed)};
    return record->units;
}

QHash<void*, ContextRecord*>& records()
{
    // Never destroyed: textures that outlive the library's own statics may still unbind. The records do not move
    // either, since a thread uses its own one while another thread adds one.
    static auto* const all = new QHash<void*, ContextRecord*>;
    return *all;
}

std::unique_ptr<ContextRecord> newRecord(void* context)
{
    auto record = std::make_unique<ContextRecord>();
    record->context = context;
    GLint maxUnits = 0;
    glGetIntegerv(GL_MAX_TEXTURE_IMAGE_UNITS, &maxUnits);
    record->units.initilizeFreeTextureUnits(maxUnits, context);
    return record;
}

} // namespace

QBasicMutex& TextureUnits::recordsMutex()
{
    static QBasicMutex mutex;
    return mutex;
}

TextureUnits& TextureUnits::ofCurrentContext()
{
    void* const context = GLContextTracker::currentContext();
    if (TextureUnits* const known = rememberedUnits(context))
        return *known;
    QMutexLocker lock(&recordsMutex());
    if (ContextRecord* const known = records().value(context))
        return remember(known);
    // The driver may log, and whoever handles the message come here again.
    lock.unlock();
    auto made = newRecord(context);
    lock.relock();
    ContextRecord*& record = records()[context];
    if (!record)
    {
        made->older = newestRecord.load();
        record = made.release();
        newestRecord.store(record, std::memory_order_release);
    }
    return remember(record);
}

const TextureUnits* TextureUnits::findOfCurrentContext()
{
    void* const context = GLContextTracker::currentContext();
    if (const TextureUnits* const known = rememberedUnits(context))
        return known;
    for (const auto* record = newestRecord.load(std::memory_order_acquire); record; record = record->older)
        if (record->context == context)
            return &record->units;
    return nullptr;
}

void TextureUnits::forgetAll()
{
    const QMutexLocker lock(&recordsMutex());
    generation.fetch_add(1, std::memory_order_release);
    newestRecord.store(nullptr);
    qDeleteAll(records());
    records().clear();
}

void TextureUnits::initilizeFreeTextureUnits(int maxUnits, const void* context)
{
    const TextureUnits& contextInfo = *this;
    VRK_ASSERT(0 == contextInfo.maxTextureImageUnits,
               "VrkTexture::initilizeFreeTextureUnits() : m_MaxTextureImageUnits is set for exisitng GL context, %p",
               context);
    maxTextureImageUnits = std::clamp(maxUnits, 0, kMaxUnits);
    freeTextureUnits.insertBelow(maxTextureImageUnits);
}

int TextureUnits::unitOf(unsigned texture) const
{
    const auto found = textureToUnitMaps.constFind(texture);
    return found != textureToUnitMaps.constEnd() ? static_cast<int>(*found) : -1;
}

unsigned TextureUnits::take(unsigned texture)
{
    const auto unit = static_cast<unsigned>(freeTextureUnits.last());
    freeTextureUnits.remove(unit);
    textureToUnitMaps.insert(texture, unit);
    boundTextureCounts.insert(texture, 1);
    return unit;
}

void TextureUnits::release(unsigned texture)
{
    const unsigned unit = textureToUnitMaps.take(texture);
    boundTextureCounts.remove(texture);
    freeTextureUnits.insert(unit);
}

bool hasUnit(const Texture& texture)
{
    return TextureUnits::ofCurrentContext().unitOf(texture.textureID()) >= 0;
}

} // namespace Harrow::Vrk
