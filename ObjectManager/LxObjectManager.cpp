#include "ObjectManager/LxObjectManager.h"

#include "Common/LxBoundingSphere.h"
#include "Common/LxFile.h"
#include "Common/LxLogManager.h"
#include "EffectManager/LxAnnotationMap.h"
#include "EffectManager/LxEffectManager.h"
#include "EffectManager/LxEffectParameter.h"
#include "GPUResourceManager/LxGPUResourceManager.h"
#include "ObjectManager/LxAnimatedModel.h"
#include "ObjectManager/LxAnimationSet.h"
#include "ObjectManager/LxModel.h"
#include "ObjectManager/LxParticleGroup.h"

#include <cstring>
#include <new>

LxObjectManager* LxObjectManager::ms_pInstance = nullptr;

namespace
{
enum ObjectValue
{
    BONES,
    BONES_4X3,
    LAST_FRAME_BONES,
    LAST_FRAME_BONES_4X3,
    BONES_INVERSE_TRANSPOSE,
    LAST_FRAME_BONES_INVERSE_TRANSPOSE,
    BOUNDING_BOX_MIN,
    BOUNDING_BOX_MAX,
    STATIC_BOUNDING_BOX_MIN,
    STATIC_BOUNDING_BOX_MAX,
    BOUNDING_SPHERE,
    STATIC_BOUNDING_SPHERE,
    WORLD_TRANSFORM,
    WORLD_TRANSFORM_INVERSE,
    VALUE_COUNT
};

const char* const kVariableNames[VALUE_COUNT + 1] = {"Bones",
                                                     "Bones4x3",
                                                     "LastFrameBones",
                                                     "LastFrameBones4x3",
                                                     "BonesInverseTranspose",
                                                     "LastFrameBonesInverseTranspose",
                                                     "BoundingBoxMin",
                                                     "BoundingBoxMax",
                                                     "StaticBoundingBoxMin",
                                                     "StaticBoundingBoxMax",
                                                     "BoundingSphere",
                                                     "StaticBoundingSphere",
                                                     "WorldTransform",
                                                     "WorldTransformInverse",
                                                     nullptr};

const unsigned int kRegisterBytes = 4 * sizeof(float);

// Fills one value of the object being drawn (looked up at each update).
class LxObjectUpdateHandler : public LxUpdateHandler
{
public:
    explicit LxObjectUpdateHandler(ObjectValue value) : m_value(value) {}

