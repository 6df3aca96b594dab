#include "FaultyAnswer.h"

#include "FaultyGzip.h"
#include "Limits.h"
#include "Refusal.h"

#include <algorithm>
#include <array>

namespace Morvenn::Net::MvServerProxy::Hub {
namespace {

constexpr std::size_t kPaddingLine = 1000;
constexpr std::size_t kPaddingFrame = 20;  // name, colon, blank and line end, roughly

// One byte at a time, with a pause before each.
class DribbleSource : public Source {
public:
    DribbleSource(SourcePtr whole, std::chrono::milliseconds pause, StopSignal& stop)
        : m_whole(std::move(whole)), m_pause(pause), m_stop(stop) {}

    std::ptrdiff_t read(char* to, std::size_t) override {
        return m_stop.pause(m_pause) ? m_whole->read(to, 1) : kBroken;
    }
    std::optional<std::uint64_t> size() const override { return m_whole->size(); }

private:
    const SourcePtr m_whole;
    const std::chrono::milliseconds m_pause;
    StopSignal& m_stop;
};

// Breaks after so many bytes; `atTheCut` is called then.
class CutSource : public Source {
public:
    CutSource(SourcePtr whole, std::uint64_t left, std::function<void()> atTheCut)
        : m_whole(std::move(whole)), m_left(left), m_atTheCut(std::move(atTheCut)) {}

    std::ptrdiff_t read(char* to, std::size_t room) override {
        if (m_left == 0) {
            m_atTheCut();
            return kBroken;
        }
        const auto count =
            m_whole->read(to, static_cast<std::size_t>(std::min<std::uint64_t>(room, m_left)));
        m_left -= static_cast<std::uint64_t>(std::max<std::ptrdiff_t>(count, 0));
        return count;
    }
    std::optional<std::uint64_t> size() const override { return m_whole->size(); }

private:
    const SourcePtr m_whole;
    std::uint64_t m_left;
    const std::function<void()> m_atTheCut;
};

std::string readWhole(Source& source) {
    std::array<char, 16384> block{};
    std::string all;
    for (auto count = source.read(block.data(), block.size()); count > 0;
         count = source.read(block.data(), block.size())) {
        all.append(block.data(), static_cast<std::size_t>(count));
        if (all.size() > kDocumentLimit) {
            throw Refusal(400, "the fault \"gzip\" takes answers of at most " +
                                   std::to_string(kDocumentLimit) + " bytes");
        }
    }
    return all;
}

void spoilGzip(Answer& answer, const std::string& kind) {
    if (std::any_of(answer.headers.begin(), answer.headers.end(),
                    [](const Header& header) { return header.first == "Content-Encoding"; })) {
        throw Refusal(400, "the fault \"gzip\" compresses by itself; leave Accept-Encoding away");
    }
    answer.headers.emplace_back("Content-Encoding", "gzip");
    answer.body = std::make_unique<TextSource>(faultyGzip(kind, readWhole(*answer.body)));
}

void padHeaders(Answer& answer, std::size_t bytes) {
    for (std::size_t number = 1; bytes > 0; ++number) {
        const std::size_t line = std::min(bytes, kPaddingLine);
        answer.headers.emplace_back(
            "Hub-Padding-" + std::to_string(number),
            std::string(line > kPaddingFrame ? line - kPaddingFrame : 1, 'x'));
        bytes -= line;
    }
}

void redirect(Answer& answer, const std::string& target) {
    answer = textAnswer(302, "see " + target + "\n");
    answer.headers.emplace_back("Location", target);
}

void declareWrongLength(Answer& answer, std::int64_t error) {
    const auto size = answer.body->size();
    if (!size) {
        throw Refusal(400, "the fault \"length\" needs an answer of known size; ask for no gzip");
    }
    const std::int64_t declared = static_cast<std::int64_t>(*size) + error;
    answer.declaredSize = static_cast<std::uint64_t>(std::max<std::int64_t>(declared, 0));
}

}  // namespace

void applyFaults(Answer& answer, const FaultPlan& plan, StopSignal& stop,
                 const std::function<void()>& resetConnection) {
    if (plan.redirectTarget) {
        redirect(answer, *plan.redirectTarget);
    }
    if (plan.gzip) {
        spoilGzip(answer, *plan.gzip);
    }
    if (plan.headerBytes) {
        padHeaders(answer, *plan.headerBytes);
    }
    if (plan.headerLine) {
        answer.headers.emplace_back("Hub-Padding", std::string(*plan.headerLine, 'x'));
    }
    if (plan.lengthError) {
        declareWrongLength(answer, *plan.lengthError);
    }
    if (plan.cutAfter) {
        answer.body = std::make_unique<CutSource>(std::move(answer.body), *plan.cutAfter, [] {});
    }
    if (plan.resetAfter) {
        answer.body =
            std::make_unique<CutSource>(std::move(answer.body), *plan.resetAfter, resetConnection);
    }
    if (plan.dribbleMs) {
        answer.body = std::make_unique<DribbleSource>(
            std::move(answer.body), std::chrono::milliseconds(*plan.dribbleMs), stop);
    }
    answer.inOnePiece = false;
}

}  // namespace Morvenn::Net::MvServerProxy::Hub
