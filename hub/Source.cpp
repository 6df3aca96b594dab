#include "Source.h"

#include <algorithm>
#include <cstring>

namespace Morvenn::Net::MvServerProxy::Hub {
namespace {

// The pattern repeats after the least common multiple of 26 and 64.
constexpr std::size_t kPatternPeriod = 832;

std::string patternPeriod() {
    std::string period;
    for (std::size_t i = 0; i < kPatternPeriod; ++i) {
        period += i % 64 == 63 ? '\n' : static_cast<char>('a' + i % 26);
    }
    return period;
}

}  // namespace

Source::~Source() = default;

TextSource::TextSource(std::string text) : m_text(std::move(text)) {}

std::ptrdiff_t TextSource::read(char* to, std::size_t room) {
    const std::size_t count = std::min(room, m_text.size() - m_position);
    std::memcpy(to, m_text.data() + m_position, count);
    m_position += count;
    return static_cast<std::ptrdiff_t>(count);
}

std::optional<std::uint64_t> TextSource::size() const {
    return m_text.size();
}

PatternSource::PatternSource(std::uint64_t total) : m_period(patternPeriod()), m_total(total) {}

std::ptrdiff_t PatternSource::read(char* to, std::size_t room) {
    const std::size_t wanted =
        static_cast<std::size_t>(std::min<std::uint64_t>(room, m_total - m_position));
    std::size_t done = 0;
    while (done < wanted) {
        const std::size_t phase = static_cast<std::size_t>(m_position % kPatternPeriod);
        const std::size_t count = std::min(wanted - done, kPatternPeriod - phase);
        std::memcpy(to + done, m_period.data() + phase, count);
        done += count;
        m_position += count;
    }
    return static_cast<std::ptrdiff_t>(done);
}

std::optional<std::uint64_t> PatternSource::size() const {
    return m_total;
}

}  // namespace Morvenn::Net::MvServerProxy::Hub
