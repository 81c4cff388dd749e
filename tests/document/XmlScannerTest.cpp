#include "Quillet/document/XmlScanner.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "TestPaths.h"
#include "support/CatalogHelpers.h"
#include "support/Seed.h"

namespace {

using quillet::XmlScanner;

// The scanner written down rule by rule, one byte at a time.
class LiteralScanner {
public:
    LiteralScanner(XmlScanner::ReadBytes read, int blockSize)
        : m_read(std::move(read)), m_blockSize(blockSize) {}

    bool Extract(const std::string& path, std::string& bytes);
    bool IsEof() const { return m_eof; }

private:
    void CutPath() {
        const std::size_t last = m_path.rfind('\\');
        m_path.resize(last == std::string::npos ? 0 : last);
    }
    char At(int position) const { return m_buffer[static_cast<std::size_t>(position)]; }
    int ReadBlock() {
        return static_cast<int>(m_read(m_buffer.data(), static_cast<std::size_t>(m_blockSize)));
    }

    XmlScanner::ReadBytes m_read;
    int m_blockSize;
    int m_position = 0;
    std::vector<char> m_buffer;
    std::string m_path;
    bool m_eof = false;
};

bool LiteralScanner::Extract(const std::string& path, std::string& bytes) {
    bytes.clear();
    if (m_eof) {
        return false;
    }
    if (m_buffer.empty()) {
        m_buffer.resize(static_cast<std::size_t>(m_blockSize));
        m_position = 0;
        m_blockSize = ReadBlock();
        m_path.clear();
    }
    char prev = At(m_position);
    bool capturing = false;
    bool finished = false;
    bool done = false;
    bool tagPending = false;
    bool closing = false;
    bool found = false;
    int depth = 0;
    std::string tag;
    for (;;) {
        if (done) {
            break;
        }
        if (m_position + 1 >= m_blockSize) {
            const int count = ReadBlock();
            if (count == 0) {
                m_eof = true;
                done = true;
            } else if (count < m_blockSize) {
                m_blockSize = count;
            }
            m_position = -1;
        }
        const char cur = At(m_position + 1);
        if (!finished) {
            closing = false;
            if (prev == '<') {
                if (cur == '/') {
                    --depth;
                    closing = true;
                } else {
                    ++depth;
                    if (!capturing) {
                        tagPending = true;
                    }
                }
            }
            if ((prev == '/' && cur == '>') || (prev == '?' && cur == '>')) {
                --depth;
                closing = true;
            }
            if (closing && !capturing) {
                CutPath();
            }
        }
        if (capturing) {
            if (depth == 0) {
                finished = true;
                if (prev == '>') {
                    done = true;
                    CutPath();
                }
            }
            bytes += prev;
        } else if (tagPending) {
            if (prev != ' ' && prev != '>') {
                if (prev != '<') {
                    tag += prev;
                }
                prev = cur;
                ++m_position;
                continue;
            }
            m_path += '\\';
            m_path += tag;
            if (m_path.size() == path.size() && m_path == path) {
                depth = 1;
                capturing = true;
                bytes = '<' + tag + prev;
                found = true;
                tagPending = false;
                prev = cur;
                ++m_position;
                continue;
            }
            tag.clear();
            tagPending = false;
        }
        prev = cur;
        ++m_position;
    }
    return found;
}

// Delivers a document in pieces: in full blocks, or in a repeating pattern of lengths.
XmlScanner::ReadBytes Stream(const std::string& document, std::vector<std::size_t> pieces = {}) {
    return [&document, pieces = std::move(pieces), place = std::size_t(0), turn = std::size_t(0)](
               char* buffer, std::size_t capacity) mutable {
        std::size_t count = std::min(capacity, document.size() - place);
        if (!pieces.empty()) {
            count = std::min(count, pieces[turn++ % pieces.size()]);
        }
        std::copy_n(document.data() + place, count, buffer);
        place += count;
        return count;
    };
}

struct Outcome {
    bool m_found;
    std::string m_bytes;
    bool m_eof;

