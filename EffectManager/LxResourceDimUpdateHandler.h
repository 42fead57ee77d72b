// LxResourceDimUpdateHandler: the built-in "ResourceDimensions" / "ResourceInverseDimensions" app-update. Before a
// draw it writes the width, height and depth (1 unless the texture is 3D) of the texture bound to the named texture
// slot of the effect being drawn (LxEffectManager::GetCurrentDrawEffect) into the first three components of a
// Vector parameter, or their reciprocals; the fourth component keeps its value.
//
// Problems (no such slot, nothing bound, a buffer bound, a parameter too small) are reported and leave the value
// as it was. Shared by the parameter it was made for; used on the drawing thread.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxString.h"
#include "EffectManager/LxUpdateHandler.h"

class LxEffect;

class LX_API LxResourceDimUpdateHandler : public LxUpdateHandler
{
public:
    LxResourceDimUpdateHandler(const LxString& slotName, bool inverse);

    const LxString& GetSlotName() const { return m_slotName; }
    bool IsInverse() const { return m_bInverse; }

    void Update(LxEffectParameter& parameter, void* data, unsigned int size) override;
    // Width, height and depth of the texture bound to the slot of `effect` (not inverted); false after reporting.
    bool GetDimensions(const LxEffect& effect, float* dimensions) const;

private:
    LxString m_slotName;
    bool m_bInverse;
};
