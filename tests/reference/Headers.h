// Header text, response header lines and credential challenges, piece by piece.
#ifndef MORVENN_TESTS_REFERENCE_HEADERS_H
#define MORVENN_TESTS_REFERENCE_HEADERS_H

#include <map>
#include <string>
#include <vector>

namespace Morvenn::Net::MvServerProxy::Reference {

using HeaderMap = std::map<std::string, std::string>;

/// Every piece between separators; always at least one.
std::vector<std::string> split(const std::string& text, char separator);

/// Without the six characters of white space at both ends.
std::string trimmed(const std::string& text);

/// "name=value" CR LF for every header, then CR LF.
std::string headerText(const HeaderMap& headers);

/// Enters one line of a response's header block; a later line with the same key replaces.
void enterHeaderLine(HeaderMap& headers, const std::string& line);

struct Challenge {
    std::string host;
    std::string port;
    std::string realm;
};

/// @param text the challenge and the byte behind it.
Challenge challenge(const std::string& text);

/// What is sent for a challenge.
std::string challengeAnswer(const std::string& user, const std::string& password,
                            const std::string& domain);

}  // namespace Morvenn::Net::MvServerProxy::Reference

#endif
