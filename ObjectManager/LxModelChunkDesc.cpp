#include "ObjectManager/LxModelChunkDesc.h"

#include "Common/LxArchive.h"
#include "Common/LxFile.h"
#include "Common/LxLogManager.h"
#include "ObjectManager/LxModelTextParse.h"

#include <memory>

namespace
{
const char* const kChunkFile = "chunkinfo.txt";
const char* const kChunkHeader = "[LxModelData ChunkDesc v1]";
const char* const kSubChunkDescHeader = "[LxModelData SubChunkDesc v1]";
const char* const kSubChunkTreeHeader = "[LxModelData SubChunkTree v1]";

// Reads a whole text file of the archive; false when it is missing (*missing set) or unreadable.
bool ReadLines(const LxArchive& archive, const LxString& name, LxList<LxString>& lines, bool* missing)
{
    *missing = !archive.FileExists(name, nullptr);
    if (*missing)
        return false;
    std::unique_ptr<LxFile> file(archive.OpenFile(name, "r"));
    if (!file)
    {
        *missing = true;
        return false;
    }
    return file->ReadTextLines(lines);
}

// Writes text as a new file of the archive; logs the open and write failures with the given formats.
bool WriteNewFile(const LxArchive& archive, const LxString& name, const LxString& text, const char* openError)
{
    std::unique_ptr<LxFile> file(archive.OpenFile(name, "w"));
    if (!file)
    {
        if (openError)
            LX_ERROR("%s", openError);
        else
            LX_ERROR("Error opening file: '%s' in archive: '%s'", name.c_str(), archive.GetName().c_str());
        return false;
    }
    const bool ok = file->Write(text) && file->Flush();
    file->Close();
    if (!ok)
        LX_ERROR("Error writing to file: '%s' in archive: '%s'", name.c_str(), archive.GetName().c_str());
    return ok;
}
} // namespace

LxModelChunkDesc::LxModelChunkDesc(const LxString& name) : m_name(name) {}

void LxModelChunkDesc::SetIBName(const LxString& name)
{
    m_ibName = name;
    m_bIndexed = true;
}

void LxModelChunkDesc::SetNonIndexed()
{
    m_ibName.Clear();
    m_bIndexed = false;
}

void LxModelChunkDesc::SetIndexRange(unsigned int min, unsigned int max)
{
    m_nIndexMin = min;
    m_nIndexMax = max;
}

void LxModelChunkDesc::SetVertexRange(unsigned int min, unsigned int max)
{
    m_nVertexMin = min;
    m_nVertexMax = max;
}

void LxModelChunkDesc::AddVBMapping(const LxString& stream, const LxString& vbName)
{
    m_vbMappings.Add(Mapping{stream, vbName});
}

void LxModelChunkDesc::AddTexMapping(const LxString& slot, const LxString& textureName)
{
    m_texMappings.Add(Mapping{slot, textureName});
}

void LxModelChunkDesc::RemoveSubchunkInformation()
{
    m_subChunks.Clear();
    m_trees.Clear();
}

LxString LxModelChunkDesc::GetSubChunkDescFileName() const
{
    return LxString::Formatted("SUBCHUNKDESC.%s.%u.txt", m_name.c_str(), m_subChunks.GetCount());
}

LxString LxModelChunkDesc::GetSubChunkTreeFileName() const
{
    return LxString::Formatted("SUBCHUNKTREE.%s.%u.txt", m_name.c_str(), m_subChunks.GetCount());
}

