// Core services against their usual replacements, measured in the same run:
//   LxHashMap<LxString> string-key find  vs  std::unordered_map<std::string>
//   LxMD5Hash::ComputeHash on 8 KB blocks vs  OpenSSL's MD5
#include "Common/LxHashMap.h"
#include "Common/LxMD5Hash.h"
#include "Common/LxString.h"

#include <benchmark/benchmark.h>
#include <openssl/md5.h>

#include <algorithm>
#include <random>
#include <string>
#include <unordered_map>
#include <vector>

namespace
{
// Two kinds of key sets, both shaped like the names the effect system and the object registry look up:
//  - identifiers built from random syllables and a known stem ("g_RokaMivTexture"): names that differ in many
//    characters, as parameter, texture and object names do;
//  - a stem and a running number ("Bone1234"): the hardest case for the multiply-by-five string hash, whose low
//    bits then vary little from key to key.
enum KeySet
{
    IDENTIFIERS = 0,
    NUMBERED = 1
};

std::vector<std::string> MakeNames(size_t count, int kind)
{
    static const char* stems[] = {
        "g_mWorldViewProjection", "diffuseTexture", "Bone",         "lightPosition", "ShadowMap", "fTime",
        "SpecularPower",          "normalMap",      "g_vCameraPos", "Material"};
    static const char* syllables[] = {"ka", "ro", "mi", "tes", "lu", "van", "shi", "por", "de", "qua", "zel", "num"};
    std::mt19937 rng(7);
    std::vector<std::string> names;
    names.reserve(count);
    for (size_t i = 0; i < count; ++i)
    {
        std::string name = stems[i % 10];
        if (kind == NUMBERED)
            name += std::to_string(i);
        else
        {
            // Unique by construction: the index spelt in syllables, then random filler.
            for (size_t v = i; v; v /= 12)
                name += syllables[v % 12];
            for (int k = 0; k < 2; ++k)
                name += syllables[rng() % 12];
        }
        names.push_back(name);
    }
    return names;
}

std::vector<size_t> LookupOrder(size_t count)
{
    std::vector<size_t> order(count);
    for (size_t i = 0; i < count; ++i)
        order[i] = i;
    std::shuffle(order.begin(), order.end(), std::mt19937(1234));
    return order;
}

void BM_LxHashMapFind(benchmark::State& state)
{
    const size_t n = static_cast<size_t>(state.range(0));
    const std::vector<std::string> names = MakeNames(n, static_cast<int>(state.range(1)));
    std::vector<LxString> keys;
    LxHashMap<LxString, int, LxStringHasher> map;
    for (size_t i = 0; i < n; ++i)
    {
        keys.emplace_back(names[i].c_str());
        map.Insert(keys.back(), static_cast<int>(i));
    }
    const std::vector<size_t> order = LookupOrder(n);
    size_t k = 0;
    long sum = 0;
    for (auto _ : state)
    {
        sum += *map.FindValue(keys[order[k]]);
        if (++k == n)
            k = 0;
    }
    benchmark::DoNotOptimize(sum);
    state.SetItemsProcessed(state.iterations());
}

void BM_StdUnorderedMapFind(benchmark::State& state)
{
    const size_t n = static_cast<size_t>(state.range(0));
    const std::vector<std::string> keys = MakeNames(n, static_cast<int>(state.range(1)));
    std::unordered_map<std::string, int> map;
    for (size_t i = 0; i < n; ++i)
        map.emplace(keys[i], static_cast<int>(i));
    const std::vector<size_t> order = LookupOrder(n);
    size_t k = 0;
    long sum = 0;
    for (auto _ : state)
    {
        sum += map.find(keys[order[k]])->second;
        if (++k == n)
            k = 0;
    }
    benchmark::DoNotOptimize(sum);
    state.SetItemsProcessed(state.iterations());
}

std::vector<unsigned char> Block8K()
{
    std::vector<unsigned char> data(8192);
    std::mt19937 rng(42);
    for (auto& b : data)
        b = static_cast<unsigned char>(rng());
    return data;
}

void BM_LxMD5Hash8K(benchmark::State& state)
{
    const std::vector<unsigned char> data = Block8K();
    LxMD5Hash out;
    for (auto _ : state)
    {
        LxMD5Hash::ComputeHash(data.data(), static_cast<unsigned int>(data.size()), &out);
        benchmark::DoNotOptimize(out);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(data.size()));
}

#if defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations" // the one-shot MD5() is OpenSSL's fastest path
#endif
void BM_OpenSSLMD5_8K(benchmark::State& state)
{
    const std::vector<unsigned char> data = Block8K();
    unsigned char out[MD5_DIGEST_LENGTH];
    for (auto _ : state)
    {
        MD5(data.data(), data.size(), out);
        benchmark::DoNotOptimize(out);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(data.size()));
}
#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif
} // namespace

// Arguments: key count, key set (0 identifiers, 1 numbered).
BENCHMARK(BM_LxHashMapFind)->ArgsProduct({{1000, 100000}, {IDENTIFIERS, NUMBERED}});
BENCHMARK(BM_StdUnorderedMapFind)->ArgsProduct({{1000, 100000}, {IDENTIFIERS, NUMBERED}});
BENCHMARK(BM_LxMD5Hash8K);
BENCHMARK(BM_OpenSSLMD5_8K);
BENCHMARK_MAIN();
