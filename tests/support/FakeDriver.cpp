// SPDX-License-Identifier: MIT
#include "support/FakeDriver.h"

#include "GLLoader.h"
#include "GLOptionalFunctions.h"
#include "GLRuntimeTestAccess.h"
#include "support/GLTest.h"
#include "support/RecordingPlatform.h"

#include <cstring>
#include <map>
#include <string_view>

namespace Harrow::Vrk::Test
{
namespace
{

FakeDriver* behindSeam = nullptr;
bool stale = true;

// What every entry point does unless told otherwise: nothing, with the result 0.
template <int Index, typename Function> struct Nothing;

template <int Index, typename Result, typename... Arguments>
struct Nothing<Index, Result(VRK_GLAPIENTRY*)(Arguments...)>
{
    static Result VRK_GLAPIENTRY call(Arguments...)
    {
        return Result();
    }
};

const std::map<std::string_view, void*>& nothings()
{
    static const std::map<std::string_view, void*> table = {
#define VRK_GL_TABLE_COMMAND(function)                                                                                 \
    {#function, reinterpret_cast<void*>(&Nothing<__LINE__, decltype(::_ptrc_##function)>::call)},
#define VRK_GL_OPTIONAL_COMMAND(function)                                                                              \
    {#function, reinterpret_cast<void*>(&Nothing<__LINE__, PFN_##function>::call)},
#include "support/GLCommandNames.inc"
#undef VRK_GL_TABLE_COMMAND
#undef VRK_GL_OPTIONAL_COMMAND
    };
    return table;
}

const GLubyte* asText(const QByteArray& text)
{
    return reinterpret_cast<const GLubyte*>(text.constData());
}

void VRK_GLAPIENTRY fakeGetIntegerv(GLenum parameter, GLint* value)
{
    *value = behindSeam->integer(parameter);
}

const GLubyte* VRK_GLAPIENTRY fakeGetStringi(GLenum, GLuint index)
{
    const auto& names = behindSeam->extensions();
    return qsizetype(index) < names.size() ? asText(names[qsizetype(index)]) : nullptr;
}

const GLubyte* VRK_GLAPIENTRY fakeGetString(GLenum)
{
    return asText(behindSeam->versionText());
}

GLenum VRK_GLAPIENTRY fakeGetError()
{
    return behindSeam->popError();
}

template <typename Kind> void VRK_GLAPIENTRY fakeGenNames(GLsizei count, GLuint* names)
{
    for (GLsizei i = 0; i < count; ++i)
        names[i] = behindSeam->nextName(Kind::name);
}

struct Buffers
{
    static constexpr const char* name = "buffer";
};
struct VertexArrays
{
    static constexpr const char* name = "vertex array";
};
struct Textures
{
    static constexpr const char* name = "texture";
};
struct Framebuffers
{
    static constexpr const char* name = "framebuffer";
};
struct Renderbuffers
{
    static constexpr const char* name = "renderbuffer";
};
struct Queries
{
    static constexpr const char* name = "query";
};

GLuint VRK_GLAPIENTRY fakeCreateShader(GLenum)
{
    return behindSeam->nextName("shader");
}

GLuint VRK_GLAPIENTRY fakeCreateProgram()
{
    return behindSeam->nextName("program");
}

void VRK_GLAPIENTRY fakeGetShaderiv(GLuint, GLenum parameter, GLint* value)
{
    *value = parameter == GL_COMPILE_STATUS ? 1 : 0;
}

void VRK_GLAPIENTRY fakeGetProgramiv(GLuint, GLenum parameter, GLint* value)
{
    *value = parameter == GL_LINK_STATUS || parameter == GL_COMPLETION_STATUS_ARB ? 1 : 0;
}

GLint VRK_GLAPIENTRY fakeGetUniformLocation(GLuint, const GLchar* name)
{
    return behindSeam->uniformLocation(name);
}

GLenum VRK_GLAPIENTRY fakeCheckFramebufferStatus(GLenum)
{
    return GL_FRAMEBUFFER_COMPLETE;
}

template <typename Function> void* address(Function function)
{
    return reinterpret_cast<void*>(function);
}

const std::map<std::string_view, void*>& answers()
{
    static const std::map<std::string_view, void*> table = {
        {"glGetIntegerv", address(&fakeGetIntegerv)},
        {"glGetString", address(&fakeGetString)},
        {"glGetStringi", address(&fakeGetStringi)},
        {"glGetError", address(&fakeGetError)},
        {"glGenBuffers", address(&fakeGenNames<Buffers>)},
        {"glGenVertexArrays", address(&fakeGenNames<VertexArrays>)},
        {"glGenTextures", address(&fakeGenNames<Textures>)},
        {"glGenFramebuffers", address(&fakeGenNames<Framebuffers>)},
        {"glGenRenderbuffers", address(&fakeGenNames<Renderbuffers>)},
        {"glGenQueries", address(&fakeGenNames<Queries>)},
        {"glCreateShader", address(&fakeCreateShader)},
        {"glCreateProgram", address(&fakeCreateProgram)},
        {"glGetShaderiv", address(&fakeGetShaderiv)},
        {"glGetProgramiv", address(&fakeGetProgramiv)},
        {"glGetUniformLocation", address(&fakeGetUniformLocation)},
        {"glCheckFramebufferStatus", address(&fakeCheckFramebufferStatus)},
    };
    return table;
}

} // namespace

FakeDriver::FakeDriver() : _context(this)
{
    setVersion(4, 5);
    setInteger(GL_MAX_VERTEX_ATTRIBS, 16);
    setInteger(GL_MAX_UNIFORM_BUFFER_BINDINGS, 90);
    setInteger(GL_MAX_SHADER_STORAGE_BUFFER_BINDINGS, 90);
    GLRuntimeTestAccess::clearTable();
    behindSeam = this;
    stale = true;
    RecordingPlatform::instance().setInner(this);
}

FakeDriver::~FakeDriver()
{
    GLRuntimeTestAccess::clearTable();
    GLRuntimeTestAccess::forgetExtensionsOf(this);
    GLRuntimeTestAccess::resetInitialisedFlag();
    GLRuntimeTestAccess::resetVersionCache();
    RecordingPlatform::instance().setInner(nullptr);
    behindSeam = nullptr;
    stale = true;
}

FakeDriver& FakeDriver::current()
{
    return *behindSeam;
}

void FakeDriver::refuse(const QByteArray& name, void* answer)
{
    _refused.insert(name, answer);
}

void FakeDriver::offer(const QByteArray& name)
{
    _refused.remove(name);
}

void FakeDriver::offerInModule(const QByteArray& name)
{
    _inModule.insert(name);
}

void FakeDriver::setContext(void* context)
{
    _context = context;
}

void FakeDriver::setVersion(int major, int minor)
{
    setInteger(GL_MAJOR_VERSION, major);
    setInteger(GL_MINOR_VERSION, minor);
    _version = QByteArray::number(major) + '.' + QByteArray::number(minor) + " Fake";
}

void FakeDriver::setExtensions(const QList<QByteArray>& names)
{
    _extensions = names;
    setInteger(GL_NUM_EXTENSIONS, static_cast<GLint>(names.size()));
}

void FakeDriver::setInteger(GLenum parameter, GLint value)
{
    _integers.insert(parameter, value);
}

void FakeDriver::setUniformLocation(const QByteArray& name, GLint location)
{
    _locations.insert(name, location);
}

void FakeDriver::pushError(GLenum error)
{
    _errors.append(error);
}

int FakeDriver::load()
{
    return ogl_LoadFunctions();
}

void* FakeDriver::procAddress(const char* name)
{
    procLookups.append(name);
    const auto refused = _refused.constFind(name);
    return refused != _refused.constEnd() ? *refused : builtIn(name);
}

void* FakeDriver::moduleSymbol(const char* name)
{
    moduleLookups.append(name);
    return _inModule.contains(name) ? builtIn(name) : nullptr;
}

void* FakeDriver::currentContext()
{
    return _context;
}

void* FakeDriver::builtIn(const QByteArray& name) const
{
    if (void* const replacement = _replacements.value(name))
        return replacement;
    const std::string_view key(name.constData(), static_cast<std::size_t>(name.size()));
    for (const auto* const table : {&answers(), &nothings()})
        if (const auto found = table->find(key); found != table->end())
            return found->second;
    return nullptr;
}

GLint FakeDriver::integer(GLenum parameter) const
{
    return _integers.value(parameter);
}

GLuint FakeDriver::nextName(const char* kind)
{
    return ++_names[kind];
}

const QList<QByteArray>& FakeDriver::extensions() const
{
    return _extensions;
}

const QByteArray& FakeDriver::versionText() const
{
    return _version;
}

GLint FakeDriver::uniformLocation(const QByteArray& name) const
{
    return _locations.value(name, -1);
}

GLenum FakeDriver::popError()
{
    return _errors.isEmpty() ? GLenum(GL_NO_ERROR) : _errors.takeFirst();
}

bool FakeDriver::tableIsStale()
{
    return stale;
}

void FakeDriver::markTableFresh()
{
    stale = false;
}

void FakeDriverTest::SetUp()
{
    GLRuntimeTestAccess::forgetExtensionsOf(driver.currentContext());
    resetCachedEntryPoints();
    ASSERT_EQ(driver.load(), 1);
}

} // namespace Harrow::Vrk::Test
