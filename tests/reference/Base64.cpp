#include "tests/reference/Base64.h"

#include <cstdint>

namespace Morvenn::Net::MvServerProxy::Reference {
namespace {

const std::string kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

std::string bigEndian(std::uint32_t value) {
    std::string bytes;
    for (unsigned shift = 32; shift > 0; shift -= 8) {
        bytes.push_back(static_cast<char>((value >> (shift - 8)) & 0xFFU));
    }
    return bytes;
}

std::int32_t number(const std::string& bytes, std::size_t at) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        value = (value << 8U) | static_cast<unsigned char>(bytes[at + i]);
    }
    return static_cast<std::int32_t>(value);
}

}  // namespace

std::string base64Encode(const std::string& bytes) {
    std::string text;
    unsigned bits = 0;
    unsigned held = 0;
    for (const char byte : bytes) {
        bits = (bits << 8U) | static_cast<unsigned char>(byte);
        for (held += 8; held >= 6; held -= 6) {
            text.push_back(kAlphabet[(bits >> (held - 6)) & 63U]);
        }
    }
    if (held > 0) {
        text.push_back(kAlphabet[(bits << (6 - held)) & 63U]);
    }
    while (text.size() % 4 != 0) {
        text.push_back('=');
    }
    return text;
}

std::string base64Decode(const std::string& text) {
    std::string bytes;
    unsigned bits = 0;
    unsigned held = 0;
    for (const char character : text) {
        const std::size_t value = kAlphabet.find(character);
        if (value == std::string::npos) {
            break;
        }
        bits = (bits << 6U) | static_cast<unsigned>(value);
        held += 6;
        if (held >= 8) {
            held -= 8;
            bytes.push_back(static_cast<char>((bits >> held) & 0xFFU));
        }
    }
    return bytes;
}

std::string signatureRequest(const std::vector<std::string>& items) {
    std::string record = bigEndian(static_cast<std::uint32_t>(items.size()));
    for (const std::string& item : items) {
        record += bigEndian(static_cast<std::uint32_t>(item.size())) + item;
    }
    return record;
}

SignatureAnswer signatureAnswer(const std::string& record) {
    SignatureAnswer answer;
    if (record.size() < 4) {
        answer.outOfRange = true;
        return answer;
    }
    const std::int32_t count = number(record, 0);
    answer.count = count;
    answer.badAllocation = count < 0;
    const auto size = static_cast<std::int64_t>(record.size());
    std::int64_t at = 4;
    for (std::int32_t i = 0; i < count; ++i) {
        if (at < 0 || at + 5 > size) {
            answer.outOfRange = true;
            return answer;
        }
        const std::int32_t length = number(record, static_cast<std::size_t>(at) + 1);
        at += 5;
        const std::int64_t left = size - at;
        const std::int64_t taken = length < 0 || length > left ? left : length;
        answer.entries.push_back(
            record.substr(static_cast<std::size_t>(at), static_cast<std::size_t>(taken)));
        at += length;
    }
    return answer;
}

}  // namespace Morvenn::Net::MvServerProxy::Reference
