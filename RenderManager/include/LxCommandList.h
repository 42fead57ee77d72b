// LxCommandList: a list of recorded GPU commands of one kind, closed before submission. The platform class
// (LxD3D12CommandList) wraps the graphics command list; the base answers its type and logs IMPLEMENT ME for the
// platform operations. Shared as LxCountedPtr, whose count is not atomic: a worker hands a closed list over
// (CloseAndAppendCommandList) and drops its own references before the main thread submits and releases it.
#pragma once

#include "Common/LxApi.h"

class LX_API LxCommandList
{
public:
    // The platform's numbering.
    enum Type : unsigned
    {
        DIRECT = 0,
        BUNDLE = 1, // recorded like a list, executed inside another list, never submitted to a queue
        COMPUTE = 2,
        COPY = 3,
    };

    explicit LxCommandList(Type type) : m_type(type) {}
    virtual ~LxCommandList() = default;
    LxCommandList(const LxCommandList&) = delete;
    LxCommandList& operator=(const LxCommandList&) = delete;

    Type GetType() const { return m_type; }
    bool IsClosed() const { return m_bClosed; }

    // Ends recording; a list is closed once. False (logged) when already closed or the platform refuses.
    bool Close();
    // Starts recording again after the list's work has completed.
    bool Reset();

protected:
    virtual bool APIClose();
    virtual bool APIReset();

private:
    Type m_type;
    bool m_bClosed = false;
};
