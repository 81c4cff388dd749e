// Runs the samples of the documents and compares their output with the documents.
#include <gmock/gmock.h>

#include <sstream>

#include "TestPaths.h"
#include "support/RunProgram.h"

namespace quillet::test {
namespace {

// A command of a document, and the output that the document shows.
struct Sample {
    std::size_t m_line;
    std::string m_command;
    std::string m_output;
};

// The commands of the ```console blocks: lines that begin with "$ ", each with the lines after it.
std::vector<Sample> ReadSamples(const std::filesystem::path& document) {
    std::vector<Sample> samples;
    std::istringstream lines(ReadBytes(document));
    bool isInBlock = false;
    std::size_t number = 0;
    for (std::string line; std::getline(lines, line);) {
        ++number;
        if (line.starts_with("```")) {
            isInBlock = !isInBlock && line == "```console";
        } else if (isInBlock && line.starts_with("$ ")) {
            samples.push_back({number, line.substr(2), ""});
        } else if (isInBlock && !samples.empty()) {
            samples.back().m_output += line + "\n";
        }
    }
    return samples;
}

// The words of a command; a word with blanks is in quotation marks.
std::vector<std::string> WordsOf(const std::string& command) {
    std::vector<std::string> words(1);
    bool isQuoted = false;
    for (const char letter : command) {
        if (letter == '"') {
            isQuoted = !isQuoted;
        } else if (letter == ' ' && !isQuoted) {
            words.emplace_back();
        } else {
            words.back() += letter;
        }
    }
    return words;
}

// Runs from the project's folder, as the documents say.
class DocumentSamples : public testing::Test {
protected:
    DocumentSamples() { std::filesystem::current_path(QUILLET_SOURCE_DIR); }
    ~DocumentSamples() override { std::filesystem::current_path(m_before); }

    void ExpectTrue(const Sample& sample) const {
        std::vector<std::string> words = WordsOf(sample.m_command);
        ASSERT_EQ(words.front(), "quillet");
        words.erase(words.begin());
        RunConditions conditions;
        conditions.m_locale = "C.UTF-8";
        const RunResult result = RunProgram(words, m_folder, conditions);
        EXPECT_EQ(result.m_output + result.m_errors, sample.m_output);
        const bool isDone = result.m_errors.empty() || result.m_errors.starts_with("quillet: warning: ");
        EXPECT_EQ(result.m_status, isDone ? 0 : 1);
    }

    const std::filesystem::path m_before = std::filesystem::current_path();
    const TemporaryFolder m_folder;
};

TEST_F(DocumentSamples, QueryLanguage_EverySample_ShowsWhatIsPrinted) {
    const std::vector<Sample> samples = ReadSamples("docs/query-language.md");
    EXPECT_GE(samples.size(), 25U);
    for (const Sample& sample : samples) {
        SCOPED_TRACE("docs/query-language.md:" + std::to_string(sample.m_line) + ": " + sample.m_command);
        ExpectTrue(sample);
    }
}

TEST_F(DocumentSamples, ReadSamples_OnlyConsoleBlocks_AreRead) {
    WriteBytes(m_folder / "document.md",
               "$ outside\n```sh\n$ shell\n```\n```console\n$ quillet a \"b c\"\none\n\ntwo\n$ quillet "
               "d\n```\n$ after\n");
    const std::vector<Sample> samples = ReadSamples(m_folder / "document.md");
    ASSERT_EQ(samples.size(), 2U);
    EXPECT_EQ(samples[0].m_line, 6U);
    EXPECT_THAT(WordsOf(samples[0].m_command), testing::ElementsAre("quillet", "a", "b c"));
    EXPECT_EQ(samples[0].m_output, "one\n\ntwo\n");
    EXPECT_EQ(samples[1].m_output, "");
}

}  // namespace
}  // namespace quillet::test
