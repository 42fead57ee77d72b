// Windows-lane benchmark of effects on Direct3D 12, self-timed (Google Benchmark is not built for mingw), run under
// Wine with lavapipe:
//
//   draw cost: CPU time per object to set two effect parameters (a colour and a placement vector) and record
//              Begin, BeginPass, a draw, EndPass, End through the effect and the render manager, against raw
//              Direct3D 12 calls doing the same binding for the same pipeline (upload the two constant buffers,
//              root signature, pipeline state, two root CBVs, topology, draw). Rounds of 500 objects alternate
//              between the sides (wall time: Wine's thread times are too coarse); the median of the ratios of
//              neighbouring rounds is reported.
//   reload:    ReloadEffects(true) of a set of effects with a warm shader cache against the same reload with an
//              empty cache (every shader compiled); the ratio is cold time / warm time.
// Prints one line per figure; exits non-zero only when something could not be created.
#include "Common/LxLogManager.h"
#include "EffectManager/D3D12/LxD3D12EffectManager.h"
#include "EffectManager/D3D12/LxD3D12EffectPass.h"
#include "GPUResourceManager/D3D12/LxD3D12GPUResourceManager.h"
#include "RenderManager/D3D12/LxD3D12RenderManager.h"

#include <windows.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

namespace
{
typedef std::chrono::steady_clock Clock;
constexpr unsigned kObjects = 500;
constexpr unsigned kRounds = 40;
constexpr unsigned kReloadEffects = 6;

double Seconds(Clock::time_point a, Clock::time_point b)
{
    return std::chrono::duration<double>(b - a).count();
}

double Median(std::vector<double> v)
{
    std::sort(v.begin(), v.end());
    return v.empty() ? 0.0 : v[v.size() / 2];
}

const char* const kEffect = R"fx(
Vector vColor (1.0, 0.0, 0.0, 1.0)
Vector vPlace (0.05, 0.0, 0.0, 0.5)
Technique Draw
{
  Pass P0
  {
    VertexShader()
      cbuffer Placement { float4 vPlace; };
      static const float2 kCorners[3] = { float2(-1.0, -1.0), float2(-1.0, 3.0), float2(3.0, -1.0) };
      float4 main(uint id : SV_VertexID) : SV_Position
      {
        return float4(kCorners[id] * vPlace.x + vPlace.yz, vPlace.w, 1.0);
      }
    EndVertexShader
    PixelShader()
      cbuffer Shading { float4 vColor; };
      float4 main() : SV_Target { return vColor; }
    EndPixelShader
  }
}
)fx";

std::string TempFolder(const char* name)
{
    char base[MAX_PATH];
    GetTempPathA(MAX_PATH, base);
    std::string folder = std::string(base) + name + std::to_string(GetCurrentProcessId());
    CreateDirectoryA(folder.c_str(), nullptr);
    return folder;
}

void WriteFile(const std::string& path, const std::string& text)
{
    FILE* f = std::fopen(path.c_str(), "wb");
    if (f)
    {
        std::fwrite(text.data(), 1, text.size(), f);
        std::fclose(f);
    }
}

HWND MakeWindow()
{
    WNDCLASSEXW wc = {};
    wc.cbSize = sizeof(wc);
    wc.lpfnWndProc = DefWindowProcW;
    wc.hInstance = GetModuleHandleW(nullptr);
    wc.lpszClassName = L"LxD3D12EffectBench";
    RegisterClassExW(&wc);
    HWND hwnd = CreateWindowExW(0, L"LxD3D12EffectBench", L"Lumex effect benchmark", WS_OVERLAPPEDWINDOW, 0, 0, 320,
                                240, nullptr, nullptr, GetModuleHandleW(nullptr), nullptr);
    if (hwnd)
        ShowWindow(hwnd, SW_SHOWNOACTIVATE);
    return hwnd;
}
} // namespace

