#include "ParticleSystem/LxParticleKeyFrameChannel.h"

void LxParticleKeyFrameChannel::AddKey(float time, float value)
{
    // Editor files list keys in order, so the usual case is an append.
    unsigned int at = m_keys.GetCount();
    while (at > 0 && m_keys[at - 1].time > time)
        --at;
    m_keys.Insert(at, Key{time, value});
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
    unsigned int i = 0;
    while (i + 1 < n && m_keys[i + 1].time <= time)
        ++i;
    const Key& a = m_keys[i];
    const Key& b = m_keys[i + 1];
    const float span = b.time - a.time;
    if (!(span > 0.0f))
        return b.value;
    const float u = (time - a.time) / span;
    return a.value + (b.value - a.value) * u;
}
