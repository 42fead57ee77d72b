#include "ObjectManager/LxSkeleton.h"

#include "Common/LxArchive.h"
#include "Common/LxFile.h"
#include "Common/LxList.h"
#include "Common/LxLogManager.h"
#include "ObjectManager/LxModelTextParse.h"

#include <memory>

namespace
{
const char* const kHeaderV1 = "[LxSkeleton v1]";
const char* const kHeaderV2 = "[LxSkeleton v2]";

// Sixteen blank-separated numbers, nothing more and nothing less.
bool ParseMatrix(const LxString& line, bool rowMajor, LxMatrix4* out)
{
    LxArray<LxString> tokens;
    LxSplitTokens(line, tokens);
    if (tokens.GetCount() != 16)
        return false;
    float values[16];
    for (unsigned int i = 0; i < 16; ++i)
    {
        if (!LxParseFloat(tokens[i], &values[i]))
            return false;
    }
    LxMatrix4 m(values);
    *out = rowMajor ? m.Transpose() : m;
    return true;
}
} // namespace

bool LxSkeleton::AddBone(const LxBone& bone, const LxString& parentName)
{
    if (GetBoneIndex(bone.GetName()) >= 0)
    {
        LX_ERROR("LxSkeleton::AddBone.  A bone named '%s' already exists.", bone.GetName().c_str());
        return false;
    }
    int parent = -1;
    if (!parentName.IsEmpty())
    {
        parent = GetBoneIndex(parentName);
        if (parent < 0)
        {
            LX_ERROR("LxSkeleton::AddBone.  Parent bone '%s' of bone '%s' not found.", parentName.c_str(),
                     bone.GetName().c_str());
            return false;
        }
    }
    m_bones.Add(Entry{bone, parent});
    return true;
}

const LxBone* LxSkeleton::GetBoneByIndex(unsigned int index) const
{
    return index < m_bones.GetCount() ? &m_bones[index].bone : nullptr;
}

const LxBone* LxSkeleton::GetBoneByName(const LxString& name) const
{
    const int index = GetBoneIndex(name);
    return index < 0 ? nullptr : &m_bones[static_cast<unsigned int>(index)].bone;
}

int LxSkeleton::GetBoneIndex(const LxString& name) const
{
    for (unsigned int i = 0; i < m_bones.GetCount(); ++i)
        if (m_bones[i].bone.GetName() == name)
            return static_cast<int>(i);
    return -1;
}

int LxSkeleton::GetParentIndex(unsigned int index) const
{
    return index < m_bones.GetCount() ? m_bones[index].parent : -1;
}

bool LxSkeleton::ConvertBonesToWorldSpace(LxArray<LxMatrix4>& matrices) const
{
    if (matrices.GetCount() != m_bones.GetCount())
    {
        LX_ERROR("LxSkeleton::ConvertBonesToWorldSpace.  Got %u matrices for %u bones.", matrices.GetCount(),
                 m_bones.GetCount());
        return false;
    }
    // Parents precede their children, so each parent is already in world space when its children need it.
    for (unsigned int i = 0; i < m_bones.GetCount(); ++i)
        if (m_bones[i].parent >= 0)
            matrices[i] = matrices[static_cast<unsigned int>(m_bones[i].parent)] * matrices[i];
    for (unsigned int i = 0; i < m_bones.GetCount(); ++i)
        matrices[i] = matrices[i] * m_bones[i].bone.GetMatrix();
    return true;
}

LxSkeleton* LxSkeleton::CreateFromFile(LxFile& file)
{
    LxList<LxString> lineList;
    if (!file.ReadTextLines(lineList))
    {
        LX_ERROR("I/O error reading skeleton file.");
        return nullptr;
    }
    LxArray<LxString> lines;
    lines.Reserve(lineList.GetCount());
    for (const LxString& line : lineList)
        lines.Add(line);
    if (lines.IsEmpty())
    {
        LX_ERROR("Not enough lines in Skeleton file!");
        return nullptr;
    }
    const bool v1 = LxTextIs(lines[0], kHeaderV1);
    if (!v1 && !LxTextIs(lines[0], kHeaderV2))
    {
        LX_ERROR("Unsupported skeleton file version!  You may need to re-build Lumex.");
        return nullptr;
    }
    if (lines.GetCount() < 2)
    {
        LX_ERROR("Not enough lines in Skeleton file!");
        return nullptr;
    }
    LxString countText(lines[1]);
    countText.Trim();
    unsigned int count = 0;
    if (!LxParseUInt32(countText, &count))
    {
        LX_ERROR("Syntax error in skeleton file.");
        return nullptr;
    }
    // Checked before anything is built, so a hostile count costs nothing.
    if (count > (lines.GetCount() - 2) / 3)
    {
        LX_ERROR("Not enough lines in skeleton file.");
        return nullptr;
    }
    std::unique_ptr<LxSkeleton> skeleton(new LxSkeleton);
    skeleton->m_bones.Reserve(count);
    for (unsigned int i = 0; i < count; ++i)
    {
        const LxString& name = lines[2 + 3 * i];
        const LxString& parent = lines[3 + 3 * i];
        LxMatrix4 matrix;
        if (name.IsEmpty() || !ParseMatrix(lines[4 + 3 * i], v1, &matrix))
        {
            LX_ERROR("Syntax error in skeleton file.");
            return nullptr;
        }
        if (!skeleton->AddBone(LxBone(name, matrix), parent))
            return nullptr;
    }
    return skeleton.release();
}

LxSkeleton* LxSkeleton::CreateFromArchive(const LxArchive& archive, const LxString& name)
{
    std::unique_ptr<LxFile> file(archive.OpenFile(name, "r"));
    if (!file)
    {
        LX_ERROR("LxSkeleton::CreateFromArchive.  Couldn't open '%s' in archive '%s'.", name.c_str(),
                 archive.GetName().c_str());
        return nullptr;
    }
    return CreateFromFile(*file);
}

bool LxSkeleton::WriteToFile(LxFile& file) const
{
    LxString text(kHeaderV2);
    text.AppendFormat("\n%u\n", m_bones.GetCount());
    for (const Entry& entry : m_bones)
    {
        text.Append(entry.bone.GetName());
        text.Append('\n');
        if (entry.parent >= 0)
            text.Append(m_bones[static_cast<unsigned int>(entry.parent)].bone.GetName());
        text.Append('\n');
        const LxMatrix4& m = entry.bone.GetMatrix();
        for (unsigned int k = 0; k < 16; ++k)
            text.AppendFormat("%f ", static_cast<double>(m[k]));
        text.Append('\n');
    }
    if (!file.Write(text) || !file.Flush())
    {
        LX_ERROR("I/O error while writing skeleton file.");
        return false;
    }
    return true;
}
