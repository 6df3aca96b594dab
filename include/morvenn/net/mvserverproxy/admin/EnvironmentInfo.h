/**
 * @file
 * The directory of server environments known to the local communication service.
 *
 * An Environment has a name, a display index and named Services; a Service is a set of text
 * properties. EnvironmentInfo asks for them and answers lookups.
 *
 * Thread rule: nothing here is locked. Reading a missing property or service inserts an empty one,
 * so even readers need a lock of their own when they share an object.
 */
#ifndef MORVENN_NET_MVSERVERPROXY_ADMIN_ENVIRONMENTINFO_H
#define MORVENN_NET_MVSERVERPROXY_ADMIN_ENVIRONMENTINFO_H

#include <map>
#include <string>
#include <vector>

#include "morvenn/net/mvserverproxy/Export.h"

namespace Morvenn::Net::MvServerProxy::Admin {

namespace Internal {
class EnvironmentParser;
}

/** Text properties of one service. Keys are compared byte for byte. A plain value. */
class MVCPP_API Service {
public:
    /** No properties. */
    Service();
    /** Copies the properties. @{ */
    Service(const Service& other);
    Service& operator=(const Service& other);
    /** @} */
    ~Service();

    /**
     * Stores a property.
     * By design: the first value stored under a key stays. (Service.FirstValueStoredUnderAKeyStays)
     */
    void setProperty(const std::string& key, const std::string& value);

    /**
     * The value stored under @p key; valid as long as this object.
     * By design: a missing key is inserted with an empty value, which then stays.
     * (Service.ReadingAMissingPropertyInsertsAnEmptyOne)
     */
    const std::string& getProperty(const std::string& key);

private:
    friend class Internal::EnvironmentParser;

    std::map<std::string, std::string> m_properties;
};

/** One server environment. A plain value. */
class MVCPP_API Environment {
public:
    /** No name, index 0, no services. */
    Environment();
    /** Copies everything, services included. @{ */
    Environment(const Environment& other);
    Environment& operator=(const Environment& other);
    /** @} */
    ~Environment();

    /**
     * Stores a copy of @p service.
     * By design: the first service stored under a name stays.
     * (Environment.FirstServiceStoredUnderANameStays)
     */
    void setService(const std::string& name, const Service& service);

    /**
     * The service stored under @p name; valid as long as this object. Copy it to read its
     * properties: getProperty() is not const. By design: a missing name is inserted with an empty
     * service, which then stays. (Environment.ReadingAMissingServiceInsertsAnEmptyOne)
     */
    const Service& getService(std::string name);

    /** A copy of the name. */
    std::string getName() const;
    /** Replaces the name. */
    void setName(const std::string& name);

    /** The display index. */
    int getIndex() const;

    /**
     * Sets the display index from decimal text, surrounding white space ignored.
     * By design: text that does not begin with a number gives 0, what follows the digits is
     * ignored, and a failure of the conversion itself (memory) is logged and gives 99999.
     * (Environment.IndexFromText, Environment.FailedConversionIsLoggedAndGives99999)
     */
    void setIndex(const std::string& text);

private:
    friend class Internal::EnvironmentParser;

    std::string m_name;
    int m_index;
    std::map<std::string, Service> m_services;
};

/**
 * Asks the communication service for environments, on the first lookup, and keeps them in one list.
 *
 * By design: all lookups answer from the one list that the first of them loaded, whatever version
 * or URL a later one names. For another selection use another EnvironmentInfo.
 * (EnvironmentInfo.AllLookupsAnswerFromTheListThatTheFirstLoaded)
 *
 * By design: environments are never freed. Pointers handed out stay valid for the life of the
 * process, also after the EnvironmentInfo is gone; a copy holds the same pointers.
 * (EnvironmentInfo.EnvironmentsOutliveTheObjectThatLoadedThem)
 *
 * Every loading member runs one exchange and so may throw: the class of the proxy's status;
 * Client::MSPRuntimeException, type -1, when the answer cannot be decoded; Client::MSPException,
 * "Environment Info could not be retieved correctly", when storing a service fails (what was
 * complete before stays in the list); Client::Utf8ConversionException when the request cannot be
 * encoded.
 */
class MVCPP_API EnvironmentInfo {
public:
    /** An empty list. Starts the proxy. @throws what Client::MvServerRequest::init() throws. */
    EnvironmentInfo();
    /** Copies the list of pointers. @{ */
    EnvironmentInfo(const EnvironmentInfo& other);
    EnvironmentInfo& operator=(const EnvironmentInfo& other);
    /** @} */
    /** Releases the list, not the environments, and does not stop the proxy. */
    ~EnvironmentInfo();

    /** All environments; loads them when the list is empty. The reference lives as long as this. */
    const std::vector<const Environment*>& getEnvironments();

    /**
     * The first environment of exactly this name; loads all when the list is empty.
     * @return null when there is none.
     */
    const Environment* getEnvironment(const std::string& name);

    /** The environments of a version; asks for them only when the list is empty. */
    const std::vector<const Environment*>& getEnvsForVersion(const std::string& version);

    /** The environments that serve a URL, taken byte for byte; asks only when the list is empty. */
    const std::vector<const Environment*>& getEnvironmentsForURL(const std::string& url);

    /**
     * Loads all environments, whatever the list holds.
     * By design: they are appended, so duplicates are possible.
     * (EnvironmentInfo.LoadAllEnvironmentsAppends)
     */
    void loadAllEnvironments();

private:
    MVCPP_LOCAL void loadEnvironment(const std::string& selector);
    MVCPP_LOCAL void processEnvironment(const std::string& text);

    std::vector<const Environment*> m_environments;
};

}  // namespace Morvenn::Net::MvServerProxy::Admin

#endif  // MORVENN_NET_MVSERVERPROXY_ADMIN_ENVIRONMENTINFO_H
