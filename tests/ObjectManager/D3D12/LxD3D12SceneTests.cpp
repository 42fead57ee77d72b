// Scene objects on a real Direct3D 12 device (Wine + lavapipe in the Windows lane), read back in pixels: a skinned
// model from a model archive in two poses, camera handlers moving the image, frustum culling proven by the draw
// statistics, and a particle group after fixed steps against an image rasterised on the CPU from the same particles.
// Every expected image is computed here from the inputs (projected corners, the simulator's own particles); pixels
// on a primitive's edge are left out of exact comparisons because the rasteriser's edge rules decide them.
#include "support/LxTestSupport.h"

#include "D3D12/LxD3D12TestHelpers.h"

#include "../LxSceneTestUtil.h"

#include "Common/LxImageData2D.h"
#include "Common/LxImageIO.h"
#include "Common/LxVector2.h"
#include "EffectManager/D3D12/LxD3D12EffectManager.h"
#include "GPUResourceManager/D3D12/LxD3D12GPUResourceManager.h"
#include "ObjectManager/LxAnimatedModel.h"
#include "ObjectManager/LxModel.h"
#include "ObjectManager/LxParticleGroup.h"
#include "RenderManager/D3D12/LxD3D12RenderManager.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <filesystem>
#include <sstream>
#include <string>

