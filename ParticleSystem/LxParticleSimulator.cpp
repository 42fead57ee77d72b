#include "ParticleSystem/LxParticleSimulator.h"

#include "Common/LxLogManager.h"
#include "Common/LxPoint3.h"
#include "Common/LxQuat.h"
#include "ParticleSystem/LxParticleDomain.h"
#include "ParticleSystem/LxParticleElementDesc.h"
#include "ParticleSystem/LxParticleParameter.h"
#include "ParticleSystem/LxParticleSystemDesc.h"
#include "ParticleSystem/LxParticleTransform.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace
{
const float kPi = 3.14159265f;
// A file asking for more would only exhaust memory.
const unsigned int kMaxParticlesPerEmitter = 1000000;

LxMatrix4 ItemMatrix(const LxParticleTransform::Item& item)
{
    LxMatrix4 m;
    switch (item.kind)
    {
    case LxParticleTransform::TRANSLATION:
        m.MakeTranslation(item.value);
        break;
    case LxParticleTransform::ROTATION:
    {
        const LxVector3 r = item.value * (kPi / 180.0f);
        LxMatrix4 rx, ry, rz;
        rx.MakeFromAxisAngle(LxVector3(1, 0, 0), r.x);
        ry.MakeFromAxisAngle(LxVector3(0, 1, 0), r.y);
        rz.MakeFromAxisAngle(LxVector3(0, 0, 1), r.z);
        m = rz * ry * rx;
        break;
    }
    case LxParticleTransform::SCALE:
        m.MakeScaling(item.value.x, item.value.y, item.value.z);
        break;
    case LxParticleTransform::SHEAR:
        m(0, 1) = item.value.x;
        m(0, 2) = item.value.y;
        m(1, 2) = item.value.z;
        break;
    default:
        break;
    }
    return m;
}

// A unit vector perpendicular to `n` (n not zero).
LxVector3 Perpendicular(const LxVector3& n)
{
    const LxVector3 other = std::fabs(n.x) < 0.9f ? LxVector3(1, 0, 0) : LxVector3(0, 1, 0);
    return n.Cross(other).Normalized();
}

LxVector3 DomainCenter(const LxParticleDomain& shape)
{
    switch (shape.GetType())
    {
    case LX_PARTICLE_DOMAIN_POINT:
    case LX_PARTICLE_DOMAIN_SPHERE:
    case LX_PARTICLE_DOMAIN_DISC:
        return shape.GetVector3("Center");
    case LX_PARTICLE_DOMAIN_LINE:
    case LX_PARTICLE_DOMAIN_CYLINDER:
        return (shape.GetVector3("Start") + shape.GetVector3("End")) * 0.5f;
    case LX_PARTICLE_DOMAIN_TRIANGLE:
        return (shape.GetVector3("Point0") + shape.GetVector3("Point1") + shape.GetVector3("Point2")) / 3.0f;
    case LX_PARTICLE_DOMAIN_PLANE:
        return shape.GetVector3("Point");
    case LX_PARTICLE_DOMAIN_RECTANGLE:
        return shape.GetVector3("Corner") + (shape.GetVector3("U") + shape.GetVector3("V")) * 0.5f;
    case LX_PARTICLE_DOMAIN_BOX:
        return (shape.GetVector3("Min") + shape.GetVector3("Max")) * 0.5f;
    case LX_PARTICLE_DOMAIN_CONE:
        return shape.GetVector3("Apex");
    default:
        return LxVector3();
    }
}

bool IsSimulated(LxParticleActionKind kind)
{
    switch (kind)
    {
    case LX_PARTICLE_KIND_CONST_ACCEL:
    case LX_PARTICLE_KIND_ORBIT_POINT:
    case LX_PARTICLE_KIND_ORBIT_LINE:
    case LX_PARTICLE_KIND_VORTEX:
    case LX_PARTICLE_KIND_COLLIDER_KILL:
    case LX_PARTICLE_KIND_LIFE_LERP:
        return true;
    default:
        return false;
    }
}

float ValueOr(const LxParticleElementDesc& e, const char* name, float fallback)
{
    const LxParticleValue* v = e.FindValue(name);
    return v ? v->GetFloat() : fallback;
}

// A fixed parameter's component, or the value of that name, or the fallback (actions read their constants so).
float ConstantOr(const LxParticleElementDesc& e, const char* name, unsigned int component, float fallback)
{
    if (const LxParticleParameter* p = e.FindParameter(name))
        return component < p->GetComponentCount() ? p->GetFixed(component) : fallback;
    return ValueOr(e, name, fallback);
}

LxVector3 VectorOr(const LxParticleElementDesc& e, const char* name, const LxVector3& fallback)
{
    const LxParticleParameter* p = e.FindParameter(name);
    if (!p || p->GetComponentCount() < 3)
        return fallback;
    return LxVector3(p->GetFixed(0), p->GetFixed(1), p->GetFixed(2));
}
} // namespace

