// View descriptions, the find-or-create view getters and the validity checks of every resource kind.
#include "support/LxTestSupport.h"

#include "GPUResourceManager/LxGPUStructuredBuffer.h"
#include "LxGPUTestResources.h"

#include <gtest/gtest.h>

#include <cstring>
#include <new>

using LxTest::FakeDataBuffer;
using LxTest::FakeTexture2D;
using LxTest::FakeTexture3D;
using LxTest::FakeTextureCube;
using R = LxGPUResource;
using VD = LxGPUResourceViewDescription;

namespace
{
const unsigned kAllBinds =
    R::BIND_SHADER_RESOURCE | R::BIND_RENDER_TARGET | R::BIND_DEPTH_STENCIL | R::BIND_UNORDERED_ACCESS;

// A texture view description (a 2D array unless `type` says otherwise).
LxGPUResourceViewDescription TexDesc(LxGPUResourceViewType kind, unsigned short firstMip, unsigned short mips,
                                     unsigned short firstSlice, unsigned short slices,
                                     unsigned type = R::TEXTURE_2D_ARRAY, unsigned short flags = 0)
{
    return LxGPUResourceViewDescription(kind, LX_FORMAT_R8G8B8A8_UNORM, type,
                                        LxGPUResourceDescription::Texture(firstMip, mips, firstSlice, slices), flags);
}

LxGPUResourceViewDescription BufDesc(LxGPUResourceViewType kind, unsigned first, unsigned count,
                                     LxGPUResourceFormat format = LX_FORMAT_R32_FLOAT, unsigned short flags = 0)
{
    return LxGPUResourceViewDescription(kind, format, R::BUFFER, LxGPUResourceDescription::Buffer(first, count), flags);
}

// Asserts that `desc` is refused on `resource` with exactly `message`.
template <class Resource>
void ExpectRefused(const Resource& resource, const LxGPUResourceViewDescription& desc, const char* message)
{
    LxTest::LogCapture capture;
    EXPECT_FALSE(resource.IsViewValid(desc)) << message;
    EXPECT_TRUE(capture.Contains(message, LX_LOG_ERROR)) << "expected: " << message << "\ngot: " << capture.All();
    EXPECT_EQ(1, capture.ErrorCount()) << capture.All();
}

template <class Resource>
void ExpectAccepted(const Resource& resource, const LxGPUResourceViewDescription& desc)
{
    LxTest::LogCapture capture;
    EXPECT_TRUE(resource.IsViewValid(desc)) << capture.All();
    EXPECT_EQ(0, capture.ErrorCount()) << capture.All();
}
} // namespace

