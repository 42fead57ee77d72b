// LxParticleSimulator: the CPU simulation of one "GPUBillboard" particle system described by an
// LxParticleSystemDesc: emission from the emitters' shapes, the common actions, ageing and death, and the
// camera-facing quads that draw the particles. Deterministic: the same description, seed and steps give the same
// particles, bit for bit (one LxMersenneTwister per simulator, drawn from in a fixed order).
//
// Emitters read, each optional:
//   Rate (particles per second, default 10), Life (seconds, default 1), Velocity (3 components), Speed (along the
//   direction from the shape's centre to the new particle), Color (4 components, default white), Size (default 1),
//   Rotation (radians), and the values MaxParticles (alive at once from this emitter, default 1000, at most
//   1,000,000), Loop (default true) and Duration (seconds of emission; 0, the default, emits for ever).
// A parameter is drawn per particle: fixed, uniform random, non-uniform random (min + (max - min) u^exponent), or
// keyframed over the emitter's time (wrapped by Duration when looping). The emitter's shape (a point at the origin
// without one) is sampled uniformly, inside or, with Surface, on its surface.
//
// Transforms (of the system, of an emitter, of an action) are matrices rebuilt at every step. The items of one
// transform compose in the order written, the first outermost: "Translation, Rotation, Scale" scales a point, then
// turns it, then moves it. Rotation is in degrees about x, then y, then z; Shear (a b c) adds a*y + b*z to x and
// c*z to y; an "Animation" item is its curve (then the second curve) at the system's time plus the item's offset.
// The transform's type then places the result: World as it is, Camera in the camera's frame (SetCamera),
// WorldRotCamPos at the camera's position with the world's axes, Animation under the transform's curve when no
// "Animation" item already names it. The system's transform is applied over its emitters' and actions', so an
// emitter's matrix is system * emitter: it moves new particles' positions and velocities (emitted particles keep
// their place). Curves come from SetCurveSource; without one, or when a curve cannot be read, they are identities.
//
// Tail and collision emitters read the same members but are placed by other particles; their shape and transform
// (without its translation) offset new particles from that place:
//   Tail       follows the emitter named by one of its members set to true ("Sparks TRUE"; otherwise the first
//              other emitter): Rate particles per second behind each living particle of it, at the particle's
//              position, with InheritVelocity (default 0) times its velocity added.
//   Collision  Count (default 1) particles where a ColliderKill killed one in this step, emitted right after the
//              actions; only the kills of the actions named by members set to true, or of every one when none is.
// Either keeps to its MaxParticles; a tail never follows itself, and collision particles may be killed again (and
// spawn again, within MaxParticles).
//
// Actions, applied in file order each step (other kinds are reported once when the simulator is made, and ignored):
// Every shape and vector of an action is read in the action's transformed frame:
//   ConstAccel   Acceleration: velocity += a dt.
//   OrbitPoint   Center (or the shape's centre), Strength, Epsilon (0.1): acceleration towards the centre of
//                Strength / (distance^2 + Epsilon).
//   OrbitLine    Start, End (or a Line shape), Strength, Epsilon: the same towards the nearest point of the line.
//   Vortex       Center (or the shape's centre), Axis (0 1 0), Strength: velocity += Strength (Axis x (p - c)) dt.
//   ColliderKill a Plane shape kills particles behind the plane (against its normal); a Sphere, Box or Disc shape
//                kills those inside it. The value Invert swaps inside and outside.
//   LifeLerp     Color, Size: keyframed parameters read at the particle's age divided by its life.
//
// Quads: BuildBillboards with an eye position orders a Sort system's quads back to front (farthest first, ties
// in particle order). With TextureTile across x down, a quad's texture coordinates cover one tile, chosen by the
// particle's age over its life (the first tile at birth, the last at death, row by row from the top left), so an
// animated sprite sheet plays once over each particle's life.
//
// Step order: emit, act, move (position += velocity dt), age, remove the dead (the last particle takes a dead one's
// place). Not thread-safe; separate simulators may step on separate threads.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxArray.h"
#include "Common/LxBoundingBox.h"
#include "Common/LxMatrix4.h"
#include "Common/LxMersenneTwister.h"
#include "Common/LxString.h"
#include "Common/LxVector3.h"
#include "Common/LxVector4.h"

class LxParticleDomain;
class LxParticleElementDesc;
class LxParticleParameter;
class LxParticleSystemDesc;
class LxParticleTransform;

