#include "EffectManager/LxAnnotationMap.h"

#include <cstring>

void LxAnnotationMap::SetValue(const LxString& name, const LxCountedPtr<LxAnnotationValue>& value)
{
    if (m_values.Insert(name, value).second)
        m_names.Add(name);
    else
        m_values.Set(name, value);
}

bool LxAnnotationMap::RemoveValue(const LxString& name)
{
    if (!m_values.Erase(name))
        return false;
    m_names.Remove(name);
    return true;
}

void LxAnnotationMap::Merge(const LxAnnotationMap& other)
{
    for (unsigned int i = 0; i < other.m_names.Count(); ++i)
        SetValue(other.m_names[i], other.GetValue(i));
}

LxCountedPtr<LxAnnotationValue> LxAnnotationMap::GetValue(unsigned int index) const
{
    const LxCountedPtr<LxAnnotationValue>* v = m_values.FindValue(m_names[index]);
    return v ? *v : LxCountedPtr<LxAnnotationValue>();
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
        const LxCountedPtr<LxAnnotationValue>* v = map->m_values.FindValue(LxString(p, length));
        if (!v)
            return LxCountedPtr<LxAnnotationValue>();
        if (!dot)
            return *v;
        if (!(*v)->IsMap())
            return LxCountedPtr<LxAnnotationValue>();
        map = (*v)->GetMap();
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