LxParticleSimulator::LxParticleSimulator(const LxParticleSystemDesc& desc, unsigned int seed) : m_desc(desc)
{
    for (unsigned int i = 0; i < desc.GetEmitterCount(); ++i)
    {
        const LxParticleElementDesc& e = desc.GetEmitter(i);
        Emitter emitter;
        emitter.desc = &e;
        emitter.pending = 0.0f;
        emitter.alive = 0;
        const LxParticleValue* max = e.FindValue("MaxParticles");
        emitter.maxParticles = max && max->GetInt() > 0 ? static_cast<unsigned int>(max->GetInt()) : 1000u;
        if (emitter.maxParticles > kMaxParticlesPerEmitter)
        {
            LX_WARNING("LxParticleSimulator.  Emitter %s of particle system %s asks for %u particles; it is held to %u",
                       e.GetName().c_str(), desc.GetName().c_str(), emitter.maxParticles, kMaxParticlesPerEmitter);
            emitter.maxParticles = kMaxParticlesPerEmitter;
        }
        const LxParticleValue* loop = e.FindValue("Loop");
        emitter.loop = loop ? loop->GetBool() : true;
        emitter.duration = ValueOr(e, "Duration", 0.0f);
        emitter.source = -1;
        // Members set to true name the emitters (tails) or actions (collision) followed.
        for (unsigned int v = 0; v < e.GetValueCount(); ++v)
        {
            const LxParticleElementDesc::NamedValue& named = e.GetValue(v);
            if (named.value.GetKind() != LxParticleValue::BOOL || !named.value.GetBool())
                continue;
            if (e.GetKind() == LX_PARTICLE_KIND_EMITTER_TAIL && emitter.source < 0)
                for (unsigned int s = 0; s < desc.GetEmitterCount(); ++s)
                    if (s != i && desc.GetEmitter(s).GetName() == named.name)
                        emitter.source = static_cast<int>(s);
            if (e.GetKind() == LX_PARTICLE_KIND_EMITTER_COLLISION)
                for (unsigned int a = 0; a < desc.GetActionCount(); ++a)
                    if (desc.GetAction(a).GetName() == named.name)
                        emitter.colliders.Add(a);
        }
        if (e.GetKind() == LX_PARTICLE_KIND_EMITTER_TAIL && emitter.source < 0)
            for (unsigned int s = 0; s < desc.GetEmitterCount() && emitter.source < 0; ++s)
                if (s != i)
                    emitter.source = static_cast<int>(s);
        if (e.GetKind() == LX_PARTICLE_KIND_EMITTER_TAIL && emitter.source < 0)
            LX_WARNING("LxParticleSimulator.  Tail emitter %s of particle system %s has no emitter to follow",
                       e.GetName().c_str(), desc.GetName().c_str());
        m_bRecordKills = m_bRecordKills || e.GetKind() == LX_PARTICLE_KIND_EMITTER_COLLISION;
        m_emitters.Add(emitter);
    }
    for (unsigned int i = 0; i < desc.GetActionCount(); ++i)
        if (!IsSimulated(desc.GetAction(i).GetKind()))
            LX_WARNING("LxParticleSimulator.  Action %s (%s) of particle system %s is not simulated; it is ignored",
                       desc.GetAction(i).GetName().c_str(), desc.GetAction(i).GetKindDisplayName(),
                       desc.GetName().c_str());
    Reset(seed);
}

