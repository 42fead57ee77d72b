#include "ParticleSystem/LxParticleTransform.h"

void LxParticleTransform::AddVectorItem(ItemKind kind, const LxVector3& value)
{
    m_items.Add(Item{kind, value, LxString(), LxString(), 0.0f});
}

void LxParticleTransform::AddAnimationItem(const LxString& curve, const LxString& curve2, float timeOffset)
{
    m_items.Add(Item{ANIMATION, LxVector3(), curve, curve2, timeOffset});
}

const LxParticleTransform::Item* LxParticleTransform::FindLast(ItemKind kind) const
{
    for (unsigned int i = m_items.GetCount(); i > 0; --i)
        if (m_items[i - 1].kind == kind)
            return &m_items[i - 1];
    return nullptr;
}

LxVector3 LxParticleTransform::GetTranslation() const
{
    const Item* item = FindLast(TRANSLATION);
    return item ? item->value : LxVector3();
}

LxVector3 LxParticleTransform::GetRotation() const
{
    const Item* item = FindLast(ROTATION);
    return item ? item->value : LxVector3();
}

LxVector3 LxParticleTransform::GetScale() const
{
    const Item* item = FindLast(SCALE);
    return item ? item->value : LxVector3(1.0f, 1.0f, 1.0f);
}

LxVector3 LxParticleTransform::GetShear() const
{
    const Item* item = FindLast(SHEAR);
    return item ? item->value : LxVector3();
}

const LxParticleTransform::Item* LxParticleTransform::GetAnimation() const
{
    return FindLast(ANIMATION);
}
