// Numbers for the different texts of cells.
#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>

#include "Quillet/rows/CellView.h"
#include "Quillet/rows/Numbering.h"

namespace quillet {

// Gives texts of the same characters the same number, counting from 0 in the order in which they first come,
// wherever they are kept. Texts in columns must outlive the object.
class TextNumbers {
public:
    std::uint32_t NumberOf(const CellView& text) {
        return text.GetKind() == CellView::Kind::Text ? m_numbers.NumberOf(text.AsText())
                                                      : NumberOf(text.AsVariant().Text());
    }
    std::uint32_t NumberOf(WideView text);

    std::size_t Count() const { return m_numbers.Keys().size(); }
    // The characters of a text, in scratch.
    WideView Wide(std::uint32_t number, WideString& scratch) const;

private:
    Numbering<std::string_view> m_numbers;
    // The texts that are not in columns.
    std::deque<std::string> m_texts;
    std::string m_text;
};

}  // namespace quillet
