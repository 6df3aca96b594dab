// The two records of a signature request. All numbers are 32 bits wide, the high byte first; both
// records travel in base64.
//
//     request = count, then for each item: length (1 or more), bytes
//     answer  = count, then for each item: flag (one byte, 1), length, bytes of the signature
#pragma once

#include <string>
#include <vector>

namespace Morvenn::Net::MvServerProxy::Hub {

// One request signs at most this many items.
constexpr std::size_t kMostItems = 4096;

// The items of a request. Throws Refusal with 400 that says what is wrong and where.
std::vector<std::string> decodeSigningRequest(const std::string& base64);

std::string encodeSigningAnswer(const std::vector<std::string>& signatures);

}  // namespace Morvenn::Net::MvServerProxy::Hub
