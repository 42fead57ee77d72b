// LxEmitterBuilder: builds the emitters of a particle system ("Emitter <type> <name> ... EndEmitter"). The type is
// one of "Shape" (emits from its shape), "Collision" (where particles collide) or "Tail" (behind moving
// particles). Messages: "Can't add emitter" (no system open, another element open, or a name the system already
// has), "Unknown emitter type:" with the type, and those of LxParticleBuilderBase ("Can't add emitter parameter",
// "Can't add emitter transform", "Can't add emitter shape", "Can't end emitter"). Owned by the LxParticleBuilder.
#pragma once

#include "ParticleSystem/LxParticleBuilderBase.h"

class LX_API LxEmitterBuilder : public LxParticleBuilderBase
{
public:
    explicit LxEmitterBuilder(LxParticleBuilder& owner);

    bool Begin(const LxString& type, const LxString& name);

protected:
    void Attach(LxParticleSystemDesc& system, LxParticleElementDesc* element) override;
};
