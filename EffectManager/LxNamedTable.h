// LxNamedTable<T>: the owned, name-keyed tables of an effect (parameters, techniques, slots, samplers, streams):
// lookup by name through a hash map, iteration in declaration order. Deletes its objects.
#pragma once

#include "Common/LxArray.h"
#include "Common/LxHashMap.h"
#include "Common/LxString.h"

template <class T>
class LxNamedTable
{
public:
    LxNamedTable() = default;
    ~LxNamedTable() { Clear(); }
    LxNamedTable(const LxNamedTable&) = delete;
    LxNamedTable& operator=(const LxNamedTable&) = delete;

    // Takes ownership; false (and nothing taken) when the name is already present.
    bool Add(const LxString& name, T* object)
    {
        if (!m_byName.Insert(name, object).second)
            return false;
        m_ordered.Add(object);
        return true;
    }
    T* Find(const LxString& name) const
    {
        T* const* p = m_byName.FindValue(name);
        return p ? *p : nullptr;
    }
    unsigned int GetCount() const { return m_ordered.GetCount(); }
    T* operator[](unsigned int index) const { return index < m_ordered.GetCount() ? m_ordered[index] : nullptr; }
    int IndexOf(const T* object) const
    {
        for (unsigned int i = 0; i < m_ordered.GetCount(); ++i)
            if (m_ordered[i] == object)
                return static_cast<int>(i);
        return -1;
    }
    void Clear()
    {
        for (unsigned int i = m_ordered.GetCount(); i-- > 0;)
            delete m_ordered[i];
        m_ordered.Clear();
        m_byName.Clear();
    }

private:
    LxArray<T*> m_ordered;
    LxHashMap<LxString, T*, LxStringHasher> m_byName;
};
