// SPDX-License-Identifier: MIT
#include "support/RecordingPlatform.h"

#include "GLFunctions.h"
#include "GLOptionalFunctions.h"
#include "support/CallLog.h"

#include <atomic>
#include <map>
#include <string_view>

namespace Harrow::Vrk::Test
{
namespace
{

// One number per entry point: the line of its row makes the recorder's type unique.
template <int Index, typename Function> struct Recorder;

template <int Index, typename Result, typename... Arguments>
struct Recorder<Index, Result(VRK_GLAPIENTRY*)(Arguments...)>
{
    using Function = Result(VRK_GLAPIENTRY*)(Arguments...);
    static inline std::atomic<Function> target = nullptr;
    static inline std::atomic<const char*> name = nullptr;

    static Result VRK_GLAPIENTRY call(Arguments... arguments)
    {
        if (CallLog::isRecording())
            CallLog::record(CallLog::call(name.load(), arguments...));
        return target.load()(arguments...);
    }
};

using Wrap = void* (*)(const char* name, void* target);

template <int Index, typename Function> void* wrap(const char* name, void* target)
{
    using R = Recorder<Index, Function>;
    R::name = name;
    R::target = reinterpret_cast<Function>(target);
    return reinterpret_cast<void*>(&R::call);
}

const std::map<std::string_view, Wrap>& wraps()
{
    static const std::map<std::string_view, Wrap> table = {
#define VRK_GL_TABLE_COMMAND(function) {#function, &wrap<__LINE__, decltype(::_ptrc_##function)>},
#define VRK_GL_OPTIONAL_COMMAND(function) {#function, &wrap<__LINE__, PFN_##function>},
#include "support/GLCommandNames.inc"
#undef VRK_GL_TABLE_COMMAND
#undef VRK_GL_OPTIONAL_COMMAND
    };
    return table;
}

/// Values that mean a miss pass through as they are.
bool isAddress(void* address)
{
    const auto value = reinterpret_cast<std::intptr_t>(address);
    return value > 3 || value < -1;
}

void* recorded(const char* name, void* address)
{
    if (!isAddress(address))
        return address;
    const auto found = wraps().find(name);
    return found != wraps().end() ? found->second(found->first.data(), address) : address;
}

} // namespace

RecordingPlatform& RecordingPlatform::instance()
{
    static RecordingPlatform* const platform = []
    {
        auto* const made = new RecordingPlatform;
        GLPlatform::install(made);
        return made;
    }();
    return *platform;
}

void RecordingPlatform::setInner(GLPlatform* inner)
{
    _inner = inner;
}

GLPlatform& RecordingPlatform::inner() const
{
    return _inner ? *_inner : GLPlatform::native();
}

void* RecordingPlatform::procAddress(const char* name)
{
    return recorded(name, inner().procAddress(name));
}

void* RecordingPlatform::moduleSymbol(const char* name)
{
    return recorded(name, inner().moduleSymbol(name));
}

void* RecordingPlatform::currentContext()
{
    return inner().currentContext();
}

} // namespace Harrow::Vrk::Test
