#include "EffectManager/D3D12/LxD3D12EffectBuilder.h"

#include "Common/LxLogManager.h"
#include "EffectManager/D3D12/LxD3D12ComputePass.h"
#include "EffectManager/D3D12/LxD3D12Effect.h"
#include "EffectManager/D3D12/LxD3D12EffectPass.h"
#include "EffectManager/D3D12/LxD3D12Sampler.h"
#include "EffectManager/D3D12/LxD3D12Shader.h"
#include "EffectManager/D3D12/LxD3D12ShaderCompiler.h"
#include "EffectManager/LxEffectManager.h"
#include "EffectManager/LxShaderCodePreprocessor.h"
#include "EffectManager/LxShaderLineMap.h"

#include <d3d12shader.h>
#include <d3dcompiler.h>

#include <cstdio>

namespace
{
const char* const kStagePrefixes[LX_NUM_SHADER_TYPES] = {"vs", "gs", "ps", "cs", "hs", "ds"};

// Whether a reflected cbuffer variable's type fits an effect parameter's data type.
bool TypeMatches(LxEffectParameter::DataType type, const D3D12_SHADER_TYPE_DESC& t)
{
    const bool isFloat = t.Type == D3D_SVT_FLOAT;
    const bool isInt = t.Type == D3D_SVT_INT || t.Type == D3D_SVT_UINT;
    const bool isBool = t.Type == D3D_SVT_BOOL;
    const bool scalar = t.Class == D3D_SVC_SCALAR;
    const bool vector = t.Class == D3D_SVC_VECTOR;
    const bool matrix = t.Class == D3D_SVC_MATRIX_ROWS || t.Class == D3D_SVC_MATRIX_COLUMNS;
    switch (type)
    {
    case LxEffectParameter::TYPE_FLOAT:
        return scalar && isFloat;
    case LxEffectParameter::TYPE_INT:
        return scalar && isInt;
    case LxEffectParameter::TYPE_BOOL:
        return scalar && isBool;
    case LxEffectParameter::TYPE_VECTOR:
        return vector && isFloat;
    case LxEffectParameter::TYPE_VECTOR_INT:
        return vector && isInt;
    case LxEffectParameter::TYPE_VECTOR_BOOL:
        return vector && isBool;
    case LxEffectParameter::TYPE_MATRIX:
        return matrix && isFloat;
    default:
        return false;
    }
}

// Puts `value` at register `reg` of `table`, growing it with nulls.
template <class T>
void PlaceAt(LxArray<T*>& table, unsigned int reg, T* value)
{
    while (table.GetCount() <= reg)
        table.Add(nullptr);
    table[reg] = value;
}
} // namespace

LxD3D12EffectBuilder::LxD3D12EffectBuilder(ID3D12Device* device, D3D_FEATURE_LEVEL featureLevel,
                                           LxShaderCompiler* compiler)
    : m_pDevice(device), m_featureLevel(featureLevel), m_pCompiler(compiler)
{
    if (!m_pCompiler)
    {
        m_pOwnCompiler = new LxD3D12ShaderCompiler();
        m_pCompiler = m_pOwnCompiler;
    }
    AddMacro("LX_3D_API_D3D12", "1");
}

LxD3D12EffectBuilder::~LxD3D12EffectBuilder()
{
    delete m_pOwnCompiler;
}

const char* LxD3D12EffectBuilder::GetProfileSuffix(D3D_FEATURE_LEVEL level)
{
    switch (level)
    {
    case D3D_FEATURE_LEVEL_9_1:
    case D3D_FEATURE_LEVEL_9_2:
        return "_2_0";
    case D3D_FEATURE_LEVEL_9_3:
        return "_3_0";
    case D3D_FEATURE_LEVEL_10_0:
        return "_4_0";
    case D3D_FEATURE_LEVEL_10_1:
        return "_4_1";
    case D3D_FEATURE_LEVEL_11_0:
    case D3D_FEATURE_LEVEL_12_0:
    case D3D_FEATURE_LEVEL_12_1:
        return "_5_0";
    default:
        // 11_1 included: its devices compile for 11_0, and a level missed here must be noticed.
        return nullptr;
    }
}

