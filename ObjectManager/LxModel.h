// LxModel: a model archive made drawable: the model data (chunk descriptions, skeleton, items), the GPU vertex and
// index buffers and textures made from its items through the GPU resource manager, and per chunk the effect (loaded
// through the effect manager) and technique that draw it.
//
// Drawing a chunk binds its buffers and textures to its effect, applies the chunk's parameter settings, then runs
// Begin(technique) / BeginPass(i) / draw / EndPass / End; the draw goes through the render manager (and is counted by
// the object manager's draw tracking). Chunks of one effect group (consecutive chunks of one name) draw the group
// leader's geometry. A chunk whose effect has not got the technique is drawn with the effect's first drawable one.
//
// Without a device (the resource manager's base class) no buffers or textures exist: the model still builds and
// draws, with nothing bound, so that everything above the GPU (effects, update handlers, statistics) runs natively.
//
// Bounds: the static box holds the chunks' sub-chunk boxes when they have them, else the first three floats (the
// position) of every vertex in each chunk's vertex range of its first vertex buffer.
//
// Ownership: the model owns its model data; effects and GPU resources are shared (LxCountedPtr). Create and
// LoadFromPath return a new model the caller owns, or null after logging. A model holds no per-object state, so
// every object made from one file shares it (the object manager keeps one per file). Frame thread only.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxArray.h"
#include "Common/LxBoundingBox.h"
#include "Common/LxCountedPtr.h"
#include "Common/LxString.h"
#include "EffectManager/LxEffect.h"
#include "GPUResourceManager/LxGPUIndexBuffer.h"
#include "GPUResourceManager/LxGPUSamplingResourceView.h"
#include "GPUResourceManager/LxGPUTexture2DArray.h"
#include "GPUResourceManager/LxGPUVertexBuffer.h"
#include "RenderManager/include/LxRenderManager.h"

class LxAnimationSet;
class LxModelChunkDesc;
class LxModelData;
class LxObject;
class LxSkeleton;

class LX_API LxModel
{
public:
    ~LxModel();
    LxModel(const LxModel&) = delete;
    LxModel& operator=(const LxModel&) = delete;

    // Builds a model from `data`, taking ownership of it (deleted on failure too).
    static LxModel* Create(LxModelData* data);
    // Loads the model archive at `path` (a folder or a zip file) with all its items and builds it.
    static LxModel* LoadFromPath(const LxString& path);

    const LxModelData& GetModelData() const { return *m_pData; }
    // Null when the model has no skeleton.
    const LxSkeleton* GetSkeleton() const;
    const LxBoundingBox& GetStaticBoundingBox() const { return m_bounds; }

    unsigned int GetChunkCount() const { return m_chunks.GetCount(); }
    const LxModelChunkDesc& GetChunkDesc(unsigned int index) const;
    const LxCountedPtr<LxEffect>& GetChunkEffect(unsigned int index) const { return m_chunks[index].effect; }
    LxEffectTechnique* GetChunkTechnique(unsigned int index) const { return m_chunks[index].technique; }

    // Whether the chunk's visibility curve (if any) shows it at `time`; true without a curve or a set.
    bool IsChunkVisible(unsigned int index, const LxAnimationSet* animations, float time) const
    {
        return !m_chunks[index].hasVisibilityCurve || !animations || EvaluateVisibility(index, *animations, time);
    }
    // Draws chunk `index` for `owner` (tracked under the owner's name); animated parameter settings read their
    // curves from `animations` at `time`. False when the effect refused to draw.
    bool DrawChunk(unsigned int index, const LxObject* owner, const LxAnimationSet* animations, float time);

private:
    struct Chunk
    {
        LxCountedPtr<LxEffect> effect;
        LxEffectTechnique* technique = nullptr;
        unsigned int leader = 0; // index of the chunk whose geometry this one draws
        // What a draw needs of the description, kept here so drawing touches one record per chunk.
        LxRenderManager::PrimType primType = LxRenderManager::PRIM_TRIANGLE_LIST;
        bool indexed = true;
        bool hasVisibilityCurve = false;
        bool hasSettings = false;
        unsigned int first = 0, count = 0;
        struct VertexBinding
        {
            const LxVertexStreamDecl* stream;
            LxCountedPtr<LxGPUVertexBuffer> buffer;
        };
        LxArray<VertexBinding> vertexBuffers;
        LxCountedPtr<LxGPUIndexBuffer> indexBuffer;
        struct TextureBinding
        {
            const LxTextureSlot* slot;
            LxCountedPtr<LxGPUSamplingResourceView> view;
        };
        LxArray<TextureBinding> textures;
    };

    LxModel() = default;
    bool Build();
    bool BuildChunk(unsigned int index);
    void ComputeBounds();
    static void ReportNoResources();
    bool EvaluateVisibility(unsigned int index, const LxAnimationSet& animations, float time) const;
    static void ApplySettings(const LxModelChunkDesc& desc, LxEffect& effect, const LxAnimationSet* animations,
                              float time);
    LxCountedPtr<LxGPUVertexBuffer> GetVertexBuffer(const LxString& item);
    LxCountedPtr<LxGPUTexture2DArray> GetTexture(const LxString& item);

    LxModelData* m_pData = nullptr;
    LxArray<Chunk> m_chunks;
    LxBoundingBox m_bounds;
    // Items already made into GPU resources, by item name (chunks share them).
    LxArray<LxString> m_vbNames;
    LxArray<LxCountedPtr<LxGPUVertexBuffer>> m_vbs;
    LxArray<LxString> m_textureNames;
    LxArray<LxCountedPtr<LxGPUTexture2DArray>> m_textureResources;
};
