// Canary for the Windows lane's window system: a Win32 window on the session's X display and a flip-discard
// swap chain that presents frames, the path every demo's frame loop takes.
#include "D3D12/LxD3D12TestHelpers.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using LxD3D12Test::ComPtr;

namespace
{
constexpr UINT kWidth = 320;
constexpr UINT kHeight = 240;
constexpr UINT kBufferCount = 3;
constexpr UINT kFrames = 7; // more than two rounds through the buffers
const wchar_t kWindowClass[] = L"LxD3D12CanaryWindow";

// Owns the window and its class; both go away with it, whatever the test left behind.
class CanaryWindow
{
public:
    bool Create()
    {
        m_instance = GetModuleHandleW(nullptr);
        WNDCLASSEXW wc = {};
        wc.cbSize = sizeof(wc);
        wc.lpfnWndProc = DefWindowProcW;
        wc.hInstance = m_instance;
        wc.hCursor = LoadCursorW(nullptr, MAKEINTRESOURCEW(32512)); // IDC_ARROW, without the A/W macro games
        wc.lpszClassName = kWindowClass;
        if (!RegisterClassExW(&wc))
            return false;
        m_registered = true;
        RECT rect = {0, 0, LONG(kWidth), LONG(kHeight)};
        AdjustWindowRect(&rect, WS_OVERLAPPEDWINDOW, FALSE);
        m_hwnd =
            CreateWindowExW(0, kWindowClass, L"Lumex D3D12 canary", WS_OVERLAPPEDWINDOW, CW_USEDEFAULT, CW_USEDEFAULT,
                            rect.right - rect.left, rect.bottom - rect.top, nullptr, nullptr, m_instance, nullptr);
        if (!m_hwnd)
            return false;
        ShowWindow(m_hwnd, SW_SHOWNOACTIVATE);
        UpdateWindow(m_hwnd);
        return true;
    }

    // Drains the queue, as a frame loop does between frames.
    void PumpMessages()
    {
        MSG msg;
        while (PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE))
        {
            TranslateMessage(&msg);
            DispatchMessageW(&msg);
        }
    }

    HWND Handle() const { return m_hwnd; }

    ~CanaryWindow()
    {
        if (m_hwnd)
            DestroyWindow(m_hwnd);
        if (m_registered)
            UnregisterClassW(kWindowClass, m_instance);
    }

private:
    HINSTANCE m_instance = nullptr;
    HWND m_hwnd = nullptr;
    bool m_registered = false;
};

