// Effects on a real Direct3D 12 device (Wine + lavapipe in the Windows lane): effect files drawn through the render
// manager and read back in pixels: parameters, render states, instanced streams, reload, the shader cache, compiler
// messages pointing into the effect file, and the builder's reflection messages provoked from effect files.
#include "support/LxTestSupport.h"

#include "Common/LxImageData2D.h"
#include "D3D12/LxD3D12TestHelpers.h"
#include "D3D12/LxPlatformLimitations.h"
#include "EffectManager/D3D12/LxD3D12Effect.h"
#include "EffectManager/D3D12/LxD3D12EffectBuilder.h"
#include "EffectManager/D3D12/LxD3D12EffectManager.h"
#include "EffectManager/D3D12/LxD3D12EffectPass.h"
#include "EffectManager/LxEffectParser.h"
#include "EffectManager/LxEffectReloadListener.h"
#include "EffectManager/LxShaderCache.h"
#include "GPUResourceManager/D3D12/LxD3D12GPUResourceManager.h"
#include "RenderManager/D3D12/LxD3D12RenderManager.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace
{
constexpr unsigned kFxSize = 64;
const wchar_t kFxWindowClass[] = L"LxD3D12EffectTestWindow";

typedef LxD3D12Test::Rgba FxRgba;
const FxRgba kFxClear = {51, 102, 153, 255};

bool FxNear(const FxRgba& a, const FxRgba& b, int tolerance)
{
    for (int i = 0; i < 4; ++i)
        if (std::abs(a[i] - b[i]) > tolerance)
            return false;
    return true;
}

std::string FxDataDir()
{
    return LxTest::DataDir() + "/effects/d3d12";
}

// One window, render manager, resource manager and effect manager for the whole executable: device and heap
// creation cost most of a test's time under Wine.
class D3D12EffectTest : public ::testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        s_stack = new LxD3D12Test::ManagerStack();
        s_scratch = LxTest::MakeTempDir("d3d12fx");
        if (s_stack->Create(kFxWindowClass, kFxSize, {s_scratch, FxDataDir()}, &s_why))
        {
            s_rm = s_stack->renderManager;
            s_gpu = s_stack->resourceManager;
            s_default = s_stack->defaultEffect;
        }
    }
    static void TearDownTestSuite()
    {
        s_default = LxCountedPtr<LxEffect>();
        delete s_stack;
        s_stack = nullptr;
        s_rm = nullptr;
        s_gpu = nullptr;
    }
    void SetUp() override
    {
        ASSERT_TRUE(s_rm && s_gpu && s_default) << s_why;
        s_rm->SetClearColor(kFxClear[0] / 255.0f, kFxClear[1] / 255.0f, kFxClear[2] / 255.0f, 1.0f);
        s_rm->SetClearDepth(1.0f);
    }

    static LxEffectManager& Manager() { return LxEffectManager::GetRef(); }

    // Draws one pass of `technique` with three SV_VertexID vertices (or `instances` instances of three vertices).
    static void Draw(LxEffect& fx, const char* technique, unsigned instances = 0)
    {
        unsigned passes = 0;
        ASSERT_TRUE(fx.Begin(LxString(technique), &passes));
        ASSERT_EQ(passes, 1u);
        EXPECT_TRUE(fx.BeginPass(0));
        if (instances)
            s_rm->DrawNonIndexedInstanced(LxRenderManager::PRIM_TRIANGLE_LIST, 3, 0, instances);
        else
            s_rm->DrawNonIndexed(LxRenderManager::PRIM_TRIANGLE_LIST, 3, 0);
        EXPECT_TRUE(fx.EndPass());
        EXPECT_TRUE(fx.End());
    }
    static void Place(LxEffect& fx, float scale, float x, float y, float depth)
    {
        const float place[4] = {scale, x, y, depth};
        fx.GetParameter("vPlace")->SetFloatVector(place);
    }
    static void Color(LxEffect& fx, const FxRgba& c)
    {
        const float color[4] = {c[0] / 255.0f, c[1] / 255.0f, c[2] / 255.0f, c[3] / 255.0f};
        fx.GetParameter("vColor")->SetFloatVector(color);
    }
    static void ExpectPixel(const LxImageData2D& image, unsigned x, unsigned y, const FxRgba& expected,
                            const char* what, int tolerance = 0)
    {
        const FxRgba got = LxD3D12Test::PixelAt(image, x, y);
        EXPECT_TRUE(FxNear(got, expected, tolerance))
            << what << " at (" << x << ", " << y << "): read " << LxD3D12Test::RgbaText(got) << ", expected "
            << LxD3D12Test::RgbaText(expected);
    }
    static LxImageData2D Capture()
    {
        LxImageData2D image;
        EXPECT_TRUE(s_rm->CaptureBackBuffer(&image));
        return image;
    }

    // Writes `text` as `name` in the scratch folder (on the search path), its time stamp `age` seconds from now so
    // that a rewrite always counts as a change.
    static void WriteEffect(const std::string& name, const std::string& text, int age = 0)
    {
        const std::string path = s_scratch + "/" + name;
        LxTest::WriteBytes(path, text);
        namespace fs = std::filesystem;
        std::error_code ec;
        fs::last_write_time(path, fs::file_time_type::clock::now() + std::chrono::seconds(age), ec);
    }
    // Clears, draws a full-screen triangle of `technique` and returns the centre pixel.
    static FxRgba DrawCentre(LxEffect& fx, const char* technique)
    {
        if (!s_rm->BeginScene())
            return {-1, -1, -1, -1};
        s_rm->Clear(true, true, false);
        Draw(fx, technique);
        const FxRgba centre = LxD3D12Test::PixelAt(Capture(), kFxSize / 2, kFxSize / 2);
        s_rm->EndScene();
        return centre;
    }

    static std::string s_scratch;
    static LxD3D12Test::ManagerStack* s_stack;
    static std::string s_why;
    static LxD3D12RenderManager* s_rm;
    static LxD3D12GPUResourceManager* s_gpu;
    static LxCountedPtr<LxEffect> s_default;
};
std::string D3D12EffectTest::s_scratch;
LxD3D12Test::ManagerStack* D3D12EffectTest::s_stack = nullptr;
std::string D3D12EffectTest::s_why;
LxD3D12RenderManager* D3D12EffectTest::s_rm = nullptr;
LxD3D12GPUResourceManager* D3D12EffectTest::s_gpu = nullptr;
LxCountedPtr<LxEffect> D3D12EffectTest::s_default;

