#include "SigningRecord.h"

#include "Base64.h"
#include "Refusal.h"

#include <cstdint>

namespace Morvenn::Net::MvServerProxy::Hub {
namespace {

constexpr std::size_t kNumberBytes = 4;
constexpr char kSigned = 1;

[[noreturn]] void refuse(const std::string& text) {
    throw Refusal(400, "not a signature request: " + text);
}

// Reads the record from its beginning to its end; owns every bounds check.
class Cursor {
public:
    explicit Cursor(const std::string& record) : m_record(record) {}

    std::uint32_t number(const std::string& what) {
        const std::string bytes = take(kNumberBytes, what);
        std::uint32_t value = 0;
        for (const char byte : bytes) {
            value = value << 8 | static_cast<unsigned char>(byte);
        }
        return value;
    }

    std::string take(std::size_t count, const std::string& what) {
        if (count > m_record.size() - m_position) {
            refuse("the record ends within " + what + ", at byte " +
                   std::to_string(m_record.size()));
        }
        m_position += count;
        return m_record.substr(m_position - count, count);
    }

    std::size_t left() const { return m_record.size() - m_position; }

private:
    const std::string& m_record;
    std::size_t m_position = 0;
};

void appendNumber(std::string& record, std::size_t value) {
    for (int shift = 24; shift >= 0; shift -= 8) {
        record += static_cast<char>(value >> shift & 0xff);
    }
}

}  // namespace

std::vector<std::string> decodeSigningRequest(const std::string& base64) {
    const auto record = base64Decode(base64);
    if (!record) {
        refuse("the body is not base64");
    }
    Cursor cursor(*record);
    const std::uint32_t count = cursor.number("the number of items");
    if (count < 1 || count > kMostItems) {
        refuse("1 to " + std::to_string(kMostItems) + " items can be signed, not " +
               std::to_string(count));
    }
    std::vector<std::string> items;
    while (items.size() < count) {
        const std::string name = "item " + std::to_string(items.size() + 1);
        const std::uint32_t length = cursor.number("the length of " + name);
        if (length == 0) {
            refuse(name + " has no bytes");
        }
        items.push_back(cursor.take(length, name));
    }
    if (cursor.left() > 0) {
        refuse(std::to_string(cursor.left()) + " bytes follow the last item");
    }
    return items;
}

std::string encodeSigningAnswer(const std::vector<std::string>& signatures) {
    std::string record;
    appendNumber(record, signatures.size());
    for (const std::string& signature : signatures) {
        record += kSigned;
        appendNumber(record, signature.size());
        record += signature;
    }
    return base64Encode(record);
}

}  // namespace Morvenn::Net::MvServerProxy::Hub
