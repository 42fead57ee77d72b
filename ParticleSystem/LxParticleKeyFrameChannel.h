// LxParticleKeyFrameChannel: one animated scalar of a keyframed particle parameter, as (time, value) keys.
// AddKey appends; SortKeys puts the keys in time order, keeping keys at equal times in the order they were added
// (which makes a jump). The builder sorts every channel it is given, so the channels of a built description are in
// time order. Evaluation (of a sorted channel) interpolates linearly between keys and holds the first and last
// values outside them. A plain value: copying copies the keys. Not thread-safe while being changed; concurrent
// const use is safe.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxArray.h"

class LX_API LxParticleKeyFrameChannel
{
public:
    void AddKey(float time, float value) { m_keys.Add(Key{time, value}); }
    void SortKeys();
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
