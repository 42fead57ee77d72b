// The object manager: update handlers and their type checks, bone palettes of a posed skeleton against matrices
// worked out by hand, culling with draw statistics and the draw-tracking report, creation rules and reloads.
#include "LxModelTestUtil.h"
#include "LxSceneTestUtil.h"
#include "support/LxTestSupport.h"

#include "Common/LxLogManager.h"
#include "EffectManager/LxAnnotationMap.h"
#include "ObjectManager/LxAnimatedModel.h"
#include "ObjectManager/LxModel.h"
#include "ObjectManager/LxParticleGroup.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <vector>

using LxModelTest::Messages;
using LxSceneTest::Scene;

namespace
{
// Column-major, as the palettes are written.
void ExpectMatrix(const float* actual, const float (&expected)[16], const char* what)
{
    for (int i = 0; i < 16; ++i)
        EXPECT_NEAR(expected[i], actual[i], 1e-5f) << what << " element " << i;
}

const float kIdentity[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
// 90 degrees about z: x -> y, y -> -x.
const float kRotZ[16] = {0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

// Saves the quad model as "quad" and, with `animated`, an animation set "quad.anim" that turns the root a quarter
// about z and slides the tip from (0, 1, 0) at t = 0 to (1, 1, 0) at t = 1 (parent-relative).
void SaveQuad(const Scene& scene, bool animated)
{
    std::unique_ptr<LxModelData> model(LxSceneTest::MakeQuadModel());
    ASSERT_TRUE(model->SaveToPath(scene.Path("quad").c_str()));
    if (!animated)
        return;
    LxAnimationSet set;
    LxKeyframeCurve* rotate = new LxKeyframeCurve(LxAnimationCurve::DATA_QUAT);
    rotate->AddKey(0.0f, LxQuat(0.70710678f, 0.0f, 0.0f, 0.70710678f));
    LxKeyframeCurve* translate = new LxKeyframeCurve(LxAnimationCurve::DATA_VEC3);
    translate->AddKey(0.0f, LxVector3(0, 1, 0));
    translate->AddKey(1.0f, LxVector3(1, 1, 0));
    set.AddCurve("bone.root.rotate", LxCountedPtr<LxAnimationCurve>(rotate));
    set.AddCurve("bone.tip.translate", LxCountedPtr<LxAnimationCurve>(translate));
    std::filesystem::create_directories(scene.Path("quad.anim"));
    ASSERT_TRUE(set.SaveToFile(scene.Path("quad.anim").c_str(), false));
}

const float* Data(const LxAnimatedModel& model, const char* parameter)
{
    return static_cast<const float*>(model.GetModel().GetChunkEffect(0)->GetParameter(parameter)->GetDataPtr());
}

// An object of a plug-in: only the base class's answers.
class PlainObject : public LxObject
{
public:
    using LxObject::LxObject;
};
} // namespace

TEST(LxObjectManager, HandlersCheckTheParameterType)
{
    Scene scene(LxTest::MakeTempDir("scene"));
    LxObjectManager& objects = LxObjectManager::GetRef();
    const int M = LxEffectParameter::TYPE_MATRIX, V = LxEffectParameter::TYPE_VECTOR, F = LxEffectParameter::TYPE_FLOAT;
    struct Case
    {
        const char* name;
        int type;
        unsigned int count;
        const char* refusal; // null: accepted
    } cases[] = {
        {"Bones", M, 64, nullptr},
        {"LastFrameBonesInverseTranspose", M, 1, nullptr},
        {"Bones", V, 64, "Bones app-update variables must be matrix-typed."},
        {"BonesInverseTranspose", F, 1, "Bones app-update variables must be matrix-typed."},
        {"Bones4x3", V, 12, nullptr},
        {"Bones4x3", V, 10, "Bones4x3 app-update variable must be a vec4 array whose size is a multiple of 3"},
        {"LastFrameBones4x3", M, 12, "Bones4x3 app-update variable must be a vec4 array whose size is a multiple of 3"},
        {"StaticBoundingSphere", V, 1, nullptr},
        {"BoundingBoxMin", M, 1, "Bounding volume app-update variables must be vector-typed!"},
        {"WorldTransformInverse", M, 1, nullptr},
        {"WorldTransform", V, 1, "WorldTransform app-update variables must be matrix-typed."},
        {"Nonsense", M, 1, "LxObjectManager::GetUpdateHandler.  Unknown object app-update: Nonsense"},
    };
    const LxAnnotationMap none;
    for (const Case& c : cases)
    {
        LxLogManager::ResetLumexErrorLog();
        Messages log;
        const bool made = objects.GetUpdateHandler(c.name, c.type, c.count, none) != nullptr;
        EXPECT_EQ(c.refusal == nullptr, made) << c.name << " x" << c.count;
        if (c.refusal)
        {
            EXPECT_EQ(std::vector<std::string>{c.refusal}, log.Errors()) << c.name;
        }
    }

    // Through an effect: the effect manager hands the names to the object manager.
    scene.Write("refused.fx",
                std::string("Vector avBones[10] < AppUpdate = \"Bones4x3\" >\n") + LxSceneTest::kDefaultEffect);
    EXPECT_FALSE(LxEffectManager::GetRef().LoadEffect("refused.fx"));
}

TEST(LxObjectManager, BaseObjectsRefuseOptionalQueries)
{
    Scene scene(LxTest::MakeTempDir("scene"));
    PlainObject* plain = new PlainObject("plain");
    ASSERT_TRUE(LxObjectManager::GetRef().RegisterPluginObject(plain));
    EXPECT_EQ(plain, LxObjectManager::GetRef().GetObjectByName("plain"));
    Messages log;
    LxPoint3 a, b;
    float r = 0;
    LxMatrix4 m;
    float palette[16];
    EXPECT_FALSE(plain->SetVisible(false));
    EXPECT_FALSE(plain->GetStaticBoundingBox(&a, &b));
    EXPECT_FALSE(plain->GetStaticBoundingSphere(&a, &r));
    EXPECT_FALSE(plain->GetWorldTransform(&m));
    EXPECT_FALSE(plain->HandleBoneAppUpdate(palette, 4, false, false, false));
    EXPECT_EQ((std::vector<std::string>{"Explicit visibility setting is not implemented for this type.",
                                        "Static bounding box is not available for this object type!",
                                        "Static bounding sphere is not available for this object type!",
                                        "World transform is not available for this object type!",
                                        "The requested bone app-update is not supported for this object type!"}),
              log.Errors());

    // A handler run with nothing being drawn, and a second object of a taken name.
    log.Clear();
    LxCountedPtr<LxUpdateHandler> handler =
        LxObjectManager::GetRef().GetUpdateHandler("WorldTransform", LxEffectParameter::TYPE_MATRIX, 1, {});
    LxEffectParameter parameter("m", LxEffectParameter::TYPE_MATRIX);
    handler->Update(parameter, palette, sizeof palette);
    EXPECT_FALSE(LxObjectManager::GetRef().RegisterPluginObject(new PlainObject("plain")));
    EXPECT_EQ((std::vector<std::string>{"Trying to do an object specific app-update with no object set!",
                                        "LxObjectManager::RegisterPluginObject.  An object named: plain already "
                                        "exists."}),
              log.Errors());
}

TEST(LxObjectManager, BonePalettesOfAPosedSkeleton)
{
    Scene scene(LxTest::MakeTempDir("scene"));
    SaveQuad(scene, true);
    LxAnimatedModel* model = LxObjectManager::GetRef().CreateAnimatedModel("quad", "quad", "quad.anim");
    ASSERT_NE(nullptr, model);
    LxMatrix4 world;
    world.MakeTranslation(5, 0, 0);
    model->SetWorldTransform(world);
    model->UpdateObject(0.0);
    model->UpdateObject(0.5);
    ASSERT_TRUE(model->Draw(nullptr));

    // Root: the quarter turn. Tip at t = 0.5: R x T(0.5, 1, 0) x T(0, -1, 0) = R x T(0.5, 0, 0).
    const float* bones = Data(*model, "amBones");
    ExpectMatrix(bones, kRotZ, "root");
    const float tip[16] = {0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1, 0, 0, 0.5f, 0, 1};
    ExpectMatrix(bones + 16, tip, "tip");
    ExpectMatrix(bones + 32, kIdentity, "bone past the skeleton");
    // The same as three rows per bone.
    const float* rows = Data(*model, "avBones");
    const float tipRows[12] = {0, -1, 0, 0, 1, 0, 0, 0.5f, 0, 0, 1, 0};
    for (int i = 0; i < 12; ++i)
        EXPECT_NEAR(tipRows[i], rows[12 + i], 1e-5f) << "row element " << i;
    // The previous update (t = 0): the tip at its bind place, so only the turn remains.
    ExpectMatrix(Data(*model, "amLastBones") + 16, kRotZ, "last tip");
    // Inverse transpose of [R t; 0 1] is [R 0; -(R^T t)^T 1]: R^T t = (0.5, 0, 0).
    const float tipIT[16] = {0, 1, 0, -0.5f, -1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    ExpectMatrix(Data(*model, "amBonesIT") + 16, tipIT, "tip inverse transpose");
    EXPECT_FLOAT_EQ(5.0f, Data(*model, "mWorld")[12]);
    // The quad's box, moved by the world transform.
    EXPECT_FLOAT_EQ(6.0f, Data(*model, "vBoxMax")[0]);
    EXPECT_FLOAT_EQ(1.0f, Data(*model, "vBoxMax")[1]);

    // A chunk with a bone map draws its own palette: entry 0 is bone 1 (the tip), entry 1 names no bone.
    std::unique_ptr<LxModelData> mapped(LxSceneTest::MakeQuadModel());
    LxArray<int> boneMap;
    boneMap.Add(1);
    boneMap.Add(7);
    mapped->GetChunkDesc(0)->SetBoneMap(boneMap);
    ASSERT_TRUE(mapped->SaveToPath(scene.Path("mapped").c_str()));
    LxAnimatedModel* remapped = LxObjectManager::GetRef().CreateAnimatedModel("mapped", "mapped", "quad.anim");
    ASSERT_NE(nullptr, remapped);
    remapped->UpdateObject(0.5);
    ASSERT_TRUE(remapped->Draw(nullptr));
    ExpectMatrix(Data(*remapped, "amBones"), tip, "map entry 0");
    ExpectMatrix(Data(*remapped, "amBones") + 16, kIdentity, "map entry naming no bone");

    // Without animation every bone rests: the skinning matrices are identities.
    LxAnimatedModel* still = LxObjectManager::GetRef().CreateAnimatedModel("still", "quad");
    ASSERT_NE(nullptr, still);
    still->UpdateObject(0.25);
    ASSERT_EQ(2u, still->GetBonePalette().GetCount());
    ExpectMatrix(still->GetBonePalette()[1].GetData(), kIdentity, "resting tip");
}

TEST(LxObjectManager, CullingAndDrawTracking)
{
    Scene scene(LxTest::MakeTempDir("scene"));
    SaveQuad(scene, false);
    LxObjectManager& objects = LxObjectManager::GetRef();
    LxAnimatedModel* near = objects.CreateAnimatedModel("near", "quad");
    LxAnimatedModel* behind = objects.CreateAnimatedModel("behind", "quad");
    LxAnimatedModel* hidden = objects.CreateAnimatedModel("hidden", "quad");
    ASSERT_TRUE(near && behind && hidden);
    LxMatrix4 back;
    back.MakeTranslation(0, 0, -20);
    behind->SetWorldTransform(back);
    hidden->SetVisible(false);

    LxCamera camera;
    camera.SetPosition(LxPoint3(0, 0, -5));
    ASSERT_TRUE(camera.SetLookAt(LxPoint3(0, 0, 0), LxVector3(0, 1, 0)));
    ASSERT_TRUE(camera.SetFrustum(60, 1, 0.1f, 100));
    const LxFrustum frustum = camera.GetWorldFrustum();
    EXPECT_TRUE(near->IntersectsFrustum(frustum));
    EXPECT_FALSE(behind->IntersectsFrustum(frustum));

    LxRenderManager::GetRef().GetFrameStats().Clear();
    objects.StartDrawTracking();
    EXPECT_EQ(1u, objects.DrawObjects(&frustum));
    EXPECT_EQ(1u, objects.GetCulledCount());
    EXPECT_EQ(1u, LxRenderManager::GetRef().GetFrameStats().GetValue(LX_FRAME_STAT_INDEXED_DRAWS));
    EXPECT_EQ(2u, LxRenderManager::GetRef().GetFrameStats().GetValue(LX_FRAME_STAT_TRIANGLES));
    // Without culling both visible models draw.
    EXPECT_EQ(2u, objects.DrawObjects(nullptr));
    EXPECT_EQ("Lumex Objects Drawn:\n( DrawIndexed:DrawNonIndexed\tPoints:Lines:Tris )\n\n"
              "near\t( 2:0\t0:0:2 )\nbehind\t( 1:0\t0:0:1 )\n",
              std::string(objects.EndDrawTracking().c_str()));
    objects.DrawObjects(nullptr);
    objects.StartDrawTracking();
    EXPECT_EQ("Lumex Objects Drawn:\n( DrawIndexed:DrawNonIndexed\tPoints:Lines:Tris )\n\n",
              std::string(objects.EndDrawTracking().c_str()))
        << "draws outside tracking are not counted";
}

TEST(LxObjectManager, CreationRules)
{
    Scene scene(LxTest::MakeTempDir("scene"));
    SaveQuad(scene, false);
    LxObjectManager& objects = LxObjectManager::GetRef();
    Messages log;
    LxAnimatedModel* first = objects.CreateAnimatedModel("m", "quad", "no-such.anim");
    ASSERT_NE(nullptr, first);
    EXPECT_EQ(std::vector<std::string>{"Unable to load animations for object named: m"}, log.Warnings());
    // A second request loads nothing: it is answered even with the archive gone.
    std::filesystem::remove_all(scene.Path("quad"));
    EXPECT_EQ(first, objects.CreateAnimatedModel("m", "quad"));

    log.Clear();
    scene.Write("fire/particleFile.txt",
                "Lumex Particle Editor Project 1.0\n"
                "ParticleSystem GPUBillboard Sparks Effect \"particles.fx\" EndParticleSystem\n");
    EXPECT_EQ(nullptr, objects.CreateParticleGroup("m", "fire"));
    EXPECT_EQ(nullptr, objects.CreateAnimatedModel("quad", "quad"));
    LxParticleGroup* fire = objects.CreateParticleGroup("fire", "fire", "missing.anim");
    ASSERT_NE(nullptr, fire) << testing::PrintToString(log.Errors());
    EXPECT_EQ(fire, objects.CreateParticleGroup("fire", "elsewhere"));
    EXPECT_EQ(nullptr, objects.CreateAnimatedModel("fire", "quad"));
    EXPECT_EQ(nullptr, objects.CreateParticleGroup("smoke", "smoke"));
    EXPECT_EQ((std::vector<std::string>{"An object named: m already exists, and it is a different kind of object.",
                                        "Model file: quad is missing.", "Animation file: missing.anim is missing.",
                                        "An object named: fire already exists, and it is not an animated model.",
                                        "Particle file: smoke is missing."}),
              log.Errors());
    EXPECT_EQ(std::vector<std::string>{"Unable to load animations for particle system named: fire"}, log.Warnings());
    EXPECT_EQ(2u, objects.GetObjectCount());
}

TEST(LxObjectManager, ReloadLogsWhatChanged)
{
    Scene scene(LxTest::MakeTempDir("scene"));
    SaveQuad(scene, true);
    const std::string fireText = "Lumex Particle Editor Project 1.0\nParticleSystem GPUBillboard Sparks\n"
                                 "Effect \"particles.fx\"\nEndParticleSystem\n";
    scene.Write("fire/particleFile.txt", fireText);
    LxObjectManager& objects = LxObjectManager::GetRef();
    LxAnimatedModel* model = objects.CreateAnimatedModel("quad", "quad", "quad.anim");
    LxAnimatedModel* twin = objects.CreateAnimatedModel("twin", "quad");
    LxParticleGroup* fire = objects.CreateParticleGroup("fire", "fire");
    ASSERT_TRUE(model && twin && fire);
    EXPECT_EQ(model->GetSharedModel(), twin->GetSharedModel()) << "one model file, one model";
    const LxCountedPtr<LxModel> before = model->GetSharedModel();
    int bump = 0;
    auto touch = [&](const std::string& name)
    {
        const std::filesystem::path path(scene.Path(name));
        bump += 10;
        std::filesystem::last_write_time(path, std::filesystem::last_write_time(path) + std::chrono::seconds(bump));
    };
    // The progress lines, and separately the errors (but the device-less resource manager's).
    std::vector<std::string> errors;
    auto reload = [&](bool force)
    {
        LxLogManager::ResetLumexErrorLog();
        Messages log;
        objects.ReloadObjects(force);
        errors.clear();
        for (const std::string& e : log.Errors())
            if (e != "THIS RESOURCE CREATION FUNCTION IS NOT IMPLEMENTED FOR THIS API.") // no device here
                errors.push_back(e);
        return log.Of(LX_LOG_MESSAGE);
    };
    auto hasError = [&](const std::string& e) { return std::find(errors.begin(), errors.end(), e) != errors.end(); };

    EXPECT_EQ((std::vector<std::string>{"Starting object reload.", "Skipping unchanged animation set: quad.anim",
                                        "Skipping unchanged model: quad", "Skipping unchanged model: quad",
                                        "Skipping unchanged particle group: fire", "Object re-load complete."}),
              reload(false));
    EXPECT_TRUE(errors.empty());

    touch("quad.anim/manifest.txt");
    scene.Write("fire/particleFile.txt", "Lumex Particle Editor Project 1.0\nParticleSystem Broken");
    touch("fire/particleFile.txt");
    EXPECT_EQ((std::vector<std::string>{"Starting object reload.", "Re-loaded animation set: quad.anim",
                                        "Skipping unchanged model: quad", "Skipping unchanged model: quad",
                                        "Object re-load complete."}),
              reload(false));
    EXPECT_TRUE(hasError("Failed to reload particle group from file: fire"));
    EXPECT_EQ(1u, fire->GetSystemCount()) << "a failed reload keeps the group";
    EXPECT_EQ(2u, model->GetAnimationSet().GetCount());

    scene.Write("fire/particleFile.txt", fireText);
    std::filesystem::remove_all(scene.Path("quad.anim"));
    EXPECT_EQ((std::vector<std::string>{"Starting object reload.", "Re-loaded model: quad", "Re-loaded model: quad",
                                        "Re-loaded paritcle group: fire", "Object re-load complete."}),
              reload(true));
    EXPECT_NE(before, model->GetSharedModel());
    EXPECT_EQ(model->GetSharedModel(), twin->GetSharedModel()) << "loaded once, handed to both";
    EXPECT_EQ(std::vector<std::string>{"Animation file: quad.anim is missing."}, errors);
    EXPECT_EQ(2u, model->GetAnimationSet().GetCount()) << "curves stay when their file is gone";
}
