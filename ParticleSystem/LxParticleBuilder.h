// LxParticleBuilder: turns the calls of the particle parser (or of code) into an LxParticleGroupDesc. Calls come
// in file order: begin a system, set its type, parameters, effect, effect parameters and textures, then each
// emitter and action (begin, parameters, transform, shape, end), then end the system.
//
//   LxParticleBuilder builder;
//   builder.SetAnimationSet(&curves);          // optional: curves for animated transforms, and where keyframed
//                                              // parameters are exported to
//   LxParticleParser parser;
//   parser.Init("fire.txt", text, &builder);
//   if (parser.Parse())
//       LxParticleGroupDesc* group = builder.TakeResult();   // owned by the caller
//
// Every refusal is logged as an error, prefixed "file(line) : " while a parser has set the position, returns
// false and marks the build as failed; building goes on so that all errors of a file are reported, and
// TakeResult then gives null (freeing what was built). Messages, besides those of LxEmitterBuilder,
// LxParticleActionBuilder and LxParticleDomainBuilder:
//   "Particle System build already in progress", "Particle system build cannot end before it begins.",
//   "Invalid ParticleSystem type: <type>", "PointSprite particle systems not supported yet",
//   "Invalid particle system parameter: <name>" (unknown, or a value of the wrong kind or out of range),
//   "Unable to load particle shader: <file>", "Error adding effect parameter: <name>", "Invalid texture definition",
//   "Unknown particle transform type: <type>", "Missing animation curve for transform", "Error loading curve: <name>",
//   "Adding animation curves to particle builder with no animation set.  This is probably a bug.",
//   "Error loading animation curve", "Unknown particle parameter type", "Cannot add NULL channel to a parameter.",
//   "Invalid number of keyframe channels.", "Invalid number of values for a <kind> parameter: <count>",
//   "Invalid keyframe texture size: <w> x <h>", "Invalid texture tiling: <x> x <y>",
//   "Particle system transform given twice", "Particle system <name> was never ended", and, for a system setting
//   made while no system is open, "No particle system build in progress".
//
// Curve names: channel c of a keyframed parameter P is exported as "<system>.<c>.<P>", where P is the effect
// parameter's name or "<element>.<parameter>" for an emitter's or action's. An animated transform is driven by the
// curve its "Animation" item names, else by "<system>.<element>.transform" (an emitter's or action's) or
// "<system>.transform" (the system's own).
//
// Derived builders connect the platform: LoadShader and CreateTexture. One thread at a time.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxArray.h"
#include "Common/LxString.h"
#include "ParticleSystem/LxEmitterBuilder.h"
#include "ParticleSystem/LxParticleActionBuilder.h"
#include "ParticleSystem/LxParticleDomain.h"
#include "ParticleSystem/LxParticleTypes.h"
#include "ParticleSystem/LxParticleValue.h"

class LxArchive;
class LxParticleAnimationSet;
class LxParticleGroupDesc;
class LxParticleKeyFrameChannel;
class LxParticleParameter;
class LxParticleSystemDesc;
class LxParticleTextureSet;
class LxParticleTransform;

class LX_API LxParticleBuilder
{
public:
    LxParticleBuilder();
    virtual ~LxParticleBuilder();
    LxParticleBuilder(const LxParticleBuilder&) = delete;
    LxParticleBuilder& operator=(const LxParticleBuilder&) = delete;

    // --- context ------------------------------------------------------------------------------------------------
    // Not owned; null for none.
    void SetAnimationSet(LxParticleAnimationSet* set) { m_pAnimationSet = set; }
    LxParticleAnimationSet* GetAnimationSet() const { return m_pAnimationSet; }
    // The file position messages are prefixed with; an empty file name (the default) logs messages bare.
    void SetSourcePosition(const LxString& file, unsigned int line);
    // Logs an error (with the position) and marks the build as failed.
    void ReportError(const char* fmt, ...) LX_PRINTF_FORMAT(2, 3);
    // Marks the build as failed without a message (the parser reports syntax errors itself).
    void SetParseError() { m_bError = true; }
    bool ErrorOccurred() const { return m_bError; }

    // --- the group's header and editor settings -----------------------------------------------------------------
    void SetVersion(float version);
    void SetTexturePath(const LxString& path);
    void SetObjectPath(const LxString& path);
    void SetClearColor(float r, float g, float b, float a);
    void SetNearClipPlane(float distance);
    void SetFarClipPlane(float distance);
    void SetGridUnitSize(float size);
    void SetGridSize(float size);
    void SetCameraPos(const float* values); // LxParticleGroupDesc::kCameraPosCount numbers
    void SetCoordinateFrameSize(float size);