void LxParticleSimulator::Reset(unsigned int seed)
{
    m_particles.Clear();
    m_random.init_genrand(seed);
    m_fTime = 0.0f;
    for (Emitter& e : m_emitters)
    {
        e.pending = 0.0f;
        e.alive = 0;
    }
}

LxMatrix4 LxParticleSimulator::ComputeTransform(const LxParticleTransform& t) const
{
    LxMatrix4 curveMatrix;
    LxMatrix4 m;
    for (unsigned int i = 0; i < t.GetItemCount(); ++i)
    {
        const LxParticleTransform::Item& item = t.GetItem(i);
        if (item.kind != LxParticleTransform::ANIMATION)
        {
            m = m * ItemMatrix(item);
            continue;
        }
        for (const LxString* curve : {&item.curve, &item.curve2})
            if (m_pCurves && !curve->IsEmpty() &&
                m_pCurves->EvaluateTransform(*curve, m_fTime + item.timeOffset, &curveMatrix))
                m = m * curveMatrix;
    }
    switch (t.GetType())
    {
    case LX_PARTICLE_TRANSFORM_CAMERA:
        return m_camera * m;
    case LX_PARTICLE_TRANSFORM_WORLD_ROT_CAM_POS:
    {
        LxMatrix4 at;
        at.MakeTranslation(m_camera.GetTranslation());
        return at * m;
    }
    case LX_PARTICLE_TRANSFORM_ANIMATION:
        // The builder names the curve "<system>[.<element>].transform" when no item does.
        if (!t.GetAnimation() && m_pCurves && !t.GetCurveName().IsEmpty() &&
            m_pCurves->EvaluateTransform(t.GetCurveName(), m_fTime, &curveMatrix))
            return curveMatrix * m;
        return m;
    default:
        return m;
    }
}

LxMatrix4 LxParticleSimulator::ElementMatrix(const LxParticleElementDesc& e, const LxMatrix4& system) const
{
    return e.HasTransform() ? system * ComputeTransform(e.GetTransform()) : system;
}

float LxParticleSimulator::Sample(const LxParticleParameter* p, unsigned int component, float time, float fallback)
{
    if (!p)
        return fallback;
    if (component >= p->GetComponentCount())
        component = p->GetComponentCount() ? p->GetComponentCount() - 1 : 0;
    switch (p->GetKind())
    {
    case LX_PARTICLE_PARAM_FIXED:
        return p->GetFixed(component);
    case LX_PARTICLE_PARAM_RANDOM:
    {
        const float lo = p->GetMinimum(component);
        return lo + (p->GetMaximum(component) - lo) * Random();
    }
    case LX_PARTICLE_PARAM_NON_UNIFORM_RANDOM:
    {
        const float lo = p->GetMinimum(component);
        return lo + (p->GetMaximum(component) - lo) * std::pow(Random(), p->GetExponent(component));
    }
    case LX_PARTICLE_PARAM_KEYFRAME:
    {
        const LxParticleKeyFrameChannel* c = p->GetComponentChannel(component);
        return c ? c->Evaluate(time) : fallback;
    }
    case LX_PARTICLE_PARAM_KEYFRAMED_NON_UNIFORM:
    {
        const LxParticleKeyFrameChannel* lo = p->GetComponentChannel(component, 0);
        const LxParticleKeyFrameChannel* hi = p->GetComponentChannel(component, 1);
        const LxParticleKeyFrameChannel* ex = p->GetComponentChannel(component, 2);
        if (!lo || !hi || !ex)
            return fallback;
        const float a = lo->Evaluate(time);
        return a + (hi->Evaluate(time) - a) * std::pow(Random(), ex->Evaluate(time));
    }
    default:
        return fallback;
    }
}

