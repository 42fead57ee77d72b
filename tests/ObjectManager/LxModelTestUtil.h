// Helpers of the model data tests: a log listener that keeps each message's own text, byte builders for item
// files, folder comparison and a sample model that uses every feature of the archive format.
#pragma once

#include "Common/LxLogListener.h"
#include "Common/LxLogManager.h"
#include "Common/LxString.h"

#include <map>
#include <string>
#include <vector>

class LxModelData;

namespace LxModelTest
{
inline LxString S(const std::string& s)
{
    return LxString(s.c_str(), static_cast<unsigned int>(s.size()));
}

// Records the text of each message as the code passed it (without file, line, time and type prefix).
class Messages : public LxLogListener
{
public:
    Messages();
    ~Messages() override;
    void OnLogMessage(const LxString& text, _LxLogMessageType type) override;

    std::vector<std::string> Errors() const { return Of(LX_LOG_ERROR); }
    std::vector<std::string> Warnings() const { return Of(LX_LOG_WARNING); }
    std::vector<std::string> Of(int type) const;
    void Clear() { m_messages.clear(); }

private:
    std::vector<std::pair<int, std::string>> m_messages;
};

// Little-endian byte builder.
struct Bytes
{
    std::string data;
    Bytes& U32(unsigned int v);
    Bytes& U16(unsigned short v);
    Bytes& U8(unsigned char v);
    Bytes& Raw(const std::string& s)
    {
        data += s;
        return *this;
    }
};

// The name a folder archive rooted at `folder` gives itself ("/" separators, a trailing "/").
std::string ArchiveName(const std::string& folder);
// Every file under a folder (relative path with '/' -> contents). On Windows the line ends of ".txt" files are
// read as "\n": folder archives write text files in text mode there, zip entries never translate.
std::map<std::string, std::string> ReadTree(const std::string& folder);
// Every entry of a zip file read through LxZipArchive (name -> contents).
std::map<std::string, std::string> ReadZip(const std::string& path);

// A model with a VB (with meta data), an IB, a texture, a binary and a text ADB, an effect group of two chunks,
// a non-indexed chunk, parameter settings of every source, a bone map, a visibility curve, sub-chunks with a
// tree, a three-bone skeleton and meta-file entries.
LxModelData* MakeSampleModel();

// Runs a shell command; true when it exits with 0.
bool Run(const std::string& command);
bool HaveTool(const std::string& name);
} // namespace LxModelTest