    // --- systems ------------------------------------------------------------------------------------------------
    bool BeginSystem(const LxString& name);
    bool SetSystemType(const LxString& type);
    bool SetSystemParameter(const LxString& name, const LxParticleValue& value);
    bool SetEffect(const LxString& effectFile);
    bool AddEffectParameter(const LxString& name, const LxParticleParameter& parameter);
    bool SetKeyFrameTexSize(int width, int height);
    bool SetTextureTile(int across, int down);
    bool SetParticleObject(const LxString& name, const LxString& file);
    bool BeginTextureSet(const LxString& name);
    bool AddTexture(const LxString& slot, const LxString& file);
    bool EndTextureSet();
    bool SetSystemTransform(const LxParticleTransform& transform);
    bool EndSystem();
    bool IsSystemOpen() const { return m_bSystemOpen; }
    // The system being built (null when none is open).
    LxParticleSystemDesc* GetOpenSystem() const { return m_pSystem; }

    // --- emitters and actions -----------------------------------------------------------------------------------
    LxEmitterBuilder& GetEmitterBuilder() { return m_emitterBuilder; }
    LxParticleActionBuilder& GetActionBuilder() { return m_actionBuilder; }
    bool IsElementOpen() const { return m_emitterBuilder.IsOpen() || m_actionBuilder.IsOpen(); }

    // --- parameters and transforms ------------------------------------------------------------------------------
    // A new parameter (owned by the caller) of `kind` with the numbers written for it (none for the keyframed
    // kinds, which get channels through AddKeyFrameChannel); null when the kind or the count is not valid.
    LxParticleParameter* CreateParameter(LxParticleParameterKind kind, const LxArray<float>& values);
    // Adds a copy of `channel`, its keys sorted by time.
    bool AddKeyFrameChannel(LxParticleParameter* parameter, const LxParticleKeyFrameChannel* channel);
    // Checks the channel count of a keyframed parameter (1 to 4 channels; 3, 6, 9 or 12 for the non-uniform kind).
    bool FinishParameter(const LxParticleParameter& parameter);
    // A new transform (owned by the caller) of the type named, or null.
    LxParticleTransform* CreateTransform(const LxString& type);

    // --- curves -------------------------------------------------------------------------------------------------
    // Exports the keyframed parameters of `system` into the animation set. EndSystem does this for each system
    // when a set is attached.
    bool AddAnimationCurves(const LxParticleSystemDesc& system);
    // Names the channels of a keyframed parameter for the system being built ("<system>.<c>.<path>").
    void NameCurves(LxParticleParameter& parameter, const LxString& path) const;
    // Resolves and checks the curves of `transform` (see above); `owner` is the element's name, or empty for the
    // system's own transform.
    bool ResolveTransform(LxParticleTransform& transform, const LxString& owner);

    // --- result -------------------------------------------------------------------------------------------------
    // The finished group (owned by the caller), or null when any error occurred or a system is still open; the
    // builder is then empty and ready for another file.
    LxParticleGroupDesc* TakeResult();
    // Drops whatever is being built and forgets the errors.
    void Reset();
    // Drop the open system, texture set and element (AbandonOpenScopes), or only the texture set and element,
    // without a message: the parser's recovery after a syntax error.
    void AbandonOpenScopes();
    void AbandonOpenElement();

    // --- the platform -------------------------------------------------------------------------------------------
    // Loads the particle effect; the base accepts any non-empty name.
    virtual bool LoadShader(const LxString& effectFile);
    // Creates the texture `file` of `archive` for `system`; the base creates nothing and succeeds.
    virtual bool CreateTexture(const LxArchive& archive, const LxString& file, const LxParticleSystemDesc& system);

private:
    bool RefuseTexture();
    bool RequireSystem();

    LxParticleAnimationSet* m_pAnimationSet = nullptr;
    LxString m_sourceFile;
    unsigned int m_nSourceLine = 0;
    bool m_bError = false;

    LxParticleGroupDesc* m_pGroup = nullptr;
    LxParticleSystemDesc* m_pSystem = nullptr; // null while a discarded system is open
    bool m_bSystemOpen = false;
    bool m_bSystemTypeSet = false;
    LxParticleTextureSet* m_pTextureSet = nullptr; // null while a discarded set is open
    bool m_bTextureSetOpen = false;
    LxEmitterBuilder m_emitterBuilder;
    LxParticleActionBuilder m_actionBuilder;
};
