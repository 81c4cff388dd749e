#include "Output.h"

#include "PlainText.h"

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

void Say(const Settings& settings, const std::string& line) {
    if (settings.m_format == Format::Text) {
        StandardOutput output;
        output.Write(Visible(line) + "\n");
        output.Close();
    }
}

}  // namespace quillet::tool