    friend bool operator==(const Outcome&, const Outcome&) = default;
    friend std::ostream& operator<<(std::ostream& out, const Outcome& outcome) {
        return out << "found " << outcome.m_found << ", eof " << outcome.m_eof << ", bytes {"
                   << outcome.m_bytes << "}";
    }
};

template <typename Scanner>
std::vector<Outcome> ExtractAll(Scanner scanner, const std::vector<std::string>& paths) {
    std::vector<Outcome> outcomes;
    for (const std::string& path : paths) {
        std::string bytes = "left over";
        const bool found = scanner.Extract(path, bytes);
        outcomes.push_back({found, bytes, scanner.IsEof()});
    }
    return outcomes;
}

std::vector<int> BlockSizes() {
    std::vector<int> sizes;
    for (int size = 2; size <= 64; ++size) {
        sizes.push_back(size);
    }
    sizes.insert(sizes.end(), {100, 255, 1000, 16384});
    return sizes;
}

// Runs both scanners over one document with one way of reading; false at the first difference, which is
// reported.
bool Agree(const std::string& document, const std::vector<std::string>& paths, int blockSize,
           const std::vector<std::size_t>& pieces = {}) {
    const auto literal = ExtractAll(LiteralScanner(Stream(document, pieces), blockSize), paths);
    const auto fast = ExtractAll(XmlScanner(Stream(document, pieces), blockSize), paths);
    if (literal == fast) {
        return true;
    }
    for (std::size_t i = 0; i < paths.size(); ++i) {
        EXPECT_EQ(fast[i], literal[i]) << "call " << i << " for " << paths[i] << ", block size " << blockSize
                                       << ", document {" << document << "}";
    }
    return false;
}

class Maker {
public:
    explicit Maker(unsigned seed) : m_random(quillet::test::Seed(seed)) {}

    std::size_t Below(std::size_t bound) {
        return std::uniform_int_distribution<std::size_t>(0, bound - 1)(m_random);
    }

    const std::string& OneOf(const std::vector<std::string>& choices) {
        return choices[Below(choices.size())];
    }

    std::string Pieces(const std::vector<std::string>& alphabet, std::size_t most) {
        std::string document;
        for (std::size_t count = Below(most + 1); count > 0; --count) {
            document += OneOf(alphabet);
        }
        return document;
    }

    // A well-formed element with children of a few names.
    std::string Element(int depth) {
        static const std::vector<std::string> Names = {"a", "b", "table", "data", "\xC3\xA4"};
        static const std::vector<std::string> Attributes = {"", " x=\"1\"", " x=\"a/b\"", " y='?' z=\"-\""};
        const std::string name = OneOf(Names);
        const std::string start = '<' + name + OneOf(Attributes);
        if (depth == 0 || Below(4) == 0) {
            return start + (Below(2) == 0 ? " />" : "/>");
        }
        std::string content;
        for (std::size_t children = Below(4); children > 0; --children) {
            content += Below(3) == 0 ? "\n  text " : Element(depth - 1);
        }
        return start + '>' + content + "</" + name + '>';
    }

    std::vector<std::string> Paths(const std::vector<std::string>& choices, std::size_t count) {
        std::vector<std::string> paths;
        while (paths.size() < count) {
            paths.push_back(OneOf(choices));
        }
        return paths;
    }

