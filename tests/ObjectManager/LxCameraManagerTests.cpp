// The camera manager: cameras by name, the active camera, and the update handlers that copy camera values into
// effect parameters (which camera they follow, buffer and type checks, registration with the effect manager).
#include "support/LxTestSupport.h"

#include "Common/LxFrustum.h"
#include "Common/LxMatrix4.h"
#include "EffectManager/LxAnnotationMap.h"
#include "EffectManager/LxEffectManager.h"
#include "EffectManager/LxEffectParameter.h"
#include "ObjectManager/LxCameraManager.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

namespace
{
class CameraManagerTest : public ::testing::Test
{
protected:
    void TearDown() override { LxCameraManager::ShutDown(); }

    // Runs the handler for `name` on a buffer of `floats` floats preset to -7 and returns the buffer.
    std::vector<float> RunHandler(const LxString& name, int type, unsigned int count, unsigned int floats,
                                  const LxAnnotationMap& annotations = LxAnnotationMap())
    {
        LxCountedPtr<LxUpdateHandler> handler =
            LxCameraManager::GetRef().GetUpdateHandler(name, type, count, annotations);
        std::vector<float> buffer(floats, -7.0f);
        EXPECT_TRUE(handler.Get() != nullptr) << name.c_str();
        if (handler.Get())
        {
            LxEffectParameter parameter(name, static_cast<LxEffectParameter::DataType>(type), count);
            handler->Update(parameter, buffer.data(), floats * sizeof(float));
        }
        return buffer;
    }

    static LxMatrix4 AsMatrix(const std::vector<float>& v) { return LxMatrix4(v.data()); }

    static LxCamera* MakeCamera(const char* name, const LxPoint3& position)
    {
        LxCamera* c = LxCameraManager::GetRef().CreateCamera(name);
        c->SetFrustum(90.0f, 2.0f, 0.5f, 40.0f);
        c->SetPosition(position);
        c->SetLookAt(LxPoint3(0, 0, 0), LxVector3(0, 1, 0));
        return c;
    }
};
const int kMatrix = LxEffectParameter::TYPE_MATRIX;
const int kVector = LxEffectParameter::TYPE_VECTOR;
} // namespace

TEST_F(CameraManagerTest, CamerasByName)
{
    LxTest::LogCapture log;
    LxCameraManager& m = LxCameraManager::GetRef();
    EXPECT_EQ(&m, LxCameraManager::GetPtr());
    LxCamera* a = m.CreateCamera("main");
    LxCamera* b = m.CreateCamera("shadow");
    EXPECT_NE(a, b);
    EXPECT_EQ(log.ErrorCount(), 0);
    EXPECT_EQ(m.CreateCamera("main"), a);
    EXPECT_TRUE(log.Contains("Attempted to create a second camera named: 'main'.  Returning existing camera"));
    EXPECT_EQ(m.GetCameraCount(), 2u);
    EXPECT_EQ(m.GetCameraByName("shadow"), b);
    EXPECT_EQ(m.GetCameraByName("Shadow"), nullptr);
    EXPECT_STREQ(m.GetCameraName(b).c_str(), "shadow");

    LxCamera stray;
    EXPECT_STREQ(m.GetCameraName(&stray).c_str(), "");
    EXPECT_TRUE(log.Contains("Can't find name for camera", LX_LOG_ERROR));
    EXPECT_FALSE(m.DestroyCamera(&stray));
    EXPECT_FALSE(m.DestroyCamera(nullptr));
    EXPECT_EQ(log.Count("Couldn't find camera to be destroyed.", LX_LOG_ERROR), 1); // once until reset

    m.SetActiveCamera(a);
    EXPECT_EQ(m.GetActiveCamera(), a);
    EXPECT_TRUE(m.DestroyCamera(a));
    EXPECT_EQ(m.GetActiveCamera(), nullptr);
    EXPECT_EQ(m.GetCameraByName("main"), nullptr);
    EXPECT_EQ(m.GetCameraByName("shadow"), b);
    // The name is free again.
    EXPECT_NE(m.CreateCamera("main"), nullptr);
    EXPECT_EQ(m.GetCameraCount(), 2u);

    LxCameraManager::ShutDown();
    EXPECT_EQ(LxCameraManager::GetExistingPtr(), nullptr);
}

