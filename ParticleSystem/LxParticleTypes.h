// The vocabulary of particle descriptions: system types, the kinds of emitters and actions with the names files
// use for them and the display names of the particle editor, parameter kinds, transform types and domain types.
// Plain enumerations and lookups by name; nothing here allocates, logs or fails (a name that is not known gives
// false and leaves the output untouched).
#pragma once

#include "Common/LxApi.h"
#include "Common/LxString.h"

enum LxParticleSystemType
{
    LX_PARTICLE_SYSTEM_GPU_BILLBOARD = 0,
    LX_PARTICLE_SYSTEM_POINT_SPRITE = 1,
    LX_PARTICLE_SYSTEM_TYPE_COUNT
};

// Every node kind of the particle editor: the system itself, the three emitter kinds and the actions.
enum LxParticleActionKind
{
    LX_PARTICLE_KIND_PARTICLE_SYSTEM = 0,
    LX_PARTICLE_KIND_EMITTER,
    LX_PARTICLE_KIND_EMITTER_COLLISION,
    LX_PARTICLE_KIND_EMITTER_TAIL,
    LX_PARTICLE_KIND_CONST_ACCEL,
    LX_PARTICLE_KIND_ORBIT_POINT,
    LX_PARTICLE_KIND_ORBIT_LINE,
    LX_PARTICLE_KIND_VORTEX,
    LX_PARTICLE_KIND_ATTRIB_ANIM,
    LX_PARTICLE_KIND_COLLIDER_BOUNCE,
    LX_PARTICLE_KIND_COLLIDER_KILL,
    LX_PARTICLE_KIND_COLLIDER_AVOID,
    LX_PARTICLE_KIND_COLLIDER_TRIGGER,
    LX_PARTICLE_KIND_FLIGHT_MODEL,
    LX_PARTICLE_KIND_SPEED_TIMESCALE,
    LX_PARTICLE_KIND_GOAL,
    LX_PARTICLE_KIND_ADVECTION,
    LX_PARTICLE_KIND_LIFE_LERP,
    LX_PARTICLE_KIND_PROXY,
    LX_PARTICLE_KIND_COUNT
};

// How a parameter's value is produced per particle (or per emission).
enum LxParticleParameterKind
{
    LX_PARTICLE_PARAM_FIXED = 0,             // one value per component
    LX_PARTICLE_PARAM_RANDOM,                // minimum and maximum per component, uniform
    LX_PARTICLE_PARAM_NON_UNIFORM_RANDOM,    // minimum, maximum and exponent per component
    LX_PARTICLE_PARAM_KEYFRAME,              // one keyframe channel per component
    LX_PARTICLE_PARAM_KEYFRAMED_NON_UNIFORM, // three channels per component: minimum, maximum, exponent over time
    LX_PARTICLE_PARAM_KIND_COUNT
};

enum LxParticleTransformType
{
    LX_PARTICLE_TRANSFORM_WORLD = 0,         // placed in world space
    LX_PARTICLE_TRANSFORM_CAMERA,            // follows the camera
    LX_PARTICLE_TRANSFORM_WORLD_ROT_CAM_POS, // world orientation, at the camera's position
    LX_PARTICLE_TRANSFORM_ANIMATION,         // driven by an animation curve
    LX_PARTICLE_TRANSFORM_TYPE_COUNT
};

enum LxParticleDomainType
{
    LX_PARTICLE_DOMAIN_POINT = 0,
    LX_PARTICLE_DOMAIN_LINE,
    LX_PARTICLE_DOMAIN_TRIANGLE,
    LX_PARTICLE_DOMAIN_PLANE,
    LX_PARTICLE_DOMAIN_RECTANGLE,
    LX_PARTICLE_DOMAIN_BOX,
    LX_PARTICLE_DOMAIN_SPHERE,
    LX_PARTICLE_DOMAIN_CYLINDER,
    LX_PARTICLE_DOMAIN_CONE,
    LX_PARTICLE_DOMAIN_DISC,
    LX_PARTICLE_DOMAIN_TYPE_COUNT
};

// "GPUBillboard", "PointSprite".
LX_API const char* LxParticleSystemTypeName(LxParticleSystemType type);
LX_API bool LxParticleSystemTypeFromName(const LxString& name, LxParticleSystemType* type);

// The editor's display names: "Particle System", "Emitter", "Emitter (Collision)", ... "Proxy".
LX_API const char* LxParticleKindDisplayName(LxParticleActionKind kind);
// The name a file gives the kind: emitter types "Shape", "Collision", "Tail"; action types "ConstAccel",
// "OrbitPoint", "OrbitLine", "Vortex", "AttribAnim", "ColliderBounce", "ColliderKill", "ColliderAvoid",
// "ColliderTrigger", "FlightModel", "SpeedTimescale", "Goal", "Advection", "LifeLerp", "Proxy"; the system kind
// has "ParticleSystem".
LX_API const char* LxParticleKindTypeName(LxParticleActionKind kind);
LX_API bool LxParticleEmitterKindFromName(const LxString& name, LxParticleActionKind* kind);
LX_API bool LxParticleActionKindFromName(const LxString& name, LxParticleActionKind* kind);
LX_API bool LxParticleKindIsEmitter(LxParticleActionKind kind);

// "Fixed", "Random", "NonUniformRandom", "KeyFrame", "KeyFramedNonUniformRandom".
LX_API const char* LxParticleParameterKindName(LxParticleParameterKind kind);

// "World", "Camera", "WorldRotCamPos", "Animation".
LX_API const char* LxParticleTransformTypeName(LxParticleTransformType type);
LX_API bool LxParticleTransformTypeFromName(const LxString& name, LxParticleTransformType* type);

// "Point", "Line", "Triangle", "Plane", "Rectangle", "Box", "Sphere", "Cylinder", "Cone", "Disc".
LX_API const char* LxParticleDomainTypeName(LxParticleDomainType type);
LX_API bool LxParticleDomainTypeFromName(const LxString& name, LxParticleDomainType* type);
