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
    for (unsigned int i = 0; i < m_techniques.Count(); ++i)
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
    for (unsigned int m = 0; m < m_streamMaps.Count(); ++m)
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
    for (unsigned int i = 0; i < m_streams.Count(); ++i)
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
