// LxEffectParameter: a named, typed shader constant of an effect (scalar or array), with its default value, its
// annotations, an optional update handler and optional colour conversion.
//
// Storage: GetDataPtr() points at count x element-size bytes holding the current value, elements packed one after
// the other (Bool as a 32-bit 0/1, Vector as four floats, VectorI/VectorB as four 32-bit integers, Matrix as
// sixteen floats column by column). The parameter owns that memory until SetStorage points it into a constant
// buffer's shadow memory (which then owns it). A new parameter holds its default in every element.
//
// Colour conversion: a Float or Vector parameter whose annotations hold "colorConversion" = < exponent = e,
// mask = "RGB" > raises each masked component to the power e on every write of a value (Set*, SetRawValue,
// SetToDefaultValue, the update handler). Components are named by "R", "G", "B", "A" (or "X", "Y", "Z", "W").
//
// Not thread-safe; parameter values are written from the thread that draws.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxCountedPtr.h"
#include "Common/LxString.h"
#include "Common/LxVector4.h"
#include "EffectManager/LxAnnotationMap.h"
#include "EffectManager/LxUpdateHandler.h"

class LX_API LxEffectParameter
{
public:
    enum DataType
    {
        TYPE_FLOAT = 0,
        TYPE_INT = 1,
        TYPE_BOOL = 2,
        TYPE_VECTOR = 3,
        TYPE_VECTOR_INT = 4,
        TYPE_VECTOR_BOOL = 5,
        TYPE_MATRIX = 6,
        NUM_DATA_TYPES = 7
    };

    // A parameter holding zero in every element.
    LxEffectParameter(const LxString& name, DataType type, unsigned int count = 1);
    // A parameter of any type whose default is one element read from `defaultValue` (GetDataTypeSize(type) bytes).
    LxEffectParameter(const LxString& name, DataType type, const void* defaultValue, unsigned int count);
    LxEffectParameter(const LxString& name, float defaultValue, unsigned int count = 1);
    LxEffectParameter(const LxString& name, int defaultValue, unsigned int count = 1);
    LxEffectParameter(const LxString& name, bool defaultValue, unsigned int count = 1);
    LxEffectParameter(const LxString& name, const LxVector4& defaultValue, unsigned int count = 1);
    virtual ~LxEffectParameter();
    LxEffectParameter(const LxEffectParameter&) = delete;
    LxEffectParameter& operator=(const LxEffectParameter&) = delete;

    // "Float", "Int", "Bool", "Vector", "VectorI", "VectorB", "Matrix" (the effect-file keywords).
    static const char* DataTypeToString(DataType type);
    // False for an unknown name.
    static bool DataTypeFromString(const LxString& name, DataType* type);
    // Bytes of one element: 4, 4, 4, 16, 16, 16, 64.
    static unsigned int GetDataTypeSize(DataType type);

    const LxString& GetName() const { return m_name; }
    DataType GetDataType() const { return m_type; }
    unsigned int GetArrayCount() const { return m_nCount; }
    // Declared with a bracketed count (even "[1]"); a plain declaration is not an array.
    bool IsArray() const { return m_bIsArray; }
    void SetIsArray(bool isArray) { m_bIsArray = isArray; }
    unsigned int GetParameterSize() const { return GetDataTypeSize(m_type) * m_nCount; }
    void* GetDataPtr() const { return m_pData; }

    // Writes element `index` (ignored when out of range). The type must match; a mismatch is reported.
    void SetFloat(float value, unsigned int index = 0);
    void SetInt(int value, unsigned int index = 0);
    void SetBool(bool value, unsigned int index = 0);
    void SetFloatVector(const float* value, unsigned int index = 0); // 4 floats
    void SetIntVector(const int* value, unsigned int index = 0);     // 4 ints
    void SetBoolVector(const bool* value, unsigned int index = 0);   // 4 bools
    void SetFloatMatrix(const float* value, unsigned int index = 0); // 16 floats, column-major
    // Copies min(size, GetParameterSize()) bytes to the start of the storage.
    void SetRawValue(const void* data, unsigned int size);
    // Copies the default into every element.
    void SetToDefaultValue();

    float GetDefaultValueFloat() const { return m_fDefault; }
    int GetDefaultValueInt() const { return m_nDefault; }
    bool GetDefaultValueBool() const { return m_nDefault != 0; }
    // Vector: the vector; VectorI / VectorB: the integers converted; others: zero.
    LxVector4 GetDefaultValueVector() const;
    // Sixteen floats for a Matrix parameter, null otherwise.
    const float* GetDefaultValueMatrix() const { return m_type == TYPE_MATRIX ? m_pDefaultMatrix : nullptr; }
    // One element's default, GetDataTypeSize bytes.
    const void* GetDefaultValuePtr() const;

    const LxAnnotationMap& GetAnnotations() const { return m_annotations; }
    // Replaces the annotations and (re)reads the colour-conversion settings from them.
    void SetAnnotations(const LxAnnotationMap& annotations);

    const LxCountedPtr<LxUpdateHandler>& GetUpdateHandler() const { return m_updateHandler; }
    void SetUpdateHandler(const LxCountedPtr<LxUpdateHandler>& handler) { m_updateHandler = handler; }
    // Runs the update handler (when app updates are enabled and a handler is set), then the colour conversion.
    void ExecuteUpdateHandler();
    // Process-wide switch consulted by ExecuteUpdateHandler (on by default).
    static void SetAppUpdatesEnabled(bool enabled);
    static bool AreAppUpdatesEnabled();

    bool HasColorConversion() const { return m_bColorConversion; }
    float GetColorConversionExponent() const { return m_fColorExponent; }
    // Bit i set: component i is converted.
    unsigned int GetColorConversionMask() const { return m_nColorMask; }

    // Moves the value into `storage` (GetParameterSize() bytes, owned by the caller, e.g. constant-buffer shadow
    // memory) and writes through it from now on. Null returns the value to memory of the parameter's own.
    void SetStorage(void* storage);

private:
    void Init(const void* defaultValue);
    bool CheckType(DataType expected, const char* function) const;
    void ApplyColorConversion(unsigned int firstElement, unsigned int elementCount);
    void ReadColorConversion();

    LxString m_name;
    DataType m_type;
    unsigned int m_nCount;
    bool m_bIsArray;
    unsigned char* m_pData = nullptr;
    bool m_bOwnsData = true;

    // Defaults: Float, Int, Bool and VectorB in the parameter itself; Vector, VectorI and Matrix through owned
    // pointers.
    float m_fDefault = 0.0f;
    int m_nDefault = 0;
    int m_boolVectorDefault[4] = {0, 0, 0, 0};
    LxVector4* m_pDefaultVector = nullptr;
    int* m_pDefaultIntVector = nullptr;
    float* m_pDefaultMatrix = nullptr;

    LxAnnotationMap m_annotations;
    LxCountedPtr<LxUpdateHandler> m_updateHandler;

    bool m_bColorConversion = false;
    float m_fColorExponent = 1.0f;
    unsigned int m_nColorMask = 0x7;
};
