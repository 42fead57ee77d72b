// Message types of the log, with the prefix written after the time stamp.
#pragma once

enum _LxLogMessageType
{
    LX_LOG_MESSAGE = 0,  // (no prefix)
    LX_LOG_DEBUG = 1,    // "DEBUG: "
    LX_LOG_WARNING = 2,  // "WARNING: "
    LX_LOG_ERROR = 3,    // "ERROR: "   reported once until ResetLumexErrorLog
    LX_LOG_CRITICAL = 4, // "CRITICAL: "
};
