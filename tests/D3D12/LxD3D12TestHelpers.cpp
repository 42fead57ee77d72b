#include "D3D12/LxD3D12TestHelpers.h"

#include "EffectManager/D3D12/LxD3D12EffectManager.h"
#include "EffectManager/LxEffect.h"
#include "GPUResourceManager/D3D12/LxD3D12GPUResourceManager.h"
#include "ObjectManager/LxCameraManager.h"
#include "ObjectManager/LxObjectManager.h"

#include <cstdio>
#include <memory>

namespace LxD3D12Test
{
std::string HrText(HRESULT hr)
{
    char text[16];
    std::snprintf(text, sizeof(text), "0x%08lX", static_cast<unsigned long>(hr));
    return text;
}

namespace
{
HRESULT CreateCommitted(ID3D12Device* device, D3D12_HEAP_TYPE type, const D3D12_RESOURCE_DESC& desc,
                        D3D12_RESOURCE_STATES state, const D3D12_CLEAR_VALUE* clear, ComPtr<ID3D12Resource>* resource)
{
    D3D12_HEAP_PROPERTIES heap = {}; // page property and memory pool: unknown, as a typed heap needs
    heap.Type = type;
    heap.CreationNodeMask = heap.VisibleNodeMask = 1;
    return device->CreateCommittedResource(&heap, D3D12_HEAP_FLAG_NONE, &desc, state, clear,
                                           IID_PPV_ARGS(resource->ReleaseAndGetAddressOf()));
}

D3D12_RESOURCE_DESC ResourceDesc(D3D12_RESOURCE_DIMENSION dimension, DXGI_FORMAT format, UINT64 width, UINT height,
                                 D3D12_TEXTURE_LAYOUT layout, D3D12_RESOURCE_FLAGS flags)
{
    D3D12_RESOURCE_DESC desc = {};
    desc.Dimension = dimension;
    desc.Width = width;
    desc.Height = height;
    desc.DepthOrArraySize = desc.MipLevels = desc.SampleDesc.Count = 1;
    desc.Format = format;
    desc.Layout = layout;
    desc.Flags = flags;
    return desc;
}
} // namespace

ComPtr<ID3D12Resource> CreateBuffer(ID3D12Device* device, D3D12_HEAP_TYPE type, UINT64 size)
{
    const D3D12_RESOURCE_STATES state =
        type == D3D12_HEAP_TYPE_READBACK ? D3D12_RESOURCE_STATE_COPY_DEST : D3D12_RESOURCE_STATE_GENERIC_READ;
    ComPtr<ID3D12Resource> buffer;
    const D3D12_RESOURCE_DESC desc = ResourceDesc(D3D12_RESOURCE_DIMENSION_BUFFER, DXGI_FORMAT_UNKNOWN, size, 1,
                                                  D3D12_TEXTURE_LAYOUT_ROW_MAJOR, D3D12_RESOURCE_FLAG_NONE);
    return SUCCEEDED(CreateCommitted(device, type, desc, state, nullptr, &buffer)) ? buffer : nullptr;
}

HRESULT CreateTexture2D(ID3D12Device* device, DXGI_FORMAT format, UINT width, UINT height, D3D12_RESOURCE_FLAGS flags,
                        D3D12_RESOURCE_STATES state, const D3D12_CLEAR_VALUE* clear, ComPtr<ID3D12Resource>* texture)
{
    const D3D12_RESOURCE_DESC desc =
        ResourceDesc(D3D12_RESOURCE_DIMENSION_TEXTURE2D, format, width, height, D3D12_TEXTURE_LAYOUT_UNKNOWN, flags);
    return CreateCommitted(device, D3D12_HEAP_TYPE_DEFAULT, desc, state, clear, texture);
}

HRESULT CreateDescriptorHeap(ID3D12Device* device, D3D12_DESCRIPTOR_HEAP_TYPE type, UINT count,
                             ComPtr<ID3D12DescriptorHeap>* heap)
{
    D3D12_DESCRIPTOR_HEAP_DESC desc = {};
    desc.Type = type;
    desc.NumDescriptors = count;
    return device->CreateDescriptorHeap(&desc, IID_PPV_ARGS(heap->ReleaseAndGetAddressOf()));
}

ComPtr<ID3DBlob> CompileShader(const std::string& source, const char* entry, const char* target, std::string* errors,
                               const char* sourceName)
{
    ComPtr<ID3DBlob> code;
    ComPtr<ID3DBlob> messages;
    const HRESULT hr = D3DCompile(source.data(), source.size(), sourceName, nullptr, nullptr, entry, target,
                                  D3DCOMPILE_ENABLE_STRICTNESS, 0, &code, &messages);
    if (errors)
    {
        errors->clear();
        if (messages)
            errors->assign(static_cast<const char*>(messages->GetBufferPointer()), messages->GetBufferSize());
        if (FAILED(hr) && errors->empty())
            *errors = "D3DCompile failed with " + HrText(hr) + " and no message";
    }
    if (FAILED(hr))
        return nullptr;
    return code;
}

Context::~Context()
{
    if (fence && queue)
        WaitForGpu(); // nothing the queue still reads may be released under it
    if (fenceEvent)
        CloseHandle(fenceEvent);
}

bool Context::Create(D3D_FEATURE_LEVEL level, std::string* why)
{
    auto fail = [why](const char* call, HRESULT hr)
    {
        if (why)
            *why = std::string(call) + " failed with " + HrText(hr);
        return false;
    };
    HRESULT hr = CreateDXGIFactory2(0, IID_PPV_ARGS(&factory));
    if (FAILED(hr))
        return fail("CreateDXGIFactory2", hr);
    ComPtr<IDXGIAdapter1> adapter;
    hr = factory->EnumAdapters1(0, &adapter);
    if (FAILED(hr))
        return fail("IDXGIFactory4::EnumAdapters1", hr);
    hr = D3D12CreateDevice(adapter.Get(), level, IID_PPV_ARGS(&device));
    if (FAILED(hr))
        return fail("D3D12CreateDevice", hr);
    D3D12_COMMAND_QUEUE_DESC queueDesc = {};
    queueDesc.Type = D3D12_COMMAND_LIST_TYPE_DIRECT;
    hr = device->CreateCommandQueue(&queueDesc, IID_PPV_ARGS(&queue));
    if (FAILED(hr))
        return fail("ID3D12Device::CreateCommandQueue", hr);
    hr = device->CreateFence(0, D3D12_FENCE_FLAG_NONE, IID_PPV_ARGS(&fence));
    if (FAILED(hr))
        return fail("ID3D12Device::CreateFence", hr);
    fenceEvent = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    if (!fenceEvent)
        return fail("CreateEventW", HRESULT_FROM_WIN32(GetLastError()));
    return true;
}

bool Context::WaitForGpu(DWORD timeoutMs)
{
    const UINT64 value = ++fenceValue;
    if (FAILED(queue->Signal(fence.Get(), value)))
        return false;
    if (fence->GetCompletedValue() >= value)
        return true;
    if (FAILED(fence->SetEventOnCompletion(value, fenceEvent)))
        return false;
    return WaitForSingleObject(fenceEvent, timeoutMs) == WAIT_OBJECT_0 && fence->GetCompletedValue() >= value;
}

bool Context::ExecuteAndWait(ID3D12GraphicsCommandList* list, DWORD timeoutMs)
{
    ID3D12CommandList* lists[] = {list};
    queue->ExecuteCommandLists(1, lists);
    return WaitForGpu(timeoutMs);
}

Context* SharedContext(std::string* why)
{
    static std::unique_ptr<Context> s_context;
    static std::string s_why;
    static bool s_tried = false;
    if (!s_tried)
    {
        s_tried = true;
        auto context = std::make_unique<Context>();
        if (context->Create(D3D_FEATURE_LEVEL_11_0, &s_why))
            s_context = std::move(context);
    }
    if (why)
        *why = s_why;
    return s_context.get();
}
} // namespace LxD3D12Test

