// LxGPUUnorderedAccessView: an unordered-access view. Beyond the description it carries the initial value of its
// append counter, whether that counter was ever set (the first-run flag the clear-on-first-use logic reads) and
// whether override techniques may bind it. ClearFloat/ClearUInt are platform operations (base: IMPLEMENT ME).
#pragma once

#include "GPUResourceManager/LxGPUResourceView.h"

class LX_API LxGPUUnorderedAccessView : public LxGPUResourceView
{
public:
    LxGPUUnorderedAccessView(LxGPUResource* resource, const LxGPUResourceViewDescription& desc);
    // Builds the description with the unordered-access view type.
    LxGPUUnorderedAccessView(LxGPUResource* resource, LxGPUResourceFormat format, unsigned resourceType,
                             const LxGPUResourceDescription& resourceDesc);

    bool IsAppend() const { return (m_desc.flags & LxGPUResourceViewDescription::FLAG_APPEND) != 0; }

    unsigned GetInitialCount() const { return m_nInitialCount; }
    void SetInitialCount(unsigned count) { m_nInitialCount = count; }
    // True until the counter has been set once.
    bool GetIsFirstRun() const { return m_bFirstRun; }
    void SetIsFirstRun(bool firstRun) { m_bFirstRun = firstRun; }
    void AllowOverrideTechniques(bool allow) { m_bAllowOverrideTechniques = allow; }
    bool AreOverrideTechniquesAllowed() const { return m_bAllowOverrideTechniques; }

    virtual bool ClearFloat(const float values[4]);
    virtual bool ClearUInt(const unsigned values[4]);

private:
    unsigned m_nInitialCount = 0;
    bool m_bFirstRun = true;
    bool m_bAllowOverrideTechniques = true;
};
