// XML documents in memory: pugixml reads and holds the tree, the writing and its escaping are ours.
//
// No external entity, no expansion of a document type, no network. What is written is XML 1.0 in UTF-8, one
// element a line, "<x />" for an element without children, and &, <, >, ", tab, line feed and carriage return
// escaped in attributes, so that a reader that looks for markup byte by byte meets none inside a value.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "Quillet/platform/Export.h"
#include "Quillet/xml/Node.h"

namespace quillet::platform {
class FileVersion;
}

namespace quillet::xml {

// Why a document could not be read, and where.
struct ReadError {
    std::string m_message;
    // Line of the file, from 1; 0 if the error has no place.
    std::size_t m_line = 0;
};

// Owns one tree. Nodes refer into it and must not be used after it is gone, except those that automation
// clients hold by reference count, which keep the tree alive.
class QUILLET_API Document {
public:
    Document();
    Document(const Document&) = delete;
    Document& operator=(const Document&) = delete;
    ~Document();

    // Replaces the content by that of a file (path in UTF-8) or of a text. False, with an empty document and
    // the reason in Error, when it can't be read, is not well-formed (as far as pugixml looks), is not valid
    // in its encoding or exceeds the limits (256 levels of nesting, 100 million elements); a file that
    // exceeds a limit is not read any further.
    bool LoadFile(const std::string& path);
    bool LoadText(std::string_view text);
    const ReadError& Error() const { return m_error; }
    // Whether the text that was read declared entities; references to them are kept as they are.
    bool HasEntities() const { return m_hasEntities; }

    // The node of the document itself: its children are the processing instructions and the root element.
    Node Root() const;

    // The document for automation clients: createElement, createProcessingInstruction, documentElement,
    // appendChild, childNodes, firstChild, nextSibling, attributes, setAttribute, nodeName, nodeValue, xml
    // and the like, in any case of letters. The values of attributes and texts can be set, everything else is
    // read-only. It keeps the tree alive as long as it is referenced.
    CComPtr<IDispatch> Automation() const;

    // Writes the file in one step, until which the old file stays unchanged. False, with the reason in why,
    // on failure. With seen, the file is replaced only if it still is that version; seen then becomes the
    // version written.
    bool SaveFile(const std::string& path, std::string* why = nullptr,
                  platform::FileVersion* seen = nullptr) const;

    // The text that SaveFile writes.
    std::string SaveText() const;

private:
    bool Load(std::string text);
    void LocateError(std::string_view text);

    std::shared_ptr<Tree> m_tree;
    ReadError m_error;
    std::ptrdiff_t m_errorOffset = 0;
    bool m_hasEntities = false;
};

// The value of the first attribute of a text that begins with an element's start tag, as "<x name="a&lt;b">"
// does; false if there is none.
bool FirstAttributeOfText(std::string_view text, std::string& value);

}  // namespace quillet::xml
