// LxVertexStreamDecl: a named vertex stream ("Stream Vertices { float3 POSITION, float3 NORMAL }"): its elements in
// order, tightly packed. Owns its elements. A stream whose annotations hold "InstanceData" is fed per instance; one
// whose annotations hold "Mimic" = "OtherStream" shares the layout of that stream (checked when the effect is
// finalized).
#pragma once

#include "Common/LxApi.h"
#include "Common/LxArray.h"
#include "Common/LxString.h"
#include "EffectManager/LxAnnotationMap.h"
#include "EffectManager/LxVertexElement.h"

class LX_API LxVertexStreamDecl
{
public:
    explicit LxVertexStreamDecl(const LxString& name, const LxAnnotationMap* annotations = nullptr);
    ~LxVertexStreamDecl();
    LxVertexStreamDecl(const LxVertexStreamDecl&) = delete;
    LxVertexStreamDecl& operator=(const LxVertexStreamDecl&) = delete;

    const LxString& GetName() const { return m_name; }
    const LxAnnotationMap& GetAnnotations() const { return m_annotations; }

    // Takes ownership of the element.
    void AppendVertexElement(LxVertexElement* element);
    unsigned int GetNumElements() const { return m_elements.GetCount(); }
    const LxVertexElement* GetElement(unsigned int index) const { return m_elements[index]; }

    // Sum of the element sizes.
    unsigned int GetStride() const;
    // Sum of the sizes of the elements before `element`; 0 with an error when it is not in this stream.
    unsigned int GetElementOffset(const LxVertexElement* element) const;
    // Appends every element whose first name equals `name`.
    void GetElementsBySemantic(const LxString& name, LxArray<const LxVertexElement*>& out) const;

private:
    LxString m_name;
    LxAnnotationMap m_annotations;
    LxArray<LxVertexElement*> m_elements;
};
