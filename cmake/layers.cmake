# SPDX-License-Identifier: MIT
# The layers of the house, lowest first, with the units of each. Both the build and tools/check_layers.py read this table:
# a unit may include units of its own layer and of those above it in this file, never of those below.
#
# A unit is a file name under src/Core or src/GL without its suffix; UnitTopic.cpp belongs to the unit Unit when Unit is
# listed and UnitTopic is not.

set(VRK_LAYERS CORE RUNTIME OBJECTS TEXTURES MANAGERS SCENE LIGHTING)

# src/Core: knows no OpenGL.
set(VRK_LAYER_CORE
    Export
    Memory
    MemoryMappedFile
    RawMemory
    ResourcesPath)

# OpenGL's functions, capabilities, diagnostics, the binding protocol, the identity of a context.
set(VRK_LAYER_RUNTIME
    AutoBinder
    AutoEnabler
    Bindable
    Diagnostics
    GLConstants
    GLContextTracker
    GLDebugOutput
    GLEnumWords
    GLFunctionTable
    GLFunctions
    GLLoader
    GLOptionalFunctions
    GLPlatform
    GLPlatformUnix
    GLPlatformWgl
    GLRequirements
    GLRequirementsLookup
    GLRuntimeTestAccess
    GLUtilities
    GLVersions)

# Wrappers of OpenGL objects and their factory; GLSL expansion, programs, reflection.
set(VRK_LAYER_OBJECTS
    BufferObject
    BufferObjectEntryPoints
    BufferOffset
    CubemapFaces
    DrawBuffers
    DrawElementsIndirectCommand
    FramebufferObject
    FreeNumbers
    FullscreenQuad
    GLSLMacroProcessor
    OpenGLDeviceContext
    RangedDataType
    Shader
    ShaderProgram
    UBOContextData
    UniformBufferObject
    UniformForm
    VertexArrayBuilder
    VertexArrayObject)

# Textures, their formats and units; reading them from files, pooling and processing them.
set(VRK_LAYER_TEXTURES
    ASTCReader
    ASTCRecogniser
    HDRReader
    HDRRecogniser
    KTXLayout
    KTXReader
    KTXRecogniser
    RadianceHeader
    RadianceRows
    Texture
    TextureFileFormats
    TextureFileInfo
    TextureFormat
    TextureIO
    TextureLevels
    TextureLoader
    TexturePool
    TextureProcessing
    TextureRecogniser
    TextureUnits
    TextureUpload)

# Tokens, the managers that make them reachable, and the textures that managers keep up to date; the records of drawn
# instances and what carries them to a shader.
set(VRK_LAYER_MANAGERS
    Array2DSlots
    Array2DTextureManager
    BindlessHandles
    BindlessTextureFunctions
    BindlessTextureManager
    ColorCycleTextureStreamer
    ImageCycleTextureStreamer
    InstanceData
    InstanceDataCollection
    InstanceDataPlan
    InstanceDataRegistry
    MandelbrotCPUTextureStreamer
    MandelbrotGPUTextureStreamer
    MandelbrotPixels
    MandelbrotTextureStreamer
    ParameterMechanism
    SamplerSlots
    SamplerTextureManager
    StreamerTools
    TextureManager
    TextureMechanism
    TextureStreamer
    TextureToken
    UniformBufferMechanism
    UniformMechanism)

# The drawable scene and the geometry that shadow fitting uses.
set(VRK_LAYER_SCENE
    Bounds
    ClipperVolume
    FrustumTest
    GPUModel
    Plane
    VectorNormalize)

# What lights need beside the scene: shadows, and maps of the environment.
set(VRK_LAYER_LIGHTING
    PrefilteredEnvMap
    ShadowMapFitting
    ShadowMapManager
    ShadowMapManagerCulling
    ZelImageCubemapUtils
    ZelRenderCubemap)

# Headers of src/GL that are not installed.
set(VRK_PRIVATE_HEADERS
    Array2DSlots.h
    BindlessHandles.h
    BindlessTextureFunctions.h
    BufferObjectEntryPoints.h
    BufferOffset.h
    CubemapFaces.h
    FreeNumbers.h
    FrustumTest.h
    FullscreenQuad.h
    GLEnumWords.h
    GLFunctionTable.h
    GLOptionalFunctions.h
    GLPlatform.h
    GLRequirements.h
    GLRuntimeTestAccess.h
    GPUModelCommands.h
    GPUModelShownTransforms.h
    KTXLayout.h
    MandelbrotPixels.h
    PrefilteredEnvMapPass.h
    RadianceHeader.h
    RadianceRows.h
    SamplerSlots.h
    ShaderFile.h
    ShaderProgramEntryPoints.h
    ShaderReport.h
    ShaderText.h
    ShadowMapFitting.h
    StreamerTools.h
    TextureFileFormats.h
    TextureFormatNames.h
    TextureLevels.h
    TextureMechanism.h
    TexturePool.h
    TextureTokenTables.h
    TextureUnits.h
    TextureUpload.h
    UBOContextData.h
    UniformBufferMechanism.h
    UniformForm.h
    UniformMechanism.h
    VectorNormalize.h
    ZelRenderCubemap.h
    ZelRenderCubemapMatrices.h)
