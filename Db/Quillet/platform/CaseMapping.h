// What a port supplies for Text.h: Unicode's simple case mappings of single code points. A code point without
// a mapping maps to itself. Lone surrogates are passed too and map to themselves.
#pragma once

namespace quillet::platform {

char32_t LowerOf(char32_t c);
char32_t UpperOf(char32_t c);
// Simple case folding: equal for code points that differ in case only.
char32_t FoldOf(char32_t c);

}  // namespace quillet::platform
