// LxAnnotationMap: named annotation values of effect objects (parameters, slots, streams, options, shader options).
//
// Every lookup takes a dotted path: "ViewParams.MipLevels" finds "MipLevels" in the map stored under "ViewParams".
// A missing part, or a part before the last that is not a map, makes the lookup fail (null / the default).
// The typed lookups return the default without a message when the entry is missing, and log the annotation
// value's type error when it has another type. Values are shared (LxCountedPtr): copying a map is cheap and the
// copy sees the same immutable values. Entries keep their insertion order for iteration.
//
// Maps are small (a handful of entries per declaration, and there are many declarations), so entries live in one
// array searched linearly: cheaper to build and copy than a hash table, and as fast to search at these sizes.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxArray.h"
#include "Common/LxCountedPtr.h"
#include "Common/LxString.h"
#include "EffectManager/LxAnnotationValue.h"

class LX_API LxAnnotationMap
{
public:
    LxAnnotationMap() = default;
    LxAnnotationMap(const LxAnnotationMap& other) = default;
    LxAnnotationMap& operator=(const LxAnnotationMap& other) = default;

    // Adds or replaces the entry `name` (a plain name, not a path).
    void SetValue(const LxString& name, const LxCountedPtr<LxAnnotationValue>& value);
    void SetValue(const LxString& name, LxAnnotationValue* value)
    {
        SetValue(name, LxCountedPtr<LxAnnotationValue>(value));
    }
    bool RemoveValue(const LxString& name);
    // Copies every entry of `other` into this map, replacing entries of the same name.
    void Merge(const LxAnnotationMap& other);

    LxCountedPtr<LxAnnotationValue> LookupValue(const LxString& path) const;
    bool ValueExists(const LxString& path) const;
    float LookupFloat(const LxString& path, float defaultValue) const;
    bool LookupBool(const LxString& path, bool defaultValue) const;
    LxString LookupString(const LxString& path, const LxString& defaultValue) const;
    LxVector4 LookupVector(const LxString& path, const LxVector4& defaultValue) const;

    unsigned int GetCount() const { return m_entries.GetCount(); }
    bool IsEmpty() const { return m_entries.IsEmpty(); }
    // Entries in insertion order.
    const LxString& GetName(unsigned int index) const { return m_entries[index].name; }
    LxCountedPtr<LxAnnotationValue> GetValue(unsigned int index) const { return m_entries[index].value; }

private:
    struct Entry
    {
        LxString name;
        LxCountedPtr<LxAnnotationValue> value;
    };
    // The entry named by the `length` characters at `name`, or null.
    const Entry* FindEntry(const char* name, unsigned int length) const;

    LxArray<Entry> m_entries;
};