LxVector3 LxParticleSimulator::SamplePoint(const LxParticleDomain& shape)
{
    const bool surface = shape.GetBool("Surface");
    switch (shape.GetType())
    {
    case LX_PARTICLE_DOMAIN_POINT:
        return shape.GetVector3("Center");
    case LX_PARTICLE_DOMAIN_LINE:
    {
        const LxVector3 a = shape.GetVector3("Start");
        return a + (shape.GetVector3("End") - a) * Random();
    }
    case LX_PARTICLE_DOMAIN_TRIANGLE:
    {
        float u = Random(), v = Random();
        if (u + v > 1.0f)
        {
            u = 1.0f - u;
            v = 1.0f - v;
        }
        const LxVector3 p0 = shape.GetVector3("Point0");
        return p0 + (shape.GetVector3("Point1") - p0) * u + (shape.GetVector3("Point2") - p0) * v;
    }
    case LX_PARTICLE_DOMAIN_PLANE:
        return shape.GetVector3("Point");
    case LX_PARTICLE_DOMAIN_RECTANGLE:
    {
        const float u = Random(), v = Random();
        return shape.GetVector3("Corner") + shape.GetVector3("U") * u + shape.GetVector3("V") * v;
    }
    case LX_PARTICLE_DOMAIN_BOX:
    {
        const LxVector3 lo = shape.GetVector3("Min"), hi = shape.GetVector3("Max");
        LxVector3 p(Random(), Random(), Random());
        if (surface)
        {
            // Push one axis (picked at random) onto a face.
            const unsigned int axis = m_random.genrand_int32() % 3;
            p[axis] = Random() < 0.5f ? 0.0f : 1.0f;
        }
        const LxVector3 center = (lo + hi) * 0.5f;
        const LxVector3 local = lo + (hi - lo) * p - center;
        const LxVector4 q = shape.GetVector4("Orientation");
        LxQuat rotation(q.x, q.y, q.z, q.w);
        if (rotation.w == 0.0f && rotation.x == 0.0f && rotation.y == 0.0f && rotation.z == 0.0f)
            rotation = LxQuat();
        return center + rotation.Rotate(local);
    }
    case LX_PARTICLE_DOMAIN_SPHERE:
    {
        LxVector3 dir;
        do
            dir = LxVector3(Random() * 2.0f - 1.0f, Random() * 2.0f - 1.0f, Random() * 2.0f - 1.0f);
        while (dir.SquaredLength() > 1.0f || dir.SquaredLength() < 1e-6f);
        dir.Normalize();
        const float outer = shape.GetFloat("Radius"), inner = shape.GetFloat("InnerRadius");
        const float r = surface ? outer : inner + (outer - inner) * std::cbrt(Random());
        return shape.GetVector3("Center") + dir * r;
    }
    case LX_PARTICLE_DOMAIN_DISC:
    case LX_PARTICLE_DOMAIN_CYLINDER:
    case LX_PARTICLE_DOMAIN_CONE:
    {
        LxVector3 base, axis;
        if (shape.GetType() == LX_PARTICLE_DOMAIN_DISC)
        {
            base = shape.GetVector3("Center");
            axis = shape.GetVector3("Normal");
        }
        else if (shape.GetType() == LX_PARTICLE_DOMAIN_CYLINDER)
        {
            base = shape.GetVector3("Start");
            axis = shape.GetVector3("End") - base;
        }
        else
        {
            base = shape.GetVector3("Apex");
            axis = shape.GetVector3("Base") - base;
        }
        if (axis.SquaredLength() < 1e-12f)
            axis = LxVector3(0, 1, 0);
        const LxVector3 n = axis.Normalized();
        const LxVector3 u = Perpendicular(n), v = n.Cross(u);
        const float angle = Random() * 2.0f * kPi;
        const float outer = shape.GetFloat("Radius"), inner = shape.GetFloat("InnerRadius");
        float r = surface ? outer : std::sqrt(inner * inner + (outer * outer - inner * inner) * Random());
        float along = 0.0f;
        if (shape.GetType() != LX_PARTICLE_DOMAIN_DISC)
        {
            along = Random();
            if (shape.GetType() == LX_PARTICLE_DOMAIN_CONE)
                r *= along; // the cone widens from its apex
        }
        const LxVector3 offset = shape.GetType() == LX_PARTICLE_DOMAIN_DISC ? LxVector3() : axis * along;
        return base + offset + (u * std::cos(angle) + v * std::sin(angle)) * r;
    }
    default:
        return LxVector3();
    }
}

