// The resource manager without a device: creation checks with their messages, the named, hashed and texture tables,
// statistics, release on the last outside reference, and the leak report. A test manager makes the resource-model
// objects themselves in its API* calls.
#include "support/LxTestSupport.h"

#include "GPUResourceManager/LxGPUResourceManager.h"
#include "GPUResourceManager/LxGPUTextureSize.h"

#include <gtest/gtest.h>

#include <string>

namespace
{
class TestManager : public LxGPUResourceManager
{
protected:
    LxGPUVertexBuffer* APICreateResourceVertex(LxGPUResource::Behavior behavior, unsigned vertexSize,
                                               unsigned vertexCount, LxCountedPtr<LxMemoryBuffer>, unsigned bindFlags,
                                               unsigned cpuAccessFlags) override
    {
        return new LxGPUVertexBuffer(behavior, bindFlags, cpuAccessFlags, 0, vertexSize, vertexCount);
    }
    LxConstantBuffer* APICreateConstantBuffer(LxGPUResource::Behavior behavior, unsigned size,
                                              LxCountedPtr<LxMemoryBuffer>, bool, unsigned) override
    {
        return new LxConstantBuffer(behavior, 0, LxGPUResource::CPU_ACCESS_WRITE, 0, size);
    }
    LxGPUTexture2DArray* APICreateTexture2DArray(LxGPUResource::Behavior behavior, unsigned width, unsigned height,
                                                 LxGPUResourceFormat format, LxGPUTexture::MipType mipType,
                                                 unsigned mipCount, unsigned arraySize, unsigned bindFlags,
                                                 unsigned cpuAccessFlags, LxCountedPtr<LxMemoryBuffer>,
                                                 unsigned sampleCount, const LxGPUClearValue*) override
    {
        return new LxGPUTexture2DArray(behavior, bindFlags, cpuAccessFlags, 0, format, width, height, arraySize,
                                       mipCount, mipType, sampleCount);
    }
    LxGPUTexture3D* APICreateTexture3D(LxGPUResource::Behavior behavior, unsigned width, unsigned height,
                                       unsigned depth, LxGPUResourceFormat format, LxGPUTexture::MipType mipType,
                                       unsigned mipCount, unsigned bindFlags, unsigned cpuAccessFlags,
                                       LxCountedPtr<LxMemoryBuffer>) override
    {
        return new LxGPUTexture3D(behavior, bindFlags, cpuAccessFlags, 0, format, width, height, depth, mipCount,
                                  mipType);
    }
};

LxCountedPtr<LxGPUTexture2DArray> MakeTexture(LxGPUResourceManager& manager, const LxString& name,
                                              unsigned bindFlags = LxGPUResource::BIND_SHADER_RESOURCE)
{
    return manager.CreateTexture2DArray(LxGPUResource::GPU_RESOURCE_STATIC, 16, 8, LX_FORMAT_R8G8B8A8_UNORM,
                                        LxGPUTexture::MIP_NONE, 1, 1, bindFlags, 0, nullptr, name);
}
} // namespace

TEST(GPUResourceManager, BaseManagerHasNoPlatform)
{
    LxTest::LogCapture log;
    LxGPUResourceManager manager;
    EXPECT_FALSE(manager.Initialize(1 << 20, 256));
    EXPECT_TRUE(log.Contains("LxGPUResourceManager::Initialize ::: IMPLEMENT ME!", LX_LOG_ERROR));
    EXPECT_FALSE(MakeTexture(manager, "t"));
    EXPECT_FALSE(manager.CreateStructuredBuffer(16, 4, LxGPUResource::BIND_SHADER_RESOURCE, nullptr));
    EXPECT_EQ(1, log.Count("THIS RESOURCE CREATION FUNCTION IS NOT IMPLEMENTED FOR THIS API.", LX_LOG_ERROR));
    EXPECT_EQ(0u, manager.GetResourceCount());
}

