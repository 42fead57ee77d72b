#include "ParticleSystem/LxParticleTextureSet.h"

bool LxParticleTextureSet::AddSlot(const LxString& slot, const LxString& file)
{
    if (FindFile(slot))
        return false;
    m_slotIndex.Set(slot, m_slots.Add(Slot{slot, file}));
    return true;
}

const LxString* LxParticleTextureSet::FindFile(const LxString& slot) const
{
    const unsigned int* i = m_slotIndex.FindValue(slot);
    return i ? &m_slots[*i].file : nullptr;
}
