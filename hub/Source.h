// Where the bytes of an answer come from. Sources are stacked: gzip and the fault modes wrap
// another source and change what it gives.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace Morvenn::Net::MvServerProxy::Hub {

class Source {
public:
    static constexpr std::ptrdiff_t kEnd = 0;
    static constexpr std::ptrdiff_t kBroken = -1;  // the connection is to be cut here

    virtual ~Source();

    // Puts 1 to `room` bytes at `to` and returns their number; kEnd at the end (again and again),
    // kBroken when nothing more can come. Requires: room > 0.
    virtual std::ptrdiff_t read(char* to, std::size_t room) = 0;

    // The number of bytes of the whole source when it is known beforehand.
    virtual std::optional<std::uint64_t> size() const = 0;
};

using SourcePtr = std::unique_ptr<Source>;

// A text held in memory.
class TextSource : public Source {
public:
    explicit TextSource(std::string text);

    std::ptrdiff_t read(char* to, std::size_t room) override;
    std::optional<std::uint64_t> size() const override;

private:
    std::string m_text;
    std::size_t m_position = 0;
};

// `total` bytes of a fixed pattern: byte number i is the lower-case letter number i % 26, and every
// 64th byte is a line feed. Made as it is read, so any size costs no memory.
class PatternSource : public Source {
public:
    explicit PatternSource(std::uint64_t total);

    std::ptrdiff_t read(char* to, std::size_t room) override;
    std::optional<std::uint64_t> size() const override;

private:
    const std::string m_period;
    const std::uint64_t m_total;
    std::uint64_t m_position = 0;
};

}  // namespace Morvenn::Net::MvServerProxy::Hub
