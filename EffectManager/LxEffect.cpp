#include "EffectManager/LxEffect.h"

#include "Common/LxLogManager.h"
#include "EffectManager/LxEffectDrawContext.h"

namespace
{
LxEffectDrawContext* g_drawContext = nullptr;
}

void LxEffectDrawContext::SetGlobal(LxEffectDrawContext* context)
{
    g_drawContext = context;
}
LxEffectDrawContext* LxEffectDrawContext::GetGlobal()
{
    return g_drawContext;
}

LxEffect::LxEffect(const LxString& name) : m_name(name) {}

LxEffect::~LxEffect()
{
    // Bindings first: views and buffers may be the last references to their resources.
    m_textures.Clear();
    m_uavs.Clear();
    m_vertexBuffers.Clear();
    m_indexBuffer = nullptr;
    // Techniques first: their passes point at stream maps and shaders that the tables below own.
    m_techniques.Clear();
    m_samplers.Clear();
    for (LxShaderCodeBlock* block : m_codeBlocks)
        delete block;
}

const LxShaderCodeBlock* LxEffect::GetCodeBlock(const LxString& name) const
{
    for (const LxShaderCodeBlock* block : m_codeBlocks)
        if (block->name == name)
            return block;
    return nullptr;
}

bool LxEffect::AddCodeBlock(LxShaderCodeBlock* block)
{
    if (!block || GetCodeBlock(block->name))
        return false;
    m_codeBlocks.Add(block);
    return true;
}

void LxEffect::AddIncludedFile(const LxString& fileName)
{
    if (!m_includedFiles.Contains(fileName))
        m_includedFiles.Add(fileName);
}

LxEffectTechnique* LxEffect::FindTechnique(unsigned int index) const
{
    for (unsigned int i = 0; i < m_techniques.GetCount(); ++i)
    {
        LxEffectTechnique* t = m_techniques[i];
        if (t->IsBase())
            continue;
        if (index-- == 0)
            return t;
    }
    return nullptr;
}

bool LxEffect::Finalize()
{
    bool ok = true;
    for (unsigned int m = 0; m < m_streamMaps.GetCount(); ++m)
    {
        LxStreamMap* map = m_streamMaps[m];
        for (unsigned int s = 0; s < map->GetNumStreams(); ++s)
        {
            LxVertexStreamDecl* decl = m_streams.Find(map->GetStreamName(s));
            if (!decl)
            {
                LX_ERROR("Undefined vertex stream \"%s\" in stream map definition \"%s\"",
                         map->GetStreamName(s).c_str(), map->GetName().c_str());
                ok = false;
            }
            map->SetStreamDecl(s, decl);
        }
    }
    for (unsigned int i = 0; i < m_streams.GetCount(); ++i)
    {
        const LxVertexStreamDecl* decl = m_streams[i];
        LxCountedPtr<LxAnnotationValue> mimic = decl->GetAnnotations().LookupValue("Mimic");
        if (!mimic)
            continue;
        const LxString source = mimic->IsString() ? mimic->GetString() : LxString();
        const LxVertexStreamDecl* sourceDecl = m_streams.Find(source);
        if (!sourceDecl || sourceDecl->GetStride() != decl->GetStride())
        {
            LX_ERROR("Stride of mimic stream: '%s' does not match source stream: '%s'", decl->GetName().c_str(),
                     source.c_str());
            ok = false;
        }
    }
    return ok;
}

// --- bindings -------------------------------------------------------------------------------------------------------

bool LxEffect::BindVertexBuffer(const LxString& streamName, const LxCountedPtr<LxGPUVertexBuffer>& buffer,
                                unsigned int offset)
{
    const LxVertexStreamDecl* decl = m_streams.Find(streamName);
    if (!decl)
    {
        LX_ERROR("%s: Unknown stream name \"%s\"", "LxEffect::BindVertexBuffer", streamName.c_str());
        return false;
    }
    return BindVertexBuffer(decl, buffer, offset);
}

bool LxEffect::BindVertexBuffer(const LxVertexStreamDecl* decl, const LxCountedPtr<LxGPUVertexBuffer>& buffer,
                                unsigned int offset)
{
    if (!decl || m_streams.Find(decl->GetName()) != decl)
    {
        LX_ERROR("%s: Unknown stream name \"%s\"", "LxEffect::BindVertexBuffer", decl ? decl->GetName().c_str() : "");
        return false;
    }
    if (buffer)
        m_vertexBuffers.Set(decl, VertexBinding{buffer, offset});
    else
        m_vertexBuffers.Erase(decl);
    return true;
}

