#include "output/Output.h"

#include "System.h"
#include "output/PlainText.h"

namespace quillet::tool {

Writer::~Writer() = default;

std::unique_ptr<Writer> MakeWriter(Format format) {
    switch (format) {
        case Format::Csv:
            return std::make_unique<CsvWriter>();
        case Format::Json:
            return std::make_unique<JsonWriter>();
        default:
            return std::make_unique<TextWriter>();
    }
}

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