    void Update(LxEffectParameter&, void* data, unsigned int size) override
    {
        LxObjectManager* manager = LxObjectManager::GetExistingPtr();
        LxObject* object = manager ? manager->GetObjectBeingDrawn() : nullptr;
        if (!object)
        {
            LX_ERROR("Trying to do an object specific app-update with no object set!");
            return;
        }
        switch (m_value)
        {
        case BONES:
        case BONES_4X3:
        case LAST_FRAME_BONES:
        case LAST_FRAME_BONES_4X3:
        case BONES_INVERSE_TRANSPOSE:
        case LAST_FRAME_BONES_INVERSE_TRANSPOSE:
        {
            const bool last = m_value == LAST_FRAME_BONES || m_value == LAST_FRAME_BONES_4X3 ||
                              m_value == LAST_FRAME_BONES_INVERSE_TRANSPOSE;
            const bool inverseTranspose =
                m_value == BONES_INVERSE_TRANSPOSE || m_value == LAST_FRAME_BONES_INVERSE_TRANSPOSE;
            const bool rows4x3 = m_value == BONES_4X3 || m_value == LAST_FRAME_BONES_4X3;
            object->HandleBoneAppUpdate(data, size / kRegisterBytes, last, inverseTranspose, rows4x3);
            break;
        }
        case BOUNDING_BOX_MIN:
        case BOUNDING_BOX_MAX:
        {
            const LxBoundingBox& box = object->GetBoundingBox();
            const LxPoint3 p = box.IsEmpty() ? LxPoint3() : (m_value == BOUNDING_BOX_MIN ? box.GetMin() : box.GetMax());
            CopyVector(p.x, p.y, p.z, 1.0f, data, size);
            break;
        }
        case STATIC_BOUNDING_BOX_MIN:
        case STATIC_BOUNDING_BOX_MAX:
        {
            LxPoint3 min, max;
            if (object->GetStaticBoundingBox(&min, &max))
            {
                const LxPoint3& p = m_value == STATIC_BOUNDING_BOX_MIN ? min : max;
                CopyVector(p.x, p.y, p.z, 1.0f, data, size);
            }
            break;
        }
        case BOUNDING_SPHERE:
        {
            const LxBoundingSphere sphere(object->GetBoundingBox());
            const LxPoint3& c = sphere.GetCenter();
            CopyVector(c.x, c.y, c.z, sphere.IsEmpty() ? 0.0f : sphere.GetRadius(), data, size);
            break;
        }
        case STATIC_BOUNDING_SPHERE:
        {
            LxPoint3 c;
            float radius = 0.0f;
            if (object->GetStaticBoundingSphere(&c, &radius))
                CopyVector(c.x, c.y, c.z, radius, data, size);
            break;
        }
        case WORLD_TRANSFORM:
        case WORLD_TRANSFORM_INVERSE:
        {
            LxMatrix4 world;
            if (!object->GetWorldTransform(&world))
                break;
            if (size < 4 * kRegisterBytes)
            {
                LX_ERROR("Trying to copy a matrix into a buffer that is too small!");
                break;
            }
            LxMatrix4 value = world;
            if (m_value == WORLD_TRANSFORM_INVERSE && !world.Inverse(&value))
                value.MakeZero();
            std::memcpy(data, value.GetData(), 4 * kRegisterBytes);
            break;
        }
        default:
            break;
        }
    }

private:
    static void CopyVector(float x, float y, float z, float w, void* data, unsigned int size)
    {
        if (size < kRegisterBytes)
        {
            LX_ERROR("Trying to copy data into a buffer that is too small!");
            return;
        }
        const float values[4] = {x, y, z, w};
        std::memcpy(data, values, kRegisterBytes);
    }

    ObjectValue m_value;
};

} // namespace

LxObjectManager* LxObjectManager::GetPtr()
{
    if (!ms_pInstance)
        ms_pInstance = new LxObjectManager();
    return ms_pInstance;
}

void LxObjectManager::ShutDown()
{
    delete ms_pInstance;
    ms_pInstance = nullptr;
}

LxObjectManager::~LxObjectManager()
{
    if (m_bRegistered)
        if (LxEffectManager* effects = LxEffectManager::GetExistingPtr())
        {
            for (const char* const* name = kVariableNames; *name; ++name)
                if (effects->GetUpdateHandlerFactory(*name) == this)
                    effects->DeregisterUpdateHandlerFactory(*name);
            for (const PluginFactory& f : m_pluginFactories)
                if (effects->GetUpdateHandlerFactory(f.name) == this)
                    effects->DeregisterUpdateHandlerFactory(f.name);
        }
    // Newest first: a plug-in object may refer to one made before it.
    for (unsigned int i = m_objects.GetCount(); i-- > 0;)
        delete m_objects[i];
}

bool LxObjectManager::Initialize()
{
    if (m_bRegistered)
        return true;
    LxEffectManager& effects = LxEffectManager::GetRef();
    bool ok = true;
    for (const char* const* name = kVariableNames; *name; ++name)
        if (effects.GetUpdateHandlerFactory(*name) != this && !effects.RegisterUpdateHandlerFactory(*name, this))
            ok = false;
    for (const PluginFactory& f : m_pluginFactories)
        if (effects.GetUpdateHandlerFactory(f.name) != this && !effects.RegisterUpdateHandlerFactory(f.name, this))
            ok = false;
    m_bRegistered = true;
    return ok;
}

const char* const* LxObjectManager::GetVariableNames()
{
    return kVariableNames;
}

