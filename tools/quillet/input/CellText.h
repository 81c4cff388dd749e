// Text from outside to cells: which type a column of texts has, and what a text is as a value of a type.
// Numbers are written with a decimal point here, whatever the locale.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "Quillet/Db_FieldDescr.h"
#include "Quillet/Db_FieldValue.h"

namespace quillet::tool {

// The type that fits every text seen: long, double, boolean, else text. Empty texts fit everything.
class TypeGuess {
public:
    void See(std::string_view text);
    DbFieldDescr::eFieldType Type() const;

private:
    bool m_sawValue = false;
    bool m_isLong = true;
    bool m_isDouble = true;
    bool m_isBoolean = true;
};

// By the words that fields show: "long", "double" and so on; nothing for another word.
std::optional<DbFieldDescr::eFieldType> TypeOfWord(std::string_view word);
// All these words, "a, b, c".
std::string TypeWords();

// Fills a cell with the text as a value of the field's type that a file can give back; an empty text leaves a
// cell that is no text without a value. False, with the cell as it was, where the text is no such value.
bool FillCell(const DbFieldDescr& field, std::string_view text, CComVariant& cell);

// Whether a cell's text, as files hold it, is read back as a number. The text has 15 digits (7 of a float),
// which may round the largest doubles up to more than a double holds, and there is none for infinity and the
// like.
bool IsReadBack(const CComVariant& cell);
// What to say of a number that is not.
std::string LostNumber(const DbFieldValue& cell);

// The first character that a catalog file can't carry, as "U+0001"; empty where there is none.
std::string UncarriableCharacter(std::string_view text);

}  // namespace quillet::tool
