#include "Quillet/xml/Tree.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <new>

#include "Quillet/base/Rollback.h"

namespace quillet::xml {

namespace {

constexpr std::size_t PieceSize = std::size_t(1) << 18;

struct CodeRange {
    char32_t m_first;
    char32_t m_last;
};

// NameStartChar of XML 1.0, fifth edition, beyond ASCII.
constexpr CodeRange NameStartRanges[] = {
    {0xC0, 0xD6},     {0xD8, 0xF6},     {0xF8, 0x2FF},    {0x370, 0x37D},
    {0x37F, 0x1FFF},  {0x200C, 0x200D}, {0x2070, 0x218F}, {0x2C00, 0x2FEF},
    {0x3001, 0xD7FF}, {0xF900, 0xFDCF}, {0xFDF0, 0xFFFD}, {0x10000, 0xEFFFF},
};
// What NameChar adds to it.
constexpr CodeRange NameRestRanges[] = {{0xB7, 0xB7}, {0x300, 0x36F}, {0x203F, 0x2040}};

template <std::size_t Count>
bool IsIn(const CodeRange (&ranges)[Count], char32_t code) {
    return std::any_of(std::begin(ranges), std::end(ranges),
                       [&](const CodeRange& range) { return code >= range.m_first && code <= range.m_last; });
}

bool IsNameStart(char32_t code) {
    if (code < 0x80) {
        return (code >= 'a' && code <= 'z') || (code >= 'A' && code <= 'Z') || code == '_' || code == ':';
    }
    return IsIn(NameStartRanges, code);
}

bool IsNameRest(char32_t code) {
    if (code < 0x80) {
        return IsNameStart(code) || (code >= '0' && code <= '9') || code == '-' || code == '.';
    }
    return IsNameStart(code) || IsIn(NameRestRanges, code);
}

enum class Escape : unsigned char { Plain, Refused, Markup, NotAscii };

constexpr std::array<Escape, 256> MakeEscapes() {
    std::array<Escape, 256> escapes{};
    for (std::size_t code = 0; code < escapes.size(); ++code) {
        escapes[code] = code < 0x20 ? Escape::Refused : code < 0x80 ? Escape::Plain : Escape::NotAscii;
    }
    for (const char markup : {'&', '<', '>', '"', '\t', '\n', '\r'}) {
        escapes[static_cast<unsigned char>(markup)] = Escape::Markup;
    }
    return escapes;
}

constexpr std::array<Escape, 256> Escapes = MakeEscapes();

std::string_view Entity(char32_t markup) {
    switch (markup) {
        case '&':
            return "&amp;";
        case '<':
            return "&lt;";
        case '>':
            return "&gt;";
        case '"':
            return "&quot;";
        case '\t':
            return "&#9;";
        case '\n':
            return "&#10;";
        default:
            return "&#13;";
    }
}

bool IsXmlChar(char32_t code) {
    return !IsSurrogate(code) && code != 0xFFFE && code != 0xFFFF;
}

// Makes text of pending leaves, some at a time.
class Expansion {
public:
    // Ends, with false, when use does.
    template <typename Use>
    bool ForEachText(const PendingLeaves& leaves, Use use) {
        for (std::size_t leaf = 0; leaf < leaves.Count();) {
            MakeRoom(std::max(leaves.RoomFor(leaf), PieceSize));
            const char* const end = leaves.Write(leaf, m_room.get(), m_room.get() + m_size);
            if (!use(std::string_view(m_room.get(), static_cast<std::size_t>(end - m_room.get())))) {
                return false;
            }
        }
        return true;
    }

private:
    void MakeRoom(std::size_t bytes) {
        if (bytes > m_size) {
            m_room = std::make_unique_for_overwrite<char[]>(bytes);
            m_size = bytes;
        }
    }

    std::unique_ptr<char[]> m_room;
    std::size_t m_size = 0;
};

class Writer {
public:
    explicit Writer(const Tree::Sink& sink) : m_sink(sink) { m_piece.reserve(PieceSize + PieceSize / 8); }

    std::string& Piece() { return m_piece; }

    bool Flush(std::size_t least) {
        if (m_piece.size() < least) {
            return true;
        }
        const bool taken = m_sink(m_piece);
        m_piece.clear();
        return taken;
    }

