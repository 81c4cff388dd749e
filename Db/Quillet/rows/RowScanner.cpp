#include "Quillet/rows/RowScanner.h"

#include <algorithm>
#include <charconv>
#include <cstring>

#include "Quillet/Db_TableDescr.h"
#include "Quillet/base/Utf8.h"
#include "Quillet/platform/NumberText.h"
#include "Quillet/values/PlainNumber.h"
#include "Quillet/xml/Tree.h"

namespace quillet {

namespace {

using Kind = CellView::Kind;

constexpr std::string_view RowStart = "<row";
constexpr std::string_view RowEnd = "</row>";
static_assert(RowStart.size() == RowScanner::StartBytes);

bool IsBlank(char unit) {
    return unit == ' ' || unit == '\n' || unit == '\t' || unit == '\r';
}

const char* SkipBlanks(const char* at, const char* end) {
    while (at < end && IsBlank(*at)) {
        ++at;
    }
    return at;
}

bool IsNameUnit(char unit) {
    return (unit >= 'a' && unit <= 'z') || (unit >= 'A' && unit <= 'Z') || (unit >= '0' && unit <= '9') ||
           unit == '_' || unit == '-' || unit == '.' || unit == ':' || (unit & 0x80) != 0;
}

bool IsNameStart(char unit) {
    return IsNameUnit(unit) && unit != '-' && unit != '.' && !(unit >= '0' && unit <= '9');
}

// What the bytes of an attribute's value have to be looked at for.
struct Contents {
    bool m_hasMarkup = false;
    bool m_isAscii = true;
};

Contents ContentsOf(std::string_view text) {
    Contents contents;
    for (const char unit : text) {
        contents.m_hasMarkup |= static_cast<unsigned char>(unit) < ' ' || unit == '&' || unit == '<';
        contents.m_isAscii &= (unit & 0x80) == 0;
    }
    return contents;
}

const char* FindUnit(const char* at, const char* end, char unit) {
    return static_cast<const char*>(std::memchr(at, unit, static_cast<std::size_t>(end - at)));
}

}  // namespace

RowScanner::RowScanner(const DbTableDescr& descr, ColumnStore& rows) : m_rows(rows) {
    for (const DbFieldDescr* const field : descr) {
        const Kind kind = ColumnKindOf(field->GetType());
        // A document with other names is refused.
        const bool isPlain = kind != Kind::Empty && field->ConvertedType() == field->GetType() &&
                             xml::IsXmlName(field->SafeNameUtf8());
        m_fields.push_back({field, kind, isPlain, " " + field->SafeNameUtf8() + "=\""});
        m_kinds.push_back(kind);
    }
}

std::size_t RowScanner::Read(std::string_view text, Stop& stop) {
    const char* const end = text.data() + text.size();
    const char* at = text.data();
    stop = Stop::NoRow;
    for (;;) {
        const char* row = SkipBlanks(at, end);
        const auto left = static_cast<std::size_t>(end - row);
        if (left <= RowStart.size()) {
            stop = left > 0 && RowStart.starts_with(std::string_view(row, left)) ? Stop::Incomplete
                                                                                 : Stop::NoRow;
            break;
        }
        if (!std::equal(RowStart.begin(), RowStart.end(), row)) {
            break;
        }
        row += RowStart.size();
        if (!IsBlank(*row) && *row != '/' && *row != '>') {
            stop = Stop::Unknown;
            break;
        }
        if (m_block == nullptr || m_slot == ColumnBlock::MostSlots) {
            OpenBlock();
        }
        const std::size_t texts = m_block->TextBytes();
        const Step step = ReadRow(row, end);
        if (step != Step::Done) {
            m_block->TakeBackTexts(texts);
            stop = step == Step::Incomplete ? Stop::Incomplete : Stop::Unknown;
            break;
        }
        at = row;
    }
    CountRows();
    return static_cast<std::size_t>(at - text.data());
}

void RowScanner::OpenBlock() {
    CountRows();
    m_block = &m_rows.OpenBlock(m_kinds);
    m_slot = m_block->Used();
    m_uncounted = m_slot;
}

void RowScanner::CountRows() {
    if (m_uncounted < m_slot) {
        m_block->Use(m_slot - m_uncounted);
        m_block->Fill(m_uncounted, m_slot);
        m_rows.CountRows(m_slot - m_uncounted);
        m_uncounted = m_slot;
    }
}

RowScanner::Step RowScanner::ReadRow(const char*& at, const char* end) {
    if (m_slot == m_block->Capacity()) {
        // The first block of a table grows.
        CountRows();
        m_block->Reserve(m_slot + 1);
    }
    m_otherCount = 0;
    std::size_t values = 0;
    Step step = ReadCells(at, end, values);
    if (step == Step::Done) {
        step = ReadEnd(at, end);
    }
    if (step == Step::Done) {
        FinishRow(values);
    }
    return step;
}

RowScanner::Step RowScanner::ReadCells(const char*& at, const char* end, std::size_t& values) {
    for (std::size_t column = 0; column < m_fields.size(); ++column) {
        if (const char* const next = ReadPlainCell(m_fields[column], column, at, end)) {
            at = next;
            ++values;
            continue;
        }
        const char* const before = at;
        const Step step = ReadAttribute(at, end);
        if (step != Step::Done) {
            return step;
        }
        KeepPlace(column);
        if (at == before) {
            continue;
        }
        if (m_otherCount == m_others.size()) {
            m_others.emplace_back();
        }
        auto& [otherColumn, value] = m_others[m_otherCount++];
        otherColumn = column;
        value.swap(m_value);
        ++values;
    }
    for (const char* before = nullptr; before != at; values += before == at ? 0 : 1) {
        before = at;
        const Step step = ReadAttribute(at, end);
        if (step != Step::Done) {
            return step;
        }
    }
    return Step::Done;
}

const char* RowScanner::ReadPlainCell(const Field& field, std::size_t column, const char* at,
                                      const char* end) {
    const std::string& beginning = field.m_beginning;
    if (!field.m_isPlain || static_cast<std::size_t>(end - at) <= beginning.size() ||
        std::memcmp(at, beginning.data(), beginning.size()) != 0) {
        return nullptr;
    }
    const char* const close = ReadPlainValue(field, column, at + beginning.size(), end);
    return close != nullptr && close < end && *close == '"' ? close + 1 : nullptr;
}

// Where the value ends.
const char* RowScanner::ReadPlainValue(const Field& field, std::size_t column, const char* at,
                                       const char* end) {
    switch (field.m_kind) {
        case Kind::Double: {
            double& number = m_block->NumbersOf<double>(column)[m_slot];
            const char* const close = ReadPlainDouble(at, number);
            return close != nullptr || !platform::GivesNearestDouble ? close
                                                                     : ReadNearestDouble(at, end, number);
        }
        case Kind::Long:
            return ReadPlainLong(at, m_block->NumbersOf<LONG>(column)[m_slot]);
        case Kind::Text:
            return ReadPlainText(column, at, end);
        default:
            return nullptr;
    }
}

const char* RowScanner::ReadPlainText(std::size_t column, const char* at, const char* end) {
    const char* const close = FindUnit(at, end, '"');
    if (close == nullptr) {
        return nullptr;
    }
    const std::string_view text(at, static_cast<std::size_t>(close - at));
    const Contents contents = ContentsOf(text);
    if (contents.m_hasMarkup || (!contents.m_isAscii && !IsValidUtf8(text))) {
        return nullptr;
    }
    return m_block->AddText(column, m_slot, text) ? close : nullptr;
}

RowScanner::Step RowScanner::ReadAttribute(const char*& at, const char* end) {
    const char* name = SkipBlanks(at, end);
    if (name == end) {
        return Step::Incomplete;
    }
    if (*name == '/' || *name == '>') {
        return Step::Done;
    }
    const char* place = name;
    while (place < end && IsNameUnit(*place)) {
        ++place;
    }
    const std::string_view bytes(name, static_cast<std::size_t>(place - name));
    const char* const equals = SkipBlanks(place, end);
    const char* const open = equals == end ? end : SkipBlanks(equals + 1, end);
    if (open == end) {
        return Step::Incomplete;
    }
    if (name == at || bytes.empty() || !IsNameStart(bytes.front()) || !IsValidUtf8(bytes) || *equals != '=' ||
        (*open != '"' && *open != '\'')) {
        return Step::Unknown;
    }
    place = open + 1;
    const Step step = ReadValue(place, end, *open);
    if (step == Step::Done) {
        at = place;
    }
    return step;
}

RowScanner::Step RowScanner::ReadValue(const char*& at, const char* end, char quote) {
    const char* const close = FindUnit(at, end, quote);
    if (close == nullptr) {
        return Step::Incomplete;
    }
    const std::string_view text(at, static_cast<std::size_t>(close - at));
    if (!IsValidUtf8(text)) {
        return Step::Unknown;
    }
    m_value.clear();
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char unit = text[i];
        if (unit == '&') {
            const std::size_t semicolon = text.find(';', i);
            if (semicolon == std::string_view::npos ||
                !ReadReference(text.substr(i + 1, semicolon - i - 1))) {
                return Step::Unknown;
            }
            i = semicolon;
        } else if (unit == '\r' && i + 1 < text.size() && text[i + 1] == '\n') {
            // A line's end is one blank.
        } else if (IsBlank(unit)) {
            m_value += ' ';
        } else if (static_cast<unsigned char>(unit) < ' ' || unit == '<') {
            return Step::Unknown;
        } else {
            m_value += unit;
        }
    }
    at = close + 1;
    return Step::Done;
}