void LxModelChunkDesc::AppendText(LxString& text) const
{
    text.AppendFormat("CHUNK %s\n", m_name.c_str());
    const char* prim = LxRenderManager::PrimTypeToString(m_primType);
    text.AppendFormat("PrimType %s\n", prim ? prim : "TRIANGLE_LIST");
    // A follower of an effect group names no index buffer; it draws its leader's.
    if (!m_bIndexed)
        text += "IB NONINDEXED\n";
    else if (!m_ibName.IsEmpty())
        text.AppendFormat("IB %s\n", m_ibName.c_str());
    text.AppendFormat("IBRange %u %u\n", m_nIndexMin, m_nIndexMax);
    text.AppendFormat("VBRange %u %u\n", m_nVertexMin, m_nVertexMax);
    if (!m_effectFile.IsEmpty())
        text.AppendFormat("Effect %s\n", m_effectFile.c_str());
    if (!m_technique.IsEmpty())
        text.AppendFormat("Technique %s\n", m_technique.c_str());
    for (const Mapping& m : m_vbMappings)
        text.AppendFormat("Stream %s %s\n", m.slot.c_str(), m.item.c_str());
    for (const Mapping& m : m_texMappings)
        text.AppendFormat("Texture %s %s\n", m.slot.c_str(), m.item.c_str());
    if (!m_boneMap.IsEmpty())
    {
        text += "BONEMAP";
        for (int bone : m_boneMap)
            text.AppendFormat(" %d ", bone);
        text += "\n";
    }
    if (!m_visibilityCurve.IsEmpty())
        text.AppendFormat("VisibilityCurve %s\n", m_visibilityCurve.c_str());
    for (const LxParameterSetting& p : m_parameters)
        text += p.ToText();
    if (!m_subChunks.IsEmpty())
        text.AppendFormat("SUBCHUNKS %u\n", m_subChunks.GetCount());
    text += "ENDCHUNK\n";
}

bool LxModelChunkDesc::ParseLine(const LxArray<LxString>& tokens, const LxArchive& archive)
{
    const LxString& keyword = tokens[0];
    const unsigned int n = tokens.GetCount();
    if (LxTextIs(keyword, "PrimType"))
    {
        if (n < 2)
        {
            LX_ERROR("Missing primitive type name.");
            return false;
        }
        LxRenderManager::PrimType type;
        if (LxHasZeroByte(tokens[1]) || !LxRenderManager::PrimTypeFromString(tokens[1], &type))
        {
            LX_ERROR("Unrecognized primitive type: %s", tokens[1].c_str());
            return false;
        }
        m_primType = type;
    }
    else if (LxTextIs(keyword, "Effect"))
    {
        if (n < 2)
        {
            LX_ERROR("Missing effect filename in effect line.");
            return false;
        }
        m_effectFile = tokens[1];
    }
    else if (LxTextIs(keyword, "Technique"))
    {
        if (n < 2)
        {
            LX_ERROR("Missing technique name in technique line.");
            return false;
        }
        m_technique = tokens[1];
    }
    else if (LxTextIs(keyword, "IB"))
    {
        if (n < 2)
        {
            LX_ERROR("Missing index buffer name in IB line.");
            return false;
        }
        if (LxTextIs(tokens[1], "NONINDEXED"))
            SetNonIndexed();
        else
            SetIBName(tokens[1]);
    }
    else if (LxTextIs(keyword, "IBRange") || LxTextIs(keyword, "VBRange"))
    {
        const bool index = LxTextIs(keyword, "IBRange");
        if (n < 3)
        {
            LX_ERROR(index ? "Missing tokens for IBRange line." : "Missing tokens for VBRange line.");
            return false;
        }
        unsigned int min = 0, max = 0;
        if (!LxParseUInt32(tokens[1], &min) || !LxParseUInt32(tokens[2], &max))
        {
            LX_ERROR("Syntax error");
            return false;
        }
        if (index)
            SetIndexRange(min, max);
        else
            SetVertexRange(min, max);
    }
    else if (LxTextIs(keyword, "Stream") || LxTextIs(keyword, "Texture"))
    {
        const bool stream = LxTextIs(keyword, "Stream");
        if (n < 3)
        {
            LX_ERROR(stream ? "Missing tokens for Stream line." : "Missing tokens for Texture line.");
            return false;
        }
        if (stream)
            AddVBMapping(tokens[1], tokens[2]);
        else
            AddTexMapping(tokens[1], tokens[2]);
    }
    else if (LxTextIs(keyword, "BONEMAP"))
    {
        if (n < 2)
        {
            LX_ERROR("Missing tokens for bone map line.");
            return false;
        }
        LxArray<int> boneMap;
        boneMap.Reserve(n - 1);
        for (unsigned int i = 1; i < n; ++i)
        {
            int bone = 0;
            if (!LxParseInt32(tokens[i], &bone))
            {
                LX_ERROR("Syntax error in bone map line.");
                return false;
            }
            boneMap.Add(bone);
        }
        m_boneMap = static_cast<LxArray<int>&&>(boneMap);
    }
    else if (LxTextIs(keyword, "VisibilityCurve"))
    {
        if (n < 2)
        {
            LX_ERROR("Missing tokens for VisibilityCurve line.");
            return false;
        }
        m_visibilityCurve = tokens[1];
    }
    else if (LxTextIs(keyword, "PARAM"))
    {
        std::unique_ptr<LxParameterSetting> setting(LxParameterSetting::Parse(tokens));
        if (!setting)
            return false;
        AddParameterSetting(*setting);
    }
    else if (LxTextIs(keyword, "SUBCHUNKS"))
    {
        unsigned int count = 0;
        if (n < 2 || !LxParseUInt32(tokens[1], &count))
        {
            LX_ERROR("Syntax error");
            return false;
        }
        return ReadSubChunks(archive, count);
    }
    else
    {
        LX_ERROR("Syntax error in chunk description file.  Illegal token: %s", keyword.c_str());
        return false;
    }
    return true;
}

