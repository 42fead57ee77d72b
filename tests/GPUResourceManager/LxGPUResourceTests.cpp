// Resource construction (flags, IDs, names), the map checks and map state, statistics and the IMPLEMENT ME
// defaults of the platform operations.
#include "support/LxTestSupport.h"

#include "GPUResourceManager/LxConstantBuffer.h"
#include "GPUResourceManager/LxGPUIndexBuffer.h"
#include "GPUResourceManager/LxGPUResourceStats.h"
#include "GPUResourceManager/LxGPUStructuredBuffer.h"
#include "GPUResourceManager/LxGPUTextureSize.h"
#include "GPUResourceManager/LxGPUVertexBuffer.h"
#include "LxGPUTestResources.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <thread>
#include <vector>

using LxTest::FakeDataBuffer;
using LxTest::FakeTexture2D;

TEST(GPUResource, ConstructorsSetTypesAndOrTheirBindFlag)
{
    using R = LxGPUResource;
    const R plain;
    EXPECT_EQ(R::GPU_RESOURCE_STATIC, plain.GetBehavior());
    EXPECT_EQ(R::TYPE_UNKNOWN, plain.GetType());
    EXPECT_EQ(R::BIND_SHADER_RESOURCE, plain.GetBindFlags());
    EXPECT_TRUE(plain.GetName().IsEmpty());

    // Each buffer kind ORs its own bind flag into the caller's and sizes itself from element size and count.
    const LxGPUVertexBuffer vb(R::GPU_RESOURCE_DYNAMIC, R::BIND_SHADER_RESOURCE, R::CPU_ACCESS_WRITE, 0, 12, 100);
    EXPECT_EQ(0x9u, vb.GetBindFlags());
    EXPECT_EQ(R::BUFFER, vb.GetType());
    EXPECT_EQ(1200u, vb.GetSize());
    EXPECT_TRUE(vb.IsVertexBuffer() && !vb.IsIndexBuffer());
    EXPECT_TRUE(vb.QueryCPUAccess(R::CPU_ACCESS_WRITE) && !vb.QueryCPUAccess(R::CPU_ACCESS_READ));
    LxGPUVertexBuffer stride(R::GPU_RESOURCE_STATIC, 0, 0, 0, 16, 4);
    stride.OverrideVertexSize(8);
    EXPECT_EQ(64u, stride.GetSize());
    const LxGPUIndexBuffer ib(R::GPU_RESOURCE_STATIC, 0, 0, 0, 2, 30);
    EXPECT_EQ(0x2u, ib.GetBindFlags());
    EXPECT_EQ(60u, ib.GetSize());
    EXPECT_TRUE(ib.IsIndexBuffer());
    const LxConstantBuffer cb(R::GPU_RESOURCE_DYNAMIC, 0, R::CPU_ACCESS_WRITE, 0, 256);
    EXPECT_EQ(0x4u, cb.GetBindFlags());
    EXPECT_EQ(cb.GetShadowData() + 256,
              std::find_if(cb.GetShadowData(), cb.GetShadowData() + 256, [](unsigned char b) { return b != 0; }))
        << "the shadow copy starts zeroed";
    // A data buffer is never a vertex or index buffer, whatever its flags.
    const FakeDataBuffer data(R::GPU_RESOURCE_STATIC, R::BIND_VERTEX_BUFFER | R::BIND_INDEX_BUFFER, 0, 16);
    EXPECT_FALSE(data.IsVertexBuffer() || data.IsIndexBuffer());
    // A structured buffer is dynamic without CPU access.
    const LxGPUStructuredBuffer sb(48, 10, R::BIND_UNORDERED_ACCESS, 0);
    EXPECT_EQ(R::GPU_RESOURCE_DYNAMIC, sb.GetBehavior());
    EXPECT_EQ(0u, sb.GetCPUAccessFlags());
    EXPECT_EQ(480u, sb.GetSize());

    EXPECT_TRUE(R::QueryBindUsage(0x28, R::BIND_RENDER_TARGET));
    EXPECT_FALSE(R::QueryBindUsage(0x28, R::BIND_DEPTH_STENCIL));
}

