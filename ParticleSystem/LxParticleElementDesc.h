// LxParticleElementDesc: one emitter or action of a particle system as the file describes it: its kind (which
// says emitter or action, and which one), its name, its named parameters (LxParticleParameter) and scalar values
// (LxParticleValue), each in file order with unique names, and its optional transform and shape. A plain
// description for simulators and renderers to read; not thread-safe.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxArray.h"
#include "Common/LxHashMap.h"
#include "Common/LxString.h"
#include "ParticleSystem/LxParticleDomain.h"
#include "ParticleSystem/LxParticleParameter.h"
#include "ParticleSystem/LxParticleTransform.h"
#include "ParticleSystem/LxParticleTypes.h"
#include "ParticleSystem/LxParticleValue.h"

class LX_API LxParticleElementDesc
{
public:
    struct NamedParameter
    {
        LxString name;
        LxParticleParameter parameter;
    };
    struct NamedValue
    {
        LxString name;
        LxParticleValue value;
    };

    LxParticleElementDesc(LxParticleActionKind kind, const LxString& name) : m_kind(kind), m_name(name) {}

    LxParticleActionKind GetKind() const { return m_kind; }
    bool IsEmitter() const { return LxParticleKindIsEmitter(m_kind); }
    // The editor's display name of the kind ("Emitter (Tail)", "Const. Accel.", ...).
    const char* GetKindDisplayName() const { return LxParticleKindDisplayName(m_kind); }
    const LxString& GetName() const { return m_name; }

    // False when the name is taken (by a parameter or a value).
    bool AddParameter(const LxString& name, const LxParticleParameter& parameter);
    bool AddValue(const LxString& name, const LxParticleValue& value);
    bool HasMember(const LxString& name) const { return FindParameter(name) || FindValue(name); }

    unsigned int GetParameterCount() const { return m_parameters.GetCount(); }
    const NamedParameter& GetParameter(unsigned int i) const { return m_parameters[i]; }
    const LxParticleParameter* FindParameter(const LxString& name) const;
    unsigned int GetValueCount() const { return m_values.GetCount(); }
    const NamedValue& GetValue(unsigned int i) const { return m_values[i]; }
    const LxParticleValue* FindValue(const LxString& name) const;

    bool HasTransform() const { return m_bHasTransform; }
    const LxParticleTransform& GetTransform() const { return m_transform; }
    void SetTransform(const LxParticleTransform& transform);
    bool HasShape() const { return m_bHasShape; }
    const LxParticleDomain& GetShape() const { return m_shape; }
    void SetShape(const LxParticleDomain& shape);

private:
    LxParticleActionKind m_kind;
    LxString m_name;
    LxArray<NamedParameter> m_parameters;
    LxArray<NamedValue> m_values;
    // Name -> index, so that elements with many members stay linear to build.
    LxHashMap<LxString, unsigned int, LxStringHasher> m_parameterIndex;
    LxHashMap<LxString, unsigned int, LxStringHasher> m_valueIndex;
    LxParticleTransform m_transform;
    LxParticleDomain m_shape;
    bool m_bHasTransform = false;
    bool m_bHasShape = false;
};