bool LxObjectManager::RegisterUpdateHandlerFactory(const LxString& name, LxUpdateHandlerFactory* factory)
{
    for (const char* const* n = kVariableNames; *n; ++n)
        if (name == *n)
        {
            LX_ERROR("LxObjectManager::RegisterUpdateHandlerFactory.  %s is a built-in object app-update",
                     name.c_str());
            return false;
        }
    for (const PluginFactory& f : m_pluginFactories)
        if (f.name == name)
        {
            LX_ERROR("LxObjectManager::RegisterUpdateHandlerFactory.  Second factory for object app-update %s",
                     name.c_str());
            return false;
        }
    if (!factory)
        return false;
    m_pluginFactories.Add(PluginFactory{name, factory});
    if (m_bRegistered)
        return LxEffectManager::GetRef().RegisterUpdateHandlerFactory(name, this);
    return true;
}

LxCountedPtr<LxUpdateHandler> LxObjectManager::CreateUpdateHandler(const LxString& name,
                                                                   LxEffectParameter::DataType type, unsigned int count,
                                                                   const LxAnnotationMap& annotations)
{
    return GetUpdateHandler(name, type, count, annotations);
}

LxCountedPtr<LxUpdateHandler> LxObjectManager::GetUpdateHandler(const LxString& variableName, int dataType,
                                                                unsigned int arraySize,
                                                                const LxAnnotationMap& annotations)
{
    int value = -1;
    for (int i = 0; i < VALUE_COUNT; ++i)
        if (variableName == kVariableNames[i])
            value = i;
    if (value < 0)
    {
        for (const PluginFactory& f : m_pluginFactories)
            if (f.name == variableName)
                return f.factory->CreateUpdateHandler(variableName, static_cast<LxEffectParameter::DataType>(dataType),
                                                      arraySize, annotations);
        LX_ERROR("LxObjectManager::GetUpdateHandler.  Unknown object app-update: %s", variableName.c_str());
        return LxCountedPtr<LxUpdateHandler>();
    }
    switch (value)
    {
    case BONES_4X3:
    case LAST_FRAME_BONES_4X3:
        if (dataType != LxEffectParameter::TYPE_VECTOR || arraySize == 0 || arraySize % 3 != 0)
        {
            LX_ERROR("Bones4x3 app-update variable must be a vec4 array whose size is a multiple of 3");
            return LxCountedPtr<LxUpdateHandler>();
        }
        break;
    case BONES:
    case LAST_FRAME_BONES:
    case BONES_INVERSE_TRANSPOSE:
    case LAST_FRAME_BONES_INVERSE_TRANSPOSE:
        if (dataType != LxEffectParameter::TYPE_MATRIX)
        {
            LX_ERROR("Bones app-update variables must be matrix-typed.");
            return LxCountedPtr<LxUpdateHandler>();
        }
        break;
    case WORLD_TRANSFORM:
    case WORLD_TRANSFORM_INVERSE:
        if (dataType != LxEffectParameter::TYPE_MATRIX)
        {
            LX_ERROR("WorldTransform app-update variables must be matrix-typed.");
            return LxCountedPtr<LxUpdateHandler>();
        }
        break;
    default:
        if (dataType != LxEffectParameter::TYPE_VECTOR)
        {
            LX_ERROR("Bounding volume app-update variables must be vector-typed!");
            return LxCountedPtr<LxUpdateHandler>();
        }
        break;
    }
    LxUpdateHandler* handler = new (std::nothrow) LxObjectUpdateHandler(static_cast<ObjectValue>(value));
    if (!handler)
    {
        LX_CRITICAL("Look! You're out of bloody memory, so stop torturing me!!!!");
        return LxCountedPtr<LxUpdateHandler>();
    }
    return LxCountedPtr<LxUpdateHandler>(handler);
}

// --- objects ----------------------------------------------------------------------------------------------------

LxObject* LxObjectManager::GetObjectByName(const LxString& name) const
{
    LxObject* const* found = m_objectsByName.FindValue(name);
    return found ? *found : nullptr;
}

bool LxObjectManager::RegisterPluginObject(LxObject* object)
{
    if (!object)
        return false;
    if (GetObjectByName(object->GetName()))
    {
        LX_ERROR("LxObjectManager::RegisterPluginObject.  An object named: %s already exists.",
                 object->GetName().c_str());
        delete object;
        return false;
    }
    m_objects.Add(object);
    m_objectsByName.Insert(object->GetName(), object);
    return true;
}

