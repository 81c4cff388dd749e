#include "output/Report.h"

#include "System.h"
#include "output/PlainText.h"

namespace quillet::tool {

Report::Report(const Settings& settings, const std::string& line, const std::string& warning) {
    if (!warning.empty()) {
        m_warning = "quillet: warning: " + Visible(warning) + "\n";
    }
    if (settings.m_format == Format::Text) {
        m_output.Write(Visible(line) + "\n");
    }
}

void Report::Print() {
    WriteToStandardError(m_warning);
    m_output.Close();
}

}  // namespace quillet::tool
