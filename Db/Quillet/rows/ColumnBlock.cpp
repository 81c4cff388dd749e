#include "Quillet/rows/ColumnBlock.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>

#include "Quillet/base/Reserve.h"
#include "Quillet/base/Utf8.h"

namespace quillet {

namespace {

using Kind = CellView::Kind;

constexpr std::uint32_t FewestSlots = 4;
constexpr std::size_t MostTextBytes = std::numeric_limits<std::uint32_t>::max();

}  // namespace

CellView::Kind ColumnKindOf(VARTYPE type) {
    switch (type) {
        case VT_R8:
            return Kind::Double;
        case VT_R4:
            return Kind::Float;
        case VT_I4:
            return Kind::Long;
        case VT_I2:
            return Kind::Short;
        case VT_BOOL:
            return Kind::Boolean;
        case VT_BSTR:
            return Kind::Text;
        default:
            return Kind::Empty;
    }
}

ColumnBlock::ColumnBlock(const ColumnKinds& kinds) : m_columns(kinds.size()) {
    for (std::size_t i = 0; i < kinds.size(); ++i) {
        m_columns[i].m_kind = kinds[i];
        m_columns[i].m_index = static_cast<int>(i);
    }
}

ColumnBlock::ColumnBlock(const ColumnBlock& other) : m_columns(other.m_columns.size()) {
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
        m_columns[i].m_kind = other.m_columns[i].m_kind;
        m_columns[i].m_index = other.m_columns[i].m_index;
    }
}

std::unique_ptr<ColumnBlock> ColumnBlock::Copy() const {
    auto copy = std::make_unique<ColumnBlock>(*this);
    copy->Reserve(m_capacity);
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
        const Column& from = m_columns[i];
        Column& to = copy->m_columns[i];
        std::copy_n(from.m_values.get(), WidthOf(from.m_kind) * from.m_filled, to.m_values.get());
        if (from.m_states != nullptr) {
            to.m_states = std::make_unique<State[]>(copy->m_capacity);
            std::copy_n(from.m_states.get(), from.m_filled, to.m_states.get());
        }
        to.m_filled = from.m_filled;
    }
    copy->m_used = m_used;
    copy->m_texts = m_texts;
    copy->m_sharedTexts = m_sharedTexts;
    if (m_rows != nullptr) {
        copy->MakeRoomForRows();
        std::copy_n(m_rows.get(), m_used, copy->m_rows.get());
    }
    return copy;
}

bool ColumnBlock::Fits(const ColumnKinds& kinds) const {
    if (kinds.size() != m_columns.size()) {
        return false;
    }
    for (std::size_t i = 0; i < kinds.size(); ++i) {
        if (m_columns[i].m_kind != kinds[i] || m_columns[i].m_index != static_cast<int>(i)) {
            return false;
        }
    }
    return true;
}

std::size_t ColumnBlock::WidthOf(Kind kind) {
    switch (kind) {
        case Kind::Double:
            return sizeof(double);
        case Kind::Float:
            return sizeof(float);
        case Kind::Long:
            return sizeof(LONG);
        case Kind::Short:
        case Kind::Boolean:
            return sizeof(SHORT);
        case Kind::Text:
            return sizeof(TextPlace);
        default:
            return 0;
    }
}

// With what the column holds.
std::unique_ptr<std::byte[]> ColumnBlock::MakeValues(const Column& column, std::uint32_t slots) {
    const std::size_t width = WidthOf(column.m_kind);
    auto values = std::make_unique_for_overwrite<std::byte[]>(width * slots);
    if (column.m_filled > 0) {
        std::memcpy(values.get(), column.m_values.get(), width * column.m_filled);
    }
    return values;
}

void ColumnBlock::Reserve(std::uint32_t slots) {
    if (slots <= m_capacity) {
        return;
    }
    const std::uint32_t capacity = std::min(MostSlots, std::max({slots, m_capacity * 2, FewestSlots}));
    struct Grown {
        std::unique_ptr<std::byte[]> m_values;
        std::unique_ptr<State[]> m_states;
    };
    std::vector<Grown> grown(m_columns.size());
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
        const Column& column = m_columns[i];
        grown[i].m_values = MakeValues(column, capacity);
        if (column.m_states != nullptr) {
            grown[i].m_states = std::make_unique<State[]>(capacity);
            std::copy_n(column.m_states.get(), column.m_filled, grown[i].m_states.get());
        }
    }
    if (m_rows != nullptr) {
        auto rows = std::make_unique<DbTableRow*[]>(capacity);
        std::copy_n(m_rows.get(), m_used, rows.get());
        m_rows = std::move(rows);
    }
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
        m_columns[i].m_values = std::move(grown[i].m_values);
        m_columns[i].m_states = std::move(grown[i].m_states);
    }
    m_capacity = capacity;
}

