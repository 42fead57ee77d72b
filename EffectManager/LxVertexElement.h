// LxVertexElement: one element of a vertex stream declaration ("float3 POSITION", "float2 TEXCOORD1 uv").
//
// The first name is the element's semantic with an optional trailing index (TEXCOORD1); the second name is free
// (empty when the effect file gives only one). The data type numbering is fixed (it is stored in model files):
// it follows the vertex-element keywords except that byte2n (25) comes before ubyte2 (26).
#pragma once

#include "Common/LxApi.h"
#include "Common/LxString.h"
#include "EffectManager/LxAnnotationMap.h"

class LX_API LxVertexElement
{
public:
    enum DataType
    {
        TYPE_FLOAT = 0,
        TYPE_FLOAT2 = 1,
        TYPE_FLOAT3 = 2,
        TYPE_FLOAT4 = 3,
        TYPE_UBYTE4 = 4,
        TYPE_DEC3N = 5,
        TYPE_HALF = 6,
        TYPE_HALF2 = 7,
        TYPE_HALF3 = 8,
        TYPE_HALF4 = 9,
        TYPE_UDEC3 = 10,
        TYPE_SHORT = 11,
        TYPE_SHORT2 = 12,
        TYPE_SHORT3 = 13,
        TYPE_SHORT4 = 14,
        TYPE_UBYTE4N = 15,
        TYPE_USHORT2N = 16,
        TYPE_USHORT4N = 17,
        TYPE_SHORT2N = 18,
        TYPE_SHORT4N = 19,
        TYPE_USHORT2 = 20,
        TYPE_USHORT4 = 21,
        TYPE_INT4 = 22,
        TYPE_UINT4 = 23,
        TYPE_BYTE2 = 24,
        TYPE_BYTE2N = 25,
        TYPE_UBYTE2 = 26,
        TYPE_UBYTE2N = 27,
        TYPE_USHORT = 28,
        TYPE_USHORTN = 29,
        TYPE_SHORTN = 30,
        TYPE_UINT = 31,
        TYPE_INT = 32,
        TYPE_UINTN = 33,
        TYPE_INTN = 34,
        TYPE_UINT2 = 35,
        TYPE_INT2 = 36,
        TYPE_UINT2N = 37,
        TYPE_INT2N = 38,
        NUM_DATA_TYPES = 39
    };

    // Bytes per element and components per element, indexed by DataType.
    static const unsigned int ms_dataTypeSize[NUM_DATA_TYPES];
    static const unsigned int ms_dataTypeComponentCount[NUM_DATA_TYPES];

    LxVertexElement(DataType type, const LxString& name, const LxString& secondName = LxString(),
                    const LxAnnotationMap* annotations = nullptr);

    DataType GetDataType() const { return m_type; }
    const LxString& GetName() const { return m_name; }
    const LxString& GetSecondName() const { return m_secondName; }
    const LxAnnotationMap& GetAnnotations() const { return m_annotations; }
    unsigned int GetSize() const { return ms_dataTypeSize[m_type]; }
    unsigned int GetComponentCount() const { return ms_dataTypeComponentCount[m_type]; }

    // The effect-file keyword of a type ("float3"); "unknown" when out of range.
    static const char* DataTypeToString(DataType type);
    static bool DataTypeFromString(const LxString& name, DataType* type);
    // The first name split into semantic and index: "TEXCOORD3" gives "TEXCOORD" and 3; no digits give index 0.
    void GetSemantic(LxString* semanticName, unsigned int* semanticIndex) const;

private:
    DataType m_type;
    LxString m_name;
    LxString m_secondName;
    LxAnnotationMap m_annotations;
};
