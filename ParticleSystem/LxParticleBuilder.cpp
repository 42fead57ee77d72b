#include "ParticleSystem/LxParticleBuilder.h"

#include "Common/LxLogManager.h"
#include "ParticleSystem/LxParticleAnimationSet.h"
#include "ParticleSystem/LxParticleGroupDesc.h"
#include "ParticleSystem/LxParticleKeyFrameChannel.h"
#include "ParticleSystem/LxParticleParameter.h"
#include "ParticleSystem/LxParticleSystemDesc.h"
#include "ParticleSystem/LxParticleTextureSet.h"
#include "ParticleSystem/LxParticleTransform.h"

#include <cmath>
#include <cstdarg>

namespace
{
// Bounds on sizes that reach texture creation: a keyframe texture and the tiling of the particle texture.
const int kMaxKeyFrameTexSize = 16384;
const int kMaxTextureTiles = 1024;
} // namespace

LxParticleBuilder::LxParticleBuilder() : m_emitterBuilder(*this), m_actionBuilder(*this)
{
    m_pGroup = new LxParticleGroupDesc();
}

LxParticleBuilder::~LxParticleBuilder()
{
    m_emitterBuilder.Abandon();
    m_actionBuilder.Abandon();
    delete m_pTextureSet;
    delete m_pSystem;
    delete m_pGroup;
}

void LxParticleBuilder::SetSourcePosition(const LxString& file, unsigned int line)
{
    m_sourceFile = file;
    m_nSourceLine = line;
}

void LxParticleBuilder::ReportError(const char* fmt, ...)
{
    m_bError = true;
    LxString text;
    if (!m_sourceFile.IsEmpty())
        text.Format(m_nSourceLine ? "%s(%u) : " : "%s : ", m_sourceFile.c_str(), m_nSourceLine);
    va_list args;
    va_start(args, fmt);
    text.AppendFormatV(fmt, args);
    va_end(args);
    LxLogManager::GetRef().LogMessage(text, LX_LOG_ERROR, nullptr, 0);
}

// --- group settings ----------------------------------------------------------------------------------------------

void LxParticleBuilder::SetVersion(float version)
{
    m_pGroup->SetVersion(version);
}

void LxParticleBuilder::SetTexturePath(const LxString& path)
{
    m_pGroup->SetTexturePath(path);
}

void LxParticleBuilder::SetObjectPath(const LxString& path)
{
    m_pGroup->SetObjectPath(path);
}

void LxParticleBuilder::SetClearColor(float r, float g, float b, float a)
{
    m_pGroup->SetClearColor(LxVector4(r, g, b, a));
}

void LxParticleBuilder::SetNearClipPlane(float distance)
{
    m_pGroup->SetNearClipPlane(distance);
}

void LxParticleBuilder::SetFarClipPlane(float distance)
{
    m_pGroup->SetFarClipPlane(distance);
}

void LxParticleBuilder::SetGridUnitSize(float size)
{
    m_pGroup->SetGridUnitSize(size);
}

void LxParticleBuilder::SetGridSize(float size)
{
    m_pGroup->SetGridSize(size);
}

void LxParticleBuilder::SetCameraPos(const float* values)
{
    m_pGroup->SetCameraPos(values);
}

void LxParticleBuilder::SetCoordinateFrameSize(float size)
{
    m_pGroup->SetCoordinateFrameSize(size);
}

// --- systems -----------------------------------------------------------------------------------------------------

bool LxParticleBuilder::BeginSystem(const LxString& name)
{
    if (m_bSystemOpen)
    {
        ReportError("Particle System build already in progress");
        return false;
    }
    m_pSystem = new LxParticleSystemDesc(name);
    m_bSystemOpen = true;
    m_bSystemTypeSet = false;
    return true;
}

bool LxParticleBuilder::RequireSystem()
{
    if (!m_bSystemOpen)
        ReportError("No particle system build in progress");
    return m_bSystemOpen;
}

bool LxParticleBuilder::SetSystemType(const LxString& type)
{
    if (!RequireSystem())
        return false;
    LxParticleSystemType systemType;
    if (!LxParticleSystemTypeFromName(type, &systemType))
    {
        ReportError("Invalid ParticleSystem type: %s", type.c_str());
        return false;
    }
    if (systemType == LX_PARTICLE_SYSTEM_POINT_SPRITE)
    {
        ReportError("PointSprite particle systems not supported yet");
        return false;
    }
    if (m_pSystem)
        m_pSystem->SetType(systemType);
    m_bSystemTypeSet = true;
    return true;
}

