// LxEffectBuilder: receives the parser's calls, checks each construct against the effect being built, creates the
// effect's objects and hands out the finished effect (GetResult).
//
// Every check that fails is reported through ParseError ("file(line) : message" while a parser drives the
// builder) and marks the build as failed; the builder keeps going so that all errors of a file are reported, and
// GetResult then yields null (the partial effect is freed).
//
// The generic builder compiles nothing: CompileShader runs the shader-code preprocessor and keeps the text,
// FinalizePass accepts every pass. The Direct3D 12 builder overrides the factory operations (CreateEffect,
// CreateTechnique, CreatePass, CreateSampler, CompileShader, CompileBinaryShaderPair, FinalizePass,
// RemoveShaderFromCurrentPass, ValidateShaderAnnotations) to compile HLSL and create pipeline states.
//
// Ownership: maps, value arrays and names passed in are copied; code blocks and vertex elements are adopted.
// A builder builds one effect; it is not thread-safe.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxArray.h"
#include "Common/LxCountedPtr.h"
#include "Common/LxMemoryBuffer.h"
#include "Common/LxString.h"
#include "Common/LxVector4.h"
#include "EffectManager/LxAnnotationMap.h"
#include "EffectManager/LxEffect.h"
#include "EffectManager/LxEffectShader.h"
#include "EffectManager/LxShaderCodeBlock.h"
#include "EffectManager/LxShaderType.h"
#include "EffectManager/LxStateValue.h"
#include "EffectManager/LxUpdateHandler.h"

class LxArchive;
class LxEffectParser;

// A preprocessor macro handed to the shader compiler ("#define name value").
struct LxShaderMacro
{
    LxString name;
    LxString value;
};

class LX_API LxEffectBuilder
{
public:
    LxEffectBuilder();
    virtual ~LxEffectBuilder();
    LxEffectBuilder(const LxEffectBuilder&) = delete;
    LxEffectBuilder& operator=(const LxEffectBuilder&) = delete;

    // --- set-up -------------------------------------------------------------------------------------------------
    // The effect's name (its file name); the parser sets it in Init.
    void SetEffectName(const LxString& name) { m_effectName = name; }
    const LxString& GetEffectName() const { return m_effectName; }
    // The parser whose position prefixes messages (null: messages carry no position).
    void SetParser(const LxEffectParser* parser) { m_pParser = parser; }
    // Entries that replace those of the effect's "Options" map as it is built.
    void SetOptionOverrides(const LxAnnotationMap& overrides) { m_optionOverrides = overrides; }
    // Where binary shader pair files are looked up (not owned); see LxEffectParser::SetIncludeArchive.
    void SetFileArchive(const LxArchive* archive) { m_pFileArchive = archive; }
    // Where "AppUpdate" annotations find their handlers (not owned; null: such parameters get none).
    void SetUpdateHandlerProvider(LxUpdateHandlerProvider* provider) { m_pUpdateHandlerProvider = provider; }
    // The override techniques whose passes are appended to every technique (not owned; index = position).
    void SetOverrideTechniques(const LxArray<LxEffectTechnique*>& techniques) { m_overrideTechniques = techniques; }
    // Macros passed to every shader compilation.
    void AddMacro(const LxString& name, const LxString& value) { m_macros.Add(LxShaderMacro{name, value}); }
    const LxArray<LxShaderMacro>& GetMacros() const { return m_macros; }

