#include "Quillet/access/Properties.h"

#include <algorithm>
#include <utility>

namespace quillet::access {
namespace {

constexpr std::size_t SignatureSize = 4;
constexpr std::size_t BlockHead = 6;
constexpr std::size_t NameHead = 2;
constexpr std::size_t ValueHead = 8;
constexpr std::uint16_t NamesBlock = 0x80;
constexpr std::uint16_t ColumnBlock = 1;

// The next part of the bytes, whose first number tells its length, itself included. Empty at the end, and
// where the length can't be true.
ByteView TakePart(ByteView& bytes, std::size_t head, std::size_t lengthSize) {
    if (bytes.size() < head) {
        return {};
    }
    const std::size_t length = lengthSize == 2 ? LittleU16(bytes, 0) : LittleU32(bytes, 0);
    if (length < head || length > bytes.size()) {
        return {};
    }
    const ByteView part = bytes.first(length);
    bytes = bytes.subspan(length);
    return part;
}

}  // namespace

Properties::Properties(ByteView bytes, const TextDecoder& texts) {
    bytes = bytes.subspan(std::min(bytes.size(), SignatureSize));
    for (ByteView block = TakePart(bytes, BlockHead, 4); !block.empty();
         block = TakePart(bytes, BlockHead, 4)) {
        const std::uint16_t kind = LittleU16(block, 4);
        if (kind == NamesBlock) {
            ReadNames(block.subspan(BlockHead), texts);
        } else if (kind == ColumnBlock) {
            ReadColumn(block.subspan(BlockHead), texts);
        }
    }
}

void Properties::ReadNames(ByteView block, const TextDecoder& texts) {
    m_names.clear();
    while (block.size() >= NameHead) {
        const std::size_t length = LittleU16(block, 0);
        if (length > block.size() - NameHead) {
            return;
        }
        texts.AppendName(block.subspan(NameHead, length), m_names.emplace_back());
        block = block.subspan(NameHead + length);
    }
}

void Properties::ReadColumn(ByteView block, const TextDecoder& texts) {
    const ByteView head = TakePart(block, BlockHead, 4);
    if (head.empty()) {
        return;
    }
    WideString column;
    const std::size_t nameLength = std::min<std::size_t>(LittleU16(head, 4), head.size() - BlockHead);
    texts.AppendName(head.subspan(BlockHead, nameLength), column);
    for (ByteView value = TakePart(block, ValueHead, 2); !value.empty();
         value = TakePart(block, ValueHead, 2)) {
        const std::size_t name = LittleU16(value, 4);
        const std::size_t length = std::min<std::size_t>(LittleU16(value, 6), value.size() - ValueHead);
        if (name < m_names.size()) {
            const ByteView bytes = value.subspan(ValueHead, length);
            m_properties.push_back({column, m_names[name], {bytes.begin(), bytes.end()}});
        }
    }
}

const std::vector<std::uint8_t>* Properties::OfColumn(platform::WideView column,
                                                      platform::WideView property) const {
    const auto found = std::ranges::find_if(m_properties, [&](const Property& candidate) {
        return candidate.m_column == column && candidate.m_name == property;
    });
    return found == m_properties.end() ? nullptr : &found->m_bytes;
}

}  // namespace quillet::access
