#include "RenderManager/include/LxFrameRing.h"

#include "Common/LxLogManager.h"
#include "RenderManager/include/LxFence.h"
#include "RenderManager/include/LxFrameEndListener.h"

bool LxFrameRing::Initialize(unsigned framesInFlight, LxFence* fence)
{
    if (fence == nullptr)
    {
        LX_ERROR("LxFrameRing::Initialize.  No fence.");
        return false;
    }
    if (framesInFlight == 0)
    {
        framesInFlight = 1;
    }
    m_pFence = fence;
    m_nNextValue = 0;
    m_slotValues.Clear();
    for (unsigned i = 0; i < framesInFlight; ++i)
    {
        m_slotValues.Add(0);
    }
    // The first BeginFrame advances onto slot 0.
    m_nCurrentSlot = framesInFlight - 1;
    if (!m_pFence->Signal(m_nNextValue))
    {
        m_pFence = nullptr;
        return false;
    }
    m_nLastSignalled = m_nNextValue++;
    return true;
}

int LxFrameRing::BeginFrame()
{
    if (m_pFence == nullptr)
    {
        LX_ERROR("LxFrameRing::BeginFrame.  The frame ring is not initialised.");
        return -1;
    }
    m_nCurrentSlot = (m_nCurrentSlot + 1) % m_slotValues.GetCount();
    if (!m_pFence->Wait(m_slotValues[m_nCurrentSlot]))
    {
        return -1;
    }
    return static_cast<int>(m_nCurrentSlot);
}

unsigned long long LxFrameRing::EndFrame()
{
    if (m_pFence == nullptr)
    {
        LX_ERROR("LxFrameRing::EndFrame.  The frame ring is not initialised.");
        return 0;
    }
    const unsigned long long value = m_nNextValue;
    for (LxFrameEndListener* listener : m_listeners)
    {
        listener->OnFrameEnd(m_pFence, value);
    }
    // A value is never reused, signalled or not.
    ++m_nNextValue;
    if (!m_pFence->Signal(value))
    {
        // The fence will never reach `value`: the slot waits for the last value that was signalled instead, so the
        // next frame on this slot does not block forever.
        m_slotValues[m_nCurrentSlot] = m_nLastSignalled;
        return 0;
    }
    m_nLastSignalled = value;
    m_slotValues[m_nCurrentSlot] = value;
    return value;
}

bool LxFrameRing::Flush()
{
    if (m_pFence == nullptr)
    {
        LX_ERROR("LxFrameRing::Flush.  The frame ring is not initialised.");
        return false;
    }
    const unsigned long long value = m_nNextValue++;
    if (!m_pFence->Signal(value))
    {
        return false;
    }
    m_nLastSignalled = value;
    return m_pFence->Wait(value);
}

void LxFrameRing::AddFrameEndListener(LxFrameEndListener* listener)
{
    if (listener != nullptr && !m_listeners.Contains(listener))
    {
        m_listeners.Add(listener);
    }
}

void LxFrameRing::RemoveFrameEndListener(LxFrameEndListener* listener)
{
    m_listeners.Remove(listener);
}
