// LxD3D12CommandList: an LxCommandList over an ID3D12GraphicsCommandList of the same kind (direct, bundle, compute,
// copy). A frame list records into command allocators the render manager takes from the calling worker's pool of the
// current frame slot (Reset takes a fresh one, so reset a frame list once per frame before recording); a list with
// its own allocator (bundles recorded once, lists the caller synchronises itself) resets that allocator, which is
// only legal once the GPU has finished everything recorded into it.
// Ownership: made by LxD3D12RenderManager::CreateCommandList and shared as LxCountedPtr; holds one reference to the
// platform list and to its own allocator. One thread at a time (the worker that records it).
#pragma once

#include "Common/LxApi.h"
#include "RenderManager/include/LxCommandList.h"

#include <d3d12.h>
#include <wrl/client.h>

class LxD3D12RenderManager;

class LX_API LxD3D12CommandList : public LxCommandList
{
public:
    // `ownAllocator` null: a frame list whose allocators come from `owner`.
    LxD3D12CommandList(Type type, ID3D12GraphicsCommandList* list, ID3D12CommandAllocator* ownAllocator,
                       LxD3D12RenderManager* owner);

    ID3D12GraphicsCommandList* GetD3D12CommandList() const { return m_list.Get(); }
    bool IsFrameList() const { return m_ownAllocator == nullptr; }

    static D3D12_COMMAND_LIST_TYPE ToD3D12Type(Type type) { return static_cast<D3D12_COMMAND_LIST_TYPE>(type); }

protected:
    bool APIClose() override;
    bool APIReset() override;

private:
    Microsoft::WRL::ComPtr<ID3D12GraphicsCommandList> m_list;
    Microsoft::WRL::ComPtr<ID3D12CommandAllocator> m_ownAllocator;
    LxD3D12RenderManager* m_pOwner;
};