#include <climits>
#include <cmath>

namespace LxD3D12Test
{
TestWindow::~TestWindow()
{
    if (m_hwnd)
        DestroyWindow(m_hwnd);
    if (m_className)
        UnregisterClassW(m_className, m_instance);
}

bool TestWindow::Create(const wchar_t* className, UINT width, UINT height)
{
    m_instance = GetModuleHandleW(nullptr);
    WNDCLASSEXW wc = {};
    wc.cbSize = sizeof(wc);
    wc.lpfnWndProc = DefWindowProcW;
    wc.hInstance = m_instance;
    wc.lpszClassName = className;
    if (RegisterClassExW(&wc) != 0)
        m_className = className;
    RECT rect = {0, 0, LONG(width), LONG(height)};
    AdjustWindowRect(&rect, WS_OVERLAPPEDWINDOW, FALSE);
    m_hwnd = CreateWindowExW(0, className, L"Lumex test", WS_OVERLAPPEDWINDOW, CW_USEDEFAULT, CW_USEDEFAULT,
                             rect.right - rect.left, rect.bottom - rect.top, nullptr, nullptr, m_instance, nullptr);
    if (m_hwnd)
        ShowWindow(m_hwnd, SW_SHOWNOACTIVATE);
    return m_hwnd != nullptr;
}

LxD3D12RenderManager::CreationDesc MakeRenderManagerDesc(HWND window, UINT size, unsigned frames)
{
    LxD3D12RenderManager::CreationDesc desc;
    DXGI_SWAP_CHAIN_DESC& sc = desc.swapChainDesc;
    sc.BufferDesc.Width = size;
    sc.BufferDesc.Height = size;
    sc.BufferDesc.Format = DXGI_FORMAT_R8G8B8A8_UNORM;
    sc.SampleDesc.Count = 1;
    sc.BufferUsage = DXGI_USAGE_RENDER_TARGET_OUTPUT;
    sc.BufferCount = 2;
    sc.OutputWindow = window;
    sc.Windowed = TRUE;
    sc.SwapEffect = DXGI_SWAP_EFFECT_FLIP_DISCARD;
    desc.framesInFlight = frames;
    desc.renderTargetDescriptors = 16;
    desc.depthStencilDescriptors = 4;
    desc.shaderResourceDescriptors = 64;
    desc.samplerDescriptors = 16;
    return desc;
}

Rgba PixelAt(const LxImageData2D& image, unsigned x, unsigned y)
{
    const double* p = image.GetPixel(x, y);
    return {int(std::lround(p[0] * 255)), int(std::lround(p[1] * 255)), int(std::lround(p[2] * 255)),
            int(std::lround(p[3] * 255))};
}

std::string RgbaText(const Rgba& c)
{
    return "(" + std::to_string(c[0]) + ", " + std::to_string(c[1]) + ", " + std::to_string(c[2]) + ", " +
           std::to_string(c[3]) + ")";
}

ComPtr<ID3D12RootSignature> CreateRootSignature(ID3D12Device* device, const D3D12_ROOT_SIGNATURE_DESC& desc,
                                                std::string* errors)
{
    ComPtr<ID3DBlob> blob, messages;
    ComPtr<ID3D12RootSignature> root;
    if (FAILED(D3D12SerializeRootSignature(&desc, D3D_ROOT_SIGNATURE_VERSION_1_0, &blob, &messages)))
    {
        if (errors && messages)
            *errors = std::string(static_cast<const char*>(messages->GetBufferPointer()), messages->GetBufferSize());
        return nullptr;
    }
    if (FAILED(device->CreateRootSignature(0, blob->GetBufferPointer(), blob->GetBufferSize(), IID_PPV_ARGS(&root))))
        return nullptr;
    return root;
}

D3D12_GRAPHICS_PIPELINE_STATE_DESC TrianglePipelineDesc(ID3D12RootSignature* root, ID3DBlob* vs, ID3DBlob* ps,
                                                        DXGI_FORMAT target)
{
    D3D12_GRAPHICS_PIPELINE_STATE_DESC desc = {};
    desc.pRootSignature = root;
    desc.VS = {vs->GetBufferPointer(), vs->GetBufferSize()};
    desc.PS = {ps->GetBufferPointer(), ps->GetBufferSize()};
    desc.BlendState.RenderTarget[0].RenderTargetWriteMask = D3D12_COLOR_WRITE_ENABLE_ALL;
    desc.SampleMask = UINT_MAX;
    desc.RasterizerState.FillMode = D3D12_FILL_MODE_SOLID;
    desc.RasterizerState.CullMode = D3D12_CULL_MODE_NONE;
    desc.RasterizerState.DepthClipEnable = TRUE;
    desc.PrimitiveTopologyType = D3D12_PRIMITIVE_TOPOLOGY_TYPE_TRIANGLE;
    desc.NumRenderTargets = 1;
    desc.RTVFormats[0] = target;
    desc.SampleDesc.Count = 1;
    return desc;
}
} // namespace LxD3D12Test