int main()
{
    // Quiet: the reload logs a few lines per effect, which would be timed with it.
    LxLogManager::Init(false, false, LxString());
    HWND hwnd = MakeWindow();
    LxD3D12RenderManager::CreationDesc desc;
    DXGI_SWAP_CHAIN_DESC& sc = desc.swapChainDesc;
    sc.BufferDesc.Width = 320;
    sc.BufferDesc.Height = 240;
    sc.BufferDesc.Format = DXGI_FORMAT_R8G8B8A8_UNORM;
    sc.SampleDesc.Count = 1;
    sc.BufferUsage = DXGI_USAGE_RENDER_TARGET_OUTPUT;
    sc.BufferCount = 2;
    sc.OutputWindow = hwnd;
    sc.Windowed = TRUE;
    sc.SwapEffect = DXGI_SWAP_EFFECT_FLIP_DISCARD;
    desc.framesInFlight = 2;
    if (!hwnd || !LxD3D12RenderManager::Init(desc))
    {
        std::printf("render manager creation failed\n");
        return 1;
    }
    LxD3D12RenderManager* rm = LxD3D12RenderManager::GetD3D12Ptr();
    LxD3D12GPUResourceManager::RegisterCreateFunction();
    LxGPUResourceManager::GetPtr();
    LxD3D12GPUResourceManager* gpu = LxD3D12GPUResourceManager::GetD3D12Ptr();
    if (!gpu || !gpu->Initialize(32 * 1024 * 1024, 64))
    {
        std::printf("resource manager creation failed\n");
        return 1;
    }
    LxD3D12EffectManager::Init();
    LxEffectManager& manager = LxEffectManager::GetRef();
    const std::string folder = TempFolder("LxEffectBench");
    manager.AddSearchPath(folder.c_str());
    WriteFile(folder + "/bench.fx", kEffect);
    LxCountedPtr<LxEffect> fx = manager.LoadEffect("bench.fx", LxEffectManager::LOAD_DEFAULT_EFFECT);
    if (!fx)
    {
        std::printf("effect creation failed\n");
        return 1;
    }
    LxEffectParameter* color = fx->GetParameter("vColor");
    LxEffectParameter* place = fx->GetParameter("vPlace");
    const auto* pass = static_cast<const LxD3D12EffectPass*>(fx->GetTechnique("Draw")->GetPass(0u));

    // --- draw cost -------------------------------------------------------------------------------------------------
    std::vector<double> effectTimes, rawTimes, ratios;
    for (unsigned round = 0; round < kRounds * 2; ++round)
    {
        const bool effectSide = ((round / 2) % 2 == 0) == (round % 2 == 0);
        if (!rm->BeginScene())
            return 1;
        ID3D12GraphicsCommandList* list = rm->GetCurrentD3D12CommandList();
        LxD3D12UploadHeap& heap = gpu->GetUploadHeap();
        const Clock::time_point start = Clock::now();
        for (unsigned i = 0; i < kObjects; ++i)
        {
            const float c[4] = {float(i % 7) / 7.0f, 0.5f, 0.25f, 1.0f};
            const float p[4] = {0.05f, float(i % 20) / 10.0f - 1.0f, float(i / 20) / 12.5f - 1.0f, 0.5f};
            if (effectSide)
            {
                color->SetFloatVector(c);
                place->SetFloatVector(p);
                unsigned passes = 0;
                fx->Begin(pass->GetTechnique(), &passes);
                fx->BeginPass(0);
                rm->DrawNonIndexed(LxRenderManager::PRIM_TRIANGLE_LIST, 3, 0);
                fx->EndPass();
                fx->End();
            }
            else
            {
                LxUploadAllocation a, b;
                heap.Allocate(256, 256, &a);
                heap.Allocate(256, 256, &b);
                std::memcpy(a.GetCPUAddress(), p, sizeof(p));
                std::memcpy(b.GetCPUAddress(), c, sizeof(c));
                list->SetGraphicsRootSignature(pass->GetRootSignature());
                list->SetPipelineState(pass->GetPipelineState());
                list->SetGraphicsRootConstantBufferView(0, heap.GetGPUAddress(a));
                list->SetGraphicsRootConstantBufferView(1, heap.GetGPUAddress(b));
                list->IASetPrimitiveTopology(D3D_PRIMITIVE_TOPOLOGY_TRIANGLELIST);
                list->DrawInstanced(3, 1, 0, 0);
            }
        }
        const double spent = Seconds(start, Clock::now());
        rm->EndScene();
        (effectSide ? effectTimes : rawTimes).push_back(spent / kObjects);
        if (round % 2 == 1)
            ratios.push_back(effectTimes.back() / rawTimes.back());
    }
    std::printf("draw cost per object: effect %.2f us, raw %.2f us (median rounds of %u objects)\n",
                Median(effectTimes) * 1e6, Median(rawTimes) * 1e6, kObjects);
    std::printf("ratio effect/raw  median %.3f\n", Median(ratios));

    // --- reload ----------------------------------------------------------------------------------------------------
    std::vector<LxCountedPtr<LxEffect>> held;
    for (unsigned i = 0; i < kReloadEffects; ++i)
    {
        // Distinct shader text per effect, so each compiles on its own.
        std::string text = kEffect;
        text.replace(text.find("return vColor;"), 14, "return vColor * " + std::to_string(i + 2) + ".0;");
        const std::string name = "reload" + std::to_string(i) + ".fx";
        WriteFile(folder + "/" + name, text);
        held.push_back(manager.LoadEffect(name.c_str(), LxEffectManager::LOAD_DEFAULT_EFFECT));
    }
    std::vector<double> cold, warm;
    for (unsigned round = 0; round < 5; ++round)
    {
        manager.SetShaderCachePath((folder + "/cache" + std::to_string(round)).c_str());
        Clock::time_point t0 = Clock::now();
        manager.ReloadEffects(true);
        Clock::time_point t1 = Clock::now();
        manager.ReloadEffects(true);
        Clock::time_point t2 = Clock::now();
        cold.push_back(Seconds(t0, t1));
        warm.push_back(Seconds(t1, t2));
    }
    std::printf("reload of %u effects: cold cache %.1f ms, warm cache %.1f ms (median of 5)\n",
                unsigned(held.size() + 1), Median(cold) * 1e3, Median(warm) * 1e3);
    std::printf("ratio cold/warm  median %.2f\n", Median(cold) / Median(warm));
    held.clear();
    fx = LxCountedPtr<LxEffect>();
    LxEffectManager::ShutDown();
    LxGPUResourceManager::ShutDown();
    LxRenderManager::ShutDown();
    DestroyWindow(hwnd);
    return 0;
}
