#include "input/Headings.h"

#include <algorithm>
#include <array>
#include <set>

#include "Quillet/Db_FieldDescr.h"
#include "Quillet/base/Utf8.h"
#include "Quillet/xml/Tree.h"

namespace quillet::tool {

namespace {

// The name under which a file stores the values of a field.
std::string NameInFile(const std::string& name) {
    DbFieldDescr field;
    field.SetName(name);
    return field.SafeNameUtf8();
}

// A query treats these as operators, even in brackets, and the last as a quotation mark.
bool HasMarksOfQueries(const std::string& name) {
    constexpr std::string_view HalfwidthMark = "\xEF\xBE\x91";
    return name.find_first_of("*()<>") != std::string::npos || name.find(HalfwidthMark) != std::string::npos;
}

bool IsSafe(const std::string& name) {
    return !name.empty() && !HasMarksOfQueries(name) && xml::IsXmlName(NameInFile(name));
}

// The names given so far: queries ignore case, and files can't have two equal ones.
class GivenNames {
public:
    // False if the name can't be distinguished from one given before.
    bool Give(const std::string& name) {
        const CString inQueries = Lowered(name);
        const std::string inFile = NameInFile(name);
        if (m_inQueries.count(inQueries) > 0 || m_inFile.count(inFile) > 0) {
            return false;
        }
        m_inQueries.insert(inQueries);
        m_inFile.insert(inFile);
        return true;
    }

private:
    std::set<CString> m_inQueries;
    std::set<std::string> m_inFile;
};

// Units often have superscripts: cm².
std::string PlainFigure(char32_t codePoint) {
    constexpr char32_t RaisedZero = 0x2070;
    constexpr std::array<char32_t, 10> Raised = {
        RaisedZero,     0xB9,           0xB2,           0xB3,           RaisedZero + 4,
        RaisedZero + 5, RaisedZero + 6, RaisedZero + 7, RaisedZero + 8, RaisedZero + 9};
    const auto* const found = std::find(Raised.begin(), Raised.end(), codePoint);
    return found == Raised.end() ? std::string() : std::to_string(found - Raised.begin());
}

// The letter as it may be used in a generated name; empty for one that may not.
std::string LetterOfName(char32_t codePoint) {
    std::string letter = PlainFigure(codePoint);
    if (letter.empty() && !IsSurrogate(codePoint)) {
        AppendCodePoint(codePoint, letter);
    }
    return xml::IsXmlName("a" + letter) && !HasMarksOfQueries(letter) ? letter : std::string();
}

std::string MakeName(const std::string& heading, std::size_t position) {
    WideString wide;
    AppendWide(heading, wide);
    std::string name;
    bool isApart = false;
    for (std::size_t at = 0; at < wide.size();) {
        const std::string letter = LetterOfName(NextCodePoint(wide, at));
        if (!letter.empty()) {
            name += isApart && !name.empty() && letter != "_" ? "_" : "";
            name += letter;
        }
        isApart = letter.empty();
    }
    if (name.empty()) {
        return "field_" + std::to_string(position + 1);
    }
    // Names must not begin with a digit.
    return IsSafe(name) ? name : "_" + name;
}

std::string GiveMadeName(const std::string& heading, std::size_t position, GivenNames& given) {
    const std::string made = MakeName(heading, position);
    std::string name = made;
    for (std::size_t number = 2; !given.Give(name); ++number) {
        name = made + "_" + std::to_string(number);
    }
    return name;
}

}  // namespace

std::vector<std::string> SafeNames(const std::vector<std::string>& headings) {
    GivenNames given;
    std::vector<std::string> names(headings.size());
    for (std::size_t i = 0; i < headings.size(); ++i) {
        if (IsSafe(headings[i]) && given.Give(headings[i])) {
            names[i] = headings[i];
        }
    }
    for (std::size_t i = 0; i < headings.size(); ++i) {
        if (names[i].empty()) {
            names[i] = GiveMadeName(headings[i], i, given);
        }
    }
    return names;
}

}  // namespace quillet::tool