namespace LxD3D12Test
{
ComPtr<ID3D12Resource> CreateDefaultBuffer(ID3D12Device* device, UINT64 size, D3D12_RESOURCE_STATES state)
{
    const D3D12_RESOURCE_DESC desc = ResourceDesc(D3D12_RESOURCE_DIMENSION_BUFFER, DXGI_FORMAT_UNKNOWN, size, 1,
                                                  D3D12_TEXTURE_LAYOUT_ROW_MAJOR, D3D12_RESOURCE_FLAG_NONE);
    ComPtr<ID3D12Resource> buffer;
    return SUCCEEDED(CreateCommitted(device, D3D12_HEAP_TYPE_DEFAULT, desc, state, nullptr, &buffer)) ? buffer
                                                                                                      : nullptr;
}
} // namespace LxD3D12Test

namespace LxD3D12Test
{
bool ManagerStack::Create(const wchar_t* windowClass, UINT size, const std::vector<std::string>& effectFolders,
                          std::string* why)
{
    m_bCreated = true;
    if (!m_window.Create(windowClass, size, size))
    {
        *why = "window creation failed";
        return false;
    }
    if (!LxD3D12RenderManager::Init(MakeRenderManagerDesc(m_window.Handle(), size)))
    {
        *why = "render manager creation failed";
        return false;
    }
    renderManager = LxD3D12RenderManager::GetD3D12Ptr();
    LxD3D12GPUResourceManager::RegisterCreateFunction();
    resourceManager = dynamic_cast<LxD3D12GPUResourceManager*>(LxGPUResourceManager::GetPtr());
    if (!resourceManager || !resourceManager->Initialize(8 * 1024 * 1024, 64))
    {
        resourceManager = nullptr;
        *why = "resource manager creation failed";
        return false;
    }
    LxD3D12EffectManager::RegisterCreateFunction();
    LxEffectManager& effects = LxEffectManager::GetRef();
    for (const std::string& folder : effectFolders)
        effects.AddSearchPath(folder.c_str());
    defaultEffect = effects.LoadEffect("default.fx", LxEffectManager::LOAD_DEFAULT_EFFECT);
    if (!defaultEffect)
    {
        *why = "the default effect did not load";
        return false;
    }
    effects.SetDefaultEffect(defaultEffect);
    return true;
}

void ManagerStack::Destroy()
{
    if (!m_bCreated)
        return;
    m_bCreated = false;
    defaultEffect = LxCountedPtr<LxEffect>();
    LxObjectManager::ShutDown();
    LxCameraManager::ShutDown();
    LxEffectManager::ShutDown();
    LxGPUResourceManager::ShutDown();
    LxGPUResourceManager::SetCreateFunction(nullptr);
    LxRenderManager::ShutDown();
    LxRenderManager::SetCreateFunction(nullptr);
    renderManager = nullptr;
    resourceManager = nullptr;
}
} // namespace LxD3D12Test
