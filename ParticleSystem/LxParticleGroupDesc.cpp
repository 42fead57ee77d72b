#include "ParticleSystem/LxParticleGroupDesc.h"

LxParticleGroupDesc::~LxParticleGroupDesc()
{
    for (LxParticleSystemDesc* system : m_systems)
        delete system;
}

void LxParticleGroupDesc::SetCameraPos(const float* values)
{
    for (unsigned int i = 0; i < kCameraPosCount; ++i)
        m_cameraPos[i] = values[i];
}

const LxParticleSystemDesc* LxParticleGroupDesc::FindSystem(const LxString& name) const
{
    for (const LxParticleSystemDesc* system : m_systems)
        if (system->GetName() == name)
            return system;
    return nullptr;
}
