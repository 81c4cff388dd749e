#include "output/JsonWriter.h"

#include <nlohmann/json.hpp>

namespace quillet::tool {

namespace {

std::string JsonText(const std::string& text) {
    using Json = nlohmann::json;
    return Json(text).dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::string JsonValue(const Value& value) {
    switch (value.m_kind) {
        case Value::Kind::Null:
            return "null";
        case Value::Kind::Boolean:
        case Value::Kind::Number:
            // Written with a decimal point, both are valid JSON, with the same digits as in the catalog.
            return value.m_text;
        default:
            return JsonText(value.m_text);
    }
}

}  // namespace

void JsonWriter::Write(const Listing& listing, Sink& sink, const Progress& progress) const {
    std::vector<std::string> keys;
    for (const Column& column : listing.Columns()) {
        keys.push_back((keys.empty() ? "" : ", ") + JsonText(column.m_name) + ": ");
    }
    std::vector<Value> values;
    std::string line;
    sink.Write("[");
    for (std::size_t row = 0; row < listing.CountRows(); ++row) {
        listing.ReadRow(row, NumberStyle::Point, values);
        line = row == 0 ? "\n  {" : ",\n  {";
        for (std::size_t i = 0; i < values.size(); ++i) {
            line += keys[i];
            line += JsonValue(values[i]);
        }
        line += '}';
        sink.Write(line);
        progress(row + 1);
    }
    sink.Write(listing.CountRows() == 0 ? "]\n" : "\n]\n");
}

}  // namespace quillet::tool