bool LxObjectManager::DestroyObject(LxObject* object)
{
    if (!object || !m_objects.Remove(object))
    {
        LX_ERROR("LxObjectManager::DestroyObject.  Couldn't find object to be destroyed.");
        return false;
    }
    if (m_pObjectBeingDrawn == object)
        m_pObjectBeingDrawn = nullptr;
    m_objectsByName.Erase(object->GetName());
    delete object;
    return true;
}

LxAnimatedModel* LxObjectManager::CreateAnimatedModel(const LxString& name, const LxString& modelFile,
                                                      const LxString& animationFile)
{
    if (LxObject* existing = GetObjectByName(name))
    {
        if (existing->GetObjectType() == LxObject::OBJECT_ANIMATED_MODEL)
            return static_cast<LxAnimatedModel*>(existing);
        LX_ERROR("An object named: %s already exists, and it is not an animated model.", name.c_str());
        return nullptr;
    }
    LxString modelPath;
    if (!LookupObjectPath(modelFile, &modelPath))
    {
        LX_ERROR("Model file: %s is missing.", modelFile.c_str());
        return nullptr;
    }
    LxCountedPtr<LxModel> model = GetModel(modelPath);
    if (!model)
        return nullptr;
    LxAnimationSet* animations = nullptr;
    long long animationStamp = -1;
    if (!animationFile.IsEmpty())
    {
        LxString animationPath;
        if (LookupObjectPath(animationFile, &animationPath))
        {
            animations = LxAnimationSet::CreateFromFile(animationPath);
            animationStamp = GetFileStamp(animationPath, "manifest.txt");
        }
        if (!animations)
            LX_WARNING("Unable to load animations for object named: %s", name.c_str());
    }
    LxAnimatedModel* object = new LxAnimatedModel(name, model, animations);
    object->SetSourceFiles(modelFile, GetFileStamp(modelPath, "manifest.txt"), animationFile, animationStamp);
    m_objects.Add(object);
    m_objectsByName.Insert(name, object);
    return object;
}

LxParticleGroup* LxObjectManager::CreateParticleGroup(const LxString& name, const LxString& particleFile,
                                                      const LxString& animationFile)
{
    if (LxObject* existing = GetObjectByName(name))
    {
        if (existing->GetObjectType() == LxObject::OBJECT_PARTICLE_GROUP)
            return static_cast<LxParticleGroup*>(existing);
        LX_ERROR("An object named: %s already exists, and it is a different kind of object.", name.c_str());
        return nullptr;
    }
    LxString particlePath;
    if (!LookupObjectPath(particleFile, &particlePath))
    {
        LX_ERROR("Particle file: %s is missing.", particleFile.c_str());
        return nullptr;
    }
    LxAnimationSet* animations = nullptr;
    if (!animationFile.IsEmpty())
    {
        LxString animationPath;
        if (!LookupObjectPath(animationFile, &animationPath))
            LX_ERROR("Animation file: %s is missing.", animationFile.c_str());
        else
            animations = LxAnimationSet::CreateFromFile(animationPath);
        if (!animations)
            LX_WARNING("Unable to load animations for particle system named: %s", name.c_str());
    }
    LxParticleGroup* group = LxParticleGroup::Create(name, particlePath, animations);
    delete animations;
    if (!group)
        return nullptr;
    group->SetSourceFile(particleFile, GetFileStamp(particlePath, "particleFile.txt"));
    m_objects.Add(group);
    m_objectsByName.Insert(name, group);
    return group;
}

LxCountedPtr<LxModel> LxObjectManager::GetModel(const LxString& path)
{
    const long long stamp = GetFileStamp(path, "manifest.txt");
    for (ModelRecord& r : m_models)
        if (r.path == path)
        {
            if (r.stamp == stamp)
                return r.model;
            LxCountedPtr<LxModel> model(LxModel::LoadFromPath(path));
            if (model)
            {
                r.model = model;
                r.stamp = stamp;
            }
            return model;
        }
    LxCountedPtr<LxModel> model(LxModel::LoadFromPath(path));
    if (model)
        m_models.Add(ModelRecord{path, model, stamp});
    return model;
}

