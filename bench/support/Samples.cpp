#include "support/Samples.h"

#include <zlib.h>

#include <array>
#include <cstdio>
#include <random>
#include <stdexcept>

namespace Morvenn::Bench {

namespace {

constexpr unsigned int kSeed = 4711;
constexpr const char* kWords[] = {"invoice", "payment", "customer", "overdue", "region",
                                  "north",   "archive", "credit",   "pending", "transfer"};

// The pieces of a record: what stands before, between and after its three values.
using Format = std::array<const char*, 4>;

constexpr Format kXml{"<entry id=\"", "\"><kind>", "</kind><amount currency=\"EUR\">",
                      "</amount></entry>\n"};
constexpr Format kJson{"{\"id\":", ",\"kind\":\"", "\",\"amount\":", ",\"currency\":\"EUR\"},\n"};

std::string records(const Format& format, std::size_t size) {
    std::mt19937 random(kSeed);
    std::string text;
    while (text.size() < size) {
        text.append(format[0]).append(std::to_string(random() % 1000000));
        text.append(format[1]).append(kWords[random() % std::size(kWords)]);
        text.append(format[2]).append(std::to_string(random() % 100000)).append(format[3]);
    }
    text.resize(size);
    return text;
}

}  // namespace

std::string xmlSample(std::size_t size) {
    return records(kXml, size);
}

std::string jsonSample(std::size_t size) {
    return records(kJson, size);
}

std::string binarySample(std::size_t size) {
    std::mt19937 random(kSeed);
    std::string bytes(size, '\0');
    for (char& byte : bytes) {
        byte = static_cast<char>(random());
    }
    return bytes;
}

std::string gzip(std::string_view data) {
    z_stream z{};
    if (deflateInit2(&z, 6, Z_DEFLATED, 15 + 16, 8, Z_DEFAULT_STRATEGY) != Z_OK) {
        throw std::runtime_error("zlib cannot be initialised");
    }
    std::string out(deflateBound(&z, data.size()), '\0');
    z.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(data.data()));
    z.avail_in = static_cast<uInt>(data.size());
    z.next_out = reinterpret_cast<Bytef*>(out.data());
    z.avail_out = static_cast<uInt>(out.size());
    const int status = deflate(&z, Z_FINISH);
    out.resize(z.total_out);
    deflateEnd(&z);
    if (status != Z_STREAM_END) {
        throw std::runtime_error("zlib cannot compress the sample");
    }
    return out;
}

std::string directorySample(std::size_t environments) {
    std::string text;
    char lines[512];
    for (std::size_t i = 0; i < environments; ++i) {
        std::snprintf(lines, sizeof lines, "environment %06zu\n%zu\n", i, i);
        text += lines;
        for (const char* type : {"accounts", "reports"}) {
            std::snprintf(lines, sizeof lines,
                          "4\ntype=%s\nurl=http://server-%04zu.example:8080/%s\n"
                          "version=4.%zu\nencoding=UTF-8\n",
                          type, i % 1000, type, i % 10);
            text += lines;
        }
        text += "\n";
    }
    return text;
}

}  // namespace Morvenn::Bench
