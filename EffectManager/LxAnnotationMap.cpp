#include "EffectManager/LxAnnotationMap.h"

#include <cstring>

const LxAnnotationMap::Entry* LxAnnotationMap::FindEntry(const char* name, unsigned int length) const
{
    for (const Entry& e : m_entries)
        if (e.name.GetLength() == length && std::memcmp(e.name.c_str(), name, length) == 0)
            return &e;
    return nullptr;
}

void LxAnnotationMap::SetValue(const LxString& name, const LxCountedPtr<LxAnnotationValue>& value)
{
    Entry* e = const_cast<Entry*>(FindEntry(name.c_str(), name.GetLength()));
    if (e)
        e->value = value;
    else
        m_entries.Add(Entry{name, value});
}

bool LxAnnotationMap::RemoveValue(const LxString& name)
{
    for (unsigned int i = 0; i < m_entries.GetCount(); ++i)
        if (m_entries[i].name == name)
        {
            m_entries.RemoveAt(i);
            return true;
        }
    return false;
}

void LxAnnotationMap::Merge(const LxAnnotationMap& other)
{
    for (const Entry& e : other.m_entries)
        SetValue(e.name, e.value);
}

LxCountedPtr<LxAnnotationValue> LxAnnotationMap::LookupValue(const LxString& path) const
{
    // Walk the path part by part; every part but the last must name a nested map.
    const LxAnnotationMap* map = this;
    const char* p = path.c_str();
    for (;;)
    {
        const char* dot = std::strchr(p, '.');
        const unsigned int length =
            dot ? static_cast<unsigned int>(dot - p) : static_cast<unsigned int>(std::strlen(p));
        const Entry* e = map->FindEntry(p, length);
        if (!e)
            return LxCountedPtr<LxAnnotationValue>();
        if (!dot)
            return e->value;
        if (!e->value->IsMap())
            return LxCountedPtr<LxAnnotationValue>();
        map = e->value->GetMap();
        p = dot + 1;
    }
}

bool LxAnnotationMap::ValueExists(const LxString& path) const
{
    return LookupValue(path) != nullptr;
}

float LxAnnotationMap::LookupFloat(const LxString& path, float defaultValue) const
{
    LxCountedPtr<LxAnnotationValue> v = LookupValue(path);
    if (!v)
        return defaultValue;
    if (!v->IsFloat())
    {
        v->GetFloat(); // reports the type error
        return defaultValue;
    }
    return v->GetFloat();
}

bool LxAnnotationMap::LookupBool(const LxString& path, bool defaultValue) const
{
    LxCountedPtr<LxAnnotationValue> v = LookupValue(path);
    if (!v)
        return defaultValue;
    if (!v->IsBool())
    {
        v->GetBool(); // reports the type error
        return defaultValue;
    }
    return v->GetBool();
}

LxString LxAnnotationMap::LookupString(const LxString& path, const LxString& defaultValue) const
{
    LxCountedPtr<LxAnnotationValue> v = LookupValue(path);
    if (!v)
        return defaultValue;
    if (!v->IsString())
    {
        v->GetString(); // reports the type error
        return defaultValue;
    }
    return v->GetString();
}

LxVector4 LxAnnotationMap::LookupVector(const LxString& path, const LxVector4& defaultValue) const
{
    LxCountedPtr<LxAnnotationValue> v = LookupValue(path);
    if (!v)
        return defaultValue;
    if (!v->IsVector())
    {
        v->GetVector(); // reports the type error
        return defaultValue;
    }
    return v->GetVector();
}
