// LxUAVSlot: an unordered-access resource an effect declares ("RWTexture2D tOut < ... >",
// "AppendStructuredBuffer particles < ... >"). Its "ViewParams" may also hold "Counter" (a bool).
#pragma once

#include "Common/LxCountedPtr.h"
#include "EffectManager/LxShaderResourceSlot.h"
#include "GPUResourceManager/LxGPUUnorderedAccessView.h"

class LX_API LxUAVSlot : public LxShaderResourceSlot
{
public:
    enum Type
    {
        TYPED_BUFFER = 0,             // "RWBuffer"
        TEXTURE_2D = 1,               // "RWTexture2D"
        TEXTURE_3D = 2,               // "RWTexture3D"
        STRUCTURED_BUFFER = 3,        // "RWStructuredBuffer"
        APPEND_STRUCTURED_BUFFER = 4, // "AppendStructuredBuffer"
        RAW_BUFFER = 5,               // "RWByteAddressBuffer"
        APPEND_RAW_BUFFER = 6,        // "AppendByteAddressBuffer"
        NUM_TYPES = 7
    };

    LxUAVSlot(const LxString& name, Type type, const LxAnnotationMap* annotations = nullptr);

    Type GetType() const { return m_type; }
    bool IsBuffer() const { return m_type != TEXTURE_2D && m_type != TEXTURE_3D; }
    static const char* TypeToString(Type type);

    // True when a resource of that kind may be bound here; otherwise reports why.
    bool CheckResourceType(const LxGPUResource& resource) const;
    // The unordered-access view of `resource` this slot describes; null after reporting a failure.
    LxCountedPtr<LxGPUUnorderedAccessView> CreateView(LxGPUResource& resource) const;

protected:
    bool AcceptsCounter() const override { return true; }

private:
    Type m_type;
};
