// Our nodes as automation objects: how documents reach the virtual Save and Load of the model, and scripts.
#pragma once

#include <memory>

#include "Quillet/xml/Node.h"

namespace quillet::xml {

// An interface of our own nodes, which gives the node itself without calls by name.
struct INativeNode : IUnknown {
    virtual NativeNode STDMETHODCALLTYPE GetNative() = 0;

protected:
    ~INativeNode() = default;
};

extern const IID IID_INativeNode;

// Shows a node as IDispatch. It lives on the stack and shows node after node: a callee may use the interface
// during the call, but must not keep it.
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

// The node as a reference-counted object, which keeps its tree alive.
CComPtr<IDispatch> MakeNodeObject(const NativeNode& node);

}  // namespace quillet::xml
