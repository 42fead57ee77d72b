// LxSubChunkTree: a bounding-volume tree over the sub-chunks of one chunk, for culling whole groups at once.
//
// Node 0 is the root and covers every sub-chunk. A node covers `subChunkCount` sub-chunks from `firstSubChunk` on;
// an inner node has two children (indices greater than its own) that split its run in two, the left child taking
// the first part; a leaf has none (-1, -1). Every node but the root is the child of exactly one node, so the nodes
// form one tree without cycles. The tree also records the index and vertex range it was built for, which must be
// the chunk's own.
//
// Tree-file block (after the tree file's "TREES <n>" line), one per tree:
//   [LxModelData SubChunkTreeDesc v1]
//   RANGES <indexMin> <indexMax> <vertexMin> <vertexMax>
//   NODES <count>
//   NODE <first> <count> <left> <right> <minX> <minY> <minZ> <maxX> <maxY> <maxZ>     (count lines)
// Plain data; not thread-safe.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxArray.h"
#include "Common/LxList.h"
#include "Common/LxString.h"

struct LxSubChunkTreeNode
{
    unsigned int firstSubChunk = 0;
    unsigned int subChunkCount = 0;
    int left = -1;
    int right = -1;
    float boundsMin[3] = {0.0f, 0.0f, 0.0f};
    float boundsMax[3] = {0.0f, 0.0f, 0.0f};
};

class LX_API LxSubChunkTree
{
public:
    LxSubChunkTree() = default;

    unsigned int indexMin = 0, indexMax = 0, vertexMin = 0, vertexMax = 0;

    const LxArray<LxSubChunkTreeNode>& GetNodes() const { return m_nodes; }
    unsigned int AddNode(const LxSubChunkTreeNode& node) { return m_nodes.Add(node); }

    // The structural rules above, for a chunk of `subChunkCount` sub-chunks.
    bool IsConsistent(unsigned int subChunkCount) const;

    // Appends the tree's block to `text`.
    void AppendText(LxString& text) const;
    // Reads one block starting at `line` (advanced past it). False on any fault; nothing is logged here.
    static bool Parse(LxList<LxString>::const_iterator& line, const LxList<LxString>::const_iterator& end,
                      LxSubChunkTree* out);

private:
    LxArray<LxSubChunkTreeNode> m_nodes;
};
