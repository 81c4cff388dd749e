// Which values are equal, told by numbers.
#pragma once

#include <bit>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Quillet/rows/CellView.h"
#include "Quillet/rows/Numbering.h"
#include "Quillet/rows/RowsView.h"
#include "Quillet/rows/TextNumbers.h"

namespace quillet {

// Gives values classes, numbers that count from 0: values that are equal by operator== have the same, as far
// as that can be told from a value alone. Texts in columns must outlive the object.
class EqualityClasses {
public:
    // In place of a class: the value may equal values of any class.
    static constexpr std::uint32_t Any = UINT32_MAX;

    std::uint32_t ClassOf(const CellView& value);
    // The classes of a field's cells, row by row.
    std::vector<std::uint32_t> ClassesOf(const RowSelection& rows, uint64 field);

    std::size_t Count() const { return m_isLoose.size(); }
    // Whether equal values, and only they, share a class. This and the next are known once all values came.
    bool AreSure() const { return m_areSure; }
    // Whether the class may hold values that differ.
    bool IsLoose(std::uint32_t number) const { return m_isLoose[number]; }

private:
    // A number's value and type. Numbers that compare equal have equal keys.
    struct NumberKey {
        std::uint64_t m_bits;
        VARTYPE m_type;

        friend bool operator==(const NumberKey&, const NumberKey&) = default;
    };
    struct HashNumberKey {
        std::size_t operator()(const NumberKey& key) const {
            return static_cast<std::size_t>(key.m_bits + key.m_type);
        }
    };

    static std::uint64_t BitsOf(double number) {
        return std::bit_cast<std::uint64_t>(number == 0 ? 0.0 : number);
    }
    static std::uint64_t BitsOf(LONGLONG number) { return static_cast<std::uint64_t>(number); }
    // None for what is no number, and for one that does not equal itself.
    static std::optional<NumberKey> KeyOf(const CellView& value);
    static std::optional<NumberKey> KeyOfReal(double number, VARTYPE type) {
        return number == number ? std::optional(NumberKey{BitsOf(number), type}) : std::nullopt;
    }
    // The class of a value that is kept in a column of its type.
    std::uint32_t ClassInPlace(double number, VARTYPE type) { return ClassOfReal(number, type); }
    std::uint32_t ClassInPlace(float number, VARTYPE type) { return ClassOfReal(double{number}, type); }
    std::uint32_t ClassInPlace(LONG number, VARTYPE type) {
        return ClassOfKey({BitsOf(LONGLONG{number}), type});
    }
    std::uint32_t ClassInPlace(SHORT number, VARTYPE type) {
        return ClassOfKey({BitsOf(LONGLONG{number}), type});
    }
    std::uint32_t ClassInPlace(std::string_view text, VARTYPE) { return ClassOfText(CellView::Text(text)); }

    std::uint32_t ClassOfReal(double number, VARTYPE type) {
        const std::optional<NumberKey> key = KeyOfReal(number, type);
        // What does not equal itself equals nothing.
        return key ? ClassOfKey(*key) : NewClass();
    }
    std::uint32_t ClassOfKey(const NumberKey& key) {
        const std::uint32_t number = m_numbers.NumberOf(key);
        if (number == m_ofNumber.size()) {
            const std::uint32_t made = NewClass();
            m_ofNumber.push_back(made);
        }
        return m_ofNumber[number];
    }

    std::uint32_t NewClass();
    std::uint32_t AnyClass();
    std::uint32_t OneClass(std::optional<std::uint32_t>& number);
    std::uint32_t ClassOfText(const CellView& text);
    std::uint32_t ClassOfNewText(WideView text);

    std::vector<bool> m_isLoose;
    bool m_areSure = true;
    std::optional<std::uint32_t> m_empty;
    std::optional<std::uint32_t> m_null;
    Numbering<NumberKey, HashNumberKey> m_numbers;
    std::vector<std::uint32_t> m_ofNumber;
    TextNumbers m_texts;
    std::vector<std::uint32_t> m_ofText;
    WideString m_wide;
    Numbering<std::string> m_keys;
    std::vector<std::uint32_t> m_ofKey;
    std::string m_key;
};

// The same for equality as the operator = of a field of texts has it: values share a class exactly when they
// are equal as texts without regard to case, or both null. What has no text has a class of its own each time.
class TextClasses {
public:
    std::uint32_t ClassOf(const CellView& value);
    std::size_t Count() const { return m_count; }

private:
    std::uint32_t m_count = 0;
    std::optional<std::uint32_t> m_null;
    TextNumbers m_texts;
    std::vector<std::uint32_t> m_ofText;
    Numbering<WideString> m_foldings;
    std::vector<std::uint32_t> m_ofFolding;
    WideString m_wide;
};

}  // namespace quillet
