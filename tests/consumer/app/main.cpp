// Uses the installed headers and library the way a demo would: the umbrella header, strings, the log, MD5, and
// an allocation that the library's tracked allocator must see (on Windows it crosses the DLL boundary).
#include <LumexCore/Lumex.h>

#include <cstdio>

int main()
{
    LxLogManager::Init(false, false, LxString("unused.txt"));
    LxString text;
    text.Format("%s %d", "lumex", 1);
    LxMD5Hash hash;
    LxMD5Hash::ComputeHash(text.c_str(), text.GetLength(), &hash);

    const unsigned long long before = LxMemoryStats::GetCurrentUsage();
    int* volatile block = new int[1000]; // volatile: the compiler may not elide the pair
    const bool tracked = LxMemoryStats::GetCurrentUsage() >= before + 4000;
    delete[] block;

    const bool ok = text == "lumex 1" && hash.ToString().GetLength() == 32 && tracked;
    std::printf("%s\n", ok ? "consumer ok" : "consumer FAILED");
    LxLogManager::ShutDown();
    return ok ? 0 : 1;
}