void LxParticleSimulator::Emit(Emitter& emitter, unsigned int index, float t, const LxMatrix4& frame,
                               const LxVector3* origin, const LxVector3& originVelocity)
{
    const LxParticleElementDesc& e = *emitter.desc;
    Particle p;
    const LxVector3 local = e.HasShape() ? SamplePoint(e.GetShape()) : LxVector3();
    LxVector3 velocity(Sample(e.FindParameter("Velocity"), 0, t, 0.0f), Sample(e.FindParameter("Velocity"), 1, t, 0.0f),
                       Sample(e.FindParameter("Velocity"), 2, t, 0.0f));
    const LxParticleParameter* speedParameter = e.FindParameter("Speed");
    const float speed = speedParameter ? Sample(speedParameter, 0, t, 0.0f) : ValueOr(e, "Speed", 0.0f);
    if (speed != 0.0f && e.HasShape())
        velocity += (local - DomainCenter(e.GetShape())).Normalized() * speed;
    if (origin)
    {
        p.position = *origin + frame.TransformVector(local);
        p.velocity = frame.TransformVector(velocity) + originVelocity * ValueOr(e, "InheritVelocity", 0.0f);
    }
    else
    {
        const LxPoint3 moved = frame.TransformPoint(LxPoint3(local.x, local.y, local.z));
        p.position = LxVector3(moved.x, moved.y, moved.z);
        p.velocity = frame.TransformVector(velocity);
    }
    const LxParticleParameter* color = e.FindParameter("Color");
    p.color = LxVector4(Sample(color, 0, t, 1.0f), Sample(color, 1, t, 1.0f), Sample(color, 2, t, 1.0f),
                        color && color->GetComponentCount() > 3 ? Sample(color, 3, t, 1.0f) : 1.0f);
    p.size = Sample(e.FindParameter("Size"), 0, t, 1.0f);
    p.rotation = Sample(e.FindParameter("Rotation"), 0, t, 0.0f);
    p.age = 0.0f;
    p.life = Sample(e.FindParameter("Life"), 0, t, ValueOr(e, "Life", 1.0f));
    p.emitter = index;
    m_particles.Add(p);
    ++emitter.alive;
}

namespace
{
LxVector3 Point(const LxMatrix4& m, const LxVector3& v)
{
    const LxPoint3 p = m.TransformPoint(LxPoint3(v.x, v.y, v.z));
    return LxVector3(p.x, p.y, p.z);
}
} // namespace