namespace
{
constexpr unsigned kSize = 64;
const wchar_t kWindowClass[] = L"LxD3D12SceneTestWindow";
typedef std::array<int, 4> Rgba;
const Rgba kClear = {51, 102, 153, 255};
const Rgba kYellow = {255, 255, 0, 255};

Rgba PixelAt(const LxImageData2D& image, unsigned x, unsigned y)
{
    const double* p = image.GetPixel(x, y);
    return {int(std::lround(p[0] * 255)), int(std::lround(p[1] * 255)), int(std::lround(p[2] * 255)),
            int(std::lround(p[3] * 255))};
}

std::string Text(const Rgba& c)
{
    std::ostringstream s;
    s << "(" << c[0] << ", " << c[1] << ", " << c[2] << ", " << c[3] << ")";
    return s.str();
}

bool Near(const Rgba& a, const Rgba& b, int tolerance)
{
    for (int i = 0; i < 4; ++i)
        if (std::abs(a[i] - b[i]) > tolerance)
            return false;
    return true;
}

// The skinned quad: top vertices (y > 0) follow bone 1, the others bone 0.
const char* const kSkinnedEffect = "Matrix amBones[2] < AppUpdate = \"Bones\" >\n"
                                   "Matrix mWorld < AppUpdate = \"WorldTransform\" >\n"
                                   "Matrix mViewProj < AppUpdate = \"ViewProjMatrix\" >\n"
                                   "Stream Vertices { float3 POSITION, float2 TEXCOORD }\n"
                                   "StreamMap Map { Vertices }\n"
                                   "Technique Lit\n{\n  Pass P\n  {\n    StreamMap = Map\n"
                                   "    VertexShader()\n"
                                   "      cbuffer Skin { float4x4 amBones[2]; float4x4 mWorld; float4x4 mViewProj; };\n"
                                   "      float4 main(float3 p : POSITION, float2 uv : TEXCOORD) : SV_Position\n"
                                   "      {\n"
                                   "        float4x4 bone = amBones[0];\n"
                                   "        if (p.y > 0.0)\n"
                                   "          bone = amBones[1];\n"
                                   "        return mul(mViewProj, mul(mWorld, mul(bone, float4(p, 1.0))));\n"
                                   "      }\n"
                                   "    EndVertexShader\n"
                                   "    PixelShader()\n"
                                   "      float4 main() : SV_Target { return float4(1.0, 1.0, 0.0, 1.0); }\n"
                                   "    EndPixelShader\n  }\n}\n";

const char* const kBillboardEffect =
    "Matrix mWorld < AppUpdate = \"WorldTransform\" >\n"
    "Matrix mViewProj < AppUpdate = \"ViewProjMatrix\" >\n"
    "Stream Corners { float3 POSITION, float4 COLOR, float2 TEXCOORD }\n"
    "StreamMap Map { Corners }\n"
    "Technique Draw\n{\n  Pass P\n  {\n    StreamMap = Map\n"
    "    VertexShader()\n"
    "      cbuffer Place { float4x4 mWorld; float4x4 mViewProj; };\n"
    "      struct Out { float4 position : SV_Position; float4 color : COLOR; };\n"
    "      Out main(float3 p : POSITION, float4 color : COLOR, float2 uv : TEXCOORD)\n"
    "      {\n"
    "        Out o;\n"
    "        o.position = mul(mViewProj, mul(mWorld, float4(p, 1.0)));\n"
    "        o.color = color;\n"
    "        return o;\n"
    "      }\n"
    "    EndVertexShader\n"
    "    PixelShader()\n"
    "      float4 main(float4 position : SV_Position, float4 color : COLOR) : SV_Target { return color; }\n"
    "    EndPixelShader\n  }\n}\n";

// One device, window and set of managers for the executable (device creation dominates a test's time under Wine).
class D3D12SceneTest : public ::testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        s_stack = new LxD3D12Test::ManagerStack();
        s_dir = LxTest::MakeTempDir("d3d12scene");
        if (!s_stack->Create(kWindowClass, kSize, {s_dir, LxTest::DataDir() + "/effects/d3d12"}, &s_why))
            return;
        s_rm = s_stack->renderManager;
        s_gpu = s_stack->resourceManager;
        // Handlers are resolved when an effect loads: both managers register first.
        LxObjectManager::GetRef().Initialize();
        LxObjectManager::GetRef().AddSearchPath(s_dir.c_str());
        LxCameraManager::GetRef().Initialize();
        Write("skinned.fx", kSkinnedEffect);
        Write("billboards.fx", kBillboardEffect);
        s_ready = true;
    }
    static void TearDownTestSuite()
    {
        delete s_stack; // the object and camera managers go first: objects hold effects
        s_stack = nullptr;
        s_rm = nullptr;
        s_gpu = nullptr;
        s_ready = false;
    }
    void SetUp() override
    {
        ASSERT_TRUE(s_ready) << s_why;
        s_rm->SetClearColor(kClear[0] / 255.0f, kClear[1] / 255.0f, kClear[2] / 255.0f, 1.0f);
        s_rm->SetClearDepth(1.0f);
        m_camera = LxCameraManager::GetRef().CreateCamera("eye");
        m_camera->SetPosition(LxPoint3(0, 0, -5));
        m_camera->SetLookAt(LxPoint3(0, 0, 0), LxVector3(0, 1, 0));
        m_camera->SetFrustum(60, 1, 0.5f, 50);
        LxCameraManager::GetRef().SetActiveCamera(m_camera);
    }
    void TearDown() override
    {
        // Objects go with their names so that each test starts from an empty scene.
        while (LxObjectManager::GetRef().GetObjectCount() > 0)
            LxObjectManager::GetRef().DestroyObject(LxObjectManager::GetRef().GetObjectByIndex(0));
        LxCameraManager::GetRef().DestroyCamera(m_camera);
    }

    static void Write(const std::string& name, const std::string& text)
    {
        const std::filesystem::path path(s_dir + "/" + name);
        std::filesystem::create_directories(path.parent_path());
        LxTest::WriteBytes(path.string(), text);
    }

    // The pixel a world point lands on through the active camera.
    LxVector2 Project(const LxVector3& p) const
    {
        const LxVector4 clip = m_camera->GetViewProjMatrix() * LxVector4(p.x, p.y, p.z, 1.0f);
        return LxVector2((clip.x / clip.w + 1.0f) * 0.5f * kSize, (1.0f - clip.y / clip.w) * 0.5f * kSize);
    }

    // Clears, draws every object (culled against the camera when asked) and reads the image back.
    LxImageData2D DrawScene(bool cull, unsigned* drawn = nullptr)
    {
        LxImageData2D image;
        if (!s_rm->BeginScene())
        {
            ADD_FAILURE() << "BeginScene failed";
            return image;
        }
        s_rm->Clear(true, true, false);
        const LxFrustum frustum = m_camera->GetWorldFrustum();
        const unsigned n = LxObjectManager::GetRef().DrawObjects(cull ? &frustum : nullptr);
        if (drawn)
            *drawn = n;
        EXPECT_TRUE(s_rm->CaptureBackBuffer(&image));
        s_rm->EndScene();
        return image;
    }

    static void ExpectPixel(const LxImageData2D& image, const LxVector2& at, const Rgba& expected, const char* what)
    {
        const unsigned x = unsigned(at.x), y = unsigned(at.y);
        const Rgba got = PixelAt(image, x, y);
        EXPECT_TRUE(Near(got, expected, 1))
            << what << " at (" << x << ", " << y << "): read " << Text(got) << ", expected " << Text(expected);
    }

    // The quad model archive and a set sliding the tip one unit along +x from t = 0 to t = 1.
    static void SaveQuad()
    {
        if (std::filesystem::exists(s_dir + "/quad.lmx"))
            return;
        std::unique_ptr<LxModelData> model(LxSceneTest::MakeQuadModel());
        model->GetChunkDesc(0)->SetEffectFile("skinned.fx");
        ASSERT_TRUE(model->SaveToPath((s_dir + "/quad.lmx").c_str()));
        LxAnimationSet set;
        LxKeyframeCurve* slide = new LxKeyframeCurve(LxAnimationCurve::DATA_VEC3);
        slide->AddKey(0.0f, LxVector3(0, 1, 0));
        slide->AddKey(1.0f, LxVector3(1, 1, 0));
        set.AddCurve("bone.tip.translate", LxCountedPtr<LxAnimationCurve>(slide));
        ASSERT_TRUE(set.SaveToFile((s_dir + "/quad.anim.lmx").c_str(), true));
    }

    LxCamera* m_camera = nullptr;
    static std::string s_dir;
    static LxD3D12Test::ManagerStack* s_stack;
    static std::string s_why;
    static LxD3D12RenderManager* s_rm;
    static LxD3D12GPUResourceManager* s_gpu;
    static bool s_ready;
};
std::string D3D12SceneTest::s_dir;
LxD3D12Test::ManagerStack* D3D12SceneTest::s_stack = nullptr;
std::string D3D12SceneTest::s_why;
LxD3D12RenderManager* D3D12SceneTest::s_rm = nullptr;
LxD3D12GPUResourceManager* D3D12SceneTest::s_gpu = nullptr;
bool D3D12SceneTest::s_ready = false;
} // namespace

