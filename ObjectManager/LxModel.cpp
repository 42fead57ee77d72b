#include "ObjectManager/LxModel.h"

#include "Common/LxLogManager.h"
#include "EffectManager/LxEffectManager.h"
#include "GPUResourceManager/LxGPUResourceManager.h"
#include "ObjectManager/LxAnimationSet.h"
#include "ObjectManager/LxModelChunkDesc.h"
#include "ObjectManager/LxModelData.h"
#include "ObjectManager/LxModelDataManifest.h"
#include "ObjectManager/LxModelDataManifestEntry.h"
#include "ObjectManager/LxModelIB.h"
#include "ObjectManager/LxModelTexture.h"
#include "ObjectManager/LxModelVB.h"
#include "ObjectManager/LxObjectManager.h"
#include "ObjectManager/LxSkeleton.h"
#include "RenderManager/include/LxRenderManager.h"

#include <cstring>

namespace
{
template <class T>
T* FindItem(const LxModelData& data, const LxString& name, LxModelDataType type)
{
    LxModelDataManifestEntry* entry = data.GetManifest().GetEntryByName(name);
    if (!entry || entry->GetType() != type || !entry->GetItem())
        return nullptr;
    return static_cast<T*>(entry->GetItem());
}
} // namespace

namespace
{
// Without a device every model would say so; once per process is enough.
bool g_bReportedNoResources = false;
} // namespace

void LxModel::ReportNoResources()
{
    if (g_bReportedNoResources)
        return;
    g_bReportedNoResources = true;
    LX_DEBUG("LxModel::Create.  No GPU buffers could be made; models draw with nothing bound");
}

LxModel::~LxModel()
{
    delete m_pData;
}

LxModel* LxModel::Create(LxModelData* data)
{
    if (!data)
        return nullptr;
    LxModel* model = new LxModel();
    model->m_pData = data;
    if (!model->Build())
    {
        delete model;
        return nullptr;
    }
    return model;
}

LxModel* LxModel::LoadFromPath(const LxString& path)
{
    LxModelData* data = LxModelData::LoadFromPath(path, true);
    if (!data)
    {
        LX_ERROR("LxModel::LoadFromPath.  Unable to load model archive: %s", path.c_str());
        return nullptr;
    }
    return Create(data);
}

const LxSkeleton* LxModel::GetSkeleton() const
{
    return m_pData->GetSkeleton();
}

const LxModelChunkDesc& LxModel::GetChunkDesc(unsigned int index) const
{
    return *m_pData->GetChunkDesc(index);
}

bool LxModel::Build()
{
    if (!LxModelData::ValidateChunkDescs(m_pData->GetChunkDescs()))
        return false;
    m_chunks.Resize(m_pData->GetChunkDescCount());
    bool ok = true;
    for (unsigned int i = 0; i < m_chunks.GetCount(); ++i)
        ok = BuildChunk(i) && ok; // every broken chunk is reported
    if (!ok)
        return false;
    ComputeBounds();
    return true;
}

