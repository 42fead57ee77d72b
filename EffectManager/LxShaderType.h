// Shader stages and shading languages of the effect system. The numbering of LxShaderType is fixed: it indexes the
// per-stage arrays of passes and appears in shader-cache names.
#pragma once

enum LxShaderType
{
    LX_VERTEX_SHADER = 0,
    LX_GEOMETRY_SHADER = 1,
    LX_PIXEL_SHADER = 2,
    LX_COMPUTE_SHADER = 3,
    LX_HULL_SHADER = 4,
    LX_DOMAIN_SHADER = 5,
    LX_NUM_SHADER_TYPES = 6
};

enum LxShadingLanguage
{
    LX_SHADING_LANGUAGE_UNDEFINED = 0,
    LX_SHADING_LANGUAGE_HLSL = 1,
    LX_SHADING_LANGUAGE_GLSL = 2
};

// "Vertex", "Geometry", "Pixel", "Compute", "Hull", "Domain" (for messages).
inline const char* LxShaderTypeName(LxShaderType type)
{
    static const char* const names[] = {"Vertex", "Geometry", "Pixel", "Compute", "Hull", "Domain"};
    return static_cast<unsigned int>(type) < LX_NUM_SHADER_TYPES ? names[type] : "Unknown";
}
