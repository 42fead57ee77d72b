#include "EffectManager/LxEffectParameter.h"

#include "Common/LxLogManager.h"
#include "Common/LxMemory.h"

#include <atomic>
#include <cmath>
#include <cstring>

namespace
{
std::atomic<bool> g_appUpdatesEnabled{true};

const char* const kDataTypeNames[LxEffectParameter::NUM_DATA_TYPES] = {"Float",   "Int",     "Bool",  "Vector",
                                                                       "VectorI", "VectorB", "Matrix"};
const unsigned int kDataTypeSizes[LxEffectParameter::NUM_DATA_TYPES] = {4, 4, 4, 16, 16, 16, 64};
} // namespace

const char* LxEffectParameter::DataTypeToString(DataType type)
{
    return static_cast<unsigned int>(type) < NUM_DATA_TYPES ? kDataTypeNames[type] : "Unknown";
}

bool LxEffectParameter::DataTypeFromString(const LxString& name, DataType* type)
{
    for (unsigned int i = 0; i < NUM_DATA_TYPES; ++i)
        if (name == kDataTypeNames[i])
        {
            *type = DataType(i);
            return true;
        }
    return false;
}

unsigned int LxEffectParameter::GetDataTypeSize(DataType type)
{
    return static_cast<unsigned int>(type) < NUM_DATA_TYPES ? kDataTypeSizes[type] : 0u;
}

void LxEffectParameter::SetAppUpdatesEnabled(bool enabled)
{
    g_appUpdatesEnabled.store(enabled);
}
bool LxEffectParameter::AreAppUpdatesEnabled()
{
    return g_appUpdatesEnabled.load();
}

LxEffectParameter::LxEffectParameter(const LxString& name, DataType type, unsigned int count)
    : m_name(name), m_type(type), m_nCount(count ? count : 1), m_bIsArray(false)
{
    Init(nullptr);
}

LxEffectParameter::LxEffectParameter(const LxString& name, DataType type, const void* defaultValue, unsigned int count)
    : m_name(name), m_type(type), m_nCount(count ? count : 1), m_bIsArray(false)
{
    Init(defaultValue);
}

LxEffectParameter::LxEffectParameter(const LxString& name, float defaultValue, unsigned int count)
    : m_name(name), m_type(TYPE_FLOAT), m_nCount(count ? count : 1), m_bIsArray(false)
{
    Init(&defaultValue);
}

LxEffectParameter::LxEffectParameter(const LxString& name, int defaultValue, unsigned int count)
    : m_name(name), m_type(TYPE_INT), m_nCount(count ? count : 1), m_bIsArray(false)
{
    Init(&defaultValue);
}

LxEffectParameter::LxEffectParameter(const LxString& name, bool defaultValue, unsigned int count)
    : m_name(name), m_type(TYPE_BOOL), m_nCount(count ? count : 1), m_bIsArray(false)
{
    const int v = defaultValue ? 1 : 0;
    Init(&v);
}

LxEffectParameter::LxEffectParameter(const LxString& name, const LxVector4& defaultValue, unsigned int count)
    : m_name(name), m_type(TYPE_VECTOR), m_nCount(count ? count : 1), m_bIsArray(false)
{
    Init(defaultValue.GetData());
}

LxEffectParameter::~LxEffectParameter()
{
    if (m_bOwnsData)
        LxFree(m_pData);
    delete m_pDefaultVector;
    delete[] m_pDefaultIntVector;
    delete[] m_pDefaultMatrix;
}

void LxEffectParameter::Init(const void* defaultValue)
{
    if (static_cast<unsigned int>(m_type) >= NUM_DATA_TYPES)
        m_type = TYPE_FLOAT;
    static const unsigned char s_zero[64] = {};
    const void* def = defaultValue ? defaultValue : s_zero;
    switch (m_type)
    {
    case TYPE_FLOAT:
        std::memcpy(&m_fDefault, def, 4);
        break;
    case TYPE_INT:
    case TYPE_BOOL:
        std::memcpy(&m_nDefault, def, 4);
        if (m_type == TYPE_BOOL)
            m_nDefault = m_nDefault ? 1 : 0;
        break;
    case TYPE_VECTOR:
        m_pDefaultVector = new LxVector4(static_cast<const float*>(def));
        break;
    case TYPE_VECTOR_INT:
        m_pDefaultIntVector = new int[4];
        std::memcpy(m_pDefaultIntVector, def, 16);
        break;
    case TYPE_VECTOR_BOOL:
        std::memcpy(m_boolVectorDefault, def, 16);
        for (int& b : m_boolVectorDefault)
            b = b ? 1 : 0;
        break;
    case TYPE_MATRIX:
        m_pDefaultMatrix = new float[16];
        std::memcpy(m_pDefaultMatrix, def, 64);
        break;
    default:
        break;
    }
    m_pData = static_cast<unsigned char*>(LxMalloc(GetParameterSize()));
    SetToDefaultValue();
}

