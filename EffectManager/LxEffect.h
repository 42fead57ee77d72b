// LxEffect: a built effect: its parameters, techniques, texture and UAV slots, samplers, vertex streams, stream
// maps and code blocks, its "Options" map, art notes and the files it included.
//
// Built by LxEffectBuilder (the Add* operations are the builder's; after LxEffectBuilder::GetResult the structure
// is read-only and only parameter values and bindings change). Lookups by name return null when absent.
//
// Bindings: the effect holds the index buffer, one vertex buffer (with a byte offset) per stream declaration and one
// view per texture and UAV slot that the platform pass binds at BeginPass. An unknown name is reported and the
// call fails; binding null clears.
//
// Drawing is a strict sequence: Begin(technique) -> BeginPass(i) -> EndPass() -> ... -> End(). Misuse is reported
// and answered with false; the effect stays usable. One thread draws with an effect at a time.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxArray.h"
#include "Common/LxString.h"
#include "EffectManager/LxAnnotationMap.h"
#include "EffectManager/LxEffectParameter.h"
#include "EffectManager/LxEffectPass.h"
#include "EffectManager/LxEffectTechnique.h"
#include "EffectManager/LxNamedTable.h"
#include "EffectManager/LxSampler.h"
#include "EffectManager/LxShaderCodeBlock.h"
#include "EffectManager/LxStreamMap.h"
#include "EffectManager/LxTextureSlot.h"
#include "EffectManager/LxUAVSlot.h"
#include "EffectManager/LxVertexStreamDecl.h"
#include "GPUResourceManager/LxGPUIndexBuffer.h"
#include "GPUResourceManager/LxGPUSamplingResourceView.h"
#include "GPUResourceManager/LxGPUUnorderedAccessView.h"
#include "GPUResourceManager/LxGPUVertexBuffer.h"

class LX_API LxEffect
{
public:
    explicit LxEffect(const LxString& name);
    virtual ~LxEffect();
    LxEffect(const LxEffect&) = delete;
    LxEffect& operator=(const LxEffect&) = delete;

    // The effect file's name.
    const LxString& GetName() const { return m_name; }

    // --- lookups ------------------------------------------------------------------------------------------------
    LxEffectParameter* GetParameter(const LxString& name) const { return m_parameters.Find(name); }
    LxEffectTechnique* GetTechnique(const LxString& name) const { return m_techniques.Find(name); }
    LxSampler* GetSampler(const LxString& name) const { return m_samplers.Find(name); }
    LxStreamMap* GetStreamMap(const LxString& name) const { return m_streamMaps.Find(name); }
    LxTextureSlot* GetTextureSlot(const LxString& name) const { return m_textureSlots.Find(name); }
    LxUAVSlot* GetUAVSlot(const LxString& name) const { return m_uavSlots.Find(name); }
    LxVertexStreamDecl* GetVertexStreamDecl(const LxString& name) const { return m_streams.Find(name); }
    const LxShaderCodeBlock* GetCodeBlock(const LxString& name) const;

    // Positional access, in declaration order.
    unsigned int GetNumParameters() const { return m_parameters.GetCount(); }
    LxEffectParameter* GetParameter(unsigned int index) const { return m_parameters[index]; }
    unsigned int GetNumTechniques() const { return m_techniques.GetCount(); }
    LxEffectTechnique* GetTechnique(unsigned int index) const { return m_techniques[index]; }
    unsigned int GetNumSamplers() const { return m_samplers.GetCount(); }
    LxSampler* GetSampler(unsigned int index) const { return m_samplers[index]; }
    unsigned int GetNumStreamMaps() const { return m_streamMaps.GetCount(); }
    LxStreamMap* GetStreamMap(unsigned int index) const { return m_streamMaps[index]; }
    unsigned int GetNumTextureSlots() const { return m_textureSlots.GetCount(); }
    LxTextureSlot* GetTextureSlot(unsigned int index) const { return m_textureSlots[index]; }
    unsigned int GetNumUAVSlots() const { return m_uavSlots.GetCount(); }
    LxUAVSlot* GetUAVSlot(unsigned int index) const { return m_uavSlots[index]; }
    unsigned int GetNumVertexStreamDecls() const { return m_streams.GetCount(); }
    LxVertexStreamDecl* GetVertexStreamDecl(unsigned int index) const { return m_streams[index]; }
    const LxArray<LxShaderCodeBlock*>& GetCodeBlocks() const { return m_codeBlocks; }
    // The index-th technique that can be drawn (base techniques skipped), or null.
    LxEffectTechnique* FindTechnique(unsigned int index) const;

    const LxAnnotationMap& GetOptions() const { return m_options; }
    const LxString& GetArtNotes() const { return m_artNotes; }
    const LxArray<LxString>& GetIncludedFiles() const { return m_includedFiles; }
    bool IsFileIncluded(const LxString& fileName) const { return m_includedFiles.Contains(fileName); }

