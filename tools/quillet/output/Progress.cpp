#include "output/Progress.h"

#include <algorithm>
#include <chrono>
#include <iostream>
#include <system_error>

#include "Quillet/platform/Clock.h"
#include "System.h"
#include "output/PlainText.h"

namespace quillet::tool {

namespace {

constexpr double SecondsBeforeDrawing = 1.0;
constexpr std::chrono::milliseconds DrawingInterval{100};
constexpr std::size_t BarWidth = 20;
constexpr std::size_t BlockWidth = 5;
// With the bar and the figures, a line is narrower than the narrowest usual terminal.
constexpr std::size_t LongestLabel = 30;

ProgressScreen Screen(bool isTerminal) {
    return {&std::cerr, isTerminal, platform::CounterSeconds};
}

// The position of the block that moves back and forth.
std::size_t BlockPosition(std::size_t step) {
    constexpr std::size_t Positions = BarWidth - BlockWidth;
    const std::size_t place = step % (2 * Positions);
    return place < Positions ? place : 2 * Positions - place;
}

}  // namespace

ProgressScreen ScreenBesideFiles() {
    return Screen(IsStandardErrorTerminal());
}

ProgressScreen ScreenBesideStandardOutput() {
    return Screen(IsStandardErrorTerminal() && !IsStandardOutputTerminal());
}

Progress::Progress(ProgressScreen screen, std::string label, std::uint64_t total)
    : m_screen(std::move(screen)),
      m_label(Shortened(Visible(label), LongestLabel)),
      m_total(total),
      m_start(m_screen.m_seconds()) {
}

Progress::~Progress() {
    if (m_drawnWidth == 0) {
        return;
    }
    try {
        Show("");
        *m_screen.m_stream << '\r' << std::flush;
    } catch (const std::exception&) {
        // Out of memory: the bar stays where it is.
    }
}

void Progress::Draw() {
    if (m_screen.m_isTerminal && m_screen.m_seconds() - m_start >= SecondsBeforeDrawing) {
        Show(Line());
        ++m_step;
    }
}

std::string Progress::Line() const {
    std::string line = m_label + " [" + Bar() + "]";
    if (m_total > 0) {
        const std::uint64_t done = std::min(m_done.load(std::memory_order_relaxed), m_total);
        constexpr double Percent = 100.0;
        const double share = static_cast<double>(done) / static_cast<double>(m_total);
        line += " " + std::to_string(static_cast<int>(Percent * share)) + "% " + std::to_string(done) + "/" +
                std::to_string(m_total);
    }
    return line;
}

std::string Progress::Bar() const {
    std::string bar(BarWidth, '.');
    if (m_total == 0) {
        std::fill_n(bar.begin() + static_cast<std::ptrdiff_t>(BlockPosition(m_step)), BlockWidth, '#');
        return bar;
    }
    const std::uint64_t done = std::min(m_done.load(std::memory_order_relaxed), m_total);
    const double share = static_cast<double>(done) / static_cast<double>(m_total);
    std::fill_n(bar.begin(), static_cast<std::size_t>(share * static_cast<double>(BarWidth)), '#');
    return bar;
}

// Blanks erase the rest of a longer line.
void Progress::Show(const std::string& line) {
    const std::size_t width = CountCodePoints(line);
    *m_screen.m_stream << '\r' << line << std::string(m_drawnWidth > width ? m_drawnWidth - width : 0, ' ')
                       << std::flush;
    m_drawnWidth = width;
}

RunningProgress::RunningProgress(ProgressScreen screen, std::string label, std::uint64_t total)
    : m_progress(std::move(screen), std::move(label), total) {
    if (m_progress.IsOnTerminal()) {
        try {
            m_ticker = std::thread([this] { Run(); });
        } catch (const std::system_error&) {
            // If no thread can be created, the work goes on without a bar.
        }
    }
}

RunningProgress::~RunningProgress() {
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_isOver = true;
    }
    m_wake.notify_all();
    if (m_ticker.joinable()) {
        m_ticker.join();
    }
}

void RunningProgress::Run() {
    std::unique_lock<std::mutex> lock(m_mutex);
    while (!m_wake.wait_for(lock, DrawingInterval, [this] { return m_isOver; })) {
        try {
            m_progress.Draw();
        } catch (const std::exception&) {
            // Out of memory: nothing is drawn. The work itself reports it.
        }
    }
}

}  // namespace quillet::tool