bool LxParticleBuilder::SetSystemParameter(const LxString& name, const LxParticleValue& value)
{
    if (!RequireSystem())
        return false;
    bool ok = true;
    const LxParticleValue::Kind kind = value.GetKind();
    const bool isBool = kind == LxParticleValue::BOOL;
    const bool isCount = kind == LxParticleValue::INT && value.GetInt() >= 0;
    const bool isSeconds = kind != LxParticleValue::BOOL && std::isfinite(value.GetFloat()) && value.GetFloat() >= 0;
    LxParticleSystemDesc* system = m_pSystem;
    if (name == "UpdateWhenCulled" && isBool)
    {
        if (system)
            system->SetUpdateWhenCulled(value.GetBool());
    }
    else if (name == "Sort" && isBool)
    {
        if (system)
            system->SetSort(value.GetBool());
    }
    else if (name == "SimulationSkip" && isCount)
    {
        if (system)
            system->SetSimulationSkip(value.GetInt());
    }
    else if (name == "BoundingBoxSkip" && isCount)
    {
        if (system)
            system->SetBoundingBoxSkip(value.GetInt());
    }
    else if (name == "WarmUp" && isSeconds)
    {
        if (system)
            system->SetWarmUp(value.GetFloat());
    }
    else
        ok = false;
    if (!ok)
        ReportError("Invalid particle system parameter: %s", name.c_str());
    return ok;
}

bool LxParticleBuilder::SetEffect(const LxString& effectFile)
{
    if (!RequireSystem())
        return false;
    if (!LoadShader(effectFile))
    {
        ReportError("Unable to load particle shader: %s", effectFile.c_str());
        return false;
    }
    if (m_pSystem)
        m_pSystem->SetEffectFile(effectFile);
    return true;
}

bool LxParticleBuilder::AddEffectParameter(const LxString& name, const LxParticleParameter& parameter)
{
    if (!m_bSystemOpen || name.IsEmpty() || (m_pSystem && m_pSystem->FindEffectParameter(name)))
    {
        ReportError("Error adding effect parameter: %s", name.c_str());
        return false;
    }
    if (m_pSystem)
    {
        LxParticleParameter named(parameter);
        NameCurves(named, name);
        m_pSystem->AddEffectParameter(name, named);
    }
    return true;
}

bool LxParticleBuilder::SetKeyFrameTexSize(int width, int height)
{
    if (!RequireSystem())
        return false;
    if (width < 1 || height < 1 || width > kMaxKeyFrameTexSize || height > kMaxKeyFrameTexSize)
    {
        ReportError("Invalid keyframe texture size: %d x %d", width, height);
        return false;
    }
    if (m_pSystem)
        m_pSystem->SetKeyFrameTexSize(width, height);
    return true;
}

bool LxParticleBuilder::SetTextureTile(int across, int down)
{
    if (!RequireSystem())
        return false;
    if (across < 1 || down < 1 || across > kMaxTextureTiles || down > kMaxTextureTiles)
    {
        ReportError("Invalid texture tiling: %d x %d", across, down);
        return false;
    }
    if (m_pSystem)
        m_pSystem->SetTextureTile(across, down);
    return true;
}

bool LxParticleBuilder::SetParticleObject(const LxString& name, const LxString& file)
{
    if (!RequireSystem())
        return false;
    if (m_pSystem)
        m_pSystem->SetParticleObject(name, file);
    return true;
}

bool LxParticleBuilder::RefuseTexture()
{
    ReportError("Invalid texture definition");
    return false;
}

bool LxParticleBuilder::BeginTextureSet(const LxString& name)
{
    if (!m_bSystemOpen || m_bTextureSetOpen)
        return RefuseTexture();
    const bool ok = !name.IsEmpty() && !(m_pSystem && m_pSystem->FindTextureSet(name));
    m_pTextureSet = ok && m_pSystem ? new LxParticleTextureSet(name) : nullptr;
    m_bTextureSetOpen = true;
    return ok || RefuseTexture();
}

bool LxParticleBuilder::AddTexture(const LxString& slot, const LxString& file)
{
    if (!m_bTextureSetOpen || slot.IsEmpty() || file.IsEmpty())
        return RefuseTexture();
    if (m_pTextureSet && !m_pTextureSet->AddSlot(slot, file))
        return RefuseTexture();
    return true;
}

