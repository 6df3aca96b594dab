// The directory's texts.
//
//     request     = "getEnv:" selector CR LF CR LF
//     selector    = "All" / version / "mapURLtoEnv::" url
//
//     answer      = *environment [ LF ]           every CR is removed first, wherever it stands
//     environment = name LF index LF *service LF  an empty name ends the answer
//     service     = count LF count*property       an empty count ends the environment
//     property    = key [ "=" value [ "=" dropped ] ] LF
//                                                 a line that begins with "=" is skipped
//
// Names, counts, keys and values are trimmed. The property "type" names its service. The end of the
// text stands for as many empty lines as are asked for.
#ifndef MORVENN_ADMIN_ENVIRONMENTTEXT_H
#define MORVENN_ADMIN_ENVIRONMENTTEXT_H

#include <memory>
#include <string>
#include <string_view>

#include "morvenn/net/mvserverproxy/admin/EnvironmentInfo.h"

namespace Morvenn::Net::MvServerProxy::Admin::Internal {

std::string formatRequest(const std::string& selector);

/// Reads an answer, environment by environment.
///
/// By design: name and index are applied while services are stored, so that an environment without
/// a service has an empty name and index 0.
/// (EnvironmentText.EnvironmentWithoutServicesHasNoNameAndIndexZero)
/// By design: of several "type" lines the last names the service and the first is kept as property.
/// (EnvironmentText.LastTypeNamesTheServiceAndTheFirstStaysAsProperty)
class EnvironmentParser {
public:
    explicit EnvironmentParser(std::string_view text);

    /// The next environment; null at the end. Throws Client::MSPException, after a line in the
    /// error log, when a service cannot be read or stored.
    std::unique_ptr<Environment> next();

private:
    /// False at the end of the text; the line is empty then.
    bool readLine(std::string_view& line);
    void readServices(Environment& environment, std::string_view name, const std::string& index);
    std::string readProperties(Service& service, int count);

    std::string m_text;       // without carriage returns
    std::string_view m_rest;  // what has not been read of it
};

}  // namespace Morvenn::Net::MvServerProxy::Admin::Internal

#endif  // MORVENN_ADMIN_ENVIRONMENTTEXT_H
