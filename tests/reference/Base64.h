// Base64 and the records of a signature exchange, bit by bit.
#ifndef MORVENN_TESTS_REFERENCE_BASE64_H
#define MORVENN_TESTS_REFERENCE_BASE64_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Morvenn::Net::MvServerProxy::Reference {

std::string base64Encode(const std::string& bytes);

/// Ends at the first character outside the alphabet. Bits that do not fill a byte are dropped.
std::string base64Decode(const std::string& text);

/// Count, then length and bytes of every item, big-endian.
std::string signatureRequest(const std::vector<std::string>& items);

struct SignatureAnswer {
    bool outOfRange = false;     ///< a position outside the data is read
    std::int32_t count = 0;      ///< of entries, as the answer announces it
    bool badAllocation = false;  ///< the count is negative
    std::vector<std::string> entries;
};

/// @param record decoded answer.
SignatureAnswer signatureAnswer(const std::string& record);

}  // namespace Morvenn::Net::MvServerProxy::Reference

#endif
