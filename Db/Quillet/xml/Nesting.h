// Checks how deep a document's elements are nested, while it is being read.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace quillet::xml {

// Elements nested deeper than this are refused.
constexpr int MaxDepth = 256;
// A document with more elements is refused.
constexpr std::size_t MaxElements = 100'000'000;

// How the characters of a text are stored: markup is the same in all encodings except for the zeros.
struct TextUnits {
    // The bytes of a character: 1 for every encoding but UTF-16 and UTF-32.
    std::size_t m_size = 1;
    // The position of the byte that is not zero.
    std::size_t m_place = 0;
};

// The units of a text, told by its byte-order mark or by its first character, which is one of markup.
TextUnits UnitsOf(std::string_view beginning);

// Follows the markup of a text while it grows, so that a file beyond a limit is given up long before its end.
// It does not check whether the text is well-formed.
class Nesting {
public:
    // The limit of elements is a parameter for tests.
    explicit Nesting(std::size_t mostElements = MaxElements) : m_mostElements(mostElements) {}

    // text is all that was read up to now: what was given before, with more after it. False, with the reason
    // in Refusal, when it exceeds a limit.
    bool Follow(std::string_view text);
    const std::string& Refusal() const { return m_refusal; }
    // Whether a document type declared entities, which no document resolves.
    bool HasEntities() const { return m_hasEntities; }

private:
    bool FollowNarrow(std::string_view text);
    bool ShouldRetry(std::size_t size) const;
    bool Pass(std::string_view text, std::size_t& position);
    bool PassStartTag(std::string_view text, std::size_t& position);

    std::size_t m_mostElements;
    TextUnits m_units;
    // For text of wider units: the text so far with one byte a character, and how much of the text that
    // covers.
    std::string m_narrow;
    std::size_t m_narrowed = 0;
    // The first byte that was not passed.
    std::size_t m_position = 0;
    // How much text there was when the markup at that byte was last found to be incomplete.
    std::size_t m_tried = 0;
    int m_depth = 0;
    int m_deepest = 0;
    std::size_t m_elements = 0;
    std::string m_refusal;
    bool m_hasEntities = false;
};

}  // namespace quillet::xml