TEST_F(D3D12SceneTest, SkinnedModelInTwoPoses)
{
    LxTest::LogCapture log;
    SaveQuad();
    LxAnimatedModel* model = LxObjectManager::GetRef().CreateAnimatedModel("quad", "quad.lmx", "quad.anim.lmx");
    ASSERT_NE(model, nullptr) << log.All();

    // Rest pose (t = 0): the unit quad. Posed (t = 0.5, half way along the slide): the top edge half a unit right,
    // so at y = 0.8 the quad spans x from -0.55 to 1.45.
    model->UpdateObject(0.0);
    const LxImageData2D rest = DrawScene(false);
    model->UpdateObject(0.5);
    ASSERT_EQ(model->GetBonePalette().GetCount(), 2u);
    EXPECT_FLOAT_EQ(model->GetBonePalette()[1].GetData()[12], 0.5f) << "animation set loaded: " << log.All();
    const LxImageData2D posed = DrawScene(false);

    const LxVector2 centre = Project(LxVector3(0, -0.5f, 0));
    const LxVector2 topLeft = Project(LxVector3(-0.8f, 0.8f, 0));
    const LxVector2 beyondRight = Project(LxVector3(1.3f, 0.8f, 0));
    ExpectPixel(rest, centre, kYellow, "rest: lower middle");
    ExpectPixel(rest, topLeft, kYellow, "rest: upper left");
    ExpectPixel(rest, beyondRight, kClear, "rest: right of the quad");
    ExpectPixel(posed, centre, kYellow, "posed: lower middle");
    ExpectPixel(posed, topLeft, kClear, "posed: the top slid away");
    ExpectPixel(posed, beyondRight, kYellow, "posed: the top slid here");
    ExpectPixel(posed, LxVector2(1, 1), kClear, "posed: corner");
    EXPECT_EQ(log.ErrorCount(), 0) << log.All();
}