TEST(GPUResource, AllocationIDsAreUniqueAcrossThreadsAndNameTheLeakLine)
{
    const unsigned first = LxGPUResource::PeekNextAllocationID();
    LxGPUResource a;
    LxGPUResource b;
    EXPECT_EQ(first, a.GetAllocationID());
    EXPECT_EQ(first + 1, b.GetAllocationID());

    std::vector<unsigned> ids[4];
    std::vector<std::thread> threads;
    for (auto& list : ids)
        threads.emplace_back(
            [&list]
            {
                for (int i = 0; i < 200; ++i)
                    list.push_back(LxGPUResource().GetAllocationID());
            });
    std::set<unsigned> all;
    for (int t = 0; t < 4; ++t)
    {
        threads[t].join();
        all.insert(ids[t].begin(), ids[t].end());
    }
    EXPECT_EQ(800u, all.size()); // never reused, even when resources die at once

    b.SetName("Shadow map");
    EXPECT_STREQ(LxString::Formatted("AllocID: %u  Name: Shadow map", first + 1).c_str(),
                 b.GetLeakReportLine().c_str());

    LxMD5Hash hash;
    LxMD5Hash::ComputeHash("abc", 3, &hash);
    a.SetHash(&hash);
    ASSERT_NE(nullptr, a.GetHash());
    EXPECT_EQ(hash, *a.GetHash());
    a.SetHash(nullptr);
    EXPECT_EQ(nullptr, a.GetHash());
}

TEST(GPUResourceMap, MapKindIsCheckedAgainstBehaviourAndCPUAccess)
{
    using R = LxGPUResource;
    struct Case
    {
        R::Behavior behavior;
        unsigned cpu;
        R::MapType type;
        const char* error; // null: allowed
    } const cases[] = {
        {R::GPU_RESOURCE_STATIC, R::CPU_ACCESS_WRITE | R::CPU_ACCESS_READ, R::MAP_WRITE_DISCARD,
         "Non-dynamic resources may not be mapped."},
        {R::GPU_RESOURCE_DYNAMIC, R::CPU_ACCESS_WRITE, R::MAP_READ,
         "Attempted readable lock on a non-CPU-readable resource."},
        {R::GPU_RESOURCE_DYNAMIC, R::CPU_ACCESS_READ, R::MAP_WRITE_DISCARD,
         "Attempted writeable lock on a non-CPU-writable resource."},
        {R::GPU_RESOURCE_DYNAMIC, R::CPU_ACCESS_READ, R::MAP_READ_WRITE,
         "Attempted writeable lock on a non-CPU-writable resource."},
        {R::GPU_RESOURCE_DYNAMIC, R::CPU_ACCESS_WRITE, R::MAP_WRITE_NO_OVERWRITE, nullptr},
        {R::GPU_RESOURCE_DYNAMIC, R::CPU_ACCESS_READ, R::MAP_READ, nullptr},
        {R::GPU_RESOURCE_DYNAMIC, R::CPU_ACCESS_READBACK, R::MAP_READ, nullptr}, // 0x40000 reads too
        {R::GPU_RESOURCE_DYNAMIC, R::CPU_ACCESS_READBACK | R::CPU_ACCESS_WRITE, R::MAP_READ_WRITE, nullptr},
        {R::GPU_RESOURCE_DYNAMIC, R::CPU_ACCESS_WRITE | R::CPU_ACCESS_READ, static_cast<R::MapType>(9),
         "Invalid map type 9."},
    };
    for (const Case& c : cases)
    {
        FakeDataBuffer buffer(c.behavior, 0, c.cpu, 16);
        LxTest::LogCapture capture;
        EXPECT_EQ(c.error == nullptr, buffer.ValidateMapType(c.type));
        EXPECT_EQ(c.error ? 1 : 0, capture.ErrorCount()) << capture.All();
        EXPECT_TRUE(!c.error || capture.Contains(c.error, LX_LOG_ERROR)) << c.error << "\n" << capture.All();
    }
}

