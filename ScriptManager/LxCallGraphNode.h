// LxCallGraphNode: one function in one calling context of the script profiler's call graph. A node owns its
// children; the same function called from two places appears as two nodes. Times are wall-clock seconds, the
// total including the time of the children. Built and read on the main thread.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxArray.h"
#include "Common/LxString.h"

class LX_API LxCallGraphNode
{
public:
    explicit LxCallGraphNode(const LxString& functionName, LxCallGraphNode* parent = nullptr);
    ~LxCallGraphNode();
    LxCallGraphNode(const LxCallGraphNode&) = delete;
    LxCallGraphNode& operator=(const LxCallGraphNode&) = delete;

    const LxString& GetName() const { return m_name; }
    LxCallGraphNode* GetParent() const { return m_pParent; }
    unsigned int GetChildCount() const { return m_children.GetCount(); }
    LxCallGraphNode* GetChild(unsigned int i) const { return m_children[i]; }
    // The child named `functionName`, or null.
    LxCallGraphNode* FindChild(const LxString& functionName) const;
    // The child named `functionName`, created when missing.
    LxCallGraphNode* GetOrAddChild(const LxString& functionName);

    unsigned long long GetCallCount() const { return m_nCalls; }
    double GetTotalTime() const { return m_fTotalSeconds; }
    // The total time less the children's totals (never negative).
    double GetSelfTime() const;
    void AddCall() { ++m_nCalls; }
    void AddTime(double seconds) { m_fTotalSeconds += seconds; }

    // Appends one line per node of this subtree, children by decreasing total time, indented two blanks a level:
    // calls, total and self milliseconds, then the name.
    void AppendReport(LxString& out, unsigned int depth) const;
    // The same for the children alone, at `depth`.
    void AppendChildrenReport(LxString& out, unsigned int depth) const;

private:
    LxString m_name;
    LxCallGraphNode* m_pParent;
    LxArray<LxCallGraphNode*> m_children;
    unsigned long long m_nCalls = 0;
    double m_fTotalSeconds = 0.0;
};
