// External text to cells: the type of a column of texts, and the value of a text for a type. Numbers have a
// decimal point here, whatever the locale. A zero byte follows each text, as in a string.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "Quillet/Db_FieldDescr.h"
#include "Quillet/rows/CellView.h"

namespace quillet::tool {

// The type that suits all texts seen: long, double, boolean, else text. Empty texts suit every type.
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

// The type for its displayed name: "long", "double" and so on; nothing for another word.
std::optional<DbFieldDescr::eFieldType> TypeOfWord(std::string_view word);
// All these words, "a, b, c".
std::string TypeWords();

// The text's value in the field's type, if it can be saved and read back; for an empty text, a cell of
// another type than text has no value. It refers to the text, which must be well-formed UTF-8, or to scratch.
// Nothing if the text is not such a value.
std::optional<CellView> ReadCell(const DbFieldDescr& field, std::string_view text, CComVariant& scratch);
// Sets a cell to that value. False, with the cell unchanged, if the text is not such a value.
bool FillCell(const DbFieldDescr& field, std::string_view text, CComVariant& cell);

// Whether a cell's text in a file is read back as a number. The text has 15 digits (7 for a float), which may
// round the largest doubles up to more than a double can hold, and infinity and the like have no such text.
bool IsReadBack(const CellView& cell);
// True for nearly all numbers, and for none that is not read back.
bool IsSurelyReadBack(double number);
// The message about a number that is not.
std::string LostNumber(const CellView& cell);

// The text form of a cell's value, in UTF-8.
std::string CellText(const CellView& cell);

// The first character that can't be written to a catalog file, as "U+0001"; empty if there is none.
std::string UncarriableCharacter(std::string_view text);

}  // namespace quillet::tool
