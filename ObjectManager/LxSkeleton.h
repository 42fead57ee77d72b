// LxSkeleton: the bones of a model in order, each with the index of its parent (-1 for a root). A parent always
// comes before its children (AddBone refuses anything else), so one pass in bone order visits parents first.
//
// Skeleton file ("skeleton.txt"): a header line, the bone count, then three lines per bone: its name, its parent's
// name (empty for a root) and its matrix as sixteen floats. "[LxSkeleton v2]" files hold the matrix column by
// column, as LxMatrix4 stores it; the older "[LxSkeleton v1]" files hold it row by row (the transpose). Both are
// read; the writer always writes v2.
//
// Failure: readers log an error and return null (nothing half-built survives); AddBone and the writer return false.
// Not thread-safe.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxArray.h"
#include "Common/LxMatrix4.h"
#include "ObjectManager/LxBone.h"

class LxArchive;
class LxFile;

class LX_API LxSkeleton
{
public:
    LxSkeleton() = default;

    // Appends a bone. An empty parent name makes a root; otherwise the parent must already be in the skeleton.
    // A name that is already taken, or an unknown parent, is refused with an error.
    bool AddBone(const LxBone& bone, const LxString& parentName);

    unsigned int GetNumBones() const { return m_bones.GetCount(); }
    // Null when the index is out of range / no bone has that name.
    const LxBone* GetBoneByIndex(unsigned int index) const;
    const LxBone* GetBoneByName(const LxString& name) const;
    // -1 when no bone has that name.
    int GetBoneIndex(const LxString& name) const;
    // -1 for a root or an index out of range.
    int GetParentIndex(unsigned int index) const;

    // Converts one matrix per bone, in bone order, from parent-relative to world space in place: first, in bone
    // order, M[i] = M[parent] x M[i] for every bone with a parent; then M[i] = M[i] x the bone's own matrix.
    // A matrix count that differs from the bone count is refused with an error and nothing is changed.
    bool ConvertBonesToWorldSpace(LxArray<LxMatrix4>& matrices) const;

    // Reads a skeleton file; null after an error.
    static LxSkeleton* CreateFromFile(LxFile& file);
    // Opens `name` in the archive with "r" and reads it; null (after an error) when it cannot be opened or read.
    static LxSkeleton* CreateFromArchive(const LxArchive& archive, const LxString& name);
    // Writes a v2 skeleton file.
    bool WriteToFile(LxFile& file) const;

private:
    struct Entry
    {
        LxBone bone;
        int parent;
    };
    LxArray<Entry> m_bones;
};
