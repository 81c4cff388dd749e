#include "CatalogMaker.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <stdexcept>

namespace bench {

namespace {

// A linear congruential generator (Knuth's MMIX constants): the values do not depend on the standard library.
class Numbers {
public:
    std::uint32_t Next() {
        m_state = m_state * 6364136223846793005U + 1442695040888963407U;
        return static_cast<std::uint32_t>(m_state >> 33);
    }
    // A dimension as printed in catalogs: up to five significant digits.
    double Dimension() { return static_cast<double>(Next() % 100000U) / 10.0; }

private:
    std::uint64_t m_state = 20;
};

struct Field {
    const char* m_name;
    int m_type;
};

constexpr int Long = 3;
constexpr int Double = 5;
constexpr int Text = 8;

constexpr std::array<Field, 12> MixedFields = {{
    {"name", Text},
    {"id", Long},
    {"h", Double},
    {"b", Double},
    {"tw", Double},
    {"tf", Double},
    {"r", Double},
    {"A", Double},
    {"G", Double},
    {"Iy", Double},
    {"class", Long},
    {"norm", Text},
}};
constexpr std::array<Field, 12> NumericFields = {{
    {"a", Double},
    {"b", Double},
    {"c", Double},
    {"d", Double},
    {"e", Double},
    {"f", Double},
    {"g", Double},
    {"h", Double},
    {"i", Double},
    {"j", Double},
    {"k", Double},
    {"l", Double},
}};

using Fields = std::array<Field, 12>;

class Writer {
public:
    explicit Writer(const std::string& path) : m_file(path, std::ios::binary | std::ios::trunc) {
        m_file
            << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<database>\n<header>\n<structure>\n"
               "<table name=\"Header\">\n<field name=\"title\" key=\"false\" type=\"8\" required=\"0\" />\n"
               "</table>\n<table name=\"Properties\">\n"
               "<field name=\"units\" key=\"false\" type=\"8\" required=\"0\" />\n</table>\n</structure>\n"
               "<data>\n<table name=\"Header\">\n<row title=\"Benchmark\" />\n</table>\n"
               "<table name=\"Properties\">\n<row units=\"mm\" />\n</table>\n</data>\n</header>\n<body>\n";
    }

    void Structure(const std::array<int, 4>& rows, const Fields& fields) {
        m_file << "<structure>\n";
        for (std::size_t table = 0; table < rows.size(); ++table) {
            m_file << "<table name=\"T" << table << "\">\n";
            for (const Field& field : fields) {
                m_file << "<field name=\"" << field.m_name << "\" key=\"false\" type=\"" << field.m_type
                       << "\" required=\"0\" />\n";
            }
            m_file << "</table>\n";
        }
        m_file << "</structure>\n<data>\n";
    }

    void Rows(std::size_t table, int rows, const Fields& fields, Cells cells, Numbers& numbers) {
        m_file << "<table name=\"T" << table << "\">\n";
        std::string line;
        for (int row = 0; row < rows; ++row) {
            line = "<row";
            for (const Field& field : fields) {
                line += ' ';
                line += field.m_name;
                line += "=\"";
                line +=
                    cells == Cells::Plain ? Value(field, row, numbers) : AwkwardValue(field, row, numbers);
                line += '"';
            }
            line += " />\n";
            m_file << line;
        }
        m_file << m_beforeTableEnds << "</table>\n";
        m_beforeTableEnds.clear();
    }

    // A row with content, at the end of the next table.
    void AddOddRow() { m_beforeTableEnds = "<row name=\"odd\"><!-- content --></row>\n"; }

    void Finish() {
        m_file << "</data>\n</body>\n</database>\n";
        m_file.flush();
        if (!m_file) {
            throw std::runtime_error("the catalog to measure with can't be written");
        }
    }

private:
    static std::string Value(const Field& field, int row, Numbers& numbers) {
        char text[32] = {};
        if (field.m_type == Double) {
            std::snprintf(text, sizeof text, "%.10g", numbers.Dimension());
        } else if (field.m_type == Long) {
            std::snprintf(text, sizeof text, "%u", numbers.Next() % 1000000U);
        } else {
            std::snprintf(text, sizeof text, "%s %d",
                          numbers.Next() % 2U == 0 ? "HEB section" : "EN 10365 sheet", row);
        }
        return text;
    }

    static std::string AwkwardValue(const Field& field, int row, Numbers& numbers) {
        char text[64] = {};
        if (field.m_type == Double) {
            // 15, 16 or 17 digits, one in four with an exponent.
            const double fraction = static_cast<double>(numbers.Next()) / 2147483648.0 + numbers.Dimension();
            const int digits = 15 + static_cast<int>(numbers.Next() % 3U);
            const double scale = numbers.Next() % 4U == 0 ? 1e-12 : 1.0;
            std::snprintf(text, sizeof text, "%.*G", digits, fraction * scale);
        } else if (field.m_type == Long) {
            std::snprintf(text, sizeof text, "%d",
                          static_cast<int>(numbers.Next() % 2000000000U) - 1000000000);
        } else {
            std::snprintf(
                text, sizeof text, "%s %d",
                numbers.Next() % 2U == 0 ? "Tr\xC3\xA4ger &amp; St\xC3\xBCtze" : "\xE6\xA2\x81 &#xD8; H&lt;B",
                row);
        }
        return text;
    }

    std::ofstream m_file;
    std::string m_beforeTableEnds;
};

void MakeCatalog(const std::string& path, const std::array<int, 4>& rows, const Fields& fields, Cells cells,
                 bool isOdd) {
    Numbers numbers;
    Writer writer(path);
    writer.Structure(rows, fields);
    for (std::size_t table = 0; table < rows.size(); ++table) {
        if (isOdd && table + 1 == rows.size()) {
            writer.AddOddRow();
        }
        writer.Rows(table, rows[table], fields, cells, numbers);
    }
    writer.Finish();
}

}  // namespace

void MakeMixedCatalog(const std::string& path, int firstRows, int otherRows, Cells cells) {
    MakeCatalog(path, {firstRows, otherRows, otherRows, otherRows}, MixedFields, cells, false);
}

void MakeOddCatalog(const std::string& path, int firstRows, int otherRows) {
    MakeCatalog(path, {firstRows, otherRows, otherRows, otherRows}, MixedFields, Cells::Plain, true);
}

void MakeNumericCatalog(const std::string& path, int rows) {
    MakeCatalog(path, {rows, 0, 0, 0}, NumericFields, Cells::Plain, false);
}

}  // namespace bench