TEST(GPUResourceMap, BufferMapStateAndRanges)
{
    FakeDataBuffer buffer(LxGPUResource::GPU_RESOURCE_DYNAMIC, 0, LxGPUResource::CPU_ACCESS_WRITE, 64);
    LxTest::LogCapture capture;
    EXPECT_FALSE(buffer.Unmap());
    EXPECT_TRUE(capture.Contains("Unmap was called on a resource which was not locked."));
    const unsigned long long address = buffer.Map(LxGPUResource::MAP_WRITE_DISCARD);
    EXPECT_EQ(reinterpret_cast<unsigned long long>(buffer.memory.data()), address);
    EXPECT_TRUE(buffer.IsMapped());
    EXPECT_EQ(0u, buffer.Map(LxGPUResource::MAP_WRITE_DISCARD));
    EXPECT_TRUE(capture.Contains("Cannot map a resource twice without unmapping."));
    EXPECT_TRUE(buffer.Unmap());
    EXPECT_EQ(1, buffer.unmaps);

    EXPECT_EQ(reinterpret_cast<unsigned long long>(buffer.memory.data() + 16),
              buffer.MapRange(LxGPUResource::MAP_WRITE_NO_OVERWRITE, 16, 48));
    EXPECT_TRUE(buffer.Unmap());
    capture.Clear();
    EXPECT_EQ(0u, buffer.MapRange(LxGPUResource::MAP_WRITE_NO_OVERWRITE, 16, 49));
    EXPECT_EQ(1, capture.ErrorCount());
    EXPECT_FALSE(buffer.IsMapped());

    // A refused map kind leaves the buffer unmapped.
    EXPECT_EQ(0u, buffer.Map(LxGPUResource::MAP_READ));
    EXPECT_FALSE(buffer.IsMapped());
}

TEST(GPUResourceMap, StructuredBufferReportsDynamicYetRefusesMapping)
{
    LxGPUStructuredBuffer sb(16, 4, LxGPUResource::BIND_SHADER_RESOURCE, 0);
    EXPECT_EQ(LxGPUResource::GPU_RESOURCE_DYNAMIC, sb.GetBehavior());
    LxTest::LogCapture capture;
    EXPECT_EQ(0u, sb.Map(LxGPUResource::MAP_WRITE_DISCARD));
    EXPECT_TRUE(capture.Contains("Map() called on structured buffer.  Mapping of structured buffers is not supported",
                                 LX_LOG_ERROR));
    EXPECT_EQ(0u, sb.MapRange(LxGPUResource::MAP_WRITE_DISCARD, 0, 16));
    EXPECT_FALSE(sb.Unmap());
    EXPECT_TRUE(capture.Contains("Unmap() called on structured buffer.  Mapping of structured buffers is not supported",
                                 LX_LOG_ERROR));
    // Through the base class as well.
    LxGPUBuffer& base = sb;
    EXPECT_EQ(0u, base.Map(LxGPUResource::MAP_WRITE_DISCARD));
}

TEST(GPUResourceMap, TextureSubresourcesMapIndependently)
{
    FakeTexture2D tex(LxGPUResource::GPU_RESOURCE_DYNAMIC, LxGPUResource::BIND_SHADER_RESOURCE,
                      LxGPUResource::CPU_ACCESS_WRITE, 0, LX_FORMAT_R8G8B8A8_UNORM, 4, 4, 2, 3, LxGPUTexture::MIP_NONE);
    LxTest::LogCapture capture;
    LxMappedSurface a, b;
    ASSERT_TRUE(tex.Map(LxGPUResource::MAP_WRITE_DISCARD, 0, 1, &a));
    EXPECT_EQ(16u, a.rowPitch);
    EXPECT_EQ(tex.texels, a.data);
    EXPECT_TRUE(tex.Map(LxGPUResource::MAP_WRITE_DISCARD, 1, 1, &b));
    EXPECT_FALSE(tex.Map(LxGPUResource::MAP_WRITE_DISCARD, 0, 1, &b));
    EXPECT_TRUE(capture.Contains("Cannot map a resource twice without unmapping."));
    EXPECT_TRUE(tex.Unmap(0, 1));
    EXPECT_FALSE(tex.Unmap(0, 1));
    EXPECT_TRUE(capture.Contains("Unmap was called on a resource which was not locked."));
    EXPECT_TRUE(tex.Unmap(1, 1));
    capture.Clear();
    EXPECT_FALSE(tex.Map(LxGPUResource::MAP_WRITE_DISCARD, 3, 0, &a)); // no mip 3
    EXPECT_FALSE(tex.Map(LxGPUResource::MAP_WRITE_DISCARD, 0, 2, &a)); // no slice 2
    EXPECT_EQ(2, capture.ErrorCount());
}

