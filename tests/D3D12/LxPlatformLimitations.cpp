#include "D3D12/LxPlatformLimitations.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <cstdio>

namespace LxPlatformLimitations
{
bool RunningUnderWine()
{
    static const bool s_wine = []
    {
        const HMODULE ntdll = GetModuleHandleW(L"ntdll.dll");
        return ntdll && GetProcAddress(ntdll, "wine_get_version") != nullptr;
    }();
    return s_wine;
}

bool Applies(const Limitation& limitation)
{
    if (!RunningUnderWine())
        return false;
    const testing::TestInfo* test = testing::UnitTest::GetInstance()->current_test_info();
    std::printf("[  LIMITED ] %s (%s) in %s.%s\n", limitation.name, limitation.detail,
                test ? test->test_suite_name() : "?", test ? test->name() : "?");
    std::fflush(stdout);
    return true;
}
} // namespace LxPlatformLimitations
