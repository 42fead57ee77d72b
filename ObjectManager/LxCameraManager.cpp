#include "ObjectManager/LxCameraManager.h"

#include "Common/LxLogManager.h"
#include "EffectManager/LxAnnotationMap.h"
#include "EffectManager/LxEffectManager.h"
#include "EffectManager/LxEffectParameter.h"

#include <cstring>
#include <new>

LxCameraManager* LxCameraManager::ms_pInstance = nullptr;

namespace
{
enum CameraValue
{
    VIEW_PROJ,
    VIEW_PROJ_INVERSE,
    VIEW_PROJ_TEXTURE,
    VIEW,
    VIEW_INVERSE,
    PROJ,
    PROJ_INVERSE,
    POSITION,
    PROJ_PARAMS,
    FRUSTUM_PLANES,
    VALUE_COUNT
};

const char* const kVariableNames[VALUE_COUNT + 1] = {
    "ViewProjMatrix", "ViewProjMatrixInverse", "ViewProjTextureMatrix", "ViewMatrix",       "ViewMatrixInverse",
    "ProjMatrix",     "ProjMatrixInverse",     "CameraPosition",        "CameraProjParams", "CameraFrustumPlanes",
    nullptr};

const unsigned int kMatrixBytes = 16 * sizeof(float);
const unsigned int kVectorBytes = 4 * sizeof(float);

// Fills one camera value; the camera is resolved at each update (see the header).
class LxCameraUpdateHandler : public LxUpdateHandler
{
public:
    LxCameraUpdateHandler(CameraValue value, const LxString& cameraName) : m_value(value), m_cameraName(cameraName) {}

    void Update(LxEffectParameter&, void* data, unsigned int size) override
    {
        const LxCamera* camera = FindCamera();
        if (!camera)
            return;
        switch (m_value)
        {
        case VIEW_PROJ:
            CopyMatrix(camera->GetViewProjMatrix(), false, data, size);
            break;
        case VIEW_PROJ_INVERSE:
            CopyMatrix(camera->GetViewProjMatrix(), true, data, size);
            break;
        case VIEW_PROJ_TEXTURE:
            CopyMatrix(camera->GetViewProjTextureMatrix(), false, data, size);
            break;
        case VIEW:
            CopyMatrix(camera->GetViewMatrix(), false, data, size);
            break;
        case VIEW_INVERSE:
            CopyMatrix(camera->GetViewMatrix(), true, data, size);
            break;
        case PROJ:
            CopyMatrix(camera->GetProjMatrix(), false, data, size);
            break;
        case PROJ_INVERSE:
            CopyMatrix(camera->GetProjMatrix(), true, data, size);
            break;
        case POSITION:
        {
            const LxPoint3& p = camera->GetPosition();
            CopyVector(LxVector4(p.x, p.y, p.z, 1.0f), data, size);
            break;
        }
        case PROJ_PARAMS:
            CopyVector(camera->GetProjParams(), data, size);
            break;
        case FRUSTUM_PLANES:
        {
            if (size < 6 * kVectorBytes)
            {
                LX_ERROR("Trying to copy data into a buffer that is too small! Camera Frustum Planes parameter "
                         "requires a float4 array of size 6!");
                return;
            }
            const LxFrustum frustum = camera->GetWorldFrustum();
            float* out = static_cast<float*>(data);
            for (unsigned int i = 0; i < 6; ++i)
                std::memcpy(out + 4 * i, &frustum.GetPlane(i).x, kVectorBytes);
            break;
        }
        default:
            break;
        }
    }

private:
    const LxCamera* FindCamera() const
    {
        LxCameraManager* manager = LxCameraManager::GetExistingPtr();
        if (m_cameraName.GetLength() > 0)
        {
            const LxCamera* camera = manager ? manager->GetCameraByName(m_cameraName) : nullptr;
            if (!camera)
                LX_ERROR("Cannot find camera named: %s", m_cameraName.c_str());
            return camera;
        }
        const LxCamera* camera = manager ? manager->GetActiveCamera() : nullptr;
        if (!camera)
            LX_ERROR("Trying to do a camera specific app-update with no camera set!");
        return camera;
    }

    static void CopyMatrix(const LxMatrix4& m, bool inverse, void* data, unsigned int size)
    {
        if (size < kMatrixBytes)
        {
            LX_ERROR("Trying to copy a matrix into a buffer that is too small!");
            return;
        }
        LxMatrix4 value = m;
        if (inverse && !m.Inverse(&value))
            value.MakeZero();
        std::memcpy(data, value.GetData(), kMatrixBytes);
    }

    static void CopyVector(const LxVector4& v, void* data, unsigned int size)
    {
        if (size < kVectorBytes)
        {
            LX_ERROR("Trying to copy data into a buffer that is too small!");
            return;
        }
        const float values[4] = {v.x, v.y, v.z, v.w};
        std::memcpy(data, values, kVectorBytes);
    }

    CameraValue m_value;
    LxString m_cameraName;
};
} // namespace

