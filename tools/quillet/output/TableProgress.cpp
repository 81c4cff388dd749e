#include "output/TableProgress.h"

namespace quillet::tool {

TableProgress::TableProgress(std::string label)
    : m_label(std::move(label)),
      m_before(DbSerializer::SetStepHandler([this](const DbSerializer::Step& step) { Step(step); })) {
    m_bar.emplace(ScreenBesideFiles(), m_label);
}

TableProgress::~TableProgress() {
    DbSerializer::SetStepHandler(std::move(m_before));
}

void TableProgress::Step(const DbSerializer::Step& step) {
    if (!m_isCounting) {
        m_bar.emplace(ScreenBesideFiles(), m_label, step.m_count);
        m_isCounting = true;
    }
    m_bar->Set(step.m_done);
    if (!step.m_isWhole && m_failedTable.empty()) {
        m_failedTable = step.m_table.ToUtf8();
    }
}

}  // namespace quillet::tool
