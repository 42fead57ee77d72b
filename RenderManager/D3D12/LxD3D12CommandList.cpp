#include "RenderManager/D3D12/LxD3D12CommandList.h"

#include "Common/LxLogManager.h"
#include "RenderManager/D3D12/LxD3D12RenderManager.h"

LxD3D12CommandList::LxD3D12CommandList(Type type, ID3D12GraphicsCommandList* list, ID3D12CommandAllocator* ownAllocator,
                                       LxD3D12RenderManager* owner)
    : LxCommandList(type), m_list(list), m_ownAllocator(ownAllocator), m_pOwner(owner)
{
}

bool LxD3D12CommandList::APIClose()
{
    const HRESULT hr = m_list->Close();
    if (FAILED(hr))
    {
        LX_ERROR("LxD3D12CommandList::Close.  ID3D12GraphicsCommandList::Close failed (0x%08lX).",
                 static_cast<unsigned long>(hr));
        return false;
    }
    return true;
}

bool LxD3D12CommandList::APIReset()
{
    ID3D12CommandAllocator* allocator = m_ownAllocator.Get();
    if (allocator == nullptr)
    {
        allocator = m_pOwner->TakeFrameAllocator(ToD3D12Type(GetType()));
        if (allocator == nullptr)
        {
            return false;
        }
    }
    else if (FAILED(allocator->Reset()))
    {
        LX_ERROR("LxD3D12CommandList::Reset.  The list's allocator could not be reset: is its work still running?");
        return false;
    }
    // An open list must be closed before it can be reset.
    if (!IsClosed())
    {
        m_list->Close();
    }
    const HRESULT hr = m_list->Reset(allocator, nullptr);
    if (FAILED(hr))
    {
        LX_ERROR("LxD3D12CommandList::Reset.  ID3D12GraphicsCommandList::Reset failed (0x%08lX).",
                 static_cast<unsigned long>(hr));
        return false;
    }
    return true;
}
