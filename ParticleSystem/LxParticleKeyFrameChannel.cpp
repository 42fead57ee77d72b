#include "ParticleSystem/LxParticleKeyFrameChannel.h"

#include <algorithm>

void LxParticleKeyFrameChannel::SortKeys()
{
    // Stable, so that keys at one time keep their order; n log n whatever order the file wrote them in.
    std::stable_sort(m_keys.begin(), m_keys.end(), [](const Key& a, const Key& b) { return a.time < b.time; });
}

float LxParticleKeyFrameChannel::Evaluate(float time) const
{
    const unsigned int n = m_keys.GetCount();
    if (n == 0)
        return 0.0f;
    if (!(time > m_keys[0].time))
        return m_keys[0].value;
    if (time >= m_keys[n - 1].time)
        return m_keys[n - 1].value;
    // The first key after `time`; the segment is the one before it.
    const Key* next =
        std::upper_bound(m_keys.begin(), m_keys.end(), time, [](float t, const Key& k) { return t < k.time; });
    const Key& a = *(next - 1);
    const Key& b = *next;
    const float span = b.time - a.time;
    if (!(span > 0.0f))
        return b.value;
    return a.value + (b.value - a.value) * ((time - a.time) / span);
}
