// LxBone: one bone of a skeleton, a name and a 4x4 matrix. The matrix is the bone's bind-space offset: the
// transform from the model's bind pose into the bone's own space, which ConvertBonesToWorldSpace applies last.
// A plain value type; nothing allocates beyond the name, logs or fails.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxMatrix4.h"
#include "Common/LxString.h"

class LX_API LxBone
{
public:
    LxBone() = default;
    LxBone(const LxString& name, const LxMatrix4& matrix) : m_name(name), m_matrix(matrix) {}

    const LxString& GetName() const { return m_name; }
    const LxMatrix4& GetMatrix() const { return m_matrix; }
    void SetMatrix(const LxMatrix4& matrix) { m_matrix = matrix; }

private:
    LxString m_name;
    LxMatrix4 m_matrix;
};
