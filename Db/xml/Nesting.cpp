#include "xml/Nesting.h"

#include <algorithm>

namespace quillet::xml {

namespace {

// Moves behind the mark; false where it is not there yet.
bool PassMark(std::string_view text, std::string_view mark, std::size_t& position) {
    const std::size_t found = text.find(mark, position);
    if (found == std::string_view::npos) {
        return false;
    }
    position = found + mark.size();
    return true;
}

// Behind a document type, which may hold brackets and quoted text; false where it has not ended.
bool PassDocumentType(std::string_view text, std::size_t& position) {
    int open = 0;
    while (position < text.size()) {
        const char unit = text[position++];
        if (unit == '"' || unit == '\'') {
            if (!PassMark(text, std::string_view(&unit, 1), position)) {
                return false;
            }
        } else if (unit == '<') {
            ++open;
        } else if (unit == '>' && --open <= 0) {
            return true;
        }
    }
    return false;
}

bool HasWideUnits(std::string_view text) {
    const std::string_view start = text.substr(0, 4);
    return start.starts_with("\xFF\xFE") || start.starts_with("\xFE\xFF") ||
           start.find('\0') != std::string_view::npos;
}

}  // namespace

bool Nesting::Follow(std::string_view text) {
    if (HasWideUnits(text)) {
        m_isLookedAt = false;
        return true;
    }
    while (m_refusal.empty()) {
        m_position = std::min(text.find('<', m_position), text.size());
        std::size_t position = m_position;
        if (!IsWorthATry(text.size())) {
            return true;
        }
        if (!Pass(text, position)) {
            m_tried = text.size();
            return true;
        }
        m_position = position;
        m_tried = 0;
        if (m_deepest > MaxDepth) {
            m_refusal = "Elements are nested deeper than " + std::to_string(MaxDepth);
        } else if (m_elements > m_mostElements) {
            m_refusal = "There are more than " + std::to_string(m_mostElements) + " elements";
        }
    }
    return false;
}

// Markup that is longer than the text is looked at again when there is twice as much of it, so that a long
// one does not cost its length for each piece.
bool Nesting::IsWorthATry(std::size_t size) const {
    return m_position < size && (m_tried == 0 || size - m_position >= 2 * (m_tried - m_position));
}

// Moves from a '<' behind the markup that begins there; false where that is not complete.
bool Nesting::Pass(std::string_view text, std::size_t& position) {
    // As long as "<![CDATA[": what begins like it can't be told from another before.
    constexpr std::size_t LongestBeginning = 9;
    const std::string_view markup = text.substr(position, LongestBeginning);
    if (markup.size() < 2) {
        return false;
    }
    switch (markup[1]) {
        case '/':
            if (!PassMark(text, ">", position)) {
                return false;
            }
            m_depth = std::max(m_depth - 1, 0);
            return true;
        case '?':
            return PassMark(text, "?>", position);
        case '!':
            if (markup.starts_with("<!--")) {
                position += 4;
                return PassMark(text, "-->", position);
            }
            if (markup == "<![CDATA[") {
                return PassMark(text, "]]>", position);
            }
            if (markup.size() < LongestBeginning || !PassDocumentType(text, position)) {
                return false;
            }
            m_hasEntities =
                m_hasEntities ||
                text.substr(m_position, position - m_position).find("<!ENTITY") != std::string_view::npos;
            return true;
        default:
            return PassStartTag(text, position);
    }
}

bool Nesting::PassStartTag(std::string_view text, std::size_t& position) {
    while (position < text.size()) {
        const char unit = text[position++];
        if (unit == '"' || unit == '\'') {
            position = text.find(unit, position);
            if (position == std::string_view::npos) {
                return false;
            }
            ++position;
        } else if (unit == '>') {
            ++m_elements;
            m_deepest = std::max(m_deepest, m_depth + 1);
            m_depth += text[position - 2] == '/' ? 0 : 1;
            return true;
        }
    }
    return false;
}

}  // namespace quillet::xml
