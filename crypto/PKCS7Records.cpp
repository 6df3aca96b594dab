// The records of PKCS7.h: the request's writer, the answer's reader, and their byte order.
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <stdexcept>
#include <utility>

#include "crypto/Base64.h"
#include "morvenn/net/mvserverproxy/client/MvServerRequest.h"
#include "morvenn/net/mvserverproxy/crypto/PKCS7.h"

namespace Morvenn::Net::MvServerProxy::Crypto {

namespace {

constexpr std::size_t kCountWidth = 4;
constexpr std::size_t kLengthWidth = 4;
constexpr std::size_t kFlagWidth = 1;
constexpr std::int64_t kEntryHead = kFlagWidth + kLengthWidth;
constexpr std::size_t kLargestRecord = std::numeric_limits<std::uint32_t>::max();

}  // namespace

std::string PKCS7::prepareRequest(const char** data, unsigned int count, int* sizes) {
    std::size_t total = kCountWidth;
    for (unsigned int i = 0; i < count; ++i) {
        if (sizes[i] < 1) {
            throw Client::MSPProtocolException("Size must be greater than 0");
        }
        total += kLengthWidth + static_cast<std::size_t>(sizes[i]);
    }
    if (total > kLargestRecord) {
        Client::MvServerRequest::generateLocalMSPException(
            -1, "PKCS7::sign: the items are larger than one request can be. Sign fewer at once.");
    }
    std::string record(total, '\0');
    char* at = record.data();
    writeInt32(at, count);
    at += kCountWidth;
    for (unsigned int i = 0; i < count; ++i) {
        if (data[i] == nullptr) {
            Client::MvServerRequest::generateLocalMSPException(
                -1, "PKCS7::sign: the data pointer is null.");
        }
        const auto size = static_cast<std::size_t>(sizes[i]);
        writeInt32(at, static_cast<unsigned int>(size));
        std::memcpy(at + kLengthWidth, data[i], size);
        at += kLengthWidth + size;
    }
    return Internal::base64Encode(record);
}

// By design: an entry that the data end too soon for is cut, and a negative length takes all that
// is left. (Pkcs7Answer.EntryBeyondTheDataIsCut, Pkcs7Answer.NegativeLengthTakesTheRest)
std::string* PKCS7::parseResponse(std::string& response, int& count) {
    std::string record = Internal::base64Decode(response);
    if (record.size() < kCountWidth) {
        throw std::out_of_range("The answer to the signature request is shorter than its count.");
    }
    const int announced = readInt32(record.data());
    if (announced < 0) {
        throw std::bad_alloc();  // what asking for so many elements comes to
    }
    std::unique_ptr<std::string[]> entries(new std::string[static_cast<std::size_t>(announced)]);
    const auto size = static_cast<std::int64_t>(record.size());
    std::int64_t position = kCountWidth;
    for (int i = 0; i < announced; ++i) {
        if (position < 0 || position + kEntryHead > size) {
            throw std::out_of_range("An entry of the signature answer lies outside its data.");
        }
        const int length = readInt32(record.data() + position + kFlagWidth);
        position += kEntryHead;
        // A negative length becomes a very large one, which substr cuts at the end of the data.
        entries[static_cast<std::size_t>(i)] =
            record.substr(static_cast<std::size_t>(position), static_cast<std::size_t>(length));
        position += length;
    }
    count = announced;
    return entries.release();
}

bool PKCS7::isLittleEndian() {
    const std::uint16_t one = 1;
    return readBoolean(const_cast<std::uint16_t*>(&one));
}

void PKCS7::reverse(char* bytes, unsigned int length) {
    for (unsigned int i = 0; i < length / 2; ++i) {
        std::swap(bytes[i], bytes[length - 1 - i]);
    }
}

bool PKCS7::readBoolean(void* at) {
    return *static_cast<const char*>(at) == 1;
}

int PKCS7::readInt32(void* at) {
    char bytes[sizeof(std::int32_t)];
    std::memcpy(bytes, at, sizeof bytes);
    if (isLittleEndian()) {
        reverse(bytes, sizeof bytes);
    }
    std::int32_t value = 0;
    std::memcpy(&value, bytes, sizeof value);
    return value;
}

void PKCS7::writeInt32(void* at, unsigned int value) {
    char bytes[sizeof(std::uint32_t)];
    std::memcpy(bytes, &value, sizeof bytes);
    if (isLittleEndian()) {
        reverse(bytes, sizeof bytes);
    }
    std::memcpy(at, bytes, sizeof bytes);
}

}  // namespace Morvenn::Net::MvServerProxy::Crypto
