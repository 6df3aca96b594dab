#include "tests/reference/Headers.h"

#include <sstream>

namespace Morvenn::Net::MvServerProxy::Reference {

std::vector<std::string> split(const std::string& text, char separator) {
    std::vector<std::string> pieces(1);
    for (const char c : text) {
        if (c == separator) {
            pieces.emplace_back();
        } else {
            pieces.back().push_back(c);
        }
    }
    return pieces;
}

std::string trimmed(const std::string& text) {
    static constexpr char kSpace[] = " \t\n\v\f\r";
    const std::size_t first = text.find_first_not_of(kSpace);
    if (first == std::string::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(kSpace) - first + 1);
}

std::string headerText(const HeaderMap& headers) {
    std::string text;
    for (const auto& header : headers) {
        text += header.first + "=" + header.second + "\r\n";
    }
    return text + "\r\n";
}

void enterHeaderLine(HeaderMap& headers, const std::string& line) {
    const std::vector<std::string> tokens = split(line, '=');
    headers[trimmed(tokens[0])] = tokens.size() > 1 ? trimmed(tokens[1]) : std::string();
}

Challenge challenge(const std::string& text) {
    Challenge result;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        const std::vector<std::string> tokens = split(line, ':');
        if (tokens.size() < 2) {
            continue;
        }
        if (tokens[0] == "host") {
            result.host = tokens[1];
        }
        if (tokens[0] == "port") {
            result.port = tokens[1];
        }
        if (tokens[0] == "realm") {
            result.realm = tokens[1];
        }
    }
    return result;
}

std::string challengeAnswer(const std::string& user, const std::string& password,
                            const std::string& domain) {
    return "user:" + user + "\r\npassword:" + password + "\r\ndomain:" + domain + "\r\n\r\n";
}

}  // namespace Morvenn::Net::MvServerProxy::Reference
