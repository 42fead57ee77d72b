// LxParticleGroupDesc: a whole particle file: its version, the settings of the particle editor it was saved with
// (kept for tools; simulation ignores them) and its particle systems in file order. The group owns its systems.
// Built by LxParticleBuilder; the caller of LxParticleBuilder::TakeResult owns the group. Not thread-safe.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxArray.h"
#include "Common/LxString.h"
#include "Common/LxVector4.h"
#include "ParticleSystem/LxParticleSystemDesc.h"

class LX_API LxParticleGroupDesc
{
public:
    LxParticleGroupDesc() = default;
    ~LxParticleGroupDesc();
    LxParticleGroupDesc(const LxParticleGroupDesc&) = delete;
    LxParticleGroupDesc& operator=(const LxParticleGroupDesc&) = delete;

    float GetVersion() const { return m_fVersion; }
    void SetVersion(float version) { m_fVersion = version; }

    // --- editor settings ----------------------------------------------------------------------------------------
    const LxString& GetTexturePath() const { return m_texturePath; }
    void SetTexturePath(const LxString& path) { m_texturePath = path; }
    const LxString& GetObjectPath() const { return m_objectPath; }
    void SetObjectPath(const LxString& path) { m_objectPath = path; }
    const LxVector4& GetClearColor() const { return m_clearColor; }
    void SetClearColor(const LxVector4& color) { m_clearColor = color; }
    float GetNearClipPlane() const { return m_fNearClip; }
    void SetNearClipPlane(float distance) { m_fNearClip = distance; }
    float GetFarClipPlane() const { return m_fFarClip; }
    void SetFarClipPlane(float distance) { m_fFarClip = distance; }
    float GetGridUnitSize() const { return m_fGridUnitSize; }
    void SetGridUnitSize(float size) { m_fGridUnitSize = size; }
    float GetGridSize() const { return m_fGridSize; }
    void SetGridSize(float size) { m_fGridSize = size; }
    // The editor camera's five numbers (as written; the editor's own orbit parameters).
    static const unsigned int kCameraPosCount = 5;
    float GetCameraPos(unsigned int i) const { return i < kCameraPosCount ? m_cameraPos[i] : 0.0f; }
    void SetCameraPos(const float* values);
    float GetCoordinateFrameSize() const { return m_fCoordinateFrameSize; }
    void SetCoordinateFrameSize(float size) { m_fCoordinateFrameSize = size; }

    // --- systems ------------------------------------------------------------------------------------------------
    // Takes ownership.
    void AddSystem(LxParticleSystemDesc* system) { m_systems.Add(system); }
    unsigned int GetSystemCount() const { return m_systems.GetCount(); }
    const LxParticleSystemDesc& GetSystem(unsigned int i) const { return *m_systems[i]; }
    LxParticleSystemDesc& GetSystem(unsigned int i) { return *m_systems[i]; }
    const LxParticleSystemDesc* FindSystem(const LxString& name) const;

private:
    float m_fVersion = 0.0f;
    LxString m_texturePath;
    LxString m_objectPath;
    LxVector4 m_clearColor;
    float m_fNearClip = 0.0f;
    float m_fFarClip = 0.0f;
    float m_fGridUnitSize = 0.0f;
    float m_fGridSize = 0.0f;
    float m_cameraPos[kCameraPosCount] = {};
    float m_fCoordinateFrameSize = 0.0f;
    LxArray<LxParticleSystemDesc*> m_systems;
};
