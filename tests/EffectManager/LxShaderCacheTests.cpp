// Shader cache: keys and file names, the container check that guards against damaged files, and compilation
// through the effect manager with a counting fake compiler (no cache, a warm cache, damaged files, failures).
#include "Common/LxFile.h"
#include "EffectManager/LxShaderCache.h"
#include "LxEffectManagerTestUtil.h"
#include "support/LxTestSupport.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <sstream>
#include <string>

namespace
{
using LxFxTest::FakeShaderCompiler;

std::string ToStd(const LxString& s)
{
    return std::string(s.c_str(), s.GetLength());
}

// Whether the file-access log has a line "<mode> <path ending in /fileName>" (the folder part is spelled as the
// platform spells it).
bool Accessed(const std::string& log, const std::string& mode, const std::string& fileName)
{
    std::istringstream lines(log);
    std::string line;
    const std::string tail = "/" + fileName;
    while (std::getline(lines, line))
    {
        if (!line.empty() && line.back() == '\r') // written in text mode
            line.pop_back();
        if (line.rfind(mode + " ", 0) == 0 && line.size() > tail.size() &&
            line.compare(line.size() - tail.size(), tail.size(), tail) == 0)
            return true;
    }
    return false;
}
} // namespace

TEST(LxShaderCache, FileNamesJoinEntryOptionsProfileAndTheTextHash)
{
    const LxMD5Hash key = LxShaderCache::ComputeKey("abc");
    EXPECT_EQ("900150983cd24fb0d6963f7d28e17f72", ToStd(key.ToString()));
    EXPECT_EQ("DX11_VS__Fa__Od__vs_5_0__900150983cd24fb0d6963f7d28e17f72",
              ToStd(LxShaderCache::MakeFileName("VS", "_Fa__Od_", "vs_5_0", key)));
    EXPECT_EQ("DX11_main__ps_5_0__900150983cd24fb0d6963f7d28e17f72",
              ToStd(LxShaderCache::MakeFileName("main", "", "ps_5_0", key)));

    const struct
    {
        unsigned int flags;
        const char* text;
    } options[] = {
        {0, ""},
        {LxShaderCompiler::FLAG_AVOID_FLOW_CONTROL, "_Fa_"},
        {LxShaderCompiler::FLAG_PREFER_FLOW_CONTROL, "_Fp_"},
        {LxShaderCompiler::FLAG_SKIP_OPTIMIZATION, "_Od_"},
        {LxShaderCompiler::FLAG_DEBUG, ""},
        {0x605, "_Fa__Fp__Od_"},
    };
    for (const auto& o : options)
        EXPECT_EQ(o.text, ToStd(LxShaderCompiler::MakeOptionString(o.flags))) << o.flags;

    LxAnnotationMap map;
    map.SetValue("AvoidFlowControl", new LxAnnotationValue(true));
    map.SetValue("Debug", new LxAnnotationValue(true));
    map.SetValue("EntryPoint", new LxAnnotationValue("VS"));
    EXPECT_EQ(0x201u, LxShaderCompiler::FlagsFromOptions(map));

    LxArray<LxShaderMacro> macros;
    macros.Add(LxShaderMacro{"QUALITY", "2"});
    macros.Add(LxShaderMacro{"LX_3D_API_D3D12", "1"});
    EXPECT_EQ("#define QUALITY 2\n#define LX_3D_API_D3D12 1\nfloat4 main();",
              ToStd(LxShaderCompiler::BuildSource(macros, "float4 main();")));
}

TEST(LxShaderCache, ContainerCheckRejectsDamagedCode)
{
    LxMemoryBuffer* good = FakeShaderCompiler::MakeContainer("payload");
    const std::string bytes(reinterpret_cast<const char*>(good->GetData()), good->GetSize());
    delete good;
    auto check = [](std::string b) { return LxShaderCompiler::IsShaderContainer(b.data(), (unsigned int)b.size()); };
    auto patched = [&](unsigned int at, unsigned int v)
    {
        std::string b = bytes;
        for (int i = 0; i < 4; ++i)
            b[at + i] = static_cast<char>(v >> (8 * i));
        return b;
    };
    EXPECT_TRUE(check(bytes));
    EXPECT_FALSE(LxShaderCompiler::IsShaderContainer(nullptr, 0));
    EXPECT_FALSE(check(""));
    EXPECT_FALSE(check(bytes.substr(0, 31)));
    EXPECT_FALSE(check(bytes.substr(0, bytes.size() - 1))) << "truncated";
    EXPECT_FALSE(check(bytes + "x")) << "longer than its header says";
    EXPECT_FALSE(check("DXBX" + bytes.substr(4)));
    EXPECT_FALSE(check(patched(28, 0xFFFFFFFFu))) << "chunk count beyond the data";
    EXPECT_FALSE(check(patched(32, 4))) << "chunk inside the header";
    EXPECT_FALSE(check(patched(32, 0xFFFFFFF0u))) << "chunk offset beyond the data";
    EXPECT_FALSE(check(patched(40, 0x7FFFFFFFu))) << "chunk size beyond the data";
    EXPECT_FALSE(check(std::string(64, '\0')));
}

