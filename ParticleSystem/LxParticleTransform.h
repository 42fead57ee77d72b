// LxParticleTransform: the placement of a particle system, emitter or action: its type (world, camera, world
// orientation at the camera position, animated) and the items written for it, in file order: translation,
// rotation (Euler angles in degrees about x, y, z), scale and shear, each three numbers, and the animation item
// (curve name, optional second curve name, time offset in seconds).
//
// The getters give the last item of each kind, or the identity value (no translation, rotation or shear, unit
// scale) when there is none. For an animated transform the builder resolves the curve it is driven by
// (GetCurveName; see LxParticleBuilder). A plain value, not thread-safe.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxArray.h"
#include "Common/LxString.h"
#include "Common/LxVector3.h"
#include "ParticleSystem/LxParticleTypes.h"

class LX_API LxParticleTransform
{
public:
    enum ItemKind
    {
        TRANSLATION = 0,
        ROTATION,
        SCALE,
        SHEAR,
        ANIMATION
    };
    struct Item
    {
        ItemKind kind;
        LxVector3 value;  // the three numbers (not used by ANIMATION)
        LxString curve;   // ANIMATION: the curve named in the file
        LxString curve2;  // ANIMATION: the optional second curve (empty when not given)
        float timeOffset; // ANIMATION
    };

    explicit LxParticleTransform(LxParticleTransformType type = LX_PARTICLE_TRANSFORM_WORLD) : m_type(type) {}

    LxParticleTransformType GetType() const { return m_type; }
    void AddVectorItem(ItemKind kind, const LxVector3& value);
    void AddAnimationItem(const LxString& curve, const LxString& curve2, float timeOffset);

    unsigned int GetItemCount() const { return m_items.GetCount(); }
    const Item& GetItem(unsigned int i) const { return m_items[i]; }

    LxVector3 GetTranslation() const;
    LxVector3 GetRotation() const;
    LxVector3 GetScale() const;
    LxVector3 GetShear() const;
    // The last animation item, or null.
    const Item* GetAnimation() const;

    // The curve that drives an animated transform, as resolved by the builder (empty for the other types).
    const LxString& GetCurveName() const { return m_curveName; }
    void SetCurveName(const LxString& name) { m_curveName = name; }

private:
    const Item* FindLast(ItemKind kind) const;

    LxParticleTransformType m_type;
    LxArray<Item> m_items;
    LxString m_curveName;
};
