#include "EffectManager/LxVertexElement.h"

namespace
{
const char* const kTypeNames[LxVertexElement::NUM_DATA_TYPES] = {
    "float",   "float2",  "float3", "float4", "ubyte4", "dec3n",   "half",     "half2",    "half3",   "half4",
    "udec3",   "short",   "short2", "short3", "short4", "ubyte4n", "ushort2n", "ushort4n", "short2n", "short4n",
    "ushort2", "ushort4", "int4",   "uint4",  "byte2",  "byte2n",  "ubyte2",   "ubyte2n",  "ushort",  "ushortn",
    "shortn",  "uint",    "int",    "uintn",  "intn",   "uint2",   "int2",     "uint2n",   "int2n"};
} // namespace

const unsigned int LxVertexElement::ms_dataTypeSize[NUM_DATA_TYPES] = {4, 8, 12, 16, 4, 4, 2, 4, 6, 8,  4,  2, 4,
                                                                       6, 8, 4,  4,  8, 4, 8, 4, 8, 16, 16, 2, 2,
                                                                       2, 2, 2,  2,  2, 4, 4, 4, 4, 8,  8,  8, 8};

const unsigned int LxVertexElement::ms_dataTypeComponentCount[NUM_DATA_TYPES] = {1, 2, 3, 4, 4, 3, 1, 2, 3, 4, 3, 1, 2,
                                                                                 3, 4, 4, 2, 4, 2, 4, 2, 4, 4, 4, 2, 2,
                                                                                 2, 2, 1, 1, 1, 1, 1, 1, 1, 2, 2, 2, 2};

LxVertexElement::LxVertexElement(DataType type, const LxString& name, const LxString& secondName,
                                 const LxAnnotationMap* annotations)
    : m_type(static_cast<unsigned int>(type) < NUM_DATA_TYPES ? type : TYPE_FLOAT), m_name(name),
      m_secondName(secondName)
{
    if (annotations)
        m_annotations = *annotations;
}

const char* LxVertexElement::DataTypeToString(DataType type)
{
    return static_cast<unsigned int>(type) < NUM_DATA_TYPES ? kTypeNames[type] : "unknown";
}

bool LxVertexElement::DataTypeFromString(const LxString& name, DataType* type)
{
    for (unsigned int i = 0; i < NUM_DATA_TYPES; ++i)
        if (name == kTypeNames[i])
        {
            *type = DataType(i);
            return true;
        }
    return false;
}

void LxVertexElement::GetSemantic(LxString* semanticName, unsigned int* semanticIndex) const
{
    unsigned int end = m_name.GetLength();
    while (end > 0 && m_name[end - 1] >= '0' && m_name[end - 1] <= '9')
        --end;
    *semanticName = m_name.Left(end);
    unsigned int index = 0;
    for (unsigned int i = end; i < m_name.GetLength() && index < 100000000u; ++i)
        index = index * 10 + unsigned(m_name[i] - '0');
    *semanticIndex = index;
}