void ColumnBlock::GiveBackLast() {
    --m_used;
    // Rows are mostly filled one after another, so the texts of the last one are the last.
    for (std::size_t i = m_columns.size(); i-- > 0;) {
        Column& column = m_columns[i];
        if (column.m_filled <= m_used) {
            continue;
        }
        if (column.m_kind == Kind::Text && ValueByState(column, m_used).GetKind() == Kind::Text) {
            const TextPlace place = At<TextPlace>(column, m_used);
            if (place.m_start >= m_sharedTexts &&
                std::size_t{place.m_start} + place.m_size == m_texts.size()) {
                m_texts.resize(place.m_start);
            }
        }
        column.m_filled = m_used;
    }
}

void ColumnBlock::Clear() {
    m_used = 0;
    for (Column& column : m_columns) {
        column.m_filled = 0;
    }
    m_texts.clear();
    m_sharedTexts = 0;
}

CellView ColumnBlock::ValueByState(const Column& from, std::uint32_t slot) const {
    switch (from.m_states == nullptr ? State::Value : from.m_states[slot]) {
        case State::Value:
            return ValueOf(from, slot);
        case State::Empty:
            return {};
        case State::Null:
            return CellView::Null(false);
        case State::FlaggedNull:
            return CellView::Null(true);
        case State::OtherType:
            // Such a cell is in an object.
            break;
    }
    return {};
}

bool ColumnBlock::Put(std::size_t column, std::uint32_t slot, const CellView& value) {
    return Put(m_columns[column], slot, value);
}

bool ColumnBlock::Put(Column& column, std::uint32_t slot, const CellView& value) {
    if (value.GetKind() == Kind::Null) {
        PutState(column, slot, value.IsNull() ? State::FlaggedNull : State::Null);
        return true;
    }
    if (value.GetKind() == Kind::Variant && value.AsVariant().vt == VT_NULL) {
        PutState(column, slot, value.IsNull() ? State::FlaggedNull : State::Null);
        return true;
    }
    if (value.IsNull()) {
        return false;
    }
    if (value.GetKind() == Kind::Variant) {
        return PutVariant(column, slot, value.AsVariant());
    }
    if (value.GetKind() == Kind::Empty) {
        PutState(column, slot, State::Empty);
        return true;
    }
    if (value.GetKind() != column.m_kind) {
        return false;
    }
    switch (column.m_kind) {
        case Kind::Double:
            return PutNumber(column, slot, value.AsDouble());
        case Kind::Float:
            return PutNumber(column, slot, value.AsFloat());
        case Kind::Long:
            return PutNumber(column, slot, value.AsLong());
        case Kind::Short:
        case Kind::Boolean:
            return PutNumber(column, slot, value.AsShort());
        default: {
            const std::size_t start = m_texts.size();
            m_texts += value.AsText();
            return PutText(column, slot, start);
        }
    }
}

bool ColumnBlock::PutVariant(Column& column, std::uint32_t slot, const CComVariant& value) {
    if (value.vt == VT_EMPTY) {
        PutState(column, slot, State::Empty);
        return true;
    }
    if (ColumnKindOf(value.vt) != column.m_kind) {
        return false;
    }
    switch (column.m_kind) {
        case Kind::Double:
            return PutNumber(column, slot, value.dblVal);
        case Kind::Float:
            return PutNumber(column, slot, value.fltVal);
        case Kind::Long:
            return PutNumber(column, slot, value.lVal);
        case Kind::Short:
            // A reader of records takes the bits above the number too.
            return value.lVal == static_cast<USHORT>(value.iVal) && PutNumber(column, slot, value.iVal);
        case Kind::Boolean:
            return PutNumber(column, slot, value.boolVal);
        case Kind::Text: {
            const WideView text = value.Text();
            if (value.bstrVal == nullptr || SysStringByteLen(value.bstrVal) % sizeof(WCHAR) != 0 ||
                HasLoneSurrogate(text)) {
                return false;
            }
            const std::size_t start = m_texts.size();
            AppendUtf8(text, m_texts);
            return PutText(column, slot, start);
        }
        default:
            return false;
    }
}

template <typename Number>
bool ColumnBlock::PutNumber(Column& column, std::uint32_t slot, Number number) {
    PutState(column, slot, State::Value);
    At<Number>(column, slot) = number;
    return true;
}