TEST(GPUResource, TextureDimensionsAndSizes)
{
    LxGPUTexture2DArray tex(LxGPUResource::GPU_RESOURCE_STATIC, LxGPUResource::BIND_SHADER_RESOURCE, 0, 0,
                            LX_FORMAT_BC1_UNORM, 16, 8, 3, 0, LxGPUTexture::MIP_AUTO_GENERATE);
    EXPECT_EQ(5u, tex.GetMipCount());
    EXPECT_EQ(3u * LxComputeTextureSize(16, 8, 1, 5, LX_FORMAT_BC1_UNORM), tex.GetSizeInBytes());
    const LxGPUResourceDescription d = tex.GetDefaultResourceDesc();
    EXPECT_EQ(0, d.texture.firstMip);
    EXPECT_EQ(5, d.texture.mipCount);
    EXPECT_EQ(3, d.texture.sliceCount);
    EXPECT_EQ(LX_FORMAT_BC1_UNORM, tex.GetDefaultViewDescription(LX_VIEW_SAMPLING).format);

    LxGPUTexture3D vol(LxGPUResource::GPU_RESOURCE_STATIC, 0, 0, 0, LX_FORMAT_R8_UNORM, 4, 4, 16, 0,
                       LxGPUTexture::MIP_NONE);
    EXPECT_EQ(5u, vol.GetMipCount()); // the depth counts for a volume's chain
    EXPECT_EQ(2u, vol.GetDepthAtMip(3));
    EXPECT_EQ(1u, vol.GetDepthAtMip(40));
    EXPECT_EQ(LxComputeTextureSize(4, 4, 16, 5, LX_FORMAT_R8_UNORM), vol.GetSizeInBytes());
    EXPECT_EQ(16, vol.GetDefaultResourceDesc().texture.sliceCount);

    LxGPUTextureCubeArray cube(LxGPUResource::GPU_RESOURCE_STATIC, 0, 0, 0, LX_FORMAT_R16_FLOAT, 8, 2, 1,
                               LxGPUTexture::MIP_NONE);
    EXPECT_EQ(12u * 8 * 8 * 2, cube.GetSizeInBytes());
    EXPECT_EQ(7u, LxGPUTextureCubeArray::GetFaceSlice(LxGPUTextureCubeArray::CUBEMAP_FACE_NEGATIVE_X, 1));

    LxGPUTexture2DArray msaa(LxGPUResource::GPU_RESOURCE_STATIC, LxGPUResource::BIND_RENDER_TARGET, 0, 0,
                             LX_FORMAT_R8G8B8A8_UNORM, 4, 4, 1, 1, LxGPUTexture::MIP_NONE, 4);
    EXPECT_EQ(4u * 4 * 4 * 4, msaa.GetSizeInBytes());
}