// --- files ------------------------------------------------------------------------------------------------------

void LxObjectManager::AddSearchPath(const LxString& path)
{
    if (!m_searchPaths.Contains(path))
        m_searchPaths.Add(path);
}

namespace
{
bool PathExists(const LxString& path)
{
    long long stamp = 0;
    return LxFile::Exists(path) || LxFile::GetTimeStamp(path, stamp);
}
} // namespace

bool LxObjectManager::LookupObjectPath(const LxString& name, LxString* path) const
{
    if (name.IsEmpty())
        return false;
    if (PathExists(name))
    {
        *path = name;
        return true;
    }
    for (const LxString& folder : m_searchPaths)
    {
        const LxString candidate = folder + "/" + name;
        if (PathExists(candidate))
        {
            *path = candidate;
            return true;
        }
    }
    return false;
}

long long LxObjectManager::GetFileStamp(const LxString& path, const LxString& keyFile)
{
    long long own = -1, key = -1;
    if (!LxFile::GetTimeStamp(path, own))
        own = -1;
    if (!LxFile::GetTimeStamp(path + "/" + keyFile, key))
        key = -1;
    return own > key ? own : key;
}

void LxObjectManager::ReloadObjects(bool force)
{
    LX_MESSAGE("Starting object reload.");
    LxArray<LxString> reloadedPaths;
    for (LxObject* o : m_objects)
    {
        if (o->GetObjectType() == LxObject::OBJECT_ANIMATED_MODEL)
            ReloadModel(*static_cast<LxAnimatedModel*>(o), force, reloadedPaths);
        else if (o->GetObjectType() == LxObject::OBJECT_PARTICLE_GROUP)
            ReloadParticleGroup(*static_cast<LxParticleGroup*>(o), force);
    }
    LX_MESSAGE("Object re-load complete.");
}

void LxObjectManager::ReloadModel(LxAnimatedModel& model, bool force, LxArray<LxString>& reloadedPaths)
{
    model.StartReload();
    const LxString& animationFile = model.GetAnimationFile();
    LxString path;
    if (!animationFile.IsEmpty())
    {
        if (!LookupObjectPath(animationFile, &path))
            LX_ERROR("Animation file: %s is missing.", animationFile.c_str());
        else
        {
            const long long stamp = GetFileStamp(path, "manifest.txt");
            if (!force && stamp == model.GetAnimationTimeStamp())
                LX_MESSAGE("Skipping unchanged animation set: %s", animationFile.c_str());
            else if (LxAnimationSet* animations = LxAnimationSet::CreateFromFile(path))
            {
                model.ReplaceAnimations(*animations);
                model.SetAnimationTimeStamp(stamp);
                delete animations;
                LX_MESSAGE("Re-loaded animation set: %s", animationFile.c_str());
            }
            else
                LX_ERROR("Failed to reload animation set from file: %s", animationFile.c_str());
        }
    }
    const LxString& modelFile = model.GetModelFile();
    if (!LookupObjectPath(modelFile, &path))
        LX_ERROR("Model file: %s is missing.", modelFile.c_str());
    else
    {
        const long long stamp = GetFileStamp(path, "manifest.txt");
        if (!force && stamp == model.GetModelTimeStamp())
            LX_MESSAGE("Skipping unchanged model: %s", modelFile.c_str());
        else
        {
            // Another object of this file may have loaded it already in this pass.
            LxCountedPtr<LxModel> replacement;
            for (const ModelRecord& r : m_models)
                if (r.path == path && reloadedPaths.Contains(path))
                    replacement = r.model;
            if (!replacement)
            {
                replacement = LxCountedPtr<LxModel>(LxModel::LoadFromPath(path));
                if (replacement)
                {
                    bool known = false;
                    for (ModelRecord& r : m_models)
                        if (r.path == path)
                        {
                            r.model = replacement;
                            r.stamp = stamp;
                            known = true;
                        }
                    if (!known)
                        m_models.Add(ModelRecord{path, replacement, stamp});
                    reloadedPaths.Add(path);
                }
            }
            if (replacement)
            {
                if (m_pObjectBeingDrawn == &model)
                    m_pObjectBeingDrawn = nullptr;
                model.ReplaceModel(replacement);
                model.SetModelTimeStamp(stamp);
                LX_MESSAGE("Re-loaded model: %s", modelFile.c_str());
            }
            else
                LX_ERROR("Failed to reload model from file: %s", modelFile.c_str());
        }
    }
    model.EndReload();
}

