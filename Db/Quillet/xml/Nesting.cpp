#include "Quillet/xml/Nesting.h"

#include <algorithm>

namespace quillet::xml {

namespace {

// Moves past the mark; false if it is not there yet.
bool PassMark(std::string_view text, std::string_view mark, std::size_t& position) {
    const std::size_t found = text.find(mark, position);
    if (found == std::string_view::npos) {
        return false;
    }
    position = found + mark.size();
    return true;
}

// Moves past a document type, which may contain brackets and quoted text; false if it has not ended.
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

}  // namespace

TextUnits UnitsOf(std::string_view beginning) {
    using namespace std::string_view_literals;
    for (const std::string_view start : {"\xFF\xFE\0\0"sv, "<\0\0\0"sv}) {
        if (beginning.starts_with(start)) {
            return {4, 0};
        }
    }
    for (const std::string_view start : {"\0\0\xFE\xFF"sv, "\0\0\0<"sv}) {
        if (beginning.starts_with(start)) {
            return {4, 3};
        }
    }
    for (const std::string_view start : {"\xFF\xFE"sv, "<\0"sv}) {
        if (beginning.starts_with(start)) {
            return {2, 0};
        }
    }
    for (const std::string_view start : {"\xFE\xFF"sv, "\0<"sv}) {
        if (beginning.starts_with(start)) {
            return {2, 1};
        }
    }
    return {};
}

bool Nesting::Follow(std::string_view text) {
    constexpr std::size_t LongestStart = 4;
    if (m_narrowed == 0 && m_position == 0) {
        if (text.size() < LongestStart) {
            return true;
        }
        m_units = UnitsOf(text);
    }
    if (m_units.m_size == 1) {
        return FollowNarrow(text);
    }
    for (; m_narrowed + m_units.m_size <= text.size(); m_narrowed += m_units.m_size) {
        const std::string_view unit = text.substr(m_narrowed, m_units.m_size);
        const bool isNarrow =
            std::count(unit.begin(), unit.end(), '\0') + 1 == static_cast<std::ptrdiff_t>(m_units.m_size);
        m_narrow += isNarrow ? unit[m_units.m_place] : 'x';
    }
    return FollowNarrow(m_narrow);
}

bool Nesting::FollowNarrow(std::string_view text) {
    while (m_refusal.empty()) {
        m_position = std::min(text.find('<', m_position), text.size());
        std::size_t position = m_position;
        if (!ShouldRetry(text.size())) {
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

// Incomplete markup is tried again only when twice as much of it is there. Otherwise long markup would cost
// its whole length for each piece read.
bool Nesting::ShouldRetry(std::size_t size) const {
    return m_position < size && (m_tried == 0 || size - m_position >= 2 * (m_tried - m_position));
}

// Moves from a '<' past the markup that begins there; false if that is incomplete.
bool Nesting::Pass(std::string_view text, std::size_t& position) {
    // The length of "<![CDATA[": with fewer characters, markup of several kinds may look alike.
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
