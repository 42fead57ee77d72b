// Device-free stand-ins for the platform resource classes: views whose Create() succeeds and counts, resources
// whose view factories make such views and whose maps hand out plain memory. They let the portable resource model
// run its real code paths without a device.
#pragma once

#include "GPUResourceManager/LxGPUDataBuffer.h"
#include "GPUResourceManager/LxGPUTexture2DArray.h"
#include "GPUResourceManager/LxGPUTexture3D.h"
#include "GPUResourceManager/LxGPUTextureCubeArray.h"

#include <vector>

namespace LxTest
{
template <class Base>
class FakeView : public Base
{
public:
    FakeView(LxGPUResource* resource, const LxGPUResourceViewDescription& desc, int* creates)
        : Base(resource, desc), m_pCreates(creates)
    {
    }
    bool Create() override
    {
        ++*m_pCreates;
        return !failCreate;
    }
    void Destroy() override {}
    static bool failCreate;

private:
    int* m_pCreates;
};
template <class Base>
bool FakeView<Base>::failCreate = false;

// Adds view factories to any resource class. nullFactory makes them answer null (a platform failure).
template <class Resource>
class WithFakeViews : public Resource
{
public:
    using Resource::Resource;
    int creates = 0;
    bool nullFactory = false;
    using Resource::AddResourceView;
    using Resource::FindResourceView;
    using Resource::RemoveResourceView;
    using Resource::ValidateMapType;

protected:
    LxGPUSamplingResourceView* CreateSamplingView(const LxGPUResourceViewDescription& d) override
    {
        return nullFactory ? nullptr : new FakeView<LxGPUSamplingResourceView>(this, d, &creates);
    }
    LxGPURenderableResourceView* CreateRenderableView(const LxGPUResourceViewDescription& d) override
    {
        return nullFactory ? nullptr : new FakeView<LxGPURenderableResourceView>(this, d, &creates);
    }
    LxGPUDepthStencilResourceView* CreateDepthStencilView(const LxGPUResourceViewDescription& d) override
    {
        return nullFactory ? nullptr : new FakeView<LxGPUDepthStencilResourceView>(this, d, &creates);
    }
    LxGPUUnorderedAccessView* CreateUnorderedAccessView(const LxGPUResourceViewDescription& d) override
    {
        return nullFactory ? nullptr : new FakeView<LxGPUUnorderedAccessView>(this, d, &creates);
    }
};

// A data buffer whose map hands out a plain block.
class FakeDataBuffer : public WithFakeViews<LxGPUDataBuffer>
{
public:
    FakeDataBuffer(Behavior behavior, unsigned bind, unsigned cpu, unsigned size)
        : WithFakeViews<LxGPUDataBuffer>(behavior, bind, cpu, 0, size), memory(size)
    {
    }
    std::vector<unsigned char> memory;
    int unmaps = 0;

protected:
    unsigned long long APIMap(MapType, unsigned offset, unsigned, bool) override
    {
        return reinterpret_cast<unsigned long long>(memory.data() + offset);
    }
    bool APIUnmap() override
    {
        ++unmaps;
        return true;
    }
};

class FakeTexture2D : public WithFakeViews<LxGPUTexture2DArray>
{
public:
    using WithFakeViews<LxGPUTexture2DArray>::WithFakeViews;
    unsigned char texels[64] = {};

protected:
    bool APIMap(MapType, unsigned, LxMappedSurface* out) override
    {
        out->rowPitch = 16;
        out->data = texels;
        return true;
    }
    bool APIUnmap(unsigned) override { return true; }
};

using FakeTexture3D = WithFakeViews<LxGPUTexture3D>;
using FakeTextureCube = WithFakeViews<LxGPUTextureCubeArray>;
} // namespace LxTest
