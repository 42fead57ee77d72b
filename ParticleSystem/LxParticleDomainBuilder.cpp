#include "ParticleSystem/LxParticleDomainBuilder.h"

#include "ParticleSystem/LxParticleBuilder.h"

#include <cmath>

namespace
{
struct Default
{
    const char* name;
    LxParticleDomain::ValueKind kind;
    float x, y, z, w;
};

const LxParticleDomain::ValueKind F = LxParticleDomain::FLOAT;
const LxParticleDomain::ValueKind V3 = LxParticleDomain::VECTOR3;
const LxParticleDomain::ValueKind V4 = LxParticleDomain::VECTOR4;

// Per domain type, its parameters with their defaults; a null name ends a list. "Surface" belongs to every type.
const Default kPoint[] = {{"Center", V3, 0, 0, 0, 0}, {nullptr, F, 0, 0, 0, 0}};
const Default kLine[] = {{"Start", V3, 0, 0, 0, 0}, {"End", V3, 0, 1, 0, 0}, {nullptr, F, 0, 0, 0, 0}};
const Default kTriangle[] = {
    {"Point0", V3, 0, 0, 0, 0}, {"Point1", V3, 1, 0, 0, 0}, {"Point2", V3, 0, 1, 0, 0}, {nullptr, F, 0, 0, 0, 0}};
const Default kPlane[] = {{"Point", V3, 0, 0, 0, 0}, {"Normal", V3, 0, 1, 0, 0}, {nullptr, F, 0, 0, 0, 0}};
const Default kRectangle[] = {
    {"Corner", V3, 0, 0, 0, 0}, {"U", V3, 1, 0, 0, 0}, {"V", V3, 0, 0, 1, 0}, {nullptr, F, 0, 0, 0, 0}};
const Default kBox[] = {
    {"Min", V3, -1, -1, -1, 0}, {"Max", V3, 1, 1, 1, 0}, {"Orientation", V4, 1, 0, 0, 0}, {nullptr, F, 0, 0, 0, 0}};
const Default kSphere[] = {
    {"Center", V3, 0, 0, 0, 0}, {"Radius", F, 1, 0, 0, 0}, {"InnerRadius", F, 0, 0, 0, 0}, {nullptr, F, 0, 0, 0, 0}};
const Default kCylinder[] = {{"Start", V3, 0, 0, 0, 0},
                             {"End", V3, 0, 1, 0, 0},
                             {"Radius", F, 1, 0, 0, 0},
                             {"InnerRadius", F, 0, 0, 0, 0},
                             {nullptr, F, 0, 0, 0, 0}};
const Default kCone[] = {{"Apex", V3, 0, 0, 0, 0},
                         {"Base", V3, 0, 1, 0, 0},
                         {"Radius", F, 1, 0, 0, 0},
                         {"InnerRadius", F, 0, 0, 0, 0},
                         {nullptr, F, 0, 0, 0, 0}};
const Default kDisc[] = {{"Center", V3, 0, 0, 0, 0},
                         {"Normal", V3, 0, 1, 0, 0},
                         {"Radius", F, 1, 0, 0, 0},
                         {"InnerRadius", F, 0, 0, 0, 0},
                         {nullptr, F, 0, 0, 0, 0}};
const Default* const kTables[LX_PARTICLE_DOMAIN_TYPE_COUNT] = {kPoint, kLine,   kTriangle, kPlane, kRectangle,
                                                               kBox,   kSphere, kCylinder, kCone,  kDisc};
const Default kSurface = {"Surface", LxParticleDomain::BOOL, 0, 0, 0, 0};

// The entry of `name` for the type and its index in the type's list ("Surface" comes after the list).
const Default* Lookup(LxParticleDomainType type, const LxString& name, unsigned int* index)
{
    unsigned int i = 0;
    for (const Default* d = kTables[type]; d->name; ++d, ++i)
        if (name == d->name)
        {
            *index = i;
            return d;
        }
    *index = i;
    return name == kSurface.name ? &kSurface : nullptr;
}

LxParticleDomain::Parameter ToParameter(const Default& d)
{
    return LxParticleDomain::Parameter{d.name, d.kind, LxVector4(d.x, d.y, d.z, d.w)};
}

bool Finite(const LxVector4& v)
{
    return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z) && std::isfinite(v.w);
}
} // namespace

bool LxParticleDomainBuilder::Build(const LxString& type, const LxArray<LxParticleDomain::Parameter>& parameters,
                                    LxParticleBuilder& reporter, LxParticleDomain* domain)
{
    LxParticleDomainType domainType;
    if (!LxParticleDomainTypeFromName(type, &domainType))
    {
        reporter.ReportError("Unknown particle domain type: %s", type.c_str());
        return false;
    }
    LxParticleDomain built(domainType);
    for (const Default* d = kTables[domainType]; d->name; ++d)
        built.SetParameter(ToParameter(*d));
    built.SetParameter(ToParameter(kSurface));

    bool ok = true;
    unsigned int seen = 0; // one bit per entry of the type's list
    for (const LxParticleDomain::Parameter& p : parameters)
    {
        unsigned int index;
        const Default* d = Lookup(domainType, p.name, &index);
        if (!d || d->kind != p.kind || !Finite(p.value))
        {
            reporter.ReportError("Invalid shape parameter %s for %s domain", p.name.c_str(), type.c_str());
            ok = false;
            continue;
        }
        const bool repeated = (seen & (1u << index)) != 0;
        seen |= 1u << index;
        if (repeated)
        {
            reporter.ReportError("Shape parameter %s given twice", p.name.c_str());
            ok = false;
            continue;
        }
        built.SetParameter(p);
    }
    if (ok)
        *domain = built;
    return ok;
}