// The text is the last one.
bool ColumnBlock::PutText(Column& column, std::uint32_t slot, std::size_t start) {
    if (m_texts.size() > MostTextBytes) {
        m_texts.resize(start);
        return false;
    }
    PutState(column, slot, State::Value);
    // An empty text stays in place whatever is given back.
    const std::size_t size = m_texts.size() - start;
    At<TextPlace>(column, slot) = {static_cast<std::uint32_t>(size == 0 ? 0 : start),
                                   static_cast<std::uint32_t>(size)};
    return true;
}

void ColumnBlock::PutState(Column& column, std::uint32_t slot, State state) {
    if (state == State::Empty && slot >= column.m_filled) {
        return;
    }
    Zero(column, column.m_filled, slot);
    if (state != State::Value) {
        Zero(column, slot, slot + 1);
    }
    if (column.m_states == nullptr && (state != State::Value || slot > column.m_filled)) {
        column.m_states = std::make_unique<State[]>(m_capacity);
    }
    if (column.m_states != nullptr) {
        if (slot > column.m_filled) {
            std::fill(column.m_states.get() + column.m_filled, column.m_states.get() + slot, State::Empty);
        }
        column.m_states[slot] = state;
    }
    column.m_filled = std::max(column.m_filled, slot + 1);
}

void ColumnBlock::Zero(Column& column, std::uint32_t first, std::uint32_t end) {
    const std::size_t width = WidthOf(column.m_kind);
    if (first < end && width > 0) {
        std::memset(column.m_values.get() + width * first, 0, width * (end - first));
    }
}

bool ColumnBlock::AddText(std::size_t column, std::uint32_t slot, std::string_view text) {
    const std::size_t start = m_texts.size();
    if (start + text.size() > MostTextBytes) {
        return false;
    }
    At<TextPlace>(m_columns[column], slot) = {static_cast<std::uint32_t>(text.empty() ? 0 : start),
                                              static_cast<std::uint32_t>(text.size())};
    m_texts += text;
    return true;
}

void ColumnBlock::Fill(std::uint32_t first, std::uint32_t end) {
    for (std::size_t column = 0; column < m_columns.size(); ++column) {
        if (KindOf(column) != CellView::Kind::Empty) {
            FillColumn(column, first, end);
        }
    }
}

void ColumnBlock::FillUp() {
    for (Column& column : m_columns) {
        if (column.m_filled == m_used) {
            continue;
        }
        if (column.m_states == nullptr) {
            column.m_states = std::make_unique<State[]>(m_capacity);
        }
        std::fill(column.m_states.get() + column.m_filled, column.m_states.get() + m_used, State::Empty);
        Zero(column, column.m_filled, m_used);
        column.m_filled = m_used;
    }
}

void ColumnBlock::FillColumn(std::size_t position, std::uint32_t first, std::uint32_t end) {
    if (first == end) {
        return;
    }
    Column& column = m_columns[position];
    // The slots before them may have been left empty.
    PutState(column, first, State::Value);
    if (column.m_states != nullptr) {
        std::fill(column.m_states.get() + first, column.m_states.get() + end, State::Value);
    }
    column.m_filled = end;
}

void ColumnBlock::MakeRoomForRows() {
    if (m_rows == nullptr) {
        m_rows = std::make_unique<DbTableRow*[]>(m_capacity);
    }
}

bool ColumnBlock::MakeColumn(Kind kind, int index, const CellView& value) {
    ReserveOneMore(m_columns);
    auto column = std::make_unique<Column>();
    column->m_kind = kind;
    column->m_index = index;
    column->m_values = MakeValues(*column, m_capacity);
    const std::size_t texts = m_texts.size();
    for (std::uint32_t slot = 0; slot < m_used; ++slot) {
        if (kind == Kind::Text && slot > 0 && column->m_states == nullptr) {
            At<TextPlace>(*column, slot) = At<TextPlace>(*column, 0);
            column->m_filled = slot + 1;
        } else if (!Put(*column, slot, value)) {
            m_texts.resize(texts);
            return false;
        } else if (column->m_filled <= slot) {
            break;
        }
    }
    m_sharedTexts = m_texts.size();
    m_newColumn = std::move(column);
    return true;
}

void ColumnBlock::InsertColumn(std::size_t position) {
    const auto at = m_columns.begin() + static_cast<std::ptrdiff_t>(std::min(position, m_columns.size()));
    m_columns.insert(at, std::move(*m_newColumn));
    m_newColumn.reset();
}

void ColumnBlock::EraseColumn(std::size_t position) {
    if (position < m_columns.size()) {
        m_columns.erase(m_columns.begin() + static_cast<std::ptrdiff_t>(position));
    }
}

}  // namespace quillet
