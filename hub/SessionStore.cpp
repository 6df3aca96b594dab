#include "SessionStore.h"

#include "Hex.h"

#include <openssl/rand.h>

#include <array>
#include <stdexcept>

namespace Morvenn::Net::MvServerProxy::Hub {
namespace {

std::string newId() {
    std::array<unsigned char, 16> random{};
    if (RAND_bytes(random.data(), static_cast<int>(random.size())) != 1) {
        throw std::runtime_error("the random generator gives no session id");
    }
    return hex(random.data(), random.size());
}

}  // namespace

SessionStore::SessionStore(std::size_t capacity) : m_capacity(capacity) {}

Session SessionStore::visit(const std::string& id) {
    const std::lock_guard lock(m_mutex);
    const auto known = m_byId.find(id);
    if (known != m_byId.end()) {
        m_byUse.splice(m_byUse.begin(), m_byUse, known->second);
        ++m_byUse.front().requests;
        return m_byUse.front();
    }
    m_byUse.push_front(Session{newId(), 1});
    m_byId.emplace(m_byUse.front().id, m_byUse.begin());
    if (m_byUse.size() > m_capacity) {
        m_byId.erase(m_byUse.back().id);
        m_byUse.pop_back();
    }
    return m_byUse.front();
}

std::size_t SessionStore::size() const {
    const std::lock_guard lock(m_mutex);
    return m_byUse.size();
}

}  // namespace Morvenn::Net::MvServerProxy::Hub