TEST_F(CameraManagerTest, HandlersCopyTheActiveCameraValues)
{
    LxCameraManager& m = LxCameraManager::GetRef();
    LxCamera* c = MakeCamera("main", LxPoint3(3, 4, -5));
    m.SetActiveCamera(c);
    LxTest::LogCapture log;

    const LxMatrix4 vp = AsMatrix(RunHandler("ViewProjMatrix", kMatrix, 1, 16));
    EXPECT_TRUE(vp.Equals(c->GetProjMatrix() * c->GetViewMatrix(), 1e-6f));
    // The origin the camera looks at lands in the middle of the view.
    const LxPoint3 centre = vp.TransformPointProjective(LxPoint3(0, 0, 0));
    EXPECT_NEAR(centre.x, 0.0f, 1e-5f);
    EXPECT_NEAR(centre.y, 0.0f, 1e-5f);
    const LxMatrix4 tex = AsMatrix(RunHandler("ViewProjTextureMatrix", kMatrix, 1, 16));
    const LxPoint3 uv = tex.TransformPointProjective(LxPoint3(0, 0, 0));
    EXPECT_NEAR(uv.x, 0.5f, 1e-5f);
    EXPECT_NEAR(uv.y, 0.5f, 1e-5f);

    struct Pair
    {
        const char* matrix;
        const char* inverse;
    } pairs[] = {{"ViewProjMatrix", "ViewProjMatrixInverse"},
                 {"ViewMatrix", "ViewMatrixInverse"},
                 {"ProjMatrix", "ProjMatrixInverse"}};
    for (const Pair& p : pairs)
    {
        const LxMatrix4 product =
            AsMatrix(RunHandler(p.matrix, kMatrix, 1, 16)) * AsMatrix(RunHandler(p.inverse, kMatrix, 1, 16));
        EXPECT_TRUE(product.IsIdentity(1e-4f)) << p.matrix;
    }
    EXPECT_TRUE(AsMatrix(RunHandler("ViewMatrix", kMatrix, 1, 16)) == c->GetViewMatrix());
    EXPECT_TRUE(AsMatrix(RunHandler("ProjMatrix", kMatrix, 1, 16)) == c->GetProjMatrix());

    EXPECT_EQ(RunHandler("CameraPosition", kVector, 1, 4), (std::vector<float>{3, 4, -5, 1}));
    EXPECT_EQ(RunHandler("CameraProjParams", kVector, 1, 4), (std::vector<float>{0.5f, 40.0f, 2.0f, 0.025f}));

    // Six outward planes: the looked-at origin is inside all, the camera itself outside the near plane only.
    const std::vector<float> planes = RunHandler("CameraFrustumPlanes", kVector, 6, 24);
    const LxFrustum f = c->GetWorldFrustum();
    for (unsigned int i = 0; i < 6; ++i)
    {
        const float* pl = &planes[4 * i];
        EXPECT_EQ(std::memcmp(pl, &f.GetPlane(i).x, 16), 0) << i;
        EXPECT_LT(-pl[3], 0.0f) << i; // origin: a*0 + b*0 + c*0 - d
        const float atCamera = pl[0] * 3 + pl[1] * 4 + pl[2] * -5 - pl[3];
        if (i == LxFrustum::LX_PLANE_NEAR)
        {
            EXPECT_GT(atCamera, 0.0f);
        }
        else if (i != LxFrustum::LX_PLANE_FAR)
        {
            EXPECT_NEAR(atCamera, 0.0f, 1e-4f) << i;
        }
    }

    // The handler follows whichever camera is active at update time.
    LxCamera* other = MakeCamera("other", LxPoint3(-1, 2, 9));
    m.SetActiveCamera(other);
    EXPECT_EQ(RunHandler("CameraPosition", kVector, 1, 4), (std::vector<float>{-1, 2, 9, 1}));
    EXPECT_EQ(log.ErrorCount(), 0) << log.All();
}

