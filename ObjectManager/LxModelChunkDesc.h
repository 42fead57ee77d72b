// LxModelChunkDesc: how to draw one piece of a model: primitive type, index buffer (or none), index and vertex
// ranges, effect and technique, which vertex buffers feed which streams, which textures fill which slots, the bone
// map of its skinning palette, an optional visibility curve, parameter settings, and optional sub-chunks with
// their trees.
//
// Ranges are half-open: [min, max). A non-indexed chunk draws its vertex range, so its index range must equal it.
// Consecutive chunks with the same name form an effect group: the same geometry drawn with further effects. Only
// the group's leading chunk may name vertex buffers and an index buffer; the others draw the leader's.
//
// "chunkinfo.txt" holds the descriptions as CHUNK ... ENDCHUNK blocks; a chunk with sub-chunks names them on a
// "SUBCHUNKS <count>" line, and they live in "SUBCHUNKDESC.<chunk>.<count>.txt" and "SUBCHUNKTREE.<chunk>.<count>.txt".
// Readers report every fault of the file, then fail as a whole and leave the output untouched. Not thread-safe.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxArray.h"
#include "Common/LxList.h"
#include "Common/LxString.h"
#include "ObjectManager/LxModelSubChunk.h"
#include "ObjectManager/LxParameterSetting.h"
#include "ObjectManager/LxSubChunkTree.h"
#include "RenderManager/include/LxRenderManager.h"

class LxArchive;

class LX_API LxModelChunkDesc
{
public:
    struct Mapping
    {
        LxString slot; // stream name or texture slot name
        LxString item; // VB or TEX item name
    };

    explicit LxModelChunkDesc(const LxString& name);

    const LxString& GetName() const { return m_name; }
    LxRenderManager::PrimType GetPrimType() const { return m_primType; }
    void SetPrimType(LxRenderManager::PrimType type) { m_primType = type; }
    // An indexed chunk names its index buffer; SetNonIndexed clears the name.
    bool IsIndexed() const { return m_bIndexed; }
    const LxString& GetIBName() const { return m_ibName; }
    void SetIBName(const LxString& name);
    void SetNonIndexed();
    unsigned int GetIndexMin() const { return m_nIndexMin; }
    unsigned int GetIndexMax() const { return m_nIndexMax; }
    unsigned int GetVertexMin() const { return m_nVertexMin; }
    unsigned int GetVertexMax() const { return m_nVertexMax; }
    void SetIndexRange(unsigned int min, unsigned int max);
    void SetVertexRange(unsigned int min, unsigned int max);
    const LxString& GetEffectFile() const { return m_effectFile; }
    const LxString& GetTechnique() const { return m_technique; }
    void SetEffectFile(const LxString& file) { m_effectFile = file; }
    void SetTechnique(const LxString& technique) { m_technique = technique; }

    const LxArray<Mapping>& GetVBMappings() const { return m_vbMappings; }
    const LxArray<Mapping>& GetTexMappings() const { return m_texMappings; }
    void AddVBMapping(const LxString& stream, const LxString& vbName);
    void AddTexMapping(const LxString& slot, const LxString& textureName);
    void ClearVBMappings() { m_vbMappings.Clear(); }
    void ClearTexMappings() { m_texMappings.Clear(); }

    const LxArray<int>& GetBoneMap() const { return m_boneMap; }
    void SetBoneMap(const LxArray<int>& boneMap) { m_boneMap = boneMap; }
    const LxString& GetVisibilityCurve() const { return m_visibilityCurve; }
    void SetVisibilityCurve(const LxString& curve) { m_visibilityCurve = curve; }

    const LxArray<LxParameterSetting>& GetParameterSettings() const { return m_parameters; }
    void AddParameterSetting(const LxParameterSetting& setting) { m_parameters.Add(setting); }
    void ClearParameterSettings() { m_parameters.Clear(); }

    const LxArray<LxModelSubChunk>& GetSubChunks() const { return m_subChunks; }
    const LxArray<LxSubChunkTree>& GetSubChunkTrees() const { return m_trees; }
    void AddSubChunk(const LxModelSubChunk& subChunk) { m_subChunks.Add(subChunk); }
    void AddSubChunkTree(const LxSubChunkTree& tree) { m_trees.Add(tree); }
    void RemoveSubchunkInformation();

    // The chunk's CHUNK ... ENDCHUNK block, appended to `text`.
    void AppendText(LxString& text) const;
    // "SUBCHUNKDESC.<name>.<count>.txt" and "SUBCHUNKTREE.<name>.<count>.txt".
    LxString GetSubChunkDescFileName() const;
    LxString GetSubChunkTreeFileName() const;
    // Reads the chunk's sub-chunk description and tree files for the count of its SUBCHUNKS line.
    bool ReadSubChunks(const LxArchive& archive, unsigned int count);
    // Writes both sub-chunk files; existing files are never overwritten.
    bool WriteSubChunks(const LxArchive& archive) const;

    // Reads "chunkinfo.txt" and the sub-chunk files it names; appends the chunks (owned by the caller) to `out`.
    static bool ReadFromArchive(const LxArchive& archive, LxArray<LxModelChunkDesc*>& out);
    // The same over lines already read (the header first); sub-chunk files come from `archive`.
    static bool ParseLines(const LxList<LxString>& lines, const LxArchive& archive, LxArray<LxModelChunkDesc*>& out);
    // Writes "chunkinfo.txt" and the sub-chunk files of every chunk that has sub-chunks.
    static bool WriteToArchive(const LxArchive& archive, const LxArray<LxModelChunkDesc*>& chunks);

private:
    // One keyword line inside a block; false after logging.
    bool ParseLine(const LxArray<LxString>& tokens, const LxArchive& archive);
    bool ParseSubChunkDescLines(const LxList<LxString>& lines, unsigned int count);
    bool ParseSubChunkTreeLines(const LxList<LxString>& lines, const LxString& fileName);

    LxString m_name;
    LxRenderManager::PrimType m_primType = LxRenderManager::PRIM_TRIANGLE_LIST;
    bool m_bIndexed = true;
    LxString m_ibName;
    unsigned int m_nIndexMin = 0, m_nIndexMax = 0;
    unsigned int m_nVertexMin = 0, m_nVertexMax = 0;
    LxString m_effectFile;
    LxString m_technique;
    LxArray<Mapping> m_vbMappings;
    LxArray<Mapping> m_texMappings;
    LxArray<int> m_boneMap;
    LxString m_visibilityCurve;
    LxArray<LxParameterSetting> m_parameters;
    LxArray<LxModelSubChunk> m_subChunks;
    LxArray<LxSubChunkTree> m_trees;
};
