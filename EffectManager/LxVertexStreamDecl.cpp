#include "EffectManager/LxVertexStreamDecl.h"

#include "Common/LxLogManager.h"

LxVertexStreamDecl::LxVertexStreamDecl(const LxString& name, const LxAnnotationMap* annotations) : m_name(name)
{
    if (annotations)
        m_annotations = *annotations;
}

LxVertexStreamDecl::~LxVertexStreamDecl()
{
    for (LxVertexElement* e : m_elements)
        delete e;
}

void LxVertexStreamDecl::AppendVertexElement(LxVertexElement* element)
{
    if (element)
        m_elements.Add(element);
}

unsigned int LxVertexStreamDecl::GetStride() const
{
    unsigned int stride = 0;
    for (const LxVertexElement* e : m_elements)
        stride += e->GetSize();
    return stride;
}

unsigned int LxVertexStreamDecl::GetElementOffset(const LxVertexElement* element) const
{
    unsigned int offset = 0;
    for (const LxVertexElement* e : m_elements)
    {
        if (e == element)
            return offset;
        offset += e->GetSize();
    }
    LX_ERROR("Invalid vertex element passed to GetElementOffset!!");
    return 0;
}

void LxVertexStreamDecl::GetElementsBySemantic(const LxString& name, LxArray<const LxVertexElement*>& out) const
{
    for (const LxVertexElement* e : m_elements)
        if (e->GetName() == name)
            out.Add(e);
}