LxCountedPtr<LxGPUVertexBuffer> LxEffect::GetBoundVertexBuffer(const LxString& streamName, unsigned int* offset) const
{
    const LxVertexStreamDecl* decl = m_streams.Find(streamName);
    if (!decl)
    {
        LX_ERROR("%s: Unknown stream name \"%s\"", "LxEffect::GetBoundVertexBuffer", streamName.c_str());
        return LxCountedPtr<LxGPUVertexBuffer>();
    }
    return GetBoundVertexBuffer(decl, offset);
}

LxCountedPtr<LxGPUVertexBuffer> LxEffect::GetBoundVertexBuffer(const LxVertexStreamDecl* decl,
                                                               unsigned int* offset) const
{
    if (offset)
        *offset = 0;
    const VertexBinding* binding = m_vertexBuffers.FindValue(decl);
    if (!binding)
        return LxCountedPtr<LxGPUVertexBuffer>();
    if (offset)
        *offset = binding->offset;
    return binding->buffer;
}

bool LxEffect::BindTexture(const LxString& slotName, const LxCountedPtr<LxGPUSamplingResourceView>& view)
{
    const LxTextureSlot* slot = m_textureSlots.Find(slotName);
    if (!slot)
    {
        LX_ERROR("%s: Unknown texture slot name \"%s\"", "LxEffect::BindTexture", slotName.c_str());
        return false;
    }
    return BindTexture(slot, view);
}

bool LxEffect::BindTexture(const LxTextureSlot* slot, const LxCountedPtr<LxGPUSamplingResourceView>& view)
{
    if (!slot || m_textureSlots.Find(slot->GetName()) != slot)
    {
        LX_ERROR("%s: Unknown texture slot name \"%s\"", "LxEffect::BindTexture", slot ? slot->GetName().c_str() : "");
        return false;
    }
    if (view)
        m_textures.Set(slot, view);
    else
        m_textures.Erase(slot);
    return true;
}

LxCountedPtr<LxGPUSamplingResourceView> LxEffect::GetBoundTexture(const LxString& slotName) const
{
    const LxTextureSlot* slot = m_textureSlots.Find(slotName);
    if (!slot)
    {
        LX_ERROR("%s: Unknown texture slot name \"%s\"", "LxEffect::GetBoundTexture", slotName.c_str());
        return LxCountedPtr<LxGPUSamplingResourceView>();
    }
    return GetBoundTexture(slot);
}

LxCountedPtr<LxGPUSamplingResourceView> LxEffect::GetBoundTexture(const LxTextureSlot* slot) const
{
    const LxCountedPtr<LxGPUSamplingResourceView>* view = m_textures.FindValue(slot);
    return view ? *view : LxCountedPtr<LxGPUSamplingResourceView>();
}

bool LxEffect::BindTextureResource(const LxString& slotName, LxGPUResource& resource)
{
    const LxTextureSlot* slot = m_textureSlots.Find(slotName);
    if (!slot)
    {
        LX_ERROR("%s: Unknown texture slot name \"%s\"", "LxEffect::BindTexture", slotName.c_str());
        return false;
    }
    LxCountedPtr<LxGPUSamplingResourceView> view = slot->CreateView(resource);
    return view && BindTexture(slot, view);
}

bool LxEffect::BindUAV(const LxString& slotName, const LxCountedPtr<LxGPUUnorderedAccessView>& view)
{
    const LxUAVSlot* slot = m_uavSlots.Find(slotName);
    if (!slot)
    {
        LX_ERROR("%s: Unknown UAV slot name \"%s\"", "LxEffect::BindUAV", slotName.c_str());
        return false;
    }
    return BindUAV(slot, view);
}

bool LxEffect::BindUAV(const LxUAVSlot* slot, const LxCountedPtr<LxGPUUnorderedAccessView>& view)
{
    if (!slot || m_uavSlots.Find(slot->GetName()) != slot)
    {
        LX_ERROR("%s: Unknown UAV slot name \"%s\"", "LxEffect::BindUAV", slot ? slot->GetName().c_str() : "");
        return false;
    }
    if (view)
        m_uavs.Set(slot, view);
    else
        m_uavs.Erase(slot);
    return true;
}

LxCountedPtr<LxGPUUnorderedAccessView> LxEffect::GetBoundUAV(const LxString& slotName) const
{
    const LxUAVSlot* slot = m_uavSlots.Find(slotName);
    if (!slot)
    {
        LX_ERROR("%s: Unknown UAV slot name \"%s\"", "LxEffect::GetBoundUAV", slotName.c_str());
        return LxCountedPtr<LxGPUUnorderedAccessView>();
    }
    return GetBoundUAV(slot);
}

