// Texts and names as a file keeps them: in its code page up to Access 97, in UTF-16 since.
#pragma once

#include <optional>

#include "Quillet/access/Bytes.h"
#include "Quillet/access/Header.h"
#include "Quillet/platform/CodePage.h"
#include "Quillet/platform/Text.h"

namespace quillet::access {

using platform::WideString;

class TextDecoder {
public:
    // Throws Error if the system does not know the file's code page.
    explicit TextDecoder(const Header& header);

    // Names of tables, columns and indexes, which are never compressed.
    void AppendName(ByteView bytes, WideString& text) const;

    // Values of text and memo columns. Compressed ones begin with FF FE: characters of one byte and of two,
    // by turns, a zero byte between them.
    void AppendValue(ByteView bytes, WideString& text) const;

private:
    // Without one, texts are UTF-16.
    std::optional<platform::CodePage> m_codePage;
};

}  // namespace quillet::access
