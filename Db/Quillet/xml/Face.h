// Our nodes as automation objects: how documents reach the virtual Save and Load of the model, and scripts.
#pragma once

#include <memory>

#include "Quillet/xml/Node.h"

namespace quillet::xml {

// Behind the automation interface of our own nodes: the way that costs nothing.
struct INativeNode : IUnknown {
    virtual NativeNode STDMETHODCALLTYPE GetNative() = 0;

protected:
    ~INativeNode() = default;
};

extern const IID IID_INativeNode;

// Shows a node as IDispatch. It lives on the stack and is shown node after node: whoever is handed the
// interface uses it during the call and does not keep it.
class Face {
public:
    Face();
    explicit Face(const Node& node) : Face() { Show(node); }
    Face(const Face&) = delete;
    Face& operator=(const Face&) = delete;
    ~Face();

    // The interface of the node, valid until the next call; null for a null node.
    IDispatch* Show(const Node& node);
    // The interface shown last.
    IDispatch* Get() const { return m_shown; }

private:
    class NodeObject* m_object;
    Node m_foreign;
    IDispatch* m_shown = nullptr;
};

// The node as an object that lives as long as it is referred to, and keeps its tree.
CComPtr<IDispatch> MakeNodeObject(const NativeNode& node);

}  // namespace quillet::xml
