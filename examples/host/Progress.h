#pragma once

#include <chrono>
#include <functional>
#include <ostream>
#include <string>

namespace lumhost {

/// A bar that shows how far long work has come, on one line of a terminal. Work that ends within
/// half a second shows nothing, and the bar is wiped when the work is done or the object goes.
///
/// Threads: one thread at a time.
class Progress {
public:
    using Clock = std::function<std::chrono::steady_clock::time_point()>;

    /// Draws on `out` if `isTerminal`; otherwise nothing is ever written. `label` says what is
    /// being done.
    Progress(std::ostream& out, bool isTerminal, std::string label,
             Clock clock = std::chrono::steady_clock::now);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// Notes that `done` of `total` is done. Draws ten times a second at most, so it may be called
    /// often.
    void Update(unsigned long long done, unsigned long long total);

    /// Wipes the bar, so that something else can be written.
    void Finish();

private:
    void Draw(unsigned percent);

    std::ostream& m_out;
    bool m_isTerminal;
    std::string m_label;
    Clock m_clock;
    std::chrono::steady_clock::time_point m_nextDrawing;
    bool m_isDrawn = false;
};

}  // namespace lumhost
