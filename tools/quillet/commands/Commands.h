// The commands. Each returns the exit status and throws Failure if it fails.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Settings.h"
#include "commands/RowRange.h"

namespace quillet::tool {

// The exit status of a successful command.
constexpr int Done = 0;

using KeyValue = std::pair<std::string, std::string>;

struct InfoRequest {
    std::string m_file;
};

struct FieldsRequest {
    std::string m_file;
    std::string m_table;
};

struct ShowRequest {
    std::string m_file;
    std::string m_table;
    RowRange m_rows;
};

struct QueryRequest {
    std::string m_file;
    std::string m_query;
    RowRange m_rows;
    bool m_explain = false;
};

struct FindRequest {
    std::string m_file;
    std::string m_table;
    std::string m_where;
    // Every matching row, not only the first one.
    bool m_all = false;
    // From the last row to the first.
    bool m_backward = false;
};

struct ExportRequest {
    std::string m_file;
    std::string m_table;
    // "-" is standard output.
    std::string m_target;
    bool m_replace = false;
};

struct CheckRequest {
    std::string m_file;
};

struct NewRequest {
    std::string m_file;
    std::vector<KeyValue> m_header;
    std::vector<KeyValue> m_properties;
};

struct SetRequest {
    std::string m_file;
    // The table Header or Properties.
    std::string m_table;
    std::vector<KeyValue> m_values;
};

struct DropRequest {
    std::string m_file;
    std::string m_table;
};

struct RenameRequest {
    std::string m_file;
    std::string m_table;
    std::string m_newName;
};

struct ImportRequest {
    std::string m_file;
    std::string m_table;
    std::string m_source;
    // Field names and type words.
    std::vector<KeyValue> m_types;
    std::vector<std::string> m_keys;
    bool m_replace = false;
    // The separator of values; a comma by default.
    std::optional<char> m_delimiter;
    // Headings become field names unchanged, whether or not a query can refer to them.
    bool m_keepsNames = false;
};

struct ConvertRequest {
    // A catalog and an Access file, or the other way round.
    std::string m_source;
    std::string m_target;
    bool m_replace = false;
};

int Info(const Settings& settings, const InfoRequest& request);
int Fields(const Settings& settings, const FieldsRequest& request);
int Show(const Settings& settings, const ShowRequest& request);
int Query(const Settings& settings, const QueryRequest& request);
int Find(const Settings& settings, const FindRequest& request);
int Export(const Settings& settings, const ExportRequest& request);
int Check(const Settings& settings, const CheckRequest& request);
int New(const Settings& settings, const NewRequest& request);
int Set(const Settings& settings, const SetRequest& request);
int Drop(const Settings& settings, const DropRequest& request);
int Rename(const Settings& settings, const RenameRequest& request);
int Import(const Settings& settings, const ImportRequest& request);
int Convert(const Settings& settings, const ConvertRequest& request);

}  // namespace quillet::tool