bool LxModelChunkDesc::ParseLines(const LxList<LxString>& lines, const LxArchive& archive,
                                  LxArray<LxModelChunkDesc*>& out)
{
    if (lines.IsEmpty() || !LxTextIs(lines.GetFirst(), kChunkHeader))
    {
        LX_ERROR("Unsupported chunk description version.");
        return false;
    }
    // Every fault of the file is reported; the chunks are kept only when there was none.
    LxArray<std::unique_ptr<LxModelChunkDesc>> chunks;
    std::unique_ptr<LxModelChunkDesc> current;
    bool ok = true;
    bool first = true;
    for (const LxString& line : lines)
    {
        if (first)
        {
            first = false;
            continue;
        }
        LxArray<LxString> tokens;
        LxSplitTokens(line, tokens);
        if (tokens.IsEmpty())
            continue;
        if (LxTextIs(tokens[0], "CHUNK"))
        {
            if (current)
            {
                LX_ERROR("Missing 'ENDCHUNK' before 'CHUNK'");
                ok = false;
                current.reset();
            }
            if (tokens.GetCount() < 2)
            {
                LX_ERROR("Missing chunk name.");
                ok = false;
            }
            // A nameless block is still read, so that the faults inside it are reported too.
            current.reset(new LxModelChunkDesc(tokens.GetCount() < 2 ? LxString() : tokens[1]));
            continue;
        }
        if (!current)
        {
            LX_ERROR("Unexpected token in chunk description file.  Expected 'CHUNK'");
            ok = false;
            continue;
        }
        if (LxTextIs(tokens[0], "ENDCHUNK"))
        {
            chunks.Add(std::move(current));
            continue;
        }
        if (!current->ParseLine(tokens, archive))
            ok = false;
    }
    if (current)
    {
        LX_WARNING("Missing 'ENDCHUNK' before end of chunk file.");
        chunks.Add(std::move(current));
    }
    if (!ok)
        return false;
    for (std::unique_ptr<LxModelChunkDesc>& chunk : chunks)
        out.Add(chunk.release());
    return true;
}

