// Helpers of the effect-manager tests and the reload benchmark: a fake shader compiler that counts its calls and
// answers well-formed shader containers, a builder that compiles through LxEffectManager::CompileShader as the
// platform builder does, and a manager whose builder-creation hook hands out that builder.
#pragma once

#include "Common/LxMemoryBuffer.h"
#include "Common/LxString.h"
#include "EffectManager/LxEffectBuilder.h"
#include "EffectManager/LxEffectManager.h"
#include "EffectManager/LxShaderCompiler.h"

#include <chrono>
#include <cstring>
#include <string>
#include <vector>

namespace LxFxTest
{
// Compiles nothing: the "code" is a container with one "TEXT" chunk holding the request's text. A source holding
// "FAIL_COMPILE" fails with a compiler-like message. `busyMicroseconds` spins per call, standing in for the cost
// of a real compiler.
class FakeShaderCompiler : public LxShaderCompiler
{
public:
    bool Compile(const LxShaderCompileRequest& request, LxCountedPtr<LxMemoryBuffer>* code, LxString* messages) override
    {
        ++compileCount;
        requests.push_back(request);
        if (busyMicroseconds)
        {
            const auto until = std::chrono::steady_clock::now() + std::chrono::microseconds(busyMicroseconds);
            while (std::chrono::steady_clock::now() < until)
            {
            }
        }
        if (request.source.Find("FAIL_COMPILE") >= 0)
        {
            *messages = request.sourceName + "(1,1): error X3000: forced failure";
            return false;
        }
        const std::string payload = std::string(request.entryPoint.c_str()) + "|" + request.profile.c_str() + "|" +
                                    std::string(request.source.c_str(), request.source.GetLength());
        *code = LxCountedPtr<LxMemoryBuffer>(MakeContainer(payload));
        return true;
    }

    static LxMemoryBuffer* MakeContainer(const std::string& payload)
    {
        const unsigned int size = 32 + 4 + 8 + static_cast<unsigned int>(payload.size());
        LxMemoryBuffer* buffer = LxMemoryBuffer::Allocate(size);
        unsigned char* p = buffer->GetData();
        std::memset(p, 0, size);
        std::memcpy(p, "DXBC", 4);
        auto put = [p](unsigned int at, unsigned int v)
        {
            for (int i = 0; i < 4; ++i)
                p[at + i] = static_cast<unsigned char>(v >> (8 * i));
        };
        put(20, 1);
        put(24, size);
        put(28, 1);
        put(32, 36);
        std::memcpy(p + 36, "TEXT", 4);
        put(40, static_cast<unsigned int>(payload.size()));
        std::memcpy(p + 44, payload.data(), payload.size());
        return buffer;
    }

    int compileCount = 0;
    std::vector<LxShaderCompileRequest> requests;
    unsigned int busyMicroseconds = 0;
};

// The generic builder plus compilation: preprocessed code and macros go to the manager's CompileShader.
class CompilingBuilder : public LxEffectBuilder
{
public:
    explicit CompilingBuilder(LxShaderCompiler& compiler) : m_compiler(compiler) {}

    LxCountedPtr<LxEffectShader> CompileShader(LxShaderType type, const LxShaderCodeBlock& code,
                                               const LxString& entryPoint, LxShadingLanguage language,
                                               const LxAnnotationMap& options,
                                               const LxArray<LxShaderMacro>& macros) override
    {
        LxCountedPtr<LxEffectShader> shader =
            LxEffectBuilder::CompileShader(type, code, entryPoint, language, options, macros);
        if (!shader)
            return shader;
        static const char* const kPrefixes[] = {"vs", "gs", "ps", "cs", "hs", "ds"};
        LxShaderCompileRequest request;
        request.source = LxShaderCompiler::BuildSource(macros, shader->GetPreprocessedSource());
        request.entryPoint = entryPoint;
        LxCountedPtr<LxAnnotationValue> profile = options.LookupValue("Profile");
        request.profile = profile && profile->IsString() ? profile->GetString()
                                                         : LxString(kPrefixes[static_cast<int>(type)]) + "_5_0";
        request.flags = LxShaderCompiler::FlagsFromOptions(options);
        request.sourceName = GetEffectName();
        LxCountedPtr<LxMemoryBuffer> compiled;
        LxString messages;
        if (!LxEffectManager::GetRef().CompileShader(m_compiler, request, &compiled, &messages))
        {
            ParseError("%s", messages.IsEmpty() ? "Shader compilation failed without generating error output"
                                                : messages.c_str());
            return LxCountedPtr<LxEffectShader>();
        }
        return shader;
    }

private:
    LxShaderCompiler& m_compiler;
};

// Records each builder request (true: the default effect) and compiles with `compiler` when one is set.
class TestEffectManager : public LxEffectManager
{
public:
    LxShaderCompiler* compiler = nullptr;
    std::vector<bool> builderRequests;

protected:
    LxEffectBuilder* CreateEffectBuilder(bool isDefaultEffect) override
    {
        builderRequests.push_back(isDefaultEffect);
        if (compiler)
            return new CompilingBuilder(*compiler);
        return LxEffectManager::CreateEffectBuilder(isDefaultEffect);
    }
};
} // namespace LxFxTest
