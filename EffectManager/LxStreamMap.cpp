#include "EffectManager/LxStreamMap.h"

#include "EffectManager/LxVertexStreamDecl.h"

LxStreamMap::LxStreamMap(const LxString& name, const LxAnnotationMap* annotations) : m_name(name)
{
    if (annotations)
        m_annotations = *annotations;
}

void LxStreamMap::AppendVertexStreamName(const LxString& streamName, LxVertexStreamDecl* decl)
{
    m_entries.Add(Entry{streamName, decl});
}

LxVertexStreamDecl* LxStreamMap::GetStreamDecl(unsigned int index) const
{
    return index < m_entries.GetCount() ? m_entries[index].decl : nullptr;
}

void LxStreamMap::SetStreamDecl(unsigned int index, LxVertexStreamDecl* decl)
{
    if (index < m_entries.GetCount())
        m_entries[index].decl = decl;
}

bool LxStreamMap::IsStreamInstanced(unsigned int index) const
{
    const LxVertexStreamDecl* decl = GetStreamDecl(index);
    return decl && decl->GetAnnotations().ValueExists("InstanceData");
}