// Appends what the reference, without & and semicolon, stands for.
bool RowScanner::ReadReference(std::string_view reference) {
    constexpr std::pair<std::string_view, char> Names[] = {
        {"amp", '&'}, {"lt", '<'}, {"gt", '>'}, {"quot", '"'}, {"apos", '\''}};
    for (const auto& [name, unit] : Names) {
        if (reference == name) {
            m_value += unit;
            return true;
        }
    }
    if (!reference.starts_with('#')) {
        return false;
    }
    reference.remove_prefix(1);
    int base = 10;
    if (reference.starts_with('x')) {
        reference.remove_prefix(1);
        base = 16;
    }
    std::uint32_t code = 0;
    const char* const end = reference.data() + reference.size();
    const std::from_chars_result result = std::from_chars(reference.data(), end, code, base);
    constexpr std::uint32_t MostCode = 0x10FFFF;
    if (result.ec != std::errc() || result.ptr != end || code == 0 || code > MostCode || IsSurrogate(code)) {
        return false;
    }
    AppendCodePoint(code, m_value);
    return true;
}

RowScanner::Step RowScanner::ReadEnd(const char*& at, const char* end) {
    const char* place = SkipBlanks(at, end);
    if (end - place < 2) {
        return Step::Incomplete;
    }
    if (*place == '/') {
        if (place[1] != '>') {
            return Step::Unknown;
        }
        at = place + 2;
        return Step::Done;
    }
    place = SkipBlanks(place + 1, end);
    const auto left = static_cast<std::size_t>(end - place);
    if (left < RowEnd.size()) {
        return RowEnd.starts_with(std::string_view(place, left)) ? Step::Incomplete : Step::Unknown;
    }
    if (!std::equal(RowEnd.begin(), RowEnd.end(), place)) {
        return Step::Unknown;
    }
    at = place + RowEnd.size();
    return Step::Done;
}

