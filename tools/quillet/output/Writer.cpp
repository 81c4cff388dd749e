#include "output/Writer.h"

#include "output/CsvWriter.h"
#include "output/JsonWriter.h"
#include "output/TextWriter.h"

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

}  // namespace quillet::tool