TEST(GPUResourceViewDescription, EqualityComparesTheFieldsTheResourceTypeUses)
{
    const LxGPUResourceViewDescription a = BufDesc(LX_VIEW_SAMPLING, 4, 16);
    EXPECT_EQ(a, BufDesc(LX_VIEW_SAMPLING, 4, 16));
    EXPECT_NE(a, BufDesc(LX_VIEW_SAMPLING, 5, 16));
    EXPECT_NE(a, BufDesc(LX_VIEW_SAMPLING, 4, 15));
    EXPECT_NE(a, BufDesc(LX_VIEW_UNORDERED_ACCESS, 4, 16));
    EXPECT_NE(a, BufDesc(LX_VIEW_SAMPLING, 4, 16, LX_FORMAT_R32_UINT));
    EXPECT_NE(a, BufDesc(LX_VIEW_SAMPLING, 4, 16, LX_FORMAT_R32_FLOAT, VD::FLAG_APPEND));

    const LxGPUResourceViewDescription t = TexDesc(LX_VIEW_SAMPLING, 1, 2, 3, 4, R::TEXTURE_3D);
    EXPECT_EQ(t, TexDesc(LX_VIEW_SAMPLING, 1, 2, 3, 4, R::TEXTURE_3D));
    EXPECT_NE(t, TexDesc(LX_VIEW_SAMPLING, 1, 2, 3, 4));
    EXPECT_NE(t, TexDesc(LX_VIEW_SAMPLING, 0, 2, 3, 4, R::TEXTURE_3D));
    EXPECT_NE(t, TexDesc(LX_VIEW_SAMPLING, 1, 1, 3, 4, R::TEXTURE_3D));
    EXPECT_NE(t, TexDesc(LX_VIEW_SAMPLING, 1, 2, 2, 4, R::TEXTURE_3D));
    EXPECT_NE(t, TexDesc(LX_VIEW_SAMPLING, 1, 2, 3, 5, R::TEXTURE_3D));

    // The same bytes read as buffer fields and as texture fields: a description built either way compares by the
    // interpretation its resource type gives it.
    LxGPUResourceViewDescription viaTexture = TexDesc(LX_VIEW_SAMPLING, 0, 0, 0, 0, R::BUFFER);
    viaTexture.format = LX_FORMAT_R32_FLOAT;
    EXPECT_EQ(BufDesc(LX_VIEW_SAMPLING, 0, 0), viaTexture);

    // Field by field, not byte by byte: whatever the padding of two descriptions holds does not matter.
    alignas(LxGPUResourceViewDescription) unsigned char zeros[sizeof(LxGPUResourceViewDescription)];
    alignas(LxGPUResourceViewDescription) unsigned char ones[sizeof(LxGPUResourceViewDescription)];
    std::memset(zeros, 0x00, sizeof(zeros));
    std::memset(ones, 0xFF, sizeof(ones));
    const LxGPUResourceDescription range = LxGPUResourceDescription::Buffer(4, 16);
    LxGPUResourceViewDescription* x =
        new (zeros) LxGPUResourceViewDescription(LX_VIEW_SAMPLING, LX_FORMAT_R32_FLOAT, R::BUFFER, range);
    LxGPUResourceViewDescription* y =
        new (ones) LxGPUResourceViewDescription(LX_VIEW_SAMPLING, LX_FORMAT_R32_FLOAT, R::BUFFER, range);
    ASSERT_NE(0, std::memcmp(zeros, ones, sizeof(zeros))); // the padding differs
    EXPECT_EQ(*x, *y);

    // An unknown resource type never compares equal, not even to itself.
    const LxGPUResourceViewDescription unknown = TexDesc(LX_VIEW_SAMPLING, 0, 1, 0, 1, 7);
    EXPECT_FALSE(unknown == unknown);
    EXPECT_NE(TexDesc(LX_VIEW_SAMPLING, 0, 1, 0, 1, R::TYPE_UNKNOWN),
              TexDesc(LX_VIEW_SAMPLING, 0, 1, 0, 1, R::TYPE_UNKNOWN));
}