LxCountedPtr<LxGPUUnorderedAccessView> LxEffect::GetBoundUAV(const LxUAVSlot* slot) const
{
    const LxCountedPtr<LxGPUUnorderedAccessView>* view = m_uavs.FindValue(slot);
    return view ? *view : LxCountedPtr<LxGPUUnorderedAccessView>();
}

bool LxEffect::BindUAVResource(const LxString& slotName, LxGPUResource& resource)
{
    const LxUAVSlot* slot = m_uavSlots.Find(slotName);
    if (!slot)
    {
        LX_ERROR("%s: Unknown UAV slot name \"%s\"", "LxEffect::BindUAV", slotName.c_str());
        return false;
    }
    LxCountedPtr<LxGPUUnorderedAccessView> view = slot->CreateView(resource);
    return view && BindUAV(slot, view);
}

// --- drawing --------------------------------------------------------------------------------------------------------

bool LxEffect::Begin(const LxString& techniqueName, unsigned int* numPasses)
{
    if (m_pActiveTechnique)
    {
        LX_ERROR("Nested calls to %s not allowed", "LxEffect::Begin");
        return false;
    }
    LxEffectTechnique* technique = m_techniques.Find(techniqueName);
    if (!technique)
    {
        LX_ERROR("Technique %s not found", techniqueName.c_str());
        return false;
    }
    return Begin(technique, numPasses);
}

bool LxEffect::Begin(LxEffectTechnique* technique, unsigned int* numPasses)
{
    if (m_pActiveTechnique)
    {
        LX_ERROR("Nested calls to %s not allowed", "LxEffect::Begin");
        return false;
    }
    if (!technique || technique->GetEffect() != this)
    {
        LX_ERROR("Technique %s not found", technique ? technique->GetName().c_str() : "(null)");
        return false;
    }
    if (technique->IsBase())
    {
        LX_ERROR("LxEffect::Begin.  Technique %s is a base technique and cannot be drawn",
                 technique->GetName().c_str());
        return false;
    }
    m_pActiveTechnique = technique;
    m_nActiveOverride = -1;
    if (LxEffectDrawContext* context = LxEffectDrawContext::GetGlobal())
    {
        const int index = context->GetActiveOverrideTechnique();
        if (index >= 0 && technique->HasOverridePasses(static_cast<unsigned int>(index)))
            m_nActiveOverride = index;
    }
    if (numPasses)
        *numPasses = technique->GetNumPasses();
    return true;
}

bool LxEffect::BeginPass(unsigned int index)
{
    if (!m_pActiveTechnique)
    {
        LX_ERROR("%s called without calling LxEffect::Begin first", "LxEffect::BeginPass");
        return false;
    }
    if (m_pActivePass)
    {
        LX_ERROR("Nested calls to %s not allowed", "LxEffect::BeginPass");
        return false;
    }
    if (index >= m_pActiveTechnique->GetNumPasses())
    {
        LX_ERROR("Invalid pass index");
        return false;
    }
    LxEffectPass* pass = nullptr;
    if (m_nActiveOverride >= 0)
        pass = m_pActiveTechnique->GetOverridePass(static_cast<unsigned int>(m_nActiveOverride), index);
    if (!pass)
        pass = m_pActiveTechnique->GetPass(index);

    // The pass is recorded before it binds: app-updates run while binding read it.
    m_pActivePass = pass;
    m_nActivePass = static_cast<int>(index);
    if (LxEffectDrawContext* context = LxEffectDrawContext::GetGlobal())
        context->SetCurrentPass(this, index);
    // Application-updated parameters take this draw's values (the object being drawn, the active camera) before the
    // pass copies parameter values into its constant buffers.
    for (unsigned int i = 0; i < m_parameters.GetCount(); ++i)
    {
        LxEffectParameter* parameter = m_parameters[i];
        if (parameter->GetUpdateHandler())
            parameter->ExecuteUpdateHandler();
    }
    return pass->Bind(*this);
}

bool LxEffect::EndPass()
{
    if (!m_pActivePass)
    {
        LX_ERROR("%s called without calling LxEffect::BeginPass first", "LxEffect::EndPass");
        return false;
    }
    m_pActivePass->Unbind(*this);
    m_pActivePass = nullptr;
    m_nActivePass = -1;
    return true;
}

bool LxEffect::End()
{
    if (!m_pActiveTechnique)
    {
        LX_ERROR("%s called without matching LxEffect::Begin", "LxEffect::End");
        return false;
    }
    if (m_pActivePass)
        EndPass(); // a forgotten EndPass is closed here rather than leaving the effect stuck
    m_pActiveTechnique = nullptr;
    m_nActiveOverride = -1;
    return true;
}
