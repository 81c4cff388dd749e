#include "Quillet/access/LongValueReader.h"

#include <algorithm>

#include "Quillet/access/Error.h"

namespace quillet::access {
namespace {

constexpr std::uint32_t InRow = 0x80000000;
constexpr std::uint32_t OnePiece = 0x40000000;
constexpr std::uint32_t LengthBits = 0x3FFFFFFF;
constexpr std::size_t FieldSize = 12;
constexpr std::size_t PointerOffset = 4;

// Finds out that a chain has come back to a pointer, without keeping all of them (Brent).
class LoopDetector {
public:
    bool IsBackAt(RowPointer pointer) {
        if (pointer == m_kept) {
            return true;
        }
        if (++m_steps == m_nextKept) {
            m_nextKept *= 2;
            m_kept = pointer;
        }
        return false;
    }

private:
    RowPointer m_kept;
    std::uint64_t m_steps = 0;
    std::uint64_t m_nextKept = 1;
};

}  // namespace

ByteView LongValueReader::Read(ByteView field) {
    if (field.size() < FieldSize) {
        throw Error(Error::Damaged, "the reference to a long value is too short");
    }
    const std::uint32_t head = LittleU32(field, 0);
    const std::size_t length = head & LengthBits;
    const RowPointer pointer = RowPointer::Read(field, PointerOffset);
    ByteView value;
    if (length == 0) {
        // An empty value has no place.
    } else if ((head & ~LengthBits) == InRow) {
        value = field.subspan(FieldSize);
    } else if ((head & ~LengthBits) == OnePiece) {
        value = ReadPiece(pointer);
    } else if ((head & ~LengthBits) == 0) {
        value = ReadChain(pointer, length);
    } else {
        throw Error(Error::Damaged, "the reference to a long value is of no known kind");
    }
    m_isShort = value.size() < length;
    return value.first(std::min(length, value.size()));
}

ByteView LongValueReader::ReadPiece(RowPointer pointer) {
    LocatedRow located = LocateRow(m_pager, pointer);
    if (located.m_page.Owner() != DataPage::LongValues) {
        throw DamagedPage(pointer.m_page, "the page holds no long values");
    }
    if (located.m_row.m_isDeleted) {
        throw DamagedPage(pointer.m_page, "the long value was deleted");
    }
    m_page = std::move(located.m_page);
    return located.m_row.m_bytes;
}

// Each piece begins with the pointer to the next.
ByteView LongValueReader::ReadChain(RowPointer pointer, std::size_t length) {
    LoopDetector loop;
    m_joined.clear();
    while (pointer != RowPointer() && m_joined.size() < length) {
        if (loop.IsBackAt(pointer)) {
            throw DamagedPage(pointer.m_page, "the pieces of a long value form a loop");
        }
        const ByteView piece = ReadPiece(pointer);
        if (piece.size() <= RowPointer::Size) {
            break;
        }
        m_joined.insert(m_joined.end(), piece.begin() + RowPointer::Size, piece.end());
        pointer = RowPointer::Read(piece, 0);
    }
    return m_joined;
}

}  // namespace quillet::access