TEST_F(CameraManagerTest, CameraNameAnnotationPinsTheCamera)
{
    LxCameraManager& m = LxCameraManager::GetRef();
    m.SetActiveCamera(MakeCamera("main", LxPoint3(1, 1, 1)));
    LxCamera* light = MakeCamera("light", LxPoint3(7, 8, 9));
    LxAnnotationMap annotations;
    annotations.SetValue("CameraName", new LxAnnotationValue("light"));
    EXPECT_EQ(RunHandler("CameraPosition", kVector, 1, 4, annotations), (std::vector<float>{7, 8, 9, 1}));

    LxTest::LogCapture log;
    LxCountedPtr<LxUpdateHandler> handler = m.GetUpdateHandler("CameraPosition", kVector, 1, annotations);
    ASSERT_TRUE(handler.Get() != nullptr);
    m.DestroyCamera(light);
    LxEffectParameter parameter("p", LxEffectParameter::TYPE_VECTOR);
    float buffer[4] = {-7, -7, -7, -7};
    handler->Update(parameter, buffer, sizeof(buffer));
    EXPECT_TRUE(log.Contains("Cannot find camera named: light", LX_LOG_ERROR)) << log.All();
    EXPECT_EQ(buffer[0], -7.0f);

    log.Clear();
    LxLogManager::ResetLumexErrorLog();
    annotations.SetValue("CameraName", new LxAnnotationValue("nobody"));
    EXPECT_TRUE(m.GetUpdateHandler("ViewMatrix", kMatrix, 1, annotations).Get() == nullptr);
    EXPECT_TRUE(log.Contains("Cannot find camera named: nobody", LX_LOG_ERROR));
}

TEST_F(CameraManagerTest, RefusalsAndShortBuffers)
{
    LxCameraManager& m = LxCameraManager::GetRef();
    // Handler creation refusals.
    struct Refusal
    {
        const char* name;
        int type;
        unsigned int count;
        const char* message;
    } refusals[] = {
        {"ViewMatrix", kVector, 1, "ViewMatrix app-update can only be applied to a matrix parameter."},
        {"CameraPosition", kMatrix, 1, "CameraPosition app-update can only be applied to a vector parameter."},
        {"CameraFrustumPlanes", kVector, 5,
         "Trying to copy data into a buffer that is too small! Camera Frustum Planes parameter requires a float4 "
         "array of size 6!"},
        {"CameraFOV", kVector, 1, "Unknown camera app-update: CameraFOV"},
    };
    for (const Refusal& r : refusals)
    {
        LxTest::LogCapture log;
        EXPECT_TRUE(m.GetUpdateHandler(r.name, r.type, r.count, LxAnnotationMap()).Get() == nullptr);
        EXPECT_TRUE(log.Contains(r.message, LX_LOG_ERROR)) << log.All();
    }

    // Updates with no active camera and into short buffers write nothing.
    struct Short
    {
        const char* name;
        int type;
        unsigned int count, bytes;
        const char* message;
    } shorts[] = {
        {"ViewMatrix", kMatrix, 1, 64, "Trying to do a camera specific app-update with no camera set!"},
        {"ProjMatrixInverse", kMatrix, 1, 60, "Trying to copy a matrix into a buffer that is too small!"},
        {"CameraProjParams", kVector, 1, 12, "Trying to copy data into a buffer that is too small!"},
        {"CameraFrustumPlanes", kVector, 6, 80,
         "Trying to copy data into a buffer that is too small! Camera Frustum Planes parameter requires a float4 "
         "array of size 6!"},
    };
    for (const Short& s : shorts)
    {
        m.SetActiveCamera(s.bytes == 64 ? nullptr : MakeCamera("c", LxPoint3(0, 0, -3)));
        LxTest::LogCapture log;
        LxCountedPtr<LxUpdateHandler> handler = m.GetUpdateHandler(s.name, s.type, s.count, LxAnnotationMap());
        ASSERT_TRUE(handler.Get() != nullptr);
        std::vector<float> buffer(32, -7.0f);
        LxEffectParameter parameter("p", static_cast<LxEffectParameter::DataType>(s.type), s.count);
        handler->Update(parameter, buffer.data(), s.bytes);
        EXPECT_TRUE(log.Contains(s.message, LX_LOG_ERROR)) << log.All();
        EXPECT_EQ(buffer, std::vector<float>(32, -7.0f)) << s.name;
    }
}

TEST_F(CameraManagerTest, RegistersWithTheEffectManager)
{
    LxEffectManager& effects = LxEffectManager::GetRef();
    LxCameraManager& m = LxCameraManager::GetRef();
    ASSERT_TRUE(m.Initialize());
    EXPECT_TRUE(m.Initialize());
    for (const char* const* name = LxCameraManager::GetVariableNames(); *name; ++name)
        EXPECT_EQ(effects.GetUpdateHandlerFactory(*name), &m) << *name;
    m.SetActiveCamera(MakeCamera("main", LxPoint3(1, 2, 3)));
    EXPECT_TRUE(effects.GetUpdateHandler("CameraPosition", kVector, 1, LxAnnotationMap()).Get() != nullptr);

    LxCameraManager::ShutDown();
    EXPECT_EQ(effects.GetUpdateHandlerFactory("ViewMatrix"), nullptr);
    LxEffectManager::ShutDown();
}