TEST(GPUResourceStats, PairsAddWrapAndLeaveTargetsOutOfTheTotal)
{
    LxGPUResourceStats stats;
    for (unsigned f = 0; f < LX_STAT_NUM_FIELDS; ++f)
        EXPECT_EQ(0u, stats.GetValue(static_cast<LxGPUResourceStatField>(f)));
    // Bytes 1, 2, 4, ... in fields 1, 3, ..., 17: the total is every bit but those of fields 13 and 15.
    for (unsigned pair = 0; pair < 9; ++pair)
    {
        stats.IncrementValue(static_cast<LxGPUResourceStatField>(2 * pair), 1);
        stats.IncrementValue(static_cast<LxGPUResourceStatField>(2 * pair + 1), 1u << pair);
    }
    const unsigned expected = 0x1FFu & ~(1u << 6) & ~(1u << 7);
    EXPECT_EQ(expected, stats.GetGPUMemoryUsage());

    stats.DecrementValue(LX_STAT_TEXTURE_2D_COUNT, 2);
    EXPECT_EQ(0xFFFFFFFFu, stats.GetValue(LX_STAT_TEXTURE_2D_COUNT)); // no saturation
    stats.IncrementValue(LX_STAT_RENDER_TARGET_BYTES, 1000);
    EXPECT_EQ(expected, stats.GetGPUMemoryUsage());
    stats.IncrementValue(static_cast<LxGPUResourceStatField>(18), 5); // ignored
    EXPECT_EQ(0u, stats.GetValue(static_cast<LxGPUResourceStatField>(18)));
    stats.Clear();
    EXPECT_EQ(0u, stats.GetGPUMemoryUsage());
}

TEST(GPUResource, PlatformOperationsReportImplementMe)
{
    LxTest::LogCapture capture;
    LxGPUDataBuffer buffer(LxGPUResource::GPU_RESOURCE_DYNAMIC, 0, LxGPUResource::CPU_ACCESS_WRITE, 0, 16);
    EXPECT_FALSE(buffer.UAVBarrier());
    EXPECT_TRUE(capture.Contains("LxGPUBuffer::UAVBarrier ::: IMPLEMENT ME!", LX_LOG_ERROR));
    EXPECT_EQ(0u, buffer.Map(LxGPUResource::MAP_WRITE_DISCARD));
    EXPECT_TRUE(capture.Contains("LxGPUBuffer::Map ::: IMPLEMENT ME!"));
    EXPECT_FALSE(buffer.IsMapped());
    EXPECT_FALSE(buffer.UpdateBuffer(nullptr));
    EXPECT_FALSE(buffer.CopyBufferRegion(0, buffer, 0, 4));
    EXPECT_FALSE(buffer.Transition(LxGPUResource::STATE_COMMON, LxGPUResource::STATE_COPY_DEST));
    EXPECT_TRUE(capture.Contains("LxGPUResource::Transition ::: IMPLEMENT ME!"));

    LxGPUTexture2DArray tex(LxGPUResource::GPU_RESOURCE_STATIC, LxGPUResource::BIND_SHADER_RESOURCE, 0, 0,
                            LX_FORMAT_R8G8B8A8_UNORM, 4, 4, 1, 1, LxGPUTexture::MIP_NONE);
    EXPECT_FALSE(tex.Create(LxCountedPtr<LxMemoryBuffer>()));
    EXPECT_FALSE(tex.GenerateMips());
    EXPECT_FALSE(tex.SaveToDDS("out.dds"));
    EXPECT_FALSE(tex.GetMemoryBuffer(0, 0));
    EXPECT_EQ(0u, tex.GetNumTilesX());
    EXPECT_TRUE(capture.Contains("LxGPUTexture::Create ::: IMPLEMENT ME!"));
    EXPECT_TRUE(capture.Contains("LxGPUTexture::GenerateMips ::: IMPLEMENT ME!"));
    EXPECT_TRUE(capture.Contains("LxGPUTexture2DArray::GetNumTilesX ::: IMPLEMENT ME!"));

    // The format check is a permissive placeholder: a warning, and every pair passes.
    capture.Clear();
    EXPECT_TRUE(LxGPUTexture::CheckFormatForType(LxGPUResource::TEXTURE_3D, LX_FORMAT_D24_UNORM_S8_UINT));
    EXPECT_TRUE(capture.Contains("LxGPUTexture::CheckFormatForType ::: IMPLEMENT ME!", LX_LOG_WARNING));
    EXPECT_EQ(0, capture.ErrorCount());
}