bool LxModel::BuildChunk(unsigned int index)
{
    const LxModelChunkDesc& desc = *m_pData->GetChunkDesc(index);
    Chunk& chunk = m_chunks[index];
    chunk.leader = index;
    chunk.primType = desc.GetPrimType();
    chunk.indexed = desc.IsIndexed();
    chunk.first = desc.IsIndexed() ? desc.GetIndexMin() : desc.GetVertexMin();
    chunk.count =
        desc.IsIndexed() ? desc.GetIndexMax() - desc.GetIndexMin() : desc.GetVertexMax() - desc.GetVertexMin();
    chunk.hasVisibilityCurve = !desc.GetVisibilityCurve().IsEmpty();
    for (const LxParameterSetting& setting : desc.GetParameterSettings())
        if (setting.GetSource() != LxParameterSetting::SOURCE_EFFECT_DEFAULT)
            chunk.hasSettings = true;
    if (index > 0 && m_pData->GetChunkDesc(index - 1)->GetName() == desc.GetName())
        chunk.leader = m_chunks[index - 1].leader;

    chunk.effect = LxEffectManager::GetRef().LoadEffect(desc.GetEffectFile());
    if (!chunk.effect)
    {
        LX_ERROR("LxModel::Create.  Unable to load effect %s for chunk %s", desc.GetEffectFile().c_str(),
                 desc.GetName().c_str());
        return false;
    }
    LxEffect& effect = *chunk.effect;
    chunk.technique = effect.GetTechnique(desc.GetTechnique());
    if (!chunk.technique)
    {
        chunk.technique = effect.FindTechnique(0);
        if (!chunk.technique)
        {
            LX_ERROR("LxModel::Create.  Effect %s has no technique to draw chunk %s", desc.GetEffectFile().c_str(),
                     desc.GetName().c_str());
            return false;
        }
        LX_WARNING("LxModel::Create.  Effect %s has no technique %s; chunk %s uses %s", desc.GetEffectFile().c_str(),
                   desc.GetTechnique().c_str(), desc.GetName().c_str(), chunk.technique->GetName().c_str());
    }

    bool ok = true;
    // Geometry: the group leader's mappings (a follower names none of its own).
    const LxModelChunkDesc& geometry = *m_pData->GetChunkDesc(chunk.leader);
    for (const LxModelChunkDesc::Mapping& m : geometry.GetVBMappings())
    {
        const LxVertexStreamDecl* stream = effect.GetVertexStreamDecl(m.slot);
        if (!stream)
        {
            // The effect does not read this stream; another effect of the group may.
            continue;
        }
        if (!FindItem<LxModelVB>(*m_pData, m.item, LX_MODEL_DATA_VB))
        {
            LX_ERROR("LxModel::Create.  Chunk %s names vertex buffer %s, which the model does not hold",
                     desc.GetName().c_str(), m.item.c_str());
            ok = false;
            continue;
        }
        Chunk::VertexBinding binding;
        binding.stream = stream;
        binding.buffer = GetVertexBuffer(m.item);
        chunk.vertexBuffers.Add(binding);
    }
    if (geometry.IsIndexed())
    {
        const LxModelIB* ib = FindItem<LxModelIB>(*m_pData, geometry.GetIBName(), LX_MODEL_DATA_IB);
        if (!ib)
        {
            LX_ERROR("LxModel::Create.  Chunk %s names index buffer %s, which the model does not hold",
                     desc.GetName().c_str(), geometry.GetIBName().c_str());
            ok = false;
        }
        else if (index == chunk.leader)
        {
            chunk.indexBuffer = LxGPUResourceManager::GetRef().CreateResourceIndex(
                LxGPUResource::GPU_RESOURCE_STATIC, ib->GetDesc().indexSize, ib->GetDesc().indexCount, ib->GetData(),
                LxGPUResource::BIND_INDEX_BUFFER);
            if (!chunk.indexBuffer)
                ReportNoResources();
        }
        else
            chunk.indexBuffer = m_chunks[chunk.leader].indexBuffer;
    }
    for (const LxModelChunkDesc::Mapping& m : desc.GetTexMappings())
    {
        const LxTextureSlot* slot = effect.GetTextureSlot(m.slot);
        if (!slot)
            continue;
        if (!FindItem<LxModelTexture>(*m_pData, m.item, LX_MODEL_DATA_TEX))
        {
            LX_ERROR("LxModel::Create.  Chunk %s names texture %s, which the model does not hold",
                     desc.GetName().c_str(), m.item.c_str());
            ok = false;
            continue;
        }
        LxCountedPtr<LxGPUTexture2DArray> texture = GetTexture(m.item);
        Chunk::TextureBinding binding;
        binding.slot = slot;
        if (texture)
            binding.view = slot->CreateView(*texture);
        chunk.textures.Add(binding);
    }
    return ok;
}

LxCountedPtr<LxGPUVertexBuffer> LxModel::GetVertexBuffer(const LxString& item)
{
    const int known = m_vbNames.Find(item);
    if (known >= 0)
        return m_vbs[known];
    const LxModelVB* vb = FindItem<LxModelVB>(*m_pData, item, LX_MODEL_DATA_VB);
    LxCountedPtr<LxGPUVertexBuffer> buffer = LxGPUResourceManager::GetRef().CreateResourceVertex(
        LxGPUResource::GPU_RESOURCE_STATIC, vb->GetDesc().vertexSize, vb->GetDesc().vertexCount, vb->GetData(),
        LxGPUResource::BIND_VERTEX_BUFFER);
    if (!buffer)
        ReportNoResources();
    m_vbNames.Add(item);
    m_vbs.Add(buffer);
    return buffer;
}

LxCountedPtr<LxGPUTexture2DArray> LxModel::GetTexture(const LxString& item)
{
    const int known = m_textureNames.Find(item);
    if (known >= 0)
        return m_textureResources[known];
    const LxModelTexture* tex = FindItem<LxModelTexture>(*m_pData, item, LX_MODEL_DATA_TEX);
    const LxModelTextureDesc& d = tex->GetDesc();
    LxCountedPtr<LxGPUTexture2DArray> texture;
    if (d.type == LxModelTextureDesc::TEXTURE_2D)
        texture = LxGPUResourceManager::GetRef().CreateTexture2DArray(
            LxGPUResource::GPU_RESOURCE_STATIC, d.width, d.height, static_cast<LxGPUResourceFormat>(d.format),
            d.mipLevels > 1 ? LxGPUTexture::MIP_USER_SUPPLIED : LxGPUTexture::MIP_NONE, d.mipLevels ? d.mipLevels : 1,
            d.arraySize ? d.arraySize : 1, LxGPUResource::BIND_SHADER_RESOURCE, 0, tex->GetData());
    else
        LX_WARNING("LxModel::Create.  Texture %s is not two-dimensional; it is not drawn", item.c_str());
    m_textureNames.Add(item);
    m_textureResources.Add(texture);
    return texture;
}