    // --- parser calls, in the order the parser makes them ------------------------------------------------------
    virtual void SetEffectOptions(const LxAnnotationMap* options);
    virtual void AddArtNotes(const LxString& notes);
    virtual void AddCodeBlock(LxShaderCodeBlock* block); // adopted
    // `values` may be null (no initializer); `annotations` may be null.
    virtual void AddEffectParameter(const LxString& name, LxEffectParameter::DataType type,
                                    const LxArray<float>* values, const LxAnnotationMap* annotations);
    virtual void AddEffectParameter(const LxString& name, LxEffectParameter::DataType type, const LxArray<int>* values,
                                    const LxAnnotationMap* annotations);
    virtual void AddEffectParameter(const LxString& name, LxEffectParameter::DataType type, const LxArray<bool>* values,
                                    const LxAnnotationMap* annotations);
    virtual void AddEffectParameterArray(const LxString& name, LxEffectParameter::DataType type, unsigned int count,
                                         const LxArray<float>* values, const LxAnnotationMap* annotations);
    virtual void AddEffectParameterArray(const LxString& name, LxEffectParameter::DataType type, unsigned int count,
                                         const LxArray<int>* values, const LxAnnotationMap* annotations);
    virtual void AddEffectParameterArray(const LxString& name, LxEffectParameter::DataType type, unsigned int count,
                                         const LxArray<bool>* values, const LxAnnotationMap* annotations);
    virtual void AddTexture(const LxString& name, LxTextureSlot::Type type, const LxAnnotationMap* annotations);
    virtual void AddUAV(const LxString& name, LxUAVSlot::Type type, const LxAnnotationMap* annotations);
    virtual void StartSampler(const LxString& name, const LxAnnotationMap* annotations);
    virtual void AddSamplerTexture(const LxString& name);
    virtual void AddSamplerState(const LxString& name, const LxStateValue& value);
    void AddSamplerState(const LxString& name, const LxString& value) { AddSamplerState(name, LxStateValue(value)); }
    void AddSamplerState(const LxString& name, const LxVector4& value) { AddSamplerState(name, LxStateValue(value)); }
    void AddSamplerState(const LxString& name, int value) { AddSamplerState(name, LxStateValue(value)); }
    void AddSamplerState(const LxString& name, float value) { AddSamplerState(name, LxStateValue(value)); }
    void AddSamplerState(const LxString& name, bool value) { AddSamplerState(name, LxStateValue(value)); }
    virtual void EndSampler();
    // The elements are adopted (the array is emptied).
    virtual void AddStream(const LxString& name, LxArray<LxVertexElement*>& elements,
                           const LxAnnotationMap* annotations);
    virtual void AddStreamMap(const LxString& name, const LxArray<LxString>& streamNames,
                              const LxAnnotationMap* annotations);
    virtual void StartTechnique(const LxString& name, bool isBase, bool isCompute);
    virtual void StartInheritedTechnique(const LxString& name, const LxString& baseName, bool isBase, bool isCompute);
    virtual void AddTechniqueProperty(const LxString& property);
    virtual void StartPass(const LxString& name);
    virtual void SetStreamMap(const LxString& name);
    virtual void SetStreamOutMap(unsigned int index, const LxString& name);
    virtual void ClearStreamOutMap(unsigned int index);
    virtual void AddRenderState(const LxString& name, const LxStateValue& value);
    void AddRenderState(const LxString& name, const LxString& value) { AddRenderState(name, LxStateValue(value)); }
    void AddRenderState(const LxString& name, const LxVector4& value) { AddRenderState(name, LxStateValue(value)); }
    void AddRenderState(const LxString& name, int value) { AddRenderState(name, LxStateValue(value)); }
    void AddRenderState(const LxString& name, float value) { AddRenderState(name, LxStateValue(value)); }
    void AddRenderState(const LxString& name, bool value) { AddRenderState(name, LxStateValue(value)); }
    // `options` may be null.
    virtual void AddShader(LxShaderType type, LxShaderCodeBlock& code, const LxAnnotationMap* options);
    virtual void DisableShader(LxShaderType type);
    // An empty name is the "NULL" form: the pass's binary pair is removed.
    virtual void AddBinaryShaderPair(const LxString& fileName);
    virtual void EndPass();
    virtual void EndTechnique();
    virtual void EndEffect();
    // The finished effect (owned by the caller), or null after any error. Hands the effect out once.
    virtual LxEffect* GetResult();

    // Drops any technique, pass or sampler left open by a syntax error, without further messages.
    void AbandonOpenScopes();

    // --- bookkeeping --------------------------------------------------------------------------------------------
    void AddIncludedFile(const LxString& fileName);
    bool IsFileIncluded(const LxString& fileName) const;
    // Logs the message (prefixed with the parser's position) as an error and marks the build as failed.
    void ParseError(const char* fmt, ...) LX_PRINTF_FORMAT(2, 3);
    // Marks the build as failed without a message (the message went out elsewhere).
    void SetParseError() { m_bParseError = true; }
    bool ParseErrorOccured() const { return m_bParseError; }
    // Float, Int, Bool: 0 or 1 values; Vector, VectorI, VectorB: 0 to 4; Matrix: 0 or 16.
    static bool CheckEffectParameterParameterCount(LxEffectParameter::DataType type, unsigned int count);

