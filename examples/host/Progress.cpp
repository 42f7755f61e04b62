#include "Progress.h"

#include <algorithm>
#include <utility>

namespace lumhost {
namespace {

constexpr std::chrono::milliseconds kBeforeFirstDrawing{500};
constexpr std::chrono::milliseconds kBetweenDrawings{100};
constexpr unsigned kBarWidth = 40;

}  // namespace

Progress::Progress(std::ostream& out, bool isTerminal, std::string label, Clock clock)
    : m_out(out),
      m_isTerminal(isTerminal),
      m_label(std::move(label)),
      m_clock(std::move(clock)),
      m_nextDrawing(m_clock() + kBeforeFirstDrawing) {}

Progress::~Progress() {
    Finish();
}

void Progress::Update(unsigned long long done, unsigned long long total) {
    if (!m_isTerminal) {
        return;
    }
    const auto now = m_clock();
    if (now < m_nextDrawing) {
        return;
    }
    m_nextDrawing = now + kBetweenDrawings;
    const double share = total == 0 ? 0.0 : static_cast<double>(done) / static_cast<double>(total);
    Draw(static_cast<unsigned>(100.0 * std::min(share, 1.0)));
}

void Progress::Finish() {
    if (m_isDrawn) {
        // Blanks instead of an escape sequence, which not every terminal knows.
        const std::size_t width = m_label.size() + kBarWidth + 8;
        m_out << '\r' << std::string(width, ' ') << '\r' << std::flush;
        m_isDrawn = false;
    }
}

void Progress::Draw(unsigned percent) {
    const unsigned filled = kBarWidth * percent / 100;
    const std::string number = std::to_string(percent);
    m_out << '\r' << m_label << " [" << std::string(filled, '#')
          << std::string(kBarWidth - filled, '.') << "] " << std::string(3 - number.size(), ' ')
          << number << '%' << std::flush;
    m_isDrawn = true;
}

}  // namespace lumhost
