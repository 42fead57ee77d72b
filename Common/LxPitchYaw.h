// Pitch and yaw of a viewing direction, in degrees: the camera helpers' conversion between a view matrix and the
// two angles of a first-person camera (yaw about +Y, then pitch about the camera's X).
//
// LxMakeRotationMatrixFromPitchYaw builds the camera's orientation (camera to world): rotation about (0, 1, 0) by
// yaw times rotation about (1, 0, 0) by pitch. LxGetPitchYawFromMatrix reads a view matrix (world to camera,
// whose third row is the camera's Z axis in world space), so it recovers the angles from the transpose of that
// rotation. Looking straight up or down the yaw comes from the first row (the camera's X axis) instead.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxMatrix4.h"

LX_API void LxGetPitchYawFromMatrix(const LxMatrix4& m, float* pitch, float* yaw);
LX_API LxMatrix4 LxMakeRotationMatrixFromPitchYaw(float pitch, float yaw);