TEST(D3D12CanaryPresent, PresentsFramesThroughFlipDiscardSwapChain)
{
    std::string why;
    LxD3D12Test::Context* context = LxD3D12Test::SharedContext(&why);
    ASSERT_NE(context, nullptr) << why;
    ID3D12Device* device = context->device.Get();

    CanaryWindow window;
    ASSERT_TRUE(window.Create()) << "window creation failed with error " << GetLastError();
    RECT client = {};
    ASSERT_TRUE(GetClientRect(window.Handle(), &client));
    EXPECT_EQ(client.right - client.left, LONG(kWidth));
    EXPECT_EQ(client.bottom - client.top, LONG(kHeight));

    DXGI_SWAP_CHAIN_DESC1 desc = {};
    desc.Width = kWidth;
    desc.Height = kHeight;
    desc.Format = DXGI_FORMAT_R8G8B8A8_UNORM;
    desc.SampleDesc.Count = 1;
    desc.BufferUsage = DXGI_USAGE_RENDER_TARGET_OUTPUT;
    desc.BufferCount = kBufferCount;
    desc.Scaling = DXGI_SCALING_STRETCH;
    desc.SwapEffect = DXGI_SWAP_EFFECT_FLIP_DISCARD;
    desc.AlphaMode = DXGI_ALPHA_MODE_UNSPECIFIED;
    ComPtr<IDXGISwapChain1> swapChain1;
    // For Direct3D 12 the swap chain is made on the queue that presents, not on the device.
    ASSERT_HRESULT_SUCCEEDED(context->factory->CreateSwapChainForHwnd(context->queue.Get(), window.Handle(), &desc,
                                                                      nullptr, nullptr, &swapChain1));
    ComPtr<IDXGISwapChain3> swapChain;
    ASSERT_HRESULT_SUCCEEDED(swapChain1.As(&swapChain));
    EXPECT_HRESULT_SUCCEEDED(context->factory->MakeWindowAssociation(window.Handle(), DXGI_MWA_NO_ALT_ENTER));

    DXGI_SWAP_CHAIN_DESC1 got = {};
    ASSERT_HRESULT_SUCCEEDED(swapChain->GetDesc1(&got));
    EXPECT_EQ(got.Width, kWidth);
    EXPECT_EQ(got.Height, kHeight);
    EXPECT_EQ(got.BufferCount, kBufferCount);
    EXPECT_EQ(got.SwapEffect, DXGI_SWAP_EFFECT_FLIP_DISCARD);

    ComPtr<ID3D12DescriptorHeap> rtvHeap;
    ASSERT_HRESULT_SUCCEEDED(
        LxD3D12Test::CreateDescriptorHeap(device, D3D12_DESCRIPTOR_HEAP_TYPE_RTV, kBufferCount, &rtvHeap));
    const UINT rtvStride = device->GetDescriptorHandleIncrementSize(D3D12_DESCRIPTOR_HEAP_TYPE_RTV);
    std::vector<ComPtr<ID3D12Resource>> buffers(kBufferCount);
    for (UINT i = 0; i < kBufferCount; ++i)
    {
        ASSERT_HRESULT_SUCCEEDED(swapChain->GetBuffer(i, IID_PPV_ARGS(&buffers[i])));
        const D3D12_RESOURCE_DESC bufferDesc = buffers[i]->GetDesc();
        EXPECT_EQ(bufferDesc.Width, kWidth);
        EXPECT_EQ(bufferDesc.Height, kHeight);
        D3D12_CPU_DESCRIPTOR_HANDLE rtv = rtvHeap->GetCPUDescriptorHandleForHeapStart();
        rtv.ptr += SIZE_T(i) * rtvStride;
        device->CreateRenderTargetView(buffers[i].Get(), nullptr, rtv);
    }

    ComPtr<ID3D12CommandAllocator> allocator;
    ASSERT_HRESULT_SUCCEEDED(device->CreateCommandAllocator(D3D12_COMMAND_LIST_TYPE_DIRECT, IID_PPV_ARGS(&allocator)));
    ComPtr<ID3D12GraphicsCommandList> list;
    ASSERT_HRESULT_SUCCEEDED(
        device->CreateCommandList(0, D3D12_COMMAND_LIST_TYPE_DIRECT, allocator.Get(), nullptr, IID_PPV_ARGS(&list)));
    ASSERT_HRESULT_SUCCEEDED(list->Close());

    UINT index = swapChain->GetCurrentBackBufferIndex();
    ASSERT_LT(index, kBufferCount);
    const UINT first = index;
    for (UINT frame = 0; frame < kFrames; ++frame)
    {
        SCOPED_TRACE("frame " + std::to_string(frame));
        window.PumpMessages();
        // Each frame waits for the last, so the allocator and the back buffer are free to reuse.
        ASSERT_HRESULT_SUCCEEDED(allocator->Reset());
        ASSERT_HRESULT_SUCCEEDED(list->Reset(allocator.Get(), nullptr));
        D3D12_CPU_DESCRIPTOR_HANDLE rtv = rtvHeap->GetCPUDescriptorHandleForHeapStart();
        rtv.ptr += SIZE_T(index) * rtvStride;
        const D3D12_RESOURCE_BARRIER toTarget = LxD3D12TransitionBarrier(
            buffers[index].Get(), D3D12_RESOURCE_STATE_PRESENT, D3D12_RESOURCE_STATE_RENDER_TARGET);
        list->ResourceBarrier(1, &toTarget);
        const float clear[4] = {float(frame) / kFrames, 0.3f, 0.6f, 1.0f};
        list->ClearRenderTargetView(rtv, clear, 0, nullptr);
        const D3D12_RESOURCE_BARRIER toPresent = LxD3D12TransitionBarrier(
            buffers[index].Get(), D3D12_RESOURCE_STATE_RENDER_TARGET, D3D12_RESOURCE_STATE_PRESENT);
        list->ResourceBarrier(1, &toPresent);
        ASSERT_HRESULT_SUCCEEDED(list->Close());
        ID3D12CommandList* lists[] = {list.Get()};
        context->queue->ExecuteCommandLists(1, lists);

        const HRESULT presented = swapChain->Present(0, 0);
        ASSERT_EQ(presented, S_OK) << LxD3D12Test::HrText(presented);
        ASSERT_TRUE(context->WaitForGpu());

        // Flip-discard hands out the buffers in turn.
        const UINT next = swapChain->GetCurrentBackBufferIndex();
        EXPECT_EQ(next, (index + 1) % kBufferCount) << "after presenting buffer " << index;
        index = next;
    }
    EXPECT_EQ(index, (first + kFrames) % kBufferCount);
    ASSERT_HRESULT_SUCCEEDED(device->GetDeviceRemovedReason());

    // The swap chain must let go of the window before the window goes.
    buffers.clear();
    swapChain.Reset();
    swapChain1.Reset();
    window.PumpMessages();
}
} // namespace