const void* LxEffectParameter::GetDefaultValuePtr() const
{
    switch (m_type)
    {
    case TYPE_FLOAT:
        return &m_fDefault;
    case TYPE_INT:
    case TYPE_BOOL:
        return &m_nDefault;
    case TYPE_VECTOR:
        return m_pDefaultVector->GetData();
    case TYPE_VECTOR_INT:
        return m_pDefaultIntVector;
    case TYPE_VECTOR_BOOL:
        return m_boolVectorDefault;
    case TYPE_MATRIX:
        return m_pDefaultMatrix;
    default:
        return nullptr;
    }
}

LxVector4 LxEffectParameter::GetDefaultValueVector() const
{
    if (m_type == TYPE_VECTOR)
        return *m_pDefaultVector;
    const int* v = m_type == TYPE_VECTOR_INT    ? m_pDefaultIntVector
                   : m_type == TYPE_VECTOR_BOOL ? m_boolVectorDefault
                                                : nullptr;
    if (!v)
        return LxVector4();
    return LxVector4(float(v[0]), float(v[1]), float(v[2]), float(v[3]));
}

void LxEffectParameter::SetToDefaultValue()
{
    const unsigned int size = GetDataTypeSize(m_type);
    const void* def = GetDefaultValuePtr();
    for (unsigned int i = 0; i < m_nCount; ++i)
        std::memcpy(m_pData + size * i, def, size);
    ApplyColorConversion(0, m_nCount);
}

bool LxEffectParameter::CheckType(DataType expected, const char* function) const
{
    if (m_type == expected)
        return true;
    LX_ERROR("%s: Effect parameter \"%s\" has type %s, not %s", function, m_name.c_str(), DataTypeToString(m_type),
             DataTypeToString(expected));
    return false;
}

void LxEffectParameter::SetFloat(float value, unsigned int index)
{
    if (!CheckType(TYPE_FLOAT, "LxEffectParameter::SetFloat") || index >= m_nCount)
        return;
    std::memcpy(m_pData + 4 * index, &value, 4);
    ApplyColorConversion(index, 1);
}

void LxEffectParameter::SetInt(int value, unsigned int index)
{
    if (!CheckType(TYPE_INT, "LxEffectParameter::SetInt") || index >= m_nCount)
        return;
    std::memcpy(m_pData + 4 * index, &value, 4);
}

void LxEffectParameter::SetBool(bool value, unsigned int index)
{
    if (!CheckType(TYPE_BOOL, "LxEffectParameter::SetBool") || index >= m_nCount)
        return;
    const int v = value ? 1 : 0;
    std::memcpy(m_pData + 4 * index, &v, 4);
}

void LxEffectParameter::SetFloatVector(const float* value, unsigned int index)
{
    if (!CheckType(TYPE_VECTOR, "LxEffectParameter::SetFloatVector") || index >= m_nCount)
        return;
    std::memcpy(m_pData + 16 * index, value, 16);
    ApplyColorConversion(index, 1);
}

void LxEffectParameter::SetIntVector(const int* value, unsigned int index)
{
    if (!CheckType(TYPE_VECTOR_INT, "LxEffectParameter::SetIntVector") || index >= m_nCount)
        return;
    std::memcpy(m_pData + 16 * index, value, 16);
}

void LxEffectParameter::SetBoolVector(const bool* value, unsigned int index)
{
    if (!CheckType(TYPE_VECTOR_BOOL, "LxEffectParameter::SetBoolVector") || index >= m_nCount)
        return;
    const int v[4] = {value[0] ? 1 : 0, value[1] ? 1 : 0, value[2] ? 1 : 0, value[3] ? 1 : 0};
    std::memcpy(m_pData + 16 * index, v, 16);
}

void LxEffectParameter::SetFloatMatrix(const float* value, unsigned int index)
{
    if (!CheckType(TYPE_MATRIX, "LxEffectParameter::SetFloatMatrix") || index >= m_nCount)
        return;
    std::memcpy(m_pData + 64 * index, value, 64);
}

