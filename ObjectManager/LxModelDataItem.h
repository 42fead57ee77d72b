// LxModelDataItem: the base of the data items of a model archive (vertex and index buffers, textures, animation
// data blocks). An item has a name, the name of its file inside the archive, its data and optional meta data;
// both blocks are shared (LxCountedPtr), so a drawable model may keep them after the model data is gone.
//
// ComputeHash digests what identifies the item's contents: its type, its description fields and both blocks, so
// two items with the same bytes but different layouts differ. Plain data: nothing logs or fails. Not thread-safe.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxCountedPtr.h"
#include "Common/LxMD5Hash.h"
#include "Common/LxMemoryBuffer.h"
#include "Common/LxString.h"
#include "ObjectManager/LxModelDataType.h"

class LX_API LxModelDataItem
{
public:
    virtual ~LxModelDataItem();
    LxModelDataItem(const LxModelDataItem&) = delete;
    LxModelDataItem& operator=(const LxModelDataItem&) = delete;

    virtual LxModelDataType GetType() const = 0;
    void ComputeHash(LxMD5Hash* out) const;

    const LxString& GetName() const { return m_name; }
    const LxString& GetFileName() const { return m_fileName; }
    // Null when the item holds no data.
    const LxCountedPtr<LxMemoryBuffer>& GetData() const { return m_data; }
    // Null when the item has no meta data.
    const LxCountedPtr<LxMemoryBuffer>& GetMetaData() const { return m_metaData; }
    void SetData(const LxCountedPtr<LxMemoryBuffer>& data) { m_data = data; }
    void SetMetaData(const LxCountedPtr<LxMemoryBuffer>& metaData) { m_metaData = metaData; }
    unsigned int GetDataSize() const { return m_data ? m_data->GetSize() : 0u; }
    unsigned int GetMetaDataSize() const { return m_metaData ? m_metaData->GetSize() : 0u; }

protected:
    LxModelDataItem(const LxString& name, const LxString& fileName) : m_name(name), m_fileName(fileName) {}
    // The description fields, appended to the digest between the type and the blocks.
    virtual void HashDescription(LxMD5Hash::Builder& builder) const = 0;

private:
    LxString m_name;
    LxString m_fileName;
    LxCountedPtr<LxMemoryBuffer> m_data;
    LxCountedPtr<LxMemoryBuffer> m_metaData;
};
