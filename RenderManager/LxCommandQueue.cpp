#include "RenderManager/include/LxCommandQueue.h"

#include "Common/LxLogManager.h"

bool LxCommandQueue::ExecuteCommandLists(const LxArray<LxCountedPtr<LxCommandList>>&)
{
    LX_ERROR("%s ::: IMPLEMENT ME!", "LxCommandQueue::ExecuteCommandLists");
    return false;
}