// The cell has to hold some value until its own is known.
void RowScanner::KeepPlace(std::size_t column) {
    switch (m_kinds[column]) {
        case Kind::Double:
            m_block->NumbersOf<double>(column)[m_slot] = 0;
            break;
        case Kind::Float:
            m_block->NumbersOf<float>(column)[m_slot] = 0;
            break;
        case Kind::Long:
            m_block->NumbersOf<LONG>(column)[m_slot] = 0;
            break;
        case Kind::Short:
        case Kind::Boolean:
            m_block->NumbersOf<SHORT>(column)[m_slot] = 0;
            break;
        case Kind::Text:
            m_block->PutPlace(column, m_slot);
            break;
        default:
            break;
    }
}

void RowScanner::FinishRow(std::size_t values) {
    ++m_slot;
    ++m_count;
    if (values != m_fields.size() && m_misfits++ == 0) {
        m_firstMisfit = m_count;
    }
    if (m_otherCount == 0 && values >= m_fields.size()) {
        return;
    }
    CountRows();
    const std::size_t position = m_rows.Size() - 1;
    for (std::size_t i = 0; i < m_otherCount; ++i) {
        const auto& [column, value] = m_others[i];
        m_rows.SetCell(position, column, m_parser.Read(*m_fields[column].m_descr, value));
    }
    for (std::size_t column = values; column < m_fields.size(); ++column) {
        m_rows.SetCell(position, column, CellView());
    }
}

}  // namespace quillet
