#include "ParticleSystem/LxParticleBuilderBase.h"

#include "ParticleSystem/LxParticleBuilder.h"
#include "ParticleSystem/LxParticleDomainBuilder.h"
#include "ParticleSystem/LxParticleElementDesc.h"
#include "ParticleSystem/LxParticleSystemDesc.h"

LxParticleBuilderBase::LxParticleBuilderBase(LxParticleBuilder& owner, const Messages& messages)
    : m_owner(owner), m_messages(messages)
{
}

LxParticleBuilderBase::~LxParticleBuilderBase()
{
    delete m_pElement;
}

bool LxParticleBuilderBase::Refuse(const char* message)
{
    m_owner.ReportError("%s", message);
    return false;
}

bool LxParticleBuilderBase::CanBegin() const
{
    return m_owner.IsSystemOpen() && !m_owner.IsElementOpen();
}

void LxParticleBuilderBase::Open(const LxParticleActionKind* kind, const LxString& name)
{
    delete m_pElement;
    m_pElement = kind && m_owner.GetOpenSystem() ? new LxParticleElementDesc(*kind, name) : nullptr;
    m_bOpen = true;
}

bool LxParticleBuilderBase::AddParameter(const LxString& name, const LxParticleParameter& parameter)
{
    if (!m_bOpen)
        return Refuse(m_messages.parameter);
    if (!m_pElement)
        return true;
    LxParticleParameter named(parameter);
    m_owner.NameCurves(named, m_pElement->GetName() + "." + name);
    if (!m_pElement->AddParameter(name, named))
        return Refuse(m_messages.parameter);
    return true;
}

bool LxParticleBuilderBase::AddValue(const LxString& name, const LxParticleValue& value)
{
    if (!m_bOpen)
        return Refuse(m_messages.parameter);
    if (m_pElement && !m_pElement->AddValue(name, value))
        return Refuse(m_messages.parameter);
    return true;
}

bool LxParticleBuilderBase::SetTransform(const LxParticleTransform& transform)
{
    if (!m_bOpen)
        return Refuse(m_messages.transform);
    if (!m_pElement)
        return true;
    LxParticleTransform resolved(transform);
    if (m_pElement->HasTransform() || !m_owner.ResolveTransform(resolved, m_pElement->GetName()))
        return Refuse(m_messages.transform);
    m_pElement->SetTransform(resolved);
    return true;
}

bool LxParticleBuilderBase::SetShape(const LxString& type, const LxArray<LxParticleDomain::Parameter>& parameters)
{
    if (!m_bOpen)
        return Refuse(m_messages.shape);
    if (!m_pElement)
        return true;
    LxParticleDomain domain;
    if (m_pElement->HasShape() || !LxParticleDomainBuilder::Build(type, parameters, m_owner, &domain))
        return Refuse(m_messages.shape);
    m_pElement->SetShape(domain);
    return true;
}

bool LxParticleBuilderBase::End()
{
    if (!m_bOpen)
        return Refuse(m_messages.end);
    m_bOpen = false;
    LxParticleElementDesc* element = m_pElement;
    m_pElement = nullptr;
    LxParticleSystemDesc* system = m_owner.GetOpenSystem();
    if (element && system)
        Attach(*system, element);
    else
        delete element;
    return true;
}

void LxParticleBuilderBase::Abandon()
{
    delete m_pElement;
    m_pElement = nullptr;
    m_bOpen = false;
}