bool LxModelChunkDesc::ReadFromArchive(const LxArchive& archive, LxArray<LxModelChunkDesc*>& out)
{
    LxList<LxString> lines;
    bool missing = false;
    if (!ReadLines(archive, kChunkFile, lines, &missing))
    {
        LX_ERROR("Error occurred while reading chunk description file.");
        return false;
    }
    return ParseLines(lines, archive, out);
}

bool LxModelChunkDesc::WriteToArchive(const LxArchive& archive, const LxArray<LxModelChunkDesc*>& chunks)
{
    LxString text(kChunkHeader);
    text += "\n";
    for (const LxModelChunkDesc* chunk : chunks)
        chunk->AppendText(text);
    std::unique_ptr<LxFile> file(archive.OpenFile(kChunkFile, "w"));
    bool ok = file && file->Write(text) && file->Flush();
    if (file)
        file->Close();
    if (!ok)
    {
        LX_ERROR("Error writing chunk info file.");
        return false;
    }
    for (const LxModelChunkDesc* chunk : chunks)
        if (!chunk->GetSubChunks().IsEmpty() && !chunk->WriteSubChunks(archive))
            return false;
    return true;
}

bool LxModelChunkDesc::ReadSubChunks(const LxArchive& archive, unsigned int count)
{
    RemoveSubchunkInformation();
    const LxString descName = LxString::Formatted("SUBCHUNKDESC.%s.%u.txt", m_name.c_str(), count);
    const LxString treeName = LxString::Formatted("SUBCHUNKTREE.%s.%u.txt", m_name.c_str(), count);
    LxList<LxString> lines;
    bool missing = false;
    if (!ReadLines(archive, descName, lines, &missing))
    {
        if (missing)
            LX_ERROR("Unable to open sub-chunk file for chunk: '%s'", m_name.c_str());
        else
            LX_ERROR("Error occurred while reading sub-chunk file for chunk: '%s'", m_name.c_str());
        return false;
    }
    if (!ParseSubChunkDescLines(lines, count))
    {
        RemoveSubchunkInformation();
        return false;
    }
    lines.Clear();
    if (!ReadLines(archive, treeName, lines, &missing))
    {
        if (missing)
            LX_ERROR("Unable to open subchunk tree file: '%s'", treeName.c_str());
        else
            LX_ERROR("Error reading subchunk trees from tree file: '%s'", treeName.c_str());
        RemoveSubchunkInformation();
        return false;
    }
    if (!ParseSubChunkTreeLines(lines, treeName))
    {
        RemoveSubchunkInformation();
        return false;
    }
    return true;
}

bool LxModelChunkDesc::ParseSubChunkDescLines(const LxList<LxString>& lines, unsigned int count)
{
    if (lines.IsEmpty() || !LxTextIs(lines.GetFirst(), kSubChunkDescHeader))
    {
        LX_ERROR("Unsupported sub-chunk description version.");
        return false;
    }
    bool first = true;
    for (const LxString& line : lines)
    {
        if (first)
        {
            first = false;
            continue;
        }
        LxArray<LxString> tokens;
        LxSplitTokens(line, tokens);
        if (tokens.IsEmpty())
            continue;
        if (!LxTextIs(tokens[0], "SUBCHUNK"))
        {
            LX_ERROR("Error parsing subchunk description file.  You probably need a new engine build!");
            return false;
        }
        if (tokens.GetCount() != 12)
        {
            LX_ERROR("Wrong number of tokens on SUBCHUNK line.  There should be 12 of them.");
            return false;
        }
        LxModelSubChunk sub;
        bool ok = LxParseUInt32(tokens[1], &sub.indexMin) && LxParseUInt32(tokens[2], &sub.indexMax) &&
                  LxParseUInt32(tokens[3], &sub.vertexMin) && LxParseUInt32(tokens[4], &sub.vertexMax) &&
                  LxParseUInt32(tokens[5], &sub.userValue);
        for (unsigned int k = 0; ok && k < 3; ++k)
            ok = LxParseFloat(tokens[6 + k], &sub.boundsMin[k]) && LxParseFloat(tokens[9 + k], &sub.boundsMax[k]);
        if (!ok)
        {
            LX_ERROR("Syntax error in subchunk description file.");
            return false;
        }
        m_subChunks.Add(sub);
    }
    // The count names the files; a file holding another number of sub-chunks is not the one written for it.
    if (m_subChunks.GetCount() != count)
    {
        LX_ERROR("Error parsing subchunk description file.  You probably need a new engine build!");
        return false;
    }
    return true;
}