LxCameraManager* LxCameraManager::GetPtr()
{
    if (!ms_pInstance)
        ms_pInstance = new LxCameraManager();
    return ms_pInstance;
}

void LxCameraManager::ShutDown()
{
    delete ms_pInstance;
    ms_pInstance = nullptr;
}

LxCameraManager::~LxCameraManager()
{
    if (m_bRegistered)
        if (LxEffectManager* effects = LxEffectManager::GetExistingPtr())
            for (const char* const* name = kVariableNames; *name; ++name)
                if (effects->GetUpdateHandlerFactory(*name) == this)
                    effects->DeregisterUpdateHandlerFactory(*name);
    for (Entry& e : m_cameras)
        delete e.camera;
}

bool LxCameraManager::Initialize()
{
    if (m_bRegistered)
        return true;
    LxEffectManager& effects = LxEffectManager::GetRef();
    bool ok = true;
    for (const char* const* name = kVariableNames; *name; ++name)
        if (effects.GetUpdateHandlerFactory(*name) != this && !effects.RegisterUpdateHandlerFactory(*name, this))
            ok = false;
    m_bRegistered = true;
    return ok;
}

const char* const* LxCameraManager::GetVariableNames()
{
    return kVariableNames;
}

LxCamera* LxCameraManager::CreateCamera(const LxString& name)
{
    if (LxCamera* existing = GetCameraByName(name))
    {
        LX_WARNING("Attempted to create a second camera named: '%s'.  Returning existing camera", name.c_str());
        return existing;
    }
    Entry e;
    e.name = name;
    e.camera = new LxCamera();
    m_cameras.Add(e);
    return e.camera;
}

bool LxCameraManager::DestroyCamera(LxCamera* camera)
{
    for (unsigned int i = 0; i < m_cameras.GetCount(); ++i)
        if (camera && m_cameras[i].camera == camera)
        {
            if (m_pActiveCamera == camera)
                m_pActiveCamera = nullptr;
            delete camera;
            m_cameras.RemoveAt(i);
            return true;
        }
    LX_ERROR("LxCameraManager::DestroyCamera.  Couldn't find camera to be destroyed.");
    return false;
}

LxCamera* LxCameraManager::GetCameraByName(const LxString& name) const
{
    for (const Entry& e : m_cameras)
        if (e.name == name)
            return e.camera;
    return nullptr;
}

LxString LxCameraManager::GetCameraName(const LxCamera* camera) const
{
    for (const Entry& e : m_cameras)
        if (camera && e.camera == camera)
            return e.name;
    LX_ERROR("LxCameraManager::GetCameraName.  Can't find name for camera");
    return LxString();
}

LxCountedPtr<LxUpdateHandler> LxCameraManager::CreateUpdateHandler(const LxString& name,
                                                                   LxEffectParameter::DataType type, unsigned int count,
                                                                   const LxAnnotationMap& annotations)
{
    return GetUpdateHandler(name, type, count, annotations);
}

LxCountedPtr<LxUpdateHandler> LxCameraManager::GetUpdateHandler(const LxString& variableName, int parameterType,
                                                                unsigned int arraySize,
                                                                const LxAnnotationMap& annotations)
{
    int value = -1;
    for (int i = 0; i < VALUE_COUNT; ++i)
        if (variableName == kVariableNames[i])
            value = i;
    if (value < 0)
    {
        LX_ERROR("LxCameraManager::GetUpdateHandler.  Unknown camera app-update: %s", variableName.c_str());
        return LxCountedPtr<LxUpdateHandler>();
    }
    const bool wantsMatrix = value <= PROJ_INVERSE;
    const int required = wantsMatrix ? LxEffectParameter::TYPE_MATRIX : LxEffectParameter::TYPE_VECTOR;
    if (parameterType != required)
    {
        LX_ERROR("LxCameraManager::GetUpdateHandler.  %s app-update can only be applied to a %s parameter.",
                 variableName.c_str(), wantsMatrix ? "matrix" : "vector");
        return LxCountedPtr<LxUpdateHandler>();
    }
    if (value == FRUSTUM_PLANES && arraySize < 6)
    {
        LX_ERROR("Trying to copy data into a buffer that is too small! Camera Frustum Planes parameter requires a "
                 "float4 array of size 6!");
        return LxCountedPtr<LxUpdateHandler>();
    }
    const LxString cameraName = annotations.LookupString("CameraName", LxString());
    if (cameraName.GetLength() > 0 && !GetCameraByName(cameraName))
    {
        LX_ERROR("Cannot find camera named: %s", cameraName.c_str());
        return LxCountedPtr<LxUpdateHandler>();
    }
    LxUpdateHandler* handler = new (std::nothrow) LxCameraUpdateHandler(static_cast<CameraValue>(value), cameraName);
    if (!handler)
    {
        LX_CRITICAL("Look! You're out of bloody memory, so stop torturing me!!!!");
        return LxCountedPtr<LxUpdateHandler>();
    }
    return LxCountedPtr<LxUpdateHandler>(handler);
}