void LxParticleSimulator::Act(const LxParticleElementDesc& a, unsigned int index, const Frame& frame, float dt)
{
    Particle* particles = m_particles.GetData();
    const unsigned int count = m_particles.GetCount();
    const LxMatrix4& m = frame.matrix;
    const LxVector3 shapeCenter = a.HasShape() ? DomainCenter(a.GetShape()) : LxVector3();
    switch (a.GetKind())
    {
    case LX_PARTICLE_KIND_CONST_ACCEL:
    {
        const LxVector3 dv = m.TransformVector(VectorOr(a, "Acceleration", LxVector3())) * dt;
        for (unsigned int i = 0; i < count; ++i)
            particles[i].velocity += dv;
        break;
    }
    case LX_PARTICLE_KIND_ORBIT_POINT:
    case LX_PARTICLE_KIND_ORBIT_LINE:
    {
        const float strength = ConstantOr(a, "Strength", 0, 1.0f) * dt;
        const float epsilon = ConstantOr(a, "Epsilon", 0, 0.1f);
        const bool line = a.GetKind() == LX_PARTICLE_KIND_ORBIT_LINE;
        const LxVector3 center = Point(m, VectorOr(a, "Center", shapeCenter));
        LxVector3 start = VectorOr(a, "Start", LxVector3()), end = VectorOr(a, "End", LxVector3(0, 1, 0));
        if (line && a.HasShape() && a.GetShape().GetType() == LX_PARTICLE_DOMAIN_LINE)
        {
            start = a.GetShape().GetVector3("Start");
            end = a.GetShape().GetVector3("End");
        }
        start = Point(m, start);
        end = Point(m, end);
        const LxVector3 axis = end - start;
        const float axisLength2 = axis.SquaredLength();
        for (unsigned int i = 0; i < count; ++i)
        {
            LxVector3 target = center;
            if (line)
                target = axisLength2 > 0.0f ? start + axis * ((particles[i].position - start).Dot(axis) / axisLength2)
                                            : start;
            const LxVector3 d = target - particles[i].position;
            const float d2 = d.SquaredLength();
            if (d2 > 0.0f)
                particles[i].velocity += d * (strength / ((d2 + epsilon) * std::sqrt(d2)));
        }
        break;
    }
    case LX_PARTICLE_KIND_VORTEX:
    {
        const LxVector3 center = Point(m, VectorOr(a, "Center", shapeCenter));
        const LxVector3 axis = m.TransformVector(VectorOr(a, "Axis", LxVector3(0, 1, 0))).Normalized();
        const float k = ConstantOr(a, "Strength", 0, 1.0f) * dt;
        for (unsigned int i = 0; i < count; ++i)
            particles[i].velocity += axis.Cross(particles[i].position - center) * k;
        break;
    }
    case LX_PARTICLE_KIND_COLLIDER_KILL:
    {
        // A collider squashed flat (a zero scale) has no inside to test against: it kills nothing.
        if (!a.HasShape() || !frame.invertible)
            break;
        const LxParticleDomain& shape = a.GetShape();
        const bool placed = !frame.matrix.IsIdentity();
        const LxParticleValue* invert = a.FindValue("Invert");
        const bool inverted = invert && invert->GetBool();
        for (unsigned int i = 0; i < count; ++i)
        {
            // Tested in the collider's own frame (most colliders have none: no transform to pay for).
            const LxVector3 p = placed ? Point(frame.inverse, particles[i].position) : particles[i].position;
            bool hit = false;
            switch (shape.GetType())
            {
            case LX_PARTICLE_DOMAIN_PLANE:
                hit = (p - shape.GetVector3("Point")).Dot(shape.GetVector3("Normal")) < 0.0f;
                break;
            case LX_PARTICLE_DOMAIN_SPHERE:
            {
                const float r = shape.GetFloat("Radius");
                hit = (p - shape.GetVector3("Center")).SquaredLength() <= r * r;
                break;
            }
            case LX_PARTICLE_DOMAIN_BOX:
            {
                const LxVector3 lo = shape.GetVector3("Min"), hi = shape.GetVector3("Max");
                hit = p.x >= lo.x && p.y >= lo.y && p.z >= lo.z && p.x <= hi.x && p.y <= hi.y && p.z <= hi.z;
                break;
            }
            case LX_PARTICLE_DOMAIN_DISC:
            {
                // A disc kills what crosses it: within its radius and on its back side.
                const LxVector3 d = p - shape.GetVector3("Center");
                const LxVector3 n = shape.GetVector3("Normal").Normalized();
                const float h = d.Dot(n);
                const float r = shape.GetFloat("Radius");
                hit = h <= 0.0f && (d - n * h).SquaredLength() <= r * r;
                break;
            }
            default:
                break;
            }
            if (hit != inverted)
            {
                // Marked dead (removed after the move); recorded once for collision emitters.
                if (m_bRecordKills && particles[i].life != -1.0f)
                    m_kills.Add(Kill{particles[i].position, particles[i].velocity, index});
                particles[i].life = -1.0f;
            }
        }
        break;
    }
    case LX_PARTICLE_KIND_LIFE_LERP:
    {
        const LxParticleParameter* color = a.FindParameter("Color");
        const LxParticleParameter* size = a.FindParameter("Size");
        for (unsigned int i = 0; i < count; ++i)
        {
            Particle& p = particles[i];
            const float f = p.life > 0.0f ? p.age / p.life : 1.0f;
            if (color)
            {
                p.color.x = Sample(color, 0, f, p.color.x);
                p.color.y = Sample(color, 1, f, p.color.y);
                p.color.z = Sample(color, 2, f, p.color.z);
                if (color->GetComponentCount() > 3)
                    p.color.w = Sample(color, 3, f, p.color.w);
            }
            if (size)
                p.size = Sample(size, 0, f, p.size);
        }
        break;
    }
    default:
        break;
    }
}