// A full-screen triangle in one colour; `extra` goes into the pixel shader's body.
std::string SolidEffect(const char* color, const char* extra = "")
{
    return std::string(
               "Technique Solid\n{\n  Pass P\n  {\n"
               "    VertexShader()\n"
               "      static const float2 kCorners[3] = { float2(-1, -1), float2(-1, 3), float2(3, -1) };\n"
               "      float4 main(uint id : SV_VertexID) : SV_Position { return float4(kCorners[id], 0.5, 1); }\n"
               "    EndVertexShader\n"
               "    PixelShader()\n"
               "      float4 main() : SV_Target\n"
               "      {\n") +
           extra + "        return float4(" + color + ");\n      }\n    EndPixelShader\n  }\n}\n";
}

struct FxListener : public LxEffectReloadListener
{
    void OnEffectReload(LxCountedPtr<LxEffect> oldEffect, LxCountedPtr<LxEffect> newEffect) override
    {
        calls.push_back({oldEffect.Get(), newEffect.Get()});
    }
    std::vector<std::pair<LxEffect*, LxEffect*>> calls;
};

const FxRgba kFxRed = {255, 0, 0, 255};
const FxRgba kFxGreen = {0, 255, 0, 255};
const FxRgba kFxBlue = {0, 0, 255, 255};
} // namespace

