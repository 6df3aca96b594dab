#include "testing/Bytes.h"
#include "tests/torture/Model.h"

namespace Torture {
namespace {

struct StatusClass {
    int status;
    const char* name;
};

constexpr StatusClass kStatusClasses[] = {{-1001, "MSPConnectionException"},
                                          {-5005, "MSPConnectionException"},
                                          {-1002, "MSPProtocolException"},
                                          {-1003, "MSPRuntimeException"}};

const char* classOf(int status) {
    for (const StatusClass& row : kStatusClasses) {
        if (row.status == status) {
            return row.name;
        }
    }
    return "MSPUnrecognisedException";
}

}  // namespace

Answer ModelBase::call(Function function, const std::string& text) {
    run.calls.add({function, text.c_str()});  // no length is passed: a zero byte ends the text
    Answer answer = m_tape.next(function);
    if (answer.escapes && function != Function::Complete) {
        throw ProxyEscape{};
    }
    return answer;
}

int ModelBase::checked(Function function, const std::string& text) {
    const int result = call(function, text).result;
    if (result < 0) {
        failStatus(result);
    }
    return result;
}

void ModelBase::line(const char* label, const std::string& text) {
    if (m_logs) {
        run.log += label + (": " + text) + "\n";
    }
}

void ModelBase::raise(const std::string& name, int type, const std::string& message) {
    throw Thrown{name + "(" + std::to_string(type) + ", " +
                     Morvenn::Net::MvServerProxy::TestKit::escaped(message, kLongest) + ")",
                 message};
}

void ModelBase::failStatus(int status) {
    debug("MvServerRequest::throwMvServerCppBindingException()");
    error(" Exception caught. The error code is :-" + std::to_string(status));
    const bool failed = call(Function::GetLastError).result != 0;
    const std::optional<std::string>& given = m_tape.lastError().message;
    std::string message;
    if (given && !failed) {
        message = given->c_str();
    }
    if (!given) {
        message = failed ? "Could not retrieve last error message." : "No error message received";
    }
    if (message.empty()) {
        message = "Received MSP exception with no message string.  The exception code is :" +
                  std::to_string(status);
    }
    error(message);
    raise(classOf(status), 0, message);
}

void ModelBase::failLocal(const std::string& message) {
    error(message);
    error("-1");
    raise("MSPRuntimeException", -1, message);
}

void ModelBase::failTooLong(int count) {
    failLocal("Unexpected state.  count = " + std::to_string(count) + " pos = 0");
}

void ModelBase::init() {
    debug("MvServerRequest::init()");
    const int result = call(Function::Init).result;
    if (result != 0) {
        failStatus(result);
    }
    info("MvServerCppBinding Initialized");
}

void ModelBase::term() {
    debug("MvServerRequest::term()");
    checked(Function::Term);
}

std::string decoded(const std::string& bytes) {
    std::string text;
    for (const char byte : bytes) {
        if (byte == '\0') {
            break;
        }
        if (static_cast<unsigned char>(byte) < 0x80) {
            text.push_back(byte);
        } else {
            text += "\xEF\xBF\xBD";
        }
    }
    return text;
}

long blocksOf(const std::string& text) {
    constexpr std::size_t kHeldInside = 15;
    return text.size() > kHeldInside ? 1 : 0;
}

}  // namespace Torture
