// LxOverrideTechniqueEffectBuilder: builds override-technique files. Such a file holds only techniques, each with
// one pass that sets a pixel shader (and render states); the effect manager appends these pixel shaders as
// override passes to the techniques of every effect it loads (LxEffectBuilder::SetOverrideTechniques).
//
// Everything else is refused with its own message and fails the file. The pixel shaders are not compiled here:
// they are compiled against each effect they are applied to, whose code blocks and parameters they may use.
#pragma once

#include "EffectManager/LxEffectBuilder.h"

class LX_API LxOverrideTechniqueEffectBuilder : public LxEffectBuilder
{
public:
    void AddCodeBlock(LxShaderCodeBlock* block) override;
    void AddEffectParameter(const LxString& name, LxEffectParameter::DataType type, const LxArray<float>* values,
                            const LxAnnotationMap* annotations) override;
    void AddEffectParameter(const LxString& name, LxEffectParameter::DataType type, const LxArray<int>* values,
                            const LxAnnotationMap* annotations) override;
    void AddEffectParameter(const LxString& name, LxEffectParameter::DataType type, const LxArray<bool>* values,
                            const LxAnnotationMap* annotations) override;
    void AddEffectParameterArray(const LxString& name, LxEffectParameter::DataType type, unsigned int count,
                                 const LxArray<float>* values, const LxAnnotationMap* annotations) override;
    void AddEffectParameterArray(const LxString& name, LxEffectParameter::DataType type, unsigned int count,
                                 const LxArray<int>* values, const LxAnnotationMap* annotations) override;
    void AddEffectParameterArray(const LxString& name, LxEffectParameter::DataType type, unsigned int count,
                                 const LxArray<bool>* values, const LxAnnotationMap* annotations) override;
    void AddTexture(const LxString& name, LxTextureSlot::Type type, const LxAnnotationMap* annotations) override;
    void AddUAV(const LxString& name, LxUAVSlot::Type type, const LxAnnotationMap* annotations) override;
    void StartSampler(const LxString& name, const LxAnnotationMap* annotations) override;
    void AddSamplerTexture(const LxString& name) override;
    void AddSamplerState(const LxString& name, const LxStateValue& value) override;
    void EndSampler() override;
    void AddStream(const LxString& name, LxArray<LxVertexElement*>& elements,
                   const LxAnnotationMap* annotations) override;
    void AddStreamMap(const LxString& name, const LxArray<LxString>& streamNames,
                      const LxAnnotationMap* annotations) override;
    void StartTechnique(const LxString& name, bool isBase, bool isCompute) override;
    void StartInheritedTechnique(const LxString& name, const LxString& baseName, bool isBase, bool isCompute) override;
    void AddTechniqueProperty(const LxString& property) override;
    void StartPass(const LxString& name) override;
    void SetStreamMap(const LxString& name) override;
    void SetStreamOutMap(unsigned int index, const LxString& name) override;
    void ClearStreamOutMap(unsigned int index) override;
    void AddShader(LxShaderType type, LxShaderCodeBlock& code, const LxAnnotationMap* options) override;
    void DisableShader(LxShaderType type) override;
    void EndPass() override;
    void EndTechnique() override;

    // Keeps the source: the shader is compiled for each effect it is applied to.
    LxCountedPtr<LxEffectShader> CompileShader(LxShaderType type, const LxShaderCodeBlock& code,
                                               const LxString& entryPoint, LxShadingLanguage language,
                                               const LxAnnotationMap& options,
                                               const LxArray<LxShaderMacro>& macros) override;

protected:
    // Override passes are completed by the effects they are applied to: no end-of-pass rules here.
    bool CheckAndFinalizePass(LxEffectPass* pass) override;

private:
    bool m_bInRefusedSampler = false;
    unsigned int m_nPassesInTechnique = 0;
    bool m_bInRefusedPass = false;
};
