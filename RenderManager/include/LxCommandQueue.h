// LxCommandQueue: a GPU queue of one list kind (never BUNDLE) to which closed command lists are submitted in one
// platform call. The platform class (LxD3D12CommandQueue) implements ExecuteCommandLists. Submission runs on one
// thread at a time (the render manager submits from the main thread or under the worker's list lock).
#pragma once

#include "Common/LxApi.h"
#include "Common/LxArray.h"
#include "Common/LxCountedPtr.h"
#include "RenderManager/include/LxCommandList.h"

class LX_API LxCommandQueue
{
public:
    explicit LxCommandQueue(LxCommandList::Type type) : m_type(type) {}
    virtual ~LxCommandQueue() = default;
    LxCommandQueue(const LxCommandQueue&) = delete;
    LxCommandQueue& operator=(const LxCommandQueue&) = delete;

    LxCommandList::Type GetType() const { return m_type; }

    // Submits every list, in order, in one call. False (logged) on failure. Base: IMPLEMENT ME.
    virtual bool ExecuteCommandLists(const LxArray<LxCountedPtr<LxCommandList>>& lists);

private:
    LxCommandList::Type m_type;
};