void LxModel::ComputeBounds()
{
    m_bounds.SetEmpty();
    for (const LxModelChunkDesc* desc : m_pData->GetChunkDescs())
    {
        if (!desc->GetSubChunks().IsEmpty())
        {
            for (const LxModelSubChunk& s : desc->GetSubChunks())
            {
                m_bounds.AddPoint(LxPoint3(s.boundsMin[0], s.boundsMin[1], s.boundsMin[2]));
                m_bounds.AddPoint(LxPoint3(s.boundsMax[0], s.boundsMax[1], s.boundsMax[2]));
            }
            continue;
        }
        if (desc->GetVBMappings().IsEmpty())
            continue;
        const LxModelVB* vb = FindItem<LxModelVB>(*m_pData, desc->GetVBMappings()[0].item, LX_MODEL_DATA_VB);
        if (!vb || !vb->GetData() || vb->GetDesc().vertexSize < 3 * sizeof(float))
            continue;
        const unsigned int stride = vb->GetDesc().vertexSize;
        const unsigned int available = vb->GetDataSize() / stride;
        const unsigned int end = desc->GetVertexMax() < available ? desc->GetVertexMax() : available;
        const unsigned char* bytes = vb->GetData()->GetData();
        for (unsigned int v = desc->GetVertexMin(); v < end; ++v)
        {
            float p[3];
            std::memcpy(p, bytes + static_cast<size_t>(v) * stride, sizeof p);
            m_bounds.AddPoint(LxPoint3(p[0], p[1], p[2]));
        }
    }
}

bool LxModel::EvaluateVisibility(unsigned int index, const LxAnimationSet& animations, float time) const
{
    const LxString& curveName = m_pData->GetChunkDesc(index)->GetVisibilityCurve();
    LxCountedPtr<LxAnimationCurve> curve = animations.GetCurve(curveName);
    if (!curve)
        return true;
    switch (curve->GetDataType())
    {
    case LxAnimationCurve::DATA_BOOL:
    {
        bool shown = true;
        curve->GetValueBool(time, &shown);
        return shown;
    }
    case LxAnimationCurve::DATA_FLOAT:
    {
        float value = 1.0f;
        curve->GetValueFloat(time, &value);
        return value > 0.5f;
    }
    default:
        return true;
    }
}

bool LxModel::DrawChunk(unsigned int index, const LxObject* owner, const LxAnimationSet* animations, float time)
{
    Chunk& chunk = m_chunks[index];
    LxEffect& effect = *chunk.effect;

    effect.BindIndexBuffer(chunk.indexBuffer);
    for (const Chunk::VertexBinding& b : chunk.vertexBuffers)
        effect.BindVertexBuffer(b.stream, b.buffer);
    for (const Chunk::TextureBinding& b : chunk.textures)
        effect.BindTexture(b.slot, b.view);
    if (chunk.hasSettings)
        ApplySettings(*m_pData->GetChunkDesc(index), effect, animations, time);

    unsigned int passes = 0;
    if (!effect.Begin(chunk.technique, &passes))
        return false;
    LxRenderManager& renderer = LxRenderManager::GetRef();
    LxObjectManager* objects = LxObjectManager::GetExistingPtr();
    const bool track = objects && owner && objects->IsDrawTracking();
    bool drew = true;
    for (unsigned int p = 0; p < passes; ++p)
    {
        if (!effect.BeginPass(p))
        {
            drew = false;
            continue;
        }
        if (chunk.indexed)
            renderer.DrawIndexed(chunk.primType, chunk.count, chunk.first, 0);
        else
            renderer.DrawNonIndexed(chunk.primType, chunk.count, chunk.first);
        if (track)
            objects->TrackDraw(*owner, chunk.indexed, chunk.primType);
        effect.EndPass();
    }
    effect.End();
    return drew;
}

void LxModel::ApplySettings(const LxModelChunkDesc& desc, LxEffect& effect, const LxAnimationSet* animations,
                            float time)
{
    for (const LxParameterSetting& s : desc.GetParameterSettings())
    {
        if (s.GetSource() == LxParameterSetting::SOURCE_EFFECT_DEFAULT)
            continue;
        LxEffectParameter* parameter = effect.GetParameter(s.GetName());
        if (!parameter)
            continue;
        if (s.GetSource() == LxParameterSetting::SOURCE_VALUES)
            parameter->SetRawValue(s.GetValues().GetData(), s.GetValues().GetCount() * sizeof(unsigned int));
        else if (animations)
        {
            LxCountedPtr<LxAnimationCurve> curve = animations->GetCurve(s.GetCurveName());
            float value[16];
            if (curve && curve->GetValueSize() <= sizeof value && curve->GetValueRaw(time, value))
                parameter->SetRawValue(value, curve->GetValueSize());
        }
    }
}
