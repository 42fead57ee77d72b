#include "ObjectManager/LxObject.h"

#include "Common/LxLogManager.h"
#include "ObjectManager/LxBoundingVolumeVisualizer.h"
#include "ObjectManager/LxObjectListener.h"

LxObject::LxObject(const LxString& name) : m_name(name) {}

LxObject::~LxObject() = default;

void LxObject::AddProperty(const LxString& property)
{
    if (!m_properties.Contains(property))
        m_properties.Add(property);
}

void LxObject::AttachListener(LxObjectListener* listener)
{
    if (listener && !m_listeners.Contains(listener))
        m_listeners.Add(listener);
}

bool LxObject::DetachListener(LxObjectListener* listener)
{
    return m_listeners.Remove(listener);
}

void LxObject::NotifyListenersOfUpdate(double time)
{
    // A listener may detach itself while being told; walk a copy.
    const LxArray<LxObjectListener*> listeners = m_listeners;
    for (LxObjectListener* l : listeners)
        l->OnObjectUpdate(this, time);
}

void LxObject::NotifyListenersOfReload()
{
    const LxArray<LxObjectListener*> listeners = m_listeners;
    for (LxObjectListener* l : listeners)
        l->OnObjectReload(this);
}

void LxObject::UpdateObject(double time)
{
    NotifyListenersOfUpdate(time);
}

bool LxObject::Draw(const LxFrustum*)
{
    return false;
}

bool LxObject::SetVisible(bool)
{
    LX_ERROR("Explicit visibility setting is not implemented for this type.");
    return false;
}

void LxObject::DrawBoundingVolumes(const LxBoundingVolumeVisualizer& visualizer) const
{
    const LxBoundingBox box = GetBoundingBox();
    if (!box.IsEmpty())
        visualizer.DrawBox(box);
}

bool LxObject::GetStaticBoundingBox(LxPoint3*, LxPoint3*) const
{
    LX_ERROR("Static bounding box is not available for this object type!");
    return false;
}

bool LxObject::GetStaticBoundingSphere(LxPoint3*, float*) const
{
    LX_ERROR("Static bounding sphere is not available for this object type!");
    return false;
}

bool LxObject::GetWorldTransform(LxMatrix4*) const
{
    LX_ERROR("World transform is not available for this object type!");
    return false;
}

bool LxObject::HandleBoneAppUpdate(void*, unsigned int, bool, bool, bool)
{
    LX_ERROR("The requested bone app-update is not supported for this object type!");
    return false;
}

const LxBoundingBox& LxObject::GetBoundingBox() const
{
    if (m_bWorldBoundsValid)
        return m_worldBounds;
    m_worldBounds = m_bounds;
    LxMatrix4 world;
    if (!m_bounds.IsEmpty() && HasWorldTransform() && GetWorldTransform(&world))
        m_bounds.Transform(world, &m_worldBounds);
    m_bWorldBoundsValid = true;
    return m_worldBounds;
}

bool LxObject::IntersectsFrustum(const LxFrustum& frustum) const
{
    const LxBoundingBox& box = GetBoundingBox();
    if (box.IsEmpty())
        return true;
    return frustum.CullAxisAlignedBox(box) != LxFrustum::LX_CULL_OUTSIDE;
}
