// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// A platform without a GPU. It hands out names, answers queries from tables, and can refuse any entry point, so that
/// fallback paths, missing functions and odd loader results are tested without a driver.

#include "GLFunctions.h"
#include "GLPlatform.h"

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QSet>
#include <QString>
#include <QStringList>

#include <gtest/gtest.h>

namespace Harrow::Vrk::Test
{

class FakeDriver final : public GLPlatform
{
public:
    /// Stands behind the seam from here on. The table is not loaded; `FakeDriverTest` does so.
    FakeDriver();
    /// Steps back and clears the function table.
    ~FakeDriver() override;

    /// The one that stands behind the seam, for replacement functions.
    static FakeDriver& current();

    /// From here on the look-up of `name` gives null (or `answer`: drivers also say 1, 2, 3 or -1).
    void refuse(const QByteArray& name, void* answer = nullptr);
    void offer(const QByteArray& name);
    /// Lets the module's symbol table serve `name`, refused or not.
    void offerInModule(const QByteArray& name);

    void setContext(void* context);
    void setVersion(int major, int minor);
    void setExtensions(const QList<QByteArray>& names);
    void setInteger(GLenum parameter, GLint value);
    void setUniformLocation(const QByteArray& name, GLint location);
    void pushError(GLenum error);

    /// Puts `function` in the place of the built-in answer. Loaded pointers go on calling the old one: replace before
    /// the table is loaded, or call `load` again.
    template <typename Function> void replace(const QByteArray& name, Function function)
    {
        _replacements.insert(name, reinterpret_cast<void*>(function));
    }

    /// Loads the function table from this driver; the loader's result.
    int load();

    /// How often each name was looked up, by `procAddress` and by `moduleSymbol`, in order.
    QList<QByteArray> procLookups;
    QList<QByteArray> moduleLookups;

    void* procAddress(const char* name) override;
    void* moduleSymbol(const char* name) override;
    void* currentContext() override;

    // Answers of the built-in functions.
    GLint integer(GLenum parameter) const;
    GLuint nextName(const char* kind);
    const QList<QByteArray>& extensions() const;
    const QByteArray& versionText() const;
    GLint uniformLocation(const QByteArray& name) const;
    GLenum popError();

    /// Whether the table holds a fake's functions, or none.
    static bool tableIsStale();
    static void markTableFresh();

private:
    void* builtIn(const QByteArray& name) const;

    QHash<QByteArray, void*> _refused;
    QSet<QByteArray> _inModule;
    QHash<QByteArray, void*> _replacements;
    QHash<GLenum, GLint> _integers;
    QHash<QByteArray, GLuint> _names;
    QHash<QByteArray, GLint> _locations;
    QList<QByteArray> _extensions;
    QList<GLenum> _errors;
    QByteArray _version;
    void* _context;
};

/// Fixture with a fresh fake driver, version 4.5, 16 vertex attributes and 90 uniform buffer bindings, loaded into the
/// table, and all caches of the library forgotten.
class FakeDriverTest : public testing::Test
{
protected:
    void SetUp() override;

    FakeDriver driver;
};

} // namespace Harrow::Vrk::Test
