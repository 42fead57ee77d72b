#include "EffectManager/D3D12/LxD3D12ShaderCompiler.h"

#include <d3dcompiler.h>

bool LxD3D12ShaderCompiler::Compile(const LxShaderCompileRequest& request, LxCountedPtr<LxMemoryBuffer>* code,
                                    LxString* messages)
{
    m_nCompiles.Increment();
    ID3DBlob* blob = nullptr;
    ID3DBlob* errors = nullptr;
    const HRESULT hr =
        D3DCompile(request.source.c_str(), request.source.GetLength(), request.sourceName.c_str(), nullptr, nullptr,
                   request.entryPoint.c_str(), request.profile.c_str(), request.flags, 0, &blob, &errors);
    if (messages)
    {
        messages->Clear();
        if (errors && errors->GetBufferSize() > 0)
        {
            // The text may or may not carry its terminating zero.
            const char* text = static_cast<const char*>(errors->GetBufferPointer());
            size_t length = errors->GetBufferSize();
            while (length > 0 && text[length - 1] == '\0')
                --length;
            *messages = LxString(text, static_cast<unsigned int>(length));
        }
    }
    if (errors)
        errors->Release();
    const bool ok = SUCCEEDED(hr) && blob && blob->GetBufferSize() > 0;
    if (ok && code)
    {
        LxMemoryBuffer* buffer = LxMemoryBuffer::Allocate(static_cast<unsigned int>(blob->GetBufferSize()));
        memcpy(buffer->GetData(), blob->GetBufferPointer(), blob->GetBufferSize());
        *code = LxCountedPtr<LxMemoryBuffer>(buffer);
    }
    if (blob)
        blob->Release();
    return ok;
}
