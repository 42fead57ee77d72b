// The main of every test executable: runs the tests inside a private scratch folder (so the log file and
// whatever a test writes never land in the source tree) and removes the folder at exit.
#include "support/LxTestSupport.h"

#include "Common/LxLogManager.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>

#if defined(_WIN32)
#include <process.h>
#define LX_GETPID _getpid
#else
#include <unistd.h>
#define LX_GETPID getpid
#endif

// Huge requests must come back as null so the allocator's own out-of-memory path can be tested; leaks fail.
extern "C" const char* __asan_default_options()
{
    return "allocator_may_return_null=1:detect_leaks=1";
}
extern "C" const char* __tsan_default_options()
{
    return "allocator_may_return_null=1:halt_on_error=1";
}
extern "C" const char* __ubsan_default_options()
{
    return "print_stacktrace=1:halt_on_error=1";
}

namespace
{
std::string g_scratch;
std::filesystem::path g_startDir;
int g_ownerPid = 0;

void RemoveScratch()
{
    // A forked death-test child runs the exit handlers too: only the process that made the folder removes it.
    if (g_scratch.empty() || LX_GETPID() != g_ownerPid)
        return;
    LxLogManager::ShutDown(); // closes the log file inside the folder
    std::error_code ec;
    std::filesystem::current_path(g_startDir, ec);
    std::filesystem::remove_all(g_scratch, ec);
    g_scratch.clear();
}
} // namespace

const std::string& LxTest::ScratchDir()
{
    return g_scratch;
}

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);

    g_ownerPid = LX_GETPID();
    g_startDir = std::filesystem::current_path();
    std::random_device rd;
    const std::filesystem::path dir =
        std::filesystem::temp_directory_path() /
        ("lumex-test-" + std::to_string(g_ownerPid) + "-" + std::to_string(rd() % 100000));
    std::filesystem::create_directories(dir);
    g_scratch = dir.generic_string();
    std::filesystem::current_path(dir);
    std::atexit(RemoveScratch);

    // The log goes to the scratch folder; the tests read it through listeners, so the console stays quiet.
    LxLogManager::Init(true, false, LxString("LumexLog.txt"));
    return RUN_ALL_TESTS();
}