TEST(GPUResourceViews, GettersFindOrCreateAndRegisterOnce)
{
    FakeTexture2D tex(R::GPU_RESOURCE_STATIC, kAllBinds, 0, 0, LX_FORMAT_R8G8B8A8_UNORM, 64, 64, 4, 0,
                      LxGPUTexture::MIP_NONE);
    EXPECT_EQ(7u, tex.GetMipCount()); // 0 asks for the full chain

    const LxGPUResourceViewDescription whole = TexDesc(LX_VIEW_SAMPLING, 0, 7, 0, 4);
    LxCountedPtr<LxGPUSamplingResourceView> a = tex.GetSamplingView(whole);
    ASSERT_TRUE(a);
    EXPECT_EQ(&tex, a->GetResource());
    EXPECT_EQ(whole, a->GetDescription());
    EXPECT_EQ(a, tex.GetSamplingView(whole));
    EXPECT_EQ(a, tex.GetDefaultSamplingView()); // the default view is the whole texture in its own format
    EXPECT_EQ(1, tex.creates);

    LxCountedPtr<LxGPUSamplingResourceView> b = tex.GetSamplingView(TexDesc(LX_VIEW_SAMPLING, 1, 6, 0, 4));
    ASSERT_TRUE(b);
    EXPECT_NE(a, b);

    LxCountedPtr<LxGPURenderableResourceView> rt = tex.GetRenderableView(TexDesc(LX_VIEW_RENDERABLE, 0, 1, 2, 1));
    ASSERT_TRUE(rt);
    EXPECT_EQ(LxGPURenderableResourceView::RM_TARGET_TEXTURE, rt->GetRMTargetType());
    LxCountedPtr<LxGPUDepthStencilResourceView> ds = tex.GetDepthStencilView(
        TexDesc(LX_VIEW_DEPTH_STENCIL, 0, 1, 0, 1, R::TEXTURE_2D_ARRAY, VD::FLAG_READ_ONLY_DEPTH));
    ASSERT_TRUE(ds);
    EXPECT_TRUE(ds->IsDepthReadOnly());
    EXPECT_FALSE(ds->IsStencilReadOnly());
    LxCountedPtr<LxGPUUnorderedAccessView> uav =
        tex.GetUnorderedAccessView(TexDesc(LX_VIEW_UNORDERED_ACCESS, 0, 1, 0, 4));
    ASSERT_TRUE(uav);
    EXPECT_EQ(0u, uav->GetInitialCount());
    EXPECT_TRUE(uav->GetIsFirstRun());
    EXPECT_EQ(5u, tex.GetNumViews());
    EXPECT_EQ(5, tex.creates);

    EXPECT_EQ(rt.Get(), tex.FindResourceView(rt->GetDescription()));
    EXPECT_EQ(nullptr, tex.FindResourceView(TexDesc(LX_VIEW_RENDERABLE, 0, 1, 3, 1)));

    // Dropping a view detaches it; asking again makes a new one.
    EXPECT_TRUE(tex.RemoveResourceView(b.Get()));
    EXPECT_EQ(nullptr, b->GetResource());
    EXPECT_FALSE(tex.RemoveResourceView(b.Get()));
    EXPECT_EQ(4u, tex.GetNumViews());
}

TEST(GPUResourceViews, ViewsOutlivingTheirResourceLoseTheBackPointer)
{
    LxCountedPtr<LxGPUSamplingResourceView> kept;
    {
        LxCountedPtr<FakeDataBuffer> buffer(new FakeDataBuffer(R::GPU_RESOURCE_STATIC, R::BIND_SHADER_RESOURCE, 0, 64));
        kept = buffer->GetSamplingView(BufDesc(LX_VIEW_SAMPLING, 0, 16));
        ASSERT_TRUE(kept);
        EXPECT_EQ(buffer.Get(), kept->GetResource());
        EXPECT_EQ(2u, kept.GetRefCount());
    }
    EXPECT_EQ(1u, kept.GetRefCount());
    EXPECT_EQ(nullptr, kept->GetResource());
}