TEST(GPUResourceManager, CreationChecksRefuseWithTheirMessages)
{
    TestManager manager;
    LxCountedPtr<LxGPUTexture2DArray> keep = MakeTexture(manager, "albedo");
    ASSERT_TRUE(keep);

    struct Case
    {
        const char* what;
        bool (*create)(LxGPUResourceManager&);
        const char* message;
    };
    const Case cases[] = {
        {"duplicate name", [](LxGPUResourceManager& m) { return MakeTexture(m, "albedo") != nullptr; },
         "A resource with the name:albedoalready exists."},
        {"mip chain too long",
         [](LxGPUResourceManager& m)
         {
             // 16x8 has 5 levels
             return m.CreateTexture2DArray(LxGPUResource::GPU_RESOURCE_STATIC, 16, 8, LX_FORMAT_R8G8B8A8_UNORM,
                                           LxGPUTexture::MIP_USER_SUPPLIED, 6, 1, 0, 0, nullptr) != nullptr;
         },
         "Mip chain size requested is larger than maximum mip chain size for this texture size."},
        {"3D mip chain counts the depth",
         [](LxGPUResourceManager& m)
         {
             return m.CreateTexture3D(LxGPUResource::GPU_RESOURCE_STATIC, 4, 4, 32, LX_FORMAT_R8_UNORM,
                                      LxGPUTexture::MIP_USER_SUPPLIED, 7, 0, 0, nullptr) != nullptr;
         },
         "Mip chain size requested is larger than maximum mip chain size for this texture size."},
        {"render target and depth",
         [](LxGPUResourceManager& m) {
             return MakeTexture(m, "", LxGPUResource::BIND_RENDER_TARGET | LxGPUResource::BIND_DEPTH_STENCIL) !=
                    nullptr;
         },
         "LxGPUResourceManager::ValidateBindFlags.  A resource cannot be both a render target and a depth-stencil "
         "buffer."},
        {"CPU read and write",
         [](LxGPUResourceManager& m)
         {
             return m.CreateResourceVertex(LxGPUResource::GPU_RESOURCE_DYNAMIC, 12, 3, nullptr, 0,
                                           LxGPUResource::CPU_ACCESS_WRITE | LxGPUResource::CPU_ACCESS_READ) != nullptr;
         },
         "LxGPUResourceManager::ValidateBindFlags.  A resource cannot be both CPU-readable and CPU-writable."},
        {"CPU access on a GPU-written resource",
         [](LxGPUResourceManager& m)
         {
             return m.CreateResourceVertex(LxGPUResource::GPU_RESOURCE_DYNAMIC, 12, 3, nullptr,
                                           LxGPUResource::BIND_UNORDERED_ACCESS,
                                           LxGPUResource::CPU_ACCESS_WRITE) != nullptr;
         },
         "LxGPUResourceManager::ValidateBindFlags.  CPU-accessible resources cannot be render targets, depth-stencil "
         "buffers or unordered-access resources."},
        {"zero-sized texture",
         [](LxGPUResourceManager& m)
         {
             return m.CreateTexture2DArray(LxGPUResource::GPU_RESOURCE_STATIC, 0, 8, LX_FORMAT_R8_UNORM,
                                           LxGPUTexture::MIP_NONE, 1, 1, 0, 0, nullptr) != nullptr;
         },
         "LxGPUResourceManager::CreateTexture2DArray.  A texture needs a width, a height and a depth or array size "
         "of at least 1 (asked for 0 x 8 x 1)."},
        {"unknown format",
         [](LxGPUResourceManager& m)
         {
             return m.CreateTexture3D(LxGPUResource::GPU_RESOURCE_STATIC, 4, 4, 4, LX_FORMAT_UNKNOWN,
                                      LxGPUTexture::MIP_NONE, 1, 0, 0, nullptr) != nullptr;
         },
         "LxGPUResourceManager::CreateTexture3D.  A texture needs a known format."},
        {"multisampled mips",
         [](LxGPUResourceManager& m)
         {
             return m.CreateTexture2DArray(LxGPUResource::GPU_RESOURCE_STATIC, 8, 8, LX_FORMAT_R8_UNORM,
                                           LxGPUTexture::MIP_NONE, 2, 1, LxGPUResource::BIND_RENDER_TARGET, 0, nullptr,
                                           "", 4) != nullptr;
         },
         "LxGPUResourceManager::CreateTexture2DArray.  A multisampled texture has one mip level and no initial "
         "data."},
        {"empty vertex buffer",
         [](LxGPUResourceManager& m)
         { return m.CreateResourceVertex(LxGPUResource::GPU_RESOURCE_STATIC, 12, 0, nullptr) != nullptr; },
         "LxGPUResourceManager::CreateResourceVertex.  A vertex buffer needs a vertex size and a vertex count."},
        {"vertex buffer past 4 GB",
         [](LxGPUResourceManager& m)
         { return m.CreateResourceVertex(LxGPUResource::GPU_RESOURCE_STATIC, 16, 0x10000001u, nullptr) != nullptr; },
         "LxGPUResourceManager::CreateResourceVertex.  268435457 elements of 16 bytes make more than 4 GB."},
        {"three-byte indices",
         [](LxGPUResourceManager& m)
         { return m.CreateResourceIndex(LxGPUResource::GPU_RESOURCE_STATIC, 3, 6, nullptr) != nullptr; },
         "LxGPUResourceManager::CreateResourceIndex.  Indices are 2 or 4 bytes (asked for 3) and an index buffer "
         "needs at least one."},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.what);
        LxTest::LogCapture log;
        EXPECT_FALSE(c.create(manager));
        EXPECT_EQ(1, log.ErrorCount()) << log.All();
        EXPECT_EQ(1, log.Count(c.message, LX_LOG_ERROR)) << log.All();
    }
    EXPECT_EQ(1u, manager.GetResourceCount());
    // A full chain (mip count 0) and exactly the longest chain are accepted.
    EXPECT_TRUE(manager.CreateTexture2DArray(LxGPUResource::GPU_RESOURCE_STATIC, 16, 8, LX_FORMAT_R8_UNORM,
                                             LxGPUTexture::MIP_USER_SUPPLIED, 5, 1, 0, 0, nullptr));
}