bool LxD3D12EffectBuilder::ValidateShaderAnnotations(LxShaderType type, const LxAnnotationMap& options,
                                                     LxShadingLanguage& language, LxString& entryPoint,
                                                     LxString& dumpFile)
{
    bool ok = LxEffectBuilder::ValidateShaderAnnotations(type, options, language, entryPoint, dumpFile);
    if (ok && language != LX_SHADING_LANGUAGE_HLSL)
    {
        ParseError("D3D12 Shaders may only be written in HLSL!");
        ok = false;
    }
    return ok;
}

LxEffect* LxD3D12EffectBuilder::CreateEffect(const LxString& name)
{
    return new LxD3D12Effect(name);
}

LxEffectPass* LxD3D12EffectBuilder::CreatePass(const LxString& name, LxEffectTechnique* technique)
{
    if (technique && technique->IsCompute())
        return new LxD3D12ComputePass(name, technique, this);
    return new LxD3D12EffectPass(name, technique, this);
}

LxSampler* LxD3D12EffectBuilder::CreateSampler(const LxString& name, LxEffect* effect,
                                               const LxAnnotationMap* annotations, const LxSampler* templateSampler)
{
    return new LxD3D12Sampler(name, effect, annotations, templateSampler, this);
}

bool LxD3D12EffectBuilder::CompileBinaryShaderPair(const LxString& fileName, const LxCountedPtr<LxMemoryBuffer>& data)
{
    (void)fileName;
    (void)data;
    ParseError("Binary shader pairs not supported in D3D12.");
    return false;
}

bool LxD3D12EffectBuilder::FinalizePass(LxEffectPass* pass)
{
    if (m_bCheckOnly && !m_pDevice)
        return true;
    LxD3D12EffectPass* d3dPass = dynamic_cast<LxD3D12EffectPass*>(pass);
    return d3dPass && d3dPass->Finalize(m_pDevice);
}

LxCountedPtr<LxEffectShader> LxD3D12EffectBuilder::CompileShader(LxShaderType type, const LxShaderCodeBlock& code,
                                                                 const LxString& entryPoint, LxShadingLanguage language,
                                                                 const LxAnnotationMap& options,
                                                                 const LxArray<LxShaderMacro>& macros)
{
    LxCountedPtr<LxEffectShader> none;
    if (language != LX_SHADING_LANGUAGE_HLSL)
    {
        ParseError("D3D12 Shaders may only be written in HLSL!");
        return none;
    }
    LxD3D12Effect* effect = dynamic_cast<LxD3D12Effect*>(GetCurrentEffect());
    if (!effect)
    {
        ParseError("LxD3D12EffectBuilder::CompileShader.  The effect was not made by this builder");
        return none;
    }
    LxShaderCodePreprocessor preprocessor;
    preprocessor.SetCodeBlocks(&effect->GetCodeBlocks());
    LxString text;
    if (!preprocessor.Process(code.text, code.firstLine, code.fileName, language, text))
    {
        SetParseError();
        return none;
    }

    LxShaderCompileRequest request;
    LxCountedPtr<LxAnnotationValue> profile = options.LookupValue("Profile");
    if (profile && profile->IsString())
        request.profile = profile->GetString();
    else
    {
        const char* suffix = GetProfileSuffix(m_featureLevel);
        if (!suffix || unsigned(type) >= LX_NUM_SHADER_TYPES)
        {
            ParseError("Unknown feature level");
            return none;
        }
        request.profile = kStagePrefixes[type];
        request.profile.Append(suffix);
    }
    request.source = LxShaderCompiler::BuildSource(macros, text);
    request.entryPoint = entryPoint;
    request.flags = LxShaderCompiler::FlagsFromOptions(options);
    // A name of its own, so that positions in the generated text are told apart from the effect file's positions
    // (which a compiler honouring "#line" reports itself).
    request.sourceName = code.fileName;
    request.sourceName.Append(".generated.hlsl");

    LxCountedPtr<LxMemoryBuffer> compiled;
    LxString messages;
    LxEffectManager* manager = LxEffectManager::GetExistingPtr();
    const bool ok = manager ? manager->CompileShader(*m_pCompiler, request, &compiled, &messages)
                            : m_pCompiler->Compile(request, &compiled, &messages);
    if (!ok || !compiled)
    {
        if (messages.IsEmpty())
            ParseError("D3D12 shader compilation failed without generating error output");
        else
        {
            const LxShaderLineMap lines(request.source);
            LxLogManager::GetRef().LogMessage(lines.MapMessages(messages, request.sourceName), LX_LOG_ERROR, nullptr,
                                              0);
            SetParseError();
        }
        return none;
    }

    LxCountedPtr<LxAnnotationValue> dump = options.LookupValue("Dump");
    if (dump && dump->IsString() && !dump->GetString().IsEmpty())
    {
        FILE* file = std::fopen(dump->GetString().c_str(), "wb");
        if (!file || std::fwrite(compiled->GetData(), 1, compiled->GetSize(), file) != compiled->GetSize())
            LX_WARNING("Failed to write shader dump file \"%s\"", dump->GetString().c_str());
        if (file)
            std::fclose(file);
    }

    LxD3D12Shader* shader = new LxD3D12Shader(type, code, entryPoint, language, options);
    LxCountedPtr<LxEffectShader> result(shader);
    shader->SetPreprocessedSource(text);
    shader->SetByteCode(compiled);
    if (!Reflect(*shader, *effect))
    {
        SetParseError();
        return none;
    }
    return result;
}