void LxParticleSimulator::Step(float dt)
{
    if (!(dt > 0.0f))
        return;
    const LxMatrix4 system = m_desc.HasTransform() ? ComputeTransform(m_desc.GetTransform()) : LxMatrix4();
    for (unsigned int e = 0; e < m_emitters.GetCount(); ++e)
    {
        Emitter& emitter = m_emitters[e];
        float t = m_fTime;
        if (emitter.duration > 0.0f)
        {
            if (!emitter.loop && t >= emitter.duration)
                continue;
            t = std::fmod(t, emitter.duration);
        }
        emitter.pending +=
            Sample(emitter.desc->FindParameter("Rate"), 0, t, ValueOr(*emitter.desc, "Rate", 10.0f)) * dt;
        if (!(emitter.pending > 0.0f))
        {
            emitter.pending = 0.0f;
            continue;
        }
        if (emitter.desc->GetKind() != LX_PARTICLE_KIND_EMITTER)
            continue; // tails and collision emitters are placed by other particles
        const float whole = std::floor(emitter.pending);
        emitter.pending -= whole;
        const unsigned int room = emitter.maxParticles > emitter.alive ? emitter.maxParticles - emitter.alive : 0;
        const unsigned int n = whole < static_cast<float>(room) ? static_cast<unsigned int>(whole) : room;
        const LxMatrix4 frame = ElementMatrix(*emitter.desc, system);
        for (unsigned int i = 0; i < n; ++i)
            Emit(emitter, e, t, frame);
    }
    EmitFollowers(system);
    m_kills.Clear();
    for (unsigned int a = 0; a < m_desc.GetActionCount(); ++a)
    {
        Frame frame;
        frame.matrix = ElementMatrix(m_desc.GetAction(a), system);
        frame.invertible = frame.matrix.Inverse(&frame.inverse);
        Act(m_desc.GetAction(a), a, frame, dt);
    }
    EmitAtKills(system);
    for (unsigned int i = 0; i < m_particles.GetCount();)
    {
        Particle& p = m_particles[i];
        p.position += p.velocity * dt;
        p.age += dt;
        if (p.age >= p.life)
        {
            --m_emitters[p.emitter].alive;
            m_particles.RemoveAtSwap(i);
        }
        else
            ++i;
    }
    m_fTime += dt;
}

void LxParticleSimulator::EmitFollowers(const LxMatrix4& system)
{
    for (unsigned int e = 0; e < m_emitters.GetCount(); ++e)
    {
        Emitter& emitter = m_emitters[e];
        if (emitter.desc->GetKind() != LX_PARTICLE_KIND_EMITTER_TAIL || emitter.source < 0)
            continue;
        // The rate's fraction is carried the same way as a shape emitter's, but counts per followed particle.
        const float whole = std::floor(emitter.pending);
        emitter.pending -= whole;
        if (!(whole >= 1.0f))
            continue;
        const LxMatrix4 frame = ElementMatrix(*emitter.desc, system);
        // Only the particles alive before this pass: new tail particles are not followed in the same step.
        const unsigned int count = m_particles.GetCount();
        for (unsigned int i = 0; i < count; ++i)
        {
            if (m_particles[i].emitter != static_cast<unsigned int>(emitter.source))
                continue;
            const LxVector3 position = m_particles[i].position, velocity = m_particles[i].velocity;
            for (float k = 0.0f; k < whole && emitter.alive < emitter.maxParticles; k += 1.0f)
                Emit(emitter, e, m_fTime, frame, &position, velocity);
        }
    }
}

