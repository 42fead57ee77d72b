// LxModelSubChunk: one piece of a chunk that can be culled or drawn on its own: a half-open index range
// [indexMin, indexMax) into the chunk's index buffer, the vertex range [vertexMin, vertexMax) those indices use,
// a user value (flags or material id, passed through untouched), and an axis-aligned bounding box.
// The sub-chunks of a chunk follow each other without gap and together cover the chunk's index range.
//
// Sub-chunk description line: "SUBCHUNK indexMin indexMax vertexMin vertexMax userValue minX minY minZ maxX maxY
// maxZ": the five unsigned values and six floats in this order. Plain data.
#pragma once

struct LxModelSubChunk
{
    unsigned int indexMin = 0;
    unsigned int indexMax = 0;
    unsigned int vertexMin = 0;
    unsigned int vertexMax = 0;
    unsigned int userValue = 0;
    float boundsMin[3] = {0.0f, 0.0f, 0.0f};
    float boundsMax[3] = {0.0f, 0.0f, 0.0f};
};
