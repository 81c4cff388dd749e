// How deep a document's elements stand in each other, while it is being read.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace quillet::xml {

// Elements nested deeper than this are refused.
constexpr int MaxDepth = 256;
// A document of more elements is refused.
constexpr std::size_t MaxElements = 100'000'000;

// How the characters of a text are laid out: markup is the same in all encodings but for the zeros.
struct TextUnits {
    // The bytes of a character: 1 for every encoding but UTF-16 and UTF-32.
    std::size_t m_size = 1;
    // The place of the byte that counts.
    std::size_t m_place = 0;
};

// Those of a text that begins so: by its byte-order mark, or by its first character, which is that of markup.
TextUnits UnitsOf(std::string_view beginning);

// Looks at the markup of a text that grows, so that a file which no document can be made of is given up long
// before it is read to its end. It does not tell whether the text is well-formed.
class Nesting {
public:
    // The limit of elements is a parameter for tests.
    explicit Nesting(std::size_t mostElements = MaxElements) : m_mostElements(mostElements) {}

    // text is what there is up to now: what was given before, and more behind it. False, with the reason in
    // Refusal, when it goes beyond a limit.
    bool Follow(std::string_view text);
    const std::string& Refusal() const { return m_refusal; }
    // Whether a document type declared entities, which no document resolves.
    bool HasEntities() const { return m_hasEntities; }

private:
    bool FollowNarrow(std::string_view text);
    bool IsWorthATry(std::size_t size) const;
    bool Pass(std::string_view text, std::size_t& position);
    bool PassStartTag(std::string_view text, std::size_t& position);

    std::size_t m_mostElements;
    TextUnits m_units;
    // Of text of wider units, what was given as one byte a character, and how much of the text that is.
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
