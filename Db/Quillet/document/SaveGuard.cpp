#include "Quillet/document/SaveGuard.h"

namespace quillet {

SaveGuard::SaveGuard(const std::string& path)
    : m_path(path), m_place(platform::FilePlace::Of(path)), m_seen(platform::FileVersion::Of(path)) {
}

platform::FileVersion* SaveGuard::For(const std::string& path) {
    if (path == m_path || (m_place && m_place == platform::FilePlace::Of(path))) {
        return &m_seen;
    }
    const auto identity = platform::FileIdentity::Of(path);
    return identity && identity == platform::FileIdentity::Of(m_path) ? &m_seen : nullptr;
}

}  // namespace quillet
