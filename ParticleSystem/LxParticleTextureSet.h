// LxParticleTextureSet: a named set of textures of a particle system: which file each shader slot of the
// particle effect is bound to. File names are as the file wrote them until the group loader applies the
// archive's texture remapping. A plain description; not thread-safe.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxArray.h"
#include "Common/LxHashMap.h"
#include "Common/LxString.h"

class LX_API LxParticleTextureSet
{
public:
    struct Slot
    {
        LxString slot;
        LxString file;
    };

    explicit LxParticleTextureSet(const LxString& name) : m_name(name) {}

    const LxString& GetName() const { return m_name; }
    // False when the slot is already bound.
    bool AddSlot(const LxString& slot, const LxString& file);
    unsigned int GetSlotCount() const { return m_slots.GetCount(); }
    const Slot& GetSlot(unsigned int i) const { return m_slots[i]; }
    void SetSlotFile(unsigned int i, const LxString& file) { m_slots[i].file = file; }
    // The file bound to `slot`, or null.
    const LxString* FindFile(const LxString& slot) const;

private:
    LxString m_name;
    LxArray<Slot> m_slots;
    LxHashMap<LxString, unsigned int, LxStringHasher> m_slotIndex;
};
