// The fixture of all tests that run the program: a temporary folder with copies of the example catalogs.
#pragma once

#include "Quillet/platform/File.h"
#include "TestPaths.h"
#include "support/RunProgram.h"

namespace quillet::test {

class ToolTest : public testing::Test {
protected:
    std::string Path(const std::string& name) const { return Utf8(m_folder / name); }

    std::string CopyExample(const std::string& name) const {
        const std::filesystem::path source =
            std::filesystem::path(QUILLET_SOURCE_DIR) / "examples/catalogs" / name;
        std::filesystem::copy_file(source, m_folder / name,
                                   std::filesystem::copy_options::overwrite_existing);
        return Path(name);
    }

    std::string Write(const std::string& name, const std::string& bytes) const {
        WriteBytes(m_folder / name, bytes);
        return Path(name);
    }

    std::string Read(const std::string& name) const { return ReadBytes(m_folder / name); }

    bool Exists(const std::string& name) const { return std::filesystem::exists(m_folder / name); }

    // The materials catalog with the first occurrence of a text replaced.
    std::string WriteChanged(const std::string& name, const std::string& what,
                             const std::string& with) const {
        CopyExample("materials.xml");
        std::string text = Read("materials.xml");
        const std::size_t place = text.find(what);
        EXPECT_NE(place, std::string::npos) << what;
        text.replace(place, what.size(), with);
        return Write(name, text);
    }

    // The same with every occurrence replaced.
    std::string WriteChangedThroughout(const std::string& name, const std::string& what,
                                       const std::string& with) const {
        CopyExample("materials.xml");
        std::string text = Read("materials.xml");
        std::size_t place = text.find(what);
        EXPECT_NE(place, std::string::npos) << what;
        for (; place != std::string::npos; place = text.find(what, place + with.size())) {
            text.replace(place, what.size(), with);
        }
        return Write(name, text);
    }

    RunResult Run(const std::vector<std::string>& arguments) const { return RunProgram(arguments, m_folder); }

    // In a locale with a decimal comma.
    RunResult RunWithCommas(const std::vector<std::string>& arguments) const {
        RunConditions conditions;
        conditions.m_locale = "de_DE.UTF-8";
        return RunProgram(arguments, m_folder, conditions);
    }

    // Where the environment does not set the locale, a printed number shows whether the user's has a decimal
    // comma.
    bool CanRunWithCommas() const {
        return EnvironmentHasLocale ||
               RunWithCommas({"show", CopyExample("materials.xml"), "Steel"}).m_output.find(" 0,3 ") !=
                   std::string::npos;
    }

    RunResult RunAsOrdinaryUser(const std::vector<std::string>& arguments) const {
        RunConditions conditions;
        conditions.m_asOrdinaryUser = true;
        return RunProgram(arguments, m_folder, conditions);
    }

    // The system's message for why a path can't be read.
    static std::string WhyUnreadable(const std::string& path) {
        std::string why;
        EXPECT_EQ(platform::ReadWholeFile(path, &why), std::nullopt) << path;
        EXPECT_NE(why, "") << path;
        return why;
    }

    // The system's message for why no file can be made of a path.
    static std::string WhyNoTarget(const std::string& path) {
        std::string why;
        EXPECT_EQ(platform::AtomicFile::Create(path, &why), nullptr) << path;
        EXPECT_NE(why, "") << path;
        return why;
    }

    // Makes a file read-only for everybody, and its folder writable for everybody.
    void WriteProtect(const std::string& name) const {
        using std::filesystem::perms;
        std::filesystem::permissions(m_folder.Path(), perms::all);
        std::filesystem::permissions(m_folder / name,
                                     perms::owner_read | perms::group_read | perms::others_read);
    }

    // Runs a command that must succeed without messages on standard error. Returns its output.
    std::string Output(const std::vector<std::string>& arguments) const {
        const RunResult result = Run(arguments);
        EXPECT_EQ(result.m_status, 0) << result.m_errors;
        EXPECT_EQ(result.m_errors, "");
        return result.m_output;
    }

    // Runs a command that must fail with one line on standard error. Returns the line without the prefix and
    // the line end.
    std::string Failure(const std::vector<std::string>& arguments, int status = 1) const {
        const RunResult result = Run(arguments);
        EXPECT_EQ(result.m_status, status);
        EXPECT_EQ(result.m_output, "");
        return Complaint(result.m_errors);
    }

    std::string UsageError(const std::vector<std::string>& arguments) const { return Failure(arguments, 2); }

    static std::string Complaint(const std::string& errors) {
        const std::string beginning = "quillet: ";
        EXPECT_EQ(errors.substr(0, beginning.size()), beginning) << errors;
        EXPECT_EQ(errors.find('\n'), errors.size() - 1) << errors;
        return errors.size() <= beginning.size()
                   ? errors
                   : errors.substr(beginning.size(), errors.size() - beginning.size() - 1);
    }

    const TemporaryFolder m_folder;
};

}  // namespace quillet::test
