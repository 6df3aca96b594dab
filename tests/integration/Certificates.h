// A certificate authority and certificates of servers on 127.0.0.1, made for one test.
#pragma once

#include <string>

#include "TempFolder.h"

namespace Morvenn::Net::MvServerProxy::Integration {

// Writes ca.pem and, for "good" and each of the bad ones, NAME.pem and NAME.key. The keys belong to
// the user who servers run as.
void makeCertificates(const TempFolder& folder);

}  // namespace Morvenn::Net::MvServerProxy::Integration
