// The encoding of pages: a stream of bytes that is laid over the plain ones, the same in both directions.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "Quillet/access/Bytes.h"

namespace quillet::access {

using CipherKey = std::array<std::uint8_t, 4>;

// Encodes or decodes bytes in place by RC4 with the key.
void ApplyCipher(const CipherKey& key, std::span<std::uint8_t> bytes);

// The key of a page of a file whose pages have that file key.
CipherKey KeyOfPage(std::uint32_t fileKey, PageNumber page);

}  // namespace quillet::access