namespace
{
const char* const kShaders = "Sampler DEFAULT_SAMPLER { Filter = MIN_MAG_MIP_LINEAR; }\n"
                             "Technique DEFAULT_TECHNIQUE { Pass DEFAULT_PASS {\n"
                             "  VertexShader( EntryPoint = \"VS\", AvoidFlowControl = true, SkipOptimization = true )\n"
                             "    float4 VS() : SV_Position { return 0; }\n  EndVertexShader\n"
                             "  PixelShader( EntryPoint = \"PS\", Profile = \"ps_4_1\" )\n"
                             "    float4 PS() : SV_Target { return 1; }\n  EndPixelShader } }\n";

class LxShaderCacheTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        m_dir = LxTest::MakeTempDir("shadercache");
        m_cacheDir = m_dir + "/cache";
        LxTest::WriteBytes(m_dir + "/fx.fx", kShaders);
        StartManager();
    }
    void TearDown() override { LxEffectManager::ShutDown(); }

    void StartManager()
    {
        LxEffectManager::ShutDown();
        m_manager = new LxFxTest::TestEffectManager();
        ASSERT_TRUE(LxEffectManager::Init(m_manager));
        m_manager->compiler = &m_compiler;
        m_manager->AddSearchPath(m_dir.c_str());
    }
    LxCountedPtr<LxEffect> Load(const char* name = "fx.fx")
    {
        return m_manager->LoadEffect(name, LxEffectManager::LOAD_DEFAULT_EFFECT);
    }
    std::set<std::string> CacheFiles() const
    {
        std::set<std::string> names;
        std::error_code ec;
        for (const auto& entry : std::filesystem::directory_iterator(m_cacheDir, ec))
            names.insert(entry.path().filename().string());
        return names;
    }
    std::set<std::string> ExpectedFiles() const
    {
        std::set<std::string> names;
        for (const LxShaderCompileRequest& request : m_compiler.requests)
            names.insert(ToStd(LxShaderCache::MakeFileName(request)));
        return names;
    }

    std::string m_dir, m_cacheDir;
    FakeShaderCompiler m_compiler;
    LxFxTest::TestEffectManager* m_manager = nullptr;
};
} // namespace

TEST_F(LxShaderCacheTest, WithoutACachePathEveryShaderIsCompiledEveryTime)
{
    LxCountedPtr<LxEffect> fx = Load();
    ASSERT_TRUE(fx);
    EXPECT_EQ(2, m_compiler.compileCount);
    m_manager->ReloadEffects(true);
    EXPECT_EQ(4, m_compiler.compileCount);
    EXPECT_EQ(nullptr, m_manager->GetShaderCache());
    EXPECT_FALSE(LxTest::PathExists(m_cacheDir));
}

TEST_F(LxShaderCacheTest, AWarmCacheCompilesNothing)
{
    const std::string accessLog = m_dir + "/access.log";
    LxFile::EnableFileAccessLogging(accessLog.c_str());
    m_manager->SetShaderCachePath(m_cacheDir.c_str());
    LxCountedPtr<LxEffect> fx = Load();
    ASSERT_TRUE(fx);
    ASSERT_EQ(2, m_compiler.compileCount);

    // The names follow the requests: entry point, option string, profile, two underscores, the text's hash.
    const LxShaderCompileRequest& vs = m_compiler.requests[0];
    const LxShaderCompileRequest& ps = m_compiler.requests[1];
    EXPECT_EQ(LxShaderCompiler::FLAG_AVOID_FLOW_CONTROL | LxShaderCompiler::FLAG_SKIP_OPTIMIZATION, vs.flags);
    const std::string vsName = "DX11_VS__Fa__Od__vs_5_0__" + ToStd(LxShaderCache::ComputeKey(vs.source).ToString());
    const std::string psName = "DX11_PS__ps_4_1__" + ToStd(LxShaderCache::ComputeKey(ps.source).ToString());
    EXPECT_EQ((std::set<std::string>{vsName, psName}), CacheFiles());

    m_manager->ReloadEffects(true);
    EXPECT_EQ(2, m_compiler.compileCount) << "the reload must be served from the cache";
    EXPECT_EQ(2u, m_manager->GetShaderCache()->GetHitCount());
    LxFile::CloseFileAccessLog();
    const std::string log = LxTest::ReadBytes(accessLog);
    EXPECT_TRUE(Accessed(log, "wb", vsName)) << log;
    EXPECT_TRUE(Accessed(log, "wb", psName)) << log;
    EXPECT_TRUE(Accessed(log, "rb", vsName)) << log;
    EXPECT_TRUE(Accessed(log, "rb", psName)) << log;

    // The next run finds the files too; a new define changes the text and so the key.
    fx = nullptr;
    StartManager();
    m_manager->SetShaderCachePath(m_cacheDir.c_str());
    fx = Load();
    EXPECT_EQ(2, m_compiler.compileCount);
    m_manager->AddDefine("QUALITY", "2");
    m_manager->ReloadEffects(true);
    EXPECT_EQ(4, m_compiler.compileCount);
    EXPECT_EQ(4u, CacheFiles().size());
    EXPECT_EQ(ExpectedFiles(), CacheFiles());
}

