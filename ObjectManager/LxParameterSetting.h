// LxParameterSetting: a chunk's setting of one effect parameter: its name, data type and array size, and where
// the value comes from: values given in the chunk file, the effect's own default ("EFFECT_DEFAULT_VALUE"), or an
// animation curve ("Animation <curve>").
//
// Values are kept as 32-bit words, one per scalar (a float's bits, an int, or 0/1 for a bool); an element of a
// data type takes 1 (Float, Int, Bool), 4 (Vector, VectorI, VectorB) or 16 (Matrix, column by column) scalars.
//
// Chunk-file form: "PARAM <type> <array size> <name> <values...>", or "... EFFECT_DEFAULT_VALUE", or
// "... Animation <curve>". Parse logs the first fault and fails. Plain data; not thread-safe.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxArray.h"
#include "Common/LxString.h"
#include "EffectManager/LxEffectParameter.h"

class LX_API LxParameterSetting
{
public:
    enum Source
    {
        SOURCE_VALUES = 0,
        SOURCE_EFFECT_DEFAULT = 1,
        SOURCE_ANIMATION = 2
    };

    // A setting that keeps the effect's default value.
    LxParameterSetting(const LxString& name, LxEffectParameter::DataType type, unsigned int arraySize);

    const LxString& GetName() const { return m_name; }
    LxEffectParameter::DataType GetDataType() const { return m_type; }
    unsigned int GetArraySize() const { return m_nArraySize; }
    Source GetSource() const { return m_source; }
    // SOURCE_VALUES: GetScalarCount(type) x array size words.
    const LxArray<unsigned int>& GetValues() const { return m_values; }
    // SOURCE_ANIMATION: the curve's name.
    const LxString& GetCurveName() const { return m_curveName; }

    // Copies the words (scalar count x array size of them) and makes the setting a value setting.
    void SetValues(const unsigned int* words);
    void SetEffectDefault();
    void SetAnimation(const LxString& curveName);

    static unsigned int GetScalarCount(LxEffectParameter::DataType type);

    // Tokens of a whole "PARAM ..." line, the keyword first. Null after an error.
    static LxParameterSetting* Parse(const LxArray<LxString>& tokens);
    // The "PARAM ..." line, newline included. Floats are written with nine significant digits, so a value read
    // back is the same float.
    LxString ToText() const;

    bool operator==(const LxParameterSetting& o) const;

private:
    LxString m_name;
    LxEffectParameter::DataType m_type;
    unsigned int m_nArraySize;
    Source m_source = SOURCE_EFFECT_DEFAULT;
    LxArray<unsigned int> m_values;
    LxString m_curveName;
};
