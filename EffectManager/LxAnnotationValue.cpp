#include "EffectManager/LxAnnotationValue.h"

#include "Common/LxLogManager.h"
#include "EffectManager/LxAnnotationMap.h"

LxAnnotationValue::LxAnnotationValue(float value) : m_type(TYPE_FLOAT), m_fValue(value) {}
LxAnnotationValue::LxAnnotationValue(bool value) : m_type(TYPE_BOOL), m_bValue(value) {}
LxAnnotationValue::LxAnnotationValue(const LxString& value) : m_type(TYPE_STRING), m_pString(new LxString(value)) {}
LxAnnotationValue::LxAnnotationValue(const char* value) : m_type(TYPE_STRING), m_pString(new LxString(value)) {}
LxAnnotationValue::LxAnnotationValue(const LxVector4& value) : m_type(TYPE_VECTOR), m_vector(value) {}
LxAnnotationValue::LxAnnotationValue(LxAnnotationMap* map) : m_type(TYPE_MAP), m_pMap(map ? map : new LxAnnotationMap())
{
}

LxAnnotationValue::~LxAnnotationValue()
{
    delete m_pMap;
    delete m_pString;
}

float LxAnnotationValue::GetFloat() const
{
    if (m_type != TYPE_FLOAT)
    {
        LX_ERROR("Trying to read a float from an AnnotationValue that has another type.");
        return 0.0f;
    }
    return m_fValue;
}

bool LxAnnotationValue::GetBool() const
{
    if (m_type != TYPE_BOOL)
    {
        LX_ERROR("Trying to read a bool from an AnnotationValue that has another type.");
        return false;
    }
    return m_bValue;
}

const LxString& LxAnnotationValue::GetString() const
{
    if (m_type != TYPE_STRING)
    {
        LX_ERROR("Trying to read a string from an AnnotationValue that has another type.");
        static const LxString s_empty;
        return s_empty;
    }
    return *m_pString;
}

LxVector4 LxAnnotationValue::GetVector() const
{
    if (m_type != TYPE_VECTOR)
    {
        LX_ERROR("Trying to read a vector from an AnnotationValue that has another type.");
        return LxVector4();
    }
    return m_vector;
}

const LxAnnotationMap* LxAnnotationValue::GetMap() const
{
    if (m_type != TYPE_MAP)
    {
        LX_ERROR("Trying to read a map from an AnnotationValue that has another type.");
        return nullptr;
    }
    return m_pMap;
}

const char* LxAnnotationValue::TypeName(Type type)
{
    switch (type)
    {
    case TYPE_FLOAT:
        return "FLOAT";
    case TYPE_BOOL:
        return "BOOL";
    case TYPE_STRING:
        return "STRING";
    case TYPE_VECTOR:
        return "VECTOR";
    case TYPE_MAP:
        return "MAP";
    }
    return "UNKNOWN";
}