void LxParticleSimulator::EmitAtKills(const LxMatrix4& system)
{
    for (unsigned int e = 0; e < m_emitters.GetCount() && !m_kills.IsEmpty(); ++e)
    {
        Emitter& emitter = m_emitters[e];
        if (emitter.desc->GetKind() != LX_PARTICLE_KIND_EMITTER_COLLISION)
            continue;
        const float perKill = ConstantOr(*emitter.desc, "Count", 0, 1.0f);
        const LxMatrix4 frame = ElementMatrix(*emitter.desc, system);
        for (const Kill& kill : m_kills)
        {
            bool listened = emitter.colliders.IsEmpty();
            for (unsigned int a : emitter.colliders)
                listened = listened || a == kill.action;
            if (!listened)
                continue;
            for (float k = 0.0f; k < perKill && emitter.alive < emitter.maxParticles; k += 1.0f)
                Emit(emitter, e, m_fTime, frame, &kill.position, kill.velocity);
        }
    }
    m_kills.Clear();
}

LxBoundingBox LxParticleSimulator::ComputeBounds() const
{
    LxBoundingBox box;
    for (const Particle& p : m_particles)
    {
        const float h = p.size * 0.5f;
        box.AddPoint(LxPoint3(p.position.x - h, p.position.y - h, p.position.z - h));
        box.AddPoint(LxPoint3(p.position.x + h, p.position.y + h, p.position.z + h));
    }
    return box;
}

void LxParticleSimulator::AppendQuad(const Particle& p, const LxVector3& right, const LxVector3& up,
                                     LxArray<Vertex>& out) const
{
    static const float kCorners[6][2] = {{-1, -1}, {-1, 1}, {1, 1}, {-1, -1}, {1, 1}, {1, -1}};
    const int across = m_desc.GetTextureTilesAcross() > 0 ? m_desc.GetTextureTilesAcross() : 1;
    const int down = m_desc.GetTextureTilesDown() > 0 ? m_desc.GetTextureTilesDown() : 1;
    const long long tiles = static_cast<long long>(across) * down;
    long long tile = 0;
    if (tiles > 1 && p.life > 0.0f)
    {
        const float f = p.age / p.life * static_cast<float>(tiles);
        tile = f > 0.0f ? static_cast<long long>(f) : 0;
        if (tile >= tiles)
            tile = tiles - 1;
    }
    const float tileU = static_cast<float>(tile % across), tileV = static_cast<float>(tile / across);
    const float h = p.size * 0.5f;
    const float c = std::cos(p.rotation) * h, s = std::sin(p.rotation) * h;
    const LxVector3 r = right * c + up * s, u = up * c - right * s;
    for (const float* corner : kCorners)
    {
        Vertex v;
        const LxVector3 pos = p.position + r * corner[0] + u * corner[1];
        v.position[0] = pos.x;
        v.position[1] = pos.y;
        v.position[2] = pos.z;
        v.color[0] = p.color.x;
        v.color[1] = p.color.y;
        v.color[2] = p.color.z;
        v.color[3] = p.color.w;
        v.uv[0] = (tileU + (corner[0] + 1.0f) * 0.5f) / static_cast<float>(across);
        v.uv[1] = (tileV + (1.0f - corner[1]) * 0.5f) / static_cast<float>(down);
        out.Add(v);
    }
}

void LxParticleSimulator::BuildBillboards(const LxVector3& right, const LxVector3& up, LxArray<Vertex>& out) const
{
    out.Reserve(out.GetCount() + 6 * m_particles.GetCount());
    for (const Particle& p : m_particles)
        AppendQuad(p, right, up, out);
}

void LxParticleSimulator::BuildBillboards(const LxVector3& right, const LxVector3& up, const LxVector3& eye,
                                          LxArray<Vertex>& out) const
{
    if (!m_desc.GetSort())
    {
        BuildBillboards(right, up, out);
        return;
    }
    const unsigned int count = m_particles.GetCount();
    std::vector<std::pair<float, unsigned int>> order(count);
    for (unsigned int i = 0; i < count; ++i)
        order[i] = std::make_pair(-(m_particles[i].position - eye).SquaredLength(), i);
    std::sort(order.begin(), order.end());
    out.Reserve(out.GetCount() + 6 * count);
    for (const std::pair<float, unsigned int>& o : order)
        AppendQuad(m_particles[o.second], right, up, out);
}
