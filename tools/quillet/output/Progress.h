// A bar on the terminal for work that takes a while.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <mutex>
#include <string>
#include <thread>

namespace quillet::tool {

// Where a bar is drawn, and by which clock.
struct ProgressScreen {
    std::ostream* m_stream;
    // Nothing is ever drawn elsewhere.
    bool m_isTerminal;
    // Seconds since an arbitrary moment.
    std::function<double()> m_seconds;
};

// Standard error. If standard output is a terminal too, output would overwrite the bar.
ProgressScreen ScreenBesideFiles();
ProgressScreen ScreenBesideStandardOutput();

// The drawing: "label [#####.....] 45% 1234/5000", or a moving block if the total is unknown. The bar appears
// after one second. Only one thread at a time may draw it; Set may be called from any.
class Progress {
public:
    // A total of 0 means unknown.
    Progress(ProgressScreen screen, std::string label, std::uint64_t total);
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    // Clears the bar.
    ~Progress();

    bool IsOnTerminal() const { return m_screen.m_isTerminal; }

    void Set(std::uint64_t done) { m_done.store(done, std::memory_order_relaxed); }

    // Draws the current state of the bar, unless it is too early.
    void Draw();

private:
    std::string Line() const;
    std::string Bar() const;
    void Show(const std::string& line);

    ProgressScreen m_screen;
    std::string m_label;
    std::uint64_t m_total;
    double m_start;
    std::atomic<std::uint64_t> m_done{0};
    std::size_t m_step = 0;
    std::size_t m_drawnWidth = 0;
};

// A bar that a background thread draws ten times a second during this object's lifetime. Without a terminal
// there is no thread.
class RunningProgress {
public:
    RunningProgress(ProgressScreen screen, std::string label, std::uint64_t total = 0);
    RunningProgress(const RunningProgress&) = delete;
    RunningProgress& operator=(const RunningProgress&) = delete;
    ~RunningProgress();

    void Set(std::uint64_t done) { m_progress.Set(done); }

private:
    void Run();

    Progress m_progress;
    std::mutex m_mutex;
    std::condition_variable m_wake;
    bool m_isOver = false;
    std::thread m_ticker;
};

}  // namespace quillet::tool
