// Expectations the Direct3D 12 test executables share (gtest; the benchmarks, which use LxD3D12TestHelpers without
// gtest, do not include this): failures provoked on purpose and the one message each must log.
#pragma once

#include "Common/LxLogManager.h"
#include "support/LxTestSupport.h"

#include <gtest/gtest.h>

#include <functional>
#include <vector>

namespace LxD3D12Test
{
// A failure the platform is made to produce: `provoke` answers whether the call succeeded (it must not) and the
// call logs `message` once, as an error.
struct ProvokedMessage
{
    const char* message;
    std::function<bool()> provoke;
};

// Runs each case under its own log capture and a trace naming its message.
inline void ExpectEachLoggedOnce(const std::vector<ProvokedMessage>& cases)
{
    for (const ProvokedMessage& c : cases)
    {
        SCOPED_TRACE(c.message);
        LxTest::LogCapture log;
        EXPECT_FALSE(c.provoke());
        EXPECT_EQ(1, log.Count(c.message, LX_LOG_ERROR)) << log.All();
    }
}
} // namespace LxD3D12Test
