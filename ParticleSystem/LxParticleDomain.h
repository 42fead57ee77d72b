// LxParticleDomain: a shape (the spatial domain an emitter emits from, or an action acts on): its type and its
// named parameters. Once built (LxParticleDomainBuilder) every parameter of the type is present, with its default
// when the file left it out, so the typed getters find each name the type defines:
//
//   Point      Center (vector3)
//   Line       Start, End (vector3)
//   Triangle   Point0, Point1, Point2 (vector3)
//   Plane      Point, Normal (vector3)
//   Rectangle  Corner, U, V (vector3: a corner and the two edges from it)
//   Box        Min, Max (vector3), Orientation (vector4: a quaternion, w first)
//   Sphere     Center (vector3), Radius, InnerRadius (float)
//   Cylinder   Start, End (vector3), Radius, InnerRadius (float)
//   Cone       Apex, Base (vector3: apex and centre of the base), Radius, InnerRadius (float)
//   Disc       Center, Normal (vector3), Radius, InnerRadius (float)
//   and every type: Surface (bool: on the surface only rather than inside)
//
// A getter asked for a name the domain lacks returns the zero value. A plain value, not thread-safe.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxArray.h"
#include "Common/LxString.h"
#include "Common/LxVector3.h"
#include "Common/LxVector4.h"
#include "ParticleSystem/LxParticleTypes.h"

class LX_API LxParticleDomain
{
public:
    enum ValueKind
    {
        FLOAT = 0,
        VECTOR3,
        VECTOR4,
        BOOL
    };
    // One named value; FLOAT uses x, VECTOR3 x to z, BOOL x (0 or 1).
    struct Parameter
    {
        LxString name;
        ValueKind kind;
        LxVector4 value;
    };

    explicit LxParticleDomain(LxParticleDomainType type = LX_PARTICLE_DOMAIN_POINT) : m_type(type) {}

    LxParticleDomainType GetType() const { return m_type; }
    // Adds or replaces the parameter of that name.
    void SetParameter(const Parameter& parameter);
    unsigned int GetParameterCount() const { return m_parameters.GetCount(); }
    const Parameter& GetParameter(unsigned int i) const { return m_parameters[i]; }
    const Parameter* FindParameter(const LxString& name) const;

    float GetFloat(const LxString& name) const;
    LxVector3 GetVector3(const LxString& name) const;
    LxVector4 GetVector4(const LxString& name) const;
    bool GetBool(const LxString& name) const;

private:
    LxParticleDomainType m_type;
    LxArray<Parameter> m_parameters;
};