    bool Pass(const PackedLeaves& leaves) {
        return std::all_of(
            leaves.m_pieces.begin(), leaves.m_pieces.end(), [&](const PackedLeaves::Piece& piece) {
                return piece.m_pending == nullptr ? PassText(piece.m_text) : PassPending(*piece.m_pending);
            });
    }

private:
    // Large texts go to the sink as they are.
    bool PassText(std::string_view text) {
        constexpr std::size_t Large = PieceSize / 4;
        if (text.size() >= Large) {
            return Flush(1) && m_sink(text);
        }
        m_piece += text;
        return Flush(PieceSize);
    }

    bool PassPending(const PendingLeaves& leaves) {
        return m_expansion.ForEachText(leaves, [&](std::string_view text) { return PassText(text); });
    }

    Expansion m_expansion;
    const Tree::Sink& m_sink;
    std::string m_piece;
};

bool HasText(const PackedLeaves& leaves) {
    return std::any_of(leaves.m_pieces.begin(), leaves.m_pieces.end(), [](const PackedLeaves::Piece& piece) {
        return piece.m_pending != nullptr || !piece.m_text.empty();
    });
}

void WriteAttributes(pugi::xml_node node, std::string& target) {
    for (const pugi::xml_attribute attribute : node.attributes()) {
        target += ' ';
        target += attribute.name();
        target += "=\"";
        AppendEscaped(std::string_view(attribute.value()), target);
        target += '"';
    }
}

void WriteText(std::string_view text, std::string& target) {
    for (const char unit : text) {
        if (unit == '&' || unit == '<' || unit == '>' || unit == '\r') {
            target += Entity(static_cast<unsigned char>(unit));
        } else {
            target += unit;
        }
    }
}

// The node without its children; an element that has some stays open.
void WriteStart(pugi::xml_node node, bool hasChildren, std::string& target) {
    switch (node.type()) {
        case pugi::node_element:
            target += '<';
            target += node.name();
            WriteAttributes(node, target);
            target += hasChildren ? ">\n" : " />\n";
            break;
        case pugi::node_declaration:
            target += "<?";
            target += node.name();
            WriteAttributes(node, target);
            target += "?>\n";
            break;
        case pugi::node_pi:
            target += "<?";
            target += node.name();
            target += ' ';
            target += node.value();
            target += "?>\n";
            break;
        case pugi::node_pcdata:
        case pugi::node_cdata:
            WriteText(node.value(), target);
            target += '\n';
            break;
        default:
            break;
    }
}

void WriteEnd(pugi::xml_node node, std::string& target) {
    if (node.type() == pugi::node_element) {
        target += "</";
        target += node.name();
        target += ">\n";
    }
}

}  // namespace

pugi::xml_parse_result Tree::Load(std::string text) {
    m_packed.clear();
    m_detached = {};
    m_source = std::move(text);
    const pugi::xml_parse_result result = m_document.load_buffer_inplace(m_source.data(), m_source.size());
    RequireMemory(result);
    return result;
}

void RequireMemory(const pugi::xml_parse_result& result) {
    if (result.status == pugi::status_out_of_memory) {
        throw std::bad_alloc();
    }
}

pugi::xml_node Tree::Create(pugi::xml_node_type type) {
    if (!m_detached) {
        m_detached = m_document.append_child(pugi::node_element);
    }
    const pugi::xml_node made = m_detached.append_child(type);
    if (!made) {
        throw std::bad_alloc();
    }
    return made;
}

void Tree::Drop(pugi::xml_node node) {
    m_detached.remove_child(node);
}

void Tree::Append(pugi::xml_node parent, pugi::xml_node child) {
    Unpack(parent);
    if (!parent.append_move(child)) {
        throw DomError{std::string("A node can't be appended to '") + parent.name() + "'"};
    }
}

PackedLeaves& Tree::Packed(pugi::xml_node parent) {
    return m_packed[parent.internal_object()];
}

void Tree::Unpack(pugi::xml_node parent) {
    const auto packed = m_packed.find(parent.internal_object());
    if (packed == m_packed.end()) {
        return;
    }
    const pugi::xml_node last = parent.last_child();
    // Out of memory, the leaves stay packed, and none of them must exist twice.
    Rollback appended([&] {
        while (parent.last_child() != last) {
            parent.remove_child(parent.last_child());
        }
    });
    for (const PackedLeaves::Piece& piece : packed->second.m_pieces) {
        if (!AppendPiece(parent, piece)) {
            throw std::bad_alloc();
        }
    }
    appended.Keep();
    m_packed.erase(packed);
}

// False out of memory.
bool Tree::AppendPiece(pugi::xml_node parent, const PackedLeaves::Piece& piece) {
    const auto append = [&](std::string_view text) {
        return parent.append_buffer(text.data(), text.size()).status != pugi::status_out_of_memory;
    };
    return piece.m_pending == nullptr ? append(piece.m_text)
                                      : Expansion().ForEachText(*piece.m_pending, append);
}

pugi::xml_node Tree::FirstChild(pugi::xml_node parent) {
    if (!m_packed.empty()) {
        Unpack(parent);
    }
    const pugi::xml_node child = parent.first_child();
    return child == m_detached ? child.next_sibling() : child;
}

pugi::xml_node Tree::NextSibling(pugi::xml_node node) {
    if (node.parent() == m_detached) {
        return {};
    }
    pugi::xml_node next = node.next_sibling();
    if (!next && !m_packed.empty()) {
        Unpack(node.parent());
        next = node.next_sibling();
    }
    return next == m_detached && next ? next.next_sibling() : next;
}

pugi::xml_node Tree::PreviousSibling(pugi::xml_node node) const {
    if (node.parent() == m_detached) {
        return {};
    }
    const pugi::xml_node previous = node.previous_sibling();
    return previous == m_detached && previous ? previous.previous_sibling() : previous;
}

pugi::xml_node Tree::LastChild(pugi::xml_node parent) {
    Unpack(parent);
    const pugi::xml_node child = parent.last_child();
    return child == m_detached && child ? child.previous_sibling() : child;
}

pugi::xml_node Tree::Parent(pugi::xml_node node) const {
    const pugi::xml_node parent = node.parent();
    return parent == m_detached ? pugi::xml_node() : parent;
}

bool Tree::Write(pugi::xml_node top, const Sink& sink) const {
    Writer writer(sink);
    pugi::xml_node node = top;
    for (;;) {
        const auto packed = m_packed.find(node.internal_object());
        const bool hasPacked = packed != m_packed.end() && HasText(packed->second);
        pugi::xml_node child = node.first_child();
        if (child && child == m_detached) {
            child = child.next_sibling();
        }
        WriteStart(node, child || hasPacked, writer.Piece());
        if (child) {
            node = child;
            continue;
        }
        if (hasPacked) {
            if (!writer.Pass(packed->second)) {
                return false;
            }
            WriteEnd(node, writer.Piece());
        }
        for (;;) {
            if (!writer.Flush(PieceSize)) {
                return false;
            }
            if (node == top) {
                return writer.Flush(1);
            }
            pugi::xml_node next = node.next_sibling();
            if (next && next == m_detached) {
                next = next.next_sibling();
            }
            if (next) {
                node = next;
                break;
            }
            node = node.parent();
            const auto rest = m_packed.find(node.internal_object());
            if (rest != m_packed.end() && !writer.Pass(rest->second)) {
                return false;
            }
            WriteEnd(node, writer.Piece());
        }
    }
}

bool IsXmlName(std::string_view text) {
    if (text.empty() || !IsValidUtf8(text)) {
        return false;
    }
    WideString wide;
    AppendWide(text, wide);
    std::size_t position = 0;
    if (!IsNameStart(NextCodePoint(wide, position))) {
        return false;
    }
    while (position < wide.size()) {
        if (!IsNameRest(NextCodePoint(wide, position))) {
            return false;
        }
    }
    return true;
}

bool AppendEscaped(std::string_view value, std::string& target) {
    std::size_t plainStart = 0;
    for (std::size_t position = 0; position < value.size(); ++position) {
        const auto unit = static_cast<unsigned char>(value[position]);
        if (Escapes[unit] == Escape::Plain) {
            continue;
        }
        if (Escapes[unit] == Escape::Markup) {
            target.append(value, plainStart, position - plainStart);
            target += Entity(unit);
            plainStart = position + 1;
            continue;
        }
        // Rare: the rest of the value is checked code point by code point.
        WideString wide;
        AppendWide(value.substr(plainStart), wide);
        return Escapes[unit] == Escape::NotAscii && IsValidUtf8(value) && AppendEscaped(wide, target);
    }
    target.append(value, plainStart);
    return true;
}

bool AppendEscaped(WideView value, std::string& target) {
    std::size_t position = 0;
    while (position < value.size()) {
        const char32_t code = NextCodePoint(value, position);
        if (code >= 0x80) {
            if (!IsXmlChar(code)) {
                return false;
            }
            AppendCodePoint(code, target);
            continue;
        }
        switch (Escapes[code]) {
            case Escape::Plain:
                target += static_cast<char>(code);
                break;
            case Escape::Markup:
                target += Entity(code);
                break;
            default:
                return false;
        }
    }
    return true;
}

}  // namespace quillet::xml
