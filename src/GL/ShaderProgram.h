// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// A set of GLSL stages and the OpenGL program linked from them; what the linked program has by way of attributes,
/// uniforms and blocks; and the setting of its uniforms. It also records which program is bound in which context.

#include "Bindable.h"
#include "Export.h"

#include <QHash>
#include <QList>
#include <QMultiHash>
#include <QObject>
#include <QString>
#include <QStringList>

QT_FORWARD_DECLARE_CLASS(QByteArray)
QT_FORWARD_DECLARE_CLASS(QTime)
QT_FORWARD_DECLARE_CLASS(QVariant)

namespace Harrow::Vrk
{

class GLSLMacroProcessor;
class Shader;
struct ShaderProgramTestAccess;

/// Order of use: the setters, then `addShader` or `addShaderFromFile`, then `link`:
///
///     ShaderProgram program(nullptr);
///     program.addShader(GL_VERTEX_SHADER, vertexText);
///     program.addShader(GL_FRAGMENT_SHADER, fragmentText);
///     if (program.link() && program.bind())
///         program.setUniform("u_Color", QColor(Qt::red));
///
/// Where the driver compiles in the background, `linkPre` on all programs, then other work, then `linkPreWait` and
/// `linkPost` on each lets it do so.
///
/// To rebuild, `clear` the program and add the stages again. The locations of uniforms stay cached for the life of the
/// object, so sources whose locations may differ need a new object.
///
/// Everything but `currentShaderProgram` and the plain setters and queries wants a current context, the one of the
/// OpenGL program or one that shares with it, and that goes for the constructor too: it asks what the driver offers.
/// Those answers are kept for the process, without a lock: the first program must be neither made nor linked on two
/// threads at once. Nothing throws. Texts about failed builds go to the Qt message log as warnings, whatever the
/// logging switch says, and stay in `log`.
class VRKGL_EXPORT ShaderProgram : public QObject, public Bindable
{
public:
    /// `shaderProgramID` of a program that there is none of.
    static constexpr unsigned int kShaderProgramNotLinked = 0;

    /// With logging on, names in the debug log each function that the driver promises and lacks: "Failed to obtain
    /// '%s'".
    explicit ShaderProgram(QObject* parent = nullptr);
    /// Clears. A program that is bound may be deleted; no context names it as its current one afterwards.
    ~ShaderProgram() override;

    /// Compiles all stages that are not compiled. At the first failure returns false and takes that stage's log.
    /// Optional, since `linkPre` compiles too. An OpenGL program that exists is let go without being deleted: `clear`
    /// first.
    virtual bool compile();

    /// Makes the OpenGL program, compiles what is not compiled, passes on the names of fragment outputs and feedback
    /// varyings, and starts the link without asking for its outcome. True at once, with nothing done, when there is an
    /// OpenGL program already. False when a stage doesn't compile: there is no OpenGL program then, and `log` is as it
    /// was; the stage has the text. With logging on, says in the debug log when dual-source outputs or feedback
    /// varyings were asked for and the driver lacks their function.
    virtual bool linkPre();

    /// Waits until the driver has linked in the background, giving the processor away meanwhile, for at most five
    /// seconds. Always true, after a time-out as well: `linkPost` simply blocks then. At once where the driver doesn't
    /// work in the background. With logging on, reports each second and the time-out in the debug log.
    virtual bool linkPreWait();

    /// Takes the outcome of the link. On success reads attributes and blocks, forgets the bindings that were set on
    /// blocks, drops the stages' source texts and returns true. On failure takes the driver's text into `log`, warns
    /// with it and with the sources as the driver holds them, deletes the OpenGL program and returns false.
    virtual bool linkPost();

    /// `linkPre` and `linkPost`.
    virtual bool link();

    /// Checks the outcome of the link once more, and no more than that. On failure the driver's text is in `log` and in
    /// warnings; the OpenGL program stays. False when there is none.
    virtual bool validate();

    /// `glUseProgram` and the record for the current context. When there is no OpenGL program returns false, the
    /// program bound before stays, and with logging on the warning "Shader program is not linked" is given. Binding
    /// twice is allowed.
    bool bind() override;
    /// Leaves the current context without a program, whichever was bound. Always true.
    bool unbind() override;

    /// Adds a stage; its text is expanded at once with the program's macro processor. Several stages of one type are
    /// allowed. A `dumpPath` that is not empty names a file that the expanded text is written to.
    void addShader(int type, const QString& source, const QString& dumpPath = QString());
    /// Adds the stage from a UTF-8 file: relative to the current directory, which lets an absolute path through, else
    /// in "GLSL/src" of the installed resources, else in ":/GLSL/src". The first that opens counts; directories, pipes
    /// and devices don't. When none does, the
    /// warning "Couldn't find shader source file '%s'" is given and no stage is added.
    void addShaderFromFile(int type, const QString& path);

