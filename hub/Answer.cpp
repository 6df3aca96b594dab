#include "Answer.h"

#include "GzipSource.h"

namespace Morvenn::Net::MvServerProxy::Hub {

Answer textAnswer(unsigned status, std::string text, const std::string& contentType) {
    Answer answer;
    answer.status = status;
    answer.headers.emplace_back("Content-Type", contentType);
    answer.body = std::make_unique<TextSource>(std::move(text));
    return answer;
}

void compress(Answer& answer) {
    answer.headers.emplace_back("Content-Encoding", "gzip");
    answer.headers.emplace_back("Vary", "Accept-Encoding");
    answer.body = std::make_unique<GzipSource>(std::move(answer.body));
}

}  // namespace Morvenn::Net::MvServerProxy::Hub
