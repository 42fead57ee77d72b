// Helpers of the animation tests: an in-memory file, a recorder of logged message texts (compared verbatim), and
// sample curves of every data type.
#pragma once

#include "Common/LxFile.h"
#include "Common/LxLogListener.h"
#include "Common/LxLogManager.h"
#include "ObjectManager/LxKeyframeCurve.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

namespace LxAnimTest
{
inline LxString S(const std::string& s)
{
    return LxString(s.c_str(), static_cast<unsigned int>(s.size()));
}

// A file over bytes in memory. Writes past `writeBudget` bytes fail, to reach the writers' failure paths.
class MemoryFile : public LxFile
{
public:
    explicit MemoryFile(std::string bytes = std::string()) : LxFile("memory"), m_bytes(std::move(bytes))
    {
        m_bOpen = true;
    }
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
        if (!m_bOpen || m_bytes.size() + bytes > writeBudget)
            return false;
        m_bytes.append(static_cast<const char*>(buffer), bytes);
        return true;
    }
    using LxFile::Write;
    bool Seek(long offset, SeekOrigin) override
    {
        m_pos = static_cast<size_t>(offset);
        return true;
    }
    unsigned int GetSize() const override { return static_cast<unsigned int>(m_bytes.size()); }
    bool Flush() override { return m_bOpen; }

    const std::string& Bytes() const { return m_bytes; }
    size_t Position() const { return m_pos; }
    size_t writeBudget = ~size_t(0) >> 1;

private:
    std::string m_bytes;
    size_t m_pos = 0;
};

// Records the text of every message as the code passed it (no file, line, time or type prefix). Construction
// resets the once-only error set, so each test sees its own errors.
class Messages : public LxLogListener
{
public:
    Messages();
    ~Messages() override;
    void OnLogMessage(const LxString& text, _LxLogMessageType type) override;

    std::vector<std::string> Of(int type) const;
    std::vector<std::string> Errors() const { return Of(LX_LOG_ERROR); }
    std::vector<std::string> Warnings() const { return Of(LX_LOG_WARNING); }
    // Forgets what was recorded and resets the once-only error set (for loops over many failing inputs).
    void Clear();

private:
    std::vector<std::pair<int, std::string>> m_messages;
};

typedef std::vector<std::string> Lines;

// A curve of `type` with `keys` keys at irregular times (one cut among them when there are at least 4), every
// value byte varied; bool bytes are 0 or 1.
LxKeyframeCurve* MakeSampleCurve(LxAnimationCurve::AnimationDataType type, unsigned int keys, unsigned int seed,
                                 LxKeyframeCurve::InterpolationMode mode = LxKeyframeCurve::INTERPOLATE_LINEAR);
// The whole curve stream of a curve.
std::string StreamBytes(const LxAnimationCurve& curve);
} // namespace LxAnimTest