void LxEffectParameter::SetRawValue(const void* data, unsigned int size)
{
    const unsigned int total = GetParameterSize();
    if (size > total)
        size = total;
    if (!data || !size)
        return;
    std::memcpy(m_pData, data, size);
    const unsigned int elementSize = GetDataTypeSize(m_type);
    ApplyColorConversion(0, (size + elementSize - 1) / elementSize);
}

void LxEffectParameter::SetStorage(void* storage)
{
    const unsigned int size = GetParameterSize();
    if (storage == m_pData)
        return;
    if (storage)
    {
        std::memcpy(storage, m_pData, size);
        if (m_bOwnsData)
            LxFree(m_pData);
        m_pData = static_cast<unsigned char*>(storage);
        m_bOwnsData = false;
    }
    else if (!m_bOwnsData)
    {
        unsigned char* own = static_cast<unsigned char*>(LxMalloc(size));
        std::memcpy(own, m_pData, size);
        m_pData = own;
        m_bOwnsData = true;
    }
}

void LxEffectParameter::SetAnnotations(const LxAnnotationMap& annotations)
{
    m_annotations = annotations;
    ReadColorConversion();
    if (m_bColorConversion)
        SetToDefaultValue(); // the stored default is unconverted; convert it once now
}

void LxEffectParameter::ExecuteUpdateHandler()
{
    // Runs for every application-updated parameter of every pass bound: no call that is not needed.
    if (!m_updateHandler || !g_appUpdatesEnabled.load(std::memory_order_relaxed))
        return;
    m_updateHandler->Update(*this, m_pData, kDataTypeSizes[m_type] * m_nCount);
    if (m_bColorConversion)
        ApplyColorConversion(0, m_nCount);
}

void LxEffectParameter::ReadColorConversion()
{
    m_bColorConversion = false;
    m_fColorExponent = 1.0f;
    m_nColorMask = 0x7;
    LxCountedPtr<LxAnnotationValue> cc = m_annotations.LookupValue("colorConversion");
    if (!cc)
        return;
    if (m_type != TYPE_FLOAT && m_type != TYPE_VECTOR)
    {
        LX_ERROR("Attempting to color convert a non Float/Vector parameter type!");
        return;
    }
    if (!cc->IsMap())
    {
        LX_ERROR("colorConversion annotation must specify an annotation map!");
        return;
    }
    const LxAnnotationMap* map = cc->GetMap();
    LxCountedPtr<LxAnnotationValue> exponent = map->LookupValue("exponent");
    if (exponent && exponent->IsFloat() && exponent->GetFloat() > 0.0f && std::isfinite(exponent->GetFloat()))
        m_fColorExponent = exponent->GetFloat();
    else
        LX_WARNING("Effect parameter's color conversion exponent is either missing or invalid (out of range?).  "
                   "Defaulting to 1.0.");

    LxCountedPtr<LxAnnotationValue> mask = map->LookupValue("mask");
    if (mask)
    {
        unsigned int bits = 0;
        bool valid = mask->IsString() && !mask->GetString().IsEmpty();
        const LxString text = mask->IsString() ? mask->GetString() : LxString();
        for (unsigned int i = 0; valid && i < text.GetLength(); ++i)
        {
            switch (text[i])
            {
            case 'R':
            case 'r':
            case 'X':
            case 'x':
                bits |= 1;
                break;
            case 'G':
            case 'g':
            case 'Y':
            case 'y':
                bits |= 2;
                break;
            case 'B':
            case 'b':
            case 'Z':
            case 'z':
                bits |= 4;
                break;
            case 'A':
            case 'a':
            case 'W':
            case 'w':
                bits |= 8;
                break;
            default:
                valid = false;
                break;
            }
        }
        if (valid)
            m_nColorMask = bits;
        else
            LX_WARNING("%s", (LxString("Effect parameter's color conversion mask is invalid (") + text +
                              ").  Defaulting to RGB.")
                                 .c_str());
    }
    m_bColorConversion = true;
}

void LxEffectParameter::ApplyColorConversion(unsigned int firstElement, unsigned int elementCount)
{
    if (!m_bColorConversion || m_fColorExponent == 1.0f)
        return;
    const unsigned int components = m_type == TYPE_VECTOR ? 4u : 1u;
    if (firstElement >= m_nCount)
        return;
    if (elementCount > m_nCount - firstElement)
        elementCount = m_nCount - firstElement;
    float* values = reinterpret_cast<float*>(m_pData) + firstElement * components;
    for (unsigned int e = 0; e < elementCount; ++e, values += components)
        for (unsigned int c = 0; c < components; ++c)
            if (m_nColorMask & (1u << c))
                values[c] = std::pow(values[c], m_fColorExponent);
}
