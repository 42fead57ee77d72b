// LxEffectCheck: validates effect files without a device.
//
//   LxEffectCheck [-I folder]... [-D NAME[=VALUE]]... [--override file] [--compile] file...
//
// --compile (Windows builds): every shader of every technique is also compiled with the platform's HLSL compiler and
// reflected against the effect with the same checks the Direct3D 12 builder makes when an effect loads (shader
// model 5.0 profiles, as on an 11_0 device); compiler messages point at the effect file's lines. Each error is one
// line; with several files, a progress line "[i/n] file" precedes each.
//
// Each file is scanned, preprocessed and parsed by the platform-free builder; includes are looked up next to the
// file and then in the -I folders, in order. Every error is printed as the log writes it ("file(line) : ...").
// With --override, the given override-technique file is built first and its pixel shaders are applied to every
// technique, as the effect manager does. Exit status: 0 when every file is valid, 1 when any is not, 2 for a
// usage error.
#include "Common/LxFile.h"
#include "Common/LxFileSystemArchive.h"
#include "Common/LxLogManager.h"
#include "Common/LxSearchPath.h"
#include "EffectManager/LxEffect.h"
#include "EffectManager/LxEffectBuilder.h"
#include "EffectManager/LxEffectParser.h"
#include "EffectManager/LxOverrideTechniqueEffectBuilder.h"
#ifdef _WIN32
#include "EffectManager/D3D12/LxD3D12EffectBuilder.h"
#endif

#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace
{
void Usage()
{
    std::fprintf(stderr,
                 "usage: LxEffectCheck [-I folder]... [-D NAME[=VALUE]]... [--override file] [--compile] file...\n");
}

struct Options
{
    std::vector<std::string> includeDirs;
    std::vector<std::pair<std::string, std::string>> defines;
    std::string overrideFile;
    bool compile = false;
    std::vector<std::string> files;
};

bool ParseArguments(int argc, char** argv, Options& options)
{
    for (int i = 1; i < argc; ++i)
    {
        const std::string arg = argv[i];
        auto value = [&](const char* flag, std::string& out)
        {
            if (arg.size() > std::strlen(flag))
                out = arg.substr(std::strlen(flag));
            else if (i + 1 < argc)
                out = argv[++i];
            else
                return false;
            return true;
        };
        std::string v;
        if (arg.rfind("-I", 0) == 0)
        {
            if (!value("-I", v))
                return false;
            options.includeDirs.push_back(v);
        }
        else if (arg.rfind("-D", 0) == 0)
        {
            if (!value("-D", v) || v.empty())
                return false;
            const size_t eq = v.find('=');
            options.defines.emplace_back(v.substr(0, eq), eq == std::string::npos ? "" : v.substr(eq + 1));
        }
        else if (arg == "--override")
        {
            if (i + 1 >= argc)
                return false;
            options.overrideFile = argv[++i];
        }
        else if (arg == "--compile")
        {
#ifdef _WIN32
            options.compile = true;
#else
            std::fprintf(stderr, "LxEffectCheck: --compile needs the Windows build (the platform's HLSL compiler)\n");
            return false;
#endif
        }
        else if (arg == "-h" || arg == "--help" || (arg.size() > 1 && arg[0] == '-'))
            return false;
        else
            options.files.push_back(arg);
    }
    return !options.files.empty();
}

// The file's own folder first, then the -I folders.
void SetUpSearchPath(LxSearchPath& search, const std::string& file, const Options& options)
{
    search.ClearSearchPaths();
    const LxString dir = LxString(file.c_str()).GetDirectory();
    search.AddArchive(new LxFileSystemArchive(dir.IsEmpty() ? LxString(".") : dir));
    for (const std::string& d : options.includeDirs)
        search.AddArchive(new LxFileSystemArchive(d.c_str()));
}

std::unique_ptr<LxEffect> Build(const std::string& file, const Options& options, LxEffectBuilder& builder)
{
    LxString contents;
    bool found = false;
    if (!LxEffectParser::LoadEffectFileContents(nullptr, LxString(), file.c_str(), contents, &found))
    {
        if (found)
            LX_ERROR("Error opening effect file \"%s\"", file.c_str());
        else
            LX_ERROR("Effect file \"%s\" not found", file.c_str());
        return nullptr;
    }
    LxSearchPath search;
    SetUpSearchPath(search, file, options);
    LxEffectParser parser;
    parser.SetIncludeArchive(&search);
    for (const auto& d : options.defines)
        parser.AddDefine(d.first.c_str(), d.second.c_str());
    parser.Init(file.c_str(), contents, &builder);
    return std::unique_ptr<LxEffect>(parser.Parse());
}
} // namespace

int main(int argc, char** argv)
{
    Options options;
    if (!ParseArguments(argc, argv, options))
    {
        Usage();
        return 2;
    }
    // Errors go to the console only; the log file would only repeat them.
    LxLogManager::Init(false, true, LxString());

    std::unique_ptr<LxEffect> overrides;
    LxArray<LxEffectTechnique*> overrideTechniques;
    bool ok = true;
    if (!options.overrideFile.empty())
    {
        LxOverrideTechniqueEffectBuilder builder;
        overrides = Build(options.overrideFile, options, builder);
        if (!overrides)
        {
            std::printf("%s: INVALID override technique file\n", options.overrideFile.c_str());
            ok = false;
        }
        else
            for (unsigned int i = 0; i < overrides->GetNumTechniques(); ++i)
                overrideTechniques.Add(overrides->GetTechnique(i));
    }

    const size_t count = options.files.size();
    for (size_t i = 0; i < count; ++i)
    {
        const std::string& file = options.files[i];
        if (count > 1)
        {
            std::printf("[%zu/%zu] %s\n", i + 1, count, file.c_str());
            std::fflush(stdout);
        }
        std::unique_ptr<LxEffectBuilder> builder;
#ifdef _WIN32
        if (options.compile)
        {
            // No device: shaders are compiled and reflected; pipeline states are not made.
            LxD3D12EffectBuilder* platform = new LxD3D12EffectBuilder(nullptr, D3D_FEATURE_LEVEL_11_0, nullptr);
            platform->SetCheckOnly(true);
            builder.reset(platform);
        }
#endif
        if (!builder)
            builder.reset(new LxEffectBuilder());
        builder->SetOverrideTechniques(overrideTechniques);
        for (const auto& d : options.defines)
            builder->AddMacro(d.first.c_str(), d.second.c_str());
        std::unique_ptr<LxEffect> effect = Build(file, options, *builder);
        if (!effect)
        {
            std::printf("%s: INVALID\n", file.c_str());
            ok = false;
            continue;
        }
        std::printf("%s: OK (%u parameters, %u texture slots, %u samplers, %u techniques, %u included files)\n",
                    file.c_str(), effect->GetNumParameters(), effect->GetNumTextureSlots(), effect->GetNumSamplers(),
                    effect->GetNumTechniques(), effect->GetIncludedFiles().GetCount());
    }
    std::fflush(stdout);
    LxLogManager::ShutDown();
    return ok ? 0 : 1;
}
