// Small Direct3D 12 helpers for the Windows-lane tests: the few description builders that d3dx12.h would give
// (mingw-w64 ships no d3dx12.h), a shader compile wrapper, and a shared device with one direct queue and a fence.
// Test code only: failures come back as HRESULTs or null pointers for the caller to assert on, nothing throws.
// Not thread-safe: the shared context belongs to the test thread.
#pragma once

#include "RenderManager/D3D12/LxD3D12Barriers.h"

#include <d3d12.h>
#include <d3dcompiler.h>
#include <dxgi1_4.h>
#include <windows.h>
#include <wrl/client.h>

#include <cstdint>
#include <string>

namespace LxD3D12Test
{
using Microsoft::WRL::ComPtr;

// "0x887A0005" style text for assertion messages.
std::string HrText(HRESULT hr);

// A committed buffer in the given heap (upload buffers start in GENERIC_READ, readback ones in COPY_DEST).
ComPtr<ID3D12Resource> CreateBuffer(ID3D12Device* device, D3D12_HEAP_TYPE type, UINT64 size);
// A committed one-level 2D texture in the default heap, created in `state` with `clear` as its optimised clear value.
HRESULT CreateTexture2D(ID3D12Device* device, DXGI_FORMAT format, UINT width, UINT height, D3D12_RESOURCE_FLAGS flags,
                        D3D12_RESOURCE_STATES state, const D3D12_CLEAR_VALUE* clear, ComPtr<ID3D12Resource>* texture);
// A heap of `count` descriptors, not shader-visible.
HRESULT CreateDescriptorHeap(ID3D12Device* device, D3D12_DESCRIPTOR_HEAP_TYPE type, UINT count,
                             ComPtr<ID3D12DescriptorHeap>* heap);

// D3DCompile with strictness on. On failure returns null and puts the compiler's messages in *errors (the
// messages of a successful compile, warnings, land there too).
ComPtr<ID3DBlob> CompileShader(const std::string& source, const char* entry, const char* target, std::string* errors,
                               const char* sourceName = "LxTestShader.hlsl");

// A DXGI factory, a device on the default adapter, a direct queue and a fence to wait on it.
struct Context
{
    ComPtr<IDXGIFactory4> factory;
    ComPtr<ID3D12Device> device;
    ComPtr<ID3D12CommandQueue> queue;
    ComPtr<ID3D12Fence> fence;
    UINT64 fenceValue = 0;
    HANDLE fenceEvent = nullptr;

    Context() = default;
    Context(const Context&) = delete;
    Context& operator=(const Context&) = delete;
    ~Context();

    // Creates everything at the given feature level; false (with the failing call in *why) if any step fails.
    bool Create(D3D_FEATURE_LEVEL level, std::string* why);
    // Signals the fence on the queue and blocks until the GPU reaches it. False on a failed signal or a wait
    // that does not finish within timeoutMs.
    bool WaitForGpu(DWORD timeoutMs = 10000);
    // Closes nothing: executes an already closed list and waits for it.
    bool ExecuteAndWait(ID3D12GraphicsCommandList* list, DWORD timeoutMs = 10000);
};

// One context per process at feature level 11_0, created on first use (device creation costs tens of
// milliseconds under Wine). Null when creation failed; *why then says which call failed.
Context* SharedContext(std::string* why = nullptr);
} // namespace LxD3D12Test

// --- a window, a render manager description, pixels and pipelines for the tests that draw through the managers ---
#include "Common/LxImageData2D.h"
#include "RenderManager/D3D12/LxD3D12RenderManager.h"

#include <array>
#include <vector>

namespace LxD3D12Test
{
// A shown top-level window whose client area is width x height, for a swap chain. The class is registered under
// `className` and unregistered with the window.
class TestWindow
{
public:
    TestWindow() = default;
    TestWindow(const TestWindow&) = delete;
    TestWindow& operator=(const TestWindow&) = delete;
    ~TestWindow();
    bool Create(const wchar_t* className, UINT width, UINT height);
    HWND Handle() const { return m_hwnd; }

private:
    HINSTANCE m_instance = nullptr;
    HWND m_hwnd = nullptr;
    const wchar_t* m_className = nullptr;
};

// Two RGBA8 back buffers of size x size on `window`, `frames` in flight, small descriptor heaps (64 CBV/SRV/UAV).
LxD3D12RenderManager::CreationDesc MakeRenderManagerDesc(HWND window, UINT size, unsigned frames = 2);

// A pixel of a read-back image in 0..255 steps, and its text for assertion messages.
typedef std::array<int, 4> Rgba;
Rgba PixelAt(const LxImageData2D& image, unsigned x, unsigned y);
std::string RgbaText(const Rgba& c);

// Serialises and creates a root signature; null on failure (the serialiser's messages in *errors when given).
ComPtr<ID3D12RootSignature> CreateRootSignature(ID3D12Device* device, const D3D12_ROOT_SIGNATURE_DESC& desc,
                                                std::string* errors = nullptr);
// A solid, uncull'd, single-target triangle pipeline description with depth off (the caller sets what differs).
D3D12_GRAPHICS_PIPELINE_STATE_DESC TrianglePipelineDesc(ID3D12RootSignature* root, ID3DBlob* vs, ID3DBlob* ps,
                                                        DXGI_FORMAT target);
} // namespace LxD3D12Test

namespace LxD3D12Test
{
// A committed buffer in the default heap, created in `state` (copy destinations for data checked later).
ComPtr<ID3D12Resource> CreateDefaultBuffer(ID3D12Device* device, UINT64 size, D3D12_RESOURCE_STATES state);
} // namespace LxD3D12Test

#include "Common/LxCountedPtr.h"

class LxD3D12GPUResourceManager;
#include "EffectManager/LxEffect.h"

namespace LxD3D12Test
{
// The library's managers on one window, for a whole test executable (device and heap creation dominate a test's
// time under Wine, so make one in SetUpTestSuite and destroy it in TearDownTestSuite): the Direct3D 12 render
// manager on a size x size window, the resource manager on its device, and the Direct3D 12 effect manager with
// `effectFolders` on its search path and their "default.fx" loaded as the default effect. Create answers false with
// the reason in *why; Destroy shuts every manager down (the object and camera managers too, which hold effects).
class ManagerStack
{
public:
    ManagerStack() = default;
    ManagerStack(const ManagerStack&) = delete;
    ManagerStack& operator=(const ManagerStack&) = delete;
    ~ManagerStack() { Destroy(); }

    bool Create(const wchar_t* windowClass, UINT size, const std::vector<std::string>& effectFolders, std::string* why);
    void Destroy();

    LxD3D12RenderManager* renderManager = nullptr;
    LxD3D12GPUResourceManager* resourceManager = nullptr;
    LxCountedPtr<LxEffect> defaultEffect;

private:
    TestWindow m_window;
    bool m_bCreated = false;
};
} // namespace LxD3D12Test