    /// Deletes the OpenGL program and all stages. What was read from the program so far, and the settings, stay.
    void clear();
    /// Drops the source texts of all stages.
    void clearSource();

    /// Names of the fragment outputs by colour number. This and the next two count from the next `linkPre` on.
    void setFragDataLocations(const QList<QString>& names);
    /// Names of the dual-source outputs of colour 0, by index, in the first list; further lists are not read. They take
    /// the place of the first name of `setFragDataLocations`, of which there must be at least one. A driver without
    /// dual-source outputs gets the names of `setFragDataLocations` alone.
    void setFragDataIndexs(const QList<QList<QString>>& names); // the spelling is interface
    /// `bufferMode` is `GL_INTERLEAVED_ATTRIBS` or `GL_SEPARATE_ATTRIBS`.
    void setTransformFeedbackVaryings(const QList<QString>& names, unsigned int bufferMode);

    /// Expands the stages that are added from now on, and is used by `addShader` and `addShaderFromFile` alone.
    /// Borrowed: it must live until the last stage is added or another one is set. Null is allowed.
    void setMacroProcessor(GLSLMacroProcessor* macroProcessor);
    GLSLMacroProcessor* getMacroProcessor();

    /// A key for stored binaries: 32 hexadecimal digits over the expanded texts, and so over defines and macros too,
    /// whatever the order of the stages. To be asked before the link, which drops the texts.
    QString constructShaderHash();
    /// Takes the linked program out as the driver's own data. False when the driver has none, hands none over or
    /// doesn't know binaries: `data` and `format` are unchanged then. Where binaries are known the program gets
    /// OpenGL's hint that its binary is wanted, also when the result is false.
    bool getProgramBinary(QByteArray& data, unsigned int& format) const;
    /// Makes the OpenGL program from such data in place of a link, and reads attributes and blocks anew. An OpenGL
    /// program that exists is let go without being deleted: `clear` first. Stages and their sources stay. False,
    /// without any message and with no OpenGL program, when the driver rejects the data, as it does after an update:
    /// build from source then. What was read from a program before stays in that case. False with nothing changed when
    /// the driver doesn't know binaries.
    bool loadProgramFromRawData(const QByteArray& data, unsigned int format);
    bool isProgramBinariesSupported() const;

    /// Writes the expanded text of each stage to a file: `%1` of the pattern becomes "VS", "FS", "GS", "TES", "TCS" or
    /// nothing, `%2` a number that counts the stages of one type from 0, in the order in which the hash of stages holds
    /// them and not that of their adding. A pattern that gives two stages one name keeps the last of them.
    void dumpShaderSources(const QString& pattern) const;

    /// Whether there is an OpenGL program, which is so from `linkPre` on, before the outcome of the link is known.
    bool isLinked() const;
    unsigned int shaderProgramID() const;
    /// The driver's text about the last step that failed.
    QString log() const;

    /// The location of a uniform, -1 when the program lacks it. The driver is asked once per name, also for those that
    /// the program lacks: don't ask before the link.
    int getUniformLocation(const QString& name) const;
    bool hasUniform(const QString& name) const;
    /// The location of "u_DrawID" without any look-up; -1 before the first link and when the program lacks it.
    int getUniformLocationNameID() const;

    /// The vertex attributes of the linked program that are not OpenGL's own. -1 for a name that is not among them.
    int getVertexAttributeLocation(const QString& name) const;
    const QHash<QString, int>& getVertexAttributeNameLocationMap() const;
    QList<QString> getVertexAttributeNames() const;

    /// Index of a uniform block or storage block of the linked program, -1 when it lacks it. It has no storage blocks
    /// where the driver doesn't know them.
    int getUniformBlockIndex(const QString& name) const;
    int getStorageBlockIndex(const QString& name) const;

    /// The binding point last set on a block since the link; 0xFFFFFFFF when none was set, whatever the shader text
    /// says. The index must exist: an assertion reports one that doesn't, and the result is 0xFFFFFFFF.
    unsigned int getUniformBlockBinding(unsigned int blockIndex);
    unsigned int getStorageBlockBinding(unsigned int blockIndex);
    /// Sets the binding point of a block; no OpenGL call when it is in force already. The index must exist: an
    /// assertion reports one that doesn't, and nothing is changed.
    void setUniformBlockBinding(unsigned int blockIndex, unsigned int binding);
    void setStorageBlockBinding(unsigned int blockIndex, unsigned int binding);

