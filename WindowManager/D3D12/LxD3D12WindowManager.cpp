#include "WindowManager/D3D12/LxD3D12WindowManager.h"

#include "Common/LxLogManager.h"

#include <dxgi1_4.h>
#include <wrl/client.h>

using Microsoft::WRL::ComPtr;

namespace
{
LxWindowManager* CreateD3D12WindowManager()
{
    return new LxD3D12WindowManager();
}

// On Windows the singleton is always the Direct3D 12 window manager: registered when the library is loaded.
struct RegisterD3D12WindowManager
{
    RegisterD3D12WindowManager() { LxWindowManager::SetCreateFunction(&CreateD3D12WindowManager); }
} g_registerD3D12WindowManager;

// The few formats the display settings can ask for, mapped explicitly (the library's numbering is not DXGI's
// beyond the first formats, so no identity cast).
DXGI_FORMAT ToDXGIFormat(LxGPUResourceFormat format)
{
    switch (format)
    {
    case LX_FORMAT_R8G8B8A8_UNORM:
        return DXGI_FORMAT_R8G8B8A8_UNORM;
    case LX_FORMAT_R8G8B8A8_UNORM_SRGB:
        return DXGI_FORMAT_R8G8B8A8_UNORM_SRGB;
    case LX_FORMAT_R10G10B10A2_UNORM:
        return DXGI_FORMAT_R10G10B10A2_UNORM;
    case LX_FORMAT_R16G16B16A16_FLOAT:
        return DXGI_FORMAT_R16G16B16A16_FLOAT;
    case LX_FORMAT_D16_UNORM:
        return DXGI_FORMAT_D16_UNORM;
    case LX_FORMAT_D24_UNORM_S8_UINT:
        return DXGI_FORMAT_D24_UNORM_S8_UINT;
    case LX_FORMAT_D32_FLOAT:
        return DXGI_FORMAT_D32_FLOAT;
    case LX_FORMAT_D32_FLOAT_S8X24_UINT:
        return DXGI_FORMAT_D32_FLOAT_S8X24_UINT;
    default:
        return DXGI_FORMAT_UNKNOWN;
    }
}

D3D_FEATURE_LEVEL ToD3DFeatureLevel(LxDisplaySettings::FeatureLevel level)
{
    switch (level)
    {
    case LxDisplaySettings::FEATURE_LEVEL_12_1:
        return D3D_FEATURE_LEVEL_12_1;
    case LxDisplaySettings::FEATURE_LEVEL_12_0:
        return D3D_FEATURE_LEVEL_12_0;
    case LxDisplaySettings::FEATURE_LEVEL_10_1:
        return D3D_FEATURE_LEVEL_10_1;
    case LxDisplaySettings::FEATURE_LEVEL_10_0:
        return D3D_FEATURE_LEVEL_10_0;
    case LxDisplaySettings::FEATURE_LEVEL_11_0:
    default:
        return D3D_FEATURE_LEVEL_11_0;
    }
}

// The adapter description narrowed to 8-bit characters (anything outside Latin-1 becomes '?').
LxString Narrow(const WCHAR* text)
{
    LxString result;
    for (unsigned i = 0; i < 128 && text[i] != 0; ++i)
        result += text[i] < 256 ? char(text[i]) : '?';
    return result;
}
} // namespace

LxD3D12WindowManager::LxD3D12WindowManager() = default;

LxD3D12WindowManager::~LxD3D12WindowManager() = default;

bool LxD3D12WindowManager::IsD3D12Supported()
{
    ComPtr<ID3D12Device> device;
    return SUCCEEDED(D3D12CreateDevice(nullptr, D3D_FEATURE_LEVEL_11_0, IID_PPV_ARGS(&device)));
}

bool LxD3D12WindowManager::LogGPUDescription()
{
    ComPtr<IDXGIFactory> factory;
    ComPtr<IDXGIAdapter> adapter;
    DXGI_ADAPTER_DESC desc = {};
    if (FAILED(CreateDXGIFactory(IID_PPV_ARGS(&factory))) || FAILED(factory->EnumAdapters(0, &adapter)) ||
        FAILED(adapter->GetDesc(&desc)))
        return false;
    LxString name = Narrow(desc.Description);
    name.Trim();
    LX_MESSAGE("GPU Description: %s", name.c_str());
    LX_MESSAGE("VendorId: 0x%x", unsigned(desc.VendorId));
    LX_MESSAGE("DeviceId: 0x%x", unsigned(desc.DeviceId));
    LX_MESSAGE("SubSysID: 0x%x", unsigned(desc.SubSysId));
    return true;
}

bool LxD3D12WindowManager::InitializeRenderManager(const LxD3D12RenderManager::CreationDesc& desc)
{
    return LxD3D12RenderManager::Init(desc);
}