TEST_F(D3D12EffectTest, ParametersSetBetweenDrawsColourAndPlaceEachDraw)
{
    LxTest::LogCapture log;
    LxCountedPtr<LxEffect> fx = Manager().LoadEffect("draw.fx");
    ASSERT_TRUE(fx) << log.All();
    ASSERT_TRUE(s_rm->BeginScene());
    s_rm->Clear(true, true, false);

    // The defaults of the file: a small red triangle around the centre.
    Draw(*fx, "Draw");
    // SetVector between draws: a green one to the left, a blue one moved right by the matrix.
    Color(*fx, kFxGreen);
    Place(*fx, 0.125f, -0.75f, 0.0f, 0.5f);
    Draw(*fx, "Draw");
    Color(*fx, kFxBlue);
    Place(*fx, 0.125f, 0.0f, 0.0f, 0.5f);
    float translate[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0.75f, 0, 0, 1};
    fx->GetParameter("mTransform")->SetFloatMatrix(translate);
    Draw(*fx, "Draw");
    // SetFloat: brightness halves the colour of a fourth triangle at the top.
    float identity[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    fx->GetParameter("mTransform")->SetFloatMatrix(identity);
    Color(*fx, {255, 255, 255, 255});
    fx->GetParameter("fBrightness")->SetFloat(0.6f);
    Place(*fx, 0.125f, 0.0f, 0.75f, 0.5f);
    Draw(*fx, "Draw");

    const LxImageData2D image = Capture();
    ExpectPixel(image, kFxSize / 2, kFxSize / 2, kFxRed, "default parameters");
    ExpectPixel(image, kFxSize / 8 + 2, kFxSize / 2, kFxGreen, "after SetFloatVector");
    ExpectPixel(image, kFxSize * 7 / 8 + 2, kFxSize / 2, kFxBlue, "after SetFloatMatrix");
    ExpectPixel(image, kFxSize / 2 + 2, kFxSize / 8, {153, 153, 153, 255}, "after SetFloat", 1);
    ExpectPixel(image, 1, 1, kFxClear, "corner");
    ASSERT_TRUE(s_rm->EndScene());
    fx->GetParameter("fBrightness")->SetFloat(1.0f);
    EXPECT_EQ(log.ErrorCount(), 0) << log.All();
}

TEST_F(D3D12EffectTest, ArrayParameterElementsReachTheirPaddedRegisters)
{
    // afWeights is a Float array: packed in the parameter, one register per element in the cbuffer.
    LxTest::LogCapture log;
    LxCountedPtr<LxEffect> fx = Manager().LoadEffect("draw.fx");
    ASSERT_TRUE(fx);
    const float weights[3] = {1.0f, 0.2f, 1.0f};
    fx->GetParameter("afWeights")->SetRawValue(weights, sizeof(weights));
    Color(*fx, {255, 255, 255, 255});
    Place(*fx, 1.0f, 0.0f, 0.0f, 0.5f);
    ASSERT_TRUE(s_rm->BeginScene());
    s_rm->Clear(true, true, false);
    Draw(*fx, "Draw");
    ExpectPixel(Capture(), 10, 10, {51, 51, 51, 255}, "weight of element 1", 1);
    ASSERT_TRUE(s_rm->EndScene());
    const float ones[3] = {1.0f, 1.0f, 1.0f};
    fx->GetParameter("afWeights")->SetRawValue(ones, sizeof(ones));
    EXPECT_EQ(log.ErrorCount(), 0) << log.All();
}

TEST_F(D3D12EffectTest, DefaultStatesBlendAlphaTestLessEqualAndCullNothing)
{
    LxTest::LogCapture log;
    LxCountedPtr<LxEffect> fx = Manager().LoadEffect("draw.fx");
    ASSERT_TRUE(fx);
    const auto* pass = static_cast<const LxD3D12EffectPass*>(fx->GetTechnique("Draw")->GetPass(0u));
    EXPECT_EQ(pass->GetPipelineStateBlock().depthStencil.DepthFunc, D3D12_COMPARISON_FUNC_LESS_EQUAL);
    ASSERT_TRUE(s_rm->BeginScene());
    s_rm->Clear(true, true, false);

    // Left: half-transparent red blended over the clear colour with the preset SRCALPHA / INVSRCALPHA factors.
    Color(*fx, {255, 0, 0, 128});
    Place(*fx, 0.125f, -0.5f, 0.0f, 0.5f);
    Draw(*fx, "Blended");
    // Middle: the same depth twice; LESSEQUAL lets the second (green) win, LESS keeps the first (red).
    Color(*fx, kFxRed);
    Place(*fx, 0.125f, 0.0f, 0.5f, 0.5f);
    Draw(*fx, "Draw");
    Color(*fx, kFxGreen);
    Draw(*fx, "Draw");
    Color(*fx, kFxRed);
    Place(*fx, 0.125f, 0.0f, -0.5f, 0.5f);
    Draw(*fx, "Draw");
    Color(*fx, kFxGreen);
    Draw(*fx, "StrictDepth");
    // Right: a triangle mirrored in x (the other winding) is drawn with no culling; with CullMode = BACK one of
    // the two windings vanishes.
    const float mirror[16] = {-1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    const float identity[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    Color(*fx, kFxBlue);
    fx->GetParameter("mTransform")->SetFloatMatrix(mirror);
    Place(*fx, 0.125f, -0.5f, 0.5f, 0.25f);
    Draw(*fx, "Draw");
    Place(*fx, 0.125f, -0.75f, 0.5f, 0.25f);
    Draw(*fx, "CullBack");
    fx->GetParameter("mTransform")->SetFloatMatrix(identity);
    Place(*fx, 0.125f, 0.5f, -0.5f, 0.25f);
    Draw(*fx, "Draw");
    Place(*fx, 0.125f, 0.75f, -0.5f, 0.25f);
    Draw(*fx, "CullBack");

    const LxImageData2D image = Capture();
    // 0.5 * 255 + 0.5 * clear, alpha 0.5 * 0.5 + 0.5 * 1.
    ExpectPixel(image, kFxSize / 4, kFxSize / 2, {154, 51, 77, 191}, "alpha blended", 2);
    ExpectPixel(image, kFxSize / 2, kFxSize / 4, kFxGreen, "LESSEQUAL at equal depth");
    ExpectPixel(image, kFxSize / 2 + 2, kFxSize * 3 / 4, kFxRed, "LESS at equal depth");
    ExpectPixel(image, kFxSize * 3 / 4 - 2, kFxSize / 4, kFxBlue, "mirrored winding, no culling");
    ExpectPixel(image, kFxSize * 3 / 4 + 2, kFxSize * 3 / 4, kFxBlue, "front winding, no culling");
    // With CullMode = BACK exactly one of the two windings survives.
    const bool mirroredShown = LxD3D12Test::PixelAt(image, kFxSize * 7 / 8 - 2, kFxSize / 4) == kFxBlue;
    const bool frontShown = LxD3D12Test::PixelAt(image, kFxSize * 7 / 8 + 2, kFxSize * 3 / 4) == kFxBlue;
    EXPECT_NE(mirroredShown, frontShown)
        << "culling removed both or neither winding: "
        << LxD3D12Test::RgbaText(LxD3D12Test::PixelAt(image, kFxSize * 7 / 8 - 2, kFxSize / 4)) << " "
        << LxD3D12Test::RgbaText(LxD3D12Test::PixelAt(image, kFxSize * 7 / 8 + 2, kFxSize * 3 / 4));
    ASSERT_TRUE(s_rm->EndScene());
    Color(*fx, kFxRed);
    Place(*fx, 0.25f, 0.0f, 0.0f, 0.5f);
    EXPECT_EQ(log.ErrorCount(), 0) << log.All();
}

TEST_F(D3D12EffectTest, InstancedStreamDrawsOneCopyPerInstance)
{
    LxTest::LogCapture log;
    LxCountedPtr<LxEffect> fx = Manager().LoadEffect("draw.fx");
    ASSERT_TRUE(fx);
    const float corners[6] = {-0.1f, -0.1f, -0.1f, 0.3f, 0.3f, -0.1f};
    struct Instance
    {
        float offset[2];
        unsigned char color[4];
    };
    const Instance instances[3] = {
        {{-0.6f, 0.0f}, {255, 0, 0, 255}}, {{0.0f, 0.0f}, {0, 255, 0, 255}}, {{0.6f, 0.0f}, {0, 0, 255, 255}}};
    LxMemoryBuffer* cornerData = LxMemoryBuffer::Allocate(sizeof(corners));
    std::memcpy(cornerData->GetData(), corners, sizeof(corners));
    LxMemoryBuffer* instanceData = LxMemoryBuffer::Allocate(sizeof(instances));
    std::memcpy(instanceData->GetData(), instances, sizeof(instances));
    LxCountedPtr<LxGPUVertexBuffer> cornerBuffer = LxGPUResourceManager::GetRef().CreateResourceVertex(
        LxGPUResource::GPU_RESOURCE_STATIC, 8, 3, LxCountedPtr<LxMemoryBuffer>(cornerData));
    LxCountedPtr<LxGPUVertexBuffer> instanceBuffer = LxGPUResourceManager::GetRef().CreateResourceVertex(
        LxGPUResource::GPU_RESOURCE_STATIC, sizeof(Instance), 3, LxCountedPtr<LxMemoryBuffer>(instanceData));
    ASSERT_TRUE(cornerBuffer && instanceBuffer);
    ASSERT_TRUE(fx->BindVertexBuffer("Corners", cornerBuffer));
    ASSERT_TRUE(fx->BindVertexBuffer("Offsets", instanceBuffer));

    ASSERT_TRUE(s_rm->BeginScene());
    s_rm->Clear(true, true, false);
    Draw(*fx, "Instanced", 3);
    const LxImageData2D image = Capture();
    // Instance i sits around x = (0.2 + 0.6 * (i - 1)) in clip space.
    ExpectPixel(image, unsigned((0.5f - 0.6f * 0.5f) * kFxSize) + 1, kFxSize / 2 - 1, kFxRed, "instance 0");
    ExpectPixel(image, kFxSize / 2 + 1, kFxSize / 2 - 1, kFxGreen, "instance 1");
    ExpectPixel(image, unsigned((0.5f + 0.6f * 0.5f) * kFxSize) + 1, kFxSize / 2 - 1, kFxBlue, "instance 2");
    ExpectPixel(image, 2, 2, kFxClear, "outside every instance");
    ASSERT_TRUE(s_rm->EndScene());
    fx->BindVertexBuffer("Corners", LxCountedPtr<LxGPUVertexBuffer>());
    fx->BindVertexBuffer("Offsets", LxCountedPtr<LxGPUVertexBuffer>());
    EXPECT_EQ(log.ErrorCount(), 0) << log.All();
}

TEST_F(D3D12EffectTest, ReloadDrawsTheNewColourAndABrokenRewriteKeepsTheOld)
{
    LxTest::LogCapture log;
    WriteEffect("reload.fx", SolidEffect("1, 0, 0, 1"), -60);
    LxCountedPtr<LxEffect> fx = Manager().LoadEffect("reload.fx");
    ASSERT_TRUE(fx) << log.All();
    EXPECT_EQ(DrawCentre(*fx, "Solid"), kFxRed);
    FxListener listener;
    Manager().AddReloadListener(&listener);

    Manager().ReloadEffects(false);
    EXPECT_TRUE(log.Contains("Skipped effect re-load: No changed shader files found on disk")) << log.All();
    EXPECT_TRUE(listener.calls.empty());

    LxEffect* before = fx.Get();
    WriteEffect("reload.fx", SolidEffect("0, 1, 0, 1"), -30);
    Manager().ReloadEffects(false);
    ASSERT_EQ(listener.calls.size(), 1u) << log.All();
    EXPECT_EQ(listener.calls[0].first, before);
    EXPECT_EQ(listener.calls[0].second, fx.Get()) << "the holder's reference follows the reload";
    EXPECT_EQ(DrawCentre(*fx, "Solid"), kFxGreen);

    // HLSL that does not compile: the reload fails, the green effect stays in use.
    log.Clear();
    WriteEffect("reload.fx", SolidEffect("0, 0, 1, 1", "        undefined_identifier += 1;\n"), 0);
    Manager().ReloadEffects(false);
    EXPECT_TRUE(log.Contains("Finished effect re-load with ERRORS!!!")) << log.All();
    EXPECT_EQ(listener.calls.size(), 1u);
    EXPECT_EQ(DrawCentre(*fx, "Solid"), kFxGreen);
    Manager().RemoveReloadListener(&listener);
}

TEST_F(D3D12EffectTest, SecondLoadCompilesNothingAndACorruptCacheIsRecompiled)
{
    LxTest::LogCapture log;
    const std::string cacheDir = LxTest::MakeTempDir("shadercache");
    Manager().SetShaderCachePath(cacheDir.c_str());
    LxD3D12ShaderCompiler& compiler = LxD3D12EffectManager::GetD3D12Ptr()->GetCompiler();
    WriteEffect("cached.fx", SolidEffect("0, 0, 1, 1"), -60);

    unsigned compiles = compiler.GetCompileCount();
    FxRgba first;
    {
        LxCountedPtr<LxEffect> fx = Manager().LoadEffect("cached.fx");
        ASSERT_TRUE(fx) << log.All();
        EXPECT_EQ(compiler.GetCompileCount(), compiles + 2) << "vertex and pixel shader";
        first = DrawCentre(*fx, "Solid");
        EXPECT_EQ(first, kFxBlue);
    } // the last reference goes: the effect is unloaded
    ASSERT_FALSE(Manager().IsEffectLoaded("cached.fx"));

    namespace fs = std::filesystem;
    std::vector<fs::path> files;
    for (const fs::directory_entry& entry : fs::directory_iterator(cacheDir))
        files.push_back(entry.path());
    ASSERT_EQ(files.size(), 2u);
    for (const fs::path& file : files)
    {
        const std::string name = file.filename().string();
        const bool vertex = name.rfind("DX11_main__vs_5_0__", 0) == 0;
        const bool pixel = name.rfind("DX11_main__ps_5_0__", 0) == 0;
        EXPECT_TRUE(vertex || pixel) << name;
        EXPECT_EQ(name.size(), std::string("DX11_main__vs_5_0__").size() + 32) << name;
    }

    compiles = compiler.GetCompileCount();
    {
        LxCountedPtr<LxEffect> fx = Manager().LoadEffect("cached.fx");
        ASSERT_TRUE(fx) << log.All();
        EXPECT_EQ(compiler.GetCompileCount(), compiles) << "every shader came from the cache";
        EXPECT_EQ(DrawCentre(*fx, "Solid"), first);
    }

    // Damaged files: one truncated, one garbage. Both are compiled again and rewritten; nothing crashes.
    const std::string whole = LxTest::ReadBytes(files[0].string());
    LxTest::WriteBytes(files[0].string(), whole.substr(0, whole.size() / 2));
    LxTest::WriteBytes(files[1].string(), std::string(300, 'x'));
    compiles = compiler.GetCompileCount();
    {
        LxCountedPtr<LxEffect> fx = Manager().LoadEffect("cached.fx");
        ASSERT_TRUE(fx) << log.All();
        EXPECT_EQ(compiler.GetCompileCount(), compiles + 2);
        EXPECT_EQ(DrawCentre(*fx, "Solid"), first);
    }
    EXPECT_EQ(LxTest::ReadBytes(files[0].string()), whole) << "the damaged file is replaced";
    Manager().SetShaderCachePath("");
}

TEST_F(D3D12EffectTest, CompilerMessagesPointAtTheEffectFileAndDumpsHoldTheCode)
{
    LxTest::LogCapture log;
    // Line 12 of the file holds the mistake; the compiler sees it on another line of the generated text.
    WriteEffect("hlsl_error.fx", SolidEffect("1, 1, 1, 1", "        float x = undefined_identifier;\n"));
    EXPECT_FALSE(Manager().LoadEffect("hlsl_error.fx"));
    EXPECT_TRUE(log.Contains("hlsl_error.fx(12")) << log.All();
    EXPECT_FALSE(log.Contains(".generated.hlsl")) << log.All();
    EXPECT_TRUE(log.Contains("Invalid effect file \"hlsl_error.fx\"")) << log.All();

    // "Dump" writes the compiled code of a shader that builds.
    const std::string dump = s_scratch + "/dumped.bin";
    std::string text = SolidEffect("1, 1, 1, 1");
    text.replace(text.find("PixelShader()"), 13, "PixelShader( Dump = \"" + dump + "\" )");
    WriteEffect("dump.fx", text);
    EXPECT_TRUE(Manager().LoadEffect("dump.fx")) << log.All();
    EXPECT_EQ(LxTest::ReadBytes(dump).substr(0, 4), "DXBC");
}

// Every file of d3d12/errors lists in "// expect: " lines the messages the Direct3D 12 builder must log for it
// (reflection, render and sampler states, compute passes); the load must fail and log each verbatim.
TEST_F(D3D12EffectTest, ErrorFilesReportEveryExpectedBuilderMessage)
{
    namespace fs = std::filesystem;
    int files = 0;
    for (const fs::directory_entry& entry : fs::directory_iterator(FxDataDir() + "/errors"))
    {
        const std::string name = entry.path().filename().string();
        SCOPED_TRACE(name);
        const std::string text = LxTest::ReadBytes(entry.path().string());
        LxTest::LogCapture capture;
        EXPECT_FALSE(Manager().LoadEffect(("errors/" + name).c_str()));
        std::istringstream lines(text);
        int expectations = 0;
        for (std::string line; std::getline(lines, line);)
        {
            const std::string tag = "// expect: ";
            if (line.rfind(tag, 0) != 0)
                continue;
            ++expectations;
            const std::string message = line.substr(tag.size());
            EXPECT_TRUE(capture.Contains(message)) << "missing: " << message << "\nlogged:\n" << capture.All();
        }
        EXPECT_GT(expectations, 0);
        ++files;
    }
    EXPECT_GE(files, 5);
}

TEST_F(D3D12EffectTest, ProfilesFollowTheFeatureLevelAnd11_1IsRefused)
{
    struct Case
    {
        D3D_FEATURE_LEVEL level;
        const char* suffix;
    };
    const Case cases[] = {
        {D3D_FEATURE_LEVEL_9_1, "_2_0"},   {D3D_FEATURE_LEVEL_9_2, "_2_0"},  {D3D_FEATURE_LEVEL_9_3, "_3_0"},
        {D3D_FEATURE_LEVEL_10_0, "_4_0"},  {D3D_FEATURE_LEVEL_10_1, "_4_1"}, {D3D_FEATURE_LEVEL_11_0, "_5_0"},
        {D3D_FEATURE_LEVEL_11_1, nullptr}, {D3D_FEATURE_LEVEL_12_0, "_5_0"}, {D3D_FEATURE_LEVEL_12_1, "_5_0"}};
    for (const Case& c : cases)
    {
        const char* suffix = LxD3D12EffectBuilder::GetProfileSuffix(c.level);
        EXPECT_STREQ(c.suffix, suffix) << std::hex << c.level;
    }

    // A builder on an 11_1 device refuses every shader that names no profile; one that names it compiles.
    LxTest::LogCapture log;
    const std::string text = SolidEffect("1, 1, 1, 1");
    for (const bool named : {false, true})
    {
        std::string source = text;
        if (named)
        {
            source.replace(source.find("VertexShader()"), 14, "VertexShader( Profile = \"vs_5_0\" )");
            source.replace(source.find("PixelShader()"), 13, "PixelShader( Profile = \"ps_5_0\" )");
        }
        LxD3D12EffectBuilder builder(s_rm->GetDevice(), D3D_FEATURE_LEVEL_11_1, nullptr);
        LxEffectParser parser;
        parser.Init("level.fx", source.c_str(), &builder);
        LxEffect* fx = parser.Parse();
        EXPECT_EQ(fx != nullptr, named) << log.All();
        delete fx;
    }
    EXPECT_TRUE(log.Contains("level.fx(5) : Unknown feature level")) << log.All();
    EXPECT_TRUE(log.Contains("level.fx(9) : Unknown feature level")) << log.All();
    EXPECT_EQ(log.Count("Unknown feature level"), 2) << log.All();
}

TEST_F(D3D12EffectTest, UnboundSlotsAreReportedAndThePassFails)
{
    LxTest::LogCapture log;
    LxCountedPtr<LxEffect> fx = Manager().LoadEffect("textures.fx");
    ASSERT_TRUE(fx) << log.All();
    ASSERT_TRUE(s_rm->BeginScene());
    unsigned passes = 0;
    ASSERT_TRUE(fx->Begin("Wrap", &passes));
    EXPECT_FALSE(fx->BeginPass(0));
    EXPECT_TRUE(log.Contains("LxD3D12EffectPass: No resource bound to LxTextureSlot.")) << log.All();
    fx->EndPass();
    fx->End();
    ASSERT_TRUE(fx->Begin("Fill", &passes));
    EXPECT_FALSE(fx->BeginPass(0));
    EXPECT_TRUE(log.Contains("LxD3D12ComputePass: No resource bound to LxUAVSlot.")) << log.All();
    fx->EndPass();
    fx->End();
    ASSERT_TRUE(s_rm->EndScene());
}

TEST_F(D3D12EffectTest, TexturesAreSampledThroughTheEffectsSamplers)
{
    LxTest::LogCapture log;
    LxCountedPtr<LxEffect> fx = Manager().LoadEffect("textures.fx");
    ASSERT_TRUE(fx) << log.All();
    // 2x2 texels: red, green / blue, white.
    const unsigned char texels[16] = {255, 0, 0, 255, 0, 255, 0, 255, 0, 0, 255, 255, 255, 255, 255, 255};
    LxMemoryBuffer* data = LxMemoryBuffer::Allocate(sizeof(texels));
    std::memcpy(data->GetData(), texels, sizeof(texels));
    LxCountedPtr<LxGPUTexture2DArray> texture = LxGPUResourceManager::GetRef().CreateTexture2DArray(
        LxGPUResource::GPU_RESOURCE_STATIC, 2, 2, LX_FORMAT_R8G8B8A8_UNORM, LxGPUTexture::MIP_NONE, 1, 1,
        LxGPUResource::BIND_SHADER_RESOURCE, 0, LxCountedPtr<LxMemoryBuffer>(data));
    ASSERT_TRUE(texture) << log.All();
    ASSERT_TRUE(fx->BindTextureResource("tImage", *texture)) << log.All();

    // Texture coordinates run from 0 to 2 across the screen: the right half reads past the texture's edge.
    const unsigned left = kFxSize / 8, right = kFxSize * 5 / 8, top = kFxSize / 8, bottom = kFxSize * 5 / 8;
    ASSERT_TRUE(s_rm->BeginScene());
    s_rm->Clear(true, true, false);
    Draw(*fx, "Wrap");
    LxImageData2D wrap = Capture();
    ASSERT_TRUE(s_rm->EndScene());
    ASSERT_TRUE(s_rm->BeginScene());
    s_rm->Clear(true, true, false);
    Draw(*fx, "Clamp");
    LxImageData2D clamp = Capture();
    ASSERT_TRUE(s_rm->EndScene());

    ExpectPixel(wrap, left, top, kFxRed, "wrap, inside the texture");
    ExpectPixel(clamp, left, top, kFxRed, "clamp, inside the texture");
    ExpectPixel(wrap, right, top, kFxRed, "wrap repeats the first column");
    ExpectPixel(clamp, right, top, kFxGreen, "clamp stretches the last column");
    ExpectPixel(wrap, left, bottom, kFxRed, "wrap repeats the first row");
    ExpectPixel(clamp, left, bottom, kFxBlue, "clamp stretches the last row");
    ExpectPixel(clamp, right, bottom, {255, 255, 255, 255}, "clamp, corner");
    fx->BindTexture("tImage", LxCountedPtr<LxGPUSamplingResourceView>());
    EXPECT_EQ(log.ErrorCount(), 0) << log.All();
}

TEST_F(D3D12EffectTest, ComputePassWritesATextureThatReadsBack)
{
    LxTest::LogCapture log;
    LxCountedPtr<LxEffect> fx = Manager().LoadEffect("textures.fx");
    ASSERT_TRUE(fx) << log.All();
    LxCountedPtr<LxGPUTexture2DArray> target = LxGPUResourceManager::GetRef().CreateTexture2DArray(
        LxGPUResource::GPU_RESOURCE_STATIC, 8, 8, LX_FORMAT_R8G8B8A8_UNORM, LxGPUTexture::MIP_NONE, 1, 1,
        LxGPUResource::BIND_SHADER_RESOURCE | LxGPUResource::BIND_UNORDERED_ACCESS, 0, LxCountedPtr<LxMemoryBuffer>());
    ASSERT_TRUE(target) << log.All();
    ASSERT_TRUE(fx->BindUAVResource("uOutput", *target)) << log.All();

    ASSERT_TRUE(s_rm->BeginScene());
    unsigned passes = 0;
    ASSERT_TRUE(fx->Begin("Fill", &passes));
    ASSERT_TRUE(fx->BeginPass(0)) << log.All();
    s_rm->Dispatch(1, 1, 1);
    fx->EndPass();
    fx->End();
    LxImageData2D image;
    ASSERT_TRUE(s_rm->CaptureRenderTarget(LxD3D12GPUResourceManager::GetD3D12Resource(target.Get()),
                                          LxD3D12GPUResourceManager::GetD3D12State(target.Get()), &image));
    ASSERT_TRUE(s_rm->EndScene());
    ASSERT_EQ(image.GetWidth(), 8u);
    // vFill = (0, 0.5, 1) in the left half, halved in the right half.
    ExpectPixel(image, 1, 1, {0, 128, 255, 255}, "left half", 1);
    ExpectPixel(image, 6, 6, {0, 64, 128, 255}, "right half", 1);
    fx->BindUAV("uOutput", LxCountedPtr<LxGPUUnorderedAccessView>());
    EXPECT_EQ(log.ErrorCount(), 0) << log.All();
}

// Messages for shaders the test platform cannot compile or reflect faithfully: each case runs; where a platform
// limitation applies, the expectation is the platform's failure instead of the builder's message.
TEST_F(D3D12EffectTest, MessagesThePlatformCompilerCannotProvokeFollowItsLimitations)
{
    using namespace LxPlatformLimitations;
    struct Case
    {
        const char* what;
        const char* slots;
        const char* shader;
        const char* message;
        const Limitation* limitation;
    };
    const Case cases[] = {
        {"structured", "RWTexture2D uData < >\n",
         "RWStructuredBuffer<float4> uData;\n[numthreads(1, 1, 1)] void main() { uData[0] = 1; }\n",
         "Compute Shader declares a structured buffer resource named: 'uData' but the matching UAV slot is not a "
         "structured buffer.",
         &kNoStructuredBuffers},
        {"append", "RWTexture2D uData < >\n",
         "AppendStructuredBuffer<float4> uData;\n[numthreads(1, 1, 1)] void main() { uData.Append(1); }\n",
         "Compute Shader declares an append or consume structured buffer resource named: 'uData' but the matching "
         "UAV slot is not an append or consume structured buffer.",
         &kNoStructuredBuffers},
        {"raw", "RWTexture2D uData < >\n",
         "RWByteAddressBuffer uData;\n[numthreads(1, 1, 1)] void main() { uData.Store(0, 1); }\n",
         "Compute Shader declares a raw buffer resource named: 'uData' but the matching UAV slot is not a raw buffer.",
         &kByteAddressUAVReflectedAsTyped},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.what);
        LxTest::LogCapture log;
        const std::string name = std::string("limited_") + c.what + ".fx";
        WriteEffect(name, std::string(c.slots) + "ComputeTechnique C\n{\n  Pass P\n  {\n    ComputeShader()\n" +
                              c.shader + "    EndComputeShader\n  }\n}\n");
        const bool loaded = Manager().LoadEffect(name.c_str()) != nullptr;
        if (!log.Contains(c.message) && Applies(*c.limitation))
            continue; // the platform refused or misreported the shader
        EXPECT_FALSE(loaded);
        EXPECT_TRUE(log.Contains(c.message)) << log.All();
    }

    // A geometry shader: compiled and checked where the platform can; refused with the compiler's text here.
    LxTest::LogCapture log;
    WriteEffect("limited_gs.fx", "Technique T\n{\n  Pass P\n  {\n"
                                 "    VertexShader() float4 main() : SV_Position { return 0; } EndVertexShader\n"
                                 "    GeometryShader()\n"
                                 "      struct V { float4 p : SV_Position; };\n"
                                 "      [maxvertexcount(3)] void main(triangle V i[3], inout TriangleStream<V> o)\n"
                                 "      { o.Append(i[0]); o.Append(i[1]); o.Append(i[2]); }\n"
                                 "    EndGeometryShader\n  }\n}\n");
    LxCountedPtr<LxEffect> gs = Manager().LoadEffect("limited_gs.fx");
    if (!gs && Applies(kNoGeometryOrTessellationShaders))
        EXPECT_TRUE(log.Contains("limited_gs.fx")) << log.All();
    else
    {
        ASSERT_TRUE(gs) << log.All();
        EXPECT_TRUE(gs->GetTechnique("T")->GetPass(0u)->HasShader(LX_GEOMETRY_SHADER));
    }
}

// Last in the file: override techniques stay loaded for every effect built afterwards.
TEST_F(D3D12EffectTest, ActiveOverrideTechniqueDrawsWithItsPixelShader)
{
    LxTest::LogCapture log;
    WriteEffect("overrides.fx", "Technique Yellow { Pass P { PixelShader() float4 main() : SV_Target "
                                "{ return float4(1, 1, 0, 1); } EndPixelShader } }\n");
    ASSERT_TRUE(Manager().LoadOverrideTechniqueEffect("overrides.fx")) << log.All();
    WriteEffect("overridden.fx", SolidEffect("0, 0, 1, 1"));
    LxCountedPtr<LxEffect> fx = Manager().LoadEffect("overridden.fx");
    ASSERT_TRUE(fx) << log.All();
    EXPECT_EQ(DrawCentre(*fx, "Solid"), kFxBlue);
    ASSERT_TRUE(Manager().SetOverrideTechnique("Yellow"));
    EXPECT_EQ(DrawCentre(*fx, "Solid"), FxRgba({255, 255, 0, 255})) << "the override's pixel shader";
    Manager().ForceDisableOverrideTechniques(true);
    EXPECT_EQ(DrawCentre(*fx, "Solid"), kFxBlue) << "overrides disabled";
    Manager().ForceDisableOverrideTechniques(false);
    ASSERT_TRUE(Manager().SetOverrideTechnique(""));
    EXPECT_EQ(DrawCentre(*fx, "Solid"), kFxBlue);
    EXPECT_EQ(log.ErrorCount(), 0) << log.All();
}