TEST(GPUResourceViews, FailuresReturnNullAndSayWhy)
{
    FakeTexture2D tex(R::GPU_RESOURCE_STATIC, kAllBinds, 0, 0, LX_FORMAT_R8G8B8A8_UNORM, 8, 8, 1, 1,
                      LxGPUTexture::MIP_NONE);
    const LxGPUResourceViewDescription ok = TexDesc(LX_VIEW_SAMPLING, 0, 1, 0, 1);
    LxTest::LogCapture capture;
    tex.nullFactory = true;
    EXPECT_FALSE(tex.GetSamplingView(ok));
    EXPECT_FALSE(tex.GetRenderableView(TexDesc(LX_VIEW_RENDERABLE, 0, 1, 0, 1)));
    EXPECT_FALSE(tex.GetDepthStencilView(TexDesc(LX_VIEW_DEPTH_STENCIL, 0, 1, 0, 1)));
    EXPECT_FALSE(tex.GetUnorderedAccessView(TexDesc(LX_VIEW_UNORDERED_ACCESS, 0, 1, 0, 1)));
    for (const char* message : {"Sampling view creation failed.", "Renderable view creation failed.",
                                "Depth-stencil view creation failed.", "UAV creation failed."})
        EXPECT_TRUE(capture.Contains(message)) << message;
    tex.nullFactory = false;

    // A platform view whose Create fails is neither returned nor registered.
    LxTest::LogCapture failed;
    LxTest::FakeView<LxGPUSamplingResourceView>::failCreate = true;
    EXPECT_FALSE(tex.GetSamplingView(ok));
    LxTest::FakeView<LxGPUSamplingResourceView>::failCreate = false;
    EXPECT_TRUE(failed.Contains("Sampling view creation failed."));
    EXPECT_EQ(0u, tex.GetNumViews());

    // An invalid description never reaches the factory.
    EXPECT_FALSE(tex.GetSamplingView(TexDesc(LX_VIEW_SAMPLING, 0, 2, 0, 1)));
    EXPECT_TRUE(failed.Contains("View outside of resource dimensions."));
    EXPECT_EQ(1, tex.creates); // only the failing Create above ran
    EXPECT_FALSE(tex.AddResourceView(LxCountedPtr<LxGPUSamplingResourceView>()));
    EXPECT_TRUE(failed.Contains("Trying to add a resource view for a NULL resource view instance!"));

    // The base class has no UAVs and no platform factories.
    LxTest::LogCapture base;
    LxGPUTexture2DArray plain(R::GPU_RESOURCE_STATIC, kAllBinds, 0, 0, LX_FORMAT_R8G8B8A8_UNORM, 8, 8, 1, 1,
                              LxGPUTexture::MIP_NONE);
    EXPECT_FALSE(plain.GetUnorderedAccessView(TexDesc(LX_VIEW_UNORDERED_ACCESS, 0, 1, 0, 1)));
    EXPECT_TRUE(base.Contains("UAV CREATION IS NOT SUPPORTED FOR THIS API"));
    EXPECT_TRUE(base.Contains("UAV creation failed."));
    EXPECT_FALSE(plain.GetSamplingView(ok));
    EXPECT_TRUE(base.Contains("LxGPUResource::CreateSamplingView ::: IMPLEMENT ME!"));
}

TEST(GPUResourceViews, BaseChecksInOrder)
{
    // Each usage flag is required by its own view kind only.
    FakeDataBuffer noBinds(R::GPU_RESOURCE_DYNAMIC, 0, 0, 64);
    ExpectRefused(noBinds, BufDesc(LX_VIEW_SAMPLING, 0, 1),
                  "Tried to create sampling view of a resource without BIND_SHADER_RESOURCE usage flag.");
    ExpectRefused(noBinds, BufDesc(LX_VIEW_RENDERABLE, 0, 1),
                  "Tried to create a renderable view of a resource without BIND_RENDER_TARGET usage flag.");
    ExpectRefused(noBinds, BufDesc(LX_VIEW_DEPTH_STENCIL, 0, 1),
                  "Tried to create a depth-stencil view of a resource without BIND_DEPTH_STENCIL usage flag.");
    ExpectRefused(noBinds, BufDesc(LX_VIEW_UNORDERED_ACCESS, 0, 1),
                  "Tried to create an Unordered Access View of a resource without BIND_UNORDERED_ACCESS usage flag.");

    FakeTexture2D tex(R::GPU_RESOURCE_STATIC, kAllBinds, 0, 0, LX_FORMAT_R8G8B8A8_UNORM, 8, 8, 2, 1,
                      LxGPUTexture::MIP_NONE);
    ExpectRefused(tex, TexDesc(LX_VIEW_SAMPLING, 0, 1, 0, 1, R::TEXTURE_2D_ARRAY, VD::FLAG_READ_ONLY_STENCIL),
                  "Read only depth/stencil view flags are only valid for depth-stencil views!");
    ExpectAccepted(tex, TexDesc(LX_VIEW_DEPTH_STENCIL, 0, 1, 0, 1, R::TEXTURE_2D_ARRAY,
                                VD::FLAG_READ_ONLY_DEPTH | VD::FLAG_READ_ONLY_STENCIL));
    ExpectRefused(tex, TexDesc(LX_VIEW_RENDERABLE, 0, 1, 0, 1, R::TEXTURE_2D_ARRAY, VD::FLAG_APPEND),
                  "Only UAVs may have the append buffer view flag");
    ExpectRefused(tex, TexDesc(LX_VIEW_UNORDERED_ACCESS, 0, 1, 0, 1, R::TEXTURE_2D_ARRAY, VD::FLAG_APPEND),
                  "Append buffer views are supported only for buffer resources!");

    // The usage check comes before the flag checks.
    ExpectRefused(noBinds, BufDesc(LX_VIEW_SAMPLING, 0, 1, LX_FORMAT_R32_FLOAT, VD::FLAG_APPEND),
                  "Tried to create sampling view of a resource without BIND_SHADER_RESOURCE usage flag.");
}

