#include "ParticleSystem/LxParticleActionBuilder.h"

#include "ParticleSystem/LxParticleBuilder.h"
#include "ParticleSystem/LxParticleSystemDesc.h"

namespace
{
const LxParticleBuilderBase::Messages kActionMessages = {"Can't add action", "Can't add action parameter",
                                                         "Can't add action transform", "Can't add action shape",
                                                         "Can't end action"};
}

LxParticleActionBuilder::LxParticleActionBuilder(LxParticleBuilder& owner)
    : LxParticleBuilderBase(owner, kActionMessages)
{
}

bool LxParticleActionBuilder::Begin(const LxString& type, const LxString& name)
{
    if (!CanBegin())
    {
        GetOwner().ReportError("Can't add action");
        return false;
    }
    LxParticleActionKind kind;
    const LxParticleSystemDesc* system = GetOwner().GetOpenSystem();
    const bool ok = LxParticleActionKindFromName(type, &kind) && !(system && system->FindAction(name));
    if (!ok)
        GetOwner().ReportError("Error adding %s action: %s", type.c_str(), name.c_str());
    Open(ok ? &kind : nullptr, name);
    return ok;
}

void LxParticleActionBuilder::Attach(LxParticleSystemDesc& system, LxParticleElementDesc* element)
{
    system.AddAction(element);
}