void LxObjectManager::ReloadParticleGroup(LxParticleGroup& group, bool force)
{
    const LxString& file = group.GetParticleFile();
    LxString path;
    if (!LookupObjectPath(file, &path))
    {
        LX_ERROR("Particle file: %s is missing.", file.c_str());
        return;
    }
    const long long stamp = GetFileStamp(path, "particleFile.txt");
    if (!force && stamp == group.GetTimeStamp())
        LX_MESSAGE("Skipping unchanged particle group: %s", file.c_str());
    else if (group.Reload(path))
    {
        group.SetSourceFile(file, stamp);
        LX_MESSAGE("Re-loaded paritcle group: %s", file.c_str());
    }
    else
        LX_ERROR("Failed to reload particle group from file: %s", file.c_str());
}

void LxObjectManager::WarmGPUCaches()
{
    if (LxGPUResourceManager* resources = LxGPUResourceManager::GetExistingPtr())
        resources->WarmGPUCaches();
}

// --- per frame --------------------------------------------------------------------------------------------------

void LxObjectManager::UpdateObjects(double time)
{
    for (unsigned int i = 0; i < m_objects.GetCount(); ++i)
        m_objects[i]->UpdateObject(time);
}

unsigned int LxObjectManager::DrawObjects(const LxFrustum* cullFrustum)
{
    unsigned int drawn = 0;
    m_nCulled = 0;
    for (unsigned int i = 0; i < m_objects.GetCount(); ++i)
    {
        LxObject* o = m_objects[i];
        if (!o->IsVisible())
            continue;
        if (cullFrustum && !o->IntersectsFrustum(*cullFrustum))
        {
            ++m_nCulled;
            continue;
        }
        if (o->Draw(nullptr))
            ++drawn;
    }
    return drawn;
}

// --- draw tracking ----------------------------------------------------------------------------------------------

void LxObjectManager::StartDrawTracking()
{
    m_tracked.Clear();
    m_bTracking = true;
}

void LxObjectManager::TrackDraw(const LxObject& object, bool indexed, LxRenderManager::PrimType type)
{
    if (!m_bTracking)
        return;
    TrackedObject* entry = nullptr;
    for (TrackedObject& t : m_tracked)
        if (t.name == object.GetName())
            entry = &t;
    if (!entry)
    {
        m_tracked.Add(TrackedObject{object.GetName(), 0, 0, 0, 0, 0});
        entry = &m_tracked.GetLast();
    }
    ++(indexed ? entry->indexed : entry->nonIndexed);
    if (type == LxRenderManager::PRIM_POINT_LIST)
        ++entry->points;
    else if (type == LxRenderManager::PRIM_LINE_LIST || type == LxRenderManager::PRIM_LINE_STRIP ||
             type == LxRenderManager::PRIM_LINE_LIST_ADJ || type == LxRenderManager::PRIM_LINE_STRIP_ADJ)
        ++entry->lines;
    else
        ++entry->triangles;
}

LxString LxObjectManager::EndDrawTracking()
{
    LxString report("Lumex Objects Drawn:\n( DrawIndexed:DrawNonIndexed\tPoints:Lines:Tris )\n\n");
    for (const TrackedObject& t : m_tracked)
        report.AppendFormat("%s\t( %u:%u\t%u:%u:%u )\n", t.name.c_str(), t.indexed, t.nonIndexed, t.points, t.lines,
                            t.triangles);
    m_tracked.Clear();
    m_bTracking = false;
    return report;
}