    /// The three above for storage blocks when `bufferType` is `GL_SHADER_STORAGE_BUFFER`, and for uniform blocks when
    /// it is anything else.
    int getTypeBlockIndex(unsigned int bufferType, const QString& name) const;
    unsigned int getTypeBlockBinding(unsigned int bufferType, unsigned int blockIndex);
    void setTypeBlockBinding(unsigned int bufferType, unsigned int blockIndex, unsigned int binding);

    /// \name Setting uniforms
    /// All set a uniform of the program that is bound in the current context, and don't bind. By name, and with a list
    /// by location, false and nothing is set when the location is negative; true otherwise. The first use of a name
    /// asks the driver for its location.
    ///@{
    /// Sets an integer, a boolean or a sampler's unit. True whatever the location.
    bool setUniform(int location, int value);
    bool setUniform(int location, unsigned int value);
    /// An array of numbers, or for `tupleSize` 2 to 4 of vectors. The count that OpenGL gets is the number of elements
    /// of the list, not divided by `tupleSize`: each element stands for one vector of the array. The numbers are taken
    /// in order; those that OpenGL reads behind the end of the list are 0. Another `tupleSize` sets nothing.
    bool setUniform(int location, const QList<float>& values);
    bool setUniform(int location, const QList<float>& values, int tupleSize);
    bool setUniform(int location, const QList<int>& values, int tupleSize);
    bool setUniform(int location, const QList<unsigned int>& values, int tupleSize);
    /// Sets what the value holds: `bool`, `int`, `unsigned int`, `float`, `double`, `QColor` (red, green, blue, alpha
    /// from 0 to 1), `QVector2D` to `QVector4D`, `QMatrix4x4`, `QMatrix3x3`, `QMatrix4x2` (four columns of two rows),
    /// `QMatrix2x2`. A `QImage` sets 0. Any other type sets nothing and, with logging on, gives the critical text
    /// "VrkShaderProgram::setUniform is not implemented for type : %s". Always true.
    ///
    /// A `RangedFloat` or `RangedDouble` counts only in a variant that reports the name of the alias. An ordinary
    /// `QVariant::fromValue(ranged)` reports the meta-type name and is an unknown type here: pass `ranged.value`.
    bool setUniform(int location, const QVariant& value);

    /// The same for the uniform of that name.
    bool setUniform(const QString& name, const QList<float>& values);
    bool setUniform(const QString& name, const QList<float>& values, int tupleSize);
    bool setUniform(const QString& name, const QList<int>& values, int tupleSize);
    bool setUniform(const QString& name, const QList<unsigned int>& values, int tupleSize);
    bool setUniform(const QString& name, const QVariant& value);
    ///@}

    /// The program that was last bound in the current context and not unbound, or null. Any thread.
    static ShaderProgram* currentShaderProgram();

protected:
    /// Takes the location of "u_DrawID". The other uniforms are asked for on demand.
    void cacheUniformLocations();
    /// Reads the blocks anew and forgets their bindings.
    void cacheUniformBlockIndices();
    /// Reads the attributes anew. Of OpenGL's own, the vertex and instance numbers are passed over; any other is
    /// reported with logging on as "[ !! ] Shader Contains GL attribute '%s'. This is illigal".
    void cacheVertexAttributes();
    /// Logs how many active uniforms there are of each type, and how many samplers (debug, guarded).
    void summaryUniforms();

private:
    friend struct ShaderProgramTestAccess;

    void preprocess();
    void dump() const;
    bool attachShaders();
    void bindFragDataLocations();
    void passTransformFeedbackVaryings();
    void cacheReflection();
    void deleteProgram();

    /// What `linkPreWait` takes the time from.
    static QTime (*_clock)();

    unsigned int _programID = kShaderProgramNotLinked;
    QString _log;
    QMultiHash<int, Shader*> _shaders;
    QStringList _transformFeedbackVaryings;
    unsigned int _transformFeedbackBufferMode = 0;
    QStringList _fragDataLocations;
    QList<QStringList> _fragDataIndexs;
    QHash<QString, int> _vertexAttributes;
    mutable QHash<QString, int> _uniformLocations;
    int _drawIDLocation = -1;
    QHash<QString, unsigned int> _uniformBlockIndices;
    QHash<unsigned int, unsigned int> _uniformBlockBindingIndices;
    QHash<QString, unsigned int> _storageBlockIndices;
    QHash<unsigned int, unsigned int> _storageBlockBindingIndices;
    GLSLMacroProcessor* _macroProcessor = nullptr;
    bool _parallelCompile = false;
    bool _preprocessed = false;
};

} // namespace Harrow::Vrk
