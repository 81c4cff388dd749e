#include "input/CsvReader.h"

#include <csv.h>

#include <algorithm>
#include <exception>
#include <new>
#include <utility>

#include "Failure.h"
#include "Quillet/base/Utf8.h"
#include "input/FileKind.h"

namespace quillet::tool {

namespace {

int IsNeverBlank(unsigned char) {
    return 0;
}

// The text up to and including its first line end.
std::string_view FirstLine(std::string_view text) {
    const auto* const end =
        std::find_if(text.begin(), text.end(), [](char unit) { return unit == '\n' || unit == '\r'; });
    if (end == text.end()) {
        return text;
    }
    const auto place = static_cast<std::size_t>(end - text.begin());
    return text.substr(0, text.substr(place).starts_with("\r\n") ? place + 2 : place + 1);
}

}  // namespace

// libcsv's parser and the results of its callbacks. Rows end only at a line end, so feeding one line ends at
// most one row.
struct CsvReader::Parser {
    explicit Parser(char delimiter) {
        if (csv_init(&m_csv, CSV_STRICT | CSV_STRICT_FINI) != 0) {
            throw std::bad_alloc();
        }
        csv_set_space_func(&m_csv, IsNeverBlank);
        csv_set_delim(&m_csv, static_cast<unsigned char>(delimiter));
        // Its buffer grows by this much at a time.
        constexpr std::size_t BufferStep = 4096;
        csv_set_blk_size(&m_csv, BufferStep);
    }
    Parser(const Parser&) = delete;
    Parser& operator=(const Parser&) = delete;
    ~Parser() { csv_free(&m_csv); }

    static void OnValue(void* text, std::size_t length, void* self) {
        static_cast<Parser*>(self)->Guarded([&](Parser& parser) {
            // Strings of earlier rows are reused.
            if (parser.m_count == parser.m_values.size()) {
                parser.m_values.emplace_back();
            }
            parser.m_values[parser.m_count].assign(static_cast<const char*>(text), length);
            ++parser.m_count;
        });
    }

    static void OnRow(int, void* self) {
        static_cast<Parser*>(self)->Guarded([](Parser& parser) {
            parser.m_values.resize(parser.m_count);
            parser.m_isComplete = true;
        });
    }

    // No exception may pass through the C library.
    template <typename Action>
    void Guarded(Action action) {
        try {
            action(*this);
        } catch (...) {
            m_exception = std::current_exception();
        }
    }

    void Rethrow() {
        if (m_exception) {
            std::rethrow_exception(std::exchange(m_exception, nullptr));
        }
        if (csv_error(&m_csv) == CSV_ENOMEM || csv_error(&m_csv) == CSV_ETOOBIG) {
            throw std::bad_alloc();
        }
    }

    csv_parser m_csv{};
    std::vector<std::string> m_values;
    std::size_t m_count = 0;
    bool m_isComplete = false;
    std::exception_ptr m_exception;
};

bool IsCsvDelimiter(char letter) {
    constexpr char LastOfAscii = 0x7F;
    return letter > 0 && letter <= LastOfAscii && letter != '"' && letter != '\r' && letter != '\n';
}

CsvReader::CsvReader(std::string_view text, std::string name, char delimiter)
    : m_rest(text),
      m_size(text.size()),
      m_name(std::move(name)),
      m_parser(std::make_unique<Parser>(delimiter)) {
    if (m_rest.starts_with(Utf8Mark)) {
        m_rest.remove_prefix(Utf8Mark.size());
    }
    CheckEncoding();
}

CsvReader::~CsvReader() = default;

void CsvReader::CheckEncoding() const {
    const std::size_t valid = ValidUtf8Length(m_rest);
    if (valid == m_rest.size()) {
        return;
    }
    std::size_t line = 1;
    std::string_view before = m_rest.substr(0, valid);
    while (!before.empty()) {
        const std::string_view first = FirstLine(before);
        line += first.ends_with('\n') || first.ends_with('\r') ? 1U : 0U;
        before.remove_prefix(first.size());
    }
    Fail(line, "not UTF-8");
}

const std::vector<std::string>& CsvReader::Values() const {
    return m_parser->m_values;
}

std::string CsvReader::Message(std::string_view message) const {
    return m_name + ":" + std::to_string(m_rowLine) + ": " + std::string(message);
}

bool CsvReader::Next() {
    m_parser->m_count = 0;
    m_parser->m_isComplete = false;
    m_rowLine = m_nextLine;
    bool hasBegun = false;
    while (!m_rest.empty() && !m_parser->m_isComplete) {
        const std::string_view line = FirstLine(m_rest);
        m_rest.remove_prefix(line.size());
        // An empty line outside a row is not a row.
        hasBegun = hasBegun || line.find_first_not_of("\r\n") != std::string_view::npos;
        m_rowLine += hasBegun ? 0U : 1U;
        Feed(line);
    }
    if (!m_parser->m_isComplete && !m_isFinished) {
        FinishLastRow();
    }
    return m_parser->m_isComplete;
}

void CsvReader::Feed(std::string_view line) {
    const std::size_t taken =
        csv_parse(&m_parser->m_csv, line.data(), line.size(), Parser::OnValue, Parser::OnRow, m_parser.get());
    m_parser->Rethrow();
    if (taken != line.size()) {
        Fail(m_nextLine, "a quotation mark inside a value: such a value must be quoted and the mark doubled");
    }
    ++m_nextLine;
}

void CsvReader::FinishLastRow() {
    m_isFinished = true;
    const int failed = csv_fini(&m_parser->m_csv, Parser::OnValue, Parser::OnRow, m_parser.get());
    m_parser->Rethrow();
    if (failed != 0) {
        Fail(m_rowLine, "a quoted value of the row that begins here is never closed");
    }
}

void CsvReader::Fail(std::size_t line, std::string_view message) const {
    throw Failure(m_name + ":" + std::to_string(line) + ": " + std::string(message));
}

}  // namespace quillet::tool