TEST(GPUResourceManager, TablesAndStatisticsFollowTheLastOutsideReference)
{
    TestManager manager;
    LxCountedPtr<LxGPUTexture2DArray> target =
        MakeTexture(manager, "target", LxGPUResource::BIND_RENDER_TARGET | LxGPUResource::BIND_SHADER_RESOURCE);
    LxCountedPtr<LxGPUTexture3D> volume = manager.CreateTexture3D(
        LxGPUResource::GPU_RESOURCE_STATIC, 8, 8, 8, LX_FORMAT_R16_FLOAT, LxGPUTexture::MIP_NONE, 0, 0, 0, nullptr);
    LxCountedPtr<LxGPUVertexBuffer> vertices =
        manager.CreateResourceVertex(LxGPUResource::GPU_RESOURCE_STATIC, 32, 100, nullptr, 0, 0, "quad");
    LxCountedPtr<LxConstantBuffer> constants =
        manager.CreateConstantBuffer(LxGPUResource::GPU_RESOURCE_DYNAMIC, 256, nullptr);
    ASSERT_TRUE(target && volume && vertices && constants);
    EXPECT_EQ(2u, target.GetRefCount()); // the caller's and the manager's

    EXPECT_EQ(target.Get(), manager.GetNamedResource("target"));
    EXPECT_EQ(vertices.Get(), manager.GetNamedResource("quad"));
    EXPECT_EQ("quad", std::string(vertices->GetName().c_str()));
    EXPECT_EQ(nullptr, manager.GetNamedResource("nothing"));
    ASSERT_EQ(2u, manager.GetTextureCount());
    EXPECT_EQ(target.Get(), manager.GetTexture(0));
    EXPECT_EQ(volume.Get(), manager.GetTexture(1));
    EXPECT_EQ(nullptr, manager.GetTexture(2));

    LxMD5Hash hash;
    LxMD5Hash::ComputeHash("contents", 8, &hash);
    EXPECT_TRUE(manager.SetResourceHash(volume.Get(), hash));
    EXPECT_EQ(volume.Get(), manager.GetHashedResource(hash));
    {
        LxTest::LogCapture log;
        EXPECT_FALSE(manager.SetResourceHash(target.Get(), hash));
        EXPECT_TRUE(log.Contains("LxGPUResourceManager::SetResourceHash.  Another resource already has this content "
                                 "hash.",
                                 LX_LOG_ERROR));
    }

    const LxGPUResourceStats& stats = manager.GetStats();
    const unsigned targetBytes = 16 * 8 * 4;
    const unsigned volumeBytes = LxComputeTextureSize(8, 8, 8, 4, LX_FORMAT_R16_FLOAT);
    EXPECT_EQ(1u, stats.GetValue(LX_STAT_TEXTURE_2D_COUNT));
    EXPECT_EQ(targetBytes, stats.GetValue(LX_STAT_TEXTURE_2D_BYTES));
    EXPECT_EQ(1u, stats.GetValue(LX_STAT_RENDER_TARGET_COUNT));
    EXPECT_EQ(targetBytes, stats.GetValue(LX_STAT_RENDER_TARGET_BYTES));
    EXPECT_EQ(volumeBytes, stats.GetValue(LX_STAT_TEXTURE_3D_BYTES));
    EXPECT_EQ(3200u, stats.GetValue(LX_STAT_VERTEX_BUFFER_BYTES));
    EXPECT_EQ(256u, stats.GetValue(LX_STAT_CONSTANT_BUFFER_BYTES));
    EXPECT_EQ(targetBytes + volumeBytes + 3200 + 256, stats.GetGPUMemoryUsage());

    // A second outside reference keeps the resource registered; the last one unregisters it everywhere.
    LxCountedPtr<LxGPUTexture3D> second = volume;
    volume = nullptr;
    EXPECT_EQ(4u, manager.GetResourceCount());
    second = nullptr;
    EXPECT_EQ(3u, manager.GetResourceCount());
    EXPECT_EQ(nullptr, manager.GetHashedResource(hash));
    EXPECT_EQ(1u, manager.GetTextureCount());
    EXPECT_EQ(0u, stats.GetValue(LX_STAT_TEXTURE_3D_COUNT));
    EXPECT_EQ(0u, stats.GetValue(LX_STAT_TEXTURE_3D_BYTES));

    target = nullptr;
    EXPECT_EQ(nullptr, manager.GetNamedResource("target"));
    EXPECT_EQ(0u, stats.GetValue(LX_STAT_RENDER_TARGET_COUNT));
    // The name is free again.
    EXPECT_TRUE(MakeTexture(manager, "target"));
}

