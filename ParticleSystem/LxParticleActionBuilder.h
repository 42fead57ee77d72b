// LxParticleActionBuilder: builds the actions of a particle system ("Action <type> <name> ... EndAction"); the
// type names the kind (LxParticleActionKindFromName lists them: "ConstAccel", "Vortex", "ColliderBounce", ...).
// Messages: "Can't add action" (no system open or another element open), "Error adding <type> action: <name>"
// (an unknown type, or a name the system already has), and those of LxParticleBuilderBase ("Can't add action
// parameter", "Can't add action transform", "Can't add action shape", "Can't end action"). Owned by the
// LxParticleBuilder.
#pragma once

#include "ParticleSystem/LxParticleBuilderBase.h"

class LX_API LxParticleActionBuilder : public LxParticleBuilderBase
{
public:
    explicit LxParticleActionBuilder(LxParticleBuilder& owner);

    bool Begin(const LxString& type, const LxString& name);

protected:
    void Attach(LxParticleSystemDesc& system, LxParticleElementDesc* element) override;
};
