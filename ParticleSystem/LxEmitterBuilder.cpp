#include "ParticleSystem/LxEmitterBuilder.h"

#include "ParticleSystem/LxParticleBuilder.h"
#include "ParticleSystem/LxParticleSystemDesc.h"

namespace
{
const LxParticleBuilderBase::Messages kEmitterMessages = {"Can't add emitter", "Can't add emitter parameter",
                                                          "Can't add emitter transform", "Can't add emitter shape",
                                                          "Can't end emitter"};
}

LxEmitterBuilder::LxEmitterBuilder(LxParticleBuilder& owner) : LxParticleBuilderBase(owner, kEmitterMessages) {}

bool LxEmitterBuilder::Begin(const LxString& type, const LxString& name)
{
    if (!CanBegin())
    {
        GetOwner().ReportError("Can't add emitter");
        return false;
    }
    LxParticleActionKind kind;
    bool ok = true;
    if (!LxParticleEmitterKindFromName(type, &kind))
    {
        GetOwner().ReportError("Unknown emitter type: %s", type.c_str());
        ok = false;
    }
    else if (GetOwner().GetOpenSystem() && GetOwner().GetOpenSystem()->FindEmitter(name))
    {
        GetOwner().ReportError("Can't add emitter");
        ok = false;
    }
    Open(ok ? &kind : nullptr, name);
    return ok;
}

void LxEmitterBuilder::Attach(LxParticleSystemDesc& system, LxParticleElementDesc* element)
{
    system.AddEmitter(element);
}
