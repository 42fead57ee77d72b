// LxParticleBuilderBase: what emitters and actions have in common while they are built: an element is opened
// (by LxEmitterBuilder or LxParticleActionBuilder, which check the type), receives parameters, scalar values, a
// transform and a shape, and is handed to its particle system when it ends.
//
// Messages go through the owning LxParticleBuilder (with the file position it was given); each refusal logs the
// element kind's text ("Can't add emitter parameter", "Can't add action shape", ...) after any more specific
// reason, returns false and marks the build as failed. An element whose begin was refused is still opened, as a
// discarded one: its members are accepted without further messages and dropped at its end, so that one mistake
// gives one message. Owned by the LxParticleBuilder; one thread at a time.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxArray.h"
#include "Common/LxString.h"
#include "ParticleSystem/LxParticleDomain.h"
#include "ParticleSystem/LxParticleTypes.h"

class LxParticleBuilder;
class LxParticleElementDesc;
class LxParticleParameter;
class LxParticleSystemDesc;
class LxParticleTransform;
class LxParticleValue;

class LX_API LxParticleBuilderBase
{
public:
    // The texts this kind of element logs when a call is refused.
    struct Messages
    {
        const char* begin;
        const char* parameter;
        const char* transform;
        const char* shape;
        const char* end;
    };

    LxParticleBuilderBase(LxParticleBuilder& owner, const Messages& messages);
    virtual ~LxParticleBuilderBase();
    LxParticleBuilderBase(const LxParticleBuilderBase&) = delete;
    LxParticleBuilderBase& operator=(const LxParticleBuilderBase&) = delete;

    bool IsOpen() const { return m_bOpen; }
    // The element being built (null when none is open or the open one is discarded).
    const LxParticleElementDesc* GetElement() const { return m_pElement; }

    // A parameter or value whose name the element already has is refused.
    bool AddParameter(const LxString& name, const LxParticleParameter& parameter);
    bool AddValue(const LxString& name, const LxParticleValue& value);
    // One transform and one shape per element.
    bool SetTransform(const LxParticleTransform& transform);
    bool SetShape(const LxString& type, const LxArray<LxParticleDomain::Parameter>& parameters);
    // Hands the element to its system (a discarded one is dropped).
    bool End();
    // Drops the open element without a message (after a syntax error).
    void Abandon();

protected:
    // True when an element may begin now: a system is open and no emitter or action is.
    bool CanBegin() const;
    // Opens `name` of `kind` for the system being built, or a discarded element when `kind` is null.
    void Open(const LxParticleActionKind* kind, const LxString& name);
    // Adds the finished element to the system (AddEmitter or AddAction).
    virtual void Attach(LxParticleSystemDesc& system, LxParticleElementDesc* element) = 0;
    LxParticleBuilder& GetOwner() const { return m_owner; }

private:
    bool Refuse(const char* message);

    LxParticleBuilder& m_owner;
    Messages m_messages;
    LxParticleElementDesc* m_pElement = nullptr;
    bool m_bOpen = false;
};
