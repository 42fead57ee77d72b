#include "EffectManager/D3D12/LxConstantBufferCache.h"

#include "Common/LxLogManager.h"
#include "GPUResourceManager/D3D12/LxD3D12ConstantBuffer.h"
#include "GPUResourceManager/D3D12/LxD3D12GPUResourceManager.h"

#include <cstring>

LxConstantBufferCache::~LxConstantBufferCache()
{
    ReleaseStorage();
    for (Entry* entry : m_entries)
        delete entry;
}

void LxConstantBufferCache::ReleaseStorage()
{
    for (LxEffectParameter* parameter : m_backed)
        parameter->SetStorage(nullptr);
    m_backed.Clear();
    for (Entry* entry : m_entries)
    {
        for (Variable& variable : entry->variables)
            variable.direct = false;
        entry->allDirect = entry->variables.IsEmpty();
    }
}

LxConstantBufferCache::Entry* LxConstantBufferCache::FindOrAdd(const LxString& name, unsigned int size,
                                                               const LxArray<Variable>& variables)
{
    LxString key;
    key.Format("%s:%u", name.c_str(), size);
    for (const Variable& v : variables)
    {
        LxString part;
        part.Format("|%s@%u*%u/%u:%u%s", v.parameter->GetName().c_str(), v.offset, v.count, v.stride, v.elementBytes,
                    v.transpose ? "T" : "");
        key.Append(part);
    }
    for (Entry* entry : m_entries)
    {
        if (entry->key == key)
            return entry;
    }
    Entry* entry = new Entry();
    entry->name = name;
    entry->key = key;
    entry->size = size;
    entry->buffer =
        LxCountedPtr<LxConstantBuffer>(new LxD3D12ConstantBuffer(LxGPUResource::GPU_RESOURCE_DYNAMIC, 0, 0, 0, size));
    entry->variables = variables;
    entry->allDirect = true;
    unsigned char* shadow = entry->buffer->GetShadowData();
    for (Variable& v : entry->variables)
    {
        const unsigned int elementSize = LxEffectParameter::GetDataTypeSize(v.parameter->GetDataType());
        // Packed parameter storage equals the buffer's layout for one element of the parameter's own size, or for
        // 16-byte elements (vectors, matrices), whose array stride is their size.
        const bool sameLayout = !v.transpose && v.elementBytes == elementSize &&
                                v.count == v.parameter->GetArrayCount() && (v.count == 1 || v.stride == elementSize);
        if (sameLayout && !m_backed.Contains(v.parameter) && v.offset + v.parameter->GetParameterSize() <= size)
        {
            v.parameter->SetStorage(shadow + v.offset);
            m_backed.Add(v.parameter);
            v.direct = true;
        }
        else
        {
            v.direct = false;
            entry->allDirect = false;
        }
    }
    m_entries.Add(entry);
    return entry;
}

void LxConstantBufferCache::Sync(Entry& entry)
{
    unsigned char* shadow = entry.buffer->GetShadowData();
    for (const Variable& v : entry.variables)
    {
        if (v.direct)
            continue;
        const unsigned char* source = static_cast<const unsigned char*>(v.parameter->GetDataPtr());
        const unsigned int elementSize = LxEffectParameter::GetDataTypeSize(v.parameter->GetDataType());
        for (unsigned int i = 0; i < v.count && i < v.parameter->GetArrayCount(); ++i)
        {
            unsigned char* target = shadow + v.offset + i * v.stride;
            const unsigned char* element = source + i * elementSize;
            if (v.transpose)
            {
                const float* m = reinterpret_cast<const float*>(element);
                float t[16];
                for (int r = 0; r < 4; ++r)
                    for (int c = 0; c < 4; ++c)
                        t[r * 4 + c] = m[c * 4 + r];
                std::memcpy(target, t, sizeof(t));
            }
            else
                std::memcpy(target, element, v.elementBytes < elementSize ? v.elementBytes : elementSize);
        }
    }
}

D3D12_GPU_VIRTUAL_ADDRESS LxConstantBufferCache::Upload(Entry& entry)
{
    LxD3D12GPUResourceManager* manager = LxD3D12GPUResourceManager::GetD3D12Ptr();
    if (!manager || !manager->GetDevice())
    {
        LX_ERROR("LxConstantBufferCache::Upload.  No Direct3D 12 resource manager to upload constant buffer '%s'",
                 entry.name.c_str());
        return 0;
    }
    Sync(entry);
    LxD3D12UploadHeap& heap = manager->GetUploadHeap();
    const unsigned char* shadow = entry.buffer->GetShadowData();
    // Unchanged contents in the same frame: the earlier copy is still what the GPU will read.
    if (entry.uploadAddress != 0 && entry.uploadFrame == heap.GetFrameCounter() &&
        entry.uploaded.GetCount() == entry.size && std::memcmp(entry.uploaded.GetData(), shadow, entry.size) == 0)
        return entry.uploadAddress;
    LxUploadAllocation allocation;
    const unsigned long long bytes = LxUploadHeap::AlignUp(entry.size ? entry.size : 16, 256);
    if (!heap.Allocate(bytes, D3D12_CONSTANT_BUFFER_DATA_PLACEMENT_ALIGNMENT, &allocation) ||
        !allocation.GetCPUAddress())
    {
        LX_ERROR("LxConstantBufferCache::Upload.  No upload memory for constant buffer '%s'", entry.name.c_str());
        return 0;
    }
    std::memcpy(allocation.GetCPUAddress(), shadow, entry.size);
    entry.uploadFrame = heap.GetFrameCounter();
    entry.uploadAddress = heap.GetGPUAddress(allocation);
    if (entry.uploaded.GetCount() != entry.size)
        entry.uploaded.Resize(entry.size);
    std::memcpy(entry.uploaded.GetData(), shadow, entry.size);
    entry.buffer->ClearDirty();
    return entry.uploadAddress;
}