    // --- building (LxEffectBuilder) -----------------------------------------------------------------------------
    // Each Add takes ownership and returns false (deleting nothing) when the name is taken.
    bool AddParameter(LxEffectParameter* parameter) { return m_parameters.Add(parameter->GetName(), parameter); }
    bool AddTechnique(LxEffectTechnique* technique) { return m_techniques.Add(technique->GetName(), technique); }
    bool AddSampler(LxSampler* sampler) { return m_samplers.Add(sampler->GetName(), sampler); }
    bool AddStreamMap(LxStreamMap* map) { return m_streamMaps.Add(map->GetName(), map); }
    bool AddTextureSlot(LxTextureSlot* slot) { return m_textureSlots.Add(slot->GetName(), slot); }
    bool AddUAVSlot(LxUAVSlot* slot) { return m_uavSlots.Add(slot->GetName(), slot); }
    bool AddVertexStreamDecl(LxVertexStreamDecl* decl) { return m_streams.Add(decl->GetName(), decl); }
    bool AddCodeBlock(LxShaderCodeBlock* block);
    void SetOptions(const LxAnnotationMap& options) { m_options = options; }
    void AppendArtNotes(const LxString& notes) { m_artNotes.Append(notes); }
    void AddIncludedFile(const LxString& fileName);

    // Runs once after building: resolves stream maps against the stream declarations and checks mimic streams.
    // False after reporting what failed.
    virtual bool Finalize();

    // --- bindings -----------------------------------------------------------------------------------------------
    void BindIndexBuffer(const LxCountedPtr<LxGPUIndexBuffer>& buffer) { m_indexBuffer = buffer; }
    const LxCountedPtr<LxGPUIndexBuffer>& GetBoundIndexBuffer() const { return m_indexBuffer; }
    bool BindVertexBuffer(const LxString& streamName, const LxCountedPtr<LxGPUVertexBuffer>& buffer,
                          unsigned int offset = 0);
    bool BindVertexBuffer(const LxVertexStreamDecl* decl, const LxCountedPtr<LxGPUVertexBuffer>& buffer,
                          unsigned int offset = 0);
    // Null when nothing is bound (or the name is unknown, which is reported); `offset` receives the byte offset.
    LxCountedPtr<LxGPUVertexBuffer> GetBoundVertexBuffer(const LxString& streamName,
                                                         unsigned int* offset = nullptr) const;
    LxCountedPtr<LxGPUVertexBuffer> GetBoundVertexBuffer(const LxVertexStreamDecl* decl,
                                                         unsigned int* offset = nullptr) const;
    bool BindTexture(const LxString& slotName, const LxCountedPtr<LxGPUSamplingResourceView>& view);
    bool BindTexture(const LxTextureSlot* slot, const LxCountedPtr<LxGPUSamplingResourceView>& view);
    LxCountedPtr<LxGPUSamplingResourceView> GetBoundTexture(const LxString& slotName) const;
    LxCountedPtr<LxGPUSamplingResourceView> GetBoundTexture(const LxTextureSlot* slot) const;
    // Makes the view of `resource` that the slot's "ViewParams" describe (LxTextureSlot::CreateView) and binds it.
    bool BindTextureResource(const LxString& slotName, LxGPUResource& resource);
    bool BindUAV(const LxString& slotName, const LxCountedPtr<LxGPUUnorderedAccessView>& view);
    bool BindUAV(const LxUAVSlot* slot, const LxCountedPtr<LxGPUUnorderedAccessView>& view);
    LxCountedPtr<LxGPUUnorderedAccessView> GetBoundUAV(const LxString& slotName) const;
    LxCountedPtr<LxGPUUnorderedAccessView> GetBoundUAV(const LxUAVSlot* slot) const;
    bool BindUAVResource(const LxString& slotName, LxGPUResource& resource);

    // --- drawing ------------------------------------------------------------------------------------------------
    bool Begin(const LxString& techniqueName, unsigned int* numPasses);
    bool Begin(LxEffectTechnique* technique, unsigned int* numPasses);
    bool BeginPass(unsigned int index);
    bool EndPass();
    bool End();
    LxEffectTechnique* GetActiveTechnique() const { return m_pActiveTechnique; }
    // The pass BeginPass bound (an override pass where one was substituted), or null.
    LxEffectPass* GetActivePass() const { return m_pActivePass; }
    int GetActivePassIndex() const { return m_nActivePass; }

private:
    LxString m_name;
    LxNamedTable<LxEffectParameter> m_parameters;
    LxNamedTable<LxEffectTechnique> m_techniques;
    LxNamedTable<LxSampler> m_samplers;
    LxNamedTable<LxStreamMap> m_streamMaps;
    LxNamedTable<LxTextureSlot> m_textureSlots;
    LxNamedTable<LxUAVSlot> m_uavSlots;
    LxNamedTable<LxVertexStreamDecl> m_streams;
    LxArray<LxShaderCodeBlock*> m_codeBlocks;
    LxAnnotationMap m_options;
    LxString m_artNotes;
    LxArray<LxString> m_includedFiles;

    struct VertexBinding
    {
        LxCountedPtr<LxGPUVertexBuffer> buffer;
        unsigned int offset;
    };
    LxCountedPtr<LxGPUIndexBuffer> m_indexBuffer;
    LxHashMap<const void*, VertexBinding, LxPointerHasher<void>> m_vertexBuffers;
    LxHashMap<const void*, LxCountedPtr<LxGPUSamplingResourceView>, LxPointerHasher<void>> m_textures;
    LxHashMap<const void*, LxCountedPtr<LxGPUUnorderedAccessView>, LxPointerHasher<void>> m_uavs;

    LxEffectTechnique* m_pActiveTechnique = nullptr;
    int m_nActiveOverride = -1;
    LxEffectPass* m_pActivePass = nullptr;
    int m_nActivePass = -1;
};
