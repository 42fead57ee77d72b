// LxCamera: a camera's position, orientation and projection, and the matrices effects read from it.
//
// Frame: the camera looks along its view axis, with its up and right axes completing a left-handed frame
// (right = up x view, as Direct3D's view space: +X right, +Y up, +Z into the screen). The view matrix takes world
// space to that view space; the projection maps view space to clip space with depth 0..1 (Direct3D, the default) or
// -1..1 (OpenGL style, SetDepthZeroToOne(false)).
//
// Projection: the horizontal field of view in degrees, the aspect ratio (width / height) and the six frustum values;
// left, right, bottom and top lie on the near plane for a perspective camera and bound the box of an orthographic
// one. Refused input (an aspect ratio <= 0, a field of view outside (0, 180], a look-at target on the camera, an up
// vector along the view direction, an unknown cube face) is logged and changes nothing.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxArray.h"
#include "Common/LxFrustum.h"
#include "Common/LxMatrix4.h"
#include "Common/LxPoint3.h"
#include "Common/LxQuat.h"
#include "Common/LxString.h"
#include "Common/LxVector3.h"
#include "Common/LxVector4.h"

// A half line: origin plus t * direction for t >= 0, direction of unit length.
struct LxCameraRay
{
    LxPoint3 origin;
    LxVector3 direction;
};

class LX_API LxCamera
{
public:
    // At the origin, looking along +Z with +Y up; perspective, 90 degrees, aspect 1, near 1, far 1000.
    LxCamera();
    virtual ~LxCamera() = default;

    // --- properties (free-form tags an application attaches) ---------------------------------------------------
    void AddProperty(const LxString& property);
    bool HasProperty(const LxString& property) const;

    // --- placement -------------------------------------------------------------------------------------------------
    void SetPosition(const LxPoint3& position);
    const LxPoint3& GetPosition() const { return m_position; }
    // Orientation from a rotation: the camera's right, up and view axes are the images of X, Y and Z.
    void SetOrientation(const LxQuat& orientation);
    // The three axes as given (normalised here); the caller keeps them orthogonal.
    void SetOrientation(const LxVector3& right, const LxVector3& up, const LxVector3& view);
    LxQuat GetOrientation() const;
    const LxVector3& GetRight() const { return m_right; }
    const LxVector3& GetUp() const { return m_up; }
    const LxVector3& GetView() const { return m_view; }
    // Turns the camera towards `target` keeping `up` as near to its up axis as the view direction allows. False
    // (logged, nothing changed) when the target is on the camera or `up` runs along the view direction.
    bool SetLookAt(const LxPoint3& target, const LxVector3& up);

    // --- projection --------------------------------------------------------------------------------------------------
    // Perspective from the horizontal field of view in degrees (0 < fov <= 180) and aspect (> 0).
    bool SetFrustum(float fov, float aspect, float nearPlane, float farPlane);
    // Perspective from the near-plane rectangle; aspect becomes (right - left) / (top - bottom).
    void SetFrustum(float left, float right, float bottom, float top, float nearPlane, float farPlane);
    // Orthographic: width at the near plane from the same formula as SetFrustum (so a view of the same size there).
    bool SetOrthoFrustum(float fov, float aspect, float nearPlane, float farPlane);
    void SetOrthoFrustum(float left, float right, float bottom, float top, float nearPlane, float farPlane);
    void GetFrustum(float* nearPlane, float* farPlane, float* left, float* right, float* bottom, float* top) const;
    // (left, right, bottom, top).
    LxVector4 GetFrustumParams() const;
    float GetFOV() const { return m_fov; }
    float GetAspect() const { return m_aspect; }
    float GetNear() const { return m_near; }
    float GetFar() const { return m_far; }
    bool IsOrthographic() const { return m_ortho; }
    // Depth convention of the projection: 0..1 (true, the default) or -1..1.
    void SetDepthZeroToOne(bool zeroToOne);
    bool IsDepthZeroToOne() const { return m_depthZeroToOne; }

    // Places the camera at `position` looking through cube face `face` (0..5: +X, -X, +Y, -Y, +Z, -Z) with a
    // 90-degree square frustum. False (logged) for another face.
    bool SetCubemapCamera(unsigned int face, const LxPoint3& position, float nearPlane, float farPlane);
    // Set by the platform when the 3D API renders to vertex buffers: cube cameras then negate their up axis.
    static void SetRenderToVertexBufferSupported(bool supported) { ms_bRenderToVertexBuffer = supported; }
    static bool IsRenderToVertexBufferSupported() { return ms_bRenderToVertexBuffer; }

    // --- derived values ------------------------------------------------------------------------------------------
    const LxMatrix4& GetViewMatrix() const { return m_viewMatrix; }
    const LxMatrix4& GetProjMatrix() const { return m_projMatrix; }
    LxMatrix4 GetViewProjMatrix() const { return m_projMatrix * m_viewMatrix; }
    // The view-projection followed by the map from clip x, y in [-1, 1] to texture u, v in [0, 1] (v down).
    LxMatrix4 GetViewProjTextureMatrix() const;
    // (near, far, 1 / near, 1 / far): what shaders need to linearise depth.
    LxVector4 GetProjParams() const;
    // The six world-space culling planes of the view-projection (outward normals, see LxFrustum).
    LxFrustum GetWorldFrustum() const;

    // The ray from the camera through the view point (x, y), both in [-1, 1] with +x right and +y up. Perspective
    // rays start at the camera; orthographic ones start on the near plane and run along the view axis.
    LxCameraRay GetPickRay(float x, float y) const;
    // Moves the camera back along its view axis so that the sphere fills the narrower field of view; the
    // orientation stays. A non-positive radius only centres the sphere.
    void ZoomOnSphere(const LxPoint3& center, float radius);

private:
    void RebuildView();
    void RebuildProjection();

    LxPoint3 m_position;
    LxVector3 m_right, m_up, m_view;
    float m_fov, m_aspect;
    float m_near, m_far, m_frLeft, m_frRight, m_frBottom, m_frTop;
    bool m_ortho;
    bool m_depthZeroToOne;
    LxMatrix4 m_viewMatrix, m_projMatrix;
    LxArray<LxString> m_properties;

    static bool ms_bRenderToVertexBuffer;
};
