// Cuts one element after another out of a stream of bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "Quillet/base/CString.h"

namespace quillet {

// Reads strictly forward through one buffer and builds no document. It follows the element path
// ("\database\body") by the names alone: a name ends at the first blank or '>', attributes are not looked at,
// and markup inside an attribute value counts as markup. An empty element without attributes and blank
// ("<x/>") takes the slash into its name. A byte-order mark before the first element is text like any other.
class XmlScanner {
public:
    // Gives up to capacity bytes of the stream; 0 at its end.
    using ReadBytes = std::function<std::size_t(char* buffer, std::size_t capacity)>;

    // A block size below 2 counts as 2.
    XmlScanner(ReadBytes read, int blockSize);

    // Gives in bytes the next element, at or after the current position, whose path equals path (case
    // counts), from its '<' to its last '>'. False, and the end reached, when there is none; true with what
    // there was when the stream ends inside the element. The next call continues after the element.
    bool Extract(const CString& path, std::string& bytes);

    // The position in the stream of the '<' of the element that was found last.
    std::uint64_t Place() const { return m_place; }

    // Whether the stream has ended, or was given up; nothing more will be found.
    bool IsEof() const { return m_eof; }
    // Why the stream was given up; null where it was not. Elements nested deeper than xml::MaxDepth, a name
    // longer than any, and an element too long for a string end the search; UTF-16 and UTF-32 are refused at
    // the beginning.
    const char* Refusal() const { return m_refusal; }

private:
    struct Cut;

    bool Refill();
    void Step(Cut& cut, char current);
    void FinishTag(Cut& cut);
    void SkipPlain(Cut& cut);
    std::size_t NextMarkup();
    void Ascend();
    void Refuse(Cut& cut, const char* why);

    ReadBytes m_read;
    std::vector<char> m_block;
    // The bytes of the stream before the block, and the place of the element.
    std::uint64_t m_before = 0;
    std::uint64_t m_place = 0;
    // Valid bytes of the block, and the one to be looked at next.
    std::size_t m_size = 0;
    std::size_t m_next = 0;
    // The byte before that one.
    char m_previous = 0;
    // The first '<' and the first '>' at or after the next byte, as far as they were looked for.
    std::size_t m_nextOpen = 0;
    std::size_t m_nextClose = 0;
    std::string m_path;
    // The elements of the path.
    int m_depth = 0;
    const char* m_refusal = nullptr;
    bool m_started = false;
    bool m_eof = false;
};

}  // namespace quillet