TEST(GPUResourceViews, BufferChecks)
{
    FakeDataBuffer dynamic(R::GPU_RESOURCE_DYNAMIC, kAllBinds, 0, 64);
    ExpectRefused(dynamic, BufDesc(LX_VIEW_DEPTH_STENCIL, 0, 1),
                  "Buffers only support sampling , render target, or UAV views.");
    LxGPUResourceViewDescription wrongType = BufDesc(LX_VIEW_SAMPLING, 0, 1);
    wrongType.resourceType = R::TEXTURE_2D_ARRAY;
    ExpectRefused(dynamic, wrongType, "View's resource type does not match actual resource type.");
    ExpectAccepted(dynamic, BufDesc(LX_VIEW_RENDERABLE, 0, 16));
    ExpectAccepted(dynamic, BufDesc(LX_VIEW_UNORDERED_ACCESS, 0, 16, LX_FORMAT_UNKNOWN, VD::FLAG_APPEND));
    // 17 floats do not fit 64 bytes.
    ExpectRefused(dynamic, BufDesc(LX_VIEW_SAMPLING, 1, 16), "View outside of resource dimensions.");

    FakeDataBuffer staticBuffer(R::GPU_RESOURCE_STATIC, kAllBinds, 0, 64);
    ExpectRefused(staticBuffer, BufDesc(LX_VIEW_RENDERABLE, 0, 16),
                  "Trying to create a renderable view for a static resource, not allowed.");

    LxTest::WithFakeViews<LxGPUStructuredBuffer> structured(32, 10, kAllBinds, 0);
    ExpectAccepted(structured, BufDesc(LX_VIEW_SAMPLING, 2, 8, LX_FORMAT_UNKNOWN));
    ExpectRefused(structured, BufDesc(LX_VIEW_SAMPLING, 2, 9, LX_FORMAT_UNKNOWN),
                  "View outside of resource dimensions\n");
    EXPECT_EQ(LxGPUResourceDescription::Buffer(0, 10).buffer.numElements,
              structured.GetDefaultResourceDesc().buffer.numElements);
}

