// Helpers shared by the unit tests: the per-process scratch folder, small file helpers and a log listener that
// records what the library reported.
#pragma once

#include "Common/LxLogListener.h"
#include "Common/LxLogManager.h"
#include "Common/LxString.h"

#include <string>
#include <vector>

namespace LxTest
{
// The scratch folder the test process runs in (created by the test main, removed at exit). Ends without a slash.
const std::string& ScratchDir();
// A fresh, empty folder inside the scratch folder; returns its path.
std::string MakeTempDir(const std::string& hint);
void WriteBytes(const std::string& path, const std::string& bytes);
std::string ReadBytes(const std::string& path);
bool PathExists(const std::string& path);
// The folder of the test data files in the source tree.
std::string DataDir();

// Records every line logged while it lives. Construction resets the once-only error set, so an error text that
// an earlier test reported is reported again here.
class LogCapture : public LxLogListener
{
public:
    LogCapture();
    ~LogCapture() override;
    void OnLogMessage(const LxString& text, _LxLogMessageType type) override;

    // Number of recorded lines containing `text` (of the given type, or of any type when type is -1).
    int Count(const std::string& text, int type = -1) const;
    bool Contains(const std::string& text, int type = -1) const { return Count(text, type) > 0; }
    int ErrorCount() const;
    std::string All() const;
    void Clear() { m_lines.clear(); }

private:
    std::vector<std::pair<std::string, int>> m_lines;
};
} // namespace LxTest
