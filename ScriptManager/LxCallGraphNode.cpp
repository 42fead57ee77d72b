#include "ScriptManager/LxCallGraphNode.h"

LxCallGraphNode::LxCallGraphNode(const LxString& functionName, LxCallGraphNode* parent)
    : m_name(functionName), m_pParent(parent)
{
}

LxCallGraphNode::~LxCallGraphNode()
{
    for (LxCallGraphNode* child : m_children)
        delete child;
}

LxCallGraphNode* LxCallGraphNode::FindChild(const LxString& functionName) const
{
    for (LxCallGraphNode* child : m_children)
        if (child->m_name == functionName)
            return child;
    return nullptr;
}

LxCallGraphNode* LxCallGraphNode::GetOrAddChild(const LxString& functionName)
{
    LxCallGraphNode* child = FindChild(functionName);
    if (!child)
    {
        child = new LxCallGraphNode(functionName, this);
        m_children.Add(child);
    }
    return child;
}

double LxCallGraphNode::GetSelfTime() const
{
    double self = m_fTotalSeconds;
    for (const LxCallGraphNode* child : m_children)
        self -= child->m_fTotalSeconds;
    return self > 0.0 ? self : 0.0;
}

void LxCallGraphNode::AppendReport(LxString& out, unsigned int depth) const
{
    out.AppendFormat("%10llu %12.3f %12.3f  ", m_nCalls, m_fTotalSeconds * 1000.0, GetSelfTime() * 1000.0);
    for (unsigned int i = 0; i < depth; ++i)
        out.Append("  ");
    out.Append(m_name);
    out.Append('\n');
    AppendChildrenReport(out, depth + 1);
}

void LxCallGraphNode::AppendChildrenReport(LxString& out, unsigned int depth) const
{
    LxArray<const LxCallGraphNode*> order;
    for (const LxCallGraphNode* child : m_children)
    {
        // Insertion sort by decreasing total: graphs are small and equal totals keep their first-call order.
        unsigned int at = order.GetCount();
        while (at > 0 && order[at - 1]->m_fTotalSeconds < child->m_fTotalSeconds)
            --at;
        order.Insert(at, child);
    }
    for (const LxCallGraphNode* child : order)
        child->AppendReport(out, depth);
}
