// LxParticleKeyFrameChannel: one animated scalar of a keyframed particle parameter, as (time, value) keys kept in
// time order (a key added at an earlier time is inserted in place; keys at equal times keep the order they were
// added in, which makes a jump). Evaluation interpolates linearly between keys and holds the first and last
// values outside them. A plain value: copying copies the keys. Not thread-safe.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxArray.h"

class LX_API LxParticleKeyFrameChannel
{
public:
    void AddKey(float time, float value);
    unsigned int GetKeyCount() const { return m_keys.GetCount(); }
    bool IsEmpty() const { return m_keys.IsEmpty(); }
    float GetKeyTime(unsigned int i) const { return m_keys[i].time; }
    float GetKeyValue(unsigned int i) const { return m_keys[i].value; }
    // 0 for a channel without keys.
    float Evaluate(float time) const;

private:
    struct Key
    {
        float time;
        float value;
    };
    LxArray<Key> m_keys;
};
