#include "Quillet/rows/RowTokens.h"

#include <algorithm>

namespace quillet {

RowTokens::~RowTokens() {
    for (const auto& [row, held] : m_tokens) {
        if (const std::shared_ptr<DbTableRow*> token = held.lock()) {
            *token = nullptr;
        }
    }
}

std::shared_ptr<DbTableRow*> RowTokens::Of(DbTableRow& row) {
    if (m_tokens.size() >= m_sweepAt) {
        DropUnheld();
    }
    std::weak_ptr<DbTableRow*>& held = m_tokens[&row];
    std::shared_ptr<DbTableRow*> token = held.lock();
    if (!token) {
        token = std::make_shared<DbTableRow*>(&row);
        held = token;
    }
    return token;
}

void RowTokens::Forget(const DbTableRow& row) {
    const auto found = m_tokens.find(&row);
    if (found == m_tokens.end()) {
        return;
    }
    if (const std::shared_ptr<DbTableRow*> token = found->second.lock()) {
        *token = nullptr;
    }
    m_tokens.erase(found);
}

// Looked for again once there are twice as many, so that each token pays for a few looks at most.
void RowTokens::DropUnheld() {
    std::erase_if(m_tokens, [](const auto& entry) { return entry.second.expired(); });
    m_sweepAt = std::max(FewestToSweep, 2 * m_tokens.size());
}

}  // namespace quillet
