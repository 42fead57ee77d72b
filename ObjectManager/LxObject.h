// LxObject: the base of every scene object (animated models, particle groups, objects made by plug-ins): a name
// fixed at construction, string properties, listeners told of updates and reloads, a bounding volume for frustum
// culling, and the optional queries the object manager's update handlers ask of the object being drawn.
//
// The optional queries (visibility setting, bone palettes, static bounds, world transform) fail in this base class
// with an error message and false; derived classes that have the value override them.
//
// Bounding volume: SetBoundingVolume gives a box in the object's own space; GetBoundingBox answers it moved by the
// world transform (when the object has one). An object with no (or an empty) box is never culled.
//
// Bone palettes (HandleBoneAppUpdate): `dst` holds `count` four-float registers. A matrix palette takes four
// registers per bone, column by column as LxMatrix4 stores it; the 4x3 layout three registers per bone, the first
// three rows of the matrix. Bones past the end of the object's palette are written as identity.
//
// Ownership: the object manager owns registered objects; listeners are not owned. Frame thread only.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxArray.h"
#include "Common/LxBoundingBox.h"
#include "Common/LxFrustum.h"
#include "Common/LxMatrix4.h"
#include "Common/LxPoint3.h"
#include "Common/LxString.h"

class LxBoundingVolumeVisualizer;
class LxObjectListener;

class LX_API LxObject
{
public:
    enum ObjectType
    {
        OBJECT_PLUGIN = 0,
        OBJECT_ANIMATED_MODEL = 1,
        OBJECT_PARTICLE_GROUP = 2
    };

    explicit LxObject(const LxString& name);
    virtual ~LxObject();
    LxObject(const LxObject&) = delete;
    LxObject& operator=(const LxObject&) = delete;

    const LxString& GetName() const { return m_name; }
    virtual ObjectType GetObjectType() const { return OBJECT_PLUGIN; }

    // --- properties and listeners -------------------------------------------------------------------------------
    void AddProperty(const LxString& property);
    bool HasProperty(const LxString& property) const { return m_properties.Contains(property); }
    const LxArray<LxString>& GetProperties() const { return m_properties; }
    // A listener attached twice is told once.
    void AttachListener(LxObjectListener* listener);
    // False when the listener was not attached.
    bool DetachListener(LxObjectListener* listener);
    void NotifyListenersOfUpdate(double time);
    void NotifyListenersOfReload();

    // --- per frame ----------------------------------------------------------------------------------------------
    // Advances the object to `time` (seconds on the demo clock); the base only tells the listeners.
    virtual void UpdateObject(double time);
    // Draws the object through its effects unless it is hidden or (with a frustum) lies wholly outside the frustum.
    // True when anything was drawn. The base draws nothing.
    virtual bool Draw(const LxFrustum* cullFrustum);

    // --- optional queries ---------------------------------------------------------------------------------------
    virtual bool IsVisible() const { return true; }
    virtual bool SetVisible(bool visible);
    virtual void DrawBoundingVolumes(const LxBoundingVolumeVisualizer& visualizer) const;
    virtual bool GetStaticBoundingBox(LxPoint3* min, LxPoint3* max) const;
    virtual bool GetStaticBoundingSphere(LxPoint3* center, float* radius) const;
    virtual bool GetWorldTransform(LxMatrix4* out) const;
    // Whether GetWorldTransform answers (asked before it, so that objects without one log nothing).
    virtual bool HasWorldTransform() const { return false; }
    virtual bool HandleBoneAppUpdate(void* dst, unsigned int count, bool lastFrame, bool inverseTranspose,
                                     bool rows4x3);

    // --- bounds and culling -------------------------------------------------------------------------------------
    virtual void SetBoundingVolume(const LxBoundingBox& box)
    {
        m_bounds = box;
        m_bWorldBoundsValid = false;
    }
    // The object-space box as given.
    const LxBoundingBox& GetBoundingVolume() const { return m_bounds; }
    // The box in world space (moved by the world transform when there is one); empty when none was set. The moved
    // box is kept until the box changes or WorldTransformChanged is called, so handlers asking for both corners of
    // thousands of objects pay once per change.
    const LxBoundingBox& GetBoundingBox() const;
    // A derived class whose world transform changed calls this (the kept world box is then recomputed).
    void WorldTransformChanged() { m_bWorldBoundsValid = false; }
    // False only when the world box lies wholly outside the frustum.
    bool IntersectsFrustum(const LxFrustum& frustum) const;

private:
    LxString m_name;
    LxArray<LxString> m_properties;
    LxArray<LxObjectListener*> m_listeners;
    LxBoundingBox m_bounds;
    mutable LxBoundingBox m_worldBounds;
    mutable bool m_bWorldBoundsValid = false;
};