    std::vector<std::size_t> ReadLengths(int blockSize) {
        std::vector<std::size_t> lengths(1 + Below(4));
        for (std::size_t& length : lengths) {
            length = 1 + Below(static_cast<std::size_t>(blockSize));
        }
        return lengths;
    }

private:
    std::mt19937 m_random;
};

const std::vector<std::string> MarkupAlphabet = {
    "<",  ">",  "/",    "</",   "/>",  "?>", "<?", "<?xml ", "\"", "'",        " ",
    "\n", "=",  "a",    "b",    "<a>", "<a", "<b", "</a>",   "<!", "<![CDATA", "\xEF\xBB\xBF",
    "--", "\\", "\xFF", "\xC3", "]]>", "b>", "t ", "<b />"};

const std::vector<std::string> MarkupPaths = {"\\a",       "\\b",    "\\a\\b", "\\a\\a",
                                              "\\b\\a\\b", "\\?xml", "\\",     ""};

TEST(XmlScanner, RandomMarkup_AtEveryBlockSize_EqualsTheLiteralScanner) {
    Maker maker(1);
    const std::vector<int> sizes = BlockSizes();
    for (int round = 0; round < 1200; ++round) {
        const std::string document = maker.Pieces(MarkupAlphabet, 60);
        const std::vector<std::string> paths = maker.Paths(MarkupPaths, 5);
        for (const int size : sizes) {
            ASSERT_TRUE(Agree(document, paths, size));
        }
    }
}

TEST(XmlScanner, RandomBytes_AtEveryBlockSize_EqualsTheLiteralScanner) {
    Maker maker(2);
    const std::vector<int> sizes = BlockSizes();
    for (int round = 0; round < 300; ++round) {
        std::string document;
        for (std::size_t count = maker.Below(300); count > 0; --count) {
            document += static_cast<char>(maker.Below(3) == 0 ? "<>/? a\"\\"[maker.Below(8)]
                                                              : static_cast<int>(maker.Below(256)));
        }
        const std::vector<std::string> paths = maker.Paths(MarkupPaths, 4);
        for (const int size : sizes) {
            ASSERT_TRUE(Agree(document, paths, size));
        }
    }
}

TEST(XmlScanner, RandomElements_AtEveryBlockSize_EqualsTheLiteralScanner) {
    Maker maker(3);
    const std::vector<int> sizes = BlockSizes();
    const std::vector<std::string> choices = {
        "\\a", "\\b", "\\table", "\\data\\table", "\\a\\b", "\\a\\b\\data", "\\b\\a\\a", "\\data", "\\A"};
    for (int round = 0; round < 400; ++round) {
        std::string document = round % 2 == 0 ? "<?xml version=\"1.0\"?>\n" : "";
        for (std::size_t count = 1 + maker.Below(3); count > 0; --count) {
            document += maker.Element(4) + '\n';
        }
        const std::vector<std::string> paths = maker.Paths(choices, 6);
        for (const int size : sizes) {
            ASSERT_TRUE(Agree(document, paths, size));
        }
    }
}

TEST(XmlScanner, ShortReads_InTheMiddleOfTheStream_EqualTheLiteralScanner) {
    Maker maker(4);
    const std::vector<int> sizes = BlockSizes();
    for (int round = 0; round < 10000; ++round) {
        const std::string document =
            round % 2 == 0 ? maker.Pieces(MarkupAlphabet, 60) : maker.Element(4) + maker.Element(3);
        const std::vector<std::string> paths = maker.Paths(MarkupPaths, 5);
        const int size = sizes[maker.Below(sizes.size())];
        ASSERT_TRUE(Agree(document, paths, size, maker.ReadLengths(size)));
    }
}

TEST(XmlScanner, ACatalog_CutAnywhere_EqualsTheLiteralScanner) {
    const std::string whole = quillet::test::SmallCatalog();
    const std::vector<std::string> paths = {
        "\\database\\header\\structure", "\\database\\header\\data\\table", "\\database\\header\\data\\table",
        "\\database\\body\\structure",   "\\database\\body\\data\\table",   "\\database\\body\\data\\table",
        "\\database\\body\\data\\table", "\\database\\body\\data\\table",   "\\database",
    };
    for (std::size_t length = 0; length <= whole.size(); ++length) {
        for (const int size : {2, 3, 7, 64, 16384}) {
            ASSERT_TRUE(Agree(whole.substr(0, length), paths, size));
        }
    }
}

TEST(XmlScanner, TheBundledCatalogs_TableByTable_EqualTheLiteralScanner) {
    for (const char* name : {"european-steel.xml", "field-types.xml", "materials.xml"}) {
        const std::string document = quillet::test::ReadBytes(std::filesystem::path(QUILLET_SOURCE_DIR) /
                                                              "examples" / "catalogs" / name);
        ASSERT_FALSE(document.empty()) << name;
        std::vector<std::string> paths = {"\\database\\header\\structure", "\\database\\header\\data\\table",
                                          "\\database\\header\\data\\table", "\\database\\body\\structure"};
        paths.resize(12, "\\database\\body\\data\\table");
        for (const int size : {2, 63, 64, 255, 1000, 16384}) {
            ASSERT_TRUE(Agree(document, paths, size)) << name;
            ASSERT_TRUE(Agree(document, paths, size, {1, 5, 60})) << name;
        }
    }
}

class XmlScannerOf : public testing::Test {
protected:
    std::vector<Outcome> Extract(const std::string& document, const std::vector<std::string>& paths,
                                 int blockSize = 16) {
        return ExtractAll(XmlScanner(Stream(document), blockSize), paths);
    }
};

TEST_F(XmlScannerOf, RepeatedCalls_OneAfterTheOther_GiveTheElementsInOrder) {
    const auto outcomes = Extract("<d><t n=\"1\"><r /></t><t n=\"2\" /><t>3</t></d>\n",
                                  {"\\d\\t", "\\d\\t", "\\d\\t", "\\d\\t", "\\d\\t"});
    EXPECT_EQ(outcomes[0], (Outcome{true, "<t n=\"1\"><r /></t>", false}));
    EXPECT_EQ(outcomes[1], (Outcome{true, "<t n=\"2\" />", false}));
    EXPECT_EQ(outcomes[2], (Outcome{true, "<t>3</t>", false}));
    EXPECT_EQ(outcomes[3], (Outcome{false, "", true}));
    EXPECT_EQ(outcomes[4], (Outcome{false, "", true}));
}

TEST_F(XmlScannerOf, ElementBeforeThePosition_IsSearchedToTheEndAndNotFound) {
    const auto outcomes = Extract("<d><a>1</a><b>2</b><c>3</c></d>\n", {"\\d\\b", "\\d\\a", "\\d\\c"});
    EXPECT_EQ(outcomes[0], (Outcome{true, "<b>2</b>", false}));
    EXPECT_EQ(outcomes[1], (Outcome{false, "", true}));
    EXPECT_EQ(outcomes[2], (Outcome{false, "", true}));
}

TEST_F(XmlScannerOf, ElementAtTheVeryEnd_IsFoundTogetherWithTheEnd) {
    EXPECT_EQ(Extract("<a>1</a>", {"\\a"})[0], (Outcome{true, "<a>1</a>", true}));
    EXPECT_EQ(Extract("<a>1</a>\n", {"\\a"})[0], (Outcome{true, "<a>1</a>", false}));
}

TEST_F(XmlScannerOf, StreamThatEndsInsideTheElement_GivesWhatThereWas) {
    EXPECT_EQ(Extract("<a><b>12", {"\\a"})[0], (Outcome{true, "<a><b>12", true}));
    EXPECT_EQ(Extract("<a>", {"\\a"})[0], (Outcome{true, "<a>", true}));
    EXPECT_EQ(Extract("<a", {"\\a"})[0], (Outcome{false, "", true}));
}

TEST_F(XmlScannerOf, EmptyStream_IsAtItsEnd) {
    EXPECT_EQ(Extract("", {"\\a"})[0], (Outcome{false, "", true}));
    EXPECT_EQ(Extract("<", {"\\a"})[0], (Outcome{false, "", true}));
}

TEST_F(XmlScannerOf, MarkupInsideAnAttributeValue_CountsAsMarkup) {
    const auto outcomes = Extract("<d><a x=\"/>\">1</a><c>2</c></d>\n", {"\\d\\a", "\\d\\c"});
    EXPECT_EQ(outcomes[0], (Outcome{true, "<a x=\"/>", false})) << "the quotes are not looked at";
    EXPECT_EQ(outcomes[1], (Outcome{false, "", true})) << "the end tag that is left over moved the path";
}

TEST_F(XmlScannerOf, EmptyElementWithoutBlank_TakesTheSlashIntoItsName) {
    EXPECT_FALSE(Extract("<d><x/><t>1</t></d>", {"\\d\\x"})[0].m_found);
    EXPECT_FALSE(Extract("<d><x/><t>1</t></d>", {"\\d\\t"})[0].m_found);
    EXPECT_TRUE(Extract("<d><x/><t>1</t></d>", {"\\x/"})[0].m_found);
    EXPECT_TRUE(Extract("<d><x /><t>1</t></d>", {"\\d\\t"})[0].m_found);
}

TEST_F(XmlScannerOf, Name_EndsAtABlankOrTheEndOfTheTag_NotAtATabOrLineEnd) {
    EXPECT_TRUE(Extract("<a x=\"1\">2</a>", {"\\a"})[0].m_found);
    EXPECT_FALSE(Extract("<a\tx=\"1\">2</a>", {"\\a"})[0].m_found);
    EXPECT_FALSE(Extract("<a\nx=\"1\">2</a>", {"\\a"})[0].m_found);
}

TEST_F(XmlScannerOf, Path_InAnotherCase_IsAnotherPath) {
    EXPECT_FALSE(Extract("<A>1</A>", {"\\a"})[0].m_found);
    EXPECT_TRUE(Extract("<A>1</A>", {"\\A"})[0].m_found);
}

TEST_F(XmlScannerOf, ProcessingInstruction_LeavesThePathAsItWas) {
    EXPECT_EQ(Extract("<?xml version='1.0'?><a>1</a>\n", {"\\a"})[0], (Outcome{true, "<a>1</a>", false}));
    EXPECT_TRUE(Extract("<?xml version='1.0'?><a>1</a>\n", {"\\?xml"})[0].m_found);
}

TEST_F(XmlScannerOf, ByteOrderMark_IsPassedOverAsText) {
    EXPECT_EQ(Extract("\xEF\xBB\xBF<?xml version='1.0'?><a>1</a>\n", {"\\a"})[0],
              (Outcome{true, "<a>1</a>", false}));
}

// The characters of an ASCII text in units of several bytes, in either byte order.
std::string InWideUnits(const std::string& text, std::size_t width, bool isLetterFirst) {
    const std::string rest(width - 1, '\0');
    std::string wide;
    for (const char letter : text) {
        wide += isLetterFirst ? letter + rest : rest + letter;
    }
    return wide;
}

TEST_F(XmlScannerOf, Utf16AndUtf32_AreNotFollowed) {
    using namespace std::string_literals;
    const std::string text = "<d><t>1</t></d>";
    const std::vector<std::string> streams = {
        InWideUnits(text, 2, true),
        InWideUnits(text, 2, false),
        InWideUnits(text, 4, true),
        InWideUnits(text, 4, false),
        "\xFF\xFE" + InWideUnits("  " + text, 2, true),
        "\xFE\xFF" + InWideUnits("  " + text, 2, false),
        "\xFF\xFE\0\0"s + InWideUnits("  " + text, 4, true),
        "\0\0\xFE\xFF"s + InWideUnits("  " + text, 4, false),
    };
    for (std::size_t i = 0; i < streams.size(); ++i) {
        XmlScanner scanner(Stream(streams[i]), 16);
        std::string bytes = "before";
        EXPECT_FALSE(scanner.Extract("\\d\\t", bytes)) << i;
        EXPECT_EQ(bytes, "");
        EXPECT_TRUE(scanner.IsEof());
        EXPECT_STREQ(scanner.Refusal(), "it is in UTF-16 or UTF-32, which can only be read as a whole") << i;
        EXPECT_FALSE(scanner.Extract("\\d", bytes)) << "nor is anything found later";
    }
    for (const std::string& narrow : {text, "\xEF\xBB\xBF" + text, "\0\0"s + text, "<"s, ""s}) {
        XmlScanner scanner(Stream(narrow), 16);
        std::string bytes;
        scanner.Extract("\\d\\t", bytes);
        EXPECT_EQ(scanner.Refusal(), nullptr) << narrow;
    }
}

TEST_F(XmlScannerOf, PathBeyondAscii_MatchesNoBytes) {
    EXPECT_EQ(Extract("<\xC3\xA4>1</\xC3\xA4>", {"\\\xC3\xA4"})[0], (Outcome{false, "", true}));
}

TEST_F(XmlScannerOf, BlockSizeTooSmall_CountsAsTwo) {
    for (const int size : {-16384, 0, 1}) {
        EXPECT_EQ(Extract("<d><t>1</t></d>", {"\\d\\t"}, size)[0], (Outcome{true, "<t>1</t>", false}))
            << size;
    }
}

// An endless stream that repeats the text and counts what was read.
class EndlessText {
public:
    explicit EndlessText(std::string text) : m_text(std::move(text)) {}

