// How the cost of a piece of work grows with its size. One point in a process of its own:
//
//     mv_bench_growth <work> <size>
//
// prints the median time of a few runs and the peak memory of the process as JSON.
#include <algorithm>
#include <chrono>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "admin/EnvironmentText.h"
#include "crypto/Base64.h"
#include "morvenn/net/mvserverproxy/client/MvServerRequest.h"
#include "morvenn/net/mvserverproxy/crypto/PKCS7.h"
#include "support/PeakMemory.h"
#include "support/Samples.h"
#include "support/ScriptedProxy.h"

namespace Morvenn::Bench {

namespace {

namespace Client = Net::MvServerProxy::Client;
using Net::MvServerProxy::Admin::Environment;
using Net::MvServerProxy::Admin::Internal::EnvironmentParser;

constexpr int kRuns = 9;
constexpr std::size_t kPiece = std::size_t{1} << 20U;
constexpr std::size_t kSignatureSize = 256;

// What is prepared once, and the work on it.
class Work {
public:
    Work() = default;
    Work(const Work&) = delete;
    Work& operator=(const Work&) = delete;
    virtual ~Work() = default;
    virtual void run() = 0;
};

class Response : public Work {
public:
    explicit Response(std::size_t size) : m_data(xmlSample(std::min(size, kPiece))) {
        Answer answer = answerOf("ResponseHeaderResponseCode=200\n\n", m_data);
        answer.bodySize = size;
        setAnswer(answer);
    }
    void run() override {
        Client::MvServerRequest request(&m_session);
        request.setBody("<request/>");
        const std::unique_ptr<std::istream> stream(request.send());
        char block[16384];
        while (stream->read(block, sizeof block)) {
        }
    }

private:
    std::string m_data;
    Client::MSPSession m_session;
};

class Headers : public Work {
public:
    explicit Headers(std::size_t count) : m_count(count) {
        for (std::size_t i = 0; i < count; ++i) {
            const std::string number = std::to_string(i);
            m_head += "X-Response-Header-" + number + "=value of header " + number + "\r\n";
        }
        m_head += "\n";
        setAnswer(answerOf(m_head, "answer"));
    }
    void run() override {
        Client::MvServerRequest request(&m_session);
        for (std::size_t i = 0; i < m_count; ++i) {
            const std::string number = std::to_string(i);
            request.setHeader("X-Request-Header-" + number, "value of header " + number);
        }
        request.setBody("<request/>");
        static_cast<void>(request.execute());
    }

private:
    std::size_t m_count;
    std::string m_head;
    Client::MSPSession m_session;
};

class Directory : public Work {
public:
    explicit Directory(std::size_t environments) : m_text(directorySample(environments)) {}
    void run() override {
        EnvironmentParser parser(m_text);
        std::vector<std::unique_ptr<Environment>> all;
        while (auto environment = parser.next()) {
            all.push_back(std::move(environment));
        }
    }

private:
    std::string m_text;
};

class Signing : public Work {
public:
    explicit Signing(std::size_t items)
        : m_items(items, "an item to be signed, of 40 bytes or so") {
        std::string record = bigEndian(items);
        for (std::size_t i = 0; i < items; ++i) {
            record += '\x01' + bigEndian(kSignatureSize) + std::string(kSignatureSize, 's');
        }
        m_answer = Net::MvServerProxy::Crypto::Internal::base64Encode(record);
        Answer answer = answerOf("\n", m_answer);
        answer.asksForBody = true;
        setAnswer(answer);
    }
    void run() override {
        Net::MvServerProxy::Crypto::PKCS7 signer;
        const std::unique_ptr<std::string[]> signatures(
            signer.sign(m_items.data(), static_cast<unsigned int>(m_items.size())));
        if (signatures[m_items.size() - 1].size() != kSignatureSize) {
            throw std::runtime_error("the last signature is cut");
        }
    }

private:
    static std::string bigEndian(std::size_t value) {
        return {static_cast<char>(value >> 24U), static_cast<char>(value >> 16U),
                static_cast<char>(value >> 8U), static_cast<char>(value)};
    }

    std::vector<std::string> m_items;
    std::string m_answer;
};

template <class Kind>
std::unique_ptr<Work> make(std::size_t size) {
    return std::make_unique<Kind>(size);
}

struct Maker {
    std::string name;
    std::unique_ptr<Work> (*make)(std::size_t size);
};

const std::vector<Maker>& makers() {
    static const std::vector<Maker> all{{"response_bytes", make<Response>},
                                        {"headers", make<Headers>},
                                        {"environments", make<Directory>},
                                        {"items_to_sign", make<Signing>}};
    return all;
}

std::unique_ptr<Work> makeWork(const std::string& name, std::size_t size) {
    for (const Maker& maker : makers()) {
        if (maker.name == name) {
            return maker.make(size);
        }
    }
    throw std::runtime_error("there is no work '" + name + "'");
}

// Repeats short work within one measurement, so that the clock's own cost does not count.
double secondsOf(Work& work, int times) {
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < times; ++i) {
        work.run();
    }
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
    return time.count() / times;
}

void measure(const std::string& name, std::size_t size) {
    const std::unique_ptr<Work> work = makeWork(name, size);
    const double once = std::max(secondsOf(*work, 1), 1e-6);
    const int times = std::max(1, static_cast<int>(0.01 / once));
    std::vector<double> seconds;
    for (int i = 0; i < (once > 0.1 ? 3 : kRuns); ++i) {
        seconds.push_back(secondsOf(*work, times));
    }
    std::sort(seconds.begin(), seconds.end());
    std::cout << "{\"work\": \"" << name << "\", \"size\": " << size
              << ", \"seconds\": " << seconds[seconds.size() / 2] << ", \"peak_kib\": " << peakKib()
              << "}\n";
}

}  // namespace

}  // namespace Morvenn::Bench

int main(int argc, char** argv) {
    if (argc != 3) {
        std::cerr << "usage: mv_bench_growth <work> <size>\n";
        return 2;
    }
    try {
        Morvenn::Bench::measure(argv[1], std::stoull(argv[2]));
        return 0;
    } catch (const std::exception& e) {
        std::cerr << "mv_bench_growth: " << e.what() << "\n";
        return 1;
    }
}