bool LxD3D12EffectBuilder::Reflect(LxD3D12Shader& shader, LxD3D12Effect& effect)
{
    const LxCountedPtr<LxMemoryBuffer>& code = shader.GetByteCode();
    ID3D12ShaderReflection* reflection = nullptr;
    if (FAILED(D3DReflect(code->GetData(), code->GetSize(), IID_PPV_ARGS(&reflection))) || !reflection)
    {
        ParseError("DX12 shader reflection failed!");
        return false;
    }
    bool ok = true;
    D3D12_SHADER_DESC desc;
    if (FAILED(reflection->GetDesc(&desc)))
    {
        ParseError("Error extracting shader description from DX12 reflection interface!");
        reflection->Release();
        return false;
    }
    LxArray<unsigned int> samplerRegisters;
    for (unsigned int r = 0; r < desc.BoundResources; ++r)
    {
        D3D12_SHADER_INPUT_BIND_DESC bind;
        if (FAILED(reflection->GetResourceBindingDesc(r, &bind)))
        {
            ParseError("Error extracting shader description from DX12 reflection interface!");
            ok = false;
            continue;
        }
        const LxString name(bind.Name ? bind.Name : "");
        // An array indexed by constants is reflected one element at a time, named "t[1]".
        const bool indexed = bind.BindCount > 1 || name.Find("[") >= 0;
        switch (bind.Type)
        {
        case D3D_SIT_CBUFFER:
            break; // below, with the buffer's variables
        case D3D_SIT_SAMPLER:
        {
            if (indexed)
            {
                ParseError("Indexable samplers are not supported by the Lumex effect system!");
                ok = false;
                break;
            }
            LxSampler* sampler = effect.GetSampler(name);
            if (!sampler)
            {
                ParseError("Can't find matching sampler for HLSL variable: '%s'", name.c_str());
                ok = false;
                break;
            }
            samplerRegisters.Add(bind.BindPoint);
            PlaceAt(shader.GetSamplers(), bind.BindPoint, sampler);
            break;
        }
        case D3D_SIT_TBUFFER:
        case D3D_SIT_TEXTURE:
        case D3D_SIT_STRUCTURED:
        case D3D_SIT_BYTEADDRESS:
        {
            if (indexed)
            {
                ParseError("Indexable shader resources are not supported by the Lumex effect system!");
                ok = false;
                break;
            }
            LxTextureSlot* slot = effect.GetTextureSlot(name);
            if (!slot)
            {
                ParseError("Can't find matching texture slot for HLSL variable: '%s'", name.c_str());
                ok = false;
                break;
            }
            const LxTextureSlot::Type type = slot->GetType();
            const char* mismatch = nullptr;
            if (bind.Type == D3D_SIT_TBUFFER)
            {
                if (type != LxTextureSlot::TEXTURE_BUFFER)
                    mismatch = "Shader declares a tbuffer named: '%s'  but the matching texture slot is not a buffer";
            }
            else if (bind.Type == D3D_SIT_STRUCTURED)
            {
                if (type != LxTextureSlot::STRUCTURED_BUFFER)
                    mismatch = "Shader declares a buffer resource named: '%s' but the matching texture slot is not a "
                               "(supported) buffer";
            }
            else if (bind.Type == D3D_SIT_BYTEADDRESS)
            {
                if (type != LxTextureSlot::BYTE_ADDRESS_BUFFER)
                    mismatch = "Shader declares a buffer resource named: '%s' but the matching texture slot is not a "
                               "(supported) buffer";
            }
            else
            {
                switch (bind.Dimension)
                {
                case D3D_SRV_DIMENSION_BUFFER:
                case D3D_SRV_DIMENSION_BUFFEREX:
                    if (type != LxTextureSlot::TEXTURE_BUFFER)
                        mismatch = "Shader declares a buffer resource named: '%s' but the matching texture slot is "
                                   "not a (supported) buffer";
                    break;
                case D3D_SRV_DIMENSION_TEXTURE1D:
                case D3D_SRV_DIMENSION_TEXTURE1DARRAY:
                    ParseError("Lumex does not support 1D textures.  Instead, use a 2D texture of size 1.");
                    ok = false;
                    break;
                case D3D_SRV_DIMENSION_TEXTURE2D:
                case D3D_SRV_DIMENSION_TEXTURE2DMS:
                    if (type != LxTextureSlot::TEXTURE_2D && type != LxTextureSlot::TEXTURE_2D_ARRAY)
                        mismatch = "Shader declares a 2D texture named: '%s' but the matching texture slot is not a "
                                   "2D texture";
                    break;
                case D3D_SRV_DIMENSION_TEXTURE2DARRAY:
                case D3D_SRV_DIMENSION_TEXTURE2DMSARRAY:
                    if (type != LxTextureSlot::TEXTURE_2D && type != LxTextureSlot::TEXTURE_2D_ARRAY)
                        mismatch = "Shader declares a 2D texture array named: '%s' but the matching texture slot is "
                                   "not a 2D texture";
                    break;
                case D3D_SRV_DIMENSION_TEXTURE3D:
                    if (type != LxTextureSlot::TEXTURE_3D)
                        mismatch = "Shader declares a 3D texture named: '%s' but the matching texture slot is not a "
                                   "3D texture";
                    break;
                case D3D_SRV_DIMENSION_TEXTURECUBE:
                    if (type != LxTextureSlot::TEXTURE_CUBE)
                        mismatch = "Shader declares a cubemap named: '%s' but the matching texture slot is not a "
                                   "cubemap";
                    break;
                case D3D_SRV_DIMENSION_TEXTURECUBEARRAY:
                    if (type != LxTextureSlot::TEXTURE_CUBE_ARRAY)
                        mismatch = "Shader declares a cubemap array named: '%s' but the matching texture slot is not "
                                   "a cubemap array";
                    break;
                default:
                    break;
                }
            }
            if (mismatch)
            {
                ParseError(mismatch, name.c_str());
                ok = false;
                break;
            }
            PlaceAt(shader.GetTextures(), bind.BindPoint, slot);
            break;
        }
        case D3D_SIT_UAV_RWTYPED:
        case D3D_SIT_UAV_RWSTRUCTURED:
        case D3D_SIT_UAV_RWBYTEADDRESS:
        case D3D_SIT_UAV_APPEND_STRUCTURED:
        case D3D_SIT_UAV_CONSUME_STRUCTURED:
        case D3D_SIT_UAV_RWSTRUCTURED_WITH_COUNTER:
        {
            if (indexed)
            {
                ParseError("Indexable shader resources are not supported by the Lumex effect system!");
                ok = false;
                break;
            }
            LxUAVSlot* slot = effect.GetUAVSlot(name);
            if (!slot)
            {
                ParseError("Can't find matching UAV slot for HLSL variable: '%s'", name.c_str());
                ok = false;
                break;
            }
            const LxUAVSlot::Type type = slot->GetType();
            const char* mismatch = nullptr;
            if (bind.Type == D3D_SIT_UAV_RWTYPED)
            {
                if (type != LxUAVSlot::TYPED_BUFFER && type != LxUAVSlot::TEXTURE_2D && type != LxUAVSlot::TEXTURE_3D)
                    mismatch = "Compute Shader declares a typed resource named: '%s' but the matching UAV slot is not "
                               "typed.";
            }
            else if (bind.Type == D3D_SIT_UAV_RWBYTEADDRESS)
            {
                if (type != LxUAVSlot::RAW_BUFFER)
                    mismatch = "Compute Shader declares a raw buffer resource named: '%s' but the matching UAV slot is "
                               "not a raw buffer.";
            }
            else if (bind.Type == D3D_SIT_UAV_RWSTRUCTURED || bind.Type == D3D_SIT_UAV_RWSTRUCTURED_WITH_COUNTER)
            {
                if (type != LxUAVSlot::STRUCTURED_BUFFER)
                    mismatch = "Compute Shader declares a structured buffer resource named: '%s' but the matching UAV "
                               "slot is not a structured buffer.";
            }
            else if (type != LxUAVSlot::APPEND_STRUCTURED_BUFFER && type != LxUAVSlot::APPEND_RAW_BUFFER)
                mismatch = "Compute Shader declares an append or consume structured buffer resource named: '%s' but "
                           "the matching UAV slot is not an append or consume structured buffer.";
            if (mismatch)
            {
                ParseError(mismatch, name.c_str());
                ok = false;
                break;
            }
            // Pixel-shader UAV registers follow the render targets; the table starts there (see the pass).
            PlaceAt(shader.GetUAVs(), bind.BindPoint, slot);
            break;
        }
        default:
            break;
        }
    }
    // Sampler registers must run s0, s1, ... in declaration order: the sampler table is built that way.
    for (unsigned int i = 0; i < samplerRegisters.GetCount(); ++i)
    {
        if (samplerRegisters[i] != i)
        {
            ParseError("Sampler bind points from DX12 are not sequential!  This is insane, and will lead to bugs!");
            ok = false;
            break;
        }
    }

    // Constant buffers: each variable must name an effect parameter of a fitting type.
    for (unsigned int c = 0; c < desc.ConstantBuffers; ++c)
    {
        ID3D12ShaderReflectionConstantBuffer* buffer = reflection->GetConstantBufferByIndex(c);
        D3D12_SHADER_BUFFER_DESC bufferDesc;
        if (!buffer || FAILED(buffer->GetDesc(&bufferDesc)))
        {
            ParseError("Error extracting shader description from DX12 reflection interface!");
            ok = false;
            continue;
        }
        if (bufferDesc.Type != D3D_CT_CBUFFER)
            continue;
        D3D12_SHADER_INPUT_BIND_DESC bind;
        if (FAILED(reflection->GetResourceBindingDescByName(bufferDesc.Name, &bind)))
        {
            ParseError("Error extracting shader description from DX12 reflection interface!");
            ok = false;
            continue;
        }
        LxArray<LxConstantBufferCache::Variable> variables;
        bool bufferOk = true;
        for (unsigned int v = 0; v < bufferDesc.Variables; ++v)
        {
            ID3D12ShaderReflectionVariable* variable = buffer->GetVariableByIndex(v);
            D3D12_SHADER_VARIABLE_DESC varDesc;
            if (!variable || FAILED(variable->GetDesc(&varDesc)))
            {
                ParseError("Failed to get shader variable description");
                bufferOk = false;
                continue;
            }
            ID3D12ShaderReflectionType* varType = variable->GetType();
            D3D12_SHADER_TYPE_DESC typeDesc;
            if (!varType || FAILED(varType->GetDesc(&typeDesc)))
            {
                ParseError("Failed to get shader variable type description!");
                bufferOk = false;
                continue;
            }
            LxEffectParameter* parameter = effect.GetParameter(LxString(varDesc.Name));
            if (!parameter)
            {
                ParseError("Can't find matching effect parameter for HLSL variable \"%s\"", varDesc.Name);
                bufferOk = false;
                continue;
            }
            if (!TypeMatches(parameter->GetDataType(), typeDesc))
            {
                ParseError("Type of HLSL variable \"%s\" doesn't match effect parameter type", varDesc.Name);
                bufferOk = false;
                continue;
            }
            const bool matrix = typeDesc.Class == D3D_SVC_MATRIX_ROWS || typeDesc.Class == D3D_SVC_MATRIX_COLUMNS;
            if (matrix && (typeDesc.Rows != 4 || typeDesc.Columns != 4))
            {
                ParseError("Dimension of HLSL matrix \"%s\" is %ux%u, but Lumex effects currently only support 4x4 "
                           "matrices",
                           varDesc.Name, typeDesc.Rows, typeDesc.Columns);
                bufferOk = false;
                continue;
            }
            if (typeDesc.Elements > 0 && !parameter->IsArray())
            {
                ParseError("HLSL variable \"%s\" is an array, but the corresponding effect parameter isn't",
                           varDesc.Name);
                bufferOk = false;
                continue;
            }
            if (typeDesc.Elements == 0 && parameter->IsArray())
            {
                ParseError("Array size mismatch between HLSL variable \"%s\" and corresponding effect parameter",
                           varDesc.Name);
                bufferOk = false;
                continue;
            }
            if (typeDesc.Elements > parameter->GetArrayCount())
            {
                ParseError("HLSL array variable \"%s\" has more elements than corresponding effect parameter",
                           varDesc.Name);
                bufferOk = false;
                continue;
            }
            LxConstantBufferCache::Variable entry;
            entry.parameter = parameter;
            entry.offset = varDesc.StartOffset;
            entry.count = typeDesc.Elements > 0 ? typeDesc.Elements : 1;
            entry.elementBytes = matrix ? 64u : typeDesc.Columns * 4u;
            // Array elements start on 16-byte boundaries.
            entry.stride = (entry.elementBytes + 15u) & ~15u;
            entry.transpose = typeDesc.Class == D3D_SVC_MATRIX_ROWS;
            // Reflection of damaged code (a cache file that still looks like a shader) must not place a variable
            // outside its buffer: values are copied there.
            const unsigned long long end = (unsigned long long)entry.offset +
                                           (unsigned long long)(entry.count - 1) * entry.stride + entry.elementBytes;
            if (end > bufferDesc.Size || (entry.transpose && entry.elementBytes != 64))
            {
                ParseError("Error locating effect parameter for HLSL variable: '%s'  in CB: '%s'", varDesc.Name,
                           bufferDesc.Name);
                bufferOk = false;
                continue;
            }
            variables.Add(entry);
        }
        if (!bufferOk)
        {
            ok = false;
            continue;
        }
        LxD3D12Shader::ConstantBufferBinding binding;
        binding.reg = bind.BindPoint;
        binding.buffer =
            effect.GetConstantBufferCache().FindOrAdd(LxString(bufferDesc.Name), bufferDesc.Size, variables);
        shader.GetConstantBuffers().Add(binding);
    }
    reflection->Release();
    return ok;
}
