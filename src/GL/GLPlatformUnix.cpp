// SPDX-License-Identifier: MIT
#include "GLConstants.h"
#include "GLPlatform.h"
#include "GLRequirements.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <mutex>
#include <span>
#include <string_view>
#include <vector>

#include <dlfcn.h>

namespace Harrow::Vrk
{
namespace
{

using ProcAddress = void* (*)(const char*);
using CurrentContext = void* (*)();

void* openLoaded(const char* library)
{
    return dlopen(library, RTLD_LAZY | RTLD_LOCAL | RTLD_NOLOAD);
}

/// EGL or GLX. Neither is linked: a context can only be current through a library that the application has loaded, so
/// it is enough to look among the loaded ones. Any thread, without a lock: all who load find the same addresses.
class Binding
{
public:
    Binding(std::span<const char* const> libraries, const char* procAddress, const char* currentContext)
        : _libraries(libraries), _procAddressName(procAddress), _currentContextName(currentContext)
    {
    }

    bool isLoaded() const
    {
        return _currentContext.load(std::memory_order_acquire) != nullptr;
    }

    void* currentContext()
    {
        return isLoaded() || load() ? _currentContext.load(std::memory_order_acquire)() : nullptr;
    }

    void* procAddress(const char* name) const
    {
        return _procAddress.load(std::memory_order_acquire)(name);
    }

private:
    bool load()
    {
        for (const char* const library : _libraries)
        {
            void* const handle = openLoaded(library);
            if (!handle)
                continue;
            const auto procAddress = reinterpret_cast<ProcAddress>(dlsym(handle, _procAddressName));
            const auto current = reinterpret_cast<CurrentContext>(dlsym(handle, _currentContextName));
            if (procAddress && current)
            {
                _procAddress.store(procAddress, std::memory_order_release);
                _currentContext.store(current, std::memory_order_release);
                return true; // the library is kept, as the application keeps it
            }
            dlclose(handle);
        }
        return false;
    }

    std::span<const char* const> _libraries;
    const char* _procAddressName;
    const char* _currentContextName;
    std::atomic<ProcAddress> _procAddress = nullptr;
    std::atomic<CurrentContext> _currentContext = nullptr;
};

constexpr const char* kEglLibraries[] = {"libEGL.so.1"};
constexpr const char* kGlxLibraries[] = {"libGLX.so.0", "libGL.so.1"};
constexpr const char* kModules[] = {"libOpenGL.so.0", "libGL.so.1"};

/// What the context at hand offers, read from the driver past the function table, which may not be loaded yet.
class ContextOffer
{
public:
    bool covers(const GLRequirementRow& row) const
    {
        if (row.version != 0 && row.version <= _version)
            return true;
        const auto run = glRequirementExtensionRuns().subspan(row.firstExtension, row.extensionCount);
        return std::any_of(run.begin(), run.end(), [this](unsigned short index) { return _extensions[index]; });
    }

    /// Brings the record up to date for `context`. Cheap while nothing changed: version and extension count are
    /// compared too, since a new context may get the handle of a dead one.
    bool refresh(void* context, const Binding& binding)
    {
        const auto getString =
            reinterpret_cast<const unsigned char* (*)(unsigned int)>(binding.procAddress("glGetString"));
        const auto getIntegerv = reinterpret_cast<void (*)(unsigned int, int*)>(binding.procAddress("glGetIntegerv"));
        if (!getString || !getIntegerv)
            return false;
        const char* const versionText = reinterpret_cast<const char*>(getString(GL_VERSION));
        if (!versionText)
            return false;
        int major = 0;
        int minor = 0;
        if (std::sscanf(versionText, "%d.%d", &major, &minor) != 2)
            return false; // OpenGL ES and others begin with words; this library needs desktop OpenGL.
        int extensionCount = 0;
        if (major >= 3)
            getIntegerv(GL_NUM_EXTENSIONS, &extensionCount);
        if (context == _context && major * 10 + minor == _version && extensionCount == _extensionCount)
            return true;
        _context = context;
        _version = major * 10 + minor;
        _extensionCount = extensionCount;
        readExtensions(binding);
        return true;
    }

private:
    void readExtensions(const Binding& binding)
    {
        const auto names = glRequirementExtensionNames();
        _extensions.assign(names.size(), false);
        const auto getStringi =
            reinterpret_cast<const unsigned char* (*)(unsigned int, unsigned int)>(binding.procAddress("glGetStringi"));
        if (!getStringi)
            return;
        for (int i = 0; i < _extensionCount; ++i)
        {
            const char* const name = reinterpret_cast<const char*>(getStringi(GL_EXTENSIONS, static_cast<unsigned>(i)));
            if (!name)
                continue;
            const auto found = std::lower_bound(names.begin(), names.end(), std::string_view(name),
                                                [](const char* left, std::string_view right) { return left < right; });
            if (found != names.end() && std::string_view(*found) == name)
                _extensions[static_cast<std::size_t>(found - names.begin())] = true;
        }
    }

    void* _context = nullptr;
    int _version = 0;
    int _extensionCount = -1;
    std::vector<bool> _extensions;
};

class UnixPlatform final : public GLPlatform
{
public:
    void* procAddress(const char* name) override
    {
        const Current current = findCurrent();
        return isOffered(current, name) ? current.binding->procAddress(name) : nullptr;
    }

    void* moduleSymbol(const char* name) override
    {
        if (!isOffered(findCurrent(), name))
            return nullptr;
        for (const char* const library : kModules)
        {
            void* const handle = openLoaded(library);
            void* const symbol = handle ? dlsym(handle, name) : nullptr;
            if (handle)
                dlclose(handle); // whoever loaded the module keeps it
            if (symbol)
                return symbol;
        }
        return nullptr;
    }

    void* currentContext() override
    {
        return findCurrent().context;
    }

private:
    struct Current
    {
        Binding* binding = nullptr;
        void* context = nullptr;
    };

    /// Libraries already found are asked first, so that a frame does not search the loaded modules again and again.
    Current findCurrent()
    {
        for (const bool loaded : {true, false})
            for (Binding* const binding : {&_egl, &_glx})
                if (binding->isLoaded() == loaded)
                    if (void* const context = binding->currentContext())
                        return {binding, context};
        return {};
    }

    /// Vendor-neutral libraries hand out a stub for any name that begins with "gl", so an address says nothing. What
    /// counts is whether the context has the version or an extension that introduces the entry point.
    bool isOffered(const Current& current, const char* name)
    {
        const GLRequirementRow* const row = current.context ? findGLRequirement(name) : nullptr;
        if (!row)
            return false;
        // Recursive: a debug callback may look a function up while the driver is being asked.
        const std::lock_guard lock(_mutex);
        return _offer.refresh(current.context, *current.binding) && _offer.covers(*row);
    }

    std::recursive_mutex _mutex;
    Binding _egl{kEglLibraries, "eglGetProcAddress", "eglGetCurrentContext"};
    Binding _glx{kGlxLibraries, "glXGetProcAddressARB", "glXGetCurrentContext"};
    ContextOffer _offer;
};

} // namespace

GLPlatform& GLPlatform::native()
{
    // Never destroyed: objects may ask for the current context while the process ends.
    static auto* const platform = new UnixPlatform;
    return *platform;
}

} // namespace Harrow::Vrk
