// LxAnnotationValue: one value of an annotation map: a float, a bool, a string, an LxVector4 or a nested map.
//
// Integers written in effect files are stored as floats. Reading a value as a type it does not hold logs an error
// and returns a neutral value (0, false, an empty string, a zero vector, null), so a wrong annotation never stops
// drawing. Values are immutable after construction and shared through LxCountedPtr; a nested map is owned.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxString.h"
#include "Common/LxVector4.h"

class LxAnnotationMap;

class LX_API LxAnnotationValue
{
public:
    enum Type
    {
        TYPE_FLOAT = 0,
        TYPE_BOOL = 1,
        TYPE_STRING = 2,
        TYPE_VECTOR = 3,
        TYPE_MAP = 4
    };

    explicit LxAnnotationValue(float value);
    explicit LxAnnotationValue(bool value);
    explicit LxAnnotationValue(const LxString& value);
    explicit LxAnnotationValue(const char* value);
    explicit LxAnnotationValue(const LxVector4& value);
    // Takes ownership of the map (null gives an empty map).
    explicit LxAnnotationValue(LxAnnotationMap* map);
    ~LxAnnotationValue();
    LxAnnotationValue(const LxAnnotationValue&) = delete;
    LxAnnotationValue& operator=(const LxAnnotationValue&) = delete;

    Type GetType() const { return m_type; }
    bool IsFloat() const { return m_type == TYPE_FLOAT; }
    bool IsBool() const { return m_type == TYPE_BOOL; }
    bool IsString() const { return m_type == TYPE_STRING; }
    bool IsVector() const { return m_type == TYPE_VECTOR; }
    bool IsMap() const { return m_type == TYPE_MAP; }

    float GetFloat() const;
    bool GetBool() const;
    const LxString& GetString() const;
    LxVector4 GetVector() const;
    const LxAnnotationMap* GetMap() const;

    static const char* TypeName(Type type);

private:
    Type m_type;
    float m_fValue = 0.0f;
    bool m_bValue = false;
    LxString* m_pString = nullptr; // only string values carry one (an empty LxString still allocates)
    LxVector4 m_vector;
    LxAnnotationMap* m_pMap = nullptr;
};
