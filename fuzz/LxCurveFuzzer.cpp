// libFuzzer target over the animation readers. The first input byte picks the reader:
//   even: the bytes are curve streams, read one after another as a packed file is; each curve that loads is
//         evaluated in several orders, compressed, written and read back (the copy must equal the original);
//   odd:  the bytes up to the first zero are "manifest.txt" of an animation set held in memory, the rest is
//         every other file of that set ("PackedAnimation" and whatever curve file a manifest names).
// Nothing on disk is read. Any crash, hang, leak or sanitizer report is a finding.
//
// `LxCurveFuzzer --write-seeds=DIR` writes a seed corpus of valid inputs (every data type, both manifest
// versions) to DIR and exits; libFuzzer ignores flags that start with "--".
#include "Common/LxArchive.h"
#include "Common/LxFile.h"
#include "Common/LxLogManager.h"
#include "Common/LxVector3.h"
#include "ObjectManager/LxAnimationSet.h"
#include "ObjectManager/LxKeyframeCurve.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

namespace
{
class MemoryFile : public LxFile
{
public:
    MemoryFile(const LxString& name, std::string bytes) : LxFile(name), m_bytes(std::move(bytes)) { m_bOpen = true; }
    void Close() override { m_bOpen = false; }
    unsigned int Read(void* buffer, unsigned int bytes) override
    {
        const size_t n = m_bOpen ? std::min<size_t>(bytes, m_bytes.size() - m_pos) : 0;
        if (n)
            std::memcpy(buffer, m_bytes.data() + m_pos, n);
        m_pos += n;
        return static_cast<unsigned int>(n);
    }
    bool Write(const void* buffer, unsigned int bytes) override
    {
        m_bytes.append(static_cast<const char*>(buffer), bytes);
        return m_bOpen;
    }
    using LxFile::Write;
    bool Seek(long offset, SeekOrigin) override
    {
        m_pos = std::min<size_t>(static_cast<size_t>(offset), m_bytes.size());
        return true;
    }
    unsigned int GetSize() const override { return static_cast<unsigned int>(m_bytes.size()); }
    bool Flush() override { return m_bOpen; }
    const std::string& Bytes() const { return m_bytes; }

private:
    std::string m_bytes;
    size_t m_pos = 0;
};

// An archive whose manifest is one string and whose every other file is another.
class MemoryArchive : public LxArchive
{
public:
    MemoryArchive(std::string manifest, std::string rest) : m_manifest(std::move(manifest)), m_rest(std::move(rest)) {}
    bool FileExists(const LxString&, LxString* fullPath) const override
    {
        if (fullPath)
            *fullPath = m_name;
        return true;
    }
    LxFile* OpenFile(const LxString& name, const LxString&) const override
    {
        return new MemoryFile(name, name == "manifest.txt" ? m_manifest : m_rest);
    }
    bool GetFileTime(const LxString&, long long& time) const override
    {
        time = 0;
        return true;
    }
    const LxString& GetName() const override { return m_name; }

private:
    LxString m_name = "memory-set";
    std::string m_manifest, m_rest;
};

void Exercise(LxAnimationCurve& curve)
{
    unsigned char value[64];
    const float length = curve.GetAnimationLength();
    const float times[] = {-1.0f,          0.0f,          length * 0.25f, length * 0.5f, length,
                           length * 0.75f, length * 0.1f, length + 1.0f,  std::nanf("")};
    for (float t : times)
    {
        curve.GetValueRaw(t, value);
        curve.GetGradientRaw(t, value, 0.01f);
        curve.HasCutAtTime(t, nullptr);
        curve.HasCutInTimeInterval(t, length * 0.5f);
    }
    MemoryFile out("copy", std::string());
    if (!curve.WriteCurveStream(&out))
        abort();
    MemoryFile in("copy", out.Bytes());
    LxCountedPtr<LxAnimationCurve> copy(LxAnimationCurve::ReadCurveStream(&in));
    // What was read must survive its own round trip.
    if (!copy || !curve.Equals(copy))
        abort();
    static_cast<LxKeyframeCurve&>(curve).Compress(0.01f);
}

void WriteSeed(const std::string& dir, const std::string& name, const std::string& bytes)
{
    FILE* f = std::fopen((dir + "/" + name).c_str(), "wb");
    if (f)
    {
        std::fwrite(bytes.data(), 1, bytes.size(), f);
        std::fclose(f);
    }
}

void WriteSeeds(const std::string& dir)
{
    std::string packed, manifest10 = "[LxAnimationSet Manifest v1.0]\n",
                        manifest11 = "[LxAnimationSet Manifest v1.1]\n";
    for (unsigned int type = 0; type < LxAnimationCurve::DATA_TYPE_COUNT; ++type)
    {
        LxKeyframeCurve curve(LxAnimationCurve::AnimationDataType(type), LxKeyframeCurve::InterpolationMode(type % 2));
        unsigned char value[64];
        for (unsigned int k = 0; k < 5; ++k)
        {
            for (unsigned int b = 0; b < sizeof(value); ++b)
                value[b] = static_cast<unsigned char>((k * 37 + b * 11) & (type == 2 || type >= 10 ? 1 : 0x3F));
            curve.AddKey(k == 3 ? 0.75f * 2 : 0.5f * k + 0.25f, value); // keys 2 and 3 form a cut
        }
        MemoryFile file("seed", std::string());
        curve.WriteCurveStream(&file);
        WriteSeed(dir, "curve-" + std::to_string(type), std::string(1, '\0') + file.Bytes());
        packed += file.Bytes();
        manifest10 += "curve." + std::to_string(type) + " c" + std::to_string(type) + ".crv\n";
        manifest11 += "curve." + std::to_string(type) + "\n";
        if (type == 4)
            WriteSeed(dir, "set-v10-single", std::string(1, '\1') + manifest10 + std::string(1, '\0') + file.Bytes());
    }
    WriteSeed(dir, "set-v11", std::string(1, '\1') + manifest11 + std::string(1, '\0') + packed);
    WriteSeed(dir, "set-v10", std::string(1, '\1') + manifest10 + std::string(1, '\0') + packed);
}
} // namespace

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    // Messages are formatted as usual but go nowhere: no file, no console.
    LxLogManager::Init(false, false, LxString());
    for (int i = 1; i < *argc; ++i)
    {
        const char* arg = (*argv)[i];
        if (std::strncmp(arg, "--write-seeds=", 14) == 0)
        {
            WriteSeeds(arg + 14);
            std::exit(0);
        }
    }
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size < 1 || size > (1u << 20))
        return 0;
    // Each input starts with a clean once-only error set, or the set would grow without bound.
    LxLogManager::ResetLumexErrorLog();
    const std::string bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
    if ((data[0] & 1) == 0)
    {
        MemoryFile file("fuzz", bytes);
        for (int n = 0; n < 64; ++n)
        {
            std::unique_ptr<LxAnimationCurve> curve(LxAnimationCurve::ReadCurveStream(&file));
            if (!curve)
                break;
            Exercise(*curve);
        }
    }
    else
    {
        const size_t cut = bytes.find('\0');
        MemoryArchive archive(bytes.substr(0, cut), cut == std::string::npos ? std::string() : bytes.substr(cut + 1));
        LxAnimationSet set;
        set.AddCurve("keep", LxCountedPtr<LxAnimationCurve>(new LxKeyframeCurve(LxAnimationCurve::DATA_FLOAT)));
        const bool loaded = set.LoadFromArchive(archive);
        // A failed load keeps what was there and adds nothing.
        if (!set.GetCurve("keep") || (!loaded && set.GetCount() != 1))
            abort();
        set.GetMaxAnimationLength();
    }
    return 0;
}