bool LxParticleBuilder::EndTextureSet()
{
    if (!m_bTextureSetOpen)
        return RefuseTexture();
    m_bTextureSetOpen = false;
    LxParticleTextureSet* set = m_pTextureSet;
    m_pTextureSet = nullptr;
    if (set && set->GetSlotCount() == 0)
    {
        delete set;
        return RefuseTexture();
    }
    if (set && m_pSystem)
        m_pSystem->AddTextureSet(set);
    else
        delete set;
    return true;
}

bool LxParticleBuilder::SetSystemTransform(const LxParticleTransform& transform)
{
    if (!RequireSystem())
        return false;
    if (m_pSystem && m_pSystem->HasTransform())
    {
        ReportError("Particle system transform given twice");
        return false;
    }
    LxParticleTransform resolved(transform);
    if (!ResolveTransform(resolved, LxString()))
        return false;
    if (m_pSystem)
        m_pSystem->SetTransform(resolved);
    return true;
}

bool LxParticleBuilder::EndSystem()
{
    if (!m_bSystemOpen)
    {
        ReportError("Particle system build cannot end before it begins.");
        return false;
    }
    // An element or texture set left open is a caller's mistake; the parser cannot produce one.
    bool ok = true;
    if (IsElementOpen() || m_bTextureSetOpen)
    {
        if (m_emitterBuilder.IsOpen())
            ok = m_emitterBuilder.End();
        if (m_actionBuilder.IsOpen())
            ok = m_actionBuilder.End() && ok;
        if (m_bTextureSetOpen)
            ok = EndTextureSet() && ok;
    }
    m_bSystemOpen = false;
    LxParticleSystemDesc* system = m_pSystem;
    m_pSystem = nullptr;
    if (!system)
        return ok;
    if (m_pAnimationSet)
        ok = AddAnimationCurves(*system) && ok;
    m_pGroup->AddSystem(system);
    return ok;
}

// --- parameters and transforms -----------------------------------------------------------------------------------

LxParticleParameter* LxParticleBuilder::CreateParameter(LxParticleParameterKind kind, const LxArray<float>& values)
{
    if (kind < 0 || kind >= LX_PARTICLE_PARAM_KIND_COUNT)
    {
        ReportError("Unknown particle parameter type");
        return nullptr;
    }
    LxParticleParameter probe(kind);
    const unsigned int count = values.GetCount();
    const unsigned int stride = probe.GetStride();
    const bool ok = probe.IsKeyFramed() ? count == 0 : count >= stride && count <= 4 * stride && count % stride == 0;
    if (!ok)
    {
        ReportError("Invalid number of values for a %s parameter: %u", LxParticleParameterKindName(kind), count);
        return nullptr;
    }
    LxParticleParameter* parameter = new LxParticleParameter(kind);
    for (float v : values)
        parameter->AddValue(v);
    return parameter;
}

bool LxParticleBuilder::AddKeyFrameChannel(LxParticleParameter* parameter, const LxParticleKeyFrameChannel* channel)
{
    if (!parameter || !channel)
    {
        ReportError("Cannot add NULL channel to a parameter.");
        return false;
    }
    if (!parameter->IsKeyFramed())
    {
        ReportError("Unknown particle parameter type");
        return false;
    }
    // Beyond the largest valid count the channels are only counted, not kept.
    if (parameter->GetChannelCount() <= 4 * parameter->GetStride())
    {
        LxParticleKeyFrameChannel sorted(*channel);
        sorted.SortKeys();
        parameter->AddChannel(sorted);
    }
    return true;
}

bool LxParticleBuilder::FinishParameter(const LxParticleParameter& parameter)
{
    if (!parameter.IsKeyFramed())
        return true;
    const unsigned int count = parameter.GetChannelCount();
    const unsigned int stride = parameter.GetStride();
    if (count < stride || count > 4 * stride || count % stride != 0)
    {
        ReportError("Invalid number of keyframe channels.");
        return false;
    }
    return true;
}

LxParticleTransform* LxParticleBuilder::CreateTransform(const LxString& type)
{
    LxParticleTransformType transformType;
    if (!LxParticleTransformTypeFromName(type, &transformType))
    {
        ReportError("Unknown particle transform type: %s", type.c_str());
        return nullptr;
    }
    return new LxParticleTransform(transformType);
}

void LxParticleBuilder::NameCurves(LxParticleParameter& parameter, const LxString& path) const
{
    if (!m_pSystem)
        return;
    for (unsigned int c = 0; c < parameter.GetChannelCount(); ++c)
        parameter.SetCurveName(c, LxString::Formatted("%s.%u.%s", m_pSystem->GetName().c_str(), c, path.c_str()));
}

