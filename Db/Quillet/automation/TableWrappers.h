// The wrappers of tables that were handed out.
#pragma once

#include <algorithm>
#include <cstddef>
#include <unordered_map>

#include "Quillet/base/CComVariant.h"

namespace quillet::automation {

// One wrapper for each structure or contents, the same one at every request. Those of deleted tables are
// released in time, and live on if clients hold them.
template <typename Model, typename Wrapper>
class TableWrappers {
public:
    // Null for null.
    Wrapper* Of(Model* model) {
        if (model == nullptr) {
            return nullptr;
        }
        if (m_wrappers.size() >= m_sweepAt) {
            DropGone();
        }
        const auto kept = m_wrappers.find(model);
        // Another table may have been at the same address.
        if (kept != m_wrappers.end() && kept->second->Shown() == model) {
            return kept->second.Get();
        }
        const CComPtr<Wrapper> made(new Wrapper(nullptr));
        made->Show(*model);
        return m_wrappers.insert_or_assign(model, made).first->second.Get();
    }

private:
    static constexpr std::size_t Fewest = 64;

    void DropGone() {
        std::erase_if(m_wrappers, [](const auto& entry) { return entry.second->Shown() == nullptr; });
        m_sweepAt = std::max(Fewest, 2 * m_wrappers.size());
    }

    std::unordered_map<Model*, CComPtr<Wrapper>> m_wrappers;
    std::size_t m_sweepAt = Fewest;
};

}  // namespace quillet::automation