    // --- factories, overridden by the platform builder ----------------------------------------------------------
    virtual LxEffect* CreateEffect(const LxString& name);
    virtual LxEffectTechnique* CreateTechnique(const LxString& name, bool isBase, bool isCompute,
                                               LxEffectTechnique* baseTechnique);
    virtual LxEffectPass* CreatePass(const LxString& name, LxEffectTechnique* technique);
    virtual LxSampler* CreateSampler(const LxString& name, LxEffect* effect, const LxAnnotationMap* annotations,
                                     const LxSampler* templateSampler);
    // Null after reporting the failure.
    virtual LxCountedPtr<LxEffectShader> CompileShader(LxShaderType type, const LxShaderCodeBlock& code,
                                                       const LxString& entryPoint, LxShadingLanguage language,
                                                       const LxAnnotationMap& options,
                                                       const LxArray<LxShaderMacro>& macros);
    virtual bool CompileBinaryShaderPair(const LxString& fileName, const LxCountedPtr<LxMemoryBuffer>& data);
    virtual bool FinalizePass(LxEffectPass* pass);
    virtual void RemoveShaderFromCurrentPass(LxShaderType type);
    // Reads the shader options: language ("HLSL"/"GLSL" flags or "Language" = "HLSL"), "EntryPoint", "Dump",
    // "Profile", the flow-control and optimisation flags. False after reporting a problem.
    virtual bool ValidateShaderAnnotations(LxShaderType type, const LxAnnotationMap& options,
                                           LxShadingLanguage& language, LxString& entryPoint, LxString& dumpFile);

protected:
    LxEffect* GetCurrentEffect(); // created on first use
    LxEffectTechnique* GetCurrentTechnique() const { return m_pCurrentTechnique; }
    LxEffectPass* GetCurrentPass() const { return m_pCurrentPass; }
    LxSampler* GetCurrentSampler() const { return m_pCurrentSampler; }
    // Appends the override passes of every override technique to the current technique.
    virtual void AppendOverridePasses();
    // The end-of-pass rules (vertex shader, hull/domain pairing, compute passes) and finalization.
    virtual bool CheckAndFinalizePass(LxEffectPass* pass);

private:
    // The common part of StartTechnique and StartInheritedTechnique (base null for a plain technique).
    void OpenTechnique(const LxString& name, bool isBase, bool isCompute, LxEffectTechnique* base);
    template <class T>
    void AddParameterImpl(const LxString& name, LxEffectParameter::DataType type, unsigned int count, bool isArray,
                          const LxArray<T>* values, const LxAnnotationMap* annotations);
    bool CheckParameterName(const LxString& name);

    LxString m_effectName;
    const LxEffectParser* m_pParser = nullptr;
    const LxArchive* m_pFileArchive = nullptr;
    LxUpdateHandlerProvider* m_pUpdateHandlerProvider = nullptr;
    LxAnnotationMap m_optionOverrides;
    LxArray<LxEffectTechnique*> m_overrideTechniques;
    LxArray<LxShaderMacro> m_macros;
    bool m_bParseError = false;

    LxEffect* m_pEffect = nullptr;
    bool m_bResultTaken = false;

    LxEffectTechnique* m_pCurrentTechnique = nullptr;
    bool m_bTechniqueOrphan = false;          // a redefinition: built to absorb its body, then dropped
    LxArray<LxEffectPass*> m_inheritedPasses; // cloned from the base and not yet reopened
    LxArray<LxString> m_passNamesOpened;

    LxEffectPass* m_pCurrentPass = nullptr;
    bool m_bPassOrphan = false;
    bool m_bVertexShaderSet = false;
    bool m_bBinaryPairSet = false;

    LxSampler* m_pCurrentSampler = nullptr;
    bool m_bSamplerOrphan = false;
};