TEST(GPUResourceViews, TextureChecks)
{
    FakeTexture2D arr(R::GPU_RESOURCE_STATIC, kAllBinds, 0, 0, LX_FORMAT_R8G8B8A8_UNORM, 16, 16, 3, 2,
                      LxGPUTexture::MIP_NONE);
    ExpectAccepted(arr, TexDesc(LX_VIEW_SAMPLING, 1, 1, 1, 2));
    ExpectAccepted(arr, TexDesc(LX_VIEW_RENDERABLE, 0, 1, 2, 1));
    ExpectRefused(arr, TexDesc(LX_VIEW_SAMPLING, 1, 2, 0, 1), "View outside of resource dimensions.");
    ExpectRefused(arr, TexDesc(LX_VIEW_SAMPLING, 0, 1, 2, 2), "View outside of resource dimensions.");
    ExpectRefused(arr, TexDesc(LX_VIEW_SAMPLING, 0, 0, 0, 1), "View outside of resource dimensions.");
    ExpectRefused(arr, TexDesc(LX_VIEW_SAMPLING, 0, 1, 0, 1, R::TEXTURE_3D),
                  "View's resource type does not match actual resource type.");

    // 3D: 8x8x8 with 3 levels (depth 8, 4, 2).
    FakeTexture3D vol(R::GPU_RESOURCE_STATIC, kAllBinds, 0, 0, LX_FORMAT_R8G8B8A8_UNORM, 8, 8, 8, 3,
                      LxGPUTexture::MIP_NONE);
    const unsigned t3 = R::TEXTURE_3D;
    ExpectAccepted(vol, TexDesc(LX_VIEW_SAMPLING, 0, 3, 0, 8, t3));
    ExpectAccepted(vol, TexDesc(LX_VIEW_SAMPLING, 1, 2, 0, 4, t3));
    ExpectAccepted(vol, TexDesc(LX_VIEW_UNORDERED_ACCESS, 1, 1, 1, 2, t3));
    ExpectRefused(vol, TexDesc(LX_VIEW_SAMPLING, 2, 2, 0, 2, t3), "Illegal mip level range for view of 3D texture.");
    ExpectRefused(vol, TexDesc(LX_VIEW_RENDERABLE, 1, 1, 2, 3, t3), "Illegal slice range for view of 3D texture.");
    ExpectRefused(vol, TexDesc(LX_VIEW_DEPTH_STENCIL, 0, 1, 0, 1, t3),
                  "Depth-stencil views of 3D textures are unsupported.");
    ExpectRefused(vol, TexDesc(LX_VIEW_RENDERABLE, 0, 2, 0, 8, t3),
                  "Non-sampling views of 3D textures must reference only one mip level.");
    ExpectRefused(vol, TexDesc(LX_VIEW_SAMPLING, 0, 1, 1, 7, t3),
                  "Sampling views of 3D textures must reference the entire texture.");

    // Cube arrays: 2 cubes = 12 faces, viewed as cubes or as a 2D array of faces.
    FakeTextureCube cube(R::GPU_RESOURCE_STATIC, kAllBinds, 0, 0, LX_FORMAT_R8G8B8A8_UNORM, 32, 2, 1,
                         LxGPUTexture::MIP_NONE);
    EXPECT_EQ(12u, cube.GetSliceCount());
    EXPECT_EQ(R::TEXTURE_CUBE_ARRAY, cube.GetDefaultViewDescription(LX_VIEW_SAMPLING).resourceType);
    ExpectAccepted(cube, TexDesc(LX_VIEW_SAMPLING, 0, 1, 6, 6, R::TEXTURE_CUBE_ARRAY));
    ExpectAccepted(cube, TexDesc(LX_VIEW_SAMPLING, 0, 1, 3, 1));
    ExpectAccepted(cube, TexDesc(LX_VIEW_RENDERABLE, 0, 1, 11, 1));
    ExpectRefused(cube, TexDesc(LX_VIEW_SAMPLING, 0, 1, 0, 6, R::TEXTURE_3D),
                  "Invalid resource type for cubemap sampling view.  Cubemaps may be viewed as texture2DArray or "
                  "textureCube, nothing else");
    ExpectRefused(cube, TexDesc(LX_VIEW_SAMPLING, 0, 1, 3, 6, R::TEXTURE_CUBE_ARRAY),
                  "View outside of resource dimensions.");
    ExpectRefused(cube, TexDesc(LX_VIEW_SAMPLING, 0, 1, 11, 2), "View outside of resource dimensions.");
}