    std::size_t Read(char* buffer, std::size_t capacity) {
        for (std::size_t i = 0; i < capacity; ++i) {
            buffer[i] = m_text[m_taken++ % m_text.size()];
        }
        return capacity;
    }
    std::size_t Taken() const { return m_taken; }

private:
    std::string m_text;
    std::size_t m_taken = 0;
};

TEST(XmlScanner, EndlessMarkupOutsideOfTheElement_IsGivenUp) {
    for (const char* text : {"<a>", "a", "<a b=\"c\">text"}) {
        EndlessText endless(text);
        bool isStarted = false;
        XmlScanner scanner(
            [&](char* buffer, std::size_t capacity) {
                // An unfinished name, for the text that has none.
                if (!isStarted) {
                    isStarted = true;
                    buffer[0] = '<';
                    buffer[1] = 'x';
                    return std::size_t{2};
                }
                return endless.Read(buffer, capacity);
            },
            4096);
        std::string bytes = "before";
        EXPECT_FALSE(scanner.Extract("\\database\\body", bytes)) << text;
        EXPECT_TRUE(scanner.IsEof());
        EXPECT_NE(scanner.Refusal(), nullptr);
        EXPECT_EQ(bytes, "");
        EXPECT_LT(endless.Taken(), 200'000U) << text;
    }
}

}  // namespace
