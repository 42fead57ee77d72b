// LxD3D12EffectPass: a graphics pass on Direct3D 12: the pipeline-state block its render states edit, and, once the
// builder finalizes it, the root signature and pipeline state that Bind sets on the render manager's current list.
//
// The pipeline-state block starts from the framework's defaults, which differ from Direct3D's on purpose: no
// culling, counter-clockwise front faces, a less-or-equal depth test, alpha-blending factors preset (blending
// itself off), R8G8B8A8_UNORM targets over a D32_FLOAT depth buffer, one target, one sample.
//
// Root signature, in this order over the stages vertex, geometry, pixel, hull, domain, each parameter visible to
// its own stage: every constant buffer as a root CBV at its register; per stage with textures one SRV table from
// t0; per stage with UAVs one UAV table from u<render-target count>; per stage with samplers one sampler table
// from s0. Bind uploads the constant buffers for this draw, copies the bound views and the samplers into
// descriptors of the current frame, and sets the vertex and index buffers the effect has bound for the pass's
// stream map. A slot with nothing bound is reported and Bind fails.
//
// Destroying a finalized pass waits until the GPU has finished everything submitted (its pipeline state may be in
// use by frames in flight); commands recorded but not yet submitted must not use a pass that is destroyed, so reload
// and unload effects between frames.
//
// Render-state errors are reported through the builder that created the pass (with the effect file's position)
// until the pass is finalized, through the log afterwards.
#pragma once

#include "EffectManager/LxEffectPass.h"

#include <d3d12.h>

class LxD3D12Shader;

class LX_API LxD3D12EffectPass : public LxEffectPass
{
public:
    enum
    {
        MAX_RENDER_TARGETS = 8
    };

    // The pipeline-state fields the render states edit.
    struct PipelineStateBlock
    {
        D3D12_RASTERIZER_DESC rasterizer;
        D3D12_BLEND_DESC blend;
        D3D12_DEPTH_STENCIL_DESC depthStencil;
        DXGI_FORMAT renderTargetFormats[MAX_RENDER_TARGETS];
        DXGI_FORMAT depthStencilFormat;
        D3D12_PRIMITIVE_TOPOLOGY_TYPE topologyType;
        unsigned int numRenderTargets;
        DXGI_SAMPLE_DESC sampleDesc;
        // Set on the list at bind time rather than baked into the pipeline state.
        unsigned int sampleMask;
        unsigned int stencilRef;
        float blendFactor[4];
    };

    LxD3D12EffectPass(const LxString& name, LxEffectTechnique* technique, LxEffectBuilder* reporter);
    ~LxD3D12EffectPass() override;

    // The framework defaults.
    static void SetDefaults(PipelineStateBlock* block);
    const PipelineStateBlock& GetPipelineStateBlock() const { return m_block; }

    // Interprets one render state into `block`: false with the message in `error`.
    static bool ApplyRenderState(const LxString& name, const LxStateValue& value, PipelineStateBlock* block,
                                 LxString* error);

    bool AddRenderState(const LxString& name, const LxStateValue& value) override;
    void CopyFrom(const LxEffectPass& other) override;

    // Creates the root signature and pipeline state on `device`; false after reporting.
    virtual bool Finalize(ID3D12Device* device);
    ID3D12RootSignature* GetRootSignature() const { return m_pRootSignature; }
    ID3D12PipelineState* GetPipelineState() const { return m_pPipelineState; }
    unsigned int GetNumRootParameters() const { return m_rootParameters.GetCount(); }

    bool Bind(LxEffect& effect) override;
    void Unbind(LxEffect& effect) override;

protected:
    enum RootKind
    {
        ROOT_CBV,
        ROOT_SRV_TABLE,
        ROOT_UAV_TABLE,
        ROOT_SAMPLER_TABLE
    };
    struct RootParameter
    {
        RootKind kind;
        const LxD3D12Shader* shader;
        unsigned int index; // a CBV: the buffer's position in the shader's list; a UAV table: its first register
    };

    void Report(const LxString& message);
    // The root parameters of `stages` (in order) into m_rootParameters and the signature; false after reporting.
    bool CreateRootSignature(ID3D12Device* device, const LxShaderType* stages, unsigned int numStages,
                             unsigned int firstUAVRegister);
    // Sets every root parameter on `list` for `effect`, through the graphics or compute setters.
    bool BindRootParameters(ID3D12GraphicsCommandList* list, LxEffect& effect, bool compute, const char* who);
    const LxD3D12Shader* GetD3D12Shader(LxShaderType type) const;
    // The stream-output declaration of the stream-out maps; false after reporting a gap or a bad map.
    bool BuildStreamOutput(LxArray<D3D12_SO_DECLARATION_ENTRY>* entries, LxArray<UINT>* strides,
                           LxArray<LxString>* semantics);
    bool FinalizeGraphics(ID3D12Device* device);

    LxEffectBuilder* m_pReporter; // valid until Finalize
    PipelineStateBlock m_block;
    LxArray<RootParameter> m_rootParameters;
    ID3D12RootSignature* m_pRootSignature = nullptr;
    ID3D12PipelineState* m_pPipelineState = nullptr;
    bool m_bUsesBlendFactor = false;
};
