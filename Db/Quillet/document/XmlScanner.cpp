#include "Quillet/document/XmlScanner.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>

#include "Quillet/xml/Nesting.h"

namespace quillet {

namespace {

constexpr char PathSeparator = '\\';
constexpr std::size_t LongestName = std::size_t{1} << 16;
constexpr auto LargestElement = static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max());

// The bytes of a path as names are compared: each byte of the stream is the character of its signed value.
// False if the path holds a character that no byte can be.
bool NarrowPath(const CString& path, std::string& narrow) {
    for (const WCHAR unit : path.View()) {
        const auto value = static_cast<char16_t>(unit);
        if (value >= 0x80 && value < 0xFF80) {
            return false;
        }
        narrow += static_cast<char>(value & 0xFF);
    }
    return true;
}

}  // namespace

// The state of one Extract.
struct XmlScanner::Cut {
    const std::string& m_wanted;
    std::string& m_bytes;
    std::string m_tag;
    int m_depth = 0;
    bool m_tagPending = false;
    bool m_capturing = false;
    // The element's last tag is open: only its '>' is missing.
    bool m_finished = false;
    bool m_done = false;
};

XmlScanner::XmlScanner(ReadBytes read, int blockSize)
    : m_read(std::move(read)), m_block(static_cast<std::size_t>(std::max(blockSize, 2))) {
}

bool XmlScanner::Refill() {
    m_before += m_size;
    m_size = m_read(m_block.data(), m_block.size());
    m_next = 0;
    m_nextOpen = 0;
    m_nextClose = 0;
    return m_size > 0;
}

bool XmlScanner::Extract(const CString& path, std::string& bytes) {
    bytes.clear();
    const bool isFirst = !std::exchange(m_started, true);
    if (isFirst) {
        if (Refill()) {
            m_previous = m_block[m_next++];
        } else {
            m_eof = true;
        }
    }
    std::string wanted;
    // A path that no element can have is still searched for: the search ends at the stream's end.
    if (!NarrowPath(path, wanted)) {
        wanted.clear();
    }
    Cut cut{wanted, bytes, {}};
    if (isFirst && xml::UnitsOf({m_block.data(), m_size}).m_size > 1) {
        Refuse(cut, "it is in UTF-16 or UTF-32, which can only be read as a whole");
    }
    while (!m_eof && !cut.m_done) {
        if (m_next >= m_size && !Refill()) {
            // The last byte has no successor; it is still part of what is being cut.
            m_eof = true;
            Step(cut, '\0');
            break;
        }
        const char current = m_block[m_next];
        Step(cut, current);
        m_previous = current;
        ++m_next;
        if (!cut.m_done && !cut.m_tagPending) {
            SkipPlain(cut);
        }
        if (bytes.size() > LargestElement) {
            Refuse(cut, "an element is larger than 2 GB");
        }
    }
    return cut.m_capturing;
}

// Looks at one byte and its successor.
void XmlScanner::Step(Cut& cut, char current) {
    if (!cut.m_finished) {
        bool closing = false;
        if (m_previous == '<') {
            if (current == '/') {
                --cut.m_depth;
                closing = true;
            } else {
                ++cut.m_depth;
                cut.m_tagPending = cut.m_tagPending || !cut.m_capturing;
            }
        }
        if ((m_previous == '/' || m_previous == '?') && current == '>') {
            --cut.m_depth;
            closing = true;
        }
        if (closing && !cut.m_capturing) {
            Ascend();
        }
    }
    if (cut.m_capturing) {
        cut.m_finished = cut.m_finished || cut.m_depth == 0;
        if (cut.m_finished && m_previous == '>') {
            cut.m_done = true;
            Ascend();
        }
        cut.m_bytes += m_previous;
    } else if (cut.m_tagPending) {
        if (m_previous == ' ' || m_previous == '>') {
            FinishTag(cut);
        } else if (cut.m_tag.size() == LongestName) {
            Refuse(cut, "an element's name is longer than 64 KB");
        } else if (m_previous != '<') {
            cut.m_tag += m_previous;
        }
    }
}

void XmlScanner::FinishTag(Cut& cut) {
    cut.m_tagPending = false;
    m_path += PathSeparator;
    m_path += cut.m_tag;
    if (++m_depth > xml::MaxDepth) {
        Refuse(cut, "elements are nested too deep");
        return;
    }
    if (m_path == cut.m_wanted) {
        cut.m_depth = 1;
        cut.m_capturing = true;
        // The byte after the name is the last one that was looked at.
        m_place = m_before + m_next - cut.m_tag.size() - 2;
        cut.m_bytes = '<';
        cut.m_bytes += cut.m_tag;
        cut.m_bytes += m_previous;
    }
    cut.m_tag.clear();
}

// Passes over the bytes that change nothing, up to the next one that may: no tag is open and none begins.
void XmlScanner::SkipPlain(Cut& cut) {
    if (m_previous == '<' || m_previous == '>' || m_next >= m_size) {
        return;
    }
    const std::size_t markup = NextMarkup();
    if (markup == m_next) {
        return;
    }
    if (cut.m_capturing) {
        cut.m_bytes += m_previous;
        cut.m_bytes.append(m_block.data() + m_next, markup - m_next - 1);
    }
    m_previous = m_block[markup - 1];
    m_next = markup;
}

std::size_t XmlScanner::NextMarkup() {
    const auto find = [&](std::size_t known, char mark) {
        if (known > m_next || (known == m_next && known < m_size && m_block[known] == mark)) {
            return known;
        }
        const void* const found = std::memchr(m_block.data() + m_next, mark, m_size - m_next);
        return found == nullptr ? m_size
                                : static_cast<std::size_t>(static_cast<const char*>(found) - m_block.data());
    };
    m_nextOpen = find(m_nextOpen, '<');
    m_nextClose = find(m_nextClose, '>');
    return std::min(m_nextOpen, m_nextClose);
}

void XmlScanner::Ascend() {
    const std::size_t last = m_path.rfind(PathSeparator);
    if (last != std::string::npos) {
        m_path.resize(last);
    }
    m_depth = std::max(m_depth - 1, 0);
}

void XmlScanner::Refuse(Cut& cut, const char* why) {
    m_refusal = why;
    m_eof = true;
    cut.m_done = true;
    cut.m_capturing = false;
    cut.m_bytes.clear();
}

}  // namespace quillet
