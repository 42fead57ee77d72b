#include "Common/LxPitchYaw.h"

#include <cmath>

namespace
{
// The single-precision constants the camera code has always used; keep them so stored angles reproduce exactly.
const float kPi = 3.1415927f;
const float kHalfPi = 1.5707964f;
} // namespace

void LxGetPitchYawFromMatrix(const LxMatrix4& m, float* pitch, float* yaw)
{
    const LxVector3 f = LxVector3(m[2], m[6], m[10]).Normalized();
    LxVector3 h(f.x, 0.0f, f.z);
    const float horizontal = h.Normalize();
    float yawRadians;
    if (horizontal < 1e-6f)
    {
        // Straight up or down: the forward vector says nothing about the heading, the right vector does.
        const LxVector3 r = LxVector3(m[0], m[4], m[8]).Normalized();
        yawRadians = std::atan2(r.x, r.z) - kHalfPi;
    }
    else
        yawRadians = std::atan2(h.x, h.z);
    const float pitchRadians = -std::atan2(f.y, std::sin(yawRadians) * f.x + std::cos(yawRadians) * f.z);
    if (pitch)
        *pitch = pitchRadians * 180.0f / kPi;
    if (yaw)
        *yaw = yawRadians * 180.0f / kPi;
}

LxMatrix4 LxMakeRotationMatrixFromPitchYaw(float pitch, float yaw)
{
    LxMatrix4 yawRotation, pitchRotation;
    yawRotation.MakeFromAxisAngle(LxVector3(0.0f, 1.0f, 0.0f), yaw * kPi / 180.0f);
    pitchRotation.MakeFromAxisAngle(LxVector3(1.0f, 0.0f, 0.0f), pitch * kPi / 180.0f);
    return yawRotation * pitchRotation;
}
