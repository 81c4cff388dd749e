#include "Quillet/xml/Document.h"

#include <algorithm>

#include "Quillet/platform/File.h"
#include "Quillet/xml/Face.h"
#include "Quillet/xml/Nesting.h"
#include "Quillet/xml/Tree.h"

namespace quillet::xml {

namespace {

// In place of an error's offset: the error is the first malformed byte, still to be found.
constexpr std::ptrdiff_t OffsetUnknown = -1;

}  // namespace

Document::Document() : m_tree(std::make_shared<Tree>()) {
}

Document::~Document() = default;

bool Document::LoadFile(const std::string& path) {
    m_error = {};
    Nesting nesting;
    std::optional<std::string> text = platform::ReadWholeFile(
        path, &m_error.m_message, [&](std::string_view bytes) { return nesting.Follow(bytes); });
    if (!text) {
        if (!nesting.Refusal().empty()) {
            m_error.m_message = nesting.Refusal();
        }
        m_tree = std::make_shared<Tree>();
        return false;
    }
    m_hasEntities = nesting.HasEntities();
    const bool loaded = Load(std::move(*text));
    if (!loaded) {
        // The parser changes the text, so the line of the error is looked up in the original file.
        LocateError(platform::ReadWholeFile(path).value_or(std::string()));
    }
    return loaded;
}

bool Document::LoadText(std::string_view text) {
    Nesting nesting;
    if (!nesting.Follow(text)) {
        m_error = {nesting.Refusal()};
        m_tree = std::make_shared<Tree>();
        return false;
    }
    m_hasEntities = nesting.HasEntities();
    const bool loaded = Load(std::string(text));
    if (!loaded) {
        LocateError(text);
    }
    return loaded;
}

bool Document::Load(std::string text) {
    m_error = {};
    // Empty until the text is known to be a document.
    m_tree = std::make_shared<Tree>();
    const auto tree = std::make_shared<Tree>();
    const bool isUtf8 = IsValidUtf8(text);
    const pugi::xml_parse_result result = tree->Load(std::move(text));
    if (result.status != pugi::status_ok) {
        m_error.m_message = result.description();
        m_errorOffset = result.offset;
    } else if (!isUtf8 && result.encoding == pugi::encoding_utf8) {
        m_error.m_message = "Invalid UTF-8";
        m_errorOffset = OffsetUnknown;
    } else {
        m_tree = tree;
        return true;
    }
    return false;
}

void Document::LocateError(std::string_view text) {
    const std::size_t offset =
        m_errorOffset == OffsetUnknown ? ValidUtf8Length(text) : static_cast<std::size_t>(m_errorOffset);
    const auto end = text.begin() + static_cast<std::ptrdiff_t>(std::min(offset, text.size()));
    m_error.m_line = static_cast<std::size_t>(std::count(text.begin(), end, '\n')) + 1;
}

Node Document::Root() const {
    return Node(NativeNode{m_tree.get(), m_tree->Root().internal_object()});
}

CComPtr<IDispatch> Document::Automation() const {
    return MakeNodeObject(Root().Native());
}

bool Document::SaveFile(const std::string& path, std::string* why, platform::FileVersion* seen) const {
    const std::unique_ptr<platform::AtomicFile> file = platform::AtomicFile::Create(path, why);
    return file &&
           m_tree->Write(m_tree->Root(), [&](std::string_view piece) { return file->Write(piece, why); }) &&
           (seen != nullptr ? file->CommitOver(*seen, why) : file->Commit(why));
}

std::string Document::SaveText() const {
    std::string text;
    m_tree->Write(m_tree->Root(), [&](std::string_view piece) {
        text += piece;
        return true;
    });
    return text;
}

bool FirstAttributeOfText(std::string_view text, std::string& value) {
    const std::size_t equals = text.find('=');
    if (equals == std::string_view::npos || text.substr(0, equals).find('>') != std::string_view::npos) {
        return false;
    }
    const std::size_t open = text.find_first_of("\"'", equals);
    const std::size_t close = open == std::string_view::npos ? open : text.find(text[open], open + 1);
    if (close == std::string_view::npos) {
        return false;
    }
    pugi::xml_document fragment;
    const std::string element = "<x v=" + std::string(text.substr(open, close - open + 1)) + " />";
    const pugi::xml_parse_result result =
        fragment.load_buffer(element.data(), element.size(), pugi::parse_default, pugi::encoding_utf8);
    RequireMemory(result);
    if (!result) {
        return false;
    }
    value = fragment.first_child().first_attribute().value();
    return true;
}

}  // namespace quillet::xml
