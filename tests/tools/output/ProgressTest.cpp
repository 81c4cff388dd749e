#include "output/Progress.h"

#include <gmock/gmock.h>

#include <chrono>
#include <optional>
#include <sstream>

namespace quillet::tool {
namespace {

class ProgressBar : public testing::Test {
protected:
    ProgressScreen Screen(bool isTerminal = true) {
        return {&m_stream, isTerminal, [this] { return m_now; }};
    }

    // What was drawn since the last call.
    std::string Drawn() {
        std::string text = m_stream.str();
        m_stream.str("");
        return text;
    }

    std::ostringstream m_stream;
    double m_now = 100.0;
};

TEST_F(ProgressBar, Draw_BeforeASecondHasPassed_DrawsNothing) {
    Progress progress(Screen(), "Reading", 10);
    m_now += 0.99;
    progress.Draw();
    EXPECT_EQ(Drawn(), "");
    m_now += 0.02;
    progress.Draw();
    EXPECT_EQ(Drawn(), "\rReading [....................] 0% 0/10");
}

TEST_F(ProgressBar, Draw_KnownTotal_ShowsTheShare) {
    Progress progress(Screen(), "Reading", 5000);
    m_now += 2;
    progress.Set(1234);
    progress.Draw();
    EXPECT_EQ(Drawn(), "\rReading [####................] 24% 1234/5000");
    progress.Set(5000);
    progress.Draw();
    EXPECT_EQ(Drawn(), "\rReading [####################] 100% 5000/5000");
}

TEST_F(ProgressBar, Draw_MoreDoneThanThereIs_StaysAtTheEnd) {
    Progress progress(Screen(), "x", 2);
    m_now += 2;
    progress.Set(9);
    progress.Draw();
    EXPECT_EQ(Drawn(), "\rx [####################] 100% 2/2");
}

TEST_F(ProgressBar, Draw_UnknownTotal_MovesABlockToAndFro) {
    Progress progress(Screen(), "Reading", 0);
    m_now += 2;
    progress.Draw();
    EXPECT_EQ(Drawn(), "\rReading [#####...............]");
    progress.Draw();
    EXPECT_EQ(Drawn(), "\rReading [.#####..............]");
    for (int i = 0; i < 14; ++i) {
        Drawn();
        progress.Draw();
    }
    EXPECT_EQ(Drawn(), "\rReading [...............#####]");
    progress.Draw();
    EXPECT_EQ(Drawn(), "\rReading [..............#####.]");
}

TEST_F(ProgressBar, Destroy_AfterDrawing_ClearsTheLine) {
    {
        Progress progress(Screen(), "x", 2);
        m_now += 2;
        progress.Draw();
        Drawn();
    }
    EXPECT_EQ(Drawn(), "\r" + std::string(31, ' ') + "\r");
}

TEST_F(ProgressBar, Destroy_WithoutDrawing_WritesNothing) {
    { const Progress progress(Screen(), "x", 2); }
    EXPECT_EQ(Drawn(), "");
}

TEST_F(ProgressBar, Draw_OffATerminal_DrawsNothing) {
    {
        Progress progress(Screen(false), "x", 2);
        m_now += 2;
        progress.Draw();
    }
    EXPECT_EQ(Drawn(), "");
}

TEST_F(ProgressBar, Draw_LongOrUnprintableLabel_IsCutAndSpelledOut) {
    Progress progress(Screen(), "a\x1B" + std::string(50, 'b'), 0);
    m_now += 2;
    progress.Draw();
    EXPECT_THAT(Drawn(), testing::StartsWith("\ra\\u{1b}" + std::string(23, 'b') + "... ["));
}

TEST_F(ProgressBar, Run_WhileWorkLasts_DrawsByItself) {
    // More than a second has passed at the start, so the first tick draws.
    std::atomic<double> now{0};
    std::atomic<int> asked{0};
    const ProgressScreen screen = {&m_stream, true, [&] {
                                       ++asked;
                                       return now.load();
                                   }};
    {
        RunningProgress progress(screen, "Work", 4);
        progress.Set(1);
        now = 2;
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        const int before = asked;
        while (asked < before + 2 && std::chrono::steady_clock::now() < deadline) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
    }
    const std::string drawn = Drawn();
    EXPECT_THAT(drawn, testing::HasSubstr("\rWork [#####...............] 25% 1/4"));
    EXPECT_THAT(drawn, testing::EndsWith(" \r"));
}

}  // namespace
}  // namespace quillet::tool