TEST_F(D3D12SceneTest, CameraHandlersMoveTheImageAndCullingDropsObjects)
{
    LxTest::LogCapture log;
    SaveQuad();
    LxAnimatedModel* front = LxObjectManager::GetRef().CreateAnimatedModel("front", "quad.lmx");
    LxAnimatedModel* behind = LxObjectManager::GetRef().CreateAnimatedModel("behind", "quad.lmx");
    ASSERT_TRUE(front && behind) << log.All();
    LxMatrix4 back;
    back.MakeTranslation(0, 0, -20);
    behind->SetWorldTransform(back);

    const LxVector2 right = Project(LxVector3(0.7f, 0, 0));
    const LxVector2 left = Project(LxVector3(-1.6f, 0, 0));
    s_rm->GetFrameStats().Clear();
    unsigned drawn = 0;
    const LxImageData2D before = DrawScene(true, &drawn);
    EXPECT_EQ(drawn, 1u);
    EXPECT_EQ(LxObjectManager::GetRef().GetCulledCount(), 1u);
    EXPECT_EQ(s_rm->GetFrameStats().GetValue(LX_FRAME_STAT_INDEXED_DRAWS), 1u) << "the culled object drew nothing";
    ExpectPixel(before, right, kYellow, "quad ahead");
    ExpectPixel(before, left, kClear, "left of the quad");

    // The camera moves one unit right: the quad moves left in the image.
    m_camera->SetPosition(LxPoint3(1, 0, -5));
    m_camera->SetLookAt(LxPoint3(1, 0, 0), LxVector3(0, 1, 0));
    const LxImageData2D after = DrawScene(true);
    ExpectPixel(after, right, kClear, "where the quad was");
    ExpectPixel(after, left, kYellow, "where the quad went");
    EXPECT_EQ(log.ErrorCount(), 0) << log.All();
}

TEST_F(D3D12SceneTest, ParticleGroupAfterFixedStepsMatchesItsParticles)
{
    LxTest::LogCapture log;
    Write("sparks/particleFile.txt",
          "Lumex Particle Editor Project 1.0\n"
          "ParticleSystem GPUBillboard Sparks Effect \"billboards.fx\"\n"
          "  Emitter Shape E Rate Param Fixed 20 Life Param Fixed 10 Velocity Param Random -1.5 1.5 -1.5 1.5 0 0\n"
          "    Size Param Fixed 0.25 Color Param Fixed 1 0.5 0 1 EndEmitter\n"
          "EndParticleSystem\n");
    LxParticleGroup* sparks = LxObjectManager::GetRef().CreateParticleGroup("sparks", "sparks");
    ASSERT_NE(sparks, nullptr) << log.All();
    for (int i = 0; i <= 10; ++i)
        sparks->UpdateObject(0.1 * i);
    const LxParticleSimulator& sim = sparks->GetSimulator(0);
    ASSERT_EQ(sim.GetCount(), 20u);
    const LxImageData2D image = DrawScene(false);

    // The reference: each pixel centre inside a particle's square (projected; the camera looks straight down +z,
    // so squares stay squares) is orange, every other one the clear colour. Pixels within a quarter pixel of a
    // square's edge are the rasteriser's to decide and are not compared.
    const Rgba orange = {255, 128, 0, 255};
    unsigned compared = 0, mismatched = 0;
    for (unsigned y = 0; y < kSize; ++y)
        for (unsigned x = 0; x < kSize; ++x)
        {
            bool inside = false, edge = false;
            for (unsigned i = 0; i < sim.GetCount(); ++i)
            {
                const LxParticleSimulator::Particle& p = sim.GetData()[i];
                const float h = p.size * 0.5f;
                const LxVector2 lo = Project(p.position - LxVector3(h, -h, 0));
                const LxVector2 hi = Project(p.position + LxVector3(h, -h, 0));
                const float cx = x + 0.5f, cy = y + 0.5f;
                const float d = std::fmin(std::fmin(cx - lo.x, hi.x - cx), std::fmin(cy - lo.y, hi.y - cy));
                if (d > 0.25f)
                    inside = true;
                else if (d > -0.25f)
                    edge = true;
            }
            if (edge && !inside)
                continue;
            ++compared;
            if (!Near(PixelAt(image, x, y), inside ? orange : kClear, 1))
                ++mismatched;
        }
    EXPECT_GT(compared, kSize * kSize * 3 / 4);
    EXPECT_EQ(mismatched, 0u) << "of " << compared << " pixels compared";
    EXPECT_EQ(log.ErrorCount(), 0) << log.All();
}

