#include "ParticleSystem/LxParticleTypes.h"

namespace
{
const char* const kSystemTypeNames[LX_PARTICLE_SYSTEM_TYPE_COUNT] = {"GPUBillboard", "PointSprite"};

struct KindNames
{
    const char* type;
    const char* display;
};
const KindNames kKindNames[LX_PARTICLE_KIND_COUNT] = {
    {"ParticleSystem", "Particle System"},
    {"Shape", "Emitter"},
    {"Collision", "Emitter (Collision)"},
    {"Tail", "Emitter (Tail)"},
    {"ConstAccel", "Const. Accel."},
    {"OrbitPoint", "Orbit Point"},
    {"OrbitLine", "Orbit Line"},
    {"Vortex", "Vortex"},
    {"AttribAnim", "Attrib. Anim."},
    {"ColliderBounce", "Collider (Bounce)"},
    {"ColliderKill", "Collider (Kill)"},
    {"ColliderAvoid", "Collider (Avoid)"},
    {"ColliderTrigger", "Collider (Trigger)"},
    {"FlightModel", "Flight Model"},
    {"SpeedTimescale", "Speed Timescale"},
    {"Goal", "Goal"},
    {"Advection", "Advection (based on Obj.Transform)"},
    {"LifeLerp", "Life Lerp"},
    {"Proxy", "Proxy"},
};

const char* const kParameterKindNames[LX_PARTICLE_PARAM_KIND_COUNT] = {"Fixed", "Random", "NonUniformRandom",
                                                                       "KeyFrame", "KeyFramedNonUniformRandom"};
const char* const kTransformTypeNames[LX_PARTICLE_TRANSFORM_TYPE_COUNT] = {"World", "Camera", "WorldRotCamPos",
                                                                           "Animation"};
const char* const kDomainTypeNames[LX_PARTICLE_DOMAIN_TYPE_COUNT] = {
    "Point", "Line", "Triangle", "Plane", "Rectangle", "Box", "Sphere", "Cylinder", "Cone", "Disc"};

template <class E>
bool FindName(const char* const* names, int count, const LxString& name, E* out)
{
    for (int i = 0; i < count; ++i)
        if (name == names[i])
        {
            *out = static_cast<E>(i);
            return true;
        }
    return false;
}

bool FindKind(const LxString& name, int first, int last, LxParticleActionKind* kind)
{
    for (int i = first; i <= last; ++i)
        if (name == kKindNames[i].type)
        {
            *kind = static_cast<LxParticleActionKind>(i);
            return true;
        }
    return false;
}
} // namespace

const char* LxParticleSystemTypeName(LxParticleSystemType type)
{
    return type >= 0 && type < LX_PARTICLE_SYSTEM_TYPE_COUNT ? kSystemTypeNames[type] : "";
}

bool LxParticleSystemTypeFromName(const LxString& name, LxParticleSystemType* type)
{
    return FindName(kSystemTypeNames, LX_PARTICLE_SYSTEM_TYPE_COUNT, name, type);
}

const char* LxParticleKindDisplayName(LxParticleActionKind kind)
{
    return kind >= 0 && kind < LX_PARTICLE_KIND_COUNT ? kKindNames[kind].display : "";
}

const char* LxParticleKindTypeName(LxParticleActionKind kind)
{
    return kind >= 0 && kind < LX_PARTICLE_KIND_COUNT ? kKindNames[kind].type : "";
}

bool LxParticleEmitterKindFromName(const LxString& name, LxParticleActionKind* kind)
{
    return FindKind(name, LX_PARTICLE_KIND_EMITTER, LX_PARTICLE_KIND_EMITTER_TAIL, kind);
}

bool LxParticleActionKindFromName(const LxString& name, LxParticleActionKind* kind)
{
    return FindKind(name, LX_PARTICLE_KIND_CONST_ACCEL, LX_PARTICLE_KIND_PROXY, kind);
}

bool LxParticleKindIsEmitter(LxParticleActionKind kind)
{
    return kind >= LX_PARTICLE_KIND_EMITTER && kind <= LX_PARTICLE_KIND_EMITTER_TAIL;
}

const char* LxParticleParameterKindName(LxParticleParameterKind kind)
{
    return kind >= 0 && kind < LX_PARTICLE_PARAM_KIND_COUNT ? kParameterKindNames[kind] : "";
}

const char* LxParticleTransformTypeName(LxParticleTransformType type)
{
    return type >= 0 && type < LX_PARTICLE_TRANSFORM_TYPE_COUNT ? kTransformTypeNames[type] : "";
}

bool LxParticleTransformTypeFromName(const LxString& name, LxParticleTransformType* type)
{
    return FindName(kTransformTypeNames, LX_PARTICLE_TRANSFORM_TYPE_COUNT, name, type);
}

const char* LxParticleDomainTypeName(LxParticleDomainType type)
{
    return type >= 0 && type < LX_PARTICLE_DOMAIN_TYPE_COUNT ? kDomainTypeNames[type] : "";
}

bool LxParticleDomainTypeFromName(const LxString& name, LxParticleDomainType* type)
{
    return FindName(kDomainTypeNames, LX_PARTICLE_DOMAIN_TYPE_COUNT, name, type);
}