bool LxParticleBuilder::ResolveTransform(LxParticleTransform& transform, const LxString& owner)
{
    bool ok = true;
    for (unsigned int i = 0; i < transform.GetItemCount(); ++i)
    {
        const LxParticleTransform::Item& item = transform.GetItem(i);
        if (item.kind != LxParticleTransform::ANIMATION)
            continue;
        for (const LxString* curve : {&item.curve, &item.curve2})
            if (!curve->IsEmpty() && !(m_pAnimationSet && m_pAnimationSet->HasCurve(*curve)))
            {
                ReportError("Error loading curve: %s", curve->c_str());
                ok = false;
            }
    }
    if (!ok || transform.GetType() != LX_PARTICLE_TRANSFORM_ANIMATION)
        return ok;
    if (const LxParticleTransform::Item* animation = transform.GetAnimation())
    {
        transform.SetCurveName(animation->curve);
        return true;
    }
    const LxString system = m_pSystem ? m_pSystem->GetName() : LxString();
    const LxString curve = owner.IsEmpty() ? LxString::Formatted("%s.transform", system.c_str())
                                           : LxString::Formatted("%s.%s.transform", system.c_str(), owner.c_str());
    if (!m_pAnimationSet || !m_pAnimationSet->HasCurve(curve))
    {
        ReportError("Missing animation curve for transform");
        return false;
    }
    transform.SetCurveName(curve);
    return true;
}

// --- curves ------------------------------------------------------------------------------------------------------

bool LxParticleBuilder::AddAnimationCurves(const LxParticleSystemDesc& system)
{
    if (!m_pAnimationSet)
    {
        ReportError("Adding animation curves to particle builder with no animation set.  This is probably a bug.");
        return false;
    }
    bool ok = true;
    auto add = [&](const LxParticleParameter& parameter)
    {
        for (unsigned int c = 0; c < parameter.GetChannelCount() && ok; ++c)
            if (parameter.GetCurveName(c).IsEmpty() ||
                !m_pAnimationSet->AddCurve(parameter.GetCurveName(c), parameter.GetChannel(c)))
            {
                ReportError("Error loading animation curve");
                ok = false;
            }
    };
    for (unsigned int i = 0; i < system.GetEffectParameterCount() && ok; ++i)
        add(system.GetEffectParameter(i).parameter);
    for (unsigned int e = 0; e < system.GetEmitterCount() && ok; ++e)
        for (unsigned int i = 0; i < system.GetEmitter(e).GetParameterCount() && ok; ++i)
            add(system.GetEmitter(e).GetParameter(i).parameter);
    for (unsigned int a = 0; a < system.GetActionCount() && ok; ++a)
        for (unsigned int i = 0; i < system.GetAction(a).GetParameterCount() && ok; ++i)
            add(system.GetAction(a).GetParameter(i).parameter);
    return ok;
}

// --- result ------------------------------------------------------------------------------------------------------

LxParticleGroupDesc* LxParticleBuilder::TakeResult()
{
    if (m_bSystemOpen)
        ReportError("Particle system %s was never ended", m_pSystem ? m_pSystem->GetName().c_str() : "");
    LxParticleGroupDesc* group = m_bError ? nullptr : m_pGroup;
    if (group)
        m_pGroup = nullptr;
    Reset();
    return group;
}

void LxParticleBuilder::AbandonOpenElement()
{
    m_emitterBuilder.Abandon();
    m_actionBuilder.Abandon();
    delete m_pTextureSet;
    m_pTextureSet = nullptr;
    m_bTextureSetOpen = false;
}

void LxParticleBuilder::AbandonOpenScopes()
{
    AbandonOpenElement();
    delete m_pSystem;
    m_pSystem = nullptr;
    m_bSystemOpen = false;
}

void LxParticleBuilder::Reset()
{
    AbandonOpenScopes();
    delete m_pGroup;
    m_pGroup = new LxParticleGroupDesc();
    m_bError = false;
    m_sourceFile.Clear();
    m_nSourceLine = 0;
}

// --- the platform ------------------------------------------------------------------------------------------------

bool LxParticleBuilder::LoadShader(const LxString& effectFile)
{
    return !effectFile.IsEmpty();
}

bool LxParticleBuilder::CreateTexture(const LxArchive&, const LxString&, const LxParticleSystemDesc&)
{
    return true;
}
