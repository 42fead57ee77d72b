// A log listener for tests that compare messages verbatim: it records each message as the code passed it to the
// log (file, time stamp, type prefix and the continuation indent taken off again), with its type.
#pragma once

#include "Common/LxLogListener.h"
#include "Common/LxLogManager.h"

#include <string>
#include <utility>
#include <vector>

namespace LxTest
{
class MessageLog : public LxLogListener
{
public:
    MessageLog()
    {
        LxLogManager::ResetLumexErrorLog();
        LxLogManager::GetRef().AddLogListener(this);
    }
    ~MessageLog() override { LxLogManager::GetRef().RemoveLogListener(this); }

    void OnLogMessage(const LxString& text, _LxLogMessageType type) override
    {
        std::string line(text.c_str(), text.GetLength());
        // "[hh:mm:ss] " ends the stamp; the type's prefix follows ("ERROR: ", ...; none for plain messages).
        size_t start = line.find("] ");
        start = start == std::string::npos ? 0 : start + 2;
        static const char* const prefixes[] = {"", "DEBUG: ", "WARNING: ", "ERROR: ", "CRITICAL: "};
        if (type >= 0 && type <= 4)
            start += std::string(prefixes[type]).size();
        const std::string indent = "\n" + std::string(start, ' ');
        std::string body = line.substr(start);
        if (!body.empty() && body.back() == '\n')
            body.pop_back();
        for (size_t at = body.find(indent); at != std::string::npos; at = body.find(indent, at + 1))
            body.replace(at, indent.size(), "\n");
        m_messages.emplace_back(type, body);
    }

    // The messages of the given type (-1: any), in order.
    std::vector<std::string> Messages(int type = -1) const
    {
        std::vector<std::string> out;
        for (const auto& m : m_messages)
            if (type < 0 || m.first == type)
                out.push_back(m.second);
        return out;
    }
    std::vector<std::string> Errors() const { return Messages(LX_LOG_ERROR); }
    void Clear() { m_messages.clear(); }

private:
    std::vector<std::pair<int, std::string>> m_messages;
};
} // namespace LxTest