TEST(GPUResourceManager, ShutDownReportsWhatIsStillReferenced)
{
    LxGPUResourceManager::SetCreateFunction([]() -> LxGPUResourceManager* { return new TestManager(); });
    LxCountedPtr<LxGPUTexture2DArray> leaked = MakeTexture(LxGPUResourceManager::GetRef(), "leaked");
    LxCountedPtr<LxGPUVertexBuffer> anonymous =
        LxGPUResourceManager::GetRef().CreateResourceVertex(LxGPUResource::GPU_RESOURCE_STATIC, 4, 4, nullptr);
    MakeTexture(LxGPUResourceManager::GetRef(), "released"); // gone at once: not reported
    ASSERT_TRUE(leaked && anonymous);

    LxTest::LogCapture log;
    LxGPUResourceManager::ShutDown();
    LxGPUResourceManager::SetCreateFunction(nullptr);
    EXPECT_EQ(nullptr, LxGPUResourceManager::GetExistingPtr());
    EXPECT_EQ(1, log.Count("Possible resource leak:  Resources still referenced during GRM shutdown:", LX_LOG_WARNING));
    EXPECT_TRUE(log.Contains("AllocID: " + std::to_string(leaked->GetAllocationID()) + "  Name: leaked"));
    EXPECT_TRUE(log.Contains("AllocID: " + std::to_string(anonymous->GetAllocationID()) + "  Name: "));
    EXPECT_FALSE(log.Contains("Name: released"));

    // The resources outlive the manager and go with their last reference, without calling into it.
    EXPECT_EQ(1u, leaked.GetRefCount());
    leaked = nullptr;
    anonymous = nullptr;
}