bool LxD3D12WindowManager::CreateMainWindow(const LxDisplaySettings& settings)
{
    // Once per process, at the first creation: the log opens with the machine's graphics processor.
    static bool s_bGPUDescribed = false;
    if (!s_bGPUDescribed)
        s_bGPUDescribed = LogGPUDescription();
    m_bWindowCreationFailed = false;
    m_nAdapterIndex = -1;

    // 1. Formats first: a request that cannot be met fails before anything is made.
    LxGPUResourceFormat bufferFormat, viewFormat, depthFormat;
    if (!settings.GetBackBufferFormats(&bufferFormat, &viewFormat) || !settings.GetDepthStencilFormat(&depthFormat))
        return false;

    // 2. The window.
    if (!CreateWin32Window(settings))
        return false;

    // 3. Every adapter, logged.
    ComPtr<IDXGIFactory1> factory;
    if (FAILED(CreateDXGIFactory1(IID_PPV_ARGS(&factory))))
    {
        LX_ERROR("LxD3D12WindowManager::CreateMainWindow.  CreateDXGIFactory1 failed.");
        DestroyWin32Window();
        return false;
    }
    ComPtr<IDXGIAdapter> chosen;
    ComPtr<IDXGIAdapter> adapter;
    for (UINT i = 0; factory->EnumAdapters(i, &adapter) != DXGI_ERROR_NOT_FOUND; ++i)
    {
        DXGI_ADAPTER_DESC desc = {};
        if (adapter == nullptr || FAILED(adapter->GetDesc(&desc)))
        {
            LX_ERROR("Error finding adapter descriptor");
            DestroyWin32Window();
            return false;
        }
        LX_MESSAGE("Found video adapter %s (Device ID: %d)", Narrow(desc.Description).c_str(), int(desc.DeviceId));
        // 4. The adapter at the settings' index.
        if (i == settings.adapterIndex)
        {
            LX_MESSAGE("Using adapter %s (Device ID: %d)", Narrow(desc.Description).c_str(), int(desc.DeviceId));
            chosen = adapter;
            m_nAdapterIndex = int(i);
        }
        adapter.Reset();
    }
    if (chosen == nullptr)
        LX_WARNING("Could not find video adapter at index %d. Using default adapter.", int(settings.adapterIndex));

    // 5.-6. Feature level and swap chain.
    LxD3D12RenderManager::CreationDesc desc;
    desc.factory = factory.Get();
    // The software driver is an adapter of its own: the render manager picks it when no adapter is given.
    desc.adapter = settings.softwareDriver ? nullptr : chosen.Get();
    desc.driverType = settings.softwareDriver ? D3D_DRIVER_TYPE_WARP : D3D_DRIVER_TYPE_HARDWARE;
    desc.minFeatureLevel = ToD3DFeatureLevel(settings.GetMinimumFeatureLevel());
    DXGI_SWAP_CHAIN_DESC& sc = desc.swapChainDesc;
    sc.BufferDesc.Width = m_nWidth;
    sc.BufferDesc.Height = m_nHeight;
    sc.BufferDesc.RefreshRate.Numerator = settings.refreshRateNumerator;
    sc.BufferDesc.RefreshRate.Denominator = 1;
    sc.BufferDesc.Format = ToDXGIFormat(bufferFormat);
    sc.BufferUsage = DXGI_USAGE_RENDER_TARGET_OUTPUT;
    if (settings.unorderedAccessBackBuffer)
        sc.BufferUsage |= DXGI_USAGE_UNORDERED_ACCESS;
    sc.BufferCount = settings.backBufferCount;
    sc.OutputWindow = m_hWnd;
    sc.Windowed = TRUE; // full screen is entered by the render manager, after creation
    sc.SwapEffect = DXGI_SWAP_EFFECT_FLIP_DISCARD;
    sc.Flags = DXGI_SWAP_CHAIN_FLAG_ALLOW_MODE_SWITCH;
    sc.SampleDesc.Count = 1;
    sc.SampleDesc.Quality = 0;
    if (settings.multisampleCount > 1)
        LX_WARNING("MSAA swap chain not supported in D3D12.  Application must create offscreen render target and "
                   "resolve.");
    desc.backBufferViewFormat = ToDXGIFormat(viewFormat);
    desc.depthStencilFormat = ToDXGIFormat(depthFormat);
    desc.fullScreen = settings.fullScreen;
    desc.uploadHeapSize = (unsigned long long)settings.uploadHeapSizeMB << 20;
    desc.renderTargetDescriptors = settings.renderTargetDescriptors;
    desc.depthStencilDescriptors = settings.depthStencilDescriptors;
    desc.shaderResourceDescriptors = settings.shaderResourceDescriptors + settings.unorderedAccessDescriptors;
    desc.samplerDescriptors = settings.samplerDescriptors;

    // 7. The device, queue and swap chain.
    m_creationDesc = desc;
    const bool ok = InitializeRenderManager(desc);
    // The factory and adapter live only through the call (the render manager keeps its own references).
    m_creationDesc.factory = nullptr;
    m_creationDesc.adapter = nullptr;
    if (!ok)
    {
        DestroyWin32Window();
        return false;
    }
    return true;
}
