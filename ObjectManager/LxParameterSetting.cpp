#include "ObjectManager/LxParameterSetting.h"

#include "Common/LxLogManager.h"
#include "ObjectManager/LxModelTextParse.h"

#include <cstring>
#include <memory>

namespace
{
enum ScalarKind
{
    SCALAR_FLOAT,
    SCALAR_INT,
    SCALAR_BOOL
};

ScalarKind KindOf(LxEffectParameter::DataType type)
{
    switch (type)
    {
    case LxEffectParameter::TYPE_INT:
    case LxEffectParameter::TYPE_VECTOR_INT:
        return SCALAR_INT;
    case LxEffectParameter::TYPE_BOOL:
    case LxEffectParameter::TYPE_VECTOR_BOOL:
        return SCALAR_BOOL;
    default:
        return SCALAR_FLOAT;
    }
}
} // namespace

LxParameterSetting::LxParameterSetting(const LxString& name, LxEffectParameter::DataType type, unsigned int arraySize)
    : m_name(name), m_type(type), m_nArraySize(arraySize)
{
}

unsigned int LxParameterSetting::GetScalarCount(LxEffectParameter::DataType type)
{
    switch (type)
    {
    case LxEffectParameter::TYPE_VECTOR:
    case LxEffectParameter::TYPE_VECTOR_INT:
    case LxEffectParameter::TYPE_VECTOR_BOOL:
        return 4;
    case LxEffectParameter::TYPE_MATRIX:
        return 16;
    default:
        return 1;
    }
}

void LxParameterSetting::SetValues(const unsigned int* words)
{
    const unsigned int count = GetScalarCount(m_type) * m_nArraySize;
    m_values.Clear();
    m_values.Reserve(count);
    for (unsigned int i = 0; i < count; ++i)
        m_values.Add(words[i]);
    m_source = SOURCE_VALUES;
    m_curveName.Clear();
}

void LxParameterSetting::SetEffectDefault()
{
    m_source = SOURCE_EFFECT_DEFAULT;
    m_values.Clear();
    m_curveName.Clear();
}

void LxParameterSetting::SetAnimation(const LxString& curveName)
{
    m_source = SOURCE_ANIMATION;
    m_values.Clear();
    m_curveName = curveName;
}

LxParameterSetting* LxParameterSetting::Parse(const LxArray<LxString>& tokens)
{
    if (tokens.GetCount() < 4)
    {
        LX_ERROR("Wrong number of tokens in parameter declaration.");
        return nullptr;
    }
    LxEffectParameter::DataType type;
    if (LxHasZeroByte(tokens[1]) || !LxEffectParameter::DataTypeFromString(tokens[1], &type))
    {
        LX_ERROR("Unknown parameter data type: %s", tokens[1].c_str());
        return nullptr;
    }
    unsigned int arraySize = 0;
    if (!LxParseUInt32(tokens[2], &arraySize) || arraySize == 0)
    {
        LX_ERROR("Invalid array size: %s", tokens[2].c_str());
        return nullptr;
    }
    std::unique_ptr<LxParameterSetting> setting(new LxParameterSetting(tokens[3], type, arraySize));
    const unsigned int given = tokens.GetCount() - 4;
    if (given == 0)
    {
        LX_ERROR("Missing tokens in parameter declaration.");
        return nullptr;
    }
    if (LxTextIs(tokens[4], "EFFECT_DEFAULT_VALUE") || LxTextIs(tokens[4], "Animation"))
    {
        const bool animated = LxTextIs(tokens[4], "Animation");
        const unsigned int wanted = animated ? 2u : 1u;
        if (given < wanted)
        {
            LX_ERROR("Missing tokens in parameter declaration.");
            return nullptr;
        }
        if (given > wanted)
        {
            LX_ERROR("Wrong number of tokens in parameter declaration.");
            return nullptr;
        }
        if (animated)
            setting->SetAnimation(tokens[5]);
        return setting.release();
    }
    // Compared before anything is allocated: the tokens bound the count, whatever the array size claims.
    const unsigned long long wanted = static_cast<unsigned long long>(GetScalarCount(type)) * arraySize;
    if (given < wanted)
    {
        LX_ERROR("Missing tokens in parameter declaration.");
        return nullptr;
    }
    if (given > wanted)
    {
        LX_ERROR("Wrong number of tokens in parameter declaration.");
        return nullptr;
    }
    LxArray<unsigned int> words;
    words.Reserve(given);
    const ScalarKind kind = KindOf(type);
    for (unsigned int i = 4; i < tokens.GetCount(); ++i)
    {
        unsigned int word = 0;
        bool ok = true;
        if (kind == SCALAR_FLOAT)
        {
            float f = 0.0f;
            ok = LxParseFloat(tokens[i], &f);
            std::memcpy(&word, &f, 4);
        }
        else if (kind == SCALAR_INT)
        {
            int v = 0;
            ok = LxParseInt32(tokens[i], &v);
            word = static_cast<unsigned int>(v);
        }
        else if (LxTextIs(tokens[i], "true"))
            word = 1;
        else
            ok = LxTextIs(tokens[i], "false");
        if (!ok)
        {
            LX_ERROR("Syntax error in parameter declaration line.");
            return nullptr;
        }
        words.Add(word);
    }
    setting->SetValues(words.GetData());
    return setting.release();
}

LxString LxParameterSetting::ToText() const
{
    LxString text;
    text.Format("PARAM %s %u %s ", LxEffectParameter::DataTypeToString(m_type), m_nArraySize, m_name.c_str());
    if (m_source == SOURCE_EFFECT_DEFAULT)
        text += "EFFECT_DEFAULT_VALUE ";
    else if (m_source == SOURCE_ANIMATION)
        text.AppendFormat("Animation %s ", m_curveName.c_str());
    else
    {
        const ScalarKind kind = KindOf(m_type);
        for (unsigned int word : m_values)
        {
            if (kind == SCALAR_FLOAT)
            {
                float f;
                std::memcpy(&f, &word, 4);
                text.AppendFormat("%.9g ", static_cast<double>(f));
            }
            else if (kind == SCALAR_INT)
                text.AppendFormat("%d ", static_cast<int>(word));
            else
                text += word ? "true " : "false ";
        }
    }
    text += "\n";
    return text;
}

bool LxParameterSetting::operator==(const LxParameterSetting& o) const
{
    if (m_name != o.m_name || m_type != o.m_type || m_nArraySize != o.m_nArraySize || m_source != o.m_source ||
        m_curveName != o.m_curveName || m_values.GetCount() != o.m_values.GetCount())
        return false;
    for (unsigned int i = 0; i < m_values.GetCount(); ++i)
        if (m_values[i] != o.m_values[i])
            return false;
    return true;
}