bool LxModelChunkDesc::ParseSubChunkTreeLines(const LxList<LxString>& lines, const LxString& fileName)
{
    LxList<LxString>::const_iterator line = lines.begin();
    const LxList<LxString>::const_iterator end = lines.end();
    if (line == end || !LxTextIs(*line, kSubChunkTreeHeader))
    {
        LX_ERROR("Error reading subchunk trees from tree file: '%s'", fileName.c_str());
        return false;
    }
    ++line;
    LxArray<LxString> tokens;
    unsigned int count = 0;
    if (line != end)
        LxSplitTokens(*line, tokens);
    if (tokens.GetCount() != 2 || !LxTextIs(tokens[0], "TREES") || !LxParseUInt32(tokens[1], &count))
    {
        LX_ERROR("Syntax error on 'TREES' line in subchunk description file!");
        return false;
    }
    ++line;
    for (unsigned int i = 0; i < count; ++i)
    {
        LxSubChunkTree tree;
        if (!LxSubChunkTree::Parse(line, end, &tree))
        {
            LX_ERROR("Syntax error in subchunk tree description file: '%s'", fileName.c_str());
            return false;
        }
        m_trees.Add(tree);
    }
    for (; line != end; ++line)
    {
        tokens.Clear();
        LxSplitTokens(*line, tokens);
        if (!tokens.IsEmpty())
        {
            LX_ERROR("Syntax error in subchunk tree description file: '%s'", fileName.c_str());
            return false;
        }
    }
    return true;
}

bool LxModelChunkDesc::WriteSubChunks(const LxArchive& archive) const
{
    const LxString descName = GetSubChunkDescFileName();
    const LxString treeName = GetSubChunkTreeFileName();
    if (archive.FileExists(descName, nullptr))
    {
        LX_ERROR("Subchunk description file: '%s' already exists in archive.  Cannot save subchunk data!",
                 descName.c_str());
        return false;
    }
    if (archive.FileExists(treeName, nullptr))
    {
        LX_ERROR("Subchunk tree file: '%s' already exists in archive.  Cannot save subchunk trees!", treeName.c_str());
        return false;
    }
    LxString trees(kSubChunkTreeHeader);
    trees.AppendFormat("\nTREES %u\n", m_trees.GetCount());
    for (const LxSubChunkTree& tree : m_trees)
    {
        if (!tree.IsConsistent(m_subChunks.GetCount()))
        {
            LX_ERROR("Problems generating subchunk tree description\n");
            return false;
        }
        tree.AppendText(trees);
    }
    LxString desc(kSubChunkDescHeader);
    desc += "\n";
    for (const LxModelSubChunk& s : m_subChunks)
        desc.AppendFormat("SUBCHUNK %u %u %u %u %u %f %f %f %f %f %f \n", s.indexMin, s.indexMax, s.vertexMin,
                          s.vertexMax, s.userValue, static_cast<double>(s.boundsMin[0]),
                          static_cast<double>(s.boundsMin[1]), static_cast<double>(s.boundsMin[2]),
                          static_cast<double>(s.boundsMax[0]), static_cast<double>(s.boundsMax[1]),
                          static_cast<double>(s.boundsMax[2]));
    return WriteNewFile(archive, descName, desc, "Error creating subchunk description file in archive.") &&
           WriteNewFile(archive, treeName, trees, nullptr);
}
