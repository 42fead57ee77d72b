#include "ObjectManager/LxSubChunkTree.h"

#include "ObjectManager/LxModelTextParse.h"

namespace
{
const char* const kTreeDescHeader = "[LxModelData SubChunkTreeDesc v1]";

bool ParseKeywordCount(const LxString& line, const char* keyword, unsigned int* out)
{
    LxArray<LxString> tokens;
    LxSplitTokens(line, tokens);
    return tokens.GetCount() == 2 && LxTextIs(tokens[0], keyword) && LxParseUInt32(tokens[1], out);
}
} // namespace

bool LxSubChunkTree::IsConsistent(unsigned int subChunkCount) const
{
    const unsigned int count = m_nodes.GetCount();
    if (count == 0 || m_nodes[0].firstSubChunk != 0 || m_nodes[0].subChunkCount != subChunkCount)
        return false;
    LxArray<unsigned char> parents;
    parents.Resize(count);
    for (unsigned int i = 0; i < count; ++i)
        parents[i] = 0;
    for (unsigned int i = 0; i < count; ++i)
    {
        const LxSubChunkTreeNode& n = m_nodes[i];
        if (n.subChunkCount == 0 || static_cast<unsigned long long>(n.firstSubChunk) + n.subChunkCount > subChunkCount)
            return false;
        if (n.left < 0 && n.right < 0)
            continue;
        // Children come after their parent, which rules out cycles; each has one parent, which rules out sharing.
        if (n.left <= static_cast<int>(i) || n.right <= static_cast<int>(i) || n.left >= static_cast<int>(count) ||
            n.right >= static_cast<int>(count) || n.left == n.right)
            return false;
        const LxSubChunkTreeNode& l = m_nodes[static_cast<unsigned int>(n.left)];
        const LxSubChunkTreeNode& r = m_nodes[static_cast<unsigned int>(n.right)];
        if (l.firstSubChunk != n.firstSubChunk ||
            static_cast<unsigned long long>(l.subChunkCount) + r.subChunkCount != n.subChunkCount ||
            r.firstSubChunk != n.firstSubChunk + l.subChunkCount)
            return false;
        if (++parents[static_cast<unsigned int>(n.left)] > 1 || ++parents[static_cast<unsigned int>(n.right)] > 1)
            return false;
    }
    for (unsigned int i = 1; i < count; ++i)
        if (parents[i] != 1)
            return false;
    return true;
}

void LxSubChunkTree::AppendText(LxString& text) const
{
    text += kTreeDescHeader;
    text.AppendFormat("\nRANGES %u %u %u %u\nNODES %u\n", indexMin, indexMax, vertexMin, vertexMax, m_nodes.GetCount());
    for (const LxSubChunkTreeNode& n : m_nodes)
        text.AppendFormat("NODE %u %u %d %d %f %f %f %f %f %f\n", n.firstSubChunk, n.subChunkCount, n.left, n.right,
                          static_cast<double>(n.boundsMin[0]), static_cast<double>(n.boundsMin[1]),
                          static_cast<double>(n.boundsMin[2]), static_cast<double>(n.boundsMax[0]),
                          static_cast<double>(n.boundsMax[1]), static_cast<double>(n.boundsMax[2]));
}

bool LxSubChunkTree::Parse(LxList<LxString>::const_iterator& line, const LxList<LxString>::const_iterator& end,
                           LxSubChunkTree* out)
{
    if (line == end || !LxTextIs(*line, kTreeDescHeader))
        return false;
    ++line;
    LxArray<LxString> tokens;
    if (line == end)
        return false;
    LxSplitTokens(*line, tokens);
    LxSubChunkTree tree;
    if (tokens.GetCount() != 5 || !LxTextIs(tokens[0], "RANGES") || !LxParseUInt32(tokens[1], &tree.indexMin) ||
        !LxParseUInt32(tokens[2], &tree.indexMax) || !LxParseUInt32(tokens[3], &tree.vertexMin) ||
        !LxParseUInt32(tokens[4], &tree.vertexMax))
        return false;
    ++line;
    unsigned int count = 0;
    if (line == end || !ParseKeywordCount(*line, "NODES", &count))
        return false;
    ++line;
    // The node lines themselves bound the count; nothing is reserved ahead of them.
    for (unsigned int i = 0; i < count; ++i, ++line)
    {
        if (line == end)
            return false;
        tokens.Clear();
        LxSplitTokens(*line, tokens);
        LxSubChunkTreeNode node;
        if (tokens.GetCount() != 11 || !LxTextIs(tokens[0], "NODE") || !LxParseUInt32(tokens[1], &node.firstSubChunk) ||
            !LxParseUInt32(tokens[2], &node.subChunkCount) || !LxParseInt32(tokens[3], &node.left) ||
            !LxParseInt32(tokens[4], &node.right))
            return false;
        for (unsigned int k = 0; k < 3; ++k)
            if (!LxParseFloat(tokens[5 + k], &node.boundsMin[k]) || !LxParseFloat(tokens[8 + k], &node.boundsMax[k]))
                return false;
        tree.m_nodes.Add(node);
    }
    *out = tree;
    return true;
}
