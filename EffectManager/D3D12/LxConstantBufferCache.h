// LxConstantBufferCache: the constant buffers of one effect, found by reflecting its shaders. Shaders that declare
// the same cbuffer (same name, size and variable layout) share one LxConstantBuffer, so a value is written once
// however many passes read it.
//
// A buffer's shadow memory backs the effect parameters its variables name: where a variable's layout equals the
// parameter's packed storage (a scalar, a full vector or matrix, an array of 16-byte elements) the parameter's
// storage is moved into the shadow memory (LxEffectParameter::SetStorage), once per parameter; every other variable
// (arrays of scalars, narrower vectors, row-major matrices, a parameter already backed by another buffer) is copied
// from the parameter into the shadow memory when the buffer is uploaded.
//
// Upload copies the shadow memory into the upload ring of the Direct3D 12 resource manager for the draw at hand and
// returns its GPU address, so values changed between draws reach each draw. Within a frame a buffer whose variables
// are all backed directly and unchanged reuses its last copy.
//
// Owned by the effect (LxD3D12Effect); ReleaseStorage hands the parameters their own storage back before it goes.
// Not thread-safe: one thread draws with an effect at a time.
#pragma once

#include "Common/LxArray.h"
#include "Common/LxCountedPtr.h"
#include "Common/LxString.h"
#include "EffectManager/LxEffectParameter.h"
#include "GPUResourceManager/LxConstantBuffer.h"

#include <d3d12.h>

class LX_API LxConstantBufferCache
{
public:
    // One variable of a buffer and the parameter behind it.
    struct Variable
    {
        LxEffectParameter* parameter = nullptr;
        unsigned int offset = 0;       // byte offset in the buffer
        unsigned int count = 1;        // elements copied
        unsigned int stride = 0;       // bytes from one element to the next in the buffer
        unsigned int elementBytes = 0; // bytes copied per element
        bool transpose = false;        // a row-major 4x4 matrix
        bool direct = false;           // the parameter's storage lives in the shadow memory
    };

    struct Entry
    {
        LxString name;
        LxString key;
        unsigned int size = 0;
        LxCountedPtr<LxConstantBuffer> buffer;
        LxArray<Variable> variables;
        bool allDirect = true;
        // The last upload: reused while the frame and the shadow contents are the same.
        unsigned long long uploadFrame = ~0ull;
        D3D12_GPU_VIRTUAL_ADDRESS uploadAddress = 0;
        LxArray<unsigned char> uploaded;
    };

    LxConstantBufferCache() = default;
    ~LxConstantBufferCache();
    LxConstantBufferCache(const LxConstantBufferCache&) = delete;
    LxConstantBufferCache& operator=(const LxConstantBufferCache&) = delete;

    // The buffer named `name` of `size` bytes with these variables: the existing one when an earlier shader
    // declared the same layout, else a new one (variables that can be backed directly are set up so).
    Entry* FindOrAdd(const LxString& name, unsigned int size, const LxArray<Variable>& variables);
    unsigned int GetCount() const { return m_entries.GetCount(); }
    Entry* Get(unsigned int index) const { return m_entries[index]; }

    // Copies the variables that are not backed directly into the shadow memory.
    static void Sync(Entry& entry);
    // Sync, then the shadow memory into upload memory of the current frame; 0 after reporting a failure.
    static D3D12_GPU_VIRTUAL_ADDRESS Upload(Entry& entry);

    // Parameters backed by a buffer get their own storage again (the buffers are about to go).
    void ReleaseStorage();

private:
    LxArray<Entry*> m_entries;
    LxArray<LxEffectParameter*> m_backed;
};