class LX_API LxParticleSimulator
{
public:
    struct Particle
    {
        LxVector3 position;
        LxVector3 velocity;
        LxVector4 color;
        float size;
        float rotation;
        float age;
        float life;
        unsigned int emitter;
    };
    // One corner of a camera-facing quad: position, colour, texture coordinate. Six per particle (two triangles).
    struct Vertex
    {
        float position[3];
        float color[4];
        float uv[2];
    };

    // Evaluates the animation curves that drive animated transforms, as a matrix at `time`; false when it has no
    // such curve or the curve's values cannot be made a transform.
    class LX_API CurveSource
    {
    public:
        virtual ~CurveSource() = default;
        virtual bool EvaluateTransform(const LxString& curve, float time, LxMatrix4* out) const = 0;
    };

    // The description must outlive the simulator.
    LxParticleSimulator(const LxParticleSystemDesc& desc, unsigned int seed);

    const LxParticleSystemDesc& GetDesc() const { return m_desc; }
    // Removes every particle, rewinds the time and reseeds.
    void Reset(unsigned int seed);
    // Advances by dt seconds (ignored unless positive).
    void Step(float dt);
    float GetTime() const { return m_fTime; }
    // Not owned; null (the default) reads every curve as the identity.
    void SetCurveSource(const CurveSource* source) { m_pCurves = source; }
    // The camera's frame in the particles' space: columns right, up, viewing direction and position. Identity by
    // default. Read by Camera and WorldRotCamPos transforms at the next step.
    void SetCamera(const LxMatrix4& cameraFrame) { m_camera = cameraFrame; }
    // The matrix of a transform at the simulator's current time and camera (see above).
    LxMatrix4 ComputeTransform(const LxParticleTransform& transform) const;

    unsigned int GetCount() const { return m_particles.GetCount(); }
    const Particle* GetData() const { return m_particles.GetData(); }
    // The box around every particle, grown by half its size; empty without particles.
    LxBoundingBox ComputeBounds() const;
    // Appends six vertices per particle: quads spanning `right` and `up` (unit vectors, usually the camera's axes in
    // the particles' space), of the particle's size, turned by its rotation.
    void BuildBillboards(const LxVector3& right, const LxVector3& up, LxArray<Vertex>& out) const;
    // The same, sorted back to front from `eye` when the system asks for Sort.
    void BuildBillboards(const LxVector3& right, const LxVector3& up, const LxVector3& eye, LxArray<Vertex>& out) const;

private:
    struct Emitter
    {
        const LxParticleElementDesc* desc;
        float pending; // fractional particles carried to the next step
        unsigned int alive;
        unsigned int maxParticles;
        bool loop;
        float duration;
        int source;                      // tails: the emitter followed, -1 for none
        LxArray<unsigned int> colliders; // collision: the actions listened to (empty: all)
    };
    // A particle a collider killed in the current step.
    struct Kill
    {
        LxVector3 position;
        LxVector3 velocity;
        unsigned int action;
    };
    // An action's frame for the current step: its matrix and inverse.
    struct Frame
    {
        LxMatrix4 matrix;
        LxMatrix4 inverse;
        bool invertible;
    };

    // Emits one particle; `origin`, when given, is the place (and the velocity to inherit) of a tail or collision
    // emitter's particle.
    void Emit(Emitter& emitter, unsigned int index, float emitterTime, const LxMatrix4& frame,
              const LxVector3* origin = nullptr, const LxVector3& originVelocity = LxVector3());
    void EmitFollowers(const LxMatrix4& system);
    void EmitAtKills(const LxMatrix4& system);
    void Act(const LxParticleElementDesc& action, unsigned int index, const Frame& frame, float dt);
    LxMatrix4 ElementMatrix(const LxParticleElementDesc& element, const LxMatrix4& system) const;
    void AppendQuad(const Particle& p, const LxVector3& right, const LxVector3& up, LxArray<Vertex>& out) const;
    float Sample(const LxParticleParameter* parameter, unsigned int component, float time, float fallback);
    LxVector3 SamplePoint(const LxParticleDomain& shape);
    float Random() { return static_cast<float>(m_random.genrand_real2()); }

    const LxParticleSystemDesc& m_desc;
    LxArray<Emitter> m_emitters;
    LxArray<Particle> m_particles;
    LxArray<Kill> m_kills;
    bool m_bRecordKills = false;
    LxMersenneTwister m_random;
    float m_fTime = 0.0f;
    const CurveSource* m_pCurves = nullptr;
    LxMatrix4 m_camera;
};
