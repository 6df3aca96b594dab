// One exchange of one thread: what each of the functions of the contract does in each state.
//
// Functions that fail throw Failure (or OutOfOrder, see there); the caller then calls fail(), after
// which every call but a new exchange and complete() repeats the failure.
#ifndef MORVENN_PROXY_EXCHANGE_H
#define MORVENN_PROXY_EXCHANGE_H

#include <memory>
#include <string>
#include <string_view>

#include "Config.h"
#include "CredentialStore.h"
#include "ExchangeState.h"
#include "Failure.h"
#include "ProxyDialogue.h"
#include "RequestText.h"
#include "Transfer.h"

namespace Morvenn::Net::MvServerProxy::Proxy {

// A call that makes no sense in the present state. The exchange goes on as if it had not been made.
struct OutOfOrder {
    Failure failure;
};

class Exchange {
public:
    Exchange() : m_transfer(m_data) {}

    // Ends what is running; settings and credentials hold from the next exchange on.
    void configure(std::shared_ptr<const Config> config, std::shared_ptr<CredentialStore> store);

    // Ends what is running, and closes all connections.
    void release();

    int send(std::string_view text);
    int sendNoAck(std::string_view text);
    int sendEof();
    int receive(char* block);
    void complete();
    void fail(Failure failure);
    void note(const OutOfOrder& call);

    State state() const { return m_state; }
    Kind kind() const { return m_kind; }
    // The failure of the running exchange; empty when there is none.
    const std::string& lastError() const { return m_failure.text; }
    // The URL without user, password and query; empty before the header text is complete.
    const std::string& shownUrl() const { return m_transfer.plan().target.shown; }
    int responseStatus() const { return m_data.head.status(); }

private:
    void moveTo(State state);
    [[noreturn]] void outOfOrder(const char* function) const;
    int begin(std::string_view text, Form form);

    int submit();
    int submitText();
    int submitShutdown();
    int submitDirectory();

    int instruct();
    int awaitInstruction();
    bool awaitAnswer();
    int ready();
    bool dealWithDemand();
    bool startsAgain();
    void startTransfer(Upload upload);
    Upload uploadOfWhole() const;

    bool answeredWithoutBody() const;
    int takeChunk(std::string_view chunk);
    int endBody();
    int giveChallenge(char* block);
    int takeAnswer(std::string_view text);

    int giveResponse(char* block);
    int giveBody(char* block);
    int giveDirectory(char* block);
    int endOfResponse() const;

    State m_state = State::Idle;
    Kind m_kind = Kind::Stream;
    Form m_form = Form::Unacknowledged;
    std::shared_ptr<const Config> m_config;
    std::shared_ptr<CredentialStore> m_store;
    std::string m_text;   // the header text, with the body on the acknowledged form
    Target m_lastTarget;  // kept, since the next exchange often goes to the same URL
    TransferPlan m_planned;
    TransferData m_data;
    Transfer m_transfer;
    ProxyDialogue m_dialogue;
    bool m_revived = false;
    bool m_lateDemand = false;  // a challenge came in mid body and has not been given out yet
    std::string m_block;        // the response header block
    std::size_t m_blockPos = 0;
    Failure m_failure{0, {}};
};

}  // namespace Morvenn::Net::MvServerProxy::Proxy

#endif
