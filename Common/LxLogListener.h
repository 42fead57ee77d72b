// LxLogListener: receives every finished log line (time stamp, prefix and newline included) with its type.
// Listeners are called in registration order on the thread that logged; the log manager does not own them.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxLogMessageType.h"
#include "Common/LxString.h"

class LX_API LxLogListener
{
public:
    virtual ~LxLogListener() = default;
    virtual void OnLogMessage(const LxString& text, _LxLogMessageType type) = 0;
};
