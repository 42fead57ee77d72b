#include "RenderManager/include/LxFence.h"

bool LxFence::Wait(unsigned long long value)
{
    if (GetCompletedValue() >= value)
    {
        return true;
    }
    if (!ArmWait(value))
    {
        return false;
    }
    WaitForArmedValue();
    return true;
}
