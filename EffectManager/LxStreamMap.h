// LxStreamMap: the ordered vertex streams a pass reads ("StreamMap DefaultMap { Vertices, Instances }"); stream i
// of the map is input slot i. Entries pair a stream name with its declaration, which the effect owns; the
// declaration pointer is null until the effect resolves it (LxEffect::Finalize).
#pragma once

#include "Common/LxApi.h"
#include "Common/LxArray.h"
#include "Common/LxString.h"
#include "EffectManager/LxAnnotationMap.h"

class LxVertexStreamDecl;

class LX_API LxStreamMap
{
public:
    explicit LxStreamMap(const LxString& name, const LxAnnotationMap* annotations = nullptr);

    const LxString& GetName() const { return m_name; }
    const LxAnnotationMap& GetAnnotations() const { return m_annotations; }

    void AppendVertexStreamName(const LxString& streamName, LxVertexStreamDecl* decl);
    unsigned int GetNumStreams() const { return m_entries.GetCount(); }
    const LxString& GetStreamName(unsigned int index) const { return m_entries[index].name; }
    // Null for an index out of range or an unresolved entry.
    LxVertexStreamDecl* GetStreamDecl(unsigned int index) const;
    void SetStreamDecl(unsigned int index, LxVertexStreamDecl* decl);
    // True exactly when the declaration at `index` has an "InstanceData" annotation, whatever its value.
    bool IsStreamInstanced(unsigned int index) const;

private:
    struct Entry
    {
        LxString name;
        LxVertexStreamDecl* decl;
    };
    LxString m_name;
    LxAnnotationMap m_annotations;
    LxArray<Entry> m_entries;
};