TEST_F(D3D12SceneTest, ParticleTexturesComeFromTheArchiveThroughTheMapping)
{
    LxTest::LogCapture log;
    // The billboard effect with its colour multiplied by the texture on slot tDiffuse, read at its nearest texel.
    Write("textured.fx",
          "Matrix mWorld < AppUpdate = \"WorldTransform\" >\n"
          "Matrix mViewProj < AppUpdate = \"ViewProjMatrix\" >\n"
          "Texture2D tDiffuse < >\n"
          "Sampler sPoint { Texture = tDiffuse; Filter = MIN_MAG_MIP_POINT; AddressU = CLAMP; AddressV = CLAMP; }\n"
          "Stream Corners { float3 POSITION, float4 COLOR, float2 TEXCOORD }\n"
          "StreamMap Map { Corners }\n"
          "Technique Draw\n{\n  Pass P\n  {\n    StreamMap = Map\n"
          "    VertexShader()\n"
          "      cbuffer Place { float4x4 mWorld; float4x4 mViewProj; };\n"
          "      struct Out { float4 position : SV_Position; float4 color : COLOR; float2 uv : TEXCOORD0; };\n"
          "      Out main(float3 p : POSITION, float4 color : COLOR, float2 uv : TEXCOORD)\n"
          "      {\n"
          "        Out o;\n"
          "        o.position = mul(mViewProj, mul(mWorld, float4(p, 1.0)));\n"
          "        o.color = color;\n"
          "        o.uv = uv;\n"
          "        return o;\n"
          "      }\n"
          "    EndVertexShader\n"
          "    PixelShader()\n"
          "      Texture2D tDiffuse;\n"
          "      SamplerState sPoint;\n"
          "      float4 main(float4 position : SV_Position, float4 color : COLOR, float2 uv : TEXCOORD0) : SV_Target\n"
          "      {\n"
          "        return color * tDiffuse.Sample(sPoint, uv);\n"
          "      }\n"
          "    EndPixelShader\n  }\n}\n");
    // One particle of size 2 at the origin; the file names "flame.png", the mapping sends it to "sheet.png".
    Write("flame/particleFile.txt", "Lumex Particle Editor Project 1.0\n"
                                    "ParticleSystem GPUBillboard Flame Effect \"textured.fx\"\n"
                                    "  Texture Diffuse { tDiffuse \"flame.png\" }\n"
                                    "  Emitter Shape E Rate Param Fixed 10 MaxParticles 1 Life Param Fixed 10\n"
                                    "    Size Param Fixed 2 EndEmitter\n"
                                    "EndParticleSystem\n");
    Write("flame/texturemapping.txt", "flame.png = sheet.png\n");
    // 2 x 2 texels: red, green / blue, white.
    LxImageData2D sheet;
    sheet.Allocate(2, 2, 4);
    const double texels[4][4] = {{1, 0, 0, 1}, {0, 1, 0, 1}, {0, 0, 1, 1}, {1, 1, 1, 1}};
    for (unsigned i = 0; i < 4; ++i)
        for (unsigned c = 0; c < 4; ++c)
            sheet.GetPixel(i % 2, i / 2)[c] = texels[i][c];
    ASSERT_TRUE(LxImageIO::SavePNG((s_dir + "/flame/sheet.png").c_str(), sheet));

    LxParticleGroup* flame = LxObjectManager::GetRef().CreateParticleGroup("flame", "flame");
    ASSERT_NE(flame, nullptr) << log.All();
    flame->UpdateObject(0.0);
    flame->UpdateObject(0.1);
    ASSERT_EQ(flame->GetSimulator(0).GetCount(), 1u);
    const LxImageData2D image = DrawScene(false);
    // The quad's quarters, half way out from its centre along the camera's axes, show the four texels.
    const LxVector3 right = m_camera->GetRight() * 0.5f, up = m_camera->GetUp() * 0.5f;
    ExpectPixel(image, Project(up - right), {255, 0, 0, 255}, "top left");
    ExpectPixel(image, Project(up + right), {0, 255, 0, 255}, "top right");
    ExpectPixel(image, Project(-up - right), {0, 0, 255, 255}, "bottom left");
    ExpectPixel(image, Project(-up + right), {255, 255, 255, 255}, "bottom right");
    ExpectPixel(image, Project(right * 4.0f), kClear, "outside the quad");
    EXPECT_EQ(log.ErrorCount(), 0) << log.All();
}
