#include "RenderManager/include/LxCommandList.h"

#include "Common/LxLogManager.h"

bool LxCommandList::Close()
{
    if (m_bClosed)
    {
        LX_ERROR("LxCommandList::Close.  The command list is already closed.");
        return false;
    }
    if (!APIClose())
    {
        return false;
    }
    m_bClosed = true;
    return true;
}

bool LxCommandList::Reset()
{
    if (!APIReset())
    {
        return false;
    }
    m_bClosed = false;
    return true;
}

bool LxCommandList::APIClose()
{
    LX_ERROR("%s ::: IMPLEMENT ME!", "LxCommandList::Close");
    return false;
}

bool LxCommandList::APIReset()
{
    LX_ERROR("%s ::: IMPLEMENT ME!", "LxCommandList::Reset");
    return false;
}