TEST_F(LxShaderCacheTest, DamagedCacheFilesAreCompiledAgain)
{
    m_manager->SetShaderCachePath(m_cacheDir.c_str());
    LxCountedPtr<LxEffect> fx = Load();
    ASSERT_TRUE(fx);
    const std::set<std::string> names = CacheFiles();
    ASSERT_EQ(2u, names.size());
    const std::string first = m_cacheDir + "/" + *names.begin();
    const std::string second = m_cacheDir + "/" + *names.rbegin();
    const std::string firstBytes = LxTest::ReadBytes(first);

    const std::string damages[][2] = {
        {firstBytes.substr(0, firstBytes.size() / 2), std::string(100, '\x5a')}, // truncated, garbage
        {std::string(), firstBytes.substr(0, 40)},                               // empty, header only
    };
    int expectedCompiles = 2;
    for (const auto& damage : damages)
    {
        LxTest::WriteBytes(first, damage[0]);
        LxTest::WriteBytes(second, damage[1]);
        LxTest::LogCapture capture;
        m_manager->ReloadEffects(true);
        expectedCompiles += 2;
        EXPECT_EQ(expectedCompiles, m_compiler.compileCount);
        EXPECT_EQ(1,
                  capture.Count("Shader cache file: " + *names.begin() + " is damaged; the shader is compiled again.",
                                LX_LOG_WARNING))
            << capture.All();
        EXPECT_EQ(2, capture.Count("is damaged", LX_LOG_WARNING));
        EXPECT_EQ(firstBytes, LxTest::ReadBytes(first)) << "the fresh result replaces the damaged file";
        const std::string repaired = LxTest::ReadBytes(second);
        EXPECT_TRUE(LxShaderCompiler::IsShaderContainer(repaired.data(), (unsigned int)repaired.size()));
    }
    m_manager->ReloadEffects(true);
    EXPECT_EQ(expectedCompiles, m_compiler.compileCount);
}

TEST_F(LxShaderCacheTest, FailuresAreReportedAndNothingIsCached)
{
    m_manager->SetShaderCachePath(m_cacheDir.c_str());
    LxTest::WriteBytes(m_dir + "/broken.fx", "Technique T { Pass P { VertexShader()\n"
                                             "  float4 main() : SV_Position { FAIL_COMPILE; return 0; }\n"
                                             "EndVertexShader } }\n");
    LxTest::LogCapture capture;
    EXPECT_FALSE(Load("broken.fx"));
    EXPECT_TRUE(capture.Contains("broken.fx(1,1): error X3000: forced failure", LX_LOG_ERROR)) << capture.All();
    EXPECT_TRUE(CacheFiles().empty());

    // A cache that cannot be written still compiles.
    const std::string blocker = m_dir + "/not_a_folder";
    LxTest::WriteBytes(blocker, "x");
    m_manager->SetShaderCachePath(blocker.c_str());
    capture.Clear();
    EXPECT_TRUE(Load());
    EXPECT_EQ(1, capture.Count("Failed to open file: DX11_VS__Fa__Od__vs_5_0__", LX_LOG_ERROR)) << capture.All();
    EXPECT_EQ(1, capture.Count("Failed to open file: DX11_PS__ps_4_1__", LX_LOG_ERROR)) << capture.All();
    EXPECT_EQ(2, capture.Count(" in shader cache.", LX_LOG_ERROR));
}
