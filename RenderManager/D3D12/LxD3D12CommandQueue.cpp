#include "RenderManager/D3D12/LxD3D12CommandQueue.h"

#include "Common/LxLogManager.h"
#include "RenderManager/D3D12/LxD3D12CommandList.h"

LxD3D12CommandQueue::LxD3D12CommandQueue(LxCommandList::Type type, ID3D12CommandQueue* queue)
    : LxCommandQueue(type), m_queue(queue)
{
}

bool LxD3D12CommandQueue::ExecuteCommandLists(const LxArray<LxCountedPtr<LxCommandList>>& lists)
{
    // Most submissions carry a handful of lists: no allocation for up to 16.
    ID3D12CommandList* inline_[16];
    LxArray<ID3D12CommandList*> many;
    ID3D12CommandList** platform = inline_;
    if (lists.GetCount() > 16)
    {
        many.Resize(lists.GetCount());
        platform = many.GetData();
    }
    for (unsigned i = 0; i < lists.GetCount(); ++i)
    {
        const LxCommandList* list = lists[i].Get();
        if (list == nullptr || list->GetType() == LxCommandList::BUNDLE || !list->IsClosed())
        {
            LX_ERROR("LxD3D12CommandQueue::ExecuteCommandLists.  List %u is missing, a bundle or still open.", i);
            return false;
        }
        platform[i] = static_cast<const LxD3D12CommandList*>(list)->GetD3D12CommandList();
    }
    if (!lists.IsEmpty())
    {
        m_queue->ExecuteCommandLists(lists.GetCount(), platform);
    }
    return true;
}
